// List sorts: selection sort for short lists, heap sort for long ones, and sorted copy.
#include "tqlistinternal.h"

#include <cstring>
#include <utility>

namespace tq::list {
namespace {

// Array items are swapped in 32-bit words; their size is a multiple of 4 for this reason.
void Swap(const tTQLIST* list, INT32 a, INT32 b) noexcept
{
    if (!HasOption(list, TQLIST_OPT_ARRAY))
    {
        std::swap(PointerSlot(list, a), PointerSlot(list, b));
        return;
    }
    // Words go through memcpy: the items' own type is the caller's business.
    BYTE* x = SlotAddress(list, a);
    BYTE* y = SlotAddress(list, b);
    for (SIZE_T offset = 0; offset < SlotSize(list); offset += sizeof(UINT32))
    {
        UINT32 u, v;
        memcpy(&u, x + offset, sizeof u);
        memcpy(&v, y + offset, sizeof v);
        memcpy(x + offset, &v, sizeof v);
        memcpy(y + offset, &u, sizeof u);
    }
}

class Sorter
{
public:
    Sorter(const tTQLIST* list, TQLIST_COMPAREPROC compare) noexcept
        : m_list(list), m_compare(compare)
    {
    }

    // Compares items by 1-based heap position, as the heap sort counts them.
    bool Greater(INT32 a, INT32 b) const noexcept
    {
        return m_compare(m_list->sortCriteria, ItemView(m_list, a - 1), ItemView(m_list, b - 1)) >
               0;
    }

    void SelectionSort() const noexcept
    {
        for (INT32 last = m_list->count - 1; last > 0; --last)
        {
            // Only a strictly greater candidate replaces the maximum, so the earliest of equal
            // items is taken.
            INT32 maximum = 0;
            for (INT32 i = 1; i <= last; ++i)
            {
                if (m_compare(m_list->sortCriteria, ItemView(m_list, i),
                              ItemView(m_list, maximum)) >= 1)
                    maximum = i;
            }
            if (maximum != last) Swap(m_list, maximum, last);
        }
    }

    void HeapSort() const noexcept
    {
        const INT32 n = m_list->count;
        // Position 1 is left out of the build: every extraction sifts it first.
        for (INT32 position = n / 2; position >= 2; --position)
            Sift(position, n);
        for (INT32 end = n; end >= 2; --end)
        {
            Sift(1, end);
            Swap(m_list, 0, end - 1);
        }
    }

private:
    // Descends the whole path to a leaf, following the greater child and swapping wherever the
    // child is greater than its parent.
    void Sift(INT32 position, INT32 end) const noexcept
    {
        for (INT32 child = 2 * position; child <= end; position = child, child = 2 * position)
        {
            if (child < end && Greater(child + 1, child)) ++child;
            if (Greater(child, position)) Swap(m_list, child - 1, position - 1);
        }
    }

    const tTQLIST* m_list;
    TQLIST_COMPAREPROC m_compare;
};

template <class Run>
HRESULT SortInPlace(tTQLIST* list, UINT_PTR criteria, TQLIST_COMPAREPROC compare, Run run)
{
    if (!IsAlive(list)) return E_INVALIDARG;
    ListGuard guard(list);
    if (guard.Denied()) return E_FAIL;
    list->sortCriteria = criteria;
    if (compare && list->count >= 2) run(Sorter(list, compare));
    return S_OK;
}

// How a source item enters the destination of a sorted copy, by the two lists' layouts.
enum class CopyKind
{
    Unsupported,
    Slot,    // array to array of the same slot size: the slot's bytes
    Pointer, // pointer or heap list to pointer list: the pointer, which the source keeps owning
    Item,    // heap to heap list: a new copy of the item
};

CopyKind CopyKindFor(const tTQLIST* destination, const tTQLIST* source) noexcept
{
    if (HasOption(destination, TQLIST_OPT_ARRAY))
    {
        return HasOption(source, TQLIST_OPT_ARRAY) && source->itemSize == destination->itemSize
                   ? CopyKind::Slot
                   : CopyKind::Unsupported;
    }
    if (HasOption(destination, TQLIST_OPT_HEAP))
        return HasOption(source, TQLIST_OPT_HEAP) ? CopyKind::Item : CopyKind::Unsupported;
    return HasOption(source, TQLIST_OPT_ARRAY) ? CopyKind::Unsupported : CopyKind::Pointer;
}

HRESULT InsertSorted(tTQLIST* destination, const tTQLIST* source, INT32 index, CopyKind kind,
                     TQLIST_COMPAREPROC compare) noexcept
{
    ListGuard guard(destination);
    if (guard.Denied()) return E_FAIL;
    const void* key = ItemView(source, index);
    const INT32 at = SortedInsertIndexLocked(destination, key, 0, destination->count, compare);
    switch (kind)
    {
    case CopyKind::Slot:
        return InsertLocked(destination, at, key, 1);
    case CopyKind::Pointer:
        return InsertLocked(destination, at, &PointerSlot(source, index), 1);
    case CopyKind::Item:
        return AllocAndInsertLocked(destination, key, ItemMemorySize(source, key), at, nullptr);
    case CopyKind::Unsupported:
        break;
    }
    return E_FAIL;
}

} // namespace
} // namespace tq::list

using namespace tq::list;

TQKERNEL_API HRESULT TqList_Sort(tTQLIST* list, UINT_PTR criteria, TQLIST_COMPAREPROC compare)
{
    return SortInPlace(list, criteria, compare, [](const Sorter& s) { s.SelectionSort(); });
}

TQKERNEL_API HRESULT TqList_HeapSort(tTQLIST* list, UINT_PTR criteria, TQLIST_COMPAREPROC compare)
{
    return SortInPlace(list, criteria, compare, [](const Sorter& s) { s.HeapSort(); });
}

TQKERNEL_API HRESULT TqList_SortTo(tTQLIST* destination, tTQLIST* source, UINT_PTR criteria,
                                   TQLIST_COMPAREPROC compare)
{
    if (!IsAlive(destination) || !IsAlive(source) || destination == source) return E_INVALIDARG;
    if (!compare) return S_OK;
    // Only the source stays locked throughout; each insertion locks the destination by itself.
    ListGuard guard(source);
    if (guard.Denied()) return E_FAIL;
    const CopyKind kind = CopyKindFor(destination, source);
    if (kind == CopyKind::Unsupported) return E_FAIL;
    {
        ListGuard destinationGuard(destination);
        if (destinationGuard.Denied()) return E_FAIL;
        destination->sortCriteria = criteria;
    }
    for (INT32 i = 0; i < source->count; ++i)
    {
        const HRESULT hr = InsertSorted(destination, source, i, kind, compare);
        if (FAILED(hr)) return hr;
    }
    return S_OK;
}
