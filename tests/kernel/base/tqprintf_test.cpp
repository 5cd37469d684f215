// Tests of the format scanner: introducers, every conversion, and the bounded forms' status rules.
#include "tqprintf.h"

#include "kernel/text/testlocales.h"

#include <gtest/gtest.h>

#include <limits.h>
#include <stdint.h>
#include <string>

namespace {

using tq::test::English;
using tq::test::German;
using tq::test::GroupedInThrees;
using tq::text::LocaleItem;
using tq::text::ScopedNumberLocale;

constexpr HRESULT kFormatOverflow = HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER);

// TqPrintF into a large buffer; the returned length must match the text.
std::wstring Print(const wchar_t* format, ...)
{
    wchar_t buffer[4096];
    va_list args;
    va_start(args, format);
    const int length = TqVPrintF(buffer, format, args);
    va_end(args);
    EXPECT_EQ(static_cast<size_t>(length), wcslen(buffer)) << format;
    return buffer;
}

class PrintF : public testing::Test
{
protected:
    ScopedNumberLocale m_locale{English()};
};

TEST_F(PrintF, IntroducersEscapeThemselvesAndStandAloneAtTheEnd)
{
    EXPECT_EQ(Print(L"$$"), L"$");
    EXPECT_EQ(Print(L"100%%"), L"100%");
    EXPECT_EQ(Print(L"100%"), L"100%");
    EXPECT_EQ(Print(L"cost: $$5"), L"cost: $5");
    EXPECT_EQ(Print(L""), L"");
}

TEST_F(PrintF, ConversionWithoutTerminatorIsCopiedOut)
{
    // 'y' ends no conversion: the first 260 characters are collected, given up and copied.
    const std::wstring format = L"%" + std::wstring(300, L'y');
    EXPECT_EQ(Print(format.c_str()), format);
    EXPECT_EQ(Print(L"%5"), L"%5");
}

TEST_F(PrintF, BareIntegersGroupOnlyWithDollar)
{
    EXPECT_EQ(Print(L"%d", 1234567), L"1234567");
    EXPECT_EQ(Print(L"$d", 1234567), L"1,234,567");
    EXPECT_EQ(Print(L"$i", -1234567), L"-1,234,567");
    EXPECT_EQ(Print(L"$u", 4000000000u), L"4,000,000,000");
    EXPECT_EQ(Print(L"%u", 4000000000u), L"4000000000");
    EXPECT_EQ(Print(L"$d", INT_MIN), L"-2,147,483,648");
    EXPECT_EQ(Print(L"$d", 0), L"0");
    ScopedNumberLocale german(German());
    EXPECT_EQ(Print(L"$d", 1234567), L"1.234.567");
}

TEST_F(PrintF, IntegersWithFlagsGoThroughCFormatting)
{
    EXPECT_EQ(Print(L"[%5d]", 42), L"[   42]");
    EXPECT_EQ(Print(L"[$8d]", 1234), L"[    1,234]");
    EXPECT_EQ(Print(L"[%-6d]", -7), L"[-7    ]");
    EXPECT_EQ(Print(L"%x %X %o", 255, 255, 8), L"ff FF 10");
    EXPECT_EQ(Print(L"%08X", 0xBEEF), L"0000BEEF");
    // Only d, i and u are grouped.
    EXPECT_EQ(Print(L"$x", 0x12345678), L"12345678");
    EXPECT_EQ(Print(L"$+d", 1234), L"+1,234");
}

TEST_F(PrintF, IntegerSizesTakeTheRightArgument)
{
    EXPECT_EQ(Print(L"%I64d|%d", 1234567890123LL, 5), L"1234567890123|5");
    EXPECT_EQ(Print(L"$I64d|%d", -1234567890123LL, 6), L"-1,234,567,890,123|6");
    EXPECT_EQ(Print(L"%I64u", ULLONG_MAX), L"18446744073709551615");
    EXPECT_EQ(Print(L"%I32d|%d", -1, 7), L"-1|7");
    EXPECT_EQ(Print(L"%lld|%d", LLONG_MIN, 8), L"-9223372036854775808|8");
    // Other "I" forms are pointer-sized.
    const std::wstring expected = sizeof(void*) == 8 ? L"18446744073709551615|9" : L"4294967295|9";
    EXPECT_EQ(Print(L"%Iu|%d", SIZE_MAX, 9), expected);
}

