// Helpers for the model's owned child lists, which the interfaces hand out as
// plain pointer vectors.
#ifndef MORA_LUX_TRACE_OWNEDLIST_H
#define MORA_LUX_TRACE_OWNEDLIST_H

#include <algorithm>
#include <cstddef>
#include <memory>
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
    // Sorted lookups rather than hash sets: the lists are mostly a handful of
    // entries, and this costs three allocations however long they are.
    std::vector<T*> incoming(list.begin(), list.end());
    std::sort(incoming.begin(), incoming.end());
    incoming.erase(std::unique(incoming.begin(), incoming.end()), incoming.end());
    for (auto& item : owned) {
        if (std::binary_search(incoming.begin(), incoming.end(), item.get()))
            item.release();
        else
            item.reset();
    }
    owned.clear();
    owned.reserve(incoming.size());

    std::vector<bool> taken(incoming.size());
    for (T* item : list) {
        const std::size_t at = std::lower_bound(incoming.begin(), incoming.end(), item) - incoming.begin();
        if (item != nullptr && !taken[at]) {
            taken[at] = true;
            owned.emplace_back(item);
        }
    }
}

} // namespace Trace
} // namespace Lux
} // namespace Mora

#endif
