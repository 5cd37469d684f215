// Tests of nano-time to text: every format in both tables, signs, origin and the relative flag,
// the splits beneath, capacities and the German separators.
#include "tqnanotime.h"

#include "nanotimerecord.h"
#include "support/kernelenvironment.h"
#include "testlocales.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using tq::test::Record;
using tq::text::ScopedNumberLocale;

std::wstring Text(int format, LONGLONG time, DWORD flags = 0)
{
    const _tqposfmt record = Record(format);
    wchar_t buffer[TQNANOTIME_MAXCHARS];
    const int length = TqNanoTimeToTextEx(buffer, &record, time, flags);
    EXPECT_EQ(length, static_cast<int>(wcslen(buffer)));
    return buffer;
}

class NanoTimeText : public testing::Test
{
protected:
    ScopedNumberLocale m_locale{tq::test::English()};
};

// 1 h 2 min 3.456 s.
constexpr LONGLONG kPosition = 37234560000LL;

struct FormatCase
{
    int format;
    const wchar_t* normal;
    const wchar_t* shortForm;
};

const FormatCase kFormats[] = {
    {TQPOSFMT_SAMPLES, L"178,725,888", L"178,725,888"},
    {TQPOSFMT_TIME, L"01:02:03.456", L"01:02:03"},
    {TQPOSFMT_SECONDS, L"3,723.456", L"3,723"},
    {TQPOSFMT_TIMEFRAMES, L"01:02:03.11", L"01:02:03"},
    {TQPOSFMT_FRAMES, L"93,086.400", L"93,086"},
    {TQPOSFMT_MEASURES, L"1,862.3.875", L"1,862.3"},
    {TQPOSFMT_SMPTE2997, L"01:01:59:22", L"01:01:59:22"},
    {TQPOSFMT_SMPTE30, L"01:02:03:13", L"01:02:03:13"},
    {TQPOSFMT_SMPTE2997DROP, L"01:02:03;14", L"01:02:03;14"},
    {TQPOSFMT_SMPTE25, L"01:02:03:11", L"01:02:03:11"},
    {TQPOSFMT_SMPTE24, L"01:02:03:10", L"01:02:03:10"},
    {TQPOSFMT_NANOTIME, L"37,234,560,000", L"37,234,560,000"},
    {TQPOSFMT_MICROSECONDS, L"3,723,456,000", L"3,723,456,000"},
    {TQPOSFMT_MEASURESFROMZERO, L"1,861.2.875", L"1,861.2"},
    {TQPOSFMT_BEATS, L"7,446.912", L"7,446"},
    {TQPOSFMT_FEET40, L"2,327+6", L"2,327+6"},
    {TQPOSFMT_FEET16, L"5,817+14", L"5,817+14"},
    {TQPOSFMT_CDTIME, L"01:02:03:34", L"01:02:03"},
    {TQPOSFMT_SMPTE23976, L"01:01:59:17", L"01:01:59:17"},
    {TQPOSFMT_COMPACTTIME, L"1:02:03", L"3,723"},
};

TEST_F(NanoTimeText, EveryFormatInBothTables)
{
    for (const FormatCase& c : kFormats)
    {
        EXPECT_EQ(Text(c.format, kPosition), c.normal) << c.format;
        EXPECT_EQ(Text(c.format, kPosition, TQPOSFMT_SHORT), c.shortForm) << c.format;
    }
}

TEST_F(NanoTimeText, TimeRoundsToTheNearestMillisecondAndFrame)
{
    EXPECT_EQ(Text(TQPOSFMT_TIME, 36000000), L"00:00:03.600");
    EXPECT_EQ(Text(TQPOSFMT_TIME, 36004999), L"00:00:03.600");
    EXPECT_EQ(Text(TQPOSFMT_TIME, 36005001), L"00:00:03.601");
    // Just short of a second shows the next second.
    EXPECT_EQ(Text(TQPOSFMT_TIME, 9999999), L"00:00:01.000");
    EXPECT_EQ(Text(TQPOSFMT_TIMEFRAMES, 9800001), L"00:00:01.00");
    EXPECT_EQ(Text(TQPOSFMT_TIMEFRAMES, 9799999), L"00:00:00.24");
    // Hours wrap at a day.
    EXPECT_EQ(Text(TQPOSFMT_TIME, 25 * 36000000000LL), L"01:00:00.000");
    // The whole-number forms never round up to what the time has not reached.
    EXPECT_EQ(Text(TQPOSFMT_SECONDS, 19999999, TQPOSFMT_SHORT), L"1");
    EXPECT_EQ(Text(TQPOSFMT_FRAMES, 799000, TQPOSFMT_SHORT), L"1");
    EXPECT_EQ(Text(TQPOSFMT_MICROSECONDS, 14), L"1");
    EXPECT_EQ(Text(TQPOSFMT_MICROSECONDS, 15), L"2");
}

