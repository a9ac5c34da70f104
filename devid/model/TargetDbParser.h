// Interface of the target-database reader library ("libmora_targetdb_parser.so").
// The device identifier never parses XML itself; it walks the elements of one
// loaded document through these objects. Virtual slot indices are binary
// interface (counted from 0): the reserved functions only hold their places.
#ifndef MORA_LUX_TRACE_TARGETDBPARSER_H
#define MORA_LUX_TRACE_TARGETDBPARSER_H

namespace Mora {
namespace Lux {
namespace Trace {

/// One element of the loaded document. Absent nodes are the parser's end node.
class DBNode {
public:
    virtual ~DBNode() {}                                        // slots 0, 1
    /// Tag name as written; null only for the end node.
    virtual const char* GetName() = 0;                          // slot 2
    virtual void reserved3() {}
    /// Attribute text (name matched without regard to ASCII case), or null.
    virtual const char* GetAttribute(const char* name) = 0;     // slot 4
    virtual void reserved5() {}
    /// First child element, or the end node.
    virtual DBNode* GetFirstChild() = 0;                        // slot 6
    virtual void reserved7() {}
    /// Next element at the same level, or the end node.
    virtual DBNode* GetNextSibling() = 0;                       // slot 8
};

/// Holds at most one document; its nodes and strings live until ReleaseDocument.
class TargetDbParser {
public:
    virtual ~TargetDbParser() {}                                // slots 0, 1
    /// -1 when the file is missing, unreadable or not well-formed XML.
    virtual int ParseFile(const char* path, int flag) = 0;      // slot 2
    virtual void ReleaseDocument() = 0;                         // slot 3
    /// The one node value that stands for every absent node.
    virtual DBNode* GetEndNode() = 0;                           // slot 4
    virtual void reserved5() {}
    virtual void reserved6() {}
    virtual void reserved7() {}
    virtual void reserved8() {}
    virtual void reserved9() {}
    virtual void reserved10() {}
    virtual void reserved11() {}
    /// Root element of the loaded document, or the end node.
    virtual DBNode* GetRootNode() = 0;                          // slot 12
};

typedef TargetDbParser* (*CreateParserCPPFn)();
typedef void (*DestroyParserCPPPFn)(TargetDbParser*);

} // namespace Trace
} // namespace Lux
} // namespace Mora

#endif
