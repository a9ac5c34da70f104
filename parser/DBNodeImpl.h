// One element of the loaded document, as the device identifier walks it.
#ifndef MORA_LUX_TRACE_DBNODEIMPL_H
#define MORA_LUX_TRACE_DBNODEIMPL_H

#include "devid/model/TargetDbParser.h"

#include <pugixml.hpp>

#include <cstdint>

namespace Mora {
namespace Lux {
namespace Trace {

class TargetDbParserImpl;

/// A thin handle on a pugixml element; an empty handle is the parser's end node,
/// which has no name or attributes and whose navigation leads back to itself.
/// The children of an element are made together, side by side, the first time
/// they are asked for: the next sibling is then the next node in memory, and a
/// node is a few words, however large the document.
class DBNodeImpl final : public DBNode {
public:
    DBNodeImpl(TargetDbParserImpl& owner, pugi::xml_node element, bool last);

    const char* GetName() override;
    const char* GetAttribute(const char* name) override;
    DBNode* GetFirstChild() override;
    DBNode* GetNextSibling() override;

    pugi::xml_node Element() const { return m_element; }

private:
    TargetDbParserImpl& m_owner;
    pugi::xml_node m_element;
    // The run of children, or the end node when there are none, 0 until first asked;
    // the lowest bit (free, as nodes are aligned) marks the last node of its own run.
    std::uintptr_t m_children;
};

} // namespace Trace
} // namespace Lux
} // namespace Mora

#endif
