// The event list holds what fits and hands events back by index.
#include "hosting/eventlist.h"

#include <gtest/gtest.h>

using namespace vst3;

TEST(EventList, HoldsUpToItsSizeAndRefusesMore)
{
    EventList list(2);
    Event e{};
    for (int32 i = 0; i < 2; ++i)
    {
        e.sampleOffset = i;
        ASSERT_EQ(kResultOk, list.addEvent(e));
    }
    e.sampleOffset = 99;
    EXPECT_EQ(kResultFalse, list.addEvent(e));
    EXPECT_EQ(2, list.getEventCount());
    Event out{};
    ASSERT_EQ(kResultOk, list.getEvent(1, out));
    EXPECT_EQ(1, out.sampleOffset);
    EXPECT_EQ(kInvalidArgument, list.getEvent(2, out));
    EXPECT_EQ(kInvalidArgument, list.getEvent(-1, out));
    list.clear();
    EXPECT_EQ(0, list.getEventCount());
    list.setMaxSize(1024);
    EXPECT_EQ(1024, list.getMaxSize());
}
