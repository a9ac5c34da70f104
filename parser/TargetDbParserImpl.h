// The target-database reader: one XML document at a time, walked through DBNode objects.
#ifndef MORA_LUX_TRACE_TARGETDBPARSERIMPL_H
#define MORA_LUX_TRACE_TARGETDBPARSERIMPL_H

#include "devid/model/TargetDbParser.h"
#include "parser/DBNodeImpl.h"

#include <pugixml.hpp>

#include <vector>

namespace Mora {
namespace Lux {
namespace Trace {

/// Owns the loaded document and every node handed out for it. Node wrappers are made on
/// first request, so a caller that only looks at the root pays for little more than the parse.
class TargetDbParserImpl : public TargetDbParser {
public:
    TargetDbParserImpl();
    ~TargetDbParserImpl() override;
    TargetDbParserImpl(const TargetDbParserImpl&) = delete;
    TargetDbParserImpl& operator=(const TargetDbParserImpl&) = delete;

    /// Releases any earlier document first; -1 when the file is missing, unreadable, not a
    /// regular file or not well-formed (nothing is loaded then), 0 otherwise. Never waits on
    /// a FIFO. The flag is ignored.
    int ParseFile(const char* path, int flag) override;
    void ReleaseDocument() override;
    DBNode* GetEndNode() override;
    /// The outermost element, or the end node when no document is loaded.
    DBNode* GetRootNode() override;

    /// A new wrapper for an element of the loaded document; the end node for an empty handle.
    /// Asked once per element, by the one node that leads to it, which keeps the answer.
    DBNode* NodeFor(pugi::xml_node element);

    /// The value of the first attribute of `element`, the element of `node`, whose name
    /// matches `name` without regard to ASCII case, or null; null for an empty handle.
    const char* AttributeOf(const DBNode* node, pugi::xml_node element, const char* name);

private:
    pugi::xml_document m_document;
    // Each block is filled up to the capacity reserved for it and never grows, so handed-out
    // pointers stay valid; blocks double in size, so a large document needs few allocations.
    std::vector<std::vector<DBNodeImpl>> m_nodeBlocks;
    DBNode* m_root = nullptr;
    DBNodeImpl m_endNode;
    // The attributes of the element read last: the loaders ask for several attributes of
    // one element in a row, and each step through pugixml's list is a library call.
    // Keyed by the node, which identifies the element without a call into pugixml.
    const DBNode* m_attributesOf = nullptr;
    struct Attribute {
        // The first two letters of the name, folded: most names are told apart by these
        // alone, so a lookup compares whole names only where they agree.
        unsigned key;
        const char* name;
        const char* value;
    };
    std::vector<Attribute> m_attributes;
};

} // namespace Trace
} // namespace Lux
} // namespace Mora

#endif
