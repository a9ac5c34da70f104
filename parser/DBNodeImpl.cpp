#include "parser/DBNodeImpl.h"

#include "parser/TargetDbParserImpl.h"

namespace Mora {
namespace Lux {
namespace Trace {

namespace {

const std::uintptr_t kLastInRun = 1;

} // namespace

DBNodeImpl::DBNodeImpl(TargetDbParserImpl& owner, pugi::xml_node element, bool last)
    : m_owner(owner), m_element(element), m_children(last ? kLastInRun : 0)
{
}

const char* DBNodeImpl::GetName()
{
    return m_element ? m_element.name() : nullptr;
}

const char* DBNodeImpl::GetAttribute(const char* name)
{
    return m_owner.AttributeOf(*this, name);
}

DBNode* DBNodeImpl::GetFirstChild()
{
    if ((m_children & ~kLastInRun) == 0)
        m_children |= reinterpret_cast<std::uintptr_t>(m_owner.ChildrenOf(m_element));
    return reinterpret_cast<DBNode*>(m_children & ~kLastInRun);
}

DBNode* DBNodeImpl::GetNextSibling()
{
    // The end node is the last of a run of its own.
    if ((m_children & kLastInRun) != 0)
        return m_owner.GetEndNode();
    return this + 1;
}

} // namespace Trace
} // namespace Lux
} // namespace Mora
