// Doubles to text with a fixed number of decimals: integer and fraction part as integers.
#include "tqnumtext.h"

#include <float.h>
#include <math.h>
#include <string.h>

namespace tq::text {
namespace {

constexpr int kMaxDecimals = 9;
constexpr ULONGLONG kPowersOfTen[kMaxDecimals + 1] = {
    1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000, 1000000000};
constexpr double kHalfUnits[kMaxDecimals + 1] = {0.5,  0.05, 0.005, 0.0005, 0.00005,
                                                 5e-6, 5e-7, 5e-8,  5e-9,   5e-10};
// 2^64 as a double: magnitudes from here on do not fit a 64-bit integer.
constexpr double kIntegerLimit = 18446744073709551616.0;

// 32-bit code computes on the x87 unit, which MinGW's start-up leaves at 64-bit precision: the
// rounding sum would round twice and could print differently from 64-bit code. Double precision
// for the length of a conversion gives both bitnesses the same text.
#if defined(__i386__)
class DoublePrecision
{
public:
    DoublePrecision() : m_saved(_controlfp(0, 0)) { _controlfp(_PC_53, _MCW_PC); }
    ~DoublePrecision() { _controlfp(m_saved, _MCW_PC); }
    DoublePrecision(const DoublePrecision&) = delete;
    DoublePrecision& operator=(const DoublePrecision&) = delete;

private:
    unsigned int m_saved;
};
#else
// SSE2 arithmetic is double precision already.
struct DoublePrecision
{
};
#endif

int WriteDouble(wchar_t* buffer, int capacity, double value, int decimals, BOOL grouped)
{
    if (!buffer || capacity < 1) return 0;
    buffer[0] = L'\0';
    if (decimals < 0) decimals = 0;
    if (decimals > kMaxDecimals) decimals = kMaxDecimals;
    if (isnan(value)) value = 0.0;

    // The binary value is rounded as it stands: half a unit of the last place is added and the
    // fraction then cut, so 2.675, stored a little below the half, prints as 2.67. The added half
    // is binary too, and even an exact half can fall short (1234567.125 gives .12): intended, one
    // rule for every value and no decimal correction. The cut fraction stays below one unit, as a
    // value below 1 times the power of ten cannot round up to the power itself.
    [[maybe_unused]] DoublePrecision precision;
    const ULONGLONG scale = kPowersOfTen[decimals];
    const double rounded = fabs(value) + kHalfUnits[decimals];
    ULONGLONG integer = ~0ull;
    ULONGLONG fraction = 0;
    if (rounded < kIntegerLimit)
    {
        integer = static_cast<ULONGLONG>(rounded);
        fraction = static_cast<ULONGLONG>((rounded - static_cast<double>(integer)) *
                                          static_cast<double>(scale));
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
