#include "devid/model/TextArena.h"

#include <algorithm>
#include <cstring>

namespace Mora {
namespace Lux {
namespace Trace {

const char* TextArena::Copy(const char* text)
{
    if (text == nullptr)
        text = "";
    const std::size_t size = std::strlen(text) + 1;
    if (size > m_left) {
        // A text longer than a block gets a block of its own; what was left of
        // the current one is given up, at most one text's worth.
        const std::size_t blockSize = std::max(size, kBlockSize);
        m_blocks.emplace_back(new char[blockSize]);
        m_free = m_blocks.back().get();
        m_left = blockSize;
    }
    char* copy = m_free;
    std::memcpy(copy, text, size);
    m_free += size;
    m_left -= size;
    return copy;
}

void TextArena::Clear()
{
    m_blocks.clear();
    m_free = nullptr;
    m_left = 0;
}

} // namespace Trace
} // namespace Lux
} // namespace Mora
