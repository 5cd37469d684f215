// Tests of the decimal parsers: the token scanner, grouping, saturation and the Ex rules.
#include "tqnumtext.h"

#include "testlocales.h"

#include <gtest/gtest.h>

#include <limits.h>
#include <string>

namespace {

using tq::text::ScopedNumberLocale;

class NumberParse : public testing::Test
{
protected:
    ScopedNumberLocale m_locale{tq::test::English()};
    const wchar_t* m_end = nullptr;
};

TEST_F(NumberParse, StopsAtTheFirstCharacterThatIsNoPartOfTheNumber)
{
    const wchar_t* text = L"  42xyz";
    EXPECT_EQ(TqTextToLongToken(text, &m_end), 42);
    EXPECT_EQ(m_end, text + 4);
    text = L"-17 dB";
    EXPECT_EQ(TqTextToLongToken(text, &m_end), -17);
    EXPECT_EQ(m_end, text + 3);
    EXPECT_EQ(TqTextToLongLongToken(L"1,234,567,890,123", nullptr), 1234567890123LL);
    // The decimal point ends an integer's digits but not the token.
    text = L"12.9s";
    EXPECT_EQ(TqTextToLongToken(text, &m_end), 12);
    EXPECT_EQ(m_end, text + 4);
}

TEST_F(NumberParse, UnsignedFormsReadNothingBehindASign)
{
    EXPECT_EQ(TqTextToDWordToken(L"-5", nullptr), 0u);
    EXPECT_EQ(TqTextToDWordToken(L".5", nullptr), 0u);
    EXPECT_EQ(TqTextToDWordLongToken(L"-5", nullptr), 0u);
    EXPECT_EQ(TqTextToDWordToken(L"\t4,000,000,000", nullptr), 4000000000u);
}

TEST_F(NumberParse, ValuesBeyondTheTypeSaturate)
{
    EXPECT_EQ(TqTextToDWordToken(L"99999999999", nullptr), UINT_MAX);
    EXPECT_EQ(TqTextToLongToken(L"2147483648", nullptr), LONG_MAX);
    EXPECT_EQ(TqTextToLongToken(L"-2147483648", nullptr), LONG_MIN);
    EXPECT_EQ(TqTextToLongToken(L"-99999999999", nullptr), LONG_MIN);
    EXPECT_EQ(TqTextToLongLongToken(L"-9223372036854775808", nullptr), LLONG_MIN);
    EXPECT_EQ(TqTextToDWordLongToken(L"18446744073709551616", nullptr), ULLONG_MAX);
}

TEST_F(NumberParse, OnlySixtyThreeCharactersAreKeptButAllAreRead)
{
    const std::wstring text = L"1" + std::wstring(70, L'0') + L"x";
    EXPECT_EQ(TqTextToDWordLongToken(text.c_str(), &m_end), ULLONG_MAX);
    EXPECT_EQ(m_end, text.c_str() + 71);
    EXPECT_DOUBLE_EQ(TqTextToDoubleToken(text.c_str(), nullptr, FALSE), 1e62);
}

TEST_F(NumberParse, GermanGroupingAndDecimals)
{
    ScopedNumberLocale german(tq::test::German());
    EXPECT_EQ(TqTextToLongToken(L"1.234.567", nullptr), 1234567);
    EXPECT_EQ(TqTextToLongToken(L"1,5", nullptr), 1);
    EXPECT_DOUBLE_EQ(TqTextToDoubleToken(L"1.234,5", nullptr, TRUE), 1234.5);
    EXPECT_DOUBLE_EQ(TqTextToDoubleToken(L"-0,25", nullptr, TRUE), -0.25);
    // Without the locale "," is grouping and "." the point, whatever the user's settings.
    EXPECT_DOUBLE_EQ(TqTextToDoubleToken(L"1,234.5", nullptr, FALSE), 1234.5);
}

TEST_F(NumberParse, TheLocalesOwnSignAndAPlainMinusBothRead)
{
    auto locale = tq::test::English();
    locale.Get(tq::text::LocaleItem::NegativeSign) = tq::test::Text(L"\x2212");
    ScopedNumberLocale minus(locale);
    EXPECT_EQ(TqTextToLongToken(L"\x2212"
                                L"12",
                                nullptr),
              -12);
    EXPECT_EQ(TqTextToLongToken(L"-12", nullptr), -12);
}

TEST_F(NumberParse, DoublesWithAndWithoutLocale)
{
    const wchar_t* text = L" 1,234.5e3";
    EXPECT_DOUBLE_EQ(TqTextToDoubleToken(text, &m_end, TRUE), 1234.5);
    EXPECT_EQ(m_end, text + 8);
    EXPECT_DOUBLE_EQ(TqTextToDoubleToken(L"-.5", nullptr, FALSE), -0.5);
    EXPECT_DOUBLE_EQ(TqTextToDoubleToken(L"", nullptr, TRUE), 0.0);
    EXPECT_DOUBLE_EQ(TqTextToDoubleToken(nullptr, &m_end, TRUE), 0.0);
    EXPECT_EQ(m_end, nullptr);
}

TEST_F(NumberParse, ExFormsTakeTheDefaultOnlyForUnreadableText)
{
    EXPECT_EQ(TqTextToLongTokenEx(L"abc", 5, 0, 10, &m_end), 5);
    EXPECT_EQ(TqTextToLongTokenEx(L"0", 5, 0, 10, nullptr), 0);
    EXPECT_EQ(TqTextToLongTokenEx(L"0 ", 5, 0, 10, nullptr), 0);
    EXPECT_EQ(TqTextToLongTokenEx(L"", 5, 0, 10, nullptr), 0);
    // A zero followed by something else was not a number either.
    EXPECT_EQ(TqTextToLongTokenEx(L"0abc", 5, 0, 10, nullptr), 5);
    EXPECT_EQ(TqTextToDWordTokenEx(L"?", 7, 0, 100, nullptr), 7u);
    EXPECT_EQ(TqTextToDWordLongTokenEx(L"x", 8, 0, 100, nullptr), 8u);
    EXPECT_EQ(TqTextToLongLongTokenEx(L"x", -9, -100, 100, nullptr), -9);
    EXPECT_DOUBLE_EQ(TqTextToDoubleTokenEx(L"x", 1.5, 0.0, 2.0, nullptr, TRUE), 1.5);
    EXPECT_DOUBLE_EQ(TqTextToDoubleTokenEx(L"0.0", 1.5, 0.0, 2.0, nullptr, TRUE), 0.0);
}

TEST_F(NumberParse, ExFormsClampToTheirLimits)
{
    EXPECT_EQ(TqTextToLongTokenEx(L"100", 5, 0, 10, nullptr), 10);
    EXPECT_EQ(TqTextToLongTokenEx(L"-3", 5, 0, 10, nullptr), 0);
    // The default is clamped as well.
    EXPECT_EQ(TqTextToLongTokenEx(L"abc", 50, 0, 10, nullptr), 10);
    EXPECT_EQ(TqTextToDWordTokenEx(L"1", 0, 2, 9, nullptr), 2u);
    EXPECT_DOUBLE_EQ(TqTextToDoubleTokenEx(L"-7.5", 0.0, -1.0, 1.0, nullptr, FALSE), -1.0);
}

} // namespace