TEST_F(PrintF, FloatsUseTheLocaleOnlyWithDollar)
{
    EXPECT_EQ(Print(L"%.2f", 1234567.5), L"1234567.50");
    EXPECT_EQ(Print(L"$.2f", 1234567.5), L"1,234,567.50");
    EXPECT_EQ(Print(L"$.1f", -0.75), L"-0.8");
    EXPECT_EQ(Print(L"$g", 1234.5), L"1234.5");
    ScopedNumberLocale german(German());
    EXPECT_EQ(Print(L"%.2f", 1234567.5), L"1234567.50");
    EXPECT_EQ(Print(L"$.2f", 1234567.5), L"1.234.567,50");
    EXPECT_EQ(Print(L"$g", 1234.5), L"1234,5");
    // An exponent keeps the C form.
    EXPECT_EQ(Print(L"$g", 1.5e20).find(L"1.5e+"), 0u);
    EXPECT_EQ(Print(L"$.1e", 1234.5).find(L"1.2e+"), 0u);
}

TEST_F(PrintF, SeparatorConversions)
{
    ScopedNumberLocale german(German());
    EXPECT_EQ(Print(L"1%*5"), L"1,5");
    EXPECT_EQ(Print(L"a%,b"), L"a;b");
    EXPECT_EQ(Print(L"12%:30"), L"12:30");
    EXPECT_EQ(Print(L"$*"), L",");
}

TEST_F(PrintF, SmpteAndMusicSeparatorsConsumeTheirSelector)
{
    auto locale = English();
    locale.Get(LocaleItem::SmpteWhole) = tq::test::Text(L"W");
    locale.Get(LocaleItem::SmpteNonDrop) = tq::test::Text(L"N");
    locale.Get(LocaleItem::SmpteDrop) = tq::test::Text(L"D");
    locale.Get(LocaleItem::Measure) = tq::test::Text(L"M");
    locale.Get(LocaleItem::Beat) = tq::test::Text(L"B");
    ScopedNumberLocale custom(locale);
    EXPECT_EQ(Print(L"1%!:2%!.3%!,4"), L"1W2N3D4");
    EXPECT_EQ(Print(L"1%&:2%&.3"), L"1M2B3");
    // Any other selector gives nothing and stays in the text.
    EXPECT_EQ(Print(L"%!x"), L"x");
    EXPECT_EQ(Print(L"%&,"), L",");
    EXPECT_EQ(Print(L"a%!"), L"a");
}

TEST_F(PrintF, EmptySeparatorLeavesItsSelector)
{
    auto locale = English();
    locale.Get(LocaleItem::SmpteWhole) = tq::test::Text(L"");
    ScopedNumberLocale custom(locale);
    EXPECT_EQ(Print(L"%!:"), L":");
}

TEST_F(PrintF, DefaultSmpteSeparators)
{
    EXPECT_EQ(Print(L"%!:%!.%!,"), L":.,");
}

TEST_F(PrintF, CharactersAndStrings)
{
    EXPECT_EQ(Print(L"%c%c", L'A', L'z'), L"Az");
    EXPECT_EQ(Print(L"[%s]", L"wide"), L"[wide]");
    EXPECT_EQ(Print(L"[%-6s]", L"ab"), L"[ab    ]");
    EXPECT_EQ(Print(L"[%hs]", "narrow"), L"[narrow]");
    EXPECT_EQ(Print(L"%s=$d, %.1f%%", L"gain", 1000, 2.5), L"gain=1,000, 2.5%");
}

TEST_F(PrintF, UnboundedStringConversionStopsAt1024)
{
    const std::wstring text(2000, L'q');
    EXPECT_EQ(Print(L"%s!", text.c_str()), std::wstring(1023, L'q') + L"!");
}

