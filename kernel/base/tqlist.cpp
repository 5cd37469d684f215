// List lifecycle, sizing, insertion, deletion, item allocation, moves and accessors.
#include "tqlistinternal.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace tq::list {
namespace {

constexpr INT32 kDefaultSlots = 16;
constexpr INT32 kMinGrowBy = 4;
constexpr INT32 kMaxGrowBy = 0x10400;
constexpr INT32 kMinInitialSlots = 4;
// Larger array items make no sense and would overflow the slot arithmetic.
constexpr SIZE_T kMaxItemSize = 0x7FFFFFFF;
constexpr SIZE_T kPrivateHeapInitialSize = 4096;
constexpr SIZE_T kMoveStackBytes = 512;

// A zeroed block from the global allocator, freed unless released.
class GlobalBlock
{
public:
    // No block for zero bytes, so that Get() tells whether one was wanted and obtained.
    explicit GlobalBlock(SIZE_T bytes) noexcept : m_p(bytes ? GlobalAlloc(GPTR, bytes) : nullptr) {}
    ~GlobalBlock()
    {
        if (m_p) GlobalFree(m_p);
    }
    GlobalBlock(const GlobalBlock&) = delete;
    GlobalBlock& operator=(const GlobalBlock&) = delete;

    BYTE* Get() const noexcept { return static_cast<BYTE*>(m_p); }
    void* Release() noexcept { return std::exchange(m_p, nullptr); }

private:
    void* m_p;
};

INT64 RoundUp(INT64 value, INT64 granule) noexcept
{
    return (value + granule - 1) / granule * granule;
}

// Bytes for a number of slots, or false when that does not fit the address space.
bool SlotBytes(const tTQLIST* list, INT64 slots, SIZE_T* bytes) noexcept
{
    const UINT64 total = static_cast<UINT64>(slots) * list->itemSize;
    if (slots < 0 || slots > INT32_MAX || total > SIZE_MAX) return false;
    *bytes = static_cast<SIZE_T>(total);
    return true;
}

INT32 GrowByFor(INT32 growBy) noexcept
{
    if (growBy < 1) growBy = kDefaultSlots;
    return std::clamp(growBy, kMinGrowBy, kMaxGrowBy);
}

INT32 InitialSlotsFor(INT32 initialCount) noexcept
{
    if (initialCount < 1) return kDefaultSlots;
    return std::max(initialCount, kMinInitialSlots);
}

bool IsHeapList(const tTQLIST* list) noexcept
{
    return HasOption(list, TQLIST_OPT_HEAP);
}

// Replaces the array by a zeroed block of newAllocated slots that starts with the first keep
// slots of the old one. A block never shrinks below one slot.
HRESULT Reallocate(tTQLIST* list, INT64 newAllocated, INT32 keep) noexcept
{
    SIZE_T bytes = 0, keepBytes = 0;
    if (!SlotBytes(list, std::max<INT64>(newAllocated, 1), &bytes)) return E_OUTOFMEMORY;
    SlotBytes(list, keep, &keepBytes);
    GlobalBlock block(bytes);
    if (!block.Get()) return E_OUTOFMEMORY;
    if (keepBytes) memcpy(block.Get(), list->items, keepBytes);
    GlobalFree(list->items);
    list->items = block.Release();
    list->allocated = static_cast<INT32>(newAllocated);
    return S_OK;
}

HRESULT GrowLocked(tTQLIST* list, INT32 slots) noexcept
{
    if (slots < 1) slots = list->growBy;
    return Reallocate(list, list->allocated + RoundUp(slots, list->growBy), list->allocated);
}

HRESULT ShrinkLocked(tTQLIST* list, INT32 slots) noexcept
{
    const INT32 free = list->allocated - list->count;
    const INT32 request = slots < 0 ? free : std::min(slots, free);
    INT64 release = RoundUp(request, list->growBy);
    if (release > free) release -= list->growBy;
    if (release <= 0) return S_OK;
    const INT64 newAllocated = list->allocated - release;
    return Reallocate(list, newAllocated, static_cast<INT32>(newAllocated));
}

void FreeAllItems(tTQLIST* list) noexcept
{
    if (list->pendingItem) FreeItemMemory(list, std::exchange(list->pendingItem, nullptr));
    if (list->heap)
    {
        // The whole private heap goes at once; what the slots pointed to is gone with it.
        HeapDestroy(std::exchange(list->heap, nullptr));
        SIZE_T bytes = 0;
        if (SlotBytes(list, list->count, &bytes)) ZeroMemory(list->items, bytes);
        return;
    }
    for (INT32 i = 0; i < list->count; ++i)
        FreeItemMemory(list, std::exchange(PointerSlot(list, i), nullptr));
}

// Takes n slots out at index; the vacated slots at the end are zeroed.
void RemoveSlots(tTQLIST* list, INT32 index, INT32 n, bool freeItems) noexcept
{
    if (freeItems && IsHeapList(list))
    {
        for (INT32 i = index; i < index + n; ++i)
            FreeItemMemory(list, PointerSlot(list, i));
    }
    const SIZE_T slot = SlotSize(list);
    memmove(SlotAddress(list, index), SlotAddress(list, index + n),
            static_cast<SIZE_T>(list->count - index - n) * slot);
    ZeroMemory(SlotAddress(list, list->count - n), static_cast<SIZE_T>(n) * slot);
    list->count -= n;
}

HRESULT DeleteLocked(tTQLIST* list, INT32 index, INT32 count, BOOL shrink) noexcept
{
    if (index >= 0 && count < 0)
    {
        count = list->count - index;
    }
    else if (index < 0 && count < 0)
    {
        if (!list->pendingItem) return E_FAIL;
        FreeItemMemory(list, std::exchange(list->pendingItem, nullptr));
        return S_OK;
    }
    if (count < 1) return S_OK;
    if (index < 0 || index >= list->count) return E_FAIL;
    RemoveSlots(list, index, std::min(count, list->count - index), true);
    // A failed shrink leaves the list as it was; the deletion itself has succeeded.
    if (shrink && list->allocated - list->count > list->growBy) ShrinkLocked(list, -1);
    return S_OK;
}

HRESULT AllocItemLocked(tTQLIST* list, SIZE_T size, void** item) noexcept
{
    if (!IsHeapList(list) || list->pendingItem) return E_FAIL;
    void* p = AllocItemMemory(list, size);
    if (!p) return E_OUTOFMEMORY;
    list->pendingItem = p;
    *item = p;
    return S_OK;
}

bool Overlaps(const void* a, SIZE_T aBytes, const void* b, SIZE_T bBytes) noexcept
{
    const auto pa = reinterpret_cast<UINT_PTR>(a), pb = reinterpret_cast<UINT_PTR>(b);
    return pa < pb + bBytes && pb < pa + aBytes;
}

bool IsReadable(const void* pointer, SIZE_T size) noexcept
{
    constexpr DWORD kReadable = PAGE_READONLY | PAGE_READWRITE | PAGE_WRITECOPY |
                                PAGE_EXECUTE_READ | PAGE_EXECUTE_READWRITE | PAGE_EXECUTE_WRITECOPY;
    auto cursor = static_cast<const BYTE*>(pointer);
    const BYTE* end = cursor + size;
    while (cursor < end)
    {
        MEMORY_BASIC_INFORMATION info;
        if (!VirtualQuery(cursor, &info, sizeof info)) return false;
        if (info.State != MEM_COMMIT || (info.Protect & PAGE_GUARD) || !(info.Protect & kReadable))
            return false;
        cursor = static_cast<const BYTE*>(info.BaseAddress) + info.RegionSize;
    }
    return true;
}

} // namespace

