// Queues: linking order, the wake-up event, waits with timeouts, handles, messages and APCs,
// flush and delete.
#include "tqqueue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace {

struct Record
{
    tTQQELM link;
    int value;
};

int ValueOf(const tTQQELM* element)
{
    return reinterpret_cast<const Record*>(element)->value;
}

int MatchValue(tTQQELM* element, void* context)
{
    return ValueOf(element) == *static_cast<int*>(context);
}

int MatchGreater(tTQQELM* element, void* context)
{
    return ValueOf(element) > *static_cast<int*>(context);
}

bool IsSignalled(HANDLE event)
{
    return WaitForSingleObject(event, 0) == WAIT_OBJECT_0;
}

DWORD Since(DWORD start)
{
    return GetTickCount() - start;
}

class Queue : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(TqQueueInitialize(&m_head));
        for (int i = 0; i < 8; ++i)
            m_records[i].value = i;
    }
    void TearDown() override { TqQueueDelete(&m_head); }

    tTQQELM* Element(int i) { return &m_records[i].link; }

    void Fill(std::initializer_list<int> records)
    {
        for (int i : records)
            TqQueueInsert(&m_head, Element(i));
    }

    // The values front to back, checked against the backward links on the way.
    std::vector<int> Values()
    {
        std::vector<int> forward, backward;
        const auto* ring = reinterpret_cast<tTQQELM*>(&m_head);
        for (tTQQELM* e = m_head.next; e != ring; e = e->next)
            forward.push_back(ValueOf(e));
        for (tTQQELM* e = m_head.prev; e != ring; e = e->prev)
            backward.insert(backward.begin(), ValueOf(e));
        EXPECT_EQ(forward, backward);
        return forward;
    }

    tTQQHEAD m_head = {};
    Record m_records[8] = {};
};

// --- Linking --------------------------------------------------------------------------------

TEST_F(Queue, InsertAndRemoveKeepTheEventInStep)
{
    EXPECT_FALSE(IsSignalled(m_head.event));
    TqQueueInsertHead(&m_head, Element(1));
    EXPECT_TRUE(IsSignalled(m_head.event));
    TqQueueInsert(&m_head, Element(2));
    TqQueueInsertHead(&m_head, Element(0));
    TqQueueInsert(&m_head, nullptr);
    EXPECT_EQ(Values(), (std::vector<int>{0, 1, 2}));

    EXPECT_EQ(TqQueueRemoveTail(&m_head, 0), Element(2));
    EXPECT_EQ(Element(2)->next, nullptr);
    EXPECT_EQ(Element(2)->prev, nullptr);
    EXPECT_EQ(TqQueueRemove(&m_head, 0), Element(0));
    EXPECT_TRUE(IsSignalled(m_head.event));
    EXPECT_EQ(TqQueueRemove(&m_head, 0), Element(1));
    EXPECT_FALSE(IsSignalled(m_head.event));
    EXPECT_EQ(TqQueueRemoveTail(&m_head, 0), nullptr);

    // A second initialisation only forgets the records.
    Fill({3, 4});
    const HANDLE event = m_head.event;
    EXPECT_TRUE(TqQueueInitialize(&m_head));
    EXPECT_EQ(m_head.event, event);
    EXPECT_TRUE(Values().empty());
}

TEST_F(Queue, OrderedInsertFromEitherEnd)
{
    int limit = 0;
    TqQueueInsertExRev(&m_head, MatchGreater, &limit, Element(1)); // empty: appended
    EXPECT_TRUE(IsSignalled(m_head.event));
    Fill({3, 5});
    limit = 2;
    TqQueueInsertEx(&m_head, MatchGreater, &limit, Element(2));
    EXPECT_EQ(Values(), (std::vector<int>{1, 2, 3, 5}));
    // From the back the first match is the last element; the new one still goes in front of it.
    TqQueueInsertExRev(&m_head, MatchGreater, &limit, Element(4));
    EXPECT_EQ(Values(), (std::vector<int>{1, 2, 3, 4, 5}));
    limit = 100;
    TqQueueInsertEx(&m_head, MatchGreater, &limit, Element(0));
    TqQueueInsertExRev(&m_head, MatchGreater, &limit, Element(6));
    EXPECT_EQ(Values(), (std::vector<int>{1, 2, 3, 4, 5, 0, 6}));

    // A null element: the walk happens, nothing is linked.
    int calls = 0;
    auto countCalls = [](tTQQELM*, void* context) {
        return ++*static_cast<int*>(context) == 2 ? 1 : 0;
    };
    TqQueueInsertEx(&m_head, countCalls, &calls, nullptr);
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(Values().size(), 7u);
}