TEST_F(PrintF, FixedPoint)
{
    EXPECT_EQ(Print(L"%.2z", 12345), L"123.45");
    EXPECT_EQ(Print(L"$.2z", 1234567), L"12,345.67");
    EXPECT_EQ(Print(L"%.2z", -5), L"-0.05");
    EXPECT_EQ(Print(L"%.3z", INT_MIN), L"-2147483.648");
    EXPECT_EQ(Print(L"%.12z", 5), L"0.000000000005");
    EXPECT_EQ(Print(L"%.1z|%d", 7, 8), L"0.7|8");
    // Without decimals, or with anything else before the "z", it is an integer.
    EXPECT_EQ(Print(L"%.0z", 12345), L"12345");
    EXPECT_EQ(Print(L"%.0z", 0), L"0");
    EXPECT_EQ(Print(L"$.0z", 1234567), L"1,234,567");
    EXPECT_EQ(Print(L"[%5z]", 42), L"[   42]");
    ScopedNumberLocale german(German());
    EXPECT_EQ(Print(L"%.2z", 1234567), L"12345,67");
    EXPECT_EQ(Print(L"$.2z", 1234567), L"12.345,67");
}

// What the C library makes of one conversion, to compare long results with.
template <class Value>
std::wstring CFormatted(const wchar_t* format, Value value)
{
    wchar_t buffer[2048];
    const int length = _snwprintf(buffer, 2048, format, value);
    EXPECT_GT(length, 0);
    return std::wstring(buffer, static_cast<size_t>(length));
}


TEST_F(PrintF, NumbersOfManyDigitsKeepEveryDigit)
{
    EXPECT_EQ(Print(L"$f", 1e100), GroupedInThrees(CFormatted(L"%f", 1e100)));
    EXPECT_EQ(Print(L"$.2f", -1e300), GroupedInThrees(CFormatted(L"%.2f", -1e300)));
    EXPECT_EQ(Print(L"$.120f", 0.5), CFormatted(L"%.120f", 0.5));
    EXPECT_EQ(Print(L"$.100g", 1.0 / 3.0), CFormatted(L"%.100g", 1.0 / 3.0));
    EXPECT_EQ(Print(L"$300d", 1234), std::wstring(296, L' ') + L"1,234");
    std::wstring digits;
    for (int i = 0; i < 100; ++i)
        digits += static_cast<wchar_t>(L'1' + i % 9);
    const std::wstring parenthesised = L"$(" + digits + L"." + digits.substr(0, 90) + L")";
    EXPECT_EQ(Print(parenthesised.c_str()), GroupedInThrees(digits + L"." + digits.substr(0, 90)));
    EXPECT_EQ(Print(L"%.80z", 12345), L"0." + std::wstring(75, L'0') + L"12345");
    EXPECT_EQ(Print(L"$.80z", -1234567), L"-0." + std::wstring(73, L'0') + L"1234567");
}

TEST_F(PrintF, CFormattingOfAnyLengthIsWrittenWhole)
{
    EXPECT_EQ(Print(L"<%f>", 1e300), L"<" + CFormatted(L"%f", 1e300) + L">");
    EXPECT_EQ(Print(L"%.300e", 1.5), CFormatted(L"%.300e", 1.5));
    EXPECT_EQ(Print(L"%300d|%d", -5, 6), std::wstring(298, L' ') + L"-5|6");
    EXPECT_EQ(Print(L"%400I64d", 1LL), std::wstring(399, L' ') + L"1");
}

TEST_F(PrintF, ParenthesisedNumbers)
{
    EXPECT_EQ(Print(L"$(1234.50)"), L"1,234.50");
    EXPECT_EQ(Print(L"$(-1234567)"), L"-1,234,567");
    EXPECT_EQ(Print(L"$(1,234.5)"), L"1,234.5");
    EXPECT_EQ(Print(L"$(.5)"), L"0.5");
    // Unfinished: copied as it stands, scanning goes on behind the digits.
    EXPECT_EQ(Print(L"$(12"), L"$(12");
    EXPECT_EQ(Print(L"$(12x)%d", 3), L"$(12x)3");
    ScopedNumberLocale german(German());
    EXPECT_EQ(Print(L"$(1234.50)"), L"1.234,50");
}

