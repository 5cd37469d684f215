// Tests of timecode arithmetic: whole days both ways in every format, drop-frame against an
// independent count, nano-time, adding across midnight and stepping.
#include "tqsmpte.h"

#include <gtest/gtest.h>

#include <bit>
#include <stdint.h>

namespace {

struct TypeFacts
{
    UINT32 type;
    UINT32 fps;
    double rate;
    UINT32 dayFrames;
};

const TypeFacts kTypes[] = {
    {TQSMPTE_TYPE_30, 30, 30.0, 2592000},
    {TQSMPTE_TYPE_2997DROP, 30, 30000.0 / 1001.0, 2589408},
    {TQSMPTE_TYPE_25, 25, 25.0, 2160000},
    {TQSMPTE_TYPE_24, 24, 24.0, 2073600},
    {TQSMPTE_TYPE_2997, 30, 30000.0 / 1001.0, 2592000},
    {TQSMPTE_TYPE_23976, 24, 24000.0 / 1001.0, 2073600},
};

_smpteval Tc(UINT32 type, UINT32 h, UINT32 m, UINT32 s, UINT32 f)
{
    return _smpteval{type, h, m, s, f, 0};
}

::testing::AssertionResult Same(const _smpteval& actual, const _smpteval& expected)
{
    if (actual.hours == expected.hours && actual.minutes == expected.minutes &&
        actual.seconds == expected.seconds && actual.frames == expected.frames)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << actual.hours << ":" << actual.minutes << ":" << actual.seconds << ":" << actual.frames
           << " instead of " << expected.hours << ":" << expected.minutes << ":" << expected.seconds
           << ":" << expected.frames;
}

bool IsDroppedLabel(UINT32 m, UINT32 s, UINT32 f)
{
    return f < 2 && s == 0 && m % 10 != 0;
}

TEST(Smpte, EveryFrameOfADayConvertsToTimecodeAndBack)
{
    for (const TypeFacts& t : kTypes)
    {
        SCOPED_TRACE(t.type);
        _smpteval value = Tc(t.type, 0, 0, 0, 0);
        UINT32 failures = 0;
        for (UINT32 count = 0; count < t.dayFrames && failures < 5; ++count)
        {
            TQSMPTE_FrameCountToSMPTE(&value, count);
            const bool valid = value.hours < 24 && value.minutes < 60 && value.seconds < 60 &&
                               value.frames < t.fps &&
                               !(t.type == TQSMPTE_TYPE_2997DROP &&
                                 IsDroppedLabel(value.minutes, value.seconds, value.frames));
            const UINT32 back = TQSMPTE_SMPTEToFrameCount(&value);
            if (!valid || back != count)
            {
                ++failures;
                ADD_FAILURE() << "count " << count << " gave " << value.hours << ":"
                              << value.minutes << ":" << value.seconds << ":" << value.frames
                              << ", back " << back;
            }
        }
    }
}

// Walking every label a format can show, in order, the counts are 0, 1, 2 ...: an independent
// count of the frames, drop-frame's skipped pairs left out by the walk itself.
TEST(Smpte, EveryTimecodeOfADayConvertsToItsPlaceInTheDay)
{
    for (const TypeFacts& t : kTypes)
    {
        SCOPED_TRACE(t.type);
        UINT32 expected = 0;
        UINT32 failures = 0;
        for (UINT32 h = 0; h < 24; ++h)
            for (UINT32 m = 0; m < 60; ++m)
                for (UINT32 s = 0; s < 60; ++s)
                    for (UINT32 f = 0; f < t.fps && failures < 5; ++f)
                    {
                        if (t.type == TQSMPTE_TYPE_2997DROP && IsDroppedLabel(m, s, f)) continue;
                        const _smpteval label = Tc(t.type, h, m, s, f);
                        const UINT32 count = TQSMPTE_SMPTEToFrameCount(&label);
                        _smpteval back = Tc(t.type, 99, 99, 99, 99);
                        TQSMPTE_FrameCountToSMPTE(&back, count);
                        if (count != expected || !Same(back, label))
                        {
                            ++failures;
                            ADD_FAILURE() << h << ":" << m << ":" << s << ":" << f << " counted "
                                          << count << ", expected " << expected;
                        }
                        ++expected;
                    }
        EXPECT_EQ(expected, t.dayFrames);
    }
}

// Drop-frame by blocks of ten minutes: 17982 frames each, the first minute 1800 frames, the
// other nine 1798, as they start at frame 2.
UINT32 DropMinuteStart(UINT32 totalMinutes)
{
    const UINT32 inBlock = totalMinutes % 10;
    return totalMinutes / 10 * 17982 + (inBlock == 0 ? 0 : 1800 + (inBlock - 1) * 1798);
}

TEST(Smpte, DropFrameMinutesStartWhereTheTenMinuteBlocksPutThem)
{
    for (UINT32 total = 0; total < 24 * 60; ++total)
    {
        const UINT32 h = total / 60, m = total % 60;
        const UINT32 start = DropMinuteStart(total);
        const UINT32 firstFrame = m % 10 == 0 ? 0 : 2;
        const _smpteval first = Tc(TQSMPTE_TYPE_2997DROP, h, m, 0, firstFrame);
        ASSERT_EQ(TQSMPTE_SMPTEToFrameCount(&first), start) << h << ":" << m;
        _smpteval value = Tc(TQSMPTE_TYPE_2997DROP, 0, 0, 0, 0);
        TQSMPTE_FrameCountToSMPTE(&value, start);
        ASSERT_TRUE(Same(value, first)) << h << ":" << m;
        if (m % 10 != 0)
        {
            // The skipped pair counts as the minute's first real frame.
            for (UINT32 f = 0; f < 2; ++f)
            {
                const _smpteval skipped = Tc(TQSMPTE_TYPE_2997DROP, h, m, 0, f);
                ASSERT_EQ(TQSMPTE_SMPTEToFrameCount(&skipped), start) << h << ":" << m;
            }
        }
        if (total == 0) continue;
        TQSMPTE_FrameCountToSMPTE(&value, start - 1);
        ASSERT_TRUE(Same(value, Tc(0, (total - 1) / 60, (total - 1) % 60, 59, 29)))
            << h << ":" << m;
    }
}

TEST(Smpte, DropFrameLandmarks)
{
    _smpteval value = Tc(TQSMPTE_TYPE_2997DROP, 0, 1, 0, 0);
    EXPECT_EQ(TQSMPTE_SMPTEToFrameCount(&value), 1800u);
    value = Tc(TQSMPTE_TYPE_2997DROP, 0, 10, 0, 0);
    EXPECT_EQ(TQSMPTE_SMPTEToFrameCount(&value), 17982u);
    TQSMPTE_FrameCountToSMPTE(&value, 1800);
    EXPECT_TRUE(Same(value, Tc(0, 0, 1, 0, 2)));
    TQSMPTE_FrameCountToSMPTE(&value, 2589408);
    EXPECT_TRUE(Same(value, Tc(0, 0, 0, 0, 0)));
    TQSMPTE_FrameCountToSMPTE(&value, 2589407);
    EXPECT_TRUE(Same(value, Tc(0, 23, 59, 59, 29)));
}

TEST(Smpte, CountsBeyondADayWrapAndOtherTypesCountNothing)
{
    for (const TypeFacts& t : kTypes)
    {
        _smpteval value = Tc(t.type, 0, 0, 0, 0);
        TQSMPTE_FrameCountToSMPTE(&value, t.dayFrames * 3 + 7);
        EXPECT_EQ(TQSMPTE_SMPTEToFrameCount(&value), 7u) << t.type;
        EXPECT_EQ(value.type, t.type);
    }
    // Unknown types convert from a count as drop-frame, and count as nothing.
    _smpteval unknown = Tc(9, 0, 0, 0, 0);
    TQSMPTE_FrameCountToSMPTE(&unknown, 1800);
    EXPECT_TRUE(Same(unknown, Tc(0, 0, 1, 0, 2)));
    EXPECT_EQ(unknown.type, 9u);
    EXPECT_EQ(TQSMPTE_SMPTEToFrameCount(&unknown), 0u);
    EXPECT_EQ(TQSMPTE_SMPTEToNanos(&unknown), 0);
}

TEST(Smpte, NtscRatesAreTheExactFractions)
{
    // One frame at 30000/1001 lasts 333666.67 steps: frame 1 rounds up to 333667.
    _smpteval value = Tc(TQSMPTE_TYPE_2997, 0, 0, 0, 1);
    EXPECT_EQ(TQSMPTE_SMPTEToNanos(&value), 333667);
    value = Tc(TQSMPTE_TYPE_23976, 0, 0, 0, 1);
    EXPECT_EQ(TQSMPTE_SMPTEToNanos(&value), 417084);
    // A counted second of either lasts exactly 1.001 seconds.
    value = Tc(TQSMPTE_TYPE_2997, 0, 0, 1, 0);
    EXPECT_EQ(TQSMPTE_SMPTEToNanos(&value), 10010000);
    value = Tc(TQSMPTE_TYPE_23976, 0, 0, 1, 0);
    EXPECT_EQ(TQSMPTE_SMPTEToNanos(&value), 10010000);
    EXPECT_EQ(std::bit_cast<uint64_t>(30000.0 / 1001.0), 0x403DF853E2556B28ull);
    EXPECT_EQ(std::bit_cast<uint64_t>(24000.0 / 1001.0), 0x4037F9DCB5112287ull);
}

TEST(Smpte, EveryFrameStartConvertsToNanoTimeAndBack)
{
    for (const TypeFacts& t : kTypes)
    {
        SCOPED_TRACE(t.type);
        _smpteval value = Tc(t.type, 0, 0, 0, 0);
        UINT32 failures = 0;
        // Every seventh frame keeps the walk short on 32-bit machines; the stride shares no
        // factor with any frame rate, so it still meets every frame of a second.
        for (UINT32 count = 0; count < t.dayFrames && failures < 5; count += 7)
        {
            TQSMPTE_FrameCountToSMPTE(&value, count);
            const LONGLONG nanos = TQSMPTE_SMPTEToNanos(&value);
            _smpteval back = Tc(t.type, 0, 0, 0, 0);
            TQSMPTE_NanoToSMPTE(nanos, &back);
            if (TQSMPTE_SMPTEToFrameCount(&back) != count)
            {
                ++failures;
                ADD_FAILURE() << "frame " << count << " at " << nanos;
            }
        }
    }
}

// Any time converts to the frame it falls in: back to nano-time, it lies less than a frame
// before. Times step by a prime so that they land everywhere in a frame.
TEST(Smpte, NanoTimeToTimecodeAndBackStaysWithinAFrame)
{
    constexpr LONGLONG kDay = 864000000000LL;
    constexpr LONGLONG kStep = 3333331;
    for (const TypeFacts& t : kTypes)
    {
        SCOPED_TRACE(t.type);
        const double frame = 1e7 / t.rate;
        UINT32 failures = 0;
        for (LONGLONG time = 0; time < kDay * 1001 / 1000 && failures < 5; time += kStep)
        {
            _smpteval value = Tc(t.type, 0, 0, 0, 0);
            TQSMPTE_NanoToSMPTE(time, &value);
            const LONGLONG back = TQSMPTE_SMPTEToNanos(&value);
            // Within the day of the timecode's format, which for the NTSC rates is longer
            // than a day of real time.
            const LONGLONG inDay =
                time % static_cast<LONGLONG>(static_cast<double>(t.dayFrames) * frame + 0.5);
            const double behind = static_cast<double>(inDay - back);
            // A time a hair short of a frame may count as that frame.
            if (behind < -3.0 || behind >= frame)
            {
                ++failures;
                ADD_FAILURE() << time << " came back as " << back;
            }
        }
    }
}

TEST(Smpte, NanoTimeBeforeZeroWrapsIntoThePreviousDay)
{
    _smpteval value = Tc(TQSMPTE_TYPE_25, 0, 0, 0, 0);
    TQSMPTE_NanoToSMPTE(-400000, &value); // one frame at 25
    EXPECT_TRUE(Same(value, Tc(0, 23, 59, 59, 24)));
    TQSMPTE_NanoToSMPTE(LLONG_MIN, &value);
    EXPECT_LT(value.hours, 24u);
    TQSMPTE_NanoToSMPTE(LLONG_MAX, &value);
    EXPECT_LT(value.hours, 24u);
}

TEST(Smpte, LikeToNanosTakesAnyRate)
{
    const _smpteval value = Tc(0, 1, 2, 3, 50);
    EXPECT_EQ(TQSMPTE_SmpteLikeToNanos(100.0, &value), (3723LL * 10 + 5) * 1000000);
    EXPECT_EQ(TQSMPTE_SmpteLikeToNanos(0.0, &value), 3723LL * 10000000);
}

TEST(Smpte, AddingAndSubtractingWrapAcrossMidnight)
{
    _smpteval a = Tc(TQSMPTE_TYPE_25, 0, 0, 0, 0);
    const _smpteval oneFrame = Tc(TQSMPTE_TYPE_25, 0, 0, 0, 1);
    ASSERT_EQ(TQSMPTE_SubtractSMPTE(&a, &oneFrame), S_OK);
    EXPECT_TRUE(Same(a, Tc(0, 23, 59, 59, 24)));
    ASSERT_EQ(TQSMPTE_AddSMPTE(&a, &oneFrame), S_OK);
    EXPECT_TRUE(Same(a, Tc(0, 0, 0, 0, 0)));

    // A whole day back lands on the same label.
    a = Tc(TQSMPTE_TYPE_2997DROP, 1, 2, 3, 4);
    _smpteval day = Tc(TQSMPTE_TYPE_2997DROP, 0, 0, 0, 0);
    TQSMPTE_FrameCountToSMPTE(&day, TQSMPTE_DAYFRAMES_DROP - 1);
    const _smpteval last = day;
    ASSERT_EQ(TQSMPTE_SubtractSMPTE(&a, &last), S_OK);
    EXPECT_TRUE(Same(a, Tc(0, 1, 2, 3, 5)));

    // b counts in its own format: one second of 25 added to 30 non-drop is 25 frames.
    a = Tc(TQSMPTE_TYPE_30, 0, 0, 0, 0);
    const _smpteval second25 = Tc(TQSMPTE_TYPE_25, 0, 0, 1, 0);
    ASSERT_EQ(TQSMPTE_AddSMPTE(&a, &second25), S_OK);
    EXPECT_TRUE(Same(a, Tc(0, 0, 0, 0, 25)));

    _smpteval invalid = Tc(0, 1, 0, 0, 0);
    EXPECT_EQ(TQSMPTE_SubtractSMPTE(&invalid, &oneFrame), E_INVALIDARG);
    EXPECT_TRUE(Same(invalid, Tc(0, 1, 0, 0, 0)));
    EXPECT_EQ(TQSMPTE_AddSMPTE(nullptr, &oneFrame), E_POINTER);
}

// Stepping one frame at a time through a day meets every label the frame count gives, in order,
// forward and back.
TEST(Smpte, SteppingWalksTheDayFrameByFrame)
{
    for (const TypeFacts& t : kTypes)
    {
        // Type 5 steps back with its kept quirk, tested on its own below.
        SCOPED_TRACE(t.type);
        _smpteval forward = Tc(t.type, 0, 0, 0, 0);
        _smpteval expected = Tc(t.type, 0, 0, 0, 0);
        UINT32 failures = 0;
        for (UINT32 count = 1; count <= t.dayFrames && failures < 5; ++count)
        {
            TQSMPTE_IncrementByFrame(&forward);
            TQSMPTE_FrameCountToSMPTE(&expected, count);
            if (!Same(forward, expected))
            {
                ++failures;
                ADD_FAILURE() << "forward to " << count;
                forward = expected;
            }
        }
        if (t.type == TQSMPTE_TYPE_2997) continue;
        _smpteval back = Tc(t.type, 0, 0, 0, 0);
        for (UINT32 count = t.dayFrames; count-- > 0 && failures < 5;)
        {
            TQSMPTE_DeccrementByFrame(&back);
            TQSMPTE_FrameCountToSMPTE(&expected, count);
            if (!Same(back, expected))
            {
                ++failures;
                ADD_FAILURE() << "back to " << count;
                back = expected;
            }
        }
    }
}

TEST(Smpte, TwentyNineNinetySevenNonDropKeepsItsBorrowQuirk)
{
    _smpteval value = Tc(TQSMPTE_TYPE_2997, 0, 2, 0, 0);
    TQSMPTE_DeccrementByFrame(&value);
    EXPECT_TRUE(Same(value, Tc(0, 0, 1, 59, 31)));
    // Into a tenth minute it steps as it should.
    value = Tc(TQSMPTE_TYPE_2997, 0, 11, 0, 0);
    TQSMPTE_DeccrementByFrame(&value);
    EXPECT_TRUE(Same(value, Tc(0, 0, 10, 59, 29)));
    // From 31 the next step forward carries on as usual.
    value = Tc(TQSMPTE_TYPE_2997, 0, 1, 59, 31);
    TQSMPTE_IncrementByFrame(&value);
    EXPECT_TRUE(Same(value, Tc(0, 0, 2, 0, 0)));
}

TEST(Smpte, SteppingMasksHoursAndWrapsAtMidnight)
{
    _smpteval value = Tc(TQSMPTE_TYPE_24, 23, 59, 59, 23);
    TQSMPTE_IncrementByFrame(&value);
    EXPECT_TRUE(Same(value, Tc(0, 0, 0, 0, 0)));
    TQSMPTE_DeccrementByFrame(&value);
    EXPECT_TRUE(Same(value, Tc(0, 23, 59, 59, 23)));
    // Hours beyond five bits lose their high bits first: 32 + 23 steps as 23.
    value = Tc(TQSMPTE_TYPE_24, 55, 59, 59, 23);
    TQSMPTE_IncrementByFrame(&value);
    EXPECT_TRUE(Same(value, Tc(0, 0, 0, 0, 0)));
    TQSMPTE_IncrementByFrame(nullptr);
    TQSMPTE_DeccrementByFrame(nullptr);
}

} // namespace