TEST_F(NanoTimeText, CompactTimeDropsLeadingFields)
{
    EXPECT_EQ(Text(TQPOSFMT_COMPACTTIME, 0), L"0:00");
    EXPECT_EQ(Text(TQPOSFMT_COMPACTTIME, 95 * 10000000LL), L"1:35");
    EXPECT_EQ(Text(TQPOSFMT_COMPACTTIME, 600 * 10000000LL), L"10:00");
    EXPECT_EQ(Text(TQPOSFMT_COMPACTTIME, 3600 * 10000000LL), L"1:00:00");
    EXPECT_EQ(Text(TQPOSFMT_COMPACTTIME, 36000 * 10000000LL), L"10:00:00");
}

TEST_F(NanoTimeText, FeetAndFramesSplitTheRoundedFrames)
{
    // 100 frames at 25 are 4 s.
    EXPECT_EQ(Text(TQPOSFMT_FEET40, 40000000), L"2+20");
    EXPECT_EQ(Text(TQPOSFMT_FEET16, 40000000), L"6+4");
    EXPECT_EQ(Text(TQPOSFMT_FEET16, 40000000 - 150000), L"6+4");
}

TEST_F(NanoTimeText, NegativeTimesCarryASignThatTheLengthCounts)
{
    wchar_t buffer[TQNANOTIME_MAXCHARS];
    const _tqposfmt record = Record(TQPOSFMT_TIME);
    EXPECT_EQ(TqNanoTimeToText(buffer, &record, -36000000, FALSE), 13);
    EXPECT_STREQ(buffer, L"-00:00:03.600");
    EXPECT_EQ(Text(TQPOSFMT_SMPTE25, -400000), L"-00:00:00:01");
    EXPECT_EQ(Text(TQPOSFMT_MEASURES, -5000000), L"-1.2.000");
    EXPECT_EQ(Text(TQPOSFMT_SAMPLES, -10000000), L"-48,000");
    EXPECT_EQ(Text(TQPOSFMT_NANOTIME, LLONG_MIN), L"-9,223,372,036,854,775,807");
}

TEST_F(NanoTimeText, OriginIsZeroUnlessTheTimeIsALength)
{
    _tqposfmt record = Record(TQPOSFMT_MEASURES);
    record.origin = 20000000; // one measure at 120 in 4/4
    wchar_t buffer[TQNANOTIME_MAXCHARS];
    TqNanoTimeToTextEx(buffer, &record, 20000000, 0);
    EXPECT_STREQ(buffer, L"1.1.000");
    TqNanoTimeToTextEx(buffer, &record, 25000000, TQPOSFMT_RELATIVE);
    EXPECT_STREQ(buffer, L"1.1.000");
    TqNanoTimeToTextEx(buffer, &record, 25000000, 0);
    EXPECT_STREQ(buffer, L"1.2.000");
    record.format = TQPOSFMT_NANOTIME;
    TqNanoTimeToTextEx(buffer, &record, 0, 0);
    EXPECT_STREQ(buffer, L"-20,000,000");
    // Extreme origins saturate instead of wrapping.
    record.origin = LLONG_MIN;
    TqNanoTimeToTextEx(buffer, &record, LLONG_MAX, 0);
    EXPECT_STREQ(buffer, L"9,223,372,036,854,775,807");
}

TEST_F(NanoTimeText, FormatsOutsideTheTablesPrintTheRawValue)
{
    EXPECT_EQ(Text(20, 1234567), L"1,234,567");
    EXPECT_EQ(Text(-1, -5), L"-5");
}

TEST_F(NanoTimeText, CallersFormatStringsTakeTheSameValues)
{
    const _tqposfmt record = Record(TQPOSFMT_TIME);
    wchar_t buffer[TQNANOTIME_MAXCHARS];
    TqNanoTimeToTextFormat(buffer, &record, kPosition, L"%uh %um %us %ums", 0);
    EXPECT_STREQ(buffer, L"1h 2m 3s 456ms");
    EXPECT_EQ(TqNanoTimeToTextFormat(buffer, &record, kPosition, nullptr, 0), 0);
    EXPECT_STREQ(buffer, L"");
}

