// The kernel's dynamic array: pointer, array and heap lists, their searches and sorts.
#pragma once

#include "tqkernelapi.h"

// Create options, a 32-bit mask.
#define TQLIST_OPT_HEAP 0x00000002u        // the list owns items it allocated one by one
#define TQLIST_OPT_ARRAY 0x00000004u       // the items lie inline in the array
#define TQLIST_OPT_INPLACE 0x00000008u     // the header lies in memory the caller supplies
#define TQLIST_OPT_PRIVATEHEAP 0x10000000u // items of a heap list come from a private heap
#define TQLIST_OPT_ANYTHREAD 0x40000000u   // no owner check
#define TQLIST_OPT_THREADSAFE 0x80000000u  // every operation holds the lock

// "CURT" read little-endian: the magic of a live list header.
#define TQLIST_MAGIC 0x54525543u

// Callers read `count` and index `items` directly; both are part of the interface. For pointer
// and heap lists `items` is an array of pointers (`itemSize` is the size of a pointer); for array
// lists it holds the items themselves, `itemSize` bytes apart.
typedef struct tTQLIST
{
    INT32 count;           // items in use
    UINT64 itemSize;       // bytes per slot
    void* items;           // `allocated` slots, zero-initialised when obtained
    CRITICAL_SECTION lock; // valid only with TQLIST_OPT_THREADSAFE
    UINT32 magic;          // TQLIST_MAGIC while alive, 0 after destruction or a failed creation
    UINT32 options;        // create options
    UINT_PTR userData;     // free for the owner
    UINT_PTR sortCriteria; // first argument to every comparison
    UINT32 threadOwner;    // id of the creating thread, or as set by TqList_SetThreadOwner
    INT32 allocated;       // slots in the array
    INT32 growBy;          // allocation granule, in slots
    HANDLE heap;           // the private heap, with TQLIST_OPT_PRIVATEHEAP
    UINT32 heapAllocFlags; // item allocation flags on the private heap
    UINT32 heapFreeFlags;  // item release flags on the private heap
    void* pendingItem;     // allocated by TqList_AllocItem, not yet inserted
    UINT_PTR reserved;     // zero
} tTQLIST;

// Comparison: negative when key sorts before item, zero when equal, positive after. For an array
// list `item` is the address of the slot, for pointer and heap lists the stored pointer; a sorted
// search passes its key through unchanged, so the key has the same shape.
typedef int (*TQLIST_COMPAREPROC)(UINT_PTR sortCriteria, const void* key, const void* item);
// Match for TqList_FindItemRange: zero selects the item (same item shape as above).
typedef int (*TQLIST_MATCHPROC)(void* context, const void* item);

// Creates a list. Without TQLIST_OPT_INPLACE *list receives a new header (null on failure); with
// it *list points to caller memory of sizeof(tTQLIST) that becomes the header. itemSize matters
// for array lists only. The last three arguments are ignored; pass zero.
TQKERNEL_API HRESULT TqList_CreateExZ(tTQLIST** list, SIZE_T itemSize, INT32 initialCount,
                                      INT32 growBy, UINT32 options, UINT_PTR reserved1,
                                      UINT_PTR reserved2, UINT_PTR reserved3);
// Frees the items a heap list owns, the array and, unless in place, the header. Null is S_OK.
TQKERNEL_API HRESULT TqList_Destroy(tTQLIST* list);
// Moves the header of *list into destination, which becomes an in-place list; *list is cleared.
TQKERNEL_API HRESULT TqList_ConvertToInPlace(tTQLIST** list, tTQLIST* destination);

// Inserts at index (below zero or beyond count: the end). source non-null and count >= 0 copies
// count slots (not for heap lists); source non-null and count < 0 copies -count slots, which a
// heap list takes over; source null and count -1 inserts the pending item.
TQKERNEL_API HRESULT TqList_InsertList(tTQLIST* list, INT32 index, const void* source, INT32 count);
// Deletes count items from index (count < 0: to the end); index and count both below zero
// discard the pending item. shrink gives back free slots beyond one granule.
TQKERNEL_API HRESULT TqList_DeleteList(tTQLIST* list, INT32 index, INT32 count, BOOL shrink);

// Heap lists: allocates one zeroed item as the pending item, to be inserted by TqList_InsertList.
TQKERNEL_API HRESULT TqList_AllocItem(tTQLIST* list, SIZE_T size, void** item);
// Heap lists: allocates an item, copies size bytes of initial into it when given, inserts it at
// index (below zero or beyond count: the end) and reports its index (-1 on failure).
TQKERNEL_API HRESULT TqList_AllocAndInsertItem(tTQLIST* list, const void* initial, SIZE_T size,
                                               INT32 index, INT32* insertedIndex);