void* AllocItemMemory(const tTQLIST* list, SIZE_T size) noexcept
{
    if (list->heap) return HeapAlloc(list->heap, list->heapAllocFlags, size);
    return GlobalAlloc(GPTR, size);
}

void FreeItemMemory(const tTQLIST* list, void* item) noexcept
{
    if (!item) return;
    if (list->heap)
        HeapFree(list->heap, list->heapFreeFlags, item);
    else
        GlobalFree(item);
}

SIZE_T ItemMemorySize(const tTQLIST* list, const void* item) noexcept
{
    if (!item) return 0;
    if (list->heap) return HeapSize(list->heap, list->heapFreeFlags, item);
    return GlobalSize(const_cast<void*>(item));
}

HRESULT InsertLocked(tTQLIST* list, INT32 index, const void* source, INT32 count) noexcept
{
    const void* from = nullptr;
    INT32 n = 0;
    const bool insertPending = !source && count == -1 && list->pendingItem;
    if (source && count >= 0 && !IsHeapList(list))
    {
        from = source;
        n = count;
    }
    else if (source && count < 0 && count != INT32_MIN)
    {
        from = source;
        n = -count;
    }
    else if (insertPending)
    {
        from = &list->pendingItem;
        n = 1;
    }
    else
    {
        return E_FAIL;
    }
    if (index < 0 || index > list->count) index = list->count;
    if (n == 0) return S_OK;
    if (static_cast<INT64>(list->count) + n > INT32_MAX) return E_OUTOFMEMORY;

    const SIZE_T slot = SlotSize(list);
    const SIZE_T bytes = static_cast<SIZE_T>(n) * slot;
    // A source inside the list's own array would move under the growth or the tail shift.
    const bool fromOwnSlots = Overlaps(from, bytes, list->items, list->allocated * slot);
    GlobalBlock copy(fromOwnSlots ? bytes : 0);
    if (fromOwnSlots)
    {
        if (!copy.Get()) return E_OUTOFMEMORY;
        from = memcpy(copy.Get(), from, bytes);
    }

    if (list->count + n > list->allocated)
    {
        const HRESULT hr = GrowLocked(list, list->count + n - list->allocated);
        if (FAILED(hr)) return hr;
    }
    memmove(SlotAddress(list, index + n), SlotAddress(list, index),
            static_cast<SIZE_T>(list->count - index) * slot);
    memcpy(SlotAddress(list, index), from, bytes);
    list->count += n;
    if (insertPending) list->pendingItem = nullptr;
    return S_OK;
}

