// AVX2 variants of the copy functions from singles to 24-bit samples, packed in three bytes or
// unpacked in a 32-bit word. Built with AVX2 code generation, so nothing here may be reached
// without the lookup's processor check.
//
// The steps are those of the SSE2 rows at twice the width, so the results are the scalar rule's
// bits: where the product is exact in single precision (gain 1.0, or the unpacked row's single
// product) singles are clamped and converted in the caller's rounding mode, and a step that meets
// a NaN is left to the scalar row, the only one that reproduces a NaN's payload; otherwise the
// product is formed in double, clamped with a NaN passing untouched, and rounded by adding the
// rounding constant. Rounding toward zero takes the double path too: the constant makes every sum
// positive, so the rule then rounds down where the conversion would truncate. Loads and stores are
// unaligned and every step loads before it stores, walking forwards like the scalar row, so a copy
// in place works too.
#include "tqsamplecopy_avx2.h"

#include <immintrin.h>
#include <stdint.h>

#include "tqsamplecodec.h"
#include "tqsamplecopy.h"

namespace tq::audio {
namespace {

constexpr long kStep = 32; // samples of one step

struct SingleNarrowing
{
    __m256 gain = _mm256_set1_ps(1.0f);
    __m256 scale = _mm256_set1_ps(8388608.0f);
    __m256 lowest = _mm256_set1_ps(-8388608.0f);
    __m256 highest = _mm256_set1_ps(8388607.0f);
};

// Eight singles, times the gain in single when asked, to rounded integers; nan collects NaNs.
inline __m256i RoundEightSingle(const float* s, const SingleNarrowing& n, bool singleProduct,
                                __m256& nan)
{
    __m256 x = _mm256_loadu_ps(s);
    if (singleProduct) x = _mm256_mul_ps(x, n.gain);
    nan = _mm256_or_ps(nan, _mm256_cmp_ps(x, x, _CMP_UNORD_Q));
    // Operand order matters: the second operand comes back when either is a NaN.
    x = _mm256_min_ps(n.highest, _mm256_max_ps(n.lowest, _mm256_mul_ps(x, n.scale)));
    return _mm256_cvtps_epi32(x);
}

struct DoubleNarrowing
{
    __m256d factor;
    __m256d lowest = _mm256_set1_pd(-8388608.0);
    __m256d highest = _mm256_set1_pd(8388607.0);
    __m256d rounding = _mm256_set1_pd(kRoundingConstant);
    __m256i lowWords = _mm256_setr_epi32(0, 2, 4, 6, 0, 2, 4, 6);
    __m256i lowestWord = _mm256_set1_epi32(-8388608);
    __m256i highestWord = _mm256_set1_epi32(8388607);
};

// Four singles through double to rounded integers, in the low half.
inline __m256i RoundFourDouble(__m128 x, const DoubleNarrowing& n)
{
    __m256d v = _mm256_mul_pd(_mm256_cvtps_pd(x), n.factor);
    v = _mm256_add_pd(_mm256_min_pd(n.highest, _mm256_max_pd(n.lowest, v)), n.rounding);
    // The integers are the low words of the sums.
    return _mm256_permutevar8x32_epi32(_mm256_castpd_si256(v), n.lowWords);
}

// Four products of the unpacked row through double, without the hold: the rule stores the
// integer as it comes, a NaN's payload included.
inline __m256i RoundEightDoubleUnheld(__m256 x, const DoubleNarrowing& n)
{
    const __m256i lo = RoundFourDouble(_mm256_castps256_ps128(x), n);
    const __m256i hi = RoundFourDouble(_mm256_extractf128_ps(x, 1), n);
    return _mm256_permute2x128_si256(lo, hi, 0x20);
}

// Eight singles to rounded integers held to the 24-bit range (a NaN's payload lies outside).
inline __m256i RoundEightDouble(const float* s, const DoubleNarrowing& n)
{
    const __m256i lo = RoundFourDouble(_mm_loadu_ps(s), n);
    const __m256i hi = RoundFourDouble(_mm_loadu_ps(s + 4), n);
    const __m256i both = _mm256_permute2x128_si256(lo, hi, 0x20);
    return _mm256_min_epi32(n.highestWord, _mm256_max_epi32(n.lowestWord, both));
}

// Eight words of the 24-bit range as 24 bytes, stored with 8 more that the next store overwrites.
inline void StorePackedEight(Byte* d, __m256i v)
{
    const __m256i pack = _mm256_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1, 0,
                                          1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
    const __m256i join = _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7);
    const __m256i packed = _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(v, pack), join);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), packed);
}

inline bool RoundsTowardZero()
{
    return (_mm_getcsr() & _MM_ROUND_MASK) == _MM_ROUND_TOWARD_ZERO;
}

// A step writes 8 bytes past its samples, so it runs only while three more samples follow.
constexpr long kPackedSlack = 3;

