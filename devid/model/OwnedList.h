// Helpers for the model's owned child lists, which the interfaces hand out as
// plain pointer vectors.
#ifndef MORA_LUX_TRACE_OWNEDLIST_H
#define MORA_LUX_TRACE_OWNEDLIST_H

#include <memory>
#include <unordered_set>
#include <vector>

namespace Mora {
namespace Lux {
namespace Trace {

/// A copy of the list as plain pointers; the objects stay owned by `owned`.
template <typename Out, typename T>
std::vector<Out*> RawPointers(const std::vector<std::unique_ptr<T>>& owned)
{
    std::vector<Out*> out;
    out.reserve(owned.size());
    for (const auto& item : owned)
        out.push_back(item.get());
    return out;
}

/// Replaces `owned` by `list`, taking ownership of it. Objects of the old list
/// that come back in the new one move over (loaders pass accumulating lists);
/// the others are freed. Nulls and repeated pointers are dropped, so nothing
/// can be freed twice or handed out as null.
template <typename T>
void AdoptReplacing(std::vector<std::unique_ptr<T>>& owned, const std::vector<T*>& list)
{
    std::unordered_set<T*> previous;
    for (auto& item : owned)
        previous.insert(item.release());
    owned.clear();

    std::unordered_set<T*> taken;
    for (T* item : list) {
        if (item != nullptr && taken.insert(item).second) {
            owned.emplace_back(item);
            previous.erase(item);
        }
    }
    for (T* item : previous)
        delete item;
}

} // namespace Trace
} // namespace Lux
} // namespace Mora

#endif
