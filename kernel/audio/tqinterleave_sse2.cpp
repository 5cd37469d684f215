// SSE2 interleavers into 16-bit from 32-bit integers, singles and unpacked 24-bit words, and the
// de-interleaver from 16-bit pairs to singles. Built
// with SSE2 code generation, so nothing here may be reached without the lookup's processor check.
#include "tqinterleave_sse2.h"

#include <emmintrin.h>
#include <stdint.h>

#include "tqinterleave.h"

namespace tq::audio {
namespace {

// Values already held to the 16-bit range, rounded as the rule rounds: 1.5 times 2 to the 23rd
// is added in the caller's mode and the integer read from the sum's low mantissa bits. A
// conversion instruction would agree except when rounding toward zero: every sum is positive,
// so the rule then rounds negative values down.
inline __m128i RoundHeld(__m128 v)
{
    const __m128 constant = _mm_set1_ps(12582912.0f);
    return _mm_sub_epi32(_mm_castps_si128(_mm_add_ps(v, constant)), _mm_castps_si128(constant));
}

inline __m128 Hold16(__m128 v)
{
    // Operand order matters: the second operand comes back when either is a NaN.
    return _mm_min_ps(_mm_set1_ps(32767.0f), _mm_max_ps(_mm_set1_ps(-32768.0f), v));
}

// Four 32-bit words over 2 to the Shift, rounded by the rule. Which way any mode rounds depends
// only on the quotient's integer part, its half bit and whether anything lies below: two
// fraction bits with a sticky bit in the lower keep exactly that, and the quotient so cut is a
// single with two fraction bits, exact wherever it lies within 16 bits. Beyond them inexactness
// does not matter: the hold gives the bound.
template <int Shift>
inline __m128i ScaleDownFour(__m128i x)
{
    const __m128i below = _mm_and_si128(x, _mm_set1_epi32((1 << (Shift - 2)) - 1));
    const __m128i sticky =
        _mm_andnot_si128(_mm_cmpeq_epi32(below, _mm_setzero_si128()), _mm_set1_epi32(1));
    const __m128i cut = _mm_or_si128(_mm_srai_epi32(x, Shift - 2), sticky);
    return RoundHeld(Hold16(_mm_mul_ps(_mm_cvtepi32_ps(cut), _mm_set1_ps(0.25f))));
}

template <int Shift>
void InterleaveWordGroups(void* dst, const void* srcLeft, const void* srcRight, long frames)
{
    auto* d = static_cast<int16_t*>(dst);
    auto* l = static_cast<const int32_t*>(srcLeft);
    auto* r = static_cast<const int32_t*>(srcRight);
    for (long groups = frames / 4; groups > 0; --groups, d += 8, l += 4, r += 4)
    {
        const __m128i left = _mm_loadu_si128(reinterpret_cast<const __m128i*>(l));
        const __m128i right = _mm_loadu_si128(reinterpret_cast<const __m128i*>(r));
        const __m128i lo = ScaleDownFour<Shift>(_mm_unpacklo_epi32(left, right));
        const __m128i hi = ScaleDownFour<Shift>(_mm_unpackhi_epi32(left, right));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm_packs_epi32(lo, hi));
    }
}

} // namespace

// Scaling a single by 32768 is exact, so holding and rounding singles rounds where the rule
// does, at twice the width of doubles. A NaN becomes 0, the low 16 bits of its integer under the
// rule.
void InterleaveFloat32ToPcm16Sse2(void* dst, const void* srcLeft, const void* srcRight, long frames)
{
    auto* d = static_cast<int16_t*>(dst);
    auto* l = static_cast<const float*>(srcLeft);
    auto* r = static_cast<const float*>(srcRight);
    const __m128 scale = _mm_set1_ps(32768.0f);
    auto convert = [&](__m128 pairs) {
        const __m128 x = _mm_mul_ps(pairs, scale);
        return RoundHeld(_mm_and_ps(Hold16(x), _mm_cmpord_ps(x, x)));
    };
    for (long groups = frames / 4; groups > 0; --groups, d += 8, l += 4, r += 4)
    {
        const __m128 left = _mm_loadu_ps(l);
        const __m128 right = _mm_loadu_ps(r);
        const __m128i lo = convert(_mm_unpacklo_ps(left, right));
        const __m128i hi = convert(_mm_unpackhi_ps(left, right));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm_packs_epi32(lo, hi));
    }
}

// The unit of the source times the 16-bit scale is 2 to the -16th.
void InterleavePcm32ToPcm16Sse2(void* dst, const void* srcLeft, const void* srcRight, long frames)
{
    InterleaveWordGroups<16>(dst, srcLeft, srcRight, frames);
}

// The word is taken whole, without holding it to 24 bits: the hold to 16 bits covers the range.
// The scale is 2 to the -8th.
void InterleaveUnpacked24ToPcm16Sse2(void* dst, const void* srcLeft, const void* srcRight,
                                     long frames)
{
    InterleaveWordGroups<8>(dst, srcLeft, srcRight, frames);
}

// Each 32-bit lane holds a left sample low and a right one high; shifts with sign split them.
void DeInterleavePcm16ToFloat32Sse2(void* dstLeft, void* dstRight, const void* src, long frames)
{
    auto* l = static_cast<float*>(dstLeft);
    auto* r = static_cast<float*>(dstRight);
    auto* s = static_cast<const int16_t*>(src);
    const __m128 unit = _mm_set1_ps(3.0517578125e-5f);
    auto left = [&](__m128i pairs) {
        return _mm_mul_ps(_mm_cvtepi32_ps(_mm_srai_epi32(_mm_slli_epi32(pairs, 16), 16)), unit);
    };
    auto right = [&](__m128i pairs) {
        return _mm_mul_ps(_mm_cvtepi32_ps(_mm_srai_epi32(pairs, 16)), unit);
    };
    long rest = frames;
    for (; rest >= 8; rest -= 8, s += 16, l += 8, r += 8)
    {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + 8));
        _mm_storeu_ps(l, left(a));
        _mm_storeu_ps(l + 4, left(b));
        _mm_storeu_ps(r, right(a));
        _mm_storeu_ps(r + 4, right(b));
    }
    if (rest > 0) ScalarStereoDeInterleaveFunction(TQSAMPLE_FLOAT32, TQSAMPLE_PCM16)(l, r, s, rest);
}

} // namespace tq::audio
