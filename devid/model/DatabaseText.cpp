#include "devid/model/DatabaseText.h"

namespace Mora {
namespace Lux {
namespace Trace {

namespace {

char FoldCase(char c)
{
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

} // namespace

bool DatabaseNameIs(const char* name, const char* wanted)
{
    if (name == nullptr || wanted == nullptr)
        return false;
    for (; *name != '\0' && *wanted != '\0'; ++name, ++wanted) {
        if (*name != *wanted && FoldCase(*name) != FoldCase(*wanted))
            return false;
    }
    return *name == *wanted;
}

} // namespace Trace
} // namespace Lux
} // namespace Mora
