// Tests of the hex parsers.
#include "tqnumtext.h"

#include <gtest/gtest.h>

namespace {

TEST(HexParse, PrefixInAnyCaseAndBothDigitCases)
{
    const wchar_t* text = L"  0XfF zz";
    const wchar_t* end = nullptr;
    EXPECT_EQ(TqHexToDWordToken(text, &end), 255u);
    EXPECT_EQ(end, text + 6);
    EXPECT_EQ(TqHexToDWordToken(L"0xDeadBeef", nullptr), 0xDEADBEEFu);
    EXPECT_EQ(TqHexToDWordToken(L"1a", nullptr), 0x1Au);
    EXPECT_EQ(TqHexToDWordLongToken(L"0x123456789abcdef0", nullptr), 0x123456789ABCDEF0ull);
}

TEST(HexParse, ValuesBeyondTheTypeSaturate)
{
    EXPECT_EQ(TqHexToDWordToken(L"1FFFFFFFF", nullptr), 0xFFFFFFFFu);
    EXPECT_EQ(TqHexToDWordLongToken(L"10000000000000000", nullptr), ~0ull);
}

TEST(HexParse, NothingToRead)
{
    const wchar_t* text = L"zz";
    const wchar_t* end = nullptr;
    EXPECT_EQ(TqHexToDWordToken(text, &end), 0u);
    EXPECT_EQ(end, text);
    EXPECT_EQ(TqHexToDWordToken(nullptr, &end), 0u);
    EXPECT_EQ(end, nullptr);
    EXPECT_EQ(TqHexToDWordTokenEx(L"zz", 7, 0, 100, nullptr), 7u);
    EXPECT_EQ(TqHexToDWordTokenEx(L"0", 7, 0, 100, nullptr), 0u);
    EXPECT_EQ(TqHexToDWordTokenEx(L"ff", 7, 0, 100, nullptr), 100u);
    EXPECT_EQ(TqHexToDWordLongTokenEx(L"-", 9, 0, 100, nullptr), 9u);
}

} // namespace
