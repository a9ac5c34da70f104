// One element of the loaded document, as the device identifier walks it.
#ifndef MORA_LUX_TRACE_DBNODEIMPL_H
#define MORA_LUX_TRACE_DBNODEIMPL_H

#include "devid/model/TargetDbParser.h"

#include <pugixml.hpp>

namespace Mora {
namespace Lux {
namespace Trace {

class TargetDbParserImpl;

/// A thin handle on a pugixml element; an empty handle is the parser's end node,
/// which has no name or attributes and whose navigation leads back to itself.
class DBNodeImpl final : public DBNode {
public:
    DBNodeImpl(TargetDbParserImpl& owner, pugi::xml_node element);

    const char* GetName() override;
    const char* GetAttribute(const char* name) override;
    DBNode* GetFirstChild() override;
    DBNode* GetNextSibling() override;

private:
    TargetDbParserImpl& m_owner;
    pugi::xml_node m_element;
    // Every element is reached one way only: as its parent's first child or as the next
    // sibling of the element before it. Keeping the answers here gives each element one
    // wrapper without an index over the whole document. Null until first asked.
    DBNode* m_firstChild = nullptr;
    DBNode* m_nextSibling = nullptr;
};

} // namespace Trace
} // namespace Lux
} // namespace Mora

#endif
