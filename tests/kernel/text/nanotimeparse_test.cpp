// Tests of text to nano-time: every format's text reads back to its position, defaults, signs,
// origin, clamping, the parsers by kind, German separators and hostile text.
#include "tqnanotime.h"

#include "nanotimerecord.h"
#include "support/kernelenvironment.h"
#include "testlocales.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using tq::test::Record;
using tq::text::ScopedNumberLocale;

constexpr LONGLONG kSecond = 10000000;
constexpr LONGLONG kDay = 86400 * kSecond;
constexpr LONGLONG kPosition = 37234560000LL; // 1 h 2 min 3.456 s

std::wstring Text(const _tqposfmt& record, LONGLONG time, DWORD flags)
{
    wchar_t buffer[TQNANOTIME_MAXCHARS];
    TqNanoTimeToTextEx(buffer, &record, time, flags);
    return buffer;
}

LONGLONG Parse(const _tqposfmt& record, const wchar_t* text, DWORD flags = 0,
               const wchar_t** end = nullptr)
{
    return TqTextToNanoTimeToken2(text, &record, TQNANOTIME_MIN, TQNANOTIME_MAX, 777, flags, end);
}

bool IsMusic(int format)
{
    return format == TQPOSFMT_MEASURES || format == TQPOSFMT_MEASURESFROMZERO;
}

// What a text of the format can be off by, in nano-time, and how far from zero it shows a
// position without wrapping at a day.
struct Precision
{
    LONGLONG step;
    LONGLONG range;
};

Precision PrecisionOf(int format, bool shortForm)
{
    constexpr LONGLONG kFar = 1000000000000000LL;
    constexpr LONGLONG kWithinDay = 86000 * kSecond;
    switch (format)
    {
    case TQPOSFMT_SAMPLES:
        return {209, kFar};
    case TQPOSFMT_TIME:
        return {shortForm ? kSecond : 5000, kWithinDay};
    case TQPOSFMT_SECONDS:
        return {shortForm ? kSecond : 5000, kFar};
    case TQPOSFMT_TIMEFRAMES:
        return {shortForm ? kSecond : 200000, kWithinDay};
    case TQPOSFMT_FRAMES:
    case TQPOSFMT_FEET40:
    case TQPOSFMT_FEET16:
        return {400000, kFar};
    case TQPOSFMT_MEASURES:
    case TQPOSFMT_MEASURESFROMZERO:
        // A tick, and the twentieth of a thousandth of a measure the display leans forward.
        return {shortForm ? 5000000 : 6300, kFar};
    case TQPOSFMT_NANOTIME:
        return {0, kFar};
    case TQPOSFMT_MICROSECONDS:
        return {5, kFar};
    case TQPOSFMT_BEATS:
        return {shortForm ? 5000000 : 2500, kFar};
    case TQPOSFMT_CDTIME:
        return {shortForm ? kSecond : 66667, kWithinDay};
    case TQPOSFMT_COMPACTTIME:
        return {kSecond, shortForm ? kFar : kWithinDay};
    default: // timecode: a frame
        return {417084, kWithinDay};
    }
}

const LONGLONG kPositions[] = {
    0,
    1,
    -1,
    399999, // around a frame at 25
    400000,
    400001,
    333666, // around a frame at 29.97
    333667,
    5208, // around a tick at 120 with 960 a beat
    5209,
    5000000, // a beat
    4999999,
    9999999, // around a second
    kPosition,
    -kPosition,
    kDay - 1,
    -kDay + 1,
    123456789012345LL,
    -98765432109876LL,
    TQNANOTIME_MAX,
    TQNANOTIME_MAX - 1,
    TQNANOTIME_MIN,
    TQNANOTIME_MIN + 1,
};

class NanoTimeParse : public testing::Test
{
protected:
    ScopedNumberLocale m_locale{tq::test::English()};
};

// Every format, both tables, each position: the text reads back to a time that prints as the
// same text, and, where the format shows the position without wrapping, lies within the
// format's precision of it.
void CheckRoundTrips()
{
    for (int format = 0; format < TQPOSFMT_COUNT; ++format)
    {
        for (const bool shortForm : {false, true})
        {
            const _tqposfmt record = Record(format);
            const DWORD outFlags = shortForm ? TQPOSFMT_SHORT : 0;
            const DWORD inFlags =
                outFlags | (shortForm && IsMusic(format) ? TQPOSFMT_MUSICSHORT : 0);
            const Precision precision = PrecisionOf(format, shortForm);
            for (const LONGLONG position : kPositions)
            {
                const std::wstring text = Text(record, position, outFlags);
                const wchar_t* end = nullptr;
                const LONGLONG parsed = Parse(record, text.c_str(), inFlags, &end);
                const std::string where = "format " + std::to_string(format) +
                                          (shortForm ? " short" : "") + " at " +
                                          std::to_string(position);
                ASSERT_EQ(end, text.c_str() + text.size()) << where;
                // A time a hair before zero shows as "-0", which reads as 0.
                const std::wstring again = Text(record, parsed, outFlags);
                if (parsed == 0 && text[0] == L'-')
                    ASSERT_EQ(L"-" + again, text) << where;
                else
                    ASSERT_EQ(again, text) << where;
                const bool shown = position < precision.range && position > -precision.range;
                if (!shown) continue;
                // Whole-number displays truncate; the others round.
                const LONGLONG off = parsed - position;
                ASSERT_LE(off < 0 ? -off : off, precision.step)
                    << where << ": " << std::string(text.begin(), text.end()) << " read as "
                    << parsed;
            }
        }
    }
}

