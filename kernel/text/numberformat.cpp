// Locale formatting of digit texts: grouping and decimal separators through GetNumberFormatW.
#include "tqnumtext.h"

#include "numberlocale.h"
#include "scratchtext.h"

#include <string.h>

namespace tq::text {
namespace {

enum class Shape
{
    Grouped,        // thousands separators, no decimals
    Decimal,        // the text's decimals, no grouping
    GroupedDecimal, // both
};

// Everyday numbers, grouped or not, fit these on the stack.
constexpr size_t kLocalDigits = 64;
constexpr size_t kLocalNumber = 256;
// The longest separator a locale text holds.
constexpr size_t kMaxSeparator = sizeof(LocaleText::text) / sizeof(wchar_t) - 1;

bool IsDigit(wchar_t c)
{
    return c >= L'0' && c <= L'9';
}

// The number inside a text such as "  -1,234.50 dB": where it starts and ends, how long its digit
// text is, and its count of decimals.
struct NumberSpan
{
    const wchar_t* begin = nullptr;
    const wchar_t* end = nullptr;
    bool negative = false;
    bool hasDigits = false;
    int decimals = 0;
    size_t length = 0;
};

// Finds the number and writes its digits, in the plain form GetNumberFormatW reads (without sign
// or grouping), to digits, which has room for as many characters as the text plus one.
NumberSpan FindNumber(const wchar_t* text, wchar_t* digits)
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
    size_t length = 0;
    bool inFraction = false;
    for (;; ++c)
    {
        if (IsDigit(*c))
        {
            span.hasDigits = true;
            digits[length++] = *c;
            if (inFraction) ++span.decimals;
        }
        else if (*c == L'.' && !inFraction)
        {
            inFraction = true;
            digits[length++] = L'.';
        }
        else if (*c != L',' || inFraction || !IsDigit(c[1]))
        {
            // Grouping commas in the input are read over; anything else ends the number.
            break;
        }
    }
    digits[length] = L'\0';
    span.length = length;
    span.end = c;
    return span;
}

// The group sizes of a NUMBERFMT, from the decimal point leftwards: 32 is a group of 3, then
// groups of 2 for ever; a last 0 ends the grouping, so 30 makes one group of 3 and no more.
class GroupSizes
{
public:
    explicit GroupSizes(UINT grouping)
    {
        for (; grouping && m_count < kMaxGroups; grouping /= 10)
            m_sizes[m_count++] = grouping % 10;
        m_next = m_count;
    }
    // The size of the next group; 0 when no more separators come.
    UINT Next()
    {
        if (m_next > 0) return m_sizes[--m_next];
        return m_count > 0 ? m_sizes[0] : 0;
    }

private:
    static constexpr int kMaxGroups = 10;
    UINT m_sizes[kMaxGroups] = {};
    int m_count = 0;
    int m_next = 0;
};

// What GetNumberFormatW makes of a plain digit text, for texts it cannot take: under Wine it
// builds its result in a fixed buffer of 256 characters and overruns it. The decimals are rounded
// half up on the first dropped digit, as there. Writes the number into out, which has room for
// room characters, and returns its length, or 0 when the memory for the digits cannot be had.
int FormatLongNumber(const wchar_t* digits, const NUMBERFMTW& format, wchar_t* out, size_t room)
{
    const wchar_t* point = wcschr(digits, L'.');
    const wchar_t* integer = digits;
    const wchar_t* integerEnd = point ? point : digits + wcslen(digits);
    while (integer != integerEnd && *integer == L'0')
        ++integer;
    const wchar_t* fraction = point ? point + 1 : integerEnd;
    const size_t fractionLength = wcslen(fraction);
    const size_t integerLength = static_cast<size_t>(integerEnd - integer);
    const size_t places = format.NumDigits;

    // The kept digits, behind a "0" that a carry out of the rounding can turn into a "1".
    ScratchText<kLocalNumber> kept;
    wchar_t* k = kept.Reserve(1 + integerLength + places);
    if (!k) return 0;
    k[0] = L'0';
    wmemcpy(k + 1, integer, integerLength);
    const size_t copied = places < fractionLength ? places : fractionLength;
    wmemcpy(k + 1 + integerLength, fraction, copied);
    wmemset(k + 1 + integerLength + copied, L'0', places - copied);
    if (places < fractionLength && fraction[places] >= L'5')
    {
        wchar_t* d = k + integerLength + places;
        for (; *d == L'9'; --d)
            *d = L'0';
        ++*d;
    }
    const wchar_t* first = k[0] == L'0' ? k + 1 : k;
    const size_t wholeDigits = integerLength + (first == k ? 1 : 0);

    // Written from the right, then moved to the front.
    wchar_t* const end = out + room;
    wchar_t* w = end;
    const size_t decimalLength = wcslen(format.lpDecimalSep);
    const size_t thousandLength = wcslen(format.lpThousandSep);
    if (places > 0)
    {
        w -= places;
        wmemcpy(w, first + wholeDigits, places);
        w -= decimalLength;
        wmemcpy(w, format.lpDecimalSep, decimalLength);
    }
    GroupSizes groups(format.Grouping);
    UINT group = groups.Next();
    UINT inGroup = 0;
    for (size_t i = wholeDigits; i-- > 0;)
    {
        if (group != 0 && inGroup == group)
        {
            w -= thousandLength;
            wmemcpy(w, format.lpThousandSep, thousandLength);
            group = groups.Next();
            inGroup = 0;
        }
        *--w = first[i];
        ++inGroup;
    }
    if (wholeDigits == 0 && (format.LeadingZero || places == 0)) *--w = L'0';
    const size_t length = static_cast<size_t>(end - w);
    wmemmove(out, w, length);
    return static_cast<int>(length);
}

int Format(const wchar_t* text, wchar_t* buffer, int capacity, Shape shape, int decimals)
{
    if (!buffer || capacity < 1) return 0;
    buffer[0] = L'\0';
    if (!text) return 0;

    const size_t textLength = wcslen(text);
    ScratchText<kLocalDigits> digits;
    if (!digits.Reserve(textLength + 1)) return 0;
    const NumberSpan span = FindNumber(text, digits.Get());
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

    // More decimals than the buffer holds cannot fit, and must not size the number's buffer.
    if (format.NumDigits >= static_cast<UINT>(capacity)) return 0;
    // At most a separator behind every digit, the decimals asked for, a leading zero and a digit
    // carried out of the rounding.
    const size_t numberRoom = span.length * (1 + kMaxSeparator) + format.NumDigits + 3;
    ScratchText<kLocalNumber> number;
    if (numberRoom > 0x7FFFFFFF || !number.Reserve(numberRoom)) return 0;

    // The magnitude is formatted and the sign put in front by hand: the system always writes a
    // plain "-", whatever sign the locale uses.
    int numberLength;
    if (numberRoom <= kLocalNumber)
    {
        numberLength = GetNumberFormatW(LOCALE_USER_DEFAULT, 0, digits.Get(), &format, number.Get(),
                                        static_cast<int>(numberRoom)) -
                       1;
    }
    else
    {
        numberLength = FormatLongNumber(digits.Get(), format, number.Get(), numberRoom);
    }
    if (numberLength <= 0) return 0;
    const int signLength = span.negative ? 1 : 0;
    const int suffixLength = lstrlenW(span.end);
    const int total = prefixLength + signLength + numberLength + suffixLength;
    if (total >= capacity) return 0;

    wchar_t* out = buffer;
    memcpy(out, text, prefixLength * sizeof(wchar_t));
    out += prefixLength;
    if (span.negative) *out++ = L'-';
    memcpy(out, number.Get(), numberLength * sizeof(wchar_t));
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
