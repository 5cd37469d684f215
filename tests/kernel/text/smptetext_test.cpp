// Tests of reading timecode text: separators, packed digits, trailing separators and carries.
#include "tqsmpte.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct TextCase
{
    const wchar_t* text;
    UINT32 type;
    UINT32 hours, minutes, seconds, frames;
};

const TextCase kCases[] = {
    {L"1:2:3:4", TQSMPTE_TYPE_25, 1, 2, 3, 4},
    {L"3", TQSMPTE_TYPE_25, 0, 0, 0, 3},
    {L"12:05", TQSMPTE_TYPE_25, 0, 0, 12, 5},   // the last number is the frames
    {L"01:02:", TQSMPTE_TYPE_25, 0, 1, 2, 0},   // a trailing separator is a zero field
    {L"01:02:  ", TQSMPTE_TYPE_25, 0, 1, 2, 0}, // blanks behind it do not count
    {L"010203", TQSMPTE_TYPE_25, 0, 1, 2, 3},   // digits pair from the right
    {L"12345", TQSMPTE_TYPE_25, 0, 1, 24, 20},  // 45 frames carry a second at 25
    {L"01020304", TQSMPTE_TYPE_30, 1, 2, 3, 4},
    {L"0102030405", TQSMPTE_TYPE_30, 1, 2, 3, 4}, // at most four numbers
    {L"00:00:00:30", TQSMPTE_TYPE_25, 0, 0, 1, 5},
    {L"00:00:99:99", TQSMPTE_TYPE_24, 0, 1, 43, 3}, // 99 frames are 4 s 3 f at 24
    {L"23:59:59:30", TQSMPTE_TYPE_30, 0, 0, 0, 0},  // carries wrap at midnight
    {L"01;02;03;04", TQSMPTE_TYPE_2997DROP, 1, 2, 3, 4},
    {L"  1h 2m 3s 4f  ", TQSMPTE_TYPE_25, 1, 2, 3, 4},
    {L"", TQSMPTE_TYPE_25, 0, 0, 0, 0},
    {L"::", TQSMPTE_TYPE_25, 0, 0, 0, 0},
    {L"-01:00:00:00", TQSMPTE_TYPE_25, 1, 0, 0, 0}, // no sign in a timecode
    {L"00:00:00:45", 0, 0, 0, 0, 45},               // no frame carry without a format
};

TEST(SmpteText, ReadsWhatPeopleType)
{
    for (const TextCase& c : kCases)
    {
        _smpteval value = {c.type, 9, 9, 9, 9, 0};
        ASSERT_EQ(TQSMPTE_TextToSMPTE(c.text, &value), S_OK);
        EXPECT_EQ(value.type, c.type) << c.text;
        EXPECT_EQ(value.hours, c.hours) << c.text;
        EXPECT_EQ(value.minutes, c.minutes) << c.text;
        EXPECT_EQ(value.seconds, c.seconds) << c.text;
        EXPECT_EQ(value.frames, c.frames) << c.text;
    }
}

TEST(SmpteText, HostileTextIsReadWithoutHarm)
{
    _smpteval value = {TQSMPTE_TYPE_25, 0, 0, 0, 0, 0};
    EXPECT_EQ(TQSMPTE_TextToSMPTE(nullptr, &value), E_POINTER);
    EXPECT_EQ(TQSMPTE_TextToSMPTE(L"1", nullptr), E_POINTER);
    const std::wstring digits(100000, L'9');
    ASSERT_EQ(TQSMPTE_TextToSMPTE(digits.c_str(), &value), S_OK);
    EXPECT_LT(value.hours, 24u);
    EXPECT_LT(value.frames, 25u);
    const std::wstring separators(100000, L':');
    ASSERT_EQ(TQSMPTE_TextToSMPTE(separators.c_str(), &value), S_OK);
    EXPECT_EQ(value.hours + value.minutes + value.seconds + value.frames, 0u);
}

} // namespace