TEST_F(NanoTimeParse, EveryFormatReadsBackWhatItShows)
{
    CheckRoundTrips();
}

TEST(NanoTimeParseGerman, EveryFormatReadsBackWhatItShows)
{
    ScopedNumberLocale german(tq::test::German());
    CheckRoundTrips();
}

TEST(NanoTimeParseGerman, ReadsTheLocalesSeparators)
{
    ScopedNumberLocale german(tq::test::German());
    EXPECT_EQ(Parse(Record(TQPOSFMT_TIME), L"01:02:03,456"), kPosition);
    EXPECT_EQ(Parse(Record(TQPOSFMT_SECONDS), L"3.723,456"), kPosition);
    EXPECT_EQ(Parse(Record(TQPOSFMT_SAMPLES), L"178.725.888"), kPosition);
    // Measures grouped by "." stand before "." separated beats and ticks.
    EXPECT_EQ(Parse(Record(TQPOSFMT_MEASURESFROMZERO), L"1.234.2.480"),
              (1234 * 4 + 2) * 5000000LL + 2500000);
}

TEST_F(NanoTimeParse, TextWithoutANumberGivesTheDefault)
{
    const _tqposfmt record = Record(TQPOSFMT_TIME);
    for (const wchar_t* text : {L"", L"   ", L"-", L" - ", L"abc"})
        EXPECT_EQ(Parse(record, text), 777) << text;
    EXPECT_EQ(TqTextToNanoTimeToken2(nullptr, &record, 0, 1, 5, 0, nullptr), 5);
    EXPECT_EQ(TqTextToNanoTimeToken(L"x", &record, nullptr), 0);
    // An honest zero stands.
    EXPECT_EQ(Parse(record, L"0"), 0);
}

TEST_F(NanoTimeParse, SignOriginAndBounds)
{
    _tqposfmt record = Record(TQPOSFMT_SECONDS);
    record.origin = 5 * kSecond;
    EXPECT_EQ(Parse(record, L"-2"), 3 * kSecond);
    EXPECT_EQ(Parse(record, L"-2", TQPOSFMT_RELATIVE), -2 * kSecond);
    record.origin = 0;
    // Seconds stop at the whole seconds within the bounds.
    EXPECT_GT(Parse(record, L"99999999999999999"), TQNANOTIME_MAX - kSecond);
    EXPECT_LT(Parse(record, L"-99999999999999999"), TQNANOTIME_MIN + kSecond);
    record.format = TQPOSFMT_SAMPLES;
    EXPECT_EQ(Parse(record, L"99999999999999999999999"), TQNANOTIME_MAX);
    record.format = TQPOSFMT_NANOTIME;
    EXPECT_EQ(Parse(record, L"-9223372036854775808"), TQNANOTIME_MIN);
    record.origin = TQNANOTIME_MAX;
    EXPECT_EQ(Parse(record, L"9223372036854775807"), TQNANOTIME_MAX);
    record.origin = 0;
    EXPECT_EQ(TqTextToNanoTimeTokenEx(L"500", &record, 0, 100, 400, nullptr), 400);
    EXPECT_EQ(TqTextToNanoTimeTokenEx(L"-500", &record, 0, -400, 400, nullptr), -400);
}

TEST_F(NanoTimeParse, TimeFieldsCountFromTheSeconds)
{
    const wchar_t* end = nullptr;
    EXPECT_EQ(TqTextToTimeToken(L"3.6", nullptr), 3600);
    EXPECT_EQ(TqTextToTimeToken(L"1:30", nullptr), 90000);
    EXPECT_EQ(TqTextToTimeToken(L"1:02:03.5", nullptr), 3723500);
    const wchar_t* text = L"at 1:30 into it";
    EXPECT_EQ(TqTextToTimeToken(text, &end), 90000);
    EXPECT_EQ(end, text + 7);
    EXPECT_EQ(TqTextToTimeToken(L"none", &end), 0);
    // A fourth number is not part of the time.
    text = L"1:2:3:4";
    EXPECT_EQ(TqTextToTimeToken(text, &end), 3723000);
    EXPECT_EQ(end, text + 5);
}