TEST_F(Queue, FindRemoveAndMove)
{
    // Records with equal values tell the walking directions apart.
    m_records[4].value = 1;
    m_records[5].value = 2;
    Fill({1, 2, 4, 3, 5}); // values 1 2 1 3 2
    int key = 1;
    EXPECT_EQ(TqQueueFind(&m_head, MatchValue, &key), Element(1));
    EXPECT_EQ(TqQueueFindRev(&m_head, MatchValue, &key), Element(4));
    key = 2;
    EXPECT_EQ(TqQueueFindAndRemoveRev(&m_head, MatchValue, &key), Element(5));
    EXPECT_EQ(Element(5)->next, nullptr);
    EXPECT_EQ(TqQueueFindAndRemove(&m_head, MatchValue, &key), Element(2));
    key = 3;
    EXPECT_EQ(TqQueueFindAndMoveToHead(&m_head, MatchValue, &key), Element(3));
    EXPECT_EQ(Values(), (std::vector<int>{3, 1, 1}));
    EXPECT_EQ(TqQueueFindAndMoveToTail(&m_head, MatchValue, &key), Element(3));
    EXPECT_EQ(Values(), (std::vector<int>{1, 1, 3}));

    EXPECT_FALSE(TqQueueMoveToTail(&m_head, Element(3))); // already there
    EXPECT_TRUE(TqQueueMoveToHead(&m_head, Element(3)));
    EXPECT_TRUE(TqQueueMoveToTail(&m_head, Element(1)));
    EXPECT_EQ(Values(), (std::vector<int>{3, 1, 1}));
    EXPECT_EQ(m_head.prev, Element(1));
    EXPECT_TRUE(IsInTqQueue(&m_head, Element(4)));
    EXPECT_FALSE(IsInTqQueue(&m_head, Element(2)));

    // An element of another queue is not moved; emptying by a find resets the event.
    tTQQHEAD other = {};
    ASSERT_TRUE(TqQueueInitialize(&other));
    TqQueueInsert(&other, Element(6));
    EXPECT_FALSE(TqQueueMoveToHead(&m_head, Element(6)));
    EXPECT_FALSE(IsInTqQueue(&m_head, Element(6)));
    EXPECT_FALSE(TqQueueMoveToTail(&other, Element(6))); // the only element
    key = 6;
    EXPECT_EQ(TqQueueFindAndRemove(&other, MatchValue, &key), Element(6));
    EXPECT_FALSE(IsSignalled(other.event));
    TqQueueDelete(&other);
}

// --- Waiting --------------------------------------------------------------------------------

// After a delay, sets an event and/or inserts an element, on a thread joined on scope exit.
class Later
{
public:
    Later(tTQQHEAD* head, tTQQELM* element, HANDLE signal, DWORD delay)
        : m_head(head), m_element(element), m_signal(signal), m_delay(delay),
          m_thread(CreateThread(nullptr, 0, Run, this, 0, nullptr))
    {
    }
    ~Later()
    {
        WaitForSingleObject(m_thread, INFINITE);
        CloseHandle(m_thread);
    }

private:
    static DWORD WINAPI Run(void* parameter)
    {
        const Later& l = *static_cast<Later*>(parameter);
        Sleep(l.m_delay);
        if (l.m_signal) SetEvent(l.m_signal);
        if (l.m_element) TqQueueInsert(l.m_head, l.m_element);
        return 0;
    }

    tTQQHEAD* m_head;
    tTQQELM* m_element;
    HANDLE m_signal;
    DWORD m_delay;
    HANDLE m_thread;
};

TEST_F(Queue, TimeoutsAndProducers)
{
    DWORD start = GetTickCount();
    EXPECT_EQ(TqQueueRemove(&m_head, 0), nullptr);
    EXPECT_LT(Since(start), 50u);
    start = GetTickCount();
    EXPECT_EQ(TqQueueRemove(&m_head, 150), nullptr);
    EXPECT_GE(Since(start), 120u);
    DWORD result = 0;
    EXPECT_EQ(TqQueueRemoveEx(&m_head, nullptr, 0, QS_POSTMESSAGE, 100, &result), nullptr);
    EXPECT_EQ(result, DWORD(WAIT_TIMEOUT));
    EXPECT_FALSE(TqQueueWait(&m_head, 50));
    {
        Later later(&m_head, Element(4), nullptr, 100);
        EXPECT_EQ(TqQueueRemove(&m_head, INFINITE), Element(4));
    }
    {
        Later later(&m_head, Element(5), nullptr, 100);
        EXPECT_EQ(TqQueueRemoveTail(&m_head, 10000), Element(5));
    }
    {
        Later later(&m_head, Element(6), nullptr, 100);
        EXPECT_TRUE(TqQueueWait(&m_head, 10000));
    }
    EXPECT_EQ(TqQueueRemoveEx(&m_head, nullptr, 0, 0, 0, &result), Element(6)); // Wait left it
    EXPECT_EQ(result, WAIT_OBJECT_0);
}

