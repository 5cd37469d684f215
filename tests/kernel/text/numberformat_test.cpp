// Tests of the locale formatting of digit texts under hand-made locales.
#include "tqnumtext.h"

#include "testlocales.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using tq::test::English;
using tq::test::German;
using tq::test::Indian;
using tq::text::ScopedNumberLocale;

enum class Kind
{
    Number,
    Decimal,
    GroupDecimal,
};

std::wstring Format(Kind kind, const wchar_t* text, int decimals = -1, int capacity = 64)
{
    wchar_t buffer[64] = L"untouched";
    int length = 0;
    switch (kind)
    {
    case Kind::Number:
        length = TqFormatNumber(text, buffer, capacity);
        break;
    case Kind::Decimal:
        length = TqFormatDecimalNumber(text, buffer, capacity);
        break;
    case Kind::GroupDecimal:
        length = TqFormatGroupDecimalNumber(text, buffer, capacity, decimals);
        break;
    }
    EXPECT_EQ(static_cast<size_t>(length), wcslen(buffer)) << text;
    return buffer;
}

struct FormatCase
{
    Kind kind;
    const wchar_t* text;
    int decimals;
    const wchar_t* english;
    const wchar_t* german;
    const wchar_t* indian;
};

TEST(FormatNumber, UnderThreeLocales)
{
    const FormatCase cases[] = {
        {Kind::Number, L"1234567", 0, L"1,234,567", L"1.234.567", L"12,34,567"},
        {Kind::Number, L"-1234", 0, L"-1,234", L"-1.234", L"-1,234"},
        {Kind::Number, L"999", 0, L"999", L"999", L"999"},
        {Kind::Number, L"0", 0, L"0", L"0", L"0"},
        // Prefix and suffix stay around the number.
        {Kind::Number, L"  1234 B", 0, L"  1,234 B", L"  1.234 B", L"  1,234 B"},
        {Kind::Number, L"abc", 0, L"abc", L"abc", L"abc"},
        {Kind::GroupDecimal, L"-1.#INF00", 0, L"-1.#INF00", L"-1.#INF00", L"-1.#INF00"},
        {Kind::Number, L"", 0, L"", L"", L""},
        {Kind::Decimal, L"1234567.25", 0, L"1234567.25", L"1234567,25", L"1234567.25"},
        {Kind::Decimal, L"1.250", 0, L"1.250", L"1,250", L"1.250"},
        {Kind::Decimal, L"-7", 0, L"-7", L"-7", L"-7"},
        {Kind::Decimal, L".5", 0, L"0.5", L"0,5", L"0.5"},
        {Kind::GroupDecimal, L"1234567.891", 2, L"1,234,567.89", L"1.234.567,89", L"12,34,567.89"},
        {Kind::GroupDecimal, L"1234567.891", -1, L"1,234,567.891", L"1.234.567,891",
         L"12,34,567.891"},
        {Kind::GroupDecimal, L"1234567.891", -2, L"1,234,567.891", L"1.234.567,891",
         L"12,34,567.891"},
        {Kind::GroupDecimal, L"1234", 2, L"1,234.00", L"1.234,00", L"1,234.00"},
        // Grouping commas in the input are read over.
        {Kind::GroupDecimal, L"1,234.5", -1, L"1,234.5", L"1.234,5", L"1,234.5"},
    };
    for (const FormatCase& c : cases)
    {
        {
            ScopedNumberLocale locale(English());
            EXPECT_EQ(Format(c.kind, c.text, c.decimals), c.english) << c.text;
        }
        {
            ScopedNumberLocale locale(German());
            EXPECT_EQ(Format(c.kind, c.text, c.decimals), c.german) << c.text;
        }
        {
            ScopedNumberLocale locale(Indian());
            EXPECT_EQ(Format(c.kind, c.text, c.decimals), c.indian) << c.text;
        }
    }
}

TEST(FormatNumber, NegativeSignIsAlwaysAPlainMinus)
{
    auto locale = English();
    locale.Get(tq::text::LocaleItem::NegativeSign) = tq::test::Text(L"\x2212");
    ScopedNumberLocale minus(locale);
    EXPECT_EQ(Format(Kind::Number, L"-1234"), L"-1,234");
}

TEST(FormatNumber, LeadingZeroFollowsTheLocale)
{
    auto locale = English();
    locale.leadingZero = 0;
    ScopedNumberLocale bare(locale);
    EXPECT_EQ(Format(Kind::Decimal, L"0.5"), L".5");
    EXPECT_EQ(Format(Kind::GroupDecimal, L"-0.25", 2), L"-.25");
}

TEST(FormatNumber, CapacityCountsTheTerminator)
{
    ScopedNumberLocale locale(English());
    EXPECT_EQ(Format(Kind::Number, L"1234567", 0, 10), L"1,234,567");
    EXPECT_EQ(Format(Kind::Number, L"1234567", 0, 9), L"");
    EXPECT_EQ(Format(Kind::Number, L"ab", 0, 2), L"");
    EXPECT_EQ(TqFormatNumber(L"1", nullptr, 8), 0);
    wchar_t buffer[4] = L"xyz";
    EXPECT_EQ(TqFormatNumber(nullptr, buffer, 4), 0);
    EXPECT_STREQ(buffer, L"");
}

} // namespace
