// Host callbacks a plug-in makes from a thread of its own reach the host's master, in order and
// with their answers, in process and through servers of both bitnesses; also while the host's
// call waits inside the plug-in for that thread, and while effClose waits for it to end.
#include "plugins/thread_callbacks_record.h"
#include "support/effectplace.h"
#include "support/testmaster.h"
#include "uniquehandle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using namespace thread_callbacks;
using Calls = std::vector<std::string>;

// One round of the plug-in's thread, as the master records it.
const Calls kRound = {"BeginEdit 1",     "Automate 1 0.5", "EndEdit 1",   "GetTime",
                      "Automate 2 4096", "UpdateDisplay",  "Automate 3 1"};

class MasterRelay : public tqtest::PlacedTest
{
protected:
    void SetUp() override
    {
        ASSERT_NO_FATAL_FAILURE(PlacedTest::SetUp());
        if (IsSkipped()) return;
        effect = Create(L"thread_callbacks.dll");
        ASSERT_TRUE(effect);
        master.time.samplePos = 4096.0;
        ASSERT_EQ(effect->SetMaster(&master), S_OK);
    }
    void TearDown() override
    {
        effect.Reset();
        PlacedTest::TearDown();
    }

    tqtest::TestMaster master;
    tq::ComPtr<ITqVstEffect> effect;
};

TEST_P(MasterRelay, CallsFromThePluginsThreadArriveInOrderWithTheirAnswers)
{
    // The plug-in's idle hands the round to its thread and waits for it there.
    ASSERT_EQ(effect->Idle(), S_OK);
    EXPECT_EQ(master.Calls(), kRound);
    master.ClearCalls();
    ASSERT_EQ(effect->Idle(), S_OK);
    EXPECT_EQ(master.Calls(), kRound) << "the relay serves more than one round";
}

TEST_P(MasterRelay, LastCallArrivesWhileCloseWaitsForThePluginsThread)
{
    ASSERT_EQ(effect->Idle(), S_OK);
    master.ClearCalls();
    effect.Reset();
    EXPECT_EQ(master.Calls(), Calls{"Automate 9 1"});
}

TEST_P(MasterRelay, TakingTheMasterAwayStopsForwardingAndANewMasterResumesIt)
{
    ASSERT_EQ(effect->Idle(), S_OK);
    ASSERT_EQ(effect->SetMaster(nullptr), S_FALSE);
    EXPECT_EQ(master.References(), 0) << "every reference, the relay's too, was given back";
    master.ClearCalls();
    ASSERT_EQ(effect->Idle(), S_OK);
    EXPECT_EQ(master.Calls(), Calls{});

    tqtest::TestMaster second;
    second.time.samplePos = 4096.0;
    ASSERT_EQ(effect->SetMaster(&second), S_OK);
    ASSERT_EQ(effect->Idle(), S_OK);
    EXPECT_EQ(second.Calls(), kRound);
    EXPECT_EQ(master.Calls(), Calls{});
    ASSERT_EQ(effect->SetMaster(nullptr), S_FALSE);
    EXPECT_EQ(second.References(), 0);
}

// Prints the median round trip of a redraw request from the plug-in's own thread next to one
// from the thread the host calls on; no bound on either, machines differ.
TEST_P(MasterRelay, RoundTripFromThePluginsThreadIsMeasured)
{
    ASSERT_EQ(effect->SetParameter(kTimingRequest, 0.0f), S_OK);
    const Calls& calls = master.Calls();
    ASSERT_EQ(calls.size(), size_t(2 * kTimedCalls + 2));
    float caller = 0, thread = 0;
    ASSERT_EQ(std::sscanf(calls[2 * kTimedCalls].c_str(), "Automate 10 %f", &caller), 1);
    ASSERT_EQ(std::sscanf(calls[2 * kTimedCalls + 1].c_str(), "Automate 11 %f", &thread), 1);
    std::printf("[ %s ] median callback round trip: %.1f us from the host's calling thread, "
                "%.1f us from the plug-in's thread\n",
                GetParam().name, caller, thread);
}

// A host thread's whole life with an effect, over and over: the plug-in's thread calls the master
// while the effect closes, the server lets go of the master right after that call, and the
// thread's apartment ends right after that release. Each of these gives up the host's last stub of
// an interface just after a call on it was answered, which once hung host and server in the
// platform's call runtime now and then. TQ_RELAY_CYCLES sets the count (a soak run uses 2000).
struct Cycles
{
    tqtest::Place place;
    int count;
    int done = 0;
    int wrong = 0;
};

DWORD WINAPI CloseRightAfterCallbacks(void* context)
{
    auto* cycles = static_cast<Cycles*>(context);
    for (; cycles->done < cycles->count; ++cycles->done)
    {
        if (FAILED(CoInitialize(nullptr))) return 1;
        {
            tqtest::PlacedFactory factory(cycles->place);
            tq::ComPtr<ITqVstEffect> effect = factory.Create(L"thread_callbacks.dll");
            tqtest::TestMaster master;
            master.time.samplePos = 4096.0;
            if (!effect || effect->SetMaster(&master) != S_OK || effect->Idle() != S_OK)
                ++cycles->wrong;
            effect.Reset();
            if (master.References() != 0 || master.Calls().empty() ||
                master.Calls().back() != "Automate 9 1")
                ++cycles->wrong;
        }
        CoUninitialize();
    }
    return 0;
}

TEST_P(MasterRelay, ReleasesRightAfterTheLastCallbackNeverHang)
{
    const char* text = std::getenv("TQ_RELAY_CYCLES");
    Cycles cycles{GetParam(), text ? std::max(1, std::atoi(text)) : 12};
    tq::UniqueHandle thread(
        CreateThread(nullptr, 0, CloseRightAfterCallbacks, &cycles, 0, nullptr));
    ASSERT_TRUE(thread);
    // Only a hang takes anywhere near this long. This thread's apartment keeps serving meanwhile.
    HANDLE waitFor = thread.Get();
    DWORD index = 0;
    if (CoWaitForMultipleHandles(0, DWORD(cycles.count) * 2000 + 30000, 1, &waitFor, &index) !=
        S_OK)
    {
        ADD_FAILURE() << "cycle " << cycles.done << " of " << cycles.count << " hangs";
        std::fflush(stdout);
        // The stuck thread would keep the process from ending.
        TerminateProcess(GetCurrentProcess(), 3);
    }
    EXPECT_EQ(cycles.done, cycles.count);
    EXPECT_EQ(cycles.wrong, 0);
}

INSTANTIATE_TEST_SUITE_P(Places, MasterRelay, testing::ValuesIn(tqtest::kPlaces),
                         tqtest::PlaceName);

} // namespace
