// Host callbacks a plug-in makes from a thread of its own reach the host's master, in order and
// with their answers, in process and through servers of both bitnesses; also while the host's
// call waits inside the plug-in for that thread, and while effClose waits for it to end.
#include "plugins/thread_callbacks_record.h"
#include "support/effectplace.h"
#include "support/testmaster.h"

#include <gtest/gtest.h>

#include <cstdio>
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

INSTANTIATE_TEST_SUITE_P(Places, MasterRelay, testing::ValuesIn(tqtest::kPlaces),
                         tqtest::PlaceName);

} // namespace
