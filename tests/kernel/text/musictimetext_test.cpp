// Tests of music time: tick counts to text and back, borrowing, counting from 1, meters.
#include "tqnanotime.h"

#include "support/kernelenvironment.h"
#include "testlocales.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using tq::text::ScopedNumberLocale;

_tqposfmt Meter(UINT16 beats, UINT16 note)
{
    _tqposfmt record = {};
    record.format = TQPOSFMT_MEASURES;
    record.tempo = 120.0;
    record.beatNote = note;
    record.beatsPerMeasure = beats;
    record.ticksPerBeat = 960;
    return record;
}

class MusicTimeText : public testing::Test
{
protected:
    ScopedNumberLocale m_locale{tq::test::English()};
    wchar_t m_buffer[TQNANOTIME_MAXCHARS] = {};
};

TEST_F(MusicTimeText, TicksSplitIntoMeasuresBeatsAndTicks)
{
    const _tqposfmt fourFour = Meter(4, 4);
    EXPECT_EQ(TqTicksToText(m_buffer, &fourFour, 0, 0, FALSE, 1), 7);
    EXPECT_STREQ(m_buffer, L"0.0.000");
    TqTicksToText(m_buffer, &fourFour, 3840 + 960 * 2 + 7, 1, FALSE, 1);
    EXPECT_STREQ(m_buffer, L"2.3.007");
    TqTicksToText(m_buffer, &fourFour, 3840 + 960 * 2 + 7, 1, TRUE, 1);
    EXPECT_STREQ(m_buffer, L"2.3");
    // The ticks shown are counted in steps.
    TqTicksToText(m_buffer, &fourFour, 959, 0, FALSE, 10);
    EXPECT_STREQ(m_buffer, L"0.0.095");
    // In 6/8 a beat is an eighth: 480 ticks, six to the measure.
    const _tqposfmt sixEight = Meter(6, 8);
    TqTicksToText(m_buffer, &sixEight, 2880 + 480 * 5, 1, FALSE, 1);
    EXPECT_STREQ(m_buffer, L"2.6.000");
}

TEST_F(MusicTimeText, NegativeTicksBorrowAMeasure)
{
    const _tqposfmt record = Meter(4, 4);
    TqMeasuresAndTicksToText(m_buffer, &record, 3, -960, 0, FALSE, 1);
    EXPECT_STREQ(m_buffer, L"2.3.000");
    TqMeasuresAndTicksToText(m_buffer, &record, 3, -3840 * 2 - 1, 0, FALSE, 1);
    EXPECT_STREQ(m_buffer, L"0.3.959");
    TqTicksToText(m_buffer, &record, -1, 0, FALSE, 1);
    EXPECT_STREQ(m_buffer, L"-1.3.959");
}

TEST_F(MusicTimeText, CountingFromOneSkipsMeasureZero)
{
    const _tqposfmt record = Meter(4, 4);
    TqTicksToText(m_buffer, &record, 0, 1, FALSE, 1);
    EXPECT_STREQ(m_buffer, L"1.1.000");
    TqTicksToText(m_buffer, &record, -1, 1, FALSE, 1);
    EXPECT_STREQ(m_buffer, L"-1.4.959");
    TqTicksToText(m_buffer, &record, -3841, 1, FALSE, 1);
    EXPECT_STREQ(m_buffer, L"-2.4.959");
}

TEST_F(MusicTimeText, TextReadsBackToTheSameTicks)
{
    for (const _tqposfmt& record : {Meter(4, 4), Meter(3, 4), Meter(6, 8), Meter(7, 16)})
        for (const int mode : {0, 1})
            for (LONGLONG ticks = -20000; ticks <= 20000; ticks += 97)
            {
                TqTicksToText(m_buffer, &record, ticks, mode, FALSE, 1);
                const wchar_t* end = nullptr;
                EXPECT_EQ(TqTextToTicks(m_buffer, &record, mode, 0, &end), ticks)
                    << std::string(m_buffer, m_buffer + wcslen(m_buffer));
                EXPECT_EQ(end, m_buffer + wcslen(m_buffer));
            }
}

TEST_F(MusicTimeText, MusicTextIsReadAsTyped)
{
    LONGLONG measures = -1, beats = -1, ticks = -1;
    const wchar_t* end = nullptr;
    const wchar_t* text = L"bar 12:3.480 and more";
    ASSERT_TRUE(TqTextToMeasuresBeatsTicks(text, 0, &measures, &beats, &ticks, &end));
    EXPECT_EQ(measures, 12);
    EXPECT_EQ(beats, 3);
    EXPECT_EQ(ticks, 480);
    EXPECT_EQ(end, text + 12);
    ASSERT_TRUE(TqTextToMeasuresBeatsTicks(L"12.3.480", TQPOSFMT_MUSICSHORT, &measures, &beats,
                                           &ticks, nullptr));
    EXPECT_EQ(ticks, 0);
    ASSERT_TRUE(TqTextToMeasuresBeatsTicks(L"1,234:2", 0, &measures, &beats, &ticks, nullptr));
    EXPECT_EQ(measures, 1234);
    EXPECT_EQ(beats, 2);
    EXPECT_FALSE(TqTextToMeasuresBeatsTicks(L"none", 0, &measures, &beats, &ticks, &end));
    ASSERT_TRUE(TqTextToBeatsTicks(L"3.480", &beats, &ticks, nullptr));
    EXPECT_EQ(beats, 3);
    EXPECT_EQ(ticks, 480);
}

TEST_F(MusicTimeText, MusicTimeFollowsTheTempo)
{
    _tqposfmt record = Meter(4, 4);
    // Measure 2, beat 1 at 120 is two seconds in; from zero, one measure and one beat.
    EXPECT_EQ(TqTextToMusicTimeToken(L"2.1.000", &record, 0, nullptr), 20000000);
    EXPECT_EQ(TqTextToMusicTimeToken(L"1.1", &record, TQPOSFMT_RELATIVE, nullptr), 25000000);
    record.format = TQPOSFMT_MEASURESFROMZERO;
    EXPECT_EQ(TqTextToMusicTimeToken(L"1.1.480", &record, 0, nullptr), 27500000);
    record.tempo = 0;
    EXPECT_EQ(TqTextToMusicTimeToken(L"1.1.480", &record, 0, nullptr), 0);
}

} // namespace
