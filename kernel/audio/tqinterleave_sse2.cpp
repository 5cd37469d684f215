// SSE2 interleavers into 16-bit from 32-bit integers, singles and unpacked 24-bit words, and the
// de-interleaver from 16-bit pairs to singles. Built
// with SSE2 code generation, so nothing here may be reached without the lookup's processor check.
#include "tqinterleave_sse2.h"

#include <emmintrin.h>
#include <stdint.h>

#include "tqinterleave.h"

namespace tq::audio {
namespace {

// Four frames as doubles, each register one left and right pair, in frame order.
struct FourFrames
{
    __m128d f0, f1, f2, f3;
};

inline FourFrames WidenWords(const int32_t* left, const int32_t* right)
{
    const __m128i l = _mm_loadu_si128(reinterpret_cast<const __m128i*>(left));
    const __m128i r = _mm_loadu_si128(reinterpret_cast<const __m128i*>(right));
    const __m128i lo = _mm_unpacklo_epi32(l, r);
    const __m128i hi = _mm_unpackhi_epi32(l, r);
    return {_mm_cvtepi32_pd(lo), _mm_cvtepi32_pd(_mm_srli_si128(lo, 8)), _mm_cvtepi32_pd(hi),
            _mm_cvtepi32_pd(_mm_srli_si128(hi, 8))};
}

// Scales the four frames, converts them by the control word's rounding and stores the eight
// samples saturated to 16 bits.
inline void StoreScaled(int16_t* d, const FourFrames& v, __m128d factor)
{
    const __m128i a = _mm_unpacklo_epi64(_mm_cvtpd_epi32(_mm_mul_pd(v.f0, factor)),
                                         _mm_cvtpd_epi32(_mm_mul_pd(v.f1, factor)));
    const __m128i b = _mm_unpacklo_epi64(_mm_cvtpd_epi32(_mm_mul_pd(v.f2, factor)),
                                         _mm_cvtpd_epi32(_mm_mul_pd(v.f3, factor)));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm_packs_epi32(a, b));
}

template <class Sample, FourFrames (*Widen)(const Sample*, const Sample*)>
void InterleaveGroups(void* dst, const void* srcLeft, const void* srcRight, long frames,
                      double factor)
{
    auto* d = static_cast<int16_t*>(dst);
    auto* l = static_cast<const Sample*>(srcLeft);
    auto* r = static_cast<const Sample*>(srcRight);
    const __m128d k = _mm_set1_pd(factor);
    for (long groups = frames / 4; groups > 0; --groups, d += 8, l += 4, r += 4)
        StoreScaled(d, Widen(l, r), k);
}

} // namespace

// Scaling a single by 32768 is exact, so clamping and converting in single rounds where the rule
// does, at twice the width of doubles. Only the upper bound needs a clamp: beyond the lower one
// the conversion gives a negative value (the integer-indefinite one far out) that saturates to
// -32768, the bound. A NaN becomes 0, the low 16 bits of its integer under the rule.
void InterleaveFloat32ToPcm16Sse2(void* dst, const void* srcLeft, const void* srcRight, long frames)
{
    auto* d = static_cast<int16_t*>(dst);
    auto* l = static_cast<const float*>(srcLeft);
    auto* r = static_cast<const float*>(srcRight);
    const __m128 scale = _mm_set1_ps(32768.0f);
    const __m128 highest = _mm_set1_ps(32767.0f);
    auto convert = [&](__m128 pairs) {
        const __m128 x = _mm_mul_ps(pairs, scale);
        // The NaN-passing operand order, then NaN lanes cleared.
        return _mm_cvtps_epi32(_mm_and_ps(_mm_min_ps(highest, x), _mm_cmpord_ps(x, x)));
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

// The unit of the source times the 16-bit scale: both powers of two, so one exact factor.
void InterleavePcm32ToPcm16Sse2(void* dst, const void* srcLeft, const void* srcRight, long frames)
{
    InterleaveGroups<int32_t, WidenWords>(dst, srcLeft, srcRight, frames,
                                          4.656612873077393e-10 * 32768.0);
}

// The word is taken whole, without holding it to 24 bits: saturation takes care of the range.
void InterleaveUnpacked24ToPcm16Sse2(void* dst, const void* srcLeft, const void* srcRight,
                                     long frames)
{
    InterleaveGroups<int32_t, WidenWords>(dst, srcLeft, srcRight, frames,
                                          1.1920928955078125e-7 * 32768.0);
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