TEST_F(NanoTimeText, BoundedFormsGiveNothingWhenTheTextDoesNotFit)
{
    const _tqposfmt record = Record(TQPOSFMT_TIME);
    wchar_t buffer[16];
    EXPECT_EQ(TqNanoTimeToTextN(buffer, 13, &record, kPosition, FALSE), 12);
    EXPECT_STREQ(buffer, L"01:02:03.456");
    wmemset(buffer, L'x', 16);
    EXPECT_EQ(TqNanoTimeToTextN(buffer, 12, &record, kPosition, FALSE), 0);
    EXPECT_STREQ(buffer, L"");
    EXPECT_EQ(TqNanoTimeToTextExN(buffer, 13, &record, -kPosition, 0), 0);
    EXPECT_EQ(TqNanoTimeToTextExN(buffer, 0, &record, 0, 0), 0);
    EXPECT_EQ(TqNanoTimeToTextExN(buffer, 16, nullptr, 0, 0), 0);
}

TEST(NanoTimeHMSF, SplitsAtAnyRateAndWrapsBeforeZero)
{
    _smpteval value = {};
    TqNanoTimeToHMSF(37234560000LL, &value, 1000.0);
    EXPECT_EQ(value.hours, 1u);
    EXPECT_EQ(value.minutes, 2u);
    EXPECT_EQ(value.seconds, 3u);
    EXPECT_EQ(value.frames, 456u);
    TqNanoTimeToHMSF(-10000000, &value, 25.0);
    EXPECT_EQ(value.hours, 23u);
    EXPECT_EQ(value.seconds, 59u);
    EXPECT_EQ(value.frames, 0u);
    EXPECT_EQ(TqHMSFToNanoTime(&value, 25.0), 863990000000LL);
    // A timecode type converts as that timecode.
    value = {TQSMPTE_TYPE_25, 0, 0, 1, 5, 0};
    EXPECT_EQ(TqHMSFToNanoTime(&value, 1000.0), 12000000);
    TqNanoTimeToHMSF(12000000, &value, 1000.0);
    EXPECT_EQ(value.seconds, 1u);
    EXPECT_EQ(value.frames, 5u);
}

TEST(NanoTimeMeasures, CountsAtTheRecordsTempoAndMeter)
{
    _tqposfmt record = Record(TQPOSFMT_MEASURES);
    record.tempo = 90.0;
    record.beatsPerMeasure = 3;
    LONGLONG measures = 0;
    UINT32 beats = 0, ticks = 0;
    // 7.5 beats at 90: two measures of three, one beat and a half.
    TqNanoTimeToMeasures(50000000, &record, &measures, &beats, &ticks);
    EXPECT_EQ(measures, 2);
    EXPECT_EQ(beats, 1u);
    EXPECT_EQ(ticks, 480u);
    TqNanoTimeToMeasures(-10000000, &record, &measures, &beats, &ticks);
    EXPECT_EQ(measures, -1);
    EXPECT_EQ(beats, 1u);
    EXPECT_EQ(ticks, 480u);
    // Without tempo or meter nothing divides by zero.
    record.tempo = 0;
    record.beatsPerMeasure = 0;
    record.ticksPerBeat = 0;
    TqNanoTimeToMeasures(50000000, &record, &measures, &beats, &ticks);
    EXPECT_EQ(measures, 0);
    TqNanoTimeToMeasures(50000000, nullptr, nullptr, nullptr, nullptr);
}

// German: "." groups, "," is the decimal separator; the time separator stays ":".
TEST(NanoTimeTextGerman, UsesTheLocalesSeparators)
{
    ScopedNumberLocale german(tq::test::German());
    EXPECT_EQ(Text(TQPOSFMT_TIME, kPosition), L"01:02:03,456");
    EXPECT_EQ(Text(TQPOSFMT_SECONDS, kPosition), L"3.723,456");
    EXPECT_EQ(Text(TQPOSFMT_SAMPLES, kPosition), L"178.725.888");
    EXPECT_EQ(Text(TQPOSFMT_TIMEFRAMES, kPosition), L"01:02:03,11");
    EXPECT_EQ(Text(TQPOSFMT_BEATS, kPosition), L"7.446,912");
    EXPECT_EQ(Text(TQPOSFMT_MEASURES, kPosition), L"1.862.3.875");
    EXPECT_EQ(Text(TQPOSFMT_SMPTE2997DROP, kPosition), L"01:02:03;14");
}

} // namespace
