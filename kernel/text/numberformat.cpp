// Locale formatting of digit texts: grouping and decimal separators through GetNumberFormatW.
#include "tqnumtext.h"

#include "numberlocale.h"

#include <string.h>

namespace tq::text {
namespace {

enum class Shape
{
    Grouped,        // thousands separators, no decimals
    Decimal,        // the text's decimals, no grouping
    GroupedDecimal, // both
};

bool IsDigit(wchar_t c)
{
    return c >= L'0' && c <= L'9';
}

// The number inside a text such as "  -1,234.50 dB": where it starts and ends, its digits in the
// plain form GetNumberFormatW reads (without sign or grouping), and its count of decimals.
struct NumberSpan
{
    const wchar_t* begin = nullptr;
    const wchar_t* end = nullptr;
    bool negative = false;
    bool hasDigits = false;
    int decimals = 0;
    wchar_t digits[80] = {};
};

NumberSpan FindNumber(const wchar_t* text)
{
    NumberSpan span;
    const wchar_t* c = text;
    while (*c && !IsDigit(*c) && *c != L'-' && *c != L'.')
        ++c;
    span.begin = c;
    if (*c == L'-')
    {
        span.negative = true;
        ++c;
    }
    int length = 0;
    bool inFraction = false;
    const int limit = static_cast<int>(sizeof(span.digits) / sizeof(wchar_t)) - 1;
    for (;; ++c)
    {
        if (IsDigit(*c))
        {
            span.hasDigits = true;
            if (length < limit) span.digits[length++] = *c;
            if (inFraction) ++span.decimals;
        }
        else if (*c == L'.' && !inFraction)
        {
            inFraction = true;
            if (length < limit) span.digits[length++] = L'.';
        }
        else if (*c != L',' || inFraction || !IsDigit(c[1]))
        {
            // Grouping commas in the input are read over; anything else ends the number.
            break;
        }
    }
    span.digits[length] = L'\0';
    span.end = c;
    return span;
}

int Format(const wchar_t* text, wchar_t* buffer, int capacity, Shape shape, int decimals)
{
    if (!buffer || capacity < 1) return 0;
    buffer[0] = L'\0';
    if (!text) return 0;

    const NumberSpan span = FindNumber(text);
    const int prefixLength = static_cast<int>(span.begin - text);
    // msvcrt writes infinities and NaNs as "1.#INF00": no number to localise.
    if (!span.hasDigits || *span.end == L'#')
    {
        const int length = lstrlenW(text);
        if (length >= capacity) return 0;
        memcpy(buffer, text, (length + 1) * sizeof(wchar_t));
        return length;
    }

    const NumberLocale locale = CurrentNumberLocale();
    const LocaleText& thousand = locale.Get(LocaleItem::Thousand);
    const LocaleText& decimal = locale.Get(LocaleItem::Decimal);
    wchar_t thousandText[8];
    wchar_t decimalText[8];
    memcpy(thousandText, thousand.text, sizeof(thousandText));
    memcpy(decimalText, decimal.text, sizeof(decimalText));

    NUMBERFMTW format = {};
    format.LeadingZero = locale.leadingZero;
    format.lpThousandSep = thousandText;
    format.lpDecimalSep = decimalText;
    format.NegativeOrder = 1;
    switch (shape)
    {
    case Shape::Grouped:
        format.NumDigits = 0;
        format.Grouping = locale.grouping;
        format.lpDecimalSep = const_cast<wchar_t*>(L"");
        break;
    case Shape::Decimal:
        format.NumDigits = span.decimals;
        format.Grouping = 0;
        break;
    case Shape::GroupedDecimal:
        format.NumDigits = decimals >= 0 ? decimals : span.decimals;
        format.Grouping = locale.grouping;
        break;
    }

    // The magnitude is formatted and the sign put in front by hand: the system always writes a
    // plain "-", whatever sign the locale uses.
    wchar_t number[256];
    const int numberChars = GetNumberFormatW(LOCALE_USER_DEFAULT, 0, span.digits, &format, number,
                                             static_cast<int>(sizeof(number) / sizeof(wchar_t)));
    if (numberChars <= 0) return 0;
    const int numberLength = numberChars - 1;
    const int signLength = span.negative ? 1 : 0;
    const int suffixLength = lstrlenW(span.end);
    const int total = prefixLength + signLength + numberLength + suffixLength;
    if (total >= capacity) return 0;

    wchar_t* out = buffer;
    memcpy(out, text, prefixLength * sizeof(wchar_t));
    out += prefixLength;
    if (span.negative) *out++ = L'-';
    memcpy(out, number, numberLength * sizeof(wchar_t));
    out += numberLength;
    memcpy(out, span.end, (suffixLength + 1) * sizeof(wchar_t));
    return total;
}

} // namespace
} // namespace tq::text

using tq::text::Shape;

TQKERNEL_API int TqFormatNumber(const wchar_t* text, wchar_t* buffer, int capacity)
{
    return tq::text::Format(text, buffer, capacity, Shape::Grouped, 0);
}

TQKERNEL_API int TqFormatDecimalNumber(const wchar_t* text, wchar_t* buffer, int capacity)
{
    return tq::text::Format(text, buffer, capacity, Shape::Decimal, 0);
}

TQKERNEL_API int TqFormatGroupDecimalNumber(const wchar_t* text, wchar_t* buffer, int capacity,
                                            int decimals)
{
    return tq::text::Format(text, buffer, capacity, Shape::GroupedDecimal, decimals);
}