HRESULT AllocAndInsertLocked(tTQLIST* list, const void* initial, SIZE_T size, INT32 index,
                             INT32* insertedIndex) noexcept
{
    if (insertedIndex) *insertedIndex = -1;
    void* item = nullptr;
    HRESULT hr = AllocItemLocked(list, size, &item);
    if (FAILED(hr)) return hr;
    if (initial) memcpy(item, initial, size);
    if (index < 0 || index > list->count) index = list->count;
    hr = InsertLocked(list, index, nullptr, -1);
    if (FAILED(hr))
    {
        FreeItemMemory(list, std::exchange(list->pendingItem, nullptr));
        return hr;
    }
    if (insertedIndex) *insertedIndex = index;
    return S_OK;
}

} // namespace tq::list

using namespace tq::list;

TQKERNEL_API HRESULT TqList_CreateExZ(tTQLIST** list, SIZE_T itemSize, INT32 initialCount,
                                      INT32 growBy, UINT32 options, UINT_PTR, UINT_PTR, UINT_PTR)
{
    if (!list) return E_INVALIDARG;
    const bool inPlace = (options & TQLIST_OPT_INPLACE) != 0;
    if (inPlace && !*list) return E_FAIL;
    if (!inPlace) *list = nullptr;
    const bool arrayList = (options & TQLIST_OPT_ARRAY) != 0;
    if (arrayList && (options & TQLIST_OPT_HEAP)) return E_FAIL;
    if (arrayList && (itemSize == 0 || itemSize > kMaxItemSize)) return E_INVALIDARG;

    tTQLIST* header = inPlace ? *list : static_cast<tTQLIST*>(GlobalAlloc(GPTR, sizeof(tTQLIST)));
    if (!header) return E_OUTOFMEMORY;
    ZeroMemory(header, sizeof *header);
    // Array items are whole 32-bit words, because the sorts swap them word by word.
    header->itemSize = arrayList ? RoundUp(itemSize, 4) : sizeof(void*);
    header->growBy = GrowByFor(growBy);
    // Every list skips the owner check; the check itself stays for lists whose options change.
    header->options = options | TQLIST_OPT_ANYTHREAD;
    header->threadOwner = GetCurrentThreadId();

    SIZE_T bytes = 0;
    const INT64 slots = RoundUp(InitialSlotsFor(initialCount), header->growBy);
    if (SlotBytes(header, slots, &bytes)) header->items = GlobalAlloc(GPTR, bytes);
    if (!header->items)
    {
        header->magic = 0;
        if (!inPlace) GlobalFree(header);
        return E_OUTOFMEMORY;
    }
    header->allocated = static_cast<INT32>(slots);
    if (options & TQLIST_OPT_THREADSAFE) InitializeCriticalSection(&header->lock);
    header->magic = TQLIST_MAGIC;

    if ((options & TQLIST_OPT_HEAP) && (options & TQLIST_OPT_PRIVATEHEAP))
    {
        // The list's own lock or its single owner serialises the heap.
        header->heapFreeFlags = HEAP_NO_SERIALIZE;
        header->heapAllocFlags = HEAP_NO_SERIALIZE | HEAP_ZERO_MEMORY;
        header->heap = HeapCreate(HEAP_NO_SERIALIZE, kPrivateHeapInitialSize, 0);
        if (!header->heap)
        {
            TqList_Destroy(header);
            return E_OUTOFMEMORY;
        }
    }
    if (!inPlace) *list = header;
    return S_OK;
}

