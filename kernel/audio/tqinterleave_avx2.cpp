// The AVX2 interleavers into 16-bit from single, 32-bit and unpacked 24-bit planes. Built with
// AVX2 code generation, so nothing here may be reached without the lookup's processor check.
#include "tqinterleave_avx2.h"
#include "tqinterleave_sse2.h"

#include <immintrin.h>
#include <stdint.h>

namespace tq::audio {
namespace {

// Values held to the 16-bit range (NaNs cleared) rounded by the rule's constant, in single
// precision: the integer is in the sum's low mantissa bits, in any rounding mode.
inline __m256i RoundHeld(__m256 v)
{
    const __m256 constant = _mm256_set1_ps(12582912.0f);
    return _mm256_sub_epi32(_mm256_castps_si256(_mm256_add_ps(v, constant)),
                            _mm256_castps_si256(constant));
}

inline __m256 Hold16(__m256 v)
{
    // Operand order matters: the second operand comes back when either is a NaN.
    return _mm256_min_ps(_mm256_set1_ps(32767.0f), _mm256_max_ps(_mm256_set1_ps(-32768.0f), v));
}

// Eight words over 2 to the Shift, by the SSE2 form's cut: two fraction bits and a sticky bit
// keep what decides the rounding, exact as a single wherever it matters.
template <int Shift>
inline __m256i ScaleDownEight(__m256i x)
{
    const __m256i below = _mm256_and_si256(x, _mm256_set1_epi32((1 << (Shift - 2)) - 1));
    const __m256i sticky = _mm256_andnot_si256(_mm256_cmpeq_epi32(below, _mm256_setzero_si256()),
                                               _mm256_set1_epi32(1));
    const __m256i cut = _mm256_or_si256(_mm256_srai_epi32(x, Shift - 2), sticky);
    return RoundHeld(Hold16(_mm256_mul_ps(_mm256_cvtepi32_ps(cut), _mm256_set1_ps(0.25f))));
}

// Whole groups of four frames, eight a step where they last; the last group of four, if any,
// goes to the SSE2 form, which gives the same bits.
template <int Shift, void (*LastGroup)(void*, const void*, const void*, long)>
void InterleaveWords(void* dst, const void* srcLeft, const void* srcRight, long frames)
{
    auto* d = static_cast<int16_t*>(dst);
    auto* l = static_cast<const int32_t*>(srcLeft);
    auto* r = static_cast<const int32_t*>(srcRight);
    auto pairs = [](__m256i a, __m256i b) {
        const __m256i lo = ScaleDownEight<Shift>(_mm256_unpacklo_epi32(a, b));
        const __m256i hi = ScaleDownEight<Shift>(_mm256_unpackhi_epi32(a, b));
        return _mm256_packs_epi32(lo, hi);
    };
    long left = frames;
    for (; left >= 8; left -= 8, d += 16, l += 8, r += 8)
    {
        const __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(l));
        const __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(r));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), pairs(a, b));
    }
    LastGroup(d, l, r, left);
}

} // namespace

void InterleavePcm32ToPcm16Avx2(void* dst, const void* srcLeft, const void* srcRight, long frames)
{
    InterleaveWords<16, InterleavePcm32ToPcm16Sse2>(dst, srcLeft, srcRight, frames);
}

void InterleaveUnpacked24ToPcm16Avx2(void* dst, const void* srcLeft, const void* srcRight,
                                     long frames)
{
    InterleaveWords<8, InterleaveUnpacked24ToPcm16Sse2>(dst, srcLeft, srcRight, frames);
}

// Eight frames a step by the SSE2 form's steps: scaling by 32768 is exact, so holding singles to
// the 16-bit range and rounding them by adding 1.5 times 2 to the 23rd rounds where the rule
// does, in any mode; NaN lanes are cleared to 0. The unpack and pack work within each 128-bit
// half, which leaves the frames of the two halves in order: no lane crossing needed.
void InterleaveFloat32ToPcm16Avx2(void* dst, const void* srcLeft, const void* srcRight, long frames)
{
    auto* d = static_cast<int16_t*>(dst);
    auto* l = static_cast<const float*>(srcLeft);
    auto* r = static_cast<const float*>(srcRight);
    const __m256 scale = _mm256_set1_ps(32768.0f);
    auto convert = [&](__m256 pairs) {
        const __m256 x = _mm256_mul_ps(pairs, scale);
        return RoundHeld(_mm256_and_ps(Hold16(x), _mm256_cmp_ps(x, x, _CMP_ORD_Q)));
    };
    long left = frames;
    for (; left >= 8; left -= 8, d += 16, l += 8, r += 8)
    {
        const __m256 a = _mm256_loadu_ps(l);
        const __m256 b = _mm256_loadu_ps(r);
        const __m256i lo = convert(_mm256_unpacklo_ps(a, b));
        const __m256i hi = convert(_mm256_unpackhi_ps(a, b));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), _mm256_packs_epi32(lo, hi));
    }
    // The last whole group of four, if any.
    InterleaveFloat32ToPcm16Sse2(d, l, r, left);
}

} // namespace tq::audio
