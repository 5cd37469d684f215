// What the list sources share: the lock prologue, slot access, item memory and the unlocked
// operations that public functions call under a lock they already hold.
#pragma once

#include "tqlist.h"

#include <cstdint>

namespace tq::list {

inline bool IsAlive(const tTQLIST* list) noexcept
{
    return list && list->magic == TQLIST_MAGIC;
}

inline bool HasOption(const tTQLIST* list, UINT32 option) noexcept
{
    return (list->options & option) != 0;
}

// Lists that are not thread-safe belong to one thread unless TQLIST_OPT_ANYTHREAD says otherwise.
inline bool OwnerAllows(const tTQLIST* list) noexcept
{
    return HasOption(list, TQLIST_OPT_THREADSAFE) || HasOption(list, TQLIST_OPT_ANYTHREAD) ||
           list->threadOwner == GetCurrentThreadId();
}

// The prologue of every operation on a live list: hold the lock of a thread-safe list, or check
// the owner of any other. The lock is recursive, so operations may nest.
class ListGuard
{
public:
    explicit ListGuard(tTQLIST* list) noexcept : m_list(list)
    {
        if (HasOption(list, TQLIST_OPT_THREADSAFE))
        {
            EnterCriticalSection(&list->lock);
            m_locked = true;
        }
        else
        {
            m_denied = !OwnerAllows(list);
        }
    }
    ~ListGuard()
    {
        if (m_locked) LeaveCriticalSection(&m_list->lock);
    }
    ListGuard(const ListGuard&) = delete;
    ListGuard& operator=(const ListGuard&) = delete;

    bool Denied() const noexcept { return m_denied; }

private:
    tTQLIST* m_list;
    bool m_locked = false;
    bool m_denied = false;
};

inline SIZE_T SlotSize(const tTQLIST* list) noexcept
{
    return static_cast<SIZE_T>(list->itemSize);
}

inline BYTE* SlotAddress(const tTQLIST* list, INT32 index) noexcept
{
    return static_cast<BYTE*>(list->items) + static_cast<SIZE_T>(index) * SlotSize(list);
}

inline void*& PointerSlot(const tTQLIST* list, INT32 index) noexcept
{
    return static_cast<void**>(list->items)[index];
}

// The item as comparisons and matches see it: the slot of an array list, else the stored pointer.
inline const void* ItemView(const tTQLIST* list, INT32 index) noexcept
{
    if (HasOption(list, TQLIST_OPT_ARRAY)) return SlotAddress(list, index);
    return PointerSlot(list, index);
}

// A search window: first below zero is 0, count negative or too large runs to the end.
struct Window
{
    INT32 first;
    INT32 count;
};

inline Window ResolveWindow(const tTQLIST* list, INT32 first, INT32 count) noexcept
{
    if (first < 0) first = 0;
    const INT32 rest = first < list->count ? list->count - first : 0;
    return {first, count < 0 || count > rest ? rest : count};
}

// Item memory of a heap list: the private heap when there is one, else the global allocator.
void* AllocItemMemory(const tTQLIST* list, SIZE_T size) noexcept;
void FreeItemMemory(const tTQLIST* list, void* item) noexcept;
SIZE_T ItemMemorySize(const tTQLIST* list, const void* item) noexcept;

// Unlocked operations; the caller holds the list's guard.
HRESULT InsertLocked(tTQLIST* list, INT32 index, const void* source, INT32 count) noexcept;
HRESULT AllocAndInsertLocked(tTQLIST* list, const void* initial, SIZE_T size, INT32 index,
                             INT32* insertedIndex) noexcept;
INT32 SortedInsertIndexLocked(const tTQLIST* list, const void* key, INT32 first, INT32 count,
                              TQLIST_COMPAREPROC compare) noexcept;

} // namespace tq::list
