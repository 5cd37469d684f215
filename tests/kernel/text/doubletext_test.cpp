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

// Half a unit of the last place is added to the binary value as it stands, and the fraction is
// then cut: a value whose binary form lies just below a half rounds down.
TEST_F(DoubleText, RoundsTheBinaryValueHalfAwayFromZero)
{
    const struct
    {
        double value;
        int decimals;
        const wchar_t* text;
    } cases[] = {
        {1234.5678, 2, L"1234.57"},
        {-1234.5678, 2, L"-1234.57"},
        {0.5, 0, L"1"},
        {-0.5, 0, L"-1"},
        {2.5, 0, L"3"},
        {9.9999, 3, L"10.000"},
        {1.05, 3, L"1.050"},
        {0.001, 3, L"0.001"},
        {3.0, 0, L"3"},
        {12.345, 2, L"12.35"},
        {0.045, 2, L"0.05"},
        // Stored as 1.149999..., 2.67499..., 1.00499...: below the half.
        {1.15, 1, L"1.1"},
        {2.675, 2, L"2.67"},
        {-2.675, 2, L"-2.67"},
        {1.005, 2, L"1.00"},
        // Exact in binary, but the added half is not, and the cut fraction falls short.
        {1234567.125, 2, L"1234567.12"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Text(c.value, c.decimals), c.text) << c.value << " " << c.decimals;
}

TEST_F(DoubleText, MagnitudesBeyond64BitsSaturate)
{
    EXPECT_EQ(Text(1e300, 2), L"18446744073709551615.00");
    EXPECT_EQ(Text(-1e20, 0), L"-18446744073709551615");
    EXPECT_EQ(Text(1e19, 1), L"10000000000000000000.0");
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
    EXPECT_EQ(Text(1234567.378, 2, TRUE), L"1,234,567.38");
    ScopedNumberLocale german(tq::test::German());
    EXPECT_EQ(Text(1234567.378, 2, TRUE), L"1.234.567,38");
    EXPECT_EQ(Text(1234567.378, 2, FALSE), L"1234567.38");
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