TQKERNEL_API HRESULT TqList_Destroy(tTQLIST* list)
{
    if (!list) return S_OK;
    if (!IsAlive(list)) return E_INVALIDARG;
    if (!OwnerAllows(list)) return E_FAIL;
    const bool threadSafe = HasOption(list, TQLIST_OPT_THREADSAFE);
    if (threadSafe) EnterCriticalSection(&list->lock);
    if (IsHeapList(list)) FreeAllItems(list);
    GlobalFree(std::exchange(list->items, nullptr));
    list->count = 0;
    list->allocated = 0;
    if (threadSafe)
    {
        LeaveCriticalSection(&list->lock);
        DeleteCriticalSection(&list->lock);
    }
    list->magic = 0;
    if (!HasOption(list, TQLIST_OPT_INPLACE)) GlobalFree(list);
    return S_OK;
}

TQKERNEL_API HRESULT TqList_ConvertToInPlace(tTQLIST** list, tTQLIST* destination)
{
    if (!list || !destination || !IsAlive(*list) || *list == destination) return E_INVALIDARG;
    tTQLIST* source = *list;
    if (HasOption(source, TQLIST_OPT_INPLACE) || !OwnerAllows(source)) return E_FAIL;
    const bool threadSafe = HasOption(source, TQLIST_OPT_THREADSAFE);
    if (threadSafe) EnterCriticalSection(&source->lock);
    memcpy(destination, source, sizeof *destination);
    destination->options |= TQLIST_OPT_INPLACE;
    if (threadSafe)
    {
        // A critical section is tied to its address and cannot be copied: make a new one.
        InitializeCriticalSection(&destination->lock);
        LeaveCriticalSection(&source->lock);
        DeleteCriticalSection(&source->lock);
    }
    source->magic = 0;
    GlobalFree(source);
    *list = nullptr;
    return S_OK;
}

TQKERNEL_API HRESULT TqList_InsertList(tTQLIST* list, INT32 index, const void* source, INT32 count)
{
    if (!IsAlive(list)) return E_INVALIDARG;
    ListGuard guard(list);
    if (guard.Denied()) return E_FAIL;
    return InsertLocked(list, index, source, count);
}

TQKERNEL_API HRESULT TqList_DeleteList(tTQLIST* list, INT32 index, INT32 count, BOOL shrink)
{
    if (!IsAlive(list)) return E_INVALIDARG;
    ListGuard guard(list);
    if (guard.Denied()) return E_FAIL;
    return DeleteLocked(list, index, count, shrink);
}

TQKERNEL_API HRESULT TqList_AllocItem(tTQLIST* list, SIZE_T size, void** item)
{
    if (!IsAlive(list) || !item) return E_INVALIDARG;
    ListGuard guard(list);
    if (guard.Denied()) return E_FAIL;
    return AllocItemLocked(list, size, item);
}

