// The turn handshake on the shared block: spin while the other side is quick, sleep when not.
#include "blockshare.h"

#include <atomic>

namespace tqvst::block {

namespace {

bool Arrived(const volatile LONG& turn, LONG want)
{
    const bool arrived = turn == want;
    // What the other side wrote before it passed the turn is read after this.
    std::atomic_thread_fence(std::memory_order_acquire);
    return arrived;
}

LONGLONG Now()
{
    LARGE_INTEGER now;
    QueryPerformanceCounter(&now);
    return now.QuadPart;
}

} // namespace

LONGLONG TicksFromMicroseconds(LONGLONG microseconds)
{
    LARGE_INTEGER frequency;
    QueryPerformanceFrequency(&frequency);
    return frequency.QuadPart * microseconds / 1000000;
}

TurnWait WaitTurn(const volatile LONG& turn, LONG want, volatile LONG& ownAsleep, HANDLE wake,
                  const HANDLE* extra, DWORD extraCount, LONGLONG spinTicks, DWORD timeoutMs,
                  DWORD* signalled)
{
    if (Arrived(turn, want)) return TurnWait::Reached;
    // Reading the clock costs more than a pause: look at it every few rounds only.
    const LONGLONG spinEnd = Now() + spinTicks;
    for (unsigned round = 1;; ++round)
    {
        YieldProcessor();
        if (Arrived(turn, want)) return TurnWait::Reached;
        if ((round & 31) == 0 && Now() >= spinEnd) break;
    }

    HANDLE handles[4] = {wake};
    const DWORD count = 1 + (extraCount < 3 ? extraCount : 3);
    for (DWORD i = 1; i < count; ++i)
        handles[i] = extra[i - 1];
    const ULONGLONG start = GetTickCount64();
    for (;;)
    {
        // Announce the sleep first, then look once more: a turn passed in between is seen here,
        // and one passed afterwards finds the flag and sets the event.
        InterlockedExchange(&ownAsleep, 1);
        if (Arrived(turn, want))
        {
            InterlockedExchange(&ownAsleep, 0);
            return TurnWait::Reached;
        }
        DWORD wait = INFINITE;
        if (timeoutMs != INFINITE)
        {
            const ULONGLONG spent = GetTickCount64() - start;
            wait = spent >= timeoutMs ? 0 : static_cast<DWORD>(timeoutMs - spent);
        }
        const DWORD woke = WaitForMultipleObjects(count, handles, FALSE, wait);
        if (Arrived(turn, want))
        {
            InterlockedExchange(&ownAsleep, 0);
            return TurnWait::Reached;
        }
        // A wake-up left over from an earlier turn: look again.
        if (woke == WAIT_OBJECT_0) continue;
        InterlockedExchange(&ownAsleep, 0);
        if (woke > WAIT_OBJECT_0 && woke < WAIT_OBJECT_0 + count)
        {
            if (signalled) *signalled = woke - WAIT_OBJECT_0 - 1;
            return TurnWait::Signalled;
        }
        return TurnWait::TimedOut;
    }
}

} // namespace tqvst::block
