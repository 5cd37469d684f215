// The blocking intrusive queue: linking under the head's lock, waits on its event.
#include "tqqueue.h"

#include "uniquehandle.h"

#include <cstddef>

namespace tq::queue {
namespace {

// The head is the ring's sentinel, so its links must lie where an element's do.
static_assert(offsetof(tTQQHEAD, next) == offsetof(tTQQELM, next));
static_assert(offsetof(tTQQHEAD, prev) == offsetof(tTQQELM, prev));

// The most handles a caller may add: with the queue's event, one below the wait's limit.
constexpr DWORD kMaxCallerHandles = 62;

// Holds the head's lock for a scope; a waiter lets go of it around each wait.
class Locked
{
public:
    explicit Locked(tTQQHEAD* head) noexcept : m_lock(&head->lock) { Lock(); }
    ~Locked() { Unlock(); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;

    void Lock() noexcept
    {
        EnterCriticalSection(m_lock);
        m_held = true;
    }
    void Unlock() noexcept
    {
        if (m_held) LeaveCriticalSection(m_lock);
        m_held = false;
    }

private:
    CRITICAL_SECTION* m_lock;
    bool m_held = false;
};

// Element and head are different types to the compiler, which would take a write to an element's
// link as leaving the head's links alone. All linking goes through this one view of both, whose
// type may alias anything.
struct __attribute__((__may_alias__)) Link
{
    Link* next;
    Link* prev;
};
static_assert(offsetof(Link, next) == offsetof(tTQQELM, next));
static_assert(offsetof(Link, prev) == offsetof(tTQQELM, prev));

Link* AsLink(tTQQELM* element) noexcept
{
    return reinterpret_cast<Link*>(element);
}

tTQQELM* AsElement(Link* link) noexcept
{
    return reinterpret_cast<tTQQELM*>(link);
}

// The head as the sentinel of its ring.
Link* Ring(tTQQHEAD* head) noexcept
{
    return reinterpret_cast<Link*>(head);
}

// Waiters read the event outside the lock while deletion may exchange it.
HANDLE LoadEvent(tTQQHEAD* head) noexcept
{
    return __atomic_load_n(&head->event, __ATOMIC_ACQUIRE);
}

bool IsLive(tTQQHEAD* head) noexcept
{
    return head && LoadEvent(head);
}

bool IsEmpty(tTQQHEAD* head) noexcept
{
    return Ring(head)->next == Ring(head);
}

void MakeEmpty(tTQQHEAD* head) noexcept
{
    Ring(head)->next = Ring(head)->prev = Ring(head);
}

void LinkBefore(Link* element, Link* successor) noexcept
{
    element->next = successor;
    element->prev = successor->prev;
    successor->prev->next = element;
    successor->prev = element;
}

void Unlink(Link* element) noexcept
{
    element->prev->next = element->next;
    element->next->prev = element->prev;
    element->next = element->prev = nullptr;
}

// Unlinks an element taken out of the queue; an emptied queue stops waking consumers.
tTQQELM* Take(tTQQHEAD* head, Link* element) noexcept
{
    Unlink(element);
    if (IsEmpty(head)) ResetEvent(head->event);
    return AsElement(element);
}

// Links an element in; the change from empty to non-empty wakes consumers.
void Put(tTQQHEAD* head, Link* element, Link* successor) noexcept
{
    LinkBefore(element, successor);
    if (Ring(head)->next == element && Ring(head)->prev == element) SetEvent(head->event);
}

// Relinks an element of the queue in front of successor; the count and the event stay.
void Relink(Link* element, Link* successor) noexcept
{
    Unlink(element);
    LinkBefore(element, successor);
}

Link* First(tTQQHEAD* head, bool backward) noexcept
{
    return backward ? Ring(head)->prev : Ring(head)->next;
}

Link* Step(Link* link, bool backward) noexcept
{
    return backward ? link->prev : link->next;
}

// The first element that matches, walking forward or backward; null when none does.
Link* Walk(tTQQHEAD* head, TQQUEUE_MATCHPROC match, void* context, bool backward) noexcept
{
    if (!match) return nullptr;
    for (Link* e = First(head, backward); e != Ring(head); e = Step(e, backward))
    {
        if (match(AsElement(e), context)) return e;
    }
    return nullptr;
}

bool Contains(tTQQHEAD* head, const Link* element, bool backward) noexcept
{
    for (Link* e = First(head, backward); e != Ring(head); e = Step(e, backward))
    {
        if (e == element) return true;
    }
    return false;
}

// What the wait flags ask of MsgWaitForMultipleObjectsEx.
struct WaitMode
{
    explicit WaitMode(DWORD flags) noexcept
        : wakeMask(flags & 0xFFFF), keepWaiting((flags & TQQUEUE_WAIT_KEEPWAITING) != 0)
    {
        if (flags & TQQUEUE_WAIT_ALL) waitFlags |= MWMO_WAITALL;
        if (flags & TQQUEUE_WAIT_ALERTABLE) waitFlags |= MWMO_ALERTABLE;
        if (flags & TQQUEUE_WAIT_INPUTAVAILABLE) waitFlags |= MWMO_INPUTAVAILABLE;
        if (keepWaiting) wakeMask |= QS_SENDMESSAGE;
    }

