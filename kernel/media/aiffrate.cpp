// The 80-bit extended sample rate of AIFF, both ways.
#include "iff.h"

namespace {

constexpr double kWordStep = 1.52587890625e-5;   // 2^-16
constexpr double kTopWordStep = 3.0517578125e-5; // 2^-15
constexpr double kRateCeiling = 384000.0;

} // namespace

TQKERNEL_API DWORD aiff_ConvertRate(WORD exponent, const WORD* mantissa)
{
    if (exponent & 0x8000) return 44100;
    if (!mantissa) return 0;
    const int e = static_cast<int>(exponent & 0x7FFF) - 16383;
    double t = mantissa[2] + mantissa[3] * kWordStep;
    t = (mantissa[1] + t * kWordStep) * kWordStep;
    double f = ((mantissa[0] & 0x7FFF) + t) * kTopWordStep;
    if (mantissa[0] & 0x8000) f += 1.0;
    // Stopping past the ceiling keeps an absurd exponent from overflowing the result.
    for (int i = 0; i < e && f <= kRateCeiling; ++i)
        f *= 2.0;
    return static_cast<DWORD>(f);
}

TQKERNEL_API void aiff_CreateRate(DWORD rate, WORD* exponent, WORD* mantissa)
{
    if (!exponent || !mantissa) return;
    double x = rate;
    WORD count = 0;
    while (x >= 2.0)
    {
        x *= 0.5;
        ++count;
    }
    *exponent = static_cast<WORD>(16383 + count);
    WORD top = 0;
    if (x >= 1.0)
    {
        x -= 1.0;
        top = 0x8000;
    }
    x *= 32768.0;
    mantissa[0] = static_cast<WORD>(static_cast<WORD>(x) | top);
    x -= static_cast<WORD>(x);
    for (int i = 1; i < 4; ++i)
    {
        x *= 65536.0;
        mantissa[i] = static_cast<WORD>(x);
        x -= mantissa[i];
    }
}
