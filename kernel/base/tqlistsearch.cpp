// List searches: by identity, by match function, and the binary search of sorted windows.
#include "tqlistinternal.h"

namespace tq::list {
namespace {

struct SortedProbe
{
    INT32 found;    // index of an equal item, or -1
    INT32 insertAt; // where the key goes when nothing is equal
};

// The one binary search behind both sorted lookups. For an even window the probe is the lower
// of the two middle items.
SortedProbe SearchSorted(const tTQLIST* list, const void* key, Window window,
                         TQLIST_COMPAREPROC compare) noexcept
{
    INT32 left = window.first;
    INT32 right = window.first + window.count - 1;
    INT32 n = window.count;
    while (left <= right)
    {
        const INT32 half = n / 2;
        const bool odd = (n & 1) != 0;
        const INT32 probe = half == 0 ? left : (odd ? left + half : left + half - 1);
        const int order = compare(list->sortCriteria, key, ItemView(list, probe));
        if (order == 0) return {probe, probe};
        if (order < 0)
        {
            right = probe - 1;
            n = odd ? half : half - 1;
        }
        else
        {
            left = probe + 1;
            n = half;
        }
        // A window of one is probed once and then ends.
        if (half == 0) break;
    }
    return {-1, left};
}

} // namespace

INT32 SortedInsertIndexLocked(const tTQLIST* list, const void* key, INT32 first, INT32 count,
                              TQLIST_COMPAREPROC compare) noexcept
{
    if (first > list->count) return -1;
    const Window window = ResolveWindow(list, first, count);
    if (window.count == 0) return 0;
    return SearchSorted(list, key, window, compare).insertAt;
}

} // namespace tq::list

using namespace tq::list;

TQKERNEL_API INT32 TqList_FindSpecificItemRange(tTQLIST* list, INT32 first, INT32 count,
                                                const void* item)
{
    if (!IsAlive(list)) return -1;
    ListGuard guard(list);
    if (guard.Denied()) return -1;
    const Window window = ResolveWindow(list, first, count);
    for (INT32 i = window.first; i < window.first + window.count; ++i)
    {
        if (ItemView(list, i) == item) return i;
    }
    return -1;
}

TQKERNEL_API INT32 TqList_FindItemRange(tTQLIST* list, INT32 first, INT32 count, void* context,
                                        TQLIST_MATCHPROC match)
{
    if (!IsAlive(list) || !match) return -1;
    ListGuard guard(list);
    if (guard.Denied()) return -1;
    const Window window = ResolveWindow(list, first, count);
    for (INT32 i = window.first; i < window.first + window.count; ++i)
    {
        if (match(context, ItemView(list, i)) == 0) return i;
    }
    return -1;
}

TQKERNEL_API INT32 TqList_FindSortedItemRange(tTQLIST* list, const void* key, INT32 first,
                                              INT32 count, TQLIST_COMPAREPROC compare)
{
    if (!IsAlive(list) || !compare) return -1;
    ListGuard guard(list);
    if (guard.Denied()) return -1;
    const Window window = ResolveWindow(list, first, count);
    if (window.count == 0) return -1;
    return SearchSorted(list, key, window, compare).found;
}

TQKERNEL_API INT32 TqList_FindSortedInsertIndexRange(tTQLIST* list, const void* key, INT32 first,
                                                     INT32 count, TQLIST_COMPAREPROC compare)
{
    if (!IsAlive(list) || !compare) return -1;
    ListGuard guard(list);
    if (guard.Denied()) return -1;
    return SortedInsertIndexLocked(list, key, first, count, compare);
}
