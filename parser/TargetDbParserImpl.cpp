#include "parser/TargetDbParserImpl.h"

namespace Mora {
namespace Lux {
namespace Trace {

namespace {

// pugixml accepts several outermost elements, which no well-formed file has.
bool HasOneRootElement(const pugi::xml_document& document)
{
    int elements = 0;
    for (pugi::xml_node node : document.children()) {
        if (node.type() == pugi::node_element)
            ++elements;
    }
    return elements == 1;
}

} // namespace

TargetDbParserImpl::TargetDbParserImpl() : m_endNode(*this, pugi::xml_node())
{
}

TargetDbParserImpl::~TargetDbParserImpl() = default;

int TargetDbParserImpl::ParseFile(const char* path, int /*flag*/)
{
    ReleaseDocument();
    if (!path)
        return -1;
    // Default options parse in place in the document's own buffer: no string is copied.
    if (!m_document.load_file(path) || !HasOneRootElement(m_document)) {
        m_document.reset();
        return -1;
    }
    return 0;
}

void TargetDbParserImpl::ReleaseDocument()
{
    m_nodeIndex.clear();
    m_nodes.clear();
    m_document.reset();
}

DBNode* TargetDbParserImpl::GetEndNode()
{
    return &m_endNode;
}

DBNode* TargetDbParserImpl::GetRootNode()
{
    return NodeFor(m_document.document_element());
}

DBNode* TargetDbParserImpl::NodeFor(pugi::xml_node element)
{
    if (!element)
        return &m_endNode;
    auto [entry, inserted] = m_nodeIndex.try_emplace(element.internal_object(), nullptr);
    if (inserted)
        entry->second = &m_nodes.emplace_back(*this, element);
    return entry->second;
}

} // namespace Trace
} // namespace Lux
} // namespace Mora