TQKERNEL_API HRESULT TqList_AllocAndInsertItem(tTQLIST* list, const void* initial, SIZE_T size,
                                               INT32 index, INT32* insertedIndex)
{
    if (insertedIndex) *insertedIndex = -1;
    if (!IsAlive(list)) return E_INVALIDARG;
    ListGuard guard(list);
    if (guard.Denied()) return E_FAIL;
    return AllocAndInsertLocked(list, initial, size, index, insertedIndex);
}

TQKERNEL_API HRESULT TqList_ReAllocItem(tTQLIST* list, INT32 index, SIZE_T size)
{
    if (!IsAlive(list)) return E_INVALIDARG;
    ListGuard guard(list);
    if (guard.Denied() || !IsHeapList(list)) return E_FAIL;
    if (index < 0 || index >= list->count) return E_INVALIDARG;
    void*& slot = PointerSlot(list, index);
    void* item = AllocItemMemory(list, size);
    if (!item) return E_OUTOFMEMORY;
    if (slot) memcpy(item, slot, std::min(size, ItemMemorySize(list, slot)));
    FreeItemMemory(list, std::exchange(slot, item));
    return S_OK;
}

TQKERNEL_API SIZE_T TqList_AllocSize(tTQLIST* list, INT32 index)
{
    if (!IsAlive(list)) return 0;
    ListGuard guard(list);
    if (guard.Denied() || index >= list->count) return 0;
    if (index >= 0)
        return IsHeapList(list) ? ItemMemorySize(list, PointerSlot(list, index)) : SlotSize(list);
    SIZE_T total = static_cast<SIZE_T>(list->allocated) * SlotSize(list) + sizeof(tTQLIST);
    if (IsHeapList(list))
    {
        for (INT32 i = 0; i < list->count; ++i)
            total += ItemMemorySize(list, PointerSlot(list, i));
    }
    return total;
}

TQKERNEL_API HRESULT TqList_GrowAllocated(tTQLIST* list, INT32 slots)
{
    if (!IsAlive(list)) return E_INVALIDARG;
    ListGuard guard(list);
    if (guard.Denied()) return E_FAIL;
    return GrowLocked(list, slots);
}

TQKERNEL_API HRESULT TqList_ShrinkAllocated(tTQLIST* list, INT32 slots)
{
    if (!IsAlive(list)) return E_INVALIDARG;
    ListGuard guard(list);
    if (guard.Denied()) return E_FAIL;
    return ShrinkLocked(list, slots);
}

// Lowering the count keeps the slots' contents, so raising it again shows them once more.
TQKERNEL_API HRESULT TqList_ArrayForceItemCount(tTQLIST* list, INT32 count, BOOL)
{
    if (!IsAlive(list)) return E_INVALIDARG;
    ListGuard guard(list);
    if (guard.Denied() || !HasOption(list, TQLIST_OPT_ARRAY)) return E_FAIL;
    if (count < 0) return E_INVALIDARG;
    if (count > list->allocated)
    {
        const HRESULT hr = GrowLocked(list, count - list->allocated);
        if (FAILED(hr)) return hr;
    }
    list->count = count;
    return S_OK;
}

TQKERNEL_API HRESULT TqList_MoveRange(tTQLIST* list, INT32 from, INT32 to, INT32 count)
{
    if (!IsAlive(list)) return E_INVALIDARG;
    ListGuard guard(list);
    if (guard.Denied()) return E_FAIL;
    if (from < 0) return E_INVALIDARG;
    if (to < 0) to = 0;
    if (count < 0) count = list->count - std::max(from, to);
    if (static_cast<INT64>(from) + count > list->count ||
        static_cast<INT64>(to) + count > list->count)
        return E_FAIL;
    if (count < 1 || from == to) return S_OK;

    const SIZE_T slot = SlotSize(list);
    const SIZE_T bytes = static_cast<SIZE_T>(count) * slot;
    BYTE onStack[kMoveStackBytes];
    GlobalBlock onHeap(bytes > sizeof onStack ? bytes : 0);
    BYTE* buffer = bytes > sizeof onStack ? onHeap.Get() : onStack;
    if (!buffer) return E_OUTOFMEMORY;

    memcpy(buffer, SlotAddress(list, from), bytes);
    if (from < to)
        memmove(SlotAddress(list, from), SlotAddress(list, from + count),
                static_cast<SIZE_T>(to - from) * slot);
    else
        memmove(SlotAddress(list, to + count), SlotAddress(list, to),
                static_cast<SIZE_T>(from - to) * slot);
    memcpy(SlotAddress(list, to), buffer, bytes);
    return S_OK;
}

