// Tests of double output: rounding, the sign of zero, the decimals limit and grouping.
#include "tqnumtext.h"

#include "testlocales.h"

#include <gtest/gtest.h>

#include <math.h>
#include <string>

namespace {

using tq::text::ScopedNumberLocale;

std::wstring Text(double value, int decimals, BOOL grouped = FALSE)
{
    wchar_t buffer[64];
    const int length = TqDoubleToText(buffer, value, decimals, grouped);
    EXPECT_EQ(static_cast<size_t>(length), wcslen(buffer));
    return buffer;
}

class DoubleText : public testing::Test
{
protected:
    ScopedNumberLocale m_locale{tq::test::English()};
};

TEST_F(DoubleText, RoundsHalfAwayFromZero)
{
    EXPECT_EQ(Text(1234.5678, 2), L"1234.57");
    EXPECT_EQ(Text(-1234.5678, 2), L"-1234.57");
    EXPECT_EQ(Text(0.5, 0), L"1");
    EXPECT_EQ(Text(-0.5, 0), L"-1");
    EXPECT_EQ(Text(9.9999, 3), L"10.000");
    EXPECT_EQ(Text(1.05, 3), L"1.050");
    EXPECT_EQ(Text(0.001, 3), L"0.001");
    EXPECT_EQ(Text(3.0, 0), L"3");
}

TEST_F(DoubleText, MinusZeroNeverAppears)
{
    for (int decimals = 0; decimals <= 9; ++decimals)
    {
        EXPECT_EQ(Text(-0.0, decimals)[0], L'0') << decimals;
        EXPECT_EQ(Text(-0.4 * pow(10.0, -decimals), decimals)[0], L'0') << decimals;
    }
}

TEST_F(DoubleText, DecimalsAreLimitedToNine)
{
    EXPECT_EQ(Text(1.0, 12), L"1.000000000");
    EXPECT_EQ(Text(0.123456789, 9), L"0.123456789");
    EXPECT_EQ(Text(2.5, -3), L"3");
}

TEST_F(DoubleText, GroupedUsesTheLocaleAndPlainDoesNot)
{
    EXPECT_EQ(Text(1234567.125, 2, TRUE), L"1,234,567.13");
    ScopedNumberLocale german(tq::test::German());
    EXPECT_EQ(Text(1234567.125, 2, TRUE), L"1.234.567,13");
    EXPECT_EQ(Text(1234567.125, 2, FALSE), L"1234567.13");
    EXPECT_EQ(Text(-0.75, 1, TRUE), L"-0,8");
}

TEST_F(DoubleText, BoundedFormGivesNothingWhenTheTextDoesNotFit)
{
    wchar_t buffer[16];
    EXPECT_EQ(TqDoubleToTextN(buffer, 5, 12.345, 2, FALSE), 0);
    EXPECT_STREQ(buffer, L"");
    EXPECT_EQ(TqDoubleToTextN(buffer, 6, 12.345, 2, FALSE), 5);
    EXPECT_STREQ(buffer, L"12.35");
    EXPECT_EQ(TqDoubleToTextN(buffer, 8, 1234.5, 2, TRUE), 0);
}

} // namespace