TEST_F(Queue, CallersHandles)
{
    HANDLE handles[63];
    for (HANDLE& h : handles)
        h = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    DWORD result = 0;
    {
        Later later(&m_head, nullptr, handles[1], 50);
        EXPECT_EQ(TqQueueRemoveEx(&m_head, handles, 2, 0, 10000, &result), nullptr);
    }
    EXPECT_EQ(result, WAIT_OBJECT_0 + 2);
    ResetEvent(handles[1]);
    // An element present is taken without a wait, whatever the handles say.
    TqQueueInsert(&m_head, Element(1));
    EXPECT_EQ(TqQueueRemoveEx(&m_head, handles, 2, 0, 10000, &result), Element(1));
    EXPECT_EQ(result, WAIT_OBJECT_0);

    // 63 handles and the queue's own event are too many; without an array the count is moot.
    TqQueueInsert(&m_head, Element(2));
    EXPECT_EQ(TqQueueRemoveEx(&m_head, handles, 63, 0, 0, &result), nullptr);
    EXPECT_EQ(result, DWORD(WAIT_FAILED));
    EXPECT_EQ(TqQueueRemoveEx(&m_head, nullptr, 63, 0, 0, &result), Element(2));
    {
        Later later(&m_head, Element(3), nullptr, 50);
        EXPECT_EQ(TqQueueRemoveEx(&m_head, handles + 1, 62, 0, 10000, &result), Element(3));
    }
    for (HANDLE h : handles)
        CloseHandle(h);
}

struct ApcInsert
{
    tTQQHEAD* head;
    tTQQELM* element;
};

void CALLBACK InsertFromApc(ULONG_PTR parameter)
{
    const auto* apc = reinterpret_cast<ApcInsert*>(parameter);
    TqQueueInsert(apc->head, apc->element);
}

void CALLBACK DoNothing(ULONG_PTR)
{
}

TEST_F(Queue, MessagesAndApcs)
{
    MSG message;
    PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE); // gives the thread its message queue
    ASSERT_TRUE(PostThreadMessageW(GetCurrentThreadId(), WM_USER, 0, 0));
    HANDLE handle = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    DWORD result = 0;
    EXPECT_EQ(TqQueueRemoveEx(&m_head, &handle, 1, QS_POSTMESSAGE | TQQUEUE_WAIT_INPUTAVAILABLE,
                              5000, &result),
              nullptr);
    EXPECT_EQ(result, WAIT_OBJECT_0 + 2);
    EXPECT_TRUE(PeekMessageW(&message, nullptr, WM_USER, WM_USER, PM_REMOVE));
    CloseHandle(handle);

    ApcInsert insert = {&m_head, Element(0)};
    const auto head = reinterpret_cast<ULONG_PTR>(&insert);
    // Alertable alone: the APC ends the wait, and the call gives up.
    ASSERT_TRUE(QueueUserAPC(InsertFromApc, GetCurrentThread(), head));
    EXPECT_EQ(TqQueueRemoveEx(&m_head, nullptr, 0, TQQUEUE_WAIT_ALERTABLE, 5000, &result), nullptr);
    EXPECT_EQ(result, DWORD(WAIT_IO_COMPLETION));
    EXPECT_EQ(TqQueueRemove(&m_head, 0), Element(0));
    // The alertable removal waits on through APCs and takes what one inserted.
    ASSERT_TRUE(QueueUserAPC(InsertFromApc, GetCurrentThread(), head));
    EXPECT_EQ(TqQueueRemoveAlertable(&m_head, 5000), Element(0));
    ASSERT_TRUE(QueueUserAPC(DoNothing, GetCurrentThread(), 0));
    const DWORD start = GetTickCount();
    EXPECT_EQ(TqQueueRemoveAlertable(&m_head, 200), nullptr);
    EXPECT_GE(Since(start), 150u);
}

// --- Flush and delete -----------------------------------------------------------------------

// A consumer blocked on the queue for ever; Ends() waits for it to return.
class BlockedConsumer
{
public:
    explicit BlockedConsumer(tTQQHEAD* head) : m_head(head)
    {
        m_thread = CreateThread(nullptr, 0, Run, this, 0, nullptr);
        Sleep(100); // let it reach the wait
    }
    ~BlockedConsumer() { CloseHandle(m_thread); }
    bool Ends() { return WaitForSingleObject(m_thread, 5000) == WAIT_OBJECT_0; }
    tTQQELM* Got() const { return m_got; }

private:
    static DWORD WINAPI Run(void* parameter)
    {
        auto* self = static_cast<BlockedConsumer*>(parameter);
        self->m_got = TqQueueRemove(self->m_head, INFINITE);
        return 0;
    }