TEST_F(PrintF, UnknownAndUnfinishedTokensStayAsText)
{
    EXPECT_EQ(Print(L"$(NoSuchToken)!"), L"$(NoSuchToken)!");
    EXPECT_EQ(Print(L"$()"), L"$()");
    EXPECT_EQ(Print(L"x$(abc"), L"x$(abc");
    // A name of more than 260 characters is no token: the scan goes on behind the 260.
    const std::wstring name(300, L'n');
    const std::wstring format = L"$(" + name + L")%d";
    EXPECT_EQ(Print(format.c_str(), 4), L"$(" + name + L")4");
}

// TqCchPrintF with its status and out-length.
struct Bounded
{
    HRESULT status;
    std::wstring text;
    size_t length;
};

Bounded PrintN(size_t capacity, const wchar_t* format, ...)
{
    wchar_t buffer[1100];
    wmemset(buffer, L'#', 1100);
    Bounded result{};
    va_list args;
    va_start(args, format);
    result.status = TqNVPrintF(buffer, capacity, &result.length, format, args);
    va_end(args);
    result.text = buffer;
    EXPECT_EQ(result.length, result.text.size());
    EXPECT_LT(result.length, capacity);
    return result;
}

TEST_F(PrintF, BoundedPlainTextIsCutWithoutError)
{
    const Bounded r = PrintN(4, L"abcdef");
    EXPECT_EQ(r.status, S_OK);
    EXPECT_EQ(r.text, L"abc");
    EXPECT_EQ(PrintN(1, L"abc").text, L"");
    EXPECT_EQ(PrintN(7, L"abcdef").text, L"abcdef");
}

TEST_F(PrintF, BoundedCFormattingOverflowKeepsWhatFits)
{
    const Bounded s = PrintN(4, L"%s", L"abcdef");
    EXPECT_EQ(s.status, kFormatOverflow);
    EXPECT_EQ(s.text, L"abc");
    const Bounded x = PrintN(5, L"%6x", 0x123456);
    EXPECT_EQ(x.status, kFormatOverflow);
    EXPECT_EQ(x.text, L"1234");
    EXPECT_EQ(PrintN(7, L"%s", L"abcdef").status, S_OK);
}

TEST_F(PrintF, BoundedLocaleConversionThatDoesNotFitWritesNothing)
{
    const Bounded grouped = PrintN(9, L"n=$d", 1234567);
    EXPECT_EQ(grouped.status, TQ_E_BUFFERTOOSMALL);
    EXPECT_EQ(grouped.text, L"n=");
    EXPECT_EQ(PrintN(5, L"%d", 1234567).status, TQ_E_BUFFERTOOSMALL);
    EXPECT_EQ(PrintN(8, L"$.2f", 1234.5).status, TQ_E_BUFFERTOOSMALL);
    EXPECT_EQ(PrintN(7, L"%.2z", 123456).status, TQ_E_BUFFERTOOSMALL);
    EXPECT_EQ(PrintN(9, L"$(1234567)").status, TQ_E_BUFFERTOOSMALL);
    const Bounded exact = PrintN(10, L"$d", 1234567);
    EXPECT_EQ(exact.status, S_OK);
    EXPECT_EQ(exact.text, L"1,234,567");
}

TEST_F(PrintF, BoundedLongCFormattingIsCutAtTheCapacity)
{
    const std::wstring whole = CFormatted(L"%f", 1e300);
    const Bounded fits = PrintN(1000, L"%f", 1e300);
    EXPECT_EQ(fits.status, S_OK);
    EXPECT_EQ(fits.text, whole);
    const Bounded cut = PrintN(100, L"%f", 1e300);
    EXPECT_EQ(cut.status, kFormatOverflow);
    EXPECT_EQ(cut.text, whole.substr(0, 99));
    const Bounded padded = PrintN(1000, L"%300d", 7);
    EXPECT_EQ(padded.status, S_OK);
    EXPECT_EQ(padded.text, std::wstring(299, L' ') + L"7");
    // Through the locale formatter it fits whole or not at all.
    const Bounded grouped = PrintN(1000, L"$f", 1e300);
    EXPECT_EQ(grouped.status, S_OK);
    EXPECT_EQ(grouped.text, GroupedInThrees(whole));
    // However wide the format, a bounded form makes no more than fits. (32-bit Wine's C library
    // fails widths near a billion outright, so the width here is one both can format.)
    const Bounded wide = PrintN(16, L"%50000d", 5);
    EXPECT_EQ(wide.status, kFormatOverflow);
    EXPECT_EQ(wide.text, std::wstring(15, L' '));
    EXPECT_EQ(PrintN(16, L"$50000d", 5).status, TQ_E_BUFFERTOOSMALL);
    const Bounded refused = PrintN(200, L"x$f", 1e300);
    EXPECT_EQ(refused.status, TQ_E_BUFFERTOOSMALL);
    EXPECT_EQ(refused.text, L"x");
}

