// Lists: sizing, insertion and deletion shapes, item memory, moves, searches, sorts, threads.
#include "tqlist.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>
#include <utility>
#include <vector>

namespace {

struct ListDeleter
{
    void operator()(tTQLIST* list) const { TqList_Destroy(list); }
};
using ListPtr = std::unique_ptr<tTQLIST, ListDeleter>;

ListPtr MakeList(SIZE_T itemSize, INT32 initial, INT32 growBy, UINT32 options)
{
    tTQLIST* list = nullptr;
    EXPECT_EQ(TqList_CreateExZ(&list, itemSize, initial, growBy, options, 0, 0, 0), S_OK);
    return ListPtr(list);
}

ListPtr IntList(std::vector<int> values, INT32 growBy = 4)
{
    ListPtr list = MakeList(sizeof(int), 1, growBy, TQLIST_OPT_ARRAY);
    if (!values.empty())
    {
        EXPECT_EQ(TqList_InsertList(list.get(), -1, values.data(), INT32(values.size())), S_OK);
    }
    return list;
}

std::vector<int> Ints(const tTQLIST* list)
{
    const int* p = static_cast<const int*>(list->items);
    return std::vector<int>(p, p + list->count);
}

// Pointer and heap lists here hold ints, so their order reads the same way.
std::vector<int> PointedInts(const tTQLIST* list)
{
    std::vector<int> out;
    for (INT32 i = 0; i < list->count; ++i)
        out.push_back(*static_cast<int**>(list->items)[i]);
    return out;
}

ListPtr HeapList(std::initializer_list<int> values, UINT32 extra = 0)
{
    ListPtr list = MakeList(0, 4, 4, TQLIST_OPT_HEAP | extra);
    for (int v : values)
        EXPECT_EQ(TqList_AllocAndInsertItem(list.get(), &v, sizeof v, -1, nullptr), S_OK);
    return list;
}

int CompareInts(UINT_PTR descending, const void* key, const void* item)
{
    const int a = *static_cast<const int*>(key), b = *static_cast<const int*>(item);
    return descending ? (b > a) - (b < a) : (a > b) - (a < b);
}

// --- Creation -------------------------------------------------------------------------------

TEST(TqListCreate, SizingRules)
{
    struct Case
    {
        INT32 initial, growBy, wantGrowBy, wantAllocated;
    } const cases[] = {
        {1, 1, 4, 4},
        {0, 0, 16, 16},
        {-5, -5, 16, 16},
        {3, 16, 16, 16},
        {20, 16, 16, 32},
        {17, 5, 5, 20},
        {16, 0x20000, 0x10400, 0x10400},
    };
    for (const Case& c : cases)
    {
        ListPtr list = MakeList(0, c.initial, c.growBy, 0);
        EXPECT_EQ(list->growBy, c.wantGrowBy) << c.initial << "/" << c.growBy;
        EXPECT_EQ(list->allocated, c.wantAllocated) << c.initial << "/" << c.growBy;
    }
    ListPtr array = MakeList(6, 0, 0, TQLIST_OPT_ARRAY);
    EXPECT_EQ(array->itemSize, 8u);
    EXPECT_EQ(memcmp(&array->magic, "CURT", 4), 0);
    EXPECT_EQ(TqList_GetCreateOptions(array.get()), TQLIST_OPT_ARRAY | TQLIST_OPT_ANYTHREAD);
}

TEST(TqListCreate, FailuresLeaveNoList)
{
    tTQLIST* list = reinterpret_cast<tTQLIST*>(1);
    EXPECT_EQ(TqList_CreateExZ(&list, 4, 0, 0, TQLIST_OPT_ARRAY | TQLIST_OPT_HEAP, 0, 0, 0),
              E_FAIL);
    EXPECT_EQ(list, nullptr);
    EXPECT_EQ(TqList_CreateExZ(&list, 0, 0, 0, TQLIST_OPT_ARRAY, 0, 0, 0), E_INVALIDARG);
    EXPECT_EQ(TqList_CreateExZ(&list, 4, 0, 0, TQLIST_OPT_INPLACE, 0, 0, 0), E_FAIL);
    EXPECT_EQ(TqList_CreateExZ(&list, 0x7FFFFFF0, 0x7FFFFFF0, 0, TQLIST_OPT_ARRAY, 0, 0, 0),
              E_OUTOFMEMORY);
    EXPECT_EQ(list, nullptr);
}

TEST(TqListCreate, InPlaceHeadersAndValidity)
{
    tTQLIST header;
    memset(&header, 0xCC, sizeof header);
    tTQLIST* list = &header;
    ASSERT_EQ(TqList_CreateExZ(&list, 4, 0, 0, TQLIST_OPT_INPLACE | TQLIST_OPT_THREADSAFE, 0, 0, 0),
              S_OK);
    EXPECT_EQ(header.userData, 0u); // zeroed
    EXPECT_TRUE(TqList_IsList(&header, sizeof header));
    EXPECT_FALSE(TqList_IsList(&header, sizeof header - 1));
    EXPECT_EQ(TqList_Destroy(&header), S_OK); // does not free our memory
    EXPECT_FALSE(TqList_IsListFast(&header));
    EXPECT_EQ(TqList_Destroy(&header), E_INVALIDARG);
    void* page = VirtualAlloc(nullptr, 4096, MEM_RESERVE, PAGE_NOACCESS);
    EXPECT_FALSE(TqList_IsList(page, sizeof(tTQLIST)));
    VirtualFree(page, 0, MEM_RELEASE);

    // A converted list keeps its items and gets a working lock of its own.
    tTQLIST* moved = nullptr;
    ASSERT_EQ(TqList_CreateExZ(&moved, 0, 0, 0, TQLIST_OPT_HEAP | TQLIST_OPT_THREADSAFE, 0, 0, 0),
              S_OK);
    const int value = 7;
    ASSERT_EQ(TqList_AllocAndInsertItem(moved, &value, sizeof value, -1, nullptr), S_OK);
    tTQLIST target = {};
    ASSERT_EQ(TqList_ConvertToInPlace(&moved, &target), S_OK);
    EXPECT_EQ(moved, nullptr);
    EXPECT_EQ(TqList_AllocAndInsertItem(&target, &value, sizeof value, -1, nullptr), S_OK);
    EXPECT_EQ(PointedInts(&target), (std::vector<int>{7, 7}));
    tTQLIST* again = &target;
    EXPECT_EQ(TqList_ConvertToInPlace(&again, &header), E_FAIL);
    EXPECT_EQ(TqList_Destroy(&target), S_OK);
}

TEST(TqListCreate, OwnerCheckForListsWithoutAnyThread)
{
    ListPtr list = MakeList(4, 0, 0, TQLIST_OPT_ARRAY);
    TqList_SetThreadOwner(list.get(), GetCurrentThreadId() + 1);
    EXPECT_EQ(TqList_GrowAllocated(list.get(), 0), S_OK);
    list->options &= ~TQLIST_OPT_ANYTHREAD;
    EXPECT_EQ(TqList_GrowAllocated(list.get(), 0), E_FAIL);
    EXPECT_EQ(TqList_FindSpecificItemRange(list.get(), 0, -1, nullptr), -1);
    TqList_SetThreadOwner(list.get(), 0);
    EXPECT_EQ(TqList_GetThreadOwner(list.get()), GetCurrentThreadId());
    EXPECT_EQ(TqList_GrowAllocated(list.get(), 0), S_OK);
}

// --- Insertion, deletion, sizing -------------------------------------------------------------

TEST(TqListInsert, PositionsAndGrowth)
{
    ListPtr list = IntList({1, 2, 3});
    const int a[] = {10, 11};
    EXPECT_EQ(TqList_InsertList(list.get(), 1, a, 2), S_OK);
    EXPECT_EQ(list->allocated, 8); // one granule more
    EXPECT_EQ(TqList_InsertList(list.get(), 0, a, -1), S_OK);
    EXPECT_EQ(TqList_InsertList(list.get(), 99, a + 1, 1), S_OK);
    EXPECT_EQ(TqList_InsertList(list.get(), -7, a, 1), S_OK);
    EXPECT_EQ(Ints(list.get()), (std::vector<int>{10, 1, 10, 11, 2, 3, 11, 10}));
    EXPECT_EQ(list->allocated, 8);
    std::vector<int> many(9, 5);
    EXPECT_EQ(TqList_InsertList(list.get(), 0, many.data(), 9), S_OK);
    EXPECT_EQ(list->allocated, 20); // whole granules

    // A source in the list's own array survives the growth and the shift.
    ListPtr own = IntList({1, 2, 3, 4});
    EXPECT_EQ(TqList_InsertList(own.get(), 0, own->items, 4), S_OK);
    EXPECT_EQ(Ints(own.get()), (std::vector<int>{1, 2, 3, 4, 1, 2, 3, 4}));
}

TEST(TqListInsert, HeapListShapesAndPendingItem)
{
    ListPtr list = MakeList(0, 0, 0, TQLIST_OPT_HEAP);
    void* p = GlobalAlloc(GPTR, 8);
    EXPECT_EQ(TqList_InsertList(list.get(), 0, &p, 1), E_FAIL);
    EXPECT_EQ(TqList_InsertList(list.get(), 0, nullptr, -1), E_FAIL);
    EXPECT_EQ(TqList_InsertList(list.get(), 0, nullptr, 0), E_FAIL);
    EXPECT_EQ(TqList_InsertList(list.get(), 0, &p, -1), S_OK); // taken over

    void* item = nullptr;
    ASSERT_EQ(TqList_AllocItem(list.get(), 16, &item), S_OK);
    EXPECT_EQ(TqList_AllocItem(list.get(), 16, &item), E_FAIL);
    EXPECT_EQ(TqList_DeleteList(list.get(), -1, -1, TRUE), S_OK); // discards it
    EXPECT_EQ(list->pendingItem, nullptr);
    EXPECT_EQ(TqList_DeleteList(list.get(), -1, -1, TRUE), E_FAIL);
    ASSERT_EQ(TqList_AllocItem(list.get(), 16, &item), S_OK);
    EXPECT_EQ(TqList_InsertList(list.get(), 0, nullptr, -1), S_OK);
    EXPECT_EQ(list->pendingItem, nullptr);
    EXPECT_EQ(TqList_FindSpecificItemRange(list.get(), 0, -1, item), 0);
    EXPECT_EQ(list->count, 2);

    INT32 at = 99;
    const int value = 5;
    EXPECT_EQ(TqList_AllocAndInsertItem(list.get(), &value, sizeof value, 1, &at), S_OK);
    EXPECT_EQ(at, 1);
    EXPECT_EQ(TqList_AllocAndInsertItem(list.get(), nullptr, 64, -1, &at), S_OK);
    const BYTE* zeroed = static_cast<BYTE**>(list->items)[at];
    EXPECT_TRUE(std::all_of(zeroed, zeroed + 64, [](BYTE b) { return b == 0; }));
    ListPtr array = IntList({});
    EXPECT_EQ(TqList_AllocAndInsertItem(array.get(), &value, sizeof value, -1, &at), E_FAIL);
    EXPECT_EQ(at, -1);
}

TEST(TqListDelete, ArgumentShapes)
{
    struct Case
    {
        INT32 index, count;
        HRESULT hr;
        std::vector<int> left;
    };
    const std::vector<Case> cases = {
        {2, -1, S_OK, {0, 1}},
        {0, 2, S_OK, {2, 3, 4}},
        {3, 10, S_OK, {0, 1, 2}}, // clamped to what remains
        {1, 0, S_OK, {0, 1, 2, 3, 4}},
        {5, 1, E_FAIL, {0, 1, 2, 3, 4}},
        {-1, 1, E_FAIL, {0, 1, 2, 3, 4}},
        {-1, -1, E_FAIL, {0, 1, 2, 3, 4}}, // no pending item to discard
        {7, -1, S_OK, {0, 1, 2, 3, 4}},    // nothing behind the index
    };
    for (const Case& c : cases)
    {
        ListPtr list = IntList({0, 1, 2, 3, 4});
        EXPECT_EQ(TqList_DeleteList(list.get(), c.index, c.count, FALSE), c.hr)
            << c.index << "," << c.count;
        EXPECT_EQ(Ints(list.get()), c.left) << c.index << "," << c.count;
        const int* p = static_cast<const int*>(list->items);
        EXPECT_TRUE(std::all_of(p + list->count, p + 5, [](int v) { return v == 0; }));
    }
}

TEST(TqListSizing, GrowAndShrinkInGranules)
{
    ListPtr list = MakeList(sizeof(int), 40, 8, TQLIST_OPT_ARRAY);
    ASSERT_EQ(TqList_ArrayForceItemCount(list.get(), 30, FALSE), S_OK);
    void* before = list->items;
    EXPECT_EQ(TqList_DeleteList(list.get(), 0, 0, TRUE), S_OK); // touches nothing
    EXPECT_EQ(list->items, before);
    EXPECT_EQ(list->allocated, 40);
    // 12 free slots are more than a granule: the whole granules among them go back.
    EXPECT_EQ(TqList_DeleteList(list.get(), 0, 2, TRUE), S_OK);
    EXPECT_EQ(list->allocated, 32);

    EXPECT_EQ(TqList_GrowAllocated(list.get(), 0), S_OK);
    EXPECT_EQ(list->allocated, 40);
    EXPECT_EQ(TqList_GrowAllocated(list.get(), 9), S_OK);
    EXPECT_EQ(list->allocated, 56);
    // 28 free: 10 rounds up to 16, which go. Then 12 free: "all" rounds up to 16, more than is
    // free, so one granule less goes.
    EXPECT_EQ(TqList_ShrinkAllocated(list.get(), 10), S_OK);
    EXPECT_EQ(list->allocated, 40);
    EXPECT_EQ(TqList_ShrinkAllocated(list.get(), -1), S_OK);
    EXPECT_EQ(list->allocated, 32);
    EXPECT_EQ(TqList_ShrinkAllocated(list.get(), 1000), S_OK); // never cuts into items
    EXPECT_EQ(list->allocated, 32);

    // An empty list keeps a block of one slot and grows again from there.
    ListPtr empty = MakeList(sizeof(int), 4, 4, TQLIST_OPT_ARRAY);
    EXPECT_EQ(TqList_ShrinkAllocated(empty.get(), -1), S_OK);
    EXPECT_EQ(empty->allocated, 0);
    const int one = 1;
    EXPECT_EQ(TqList_InsertList(empty.get(), 0, &one, 1), S_OK);
    EXPECT_EQ(empty->allocated, 4);
}

TEST(TqListSizing, ForcedCountsAndItemMemory)
{
    ListPtr list = IntList({1, 2, 3});
    EXPECT_EQ(TqList_ArrayForceItemCount(list.get(), 1, TRUE), S_OK);
    EXPECT_EQ(TqList_ArrayForceItemCount(list.get(), 5, FALSE), S_OK);
    EXPECT_EQ(Ints(list.get()), (std::vector<int>{1, 2, 3, 0, 0})); // lowering kept the slots
    EXPECT_EQ(TqList_AllocSize(list.get(), -1), 8 * sizeof(int) + sizeof(tTQLIST));
    ListPtr pointers = MakeList(0, 0, 0, 0);
    EXPECT_EQ(TqList_ArrayForceItemCount(pointers.get(), 2, FALSE), E_FAIL);

    for (UINT32 extra : {0u, TQLIST_OPT_PRIVATEHEAP})
    {
        ListPtr heap = HeapList({}, extra);
        ASSERT_EQ(TqList_AllocAndInsertItem(heap.get(), "abcdefghij", 10, -1, nullptr), S_OK);
        ASSERT_EQ(TqList_AllocAndInsertItem(heap.get(), nullptr, 30, -1, nullptr), S_OK);
        EXPECT_EQ(TqList_AllocSize(heap.get(), 1), 30u);
        EXPECT_EQ(TqList_AllocSize(heap.get(), -1), 4 * sizeof(void*) + sizeof(tTQLIST) + 40);
        EXPECT_EQ(TqList_ReAllocItem(heap.get(), 0, 20), S_OK);
        EXPECT_EQ(TqList_AllocSize(heap.get(), 0), 20u);
        EXPECT_EQ(memcmp(static_cast<char**>(heap->items)[0], "abcdefghij\0\0\0\0\0\0\0\0\0", 20),
                  0);
        EXPECT_EQ(TqList_ReAllocItem(heap.get(), 2, 4), E_INVALIDARG);
    }
    EXPECT_EQ(TqList_ReAllocItem(list.get(), 0, 4), E_FAIL);
}

// --- Moves ----------------------------------------------------------------------------------

TEST(TqListMove, MoveRange)
{
    struct Case
    {
        INT32 from, to, count;
        HRESULT hr;
        std::vector<int> after;
    };
    const std::vector<Case> cases = {
        {0, 3, 2, S_OK, {2, 3, 4, 0, 1, 5}},          {4, 1, 2, S_OK, {0, 4, 5, 1, 2, 3}},
        {1, -3, 1, S_OK, {1, 0, 2, 3, 4, 5}}, // "to" below zero is 0
        {1, 3, -1, S_OK, {0, 4, 5, 1, 2, 3}}, // up to the end from the greater index
        {0, 5, 2, E_FAIL, {0, 1, 2, 3, 4, 5}},        {5, 0, 2, E_FAIL, {0, 1, 2, 3, 4, 5}},
        {-1, 0, 1, E_INVALIDARG, {0, 1, 2, 3, 4, 5}},
    };
    for (const Case& c : cases)
    {
        ListPtr list = IntList({0, 1, 2, 3, 4, 5});
        EXPECT_EQ(TqList_MoveRange(list.get(), c.from, c.to, c.count), c.hr) << c.from << c.to;
        EXPECT_EQ(Ints(list.get()), c.after) << c.from << "->" << c.to << " x" << c.count;
    }
    // 300 ints do not fit the on-stack buffer.
    std::vector<int> v(400);
    for (int i = 0; i < 400; ++i)
        v[i] = i;
    ListPtr list = IntList(v);
    EXPECT_EQ(TqList_MoveRange(list.get(), 0, 100, 300), S_OK);
    std::rotate(v.begin(), v.begin() + 300, v.end());
    EXPECT_EQ(Ints(list.get()), v);
}

TEST(TqListMove, BetweenHeapLists)
{
    ListPtr source = HeapList({1, 2, 3, 4, 5}, TQLIST_OPT_THREADSAFE);
    ListPtr target = HeapList({10, 20});
    EXPECT_EQ(TqList_MoveItemsBetweenHeapLists(target.get(), 1, source.get(), 1, 3), S_OK);
    EXPECT_EQ(PointedInts(target.get()), (std::vector<int>{10, 2, 3, 4, 20}));
    EXPECT_EQ(PointedInts(source.get()), (std::vector<int>{1, 5}));
    EXPECT_EQ(static_cast<void**>(source->items)[2], nullptr);
    EXPECT_EQ(TqList_MoveItemsBetweenHeapLists(target.get(), -1, source.get(), 0, -1), S_OK);
    EXPECT_EQ(PointedInts(target.get()), (std::vector<int>{10, 2, 3, 4, 20, 1, 5}));
    EXPECT_EQ(source->count, 0);

    ListPtr other = HeapList({1, 2});
    EXPECT_EQ(TqList_MoveItemsBetweenHeapLists(target.get(), 0, other.get(), 1, 2), E_FAIL);
    EXPECT_EQ(TqList_MoveItemsBetweenHeapLists(other.get(), 0, other.get(), 0, 1), E_INVALIDARG);
    ListPtr pointers = MakeList(0, 0, 0, 0);
    EXPECT_EQ(TqList_MoveItemsBetweenHeapLists(pointers.get(), 0, other.get(), 0, 1), E_FAIL);
    // Items of a private heap cannot live on in another list.
    ListPtr privateHeap = HeapList({}, TQLIST_OPT_PRIVATEHEAP);
    EXPECT_EQ(TqList_MoveItemsBetweenHeapLists(privateHeap.get(), 0, other.get(), 0, 1), E_FAIL);
    void* pending = nullptr;
    ASSERT_EQ(TqList_AllocItem(target.get(), 4, &pending), S_OK);
    EXPECT_EQ(TqList_MoveItemsBetweenHeapLists(target.get(), 0, other.get(), 0, 1), E_FAIL);
    EXPECT_EQ(PointedInts(other.get()), (std::vector<int>{1, 2}));
}

// --- Searches -------------------------------------------------------------------------------

int MatchInt(void* context, const void* item)
{
    return *static_cast<const int*>(item) == *static_cast<int*>(context) ? 0 : 1;
}

TEST(TqListSearch, LinearWindows)
{
    ListPtr list = IntList({5, 6, 7, 5, 6});
    int key = 5;
    EXPECT_EQ(TqList_FindItemRange(list.get(), 1, -1, &key, MatchInt), 3);
    EXPECT_EQ(TqList_FindItemRange(list.get(), 1, 2, &key, MatchInt), -1);
    EXPECT_EQ(TqList_FindItemRange(list.get(), -4, 1, &key, MatchInt), 0);
    EXPECT_EQ(TqList_FindItemRange(list.get(), 9, -1, &key, MatchInt), -1);
    // Identity, not equality: the slot address in an array list.
    const int* slots = static_cast<const int*>(list->items);
    EXPECT_EQ(TqList_FindSpecificItemRange(list.get(), 0, -1, slots + 4), 4);
    EXPECT_EQ(TqList_FindSpecificItemRange(list.get(), 0, 4, slots + 4), -1);
    EXPECT_EQ(TqList_FindSpecificItemRange(list.get(), 0, -1, &key), -1);
    EXPECT_TRUE(TqList_IsValidIndexSlow(list.get(), 4));
    EXPECT_FALSE(TqList_IsValidIndexSlow(list.get(), 5));
}

// Every window of sorted lists with runs of duplicates, against the standard library.
TEST(TqListSearch, BinarySearchAgreesWithLowerBound)
{
    for (int size = 0; size <= 17; ++size)
    {
        std::vector<int> values;
        for (int i = 0; i < size; ++i)
            values.push_back(2 * (i / 2 + i % 3));
        std::sort(values.begin(), values.end());
        ListPtr list = IntList(values);
        for (int first = 0; first <= size; ++first)
        {
            for (int count = 0; first + count <= size; ++count)
            {
                const auto begin = values.begin() + first, end = begin + count;
                for (int key = -1; key <= 2 * size + 1; ++key)
                {
                    SCOPED_TRACE(testing::Message() << "size " << size << " window " << first << "+"
                                                    << count << " key " << key);
                    const INT32 found =
                        TqList_FindSortedItemRange(list.get(), &key, first, count, CompareInts);
                    const INT32 insert = TqList_FindSortedInsertIndexRange(list.get(), &key, first,
                                                                           count, CompareInts);
                    if (count == 0)
                    {
                        EXPECT_EQ(found, -1);
                        EXPECT_EQ(insert, 0);
                    }
                    else if (std::binary_search(begin, end, key))
                    {
                        ASSERT_GE(found, first);
                        ASSERT_LT(found, first + count);
                        EXPECT_EQ(values[found], key);
                        EXPECT_EQ(insert, found); // in front of the equal item found
                    }
                    else
                    {
                        EXPECT_EQ(found, -1);
                        EXPECT_EQ(insert, std::lower_bound(begin, end, key) - values.begin());
                    }
                }
            }
        }
    }
}

TEST(TqListSearch, SortedWindowEdges)
{
    ListPtr empty = IntList({});
    int key = 3;
    EXPECT_EQ(TqList_FindSortedInsertIndexRange(empty.get(), &key, 0, -1, CompareInts), 0);
    EXPECT_EQ(TqList_FindSortedInsertIndexRange(empty.get(), &key, 5, -1, CompareInts), -1);

    ListPtr list = IntList({1, 3, 5});
    EXPECT_EQ(TqList_FindSortedItemRange(list.get(), &key, -2, 100, CompareInts), 1);
    key = 9;
    EXPECT_EQ(TqList_FindSortedInsertIndexRange(list.get(), &key, 1, 100, CompareInts), 3);
    // An empty window answers 0 wherever it starts; only a start beyond the end is -1.
    EXPECT_EQ(TqList_FindSortedInsertIndexRange(list.get(), &key, 3, -1, CompareInts), 0);
    EXPECT_EQ(TqList_FindSortedInsertIndexRange(list.get(), &key, 4, -1, CompareInts), -1);
}

// --- Sorts ----------------------------------------------------------------------------------

// A 12-byte record; the tag tells equal keys apart after the sort.
struct Record
{
    int key, tag, pad;
};

int CompareRecords(UINT_PTR, const void* a, const void* b)
{
    const int x = static_cast<const Record*>(a)->key, y = static_cast<const Record*>(b)->key;
    return (x > y) - (x < y);
}

using SortFunction = HRESULT (*)(tTQLIST*, UINT_PTR, TQLIST_COMPAREPROC);

class TqListSort : public testing::TestWithParam<SortFunction>
{
};

TEST_P(TqListSort, ArrayListMatchesReferenceOrderWithDuplicates)
{
    std::mt19937 random(7);
    for (int size : {0, 1, 2, 3, 7, 16, 31, 100})
    {
        std::vector<Record> records;
        for (int i = 0; i < size; ++i)
            records.push_back({int(random() % 10), i, 0x5A5A5A5A});
        ListPtr list = MakeList(sizeof(Record), 0, 0, TQLIST_OPT_ARRAY);
        if (size)
        {
            ASSERT_EQ(TqList_InsertList(list.get(), 0, records.data(), size), S_OK);
        }
        EXPECT_EQ(GetParam()(list.get(), 77, CompareRecords), S_OK);
        EXPECT_EQ(list->sortCriteria, 77u);

        const Record* sorted = static_cast<const Record*>(list->items);
        std::vector<int> keys, tags;
        for (int i = 0; i < size; ++i)
        {
            keys.push_back(sorted[i].key);
            tags.push_back(sorted[i].tag);
            EXPECT_EQ(records[sorted[i].tag].key, sorted[i].key); // whole records moved
            EXPECT_EQ(sorted[i].pad, 0x5A5A5A5A);
        }
        std::vector<int> want;
        for (const Record& r : records)
            want.push_back(r.key);
        std::sort(want.begin(), want.end());
        EXPECT_EQ(keys, want) << "size " << size;
        std::sort(tags.begin(), tags.end());
        for (int i = 0; i < size; ++i)
            EXPECT_EQ(tags[i], i);
    }
}

TEST_P(TqListSort, PointerListWithCriteria)
{
    std::vector<int> values = {5, 1, 4, 1, 5, 9, 2, 6, 5, 3};
    ListPtr list = MakeList(0, 0, 0, 0);
    for (int& v : values)
    {
        void* p = &v;
        ASSERT_EQ(TqList_InsertList(list.get(), -1, &p, 1), S_OK);
    }
    ASSERT_EQ(GetParam()(list.get(), 1, CompareInts), S_OK); // criteria 1: descending
    std::vector<int> want = values;
    std::sort(want.begin(), want.end(), std::greater<int>());
    EXPECT_EQ(PointedInts(list.get()), want);
}

INSTANTIATE_TEST_SUITE_P(BothSorts, TqListSort, testing::Values(&TqList_Sort, &TqList_HeapSort),
                         [](const testing::TestParamInfo<SortFunction>& info) {
                             return info.param == &TqList_Sort ? "Selection" : "Heap";
                         });

TEST(TqListSelectionSort, EqualItemsNeverReplaceTheMaximum)
{
    ListPtr list = MakeList(sizeof(Record), 0, 0, TQLIST_OPT_ARRAY);
    const Record records[] = {{1, 0, 0}, {1, 1, 0}, {1, 2, 0}, {1, 3, 0}};
    ASSERT_EQ(TqList_InsertList(list.get(), 0, records, 4), S_OK);
    ASSERT_EQ(TqList_Sort(list.get(), 0, CompareRecords), S_OK);
    // The first item stays the maximum each round and is swapped to the end of the range.
    const Record* sorted = static_cast<const Record*>(list->items);
    EXPECT_EQ((std::vector<int>{sorted[0].tag, sorted[1].tag, sorted[2].tag, sorted[3].tag}),
              (std::vector<int>{1, 2, 3, 0}));
}

TEST(TqListSortTo, InsertsAtSortedPlaces)
{
    ListPtr source = IntList({4, 1, 3});
    ListPtr target = IntList({2, 5});
    EXPECT_EQ(TqList_SortTo(target.get(), source.get(), 0, CompareInts), S_OK);
    EXPECT_EQ(Ints(target.get()), (std::vector<int>{1, 2, 3, 4, 5}));

    // Heap to heap copies the items; heap to pointer list shares them.
    ListPtr heapSource = HeapList({3, 1, 2});
    ListPtr heapTarget = HeapList({}, TQLIST_OPT_PRIVATEHEAP);
    EXPECT_EQ(TqList_SortTo(heapTarget.get(), heapSource.get(), 1, CompareInts), S_OK);
    EXPECT_EQ(PointedInts(heapTarget.get()), (std::vector<int>{3, 2, 1}));
    void* copied = static_cast<void**>(heapTarget->items)[0];
    EXPECT_EQ(TqList_FindSpecificItemRange(heapSource.get(), 0, -1, copied), -1);
    ListPtr pointers = MakeList(0, 0, 0, 0);
    EXPECT_EQ(TqList_SortTo(pointers.get(), heapSource.get(), 0, CompareInts), S_OK);
    void* shared = static_cast<void**>(pointers->items)[0];
    EXPECT_EQ(TqList_FindSpecificItemRange(heapSource.get(), 0, -1, shared), 1);

    EXPECT_EQ(TqList_SortTo(target.get(), heapSource.get(), 0, CompareInts), E_FAIL);
}

// --- Threads --------------------------------------------------------------------------------

constexpr int kPerThread = 3000;

DWORD WINAPI InsertAndDelete(void* parameter)
{
    const auto [list, base] = *static_cast<std::pair<tTQLIST*, int>*>(parameter);
    for (int i = 0; i < kPerThread; ++i)
    {
        int value = base + i;
        if (FAILED(TqList_AllocAndInsertItem(list, &value, sizeof value, 0, nullptr))) return 1;
        if (i % 3 != 0) continue;
        // Find and delete form one step under the list's own lock, which callers may take.
        EnterCriticalSection(&list->lock);
        const INT32 found = TqList_FindItemRange(list, 0, -1, &value, MatchInt);
        const HRESULT hr = found < 0 ? E_FAIL : TqList_DeleteList(list, found, 1, TRUE);
        LeaveCriticalSection(&list->lock);
        if (FAILED(hr)) return 2;
    }
    return 0;
}

TEST(TqListThreads, ThreadSafeHeapListUnderTwoThreads)
{
    ListPtr list = HeapList({}, TQLIST_OPT_THREADSAFE | TQLIST_OPT_PRIVATEHEAP);
    std::pair<tTQLIST*, int> workers[] = {{list.get(), 0}, {list.get(), 100000}};
    HANDLE threads[2];
    for (int i = 0; i < 2; ++i)
        threads[i] = CreateThread(nullptr, 0, InsertAndDelete, &workers[i], 0, nullptr);
    ASSERT_EQ(WaitForMultipleObjects(2, threads, TRUE, 60000), WAIT_OBJECT_0);
    for (HANDLE t : threads)
    {
        DWORD code = 99;
        GetExitCodeThread(t, &code);
        EXPECT_EQ(code, 0u);
        CloseHandle(t);
    }
    std::vector<int> got = PointedInts(list.get()), want;
    std::sort(got.begin(), got.end());
    for (int base : {0, 100000})
        for (int i = 0; i < kPerThread; ++i)
            if (i % 3 != 0) want.push_back(base + i);
    EXPECT_EQ(got, want);
}

} // namespace
