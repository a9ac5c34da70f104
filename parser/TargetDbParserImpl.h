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

    /// New wrappers for the child elements of `element`, side by side, the last one marked;
    /// the end node when there are none. Asked once per element, by its node, which keeps
    /// the answer.
    DBNode* ChildrenOf(pugi::xml_node element);

    /// The value of the first attribute of the node's element whose name matches `name`
    /// without regard to ASCII case, or null; null for the end node.
    const char* AttributeOf(const DBNodeImpl& node, const char* name);

private:
    void CollectAttributes(const DBNodeImpl& node);

    pugi::xml_document m_document;
    // Each block is filled up to the capacity reserved for it and never grows, so handed-out
    // pointers stay valid; blocks double in size, so a large document needs few allocations.
    // A run of siblings never spans two blocks.
    std::vector<std::vector<DBNodeImpl>> m_nodeBlocks;
    std::vector<pugi::xml_node> m_run;
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