TQKERNEL_API HRESULT TqList_MoveItemsBetweenHeapLists(tTQLIST* destination, INT32 destinationIndex,
                                                      tTQLIST* source, INT32 sourceIndex,
                                                      INT32 count)
{
    if (!IsAlive(destination) || !IsAlive(source) || destination == source || sourceIndex < 0)
        return E_INVALIDARG;
    ListGuard destinationGuard(destination);
    if (destinationGuard.Denied()) return E_FAIL;
    ListGuard sourceGuard(source);
    if (sourceGuard.Denied()) return E_FAIL;
    if (!IsHeapList(destination) || !IsHeapList(source) || destination->pendingItem) return E_FAIL;
    // Each item must go back to the heap it came from, which a private heap does not share.
    if (destination->heap != source->heap) return E_FAIL;
    if (count < 0) count = source->count;
    if (count == 0) return S_OK;
    if (static_cast<INT64>(sourceIndex) + count > source->count) return E_FAIL;

    // The destination takes the pointers over in one block, which keeps their order; only then
    // do they leave the source, so a failed growth changes neither list.
    const HRESULT hr =
        InsertLocked(destination, destinationIndex, &PointerSlot(source, sourceIndex), -count);
    if (FAILED(hr)) return hr;
    RemoveSlots(source, sourceIndex, count, false);
    return S_OK;
}

TQKERNEL_API UINT_PTR TqList_SetUserData(tTQLIST* list, UINT_PTR userData)
{
    if (!IsAlive(list)) return 0;
    return reinterpret_cast<UINT_PTR>(InterlockedExchangePointer(
        reinterpret_cast<void* volatile*>(&list->userData), reinterpret_cast<void*>(userData)));
}

TQKERNEL_API UINT_PTR TqList_GetUserData(const tTQLIST* list)
{
    return IsAlive(list) ? list->userData : 0;
}

TQKERNEL_API UINT32 TqList_GetCreateOptions(const tTQLIST* list)
{
    return IsAlive(list) ? list->options : 0;
}

TQKERNEL_API UINT_PTR TqList_GetSortCriteria(const tTQLIST* list)
{
    return IsAlive(list) ? list->sortCriteria : 0;
}

TQKERNEL_API DWORD TqList_GetThreadOwner(const tTQLIST* list)
{
    return IsAlive(list) ? list->threadOwner : 0;
}

TQKERNEL_API HRESULT TqList_SetThreadOwner(tTQLIST* list, DWORD threadId)
{
    if (!IsAlive(list)) return E_INVALIDARG;
    list->threadOwner = threadId ? threadId : GetCurrentThreadId();
    return S_OK;
}

TQKERNEL_API BOOL TqList_IsList(const void* pointer, SIZE_T size)
{
    return pointer && size == sizeof(tTQLIST) && IsReadable(pointer, size) &&
           IsAlive(static_cast<const tTQLIST*>(pointer));
}

TQKERNEL_API BOOL TqList_IsListFast(const void* pointer)
{
    return IsAlive(static_cast<const tTQLIST*>(pointer));
}

TQKERNEL_API BOOL TqList_IsValidIndexSlow(tTQLIST* list, INT32 index)
{
    if (!IsAlive(list)) return FALSE;
    ListGuard guard(list);
    return !guard.Denied() && index >= 0 && index < list->count;
}

TQKERNEL_API DWORD TqList_GetFileAndLine(const tTQLIST*, wchar_t* buffer)
{
    if (buffer) *buffer = L'\0';
    return 0xFFFFFFFF;
}
