// Counter scaling for the frequencies counters have, and the timers against real sleeps.
#include "tqtimer.h"

#include <gtest/gtest.h>

namespace {

struct ScaleCase
{
    LONGLONG frequency;
    LONGLONG counts;
    DWORD millisec;
    DWORD microsec;
};

TEST(CounterScale, ConvertsCountsOfEachFrequency)
{
    const ScaleCase cases[] = {
        // 10 MHz: a divider of 10 gives microseconds with no correction.
        {10000000, 12345678, 1234, 1234567},
        // The ACPI power-management timer: divider 3, corrected by MulDiv.
        {3579545, 3579545, 1000, 1000000},
        {3579545, 357954, 100, 100000},
        {3579545, 1000, 0, 279},
        // 1 kHz: divider 1, the correction multiplies by 1000.
        {1000, 5, 5, 5000},
        // A 2.4 GHz time-stamp counter.
        {2400000000LL, 2400000000LL, 1000, 1000000},
        // Microseconds wrap as 32-bit values.
        {10000000, 10 * (0x100000000LL + 5), 4294967, 5},
    };
    for (const ScaleCase& c : cases)
    {
        SCOPED_TRACE(testing::Message() << c.frequency << " Hz, " << c.counts << " counts");
        const tq::CounterScale scale(c.frequency);
        EXPECT_EQ(scale.Millisec(c.counts), c.millisec);
        EXPECT_EQ(scale.Microsec(c.counts), c.microsec);
    }
}

TEST(Timers, CountMillisecondsAndMicrosecondsOfASleep)
{
    const DWORD ms0 = TqGetMillisec();
    const DWORD us0 = TqGetMicrosec();
    Sleep(100);
    const DWORD ms = TqGetMillisec() - ms0;
    const DWORD us = TqGetMicrosec() - us0;
    EXPECT_GE(ms, 90u);
    EXPECT_LT(ms, 2000u);
    EXPECT_GE(us, 90000u);
    EXPECT_LT(us, 2000000u);
    // Both from one counter: the two intervals agree to within the two calls between them.
    EXPECT_NEAR(static_cast<double>(us) / 1000, ms, 20);
}

TEST(Timers, NeverRunBackwards)
{
    DWORD last = TqGetMicrosec();
    for (int i = 0; i < 10000; ++i)
    {
        const DWORD now = TqGetMicrosec();
        ASSERT_LT(now - last, 1000000u) << "at step " << i;
        last = now;
    }
}

TEST(Timers, DeltaStoresTheCounterForTheNextInterval)
{
    LONGLONG start = 0;
    EXPECT_EQ(TqDeltaMicrosecEx(nullptr), 0u);
    TqDeltaMicrosecEx(&start);
    const LONGLONG first = start;
    Sleep(50);
    EXPECT_GE(TqGetMicrosecEx(start), 45000u);
    EXPECT_GE(TqGetMillisecEx(start), 45u);
    EXPECT_EQ(start, first);

    const DWORD us = TqDeltaMicrosecEx(&start);
    EXPECT_GE(us, 45000u);
    EXPECT_LT(us, 2000000u);
    EXPECT_GT(start, first);
    // The interval starts anew.
    EXPECT_LT(TqDeltaMillisecEx(&start), 45u);
}

} // namespace