    tTQQHEAD* m_head;
    tTQQELM* m_got = reinterpret_cast<tTQQELM*>(1);
    HANDLE m_thread;
};

TEST_F(Queue, FlushWakesEveryoneAndStaysSignalled)
{
    BlockedConsumer first(&m_head), second(&m_head);
    TqQueueFlush(&m_head);
    ASSERT_TRUE(first.Ends());
    ASSERT_TRUE(second.Ends());
    EXPECT_EQ(first.Got(), nullptr);
    EXPECT_EQ(second.Got(), nullptr);
    // Flushed records are left as they were.
    Fill({5});
    TqQueueFlush(&m_head);
    EXPECT_TRUE(Values().empty());
    EXPECT_NE(Element(5)->next, nullptr);

    const DWORD start = GetTickCount();
    EXPECT_EQ(TqQueueRemove(&m_head, 1000), nullptr);
    EXPECT_LT(Since(start), 500u);
    // A fill and an emptying bring the event back in step.
    Fill({3});
    EXPECT_EQ(TqQueueRemove(&m_head, 0), Element(3));
    EXPECT_FALSE(IsSignalled(m_head.event));
}

TEST_F(Queue, DeleteWakesWaitersAndIsFinal)
{
    BlockedConsumer waiting(&m_head);
    TqQueueDelete(&m_head);
    ASSERT_TRUE(waiting.Ends());
    EXPECT_EQ(waiting.Got(), nullptr);
    EXPECT_EQ(m_head.event, nullptr);

    const DWORD start = GetTickCount();
    EXPECT_EQ(TqQueueRemove(&m_head, INFINITE), nullptr);
    EXPECT_FALSE(TqQueueWait(&m_head, INFINITE));
    EXPECT_LT(Since(start), 500u);
    TqQueueInsert(&m_head, Element(1));
    EXPECT_EQ(Element(1)->next, nullptr);
    TqQueueDelete(&m_head); // harmless, as is TearDown's
}

// --- Many producers and consumers -------------------------------------------------------------

constexpr int kTotal = 20000;

struct Traffic
{
    tTQQHEAD* head;
    Record* records;
    volatile LONG stop;
    std::vector<int> seen[2];
};

DWORD WINAPI Produce(void* parameter)
{
    auto* t = static_cast<std::pair<Traffic*, int>*>(parameter);
    for (int i = t->second; i < kTotal; i += 2)
        TqQueueInsert(t->first->head, &t->first->records[i].link);
    return 0;
}

// Consumers loop on null results until told to stop, as workers do with their stop flag.
DWORD WINAPI Consume(void* parameter)
{
    auto* t = static_cast<std::pair<Traffic*, int>*>(parameter);
    for (;;)
    {
        if (tTQQELM* e = TqQueueRemove(t->first->head, INFINITE))
            t->first->seen[t->second].push_back(ValueOf(e));
        else if (t->first->stop)
            return 0;
    }
}

TEST_F(Queue, ProducersAndConsumersLoseNothing)
{
    std::vector<Record> records(kTotal);
    for (int i = 0; i < kTotal; ++i)
        records[i].value = i;
    Traffic traffic{&m_head, records.data(), 0, {}};
    std::pair<Traffic*, int> roles[2] = {{&traffic, 0}, {&traffic, 1}};
    HANDLE threads[4] = {CreateThread(nullptr, 0, Consume, &roles[0], 0, nullptr),
                         CreateThread(nullptr, 0, Consume, &roles[1], 0, nullptr),
                         CreateThread(nullptr, 0, Produce, &roles[0], 0, nullptr),
                         CreateThread(nullptr, 0, Produce, &roles[1], 0, nullptr)};
    ASSERT_EQ(WaitForMultipleObjects(2, threads + 2, TRUE, 30000), WAIT_OBJECT_0);
    for (int i = 0; i < 3000 && TqQueueWait(&m_head, 0); ++i)
        Sleep(10);
    InterlockedExchange(&traffic.stop, 1);
    TqQueueFlush(&m_head);
    ASSERT_EQ(WaitForMultipleObjects(2, threads, TRUE, 30000), WAIT_OBJECT_0);
    for (HANDLE t : threads)
        CloseHandle(t);

    std::vector<int> all(traffic.seen[0]);
    all.insert(all.end(), traffic.seen[1].begin(), traffic.seen[1].end());
    std::sort(all.begin(), all.end());
    ASSERT_EQ(all.size(), size_t(kTotal));
    for (int i = 0; i < kTotal; ++i)
        ASSERT_EQ(all[i], i);
}

} // namespace
