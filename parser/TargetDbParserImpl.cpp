#include "parser/TargetDbParserImpl.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace Mora {
namespace Lux {
namespace Trace {

namespace {

class FileDescriptor {
public:
    explicit FileDescriptor(int fd) : m_fd(fd) {}
    ~FileDescriptor()
    {
        if (m_fd >= 0)
            close(m_fd);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    int get() const { return m_fd; }

private:
    int m_fd;
};

// Reads the whole file into a buffer that the document then owns and parses in place, as
// pugixml's own load_file does, but with one open, one fstat and the reads: on small
// database files the system calls cost as much as the parse. A folder or other non-regular
// file is refused here; pugixml would size it by seeking to its end. O_NONBLOCK lets the
// open of a FIFO return at once instead of waiting for a writer.
bool LoadRegularFile(pugi::xml_document& document, const char* path)
{
    FileDescriptor file(open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat info;
    if (file.get() < 0 || fstat(file.get(), &info) != 0 || !S_ISREG(info.st_mode) ||
        static_cast<uintmax_t>(info.st_size) >= SIZE_MAX)
        return false;
    const size_t size = static_cast<size_t>(info.st_size);
    void* buffer = pugi::get_memory_allocation_function()(size > 0 ? size : 1);
    if (!buffer)
        return false;
    size_t filled = 0;
    while (filled < size) {
        const ssize_t got = read(file.get(), static_cast<char*>(buffer) + filled, size - filled);
        if (got < 0) {
            pugi::get_memory_deallocation_function()(buffer);
            return false;
        }
        if (got == 0)
            break;
        filled += static_cast<size_t>(got);
    }
    // Default options; the document takes the buffer over whatever the result.
    return document.load_buffer_inplace_own(buffer, filled);
}

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

// ASCII only: the database's names are ASCII, and the host's locale must not matter.
char FoldCase(char c)
{
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

// The first two letters of the name, folded; 0 for an empty name.
unsigned NameKey(const char* name)
{
    const unsigned first = static_cast<unsigned char>(FoldCase(name[0]));
    return first == 0 ? 0 : first | static_cast<unsigned char>(FoldCase(name[1])) << 8;
}

// For two names of the same key, which already agree up to their second letter.
bool RestEqualIgnoringCase(const char* a, const char* b)
{
    if (a[0] == '\0' || a[1] == '\0')
        return true;
    for (a += 2, b += 2; *a == *b || FoldCase(*a) == FoldCase(*b); ++a, ++b) {
        if (*a == '\0')
            return true;
    }
    return false;
}

} // namespace

TargetDbParserImpl::TargetDbParserImpl() : m_endNode(*this, pugi::xml_node(), true)
{
}

TargetDbParserImpl::~TargetDbParserImpl() = default;

int TargetDbParserImpl::ParseFile(const char* path, int /*flag*/)
{
    ReleaseDocument();
    if (!path || !LoadRegularFile(m_document, path) || !HasOneRootElement(m_document)) {
        m_document.reset();
        return -1;
    }
    return 0;
}

void TargetDbParserImpl::ReleaseDocument()
{
    // A later document's nodes may take the same addresses.
    m_attributesOf = nullptr;
    m_attributes.clear();
    m_root = nullptr;
    m_nodeBlocks.clear();
    m_document.reset();
}

DBNode* TargetDbParserImpl::GetEndNode()
{
    return &m_endNode;
}

DBNode* TargetDbParserImpl::GetRootNode()
{
    if (m_root == nullptr)
        m_root = ChildrenOf(m_document);
    return m_root;
}

// Apart from the lookups, which run several times as often: the cost of its own
// frame stays out of theirs.
__attribute__((noinline)) void TargetDbParserImpl::CollectAttributes(const DBNodeImpl& node)
{
    m_attributes.clear();
    for (pugi::xml_attribute attribute = node.Element().first_attribute(); attribute;
         attribute = attribute.next_attribute()) {
        // Filled in place: a temporary copied in whole would wait on its part stores.
        Attribute& entry = m_attributes.emplace_back();
        entry.name = attribute.name();
        entry.value = attribute.value();
        entry.key = NameKey(entry.name);
    }
    m_attributesOf = &node;
}

const char* TargetDbParserImpl::AttributeOf(const DBNodeImpl& node, const char* name)
{
    if (name == nullptr)
        return nullptr;
    if (&node != m_attributesOf)
        CollectAttributes(node);
    const unsigned key = NameKey(name);
    for (const Attribute& attribute : m_attributes) {
        if (attribute.key == key && RestEqualIgnoringCase(attribute.name, name))
            return attribute.value;
    }
    return nullptr;
}

DBNode* TargetDbParserImpl::ChildrenOf(pugi::xml_node element)
{
    m_run.clear();
    for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling()) {
        // Text, comments and other node kinds are never presented.
        if (child.type() == pugi::node_element)
            m_run.push_back(child);
    }
    if (m_run.empty())
        return &m_endNode;
    if (m_nodeBlocks.empty() || m_nodeBlocks.back().capacity() - m_nodeBlocks.back().size() < m_run.size()) {
        const std::size_t grown =
            m_nodeBlocks.empty() ? 64 : std::min<std::size_t>(m_nodeBlocks.back().capacity() * 2, 8192);
        m_nodeBlocks.emplace_back();
        m_nodeBlocks.back().reserve(std::max(grown, m_run.size()));
    }
    std::vector<DBNodeImpl>& block = m_nodeBlocks.back();
    DBNode* first = &block.emplace_back(*this, m_run.front(), m_run.size() == 1);
    for (std::size_t i = 1; i < m_run.size(); ++i)
        block.emplace_back(*this, m_run[i], i + 1 == m_run.size());
    return first;
}

} // namespace Trace
} // namespace Lux
} // namespace Mora
