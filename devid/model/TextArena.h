// Storage for the texts of one loaded model: copied in once, freed together.
#ifndef MORA_LUX_TRACE_TEXTARENA_H
#define MORA_LUX_TRACE_TEXTARENA_H

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace Mora {
namespace Lux {
namespace Trace {

/// Hands out NUL-terminated copies that stay valid and in place until Clear or
/// destruction. A large device has tens of thousands of register names; one
/// string object each would cost more than the file they came from.
class TextArena {
public:
    TextArena() = default;
    TextArena(const TextArena&) = delete;
    TextArena& operator=(const TextArena&) = delete;

    /// Texts are placed in blocks of this many bytes, NULs included; a longer
    /// text gets a block of its own.
    static constexpr std::size_t kBlockSize = 64 * 1024;

    /// A copy of `text`; "" for null.
    const char* Copy(const char* text);
    void Clear();

private:
    std::vector<std::unique_ptr<char[]>> m_blocks;
    char* m_free = nullptr;
    std::size_t m_left = 0;
};

/// A model text as a string; "" for null.
inline std::string TextOf(const char* text)
{
    return text != nullptr ? text : "";
}

} // namespace Trace
} // namespace Lux
} // namespace Mora

#endif