    DWORD wakeMask;
    DWORD waitFlags = 0;
    bool keepWaiting;
};

DWORD WaitOnce(HANDLE event, const HANDLE* handles, DWORD handleCount, const WaitMode& mode,
               DWORD timeout) noexcept
{
    if (handleCount == 0 && mode.wakeMask == 0 && mode.waitFlags == 0)
        return WaitForSingleObject(event, timeout);
    HANDLE all[kMaxCallerHandles + 1] = {event};
    for (DWORD i = 0; i < handleCount; ++i)
        all[i + 1] = handles[i];
    return MsgWaitForMultipleObjectsEx(handleCount + 1, all, timeout, mode.wakeMask,
                                       mode.waitFlags);
}

// Whether a wake that was not the queue's event lets the consumer wait on.
bool MayWaitOn(DWORD result, DWORD handleCount, const WaitMode& mode) noexcept
{
    if (!mode.keepWaiting) return false;
    if (result == WAIT_IO_COMPLETION) return true;
    if (result != WAIT_OBJECT_0 + handleCount + 1) return false;
    // Peeking dispatches the sent messages that ended the wait.
    MSG message;
    PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
    return true;
}

tTQQELM* RemoveFromEnd(tTQQHEAD* head, bool fromTail, const HANDLE* handles, DWORD handleCount,
                       DWORD flags, DWORD timeout, DWORD* waitResult) noexcept
{
    DWORD ignored = 0;
    DWORD& result = waitResult ? *waitResult : ignored;
    result = WAIT_FAILED;
    if (!handles) handleCount = 0;
    if (handleCount > kMaxCallerHandles || !IsLive(head)) return nullptr;

    const WaitMode mode(flags);
    const bool finite = timeout != 0 && timeout != INFINITE;
    const DWORD start = finite ? GetTickCount() : 0;
    DWORD remaining = timeout;
    bool waited = false;
    // One wake by the event is all a call gets: finding the queue empty after it ends the call.
    bool spent = false;
    result = WAIT_TIMEOUT;

    Locked lock(head);
    while (IsEmpty(head))
    {
        const HANDLE event = LoadEvent(head);
        if (remaining == 0 || !event || spent) return nullptr;
        lock.Unlock();
        result = WaitOnce(event, handles, handleCount, mode, remaining);
        waited = true;
        if (result == WAIT_OBJECT_0)
            spent = true;
        else if (!MayWaitOn(result, handleCount, mode))
            return nullptr;
        if (finite)
        {
            const DWORD elapsed = GetTickCount() - start;
            remaining = elapsed < timeout ? timeout - elapsed : 0;
        }
        // A deleted queue has no lock left to take.
        if (!LoadEvent(head)) return nullptr;
        lock.Lock();
    }
    if (!waited) result = WAIT_OBJECT_0;
    return Take(head, First(head, fromTail));
}

} // namespace
} // namespace tq::queue

using namespace tq::queue;

TQKERNEL_API BOOL TqQueueInitialize(tTQQHEAD* head)
{
    if (!head) return FALSE;
    if (LoadEvent(head))
    {
        Locked lock(head);
        MakeEmpty(head);
        return TRUE;
    }
    tq::UniqueHandle event(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    if (!event) return FALSE;
    InitializeCriticalSection(&head->lock);
    MakeEmpty(head);
    __atomic_store_n(&head->event, event.Release(), __ATOMIC_RELEASE);
    return TRUE;
}

TQKERNEL_API void TqQueueDelete(tTQQHEAD* head)
{
    if (!head) return;
    tq::UniqueHandle event(InterlockedExchangePointer(&head->event, nullptr));
    if (!event) return;
    SetEvent(event.Get());
    event.Reset();
    // Lets a thread that holds the lock finish before the lock goes.
    {
        Locked lock(head);
    }
    MakeEmpty(head);
    DeleteCriticalSection(&head->lock);
}

TQKERNEL_API void TqQueueFlush(tTQQHEAD* head)
{
    if (!IsLive(head)) return;
    Locked lock(head);
    MakeEmpty(head);
    // Left set on purpose: every waiter, present or future, wakes, finds nothing and looks at
    // its stop flag, until the queue is filled and emptied again.
    SetEvent(head->event);
}

TQKERNEL_API void TqQueueInsert(tTQQHEAD* head, tTQQELM* element)
{
    if (!element || !IsLive(head)) return;
    Locked lock(head);
    Put(head, AsLink(element), Ring(head));
}

TQKERNEL_API void TqQueueInsertHead(tTQQHEAD* head, tTQQELM* element)
{
    if (!element || !IsLive(head)) return;
    Locked lock(head);
    Put(head, AsLink(element), Ring(head)->next);
}

TQKERNEL_API void TqQueueInsertEx(tTQQHEAD* head, TQQUEUE_MATCHPROC match, void* context,
                                  tTQQELM* element)
{
    if (!IsLive(head)) return;
    Locked lock(head);
    Link* found = Walk(head, match, context, false);
    if (element) Put(head, AsLink(element), found ? found : Ring(head));
}

// The walk runs from the back, but the new element still goes in front of the one found.
TQKERNEL_API void TqQueueInsertExRev(tTQQHEAD* head, TQQUEUE_MATCHPROC match, void* context,
                                     tTQQELM* element)
{
    if (!IsLive(head)) return;
    Locked lock(head);
    Link* found = Walk(head, match, context, true);
    if (element) Put(head, AsLink(element), found ? found : Ring(head));
}

TQKERNEL_API tTQQELM* TqQueueRemove(tTQQHEAD* head, DWORD timeout)
{
    return RemoveFromEnd(head, false, nullptr, 0, 0, timeout, nullptr);
}

TQKERNEL_API tTQQELM* TqQueueRemoveAlertable(tTQQHEAD* head, DWORD timeout)
{
    return RemoveFromEnd(head, false, nullptr, 0, TQQUEUE_WAIT_ALERTABLE | TQQUEUE_WAIT_KEEPWAITING,
                         timeout, nullptr);
}

TQKERNEL_API tTQQELM* TqQueueRemoveEx(tTQQHEAD* head, const HANDLE* handles, DWORD handleCount,
                                      DWORD waitFlags, DWORD timeout, DWORD* waitResult)
{
    return RemoveFromEnd(head, false, handles, handleCount, waitFlags, timeout, waitResult);
}

TQKERNEL_API tTQQELM* TqQueueRemoveTail(tTQQHEAD* head, DWORD timeout)
{
    return RemoveFromEnd(head, true, nullptr, 0, 0, timeout, nullptr);
}

TQKERNEL_API BOOL TqQueueWait(tTQQHEAD* head, DWORD timeout)
{
    if (!head) return FALSE;
    // Read without the lock: the answer is a hint that may change at once. A head that was never
    // initialised has no links at all.
    const auto nonEmpty = [head] {
        const Link* first = __atomic_load_n(&Ring(head)->next, __ATOMIC_ACQUIRE);
        return first && first != Ring(head);
    };
    if (nonEmpty()) return TRUE;
    const HANDLE event = LoadEvent(head);
    if (timeout != 0 && event) WaitForSingleObject(event, timeout);
    return nonEmpty();
}

TQKERNEL_API tTQQELM* TqQueueFind(tTQQHEAD* head, TQQUEUE_MATCHPROC match, void* context)
{
    if (!IsLive(head)) return nullptr;
    Locked lock(head);
    return AsElement(Walk(head, match, context, false));
}

TQKERNEL_API tTQQELM* TqQueueFindRev(tTQQHEAD* head, TQQUEUE_MATCHPROC match, void* context)
{
    if (!IsLive(head)) return nullptr;
    Locked lock(head);
    return AsElement(Walk(head, match, context, true));
}

TQKERNEL_API tTQQELM* TqQueueFindAndRemove(tTQQHEAD* head, TQQUEUE_MATCHPROC match, void* context)
{
    if (!IsLive(head)) return nullptr;
    Locked lock(head);
    Link* found = Walk(head, match, context, false);
    return found ? Take(head, found) : nullptr;
}

TQKERNEL_API tTQQELM* TqQueueFindAndRemoveRev(tTQQHEAD* head, TQQUEUE_MATCHPROC match,
                                              void* context)
{
    if (!IsLive(head)) return nullptr;
    Locked lock(head);
    Link* found = Walk(head, match, context, true);
    return found ? Take(head, found) : nullptr;
}

TQKERNEL_API tTQQELM* TqQueueFindAndMoveToHead(tTQQHEAD* head, TQQUEUE_MATCHPROC match,
                                               void* context)
{
    if (!IsLive(head)) return nullptr;
    Locked lock(head);
    Link* found = Walk(head, match, context, false);
    if (found && found != Ring(head)->next) Relink(found, Ring(head)->next);
    return AsElement(found);
}

TQKERNEL_API tTQQELM* TqQueueFindAndMoveToTail(tTQQHEAD* head, TQQUEUE_MATCHPROC match,
                                               void* context)
{
    if (!IsLive(head)) return nullptr;
    Locked lock(head);
    Link* found = Walk(head, match, context, false);
    if (found && found != Ring(head)->prev) Relink(found, Ring(head));
    return AsElement(found);
}

TQKERNEL_API BOOL TqQueueMoveToHead(tTQQHEAD* head, tTQQELM* element)
{
    if (!element || !IsLive(head)) return FALSE;
    Locked lock(head);
    Link* link = AsLink(element);
    if (IsEmpty(head) || Ring(head)->next == link || !Contains(head, link, false)) return FALSE;
    Relink(link, Ring(head)->next);
    return TRUE;
}

TQKERNEL_API BOOL TqQueueMoveToTail(tTQQHEAD* head, tTQQELM* element)
{
    if (!element || !IsLive(head)) return FALSE;
    Locked lock(head);
    Link* link = AsLink(element);
    if (IsEmpty(head) || Ring(head)->prev == link || !Contains(head, link, true)) return FALSE;
    Relink(link, Ring(head));
    return TRUE;
}

TQKERNEL_API BOOL IsInTqQueue(tTQQHEAD* head, tTQQELM* element)
{
    // An element outside every queue has null links; no need to take the lock for it.
    if (!element || !element->next || !element->prev || !IsLive(head)) return FALSE;
    Locked lock(head);
    return Contains(head, AsLink(element), false);
}
