// Doubles to text with a fixed number of decimals, by integer arithmetic on the rounded value.
#include "tqnumtext.h"

#include <math.h>
#include <string.h>

namespace tq::text {
namespace {

constexpr int kMaxDecimals = 9;
constexpr ULONGLONG kPowersOfTen[kMaxDecimals + 1] = {
    1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000, 1000000000};
// 2^64 as a double: magnitudes from here on do not fit a 64-bit integer.
constexpr double kIntegerLimit = 18446744073709551616.0;

int WriteDouble(wchar_t* buffer, int capacity, double value, int decimals, BOOL grouped)
{
    if (!buffer || capacity < 1) return 0;
    buffer[0] = L'\0';
    if (decimals < 0) decimals = 0;
    if (decimals > kMaxDecimals) decimals = kMaxDecimals;
    if (isnan(value)) value = 0.0;

    // Half a unit of the last place is added to the value counted in those units; splitting it
    // into parts first would let binary rounding of the fraction turn 1234567.125 into .12.
    const ULONGLONG scale = kPowersOfTen[decimals];
    const double scaled = fabs(value) * static_cast<double>(scale) + 0.5;
    ULONGLONG integer = ~0ull;
    ULONGLONG fraction = 0;
    if (scaled < kIntegerLimit)
    {
        const ULONGLONG units = static_cast<ULONGLONG>(scaled);
        integer = units / scale;
        fraction = units % scale;
    }
    else if (fabs(value) < kIntegerLimit)
    {
        integer = static_cast<ULONGLONG>(fabs(value) + 0.5);
    }

    // "-0" never appears: the sign needs a digit that is not zero.
    wchar_t text[48];
    wchar_t* out = text;
    if (value < 0 && (integer != 0 || fraction != 0)) *out++ = L'-';
    out += TqDWordLongToText(integer, out, FALSE);
    if (decimals > 0)
    {
        // The added power of ten keeps the fraction's leading zeros; its "1" becomes the point.
        TqDWordLongToText(fraction + scale, out, FALSE);
        *out = L'.';
        out += decimals + 1;
    }
    *out = L'\0';

    if (grouped) return TqFormatGroupDecimalNumber(text, buffer, capacity, decimals);
    const int length = static_cast<int>(out - text);
    if (length >= capacity) return 0;
    memcpy(buffer, text, (length + 1) * sizeof(wchar_t));
    return length;
}

} // namespace
} // namespace tq::text

TQKERNEL_API int TqDoubleToText(wchar_t* buffer, double value, int decimals, BOOL grouped)
{
    return tq::text::WriteDouble(buffer, 0x7FFFFFFF, value, decimals, grouped);
}

TQKERNEL_API int TqDoubleToTextN(wchar_t* buffer, int capacity, double value, int decimals,
                                 BOOL grouped)
{
    return tq::text::WriteDouble(buffer, capacity, value, decimals, grouped);
}
