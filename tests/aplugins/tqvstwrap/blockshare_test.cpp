// The turn handshake of the shared block: a turn passed before, during or long after the spin
// is seen, a sleeping side is woken, and the extra handles and the time limit end a wait.
#include "blockshare.h"
#include "uniquehandle.h"

#include <gtest/gtest.h>

namespace {

using tqvst::block::PassTurn;
using tqvst::block::TurnWait;
using tqvst::block::WaitTurn;

struct Turns
{
    volatile LONG turn = 0;
    volatile LONG waiterAsleep = 0;
    tq::UniqueHandle wake{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
};

struct LatePass
{
    Turns* turns;
    DWORD afterMs;
    LONG value;
};

DWORD WINAPI PassLater(void* context)
{
    auto* pass = static_cast<LatePass*>(context);
    Sleep(pass->afterMs);
    PassTurn(pass->turns->turn, pass->value, pass->turns->waiterAsleep, pass->turns->wake.Get());
    return 0;
}

TEST(TurnHandshake, ATurnIsSeenWhetherItComesBeforeDuringOrAfterTheSpin)
{
    const LONGLONG spin = tqvst::block::TicksFromMicroseconds(200);
    Turns turns;
    PassTurn(turns.turn, 1, turns.waiterAsleep, turns.wake.Get());
    EXPECT_EQ(WaitTurn(turns.turn, 1, turns.waiterAsleep, turns.wake.Get(), nullptr, 0, spin, 0),
              TurnWait::Reached);

    // 0 ms lands in the spin or just after it, 100 ms in the sleep: the waiter must be woken,
    // never left to its time limit.
    LONG value = 1;
    for (DWORD afterMs : {0u, 100u, 0u, 100u})
    {
        LatePass pass{&turns, afterMs, ++value};
        tq::UniqueHandle thread(CreateThread(nullptr, 0, PassLater, &pass, 0, nullptr));
        ASSERT_TRUE(thread);
        EXPECT_EQ(WaitTurn(turns.turn, value, turns.waiterAsleep, turns.wake.Get(), nullptr, 0,
                           spin, 30000),
                  TurnWait::Reached)
            << "after " << afterMs << " ms";
        EXPECT_EQ(turns.waiterAsleep, 0) << "a woken waiter leaves no sleep mark";
        WaitForSingleObject(thread.Get(), INFINITE);
    }
}

TEST(TurnHandshake, AnExtraHandleOrTheTimeLimitEndsTheWait)
{
    Turns turns;
    tq::UniqueHandle quiet(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    tq::UniqueHandle raised(CreateEventW(nullptr, TRUE, TRUE, nullptr));
    const HANDLE extra[] = {quiet.Get(), raised.Get()};
    DWORD which = 99;
    EXPECT_EQ(
        WaitTurn(turns.turn, 1, turns.waiterAsleep, turns.wake.Get(), extra, 2, 0, 30000, &which),
        TurnWait::Signalled);
    EXPECT_EQ(which, 1u);

    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(WaitTurn(turns.turn, 1, turns.waiterAsleep, turns.wake.Get(), extra, 1, 0, 50),
              TurnWait::TimedOut);
    EXPECT_GE(GetTickCount64() - start, 40u);
    EXPECT_EQ(turns.waiterAsleep, 0);

    // A wake-up left over from an earlier turn does not pass for the turn itself.
    SetEvent(turns.wake.Get());
    EXPECT_EQ(WaitTurn(turns.turn, 1, turns.waiterAsleep, turns.wake.Get(), nullptr, 0, 0, 50),
              TurnWait::TimedOut);
}

} // namespace
