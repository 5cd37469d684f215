// tqvsthost's time texts: frame counts at a sample rate in each format a user can pick.
#include "timetext.h"

#include "kernel/text/testlocales.h"
#include "support/kernelenvironment.h"

#include <gtest/gtest.h>

namespace {

struct TimeCase
{
    const wchar_t* name;
    UINT64 frames;
    UINT32 rate;
    bool length;
    const wchar_t* text;
};

// One hour, two minutes and 3.5 seconds at 48 kHz is 178,728,000 frames.
constexpr UINT64 kHourAndABit = 178728000;

TEST(HostTimeText, EveryFormatTheHostOffers)
{
    tq::text::ScopedNumberLocale english(tq::test::English());
    const TimeCase cases[] = {
        {L"time", kHourAndABit, 48000, true, L"01:02:03.500"},
        {L"samples", kHourAndABit, 48000, true, L"178,728,000"},
        {L"seconds", kHourAndABit, 48000, true, L"3,723.500"},
        {L"smpte25", kHourAndABit, 48000, true, L"01:02:03:12"},
        {L"smpte24", kHourAndABit, 48000, true, L"01:02:03:12"},
        {L"smpte30", kHourAndABit, 48000, true, L"01:02:03:15"},
        // Video frame 1800 in drop frame (1800 × 1001 samples at 30 kHz): labels 00 and 01 of
        // minute 1 do not exist.
        {L"smpte2997drop", 1800 * 1001, 30000, true, L"00:01:00;02"},
        // Two bars of 4/4 at 120 beats a minute are four seconds; a position counts from bar 1.
        {L"measures", 4 * 44100, 44100, true, L"2.0.000"},
        {L"measures", 4 * 44100, 44100, false, L"3.1.000"},
        // A sample rate of 0 has no time; the count is still shown.
        {L"time", 12, 0, true, L"00:00:00.000"},
    };
    for (const TimeCase& c : cases)
    {
        SCOPED_TRACE(testing::Message() << c.name << " " << c.frames);
        const auto format = tqhost::ParseTimeFormat(c.name);
        ASSERT_TRUE(format);
        tqhost::TimeFormat chosen;
        chosen.format = *format;
        EXPECT_EQ(tqhost::FramesToText(chosen, c.frames, c.rate, c.length), c.text);
    }
}

TEST(HostTimeText, NamesAreCheckedAndLongFilesDoNotOverflow)
{
    EXPECT_FALSE(tqhost::ParseTimeFormat(L"hms"));
    EXPECT_FALSE(tqhost::ParseTimeFormat(L""));
    EXPECT_EQ(tqhost::ParseTimeFormat(L"SMPTE25"), TQPOSFMT_SMPTE25);
    // Three days at 384 kHz: frames times ten million leaves 64 bits, the split does not.
    tq::text::ScopedNumberLocale english(tq::test::English());
    const tqhost::TimeFormat seconds{TQPOSFMT_SECONDS, 120.0};
    EXPECT_EQ(tqhost::FramesToText(seconds, 3ull * 86400 * 384000 + 192000, 384000, true),
              L"259,200.500");
}

} // namespace
