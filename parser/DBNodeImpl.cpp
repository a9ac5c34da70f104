#include "parser/DBNodeImpl.h"

#include "parser/TargetDbParserImpl.h"

namespace Mora {
namespace Lux {
namespace Trace {

namespace {

// Text, comments and other node kinds are never presented, so navigation skips them.
pugi::xml_node ThisOrNextElement(pugi::xml_node node)
{
    while (node && node.type() != pugi::node_element)
        node = node.next_sibling();
    return node;
}

} // namespace

DBNodeImpl::DBNodeImpl(TargetDbParserImpl& owner, pugi::xml_node element)
    : m_owner(owner), m_element(element)
{
}

const char* DBNodeImpl::GetName()
{
    return m_element ? m_element.name() : nullptr;
}

const char* DBNodeImpl::GetAttribute(const char* name)
{
    return m_owner.AttributeOf(this, m_element, name);
}

DBNode* DBNodeImpl::GetFirstChild()
{
    if (m_firstChild == nullptr)
        m_firstChild = m_owner.NodeFor(ThisOrNextElement(m_element.first_child()));
    return m_firstChild;
}

DBNode* DBNodeImpl::GetNextSibling()
{
    if (m_nextSibling == nullptr)
        m_nextSibling = m_owner.NodeFor(ThisOrNextElement(m_element.next_sibling()));
    return m_nextSibling;
}

} // namespace Trace
} // namespace Lux
} // namespace Mora