void NarrowToPackedAtUnity(Byte*& d, const float*& s, long& left)
{
    const SingleNarrowing n;
    const TQAUDIO_COPYFUNC scalar = ScalarCopyFunction(TQSAMPLE_PCM24, TQSAMPLE_FLOAT32);
    for (; left >= kStep + kPackedSlack; left -= kStep, s += kStep, d += 3 * kStep)
    {
        __m256 nan = _mm256_setzero_ps();
        const __m256i a = RoundEightSingle(s, n, false, nan);
        const __m256i b = RoundEightSingle(s + 8, n, false, nan);
        const __m256i c = RoundEightSingle(s + 16, n, false, nan);
        const __m256i e = RoundEightSingle(s + 24, n, false, nan);
        if (_mm256_movemask_ps(nan))
        {
            scalar(d, s, kStep, 1.0f);
            continue;
        }
        StorePackedEight(d, a);
        StorePackedEight(d + 24, b);
        StorePackedEight(d + 48, c);
        StorePackedEight(d + 72, e);
    }
    for (; left >= 8 + kPackedSlack; left -= 8, s += 8, d += 24)
    {
        __m256 nan = _mm256_setzero_ps();
        const __m256i a = RoundEightSingle(s, n, false, nan);
        if (_mm256_movemask_ps(nan))
            scalar(d, s, 8, 1.0f);
        else
            StorePackedEight(d, a);
    }
}

void NarrowToPacked(Byte*& d, const float*& s, long& left, float gain)
{
    DoubleNarrowing n;
    n.factor = _mm256_set1_pd(static_cast<double>(gain) * 8388608.0);
    for (; left >= kStep + kPackedSlack; left -= kStep, s += kStep, d += 3 * kStep)
    {
        const __m256i a = RoundEightDouble(s, n);
        const __m256i b = RoundEightDouble(s + 8, n);
        const __m256i c = RoundEightDouble(s + 16, n);
        const __m256i e = RoundEightDouble(s + 24, n);
        StorePackedEight(d, a);
        StorePackedEight(d + 24, b);
        StorePackedEight(d + 48, c);
        StorePackedEight(d + 72, e);
    }
    for (; left >= 8 + kPackedSlack; left -= 8, s += 8, d += 24)
        StorePackedEight(d, RoundEightDouble(s, n));
}

void NarrowToUnpackedThroughDouble(int32_t*& d, const float*& s, long& left, float gain)
{
    DoubleNarrowing n;
    n.factor = _mm256_set1_pd(8388608.0);
    const __m256 g = _mm256_set1_ps(gain);
    for (; left >= 8; left -= 8, s += 8, d += 8)
    {
        const __m256i v = RoundEightDoubleUnheld(_mm256_mul_ps(_mm256_loadu_ps(s), g), n);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), v);
    }
}

template <bool SingleProduct>
void NarrowToUnpacked(int32_t*& d, const float*& s, long& left, float gain)
{
    SingleNarrowing n;
    n.gain = _mm256_set1_ps(gain);
    const TQAUDIO_COPYFUNC scalar = ScalarCopyFunction(TQSAMPLE_UNPACKED24, TQSAMPLE_FLOAT32);
    auto put = [](int32_t* p, __m256i v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); };
    for (; left >= kStep; left -= kStep, s += kStep, d += kStep)
    {
        __m256 nan = _mm256_setzero_ps();
        const __m256i a = RoundEightSingle(s, n, SingleProduct, nan);
        const __m256i b = RoundEightSingle(s + 8, n, SingleProduct, nan);
        const __m256i c = RoundEightSingle(s + 16, n, SingleProduct, nan);
        const __m256i e = RoundEightSingle(s + 24, n, SingleProduct, nan);
        if (_mm256_movemask_ps(nan))
        {
            scalar(d, s, kStep, gain);
            continue;
        }
        put(d, a);
        put(d + 8, b);
        put(d + 16, c);
        put(d + 24, e);
    }
    for (; left >= 8; left -= 8, s += 8, d += 8)
    {
        __m256 nan = _mm256_setzero_ps();
        const __m256i a = RoundEightSingle(s, n, SingleProduct, nan);
        if (_mm256_movemask_ps(nan))
            scalar(d, s, 8, gain);
        else
            put(d, a);
    }
}

} // namespace

void CopyFloat32ToPcm24Avx2(void* dst, const void* src, long count, float gain)
{
    if (count <= 0) return;
    auto* d = static_cast<Byte*>(dst);
    auto* s = static_cast<const float*>(src);
    long left = count;
    if (gain == 1.0f && !RoundsTowardZero())
        NarrowToPackedAtUnity(d, s, left);
    else
        NarrowToPacked(d, s, left, gain);
    ScalarCopyFunction(TQSAMPLE_PCM24, TQSAMPLE_FLOAT32)(d, s, left, gain);
}

// This row forms gain times the sample in single precision before it scales.
void CopyFloat32ToUnpacked24Avx2(void* dst, const void* src, long count, float gain)
{
    if (count <= 0) return;
    auto* d = static_cast<int32_t*>(dst);
    auto* s = static_cast<const float*>(src);
    long left = count;
    // At gain 1.0 the single product is the sample itself.
    if (RoundsTowardZero())
        NarrowToUnpackedThroughDouble(d, s, left, gain);
    else if (gain == 1.0f)
        NarrowToUnpacked<false>(d, s, left, gain);
    else
        NarrowToUnpacked<true>(d, s, left, gain);
    ScalarCopyFunction(TQSAMPLE_UNPACKED24, TQSAMPLE_FLOAT32)(d, s, left, gain);
}

} // namespace tq::audio
