// Tests of the locale formatting of digit texts under hand-made locales.
#include "tqnumtext.h"

#include "testlocales.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using tq::test::English;
using tq::test::German;
using tq::test::GroupedInThrees;
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


std::wstring FormatLong(Kind kind, const std::wstring& text, int decimals = -1)
{
    std::wstring buffer(2048, L'#');
    const int capacity = static_cast<int>(buffer.size());
    int length = 0;
    switch (kind)
    {
    case Kind::Number:
        length = TqFormatNumber(text.c_str(), buffer.data(), capacity);
        break;
    case Kind::Decimal:
        length = TqFormatDecimalNumber(text.c_str(), buffer.data(), capacity);
        break;
    case Kind::GroupDecimal:
        length = TqFormatGroupDecimalNumber(text.c_str(), buffer.data(), capacity, decimals);
        break;
    }
    buffer.resize(wcslen(buffer.c_str()));
    EXPECT_EQ(static_cast<size_t>(length), buffer.size());
    return buffer;
}

TEST(FormatNumber, LongDigitTextsFollowTheLocale)
{
    // Long enough to be grouped without the platform's help.
    const std::wstring number = L"12345678901234567890123456789012345678901234567890";
    {
        ScopedNumberLocale locale(German());
        std::wstring expected = GroupedInThrees(number);
        for (wchar_t& c : expected)
            if (c == L',') c = L'.';
        EXPECT_EQ(FormatLong(Kind::GroupDecimal, number + L".25"), expected + L",25");
    }
    {
        ScopedNumberLocale locale(Indian());
        EXPECT_EQ(FormatLong(Kind::Number, number),
                  L"1,23,45,67,89,01,23,45,67,89,01,23,45,67,89,01,23,45,67,89,01,23,45,67,890");
    }
    {
        auto bare = English();
        bare.leadingZero = 0;
        ScopedNumberLocale locale(bare);
        EXPECT_EQ(FormatLong(Kind::GroupDecimal, L"0.5", 60), L".5" + std::wstring(59, L'0'));
    }
}

TEST(FormatNumber, LongDigitTextsKeepEveryDigit)
{
    ScopedNumberLocale locale(English());
    std::wstring digits;
    for (int i = 0; i < 400; ++i)
        digits += static_cast<wchar_t>(L'1' + i % 9);
    for (const size_t length : {79u, 80u, 81u, 100u, 255u, 256u, 400u})
    {
        const std::wstring number = digits.substr(0, length);
        EXPECT_EQ(FormatLong(Kind::Number, number), GroupedInThrees(number)) << length;
        EXPECT_EQ(FormatLong(Kind::Number, L"-" + number + L" dB"),
                  L"-" + GroupedInThrees(number) + L" dB")
            << length;
        const std::wstring fraction = L"0." + number;
        EXPECT_EQ(FormatLong(Kind::Decimal, fraction), fraction) << length;
        EXPECT_EQ(FormatLong(Kind::GroupDecimal, fraction), fraction) << length;
        const std::wstring mixed = number + L"." + number;
        EXPECT_EQ(FormatLong(Kind::GroupDecimal, mixed), GroupedInThrees(mixed)) << length;
        // Rounding on the first dropped digit carries through every nine.
        EXPECT_EQ(FormatLong(Kind::GroupDecimal, std::wstring(length, L'9') + L".95", 1),
                  GroupedInThrees(L"1" + std::wstring(length, L'0') + L".0"))
            << length;
        // Decimals asked for beyond the text's own are zeros.
        EXPECT_EQ(FormatLong(Kind::GroupDecimal, number, 3), GroupedInThrees(number) + L".000")
            << length;
    }
}

} // namespace
