// The AVX2 interleaver into 16-bit from single planes. Built with AVX2 code generation, so
// nothing here may be reached without the lookup's processor check.
#include "tqinterleave_avx2.h"

#include <immintrin.h>
#include <stdint.h>

namespace tq::audio {

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
    const __m256 lowest = _mm256_set1_ps(-32768.0f);
    const __m256 highest = _mm256_set1_ps(32767.0f);
    const __m256 constant = _mm256_set1_ps(12582912.0f);
    auto convert = [&](__m256 pairs) {
        const __m256 x = _mm256_mul_ps(pairs, scale);
        // The NaN-passing operand order, then NaN lanes cleared.
        const __m256 held = _mm256_and_ps(_mm256_min_ps(highest, _mm256_max_ps(lowest, x)),
                                          _mm256_cmp_ps(x, x, _CMP_ORD_Q));
        return _mm256_sub_epi32(_mm256_castps_si256(_mm256_add_ps(held, constant)),
                                _mm256_castps_si256(constant));
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
    if (left < 4) return;
    // The last whole group: the same steps on the low halves, the high ones zero.
    const __m256 a = _mm256_setr_m128(_mm_loadu_ps(l), _mm_setzero_ps());
    const __m256 b = _mm256_setr_m128(_mm_loadu_ps(r), _mm_setzero_ps());
    const __m256i lo = convert(_mm256_unpacklo_ps(a, b));
    const __m256i hi = convert(_mm256_unpackhi_ps(a, b));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d),
                     _mm256_castsi256_si128(_mm256_packs_epi32(lo, hi)));
}

} // namespace tq::audio