// Heap lists: gives the item at index a new size, keeping its bytes; growth is zeroed.
TQKERNEL_API HRESULT TqList_ReAllocItem(tTQLIST* list, INT32 index, SIZE_T size);
// Index below zero: the whole footprint (array, header, every item of a heap list); else the
// size of that item, or the slot size for array and pointer lists. 0 for a bad list or index.
TQKERNEL_API SIZE_T TqList_AllocSize(tTQLIST* list, INT32 index);

// Adds slots (below 1: one granule), rounded up to a multiple of growBy.
TQKERNEL_API HRESULT TqList_GrowAllocated(tTQLIST* list, INT32 slots);
// Gives back free slots (negative: all of them), in whole granules.
TQKERNEL_API HRESULT TqList_ShrinkAllocated(tTQLIST* list, INT32 slots);
// Array lists: sets count, growing the array when needed. The shrink flag has no effect.
TQKERNEL_API HRESULT TqList_ArrayForceItemCount(tTQLIST* list, INT32 count, BOOL shrink);

// Moves count items (negative: up to the end) so that the first of them lands at index to.
TQKERNEL_API HRESULT TqList_MoveRange(tTQLIST* list, INT32 from, INT32 to, INT32 count);
// Moves count items (negative: all) of one heap list into another, keeping their order. Locks
// the destination, then the source: keep that order for any pair of lists.
TQKERNEL_API HRESULT TqList_MoveItemsBetweenHeapLists(tTQLIST* destination, INT32 destinationIndex,
                                                      tTQLIST* source, INT32 sourceIndex,
                                                      INT32 count);

// Searches return an index or -1. A window starts at first (below zero: 0) and spans count items
// (negative or too many: up to the end).
// Finds by identity: the stored pointer, or the slot address of an array list.
TQKERNEL_API INT32 TqList_FindSpecificItemRange(tTQLIST* list, INT32 first, INT32 count,
                                                const void* item);
// The first item for which match returns zero.
TQKERNEL_API INT32 TqList_FindItemRange(tTQLIST* list, INT32 first, INT32 count, void* context,
                                        TQLIST_MATCHPROC match);
// Binary search in a sorted window; with equal items, any of them may be found.
TQKERNEL_API INT32 TqList_FindSortedItemRange(tTQLIST* list, const void* key, INT32 first,
                                              INT32 count, TQLIST_COMPAREPROC compare);
// Where key goes in a sorted window: in front of an equal item found, else behind the items that
// sort before it. An empty window gives 0; first beyond count gives -1.
TQKERNEL_API INT32 TqList_FindSortedInsertIndexRange(tTQLIST* list, const void* key, INT32 first,
                                                     INT32 count, TQLIST_COMPAREPROC compare);

// Selection sort, for short lists; not stable. Stores criteria in sortCriteria.
TQKERNEL_API HRESULT TqList_Sort(tTQLIST* list, UINT_PTR criteria, TQLIST_COMPAREPROC compare);
// Heap sort, O(n log n); not stable. Stores criteria in sortCriteria.
TQKERNEL_API HRESULT TqList_HeapSort(tTQLIST* list, UINT_PTR criteria, TQLIST_COMPAREPROC compare);
// Inserts every source item, in order, at its sorted place in destination. Array lists take
// copies of slots of the same size, pointer lists the source's pointers, heap lists copies of a
// heap list's items.
TQKERNEL_API HRESULT TqList_SortTo(tTQLIST* destination, tTQLIST* source, UINT_PTR criteria,
                                   TQLIST_COMPAREPROC compare);

// Returns the previous value; the exchange is atomic.
TQKERNEL_API UINT_PTR TqList_SetUserData(tTQLIST* list, UINT_PTR userData);
TQKERNEL_API UINT_PTR TqList_GetUserData(const tTQLIST* list);
TQKERNEL_API UINT32 TqList_GetCreateOptions(const tTQLIST* list);
TQKERNEL_API UINT_PTR TqList_GetSortCriteria(const tTQLIST* list);
TQKERNEL_API DWORD TqList_GetThreadOwner(const tTQLIST* list);
// 0 takes the calling thread's id.
TQKERNEL_API HRESULT TqList_SetThreadOwner(tTQLIST* list, DWORD threadId);

// True when size is that of a header, the memory is readable and holds a live list.
TQKERNEL_API BOOL TqList_IsList(const void* pointer, SIZE_T size);
// Compares the magic and nothing else.
TQKERNEL_API BOOL TqList_IsListFast(const void* pointer);
// index within 0 to count-1, tested under the list's lock.
TQKERNEL_API BOOL TqList_IsValidIndexSlow(tTQLIST* list, INT32 index);
// No creation record is kept: writes an empty string into buffer (when given) and returns
// 0xFFFFFFFF.
TQKERNEL_API DWORD TqList_GetFileAndLine(const tTQLIST* list, wchar_t* buffer);