TEST_F(PrintF, FixedPointOfUpTo259Decimals)
{
    for (const int decimals : {244, 245, 250, 258, 259})
    {
        const std::wstring format = L"%." + std::to_wstring(decimals) + L"z";
        const std::wstring grouped = L"$." + std::to_wstring(decimals) + L"z";
        const std::wstring zeros(static_cast<size_t>(decimals - 5), L'0');
        EXPECT_EQ(Print(format.c_str(), 12345), L"0." + zeros + L"12345") << decimals;
        EXPECT_EQ(Print(grouped.c_str(), -12345), L"-0." + zeros + L"12345") << decimals;
        const Bounded bounded = PrintN(1000, format.c_str(), INT_MIN);
        EXPECT_EQ(bounded.status, S_OK) << decimals;
        EXPECT_EQ(bounded.text,
                  L"-0." + std::wstring(static_cast<size_t>(decimals - 10), L'0') + L"2147483648");
    }
}

TEST_F(PrintF, FixedPointBeyond259DecimalsIsRefused)
{
    const Bounded r = PrintN(1000, L"a%.260zb", 5);
    EXPECT_EQ(r.status, TQ_E_BUFFERTOOSMALL);
    EXPECT_EQ(r.text, L"ab");
    EXPECT_EQ(Print(L"a%.99999999999999999999999z|%d", 5, 6), L"a|6");
}

// The terminator a "%c" of 0 writes is no character of the text: the length never counts it.
TEST_F(PrintF, CharacterZeroAddsNothingInBothForms)
{
    EXPECT_EQ(Print(L"a%cb", 0), L"ab");
    const Bounded r = PrintN(16, L"a%cb", 0);
    EXPECT_EQ(r.status, S_OK);
    EXPECT_EQ(r.text, L"ab");
}

TEST_F(PrintF, BoundedStatusIsThatOfTheLastConversion)
{
    const Bounded cleared = PrintN(6, L"$d!%d", 1234567, 1);
    EXPECT_EQ(cleared.status, S_OK);
    EXPECT_EQ(cleared.text, L"!1");
    const Bounded failed = PrintN(8, L"%d$d", 1, 1234567890);
    EXPECT_EQ(failed.status, TQ_E_BUFFERTOOSMALL);
    EXPECT_EQ(failed.text, L"1");
}

TEST_F(PrintF, BoundedArgumentsAreChecked)
{
    wchar_t buffer[8] = L"keep";
    size_t length = 99;
    EXPECT_EQ(TqCchPrintF(buffer, 0x7FFFFFFF, &length, L"x"), E_INVALIDARG);
    EXPECT_EQ(length, 0u);
    EXPECT_STREQ(buffer, L"keep");
    EXPECT_EQ(TqCchPrintF(buffer, 0, nullptr, L"x"), E_INVALIDARG);
    EXPECT_EQ(TqCchPrintF(nullptr, 8, nullptr, L"x"), E_INVALIDARG);
    EXPECT_EQ(TqCchPrintF(buffer, 8, &length, nullptr), E_INVALIDARG);
    EXPECT_STREQ(buffer, L"");
    EXPECT_EQ(TqCchPrintF(buffer, 8, &length, L""), S_OK);
    EXPECT_EQ(length, 0u);
    EXPECT_EQ(TqPrintF(nullptr, L"x"), 0);
}

} // namespace