TEST_F(NanoTimeParse, FramesFieldsCountFromTheFramesOrInShortFromTheSeconds)
{
    _smpteval value = {};
    ASSERT_TRUE(TqTextToHMSFToken(L"1:2:3.4", 0, &value, nullptr));
    EXPECT_EQ(value.hours, 1u);
    EXPECT_EQ(value.frames, 4u);
    ASSERT_TRUE(TqTextToHMSFToken(L"2.4", 0, &value, nullptr));
    EXPECT_EQ(value.seconds, 2u);
    EXPECT_EQ(value.frames, 4u);
    ASSERT_TRUE(TqTextToHMSFToken(L"2:4", TQPOSFMT_SHORT, &value, nullptr));
    EXPECT_EQ(value.minutes, 2u);
    EXPECT_EQ(value.seconds, 4u);
    EXPECT_EQ(value.frames, 0u);
    EXPECT_FALSE(TqTextToHMSFToken(L"::", 0, &value, nullptr));
    EXPECT_EQ(Parse(Record(TQPOSFMT_CDTIME), L"00:00:01:15"), 12000000);
}

TEST_F(NanoTimeParse, FeetAndFrames)
{
    const wchar_t* end = nullptr;
    EXPECT_EQ(TqTextToFeetAndFramesToken(L"2+20", 40, nullptr), 100);
    EXPECT_EQ(TqTextToFeetAndFramesToken(L"6 + 4", 16, nullptr), 100);
    EXPECT_EQ(TqTextToFeetAndFramesToken(L"+5", 16, nullptr), 5);
    EXPECT_EQ(TqTextToFeetAndFramesToken(L"12", 16, nullptr), 12);
    EXPECT_EQ(TqTextToFeetAndFramesToken(L"1,234+5", 16, nullptr), 1234 * 16 + 5);
    const wchar_t* text = L"3+ ft";
    EXPECT_EQ(TqTextToFeetAndFramesToken(text, 16, &end), 48);
    EXPECT_EQ(end, text + 2);
    EXPECT_EQ(TqTextToFeetAndFramesToken(L"999999999999999999+1", 40, nullptr), LLONG_MAX);
    EXPECT_EQ(Parse(Record(TQPOSFMT_FEET40), L"2+20"), 4 * kSecond);
}

TEST_F(NanoTimeParse, TimecodeIsTheWordAtTheFirstDigit)
{
    const _tqposfmt record = Record(TQPOSFMT_SMPTE25);
    const wchar_t* end = nullptr;
    const wchar_t* text = L"TC 00:00:01:05 from the tape";
    EXPECT_EQ(Parse(record, text, 0, &end), 12000000);
    EXPECT_EQ(end, text + 14);
    EXPECT_EQ(Parse(Record(TQPOSFMT_SMPTE2997DROP), L"00:01:00;02"),
              Parse(Record(TQPOSFMT_SMPTE2997DROP), L"00:01:00;00"));
}

// Whatever is typed, every parser returns and stays within the bounds.
TEST_F(NanoTimeParse, HostileTextIsReadWithoutHarm)
{
    const std::wstring samples[] = {
        std::wstring(100000, L'9'),
        std::wstring(100000, L':'),
        std::wstring(50000, L'1') + L":" + std::wstring(50000, L'2'),
        L"+-+-+" + std::wstring(1000, L'+'),
        std::wstring(1000, L'1') + L"." + std::wstring(1000, L'.') + L"5",
        L"1:2:3:4:5:6:7:8:9:10:11:12",
        L"\x0661\x0662:\xFF13",
    };
    unsigned seed = 12345;
    std::wstring noise;
    for (int i = 0; i < 2000; ++i)
    {
        seed = seed * 1103515245 + 12345;
        const wchar_t pool[] = L"0123456789:.,;+- \t$%abc";
        noise += pool[(seed >> 16) % (sizeof(pool) / sizeof(pool[0]) - 1)];
    }
    for (int format = -1; format <= TQPOSFMT_COUNT; ++format)
    {
        const _tqposfmt record = Record(format);
        for (const DWORD flags : {0ul, 1ul, 2ul, 5ul})
        {
            for (const std::wstring& text : samples)
            {
                const LONGLONG value = Parse(record, text.c_str(), flags);
                EXPECT_GE(value, TQNANOTIME_MIN);
                EXPECT_LE(value, TQNANOTIME_MAX);
            }
            for (size_t start = 0; start < noise.size(); start += 37)
            {
                const std::wstring piece = noise.substr(start, 40);
                const wchar_t* end = nullptr;
                const LONGLONG value = Parse(record, piece.c_str(), flags, &end);
                EXPECT_GE(value, TQNANOTIME_MIN);
                EXPECT_LE(value, TQNANOTIME_MAX);
                EXPECT_GE(end, piece.c_str());
                EXPECT_LE(end, piece.c_str() + piece.size());
            }
        }
    }
}

} // namespace
