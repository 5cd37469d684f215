// SSE2 variants of the copy functions between singles and 24-bit samples, packed in three bytes
// or unpacked in a 32-bit word, with SSSE3 forms of the packed rows. Built with SSE2 code
// generation (the SSSE3 functions with SSSE3), so nothing here may be reached without the
// lookup's processor check.
//
// They follow the scalar rule step for step, so the results are the same bits: the product is
// formed in double (in single first where the scalar row does that), clamped before rounding
// with a NaN passing the clamp untouched, and rounded by adding the rounding constant in the
// caller's rounding mode, the integer being the low word of the sum. The control word is left
// alone. Loads and stores are unaligned, and every step loads before it stores, walking in the
// direction the scalar row walks, so a copy in place works too.
#include "tqsamplecopy_sse2.h"

#include <emmintrin.h>
#include <tmmintrin.h>
#include <stdint.h>

#include "tqsamplecodec.h"
#include "tqsamplecopy.h"

namespace tq::audio {
namespace {

constexpr long kBlock = 16; // samples of one step

struct Narrowing
{
    __m128d factor;
    __m128d lowest;
    __m128d highest;
    __m128d rounding;
};

Narrowing MakeNarrowing(double factor)
{
    return {_mm_set1_pd(factor), _mm_set1_pd(-8388608.0), _mm_set1_pd(8388607.0),
            _mm_set1_pd(kRoundingConstant)};
}

// Two doubles clamped and rounded; the integers are in the low words of the result's lanes.
inline __m128d ClampRound(__m128d v, const Narrowing& n)
{
    // Operand order matters: the second operand comes back when either is a NaN.
    v = _mm_min_pd(n.highest, _mm_max_pd(n.lowest, v));
    return _mm_add_pd(v, n.rounding);
}

// Four singles to four rounded 32-bit integers.
inline __m128i RoundFour(__m128 x, const Narrowing& n)
{
    const __m128d lo = ClampRound(_mm_mul_pd(_mm_cvtps_pd(x), n.factor), n);
    const __m128d hi = ClampRound(_mm_mul_pd(_mm_cvtps_pd(_mm_movehl_ps(x, x)), n.factor), n);
    return _mm_castps_si128(
        _mm_shuffle_ps(_mm_castpd_ps(lo), _mm_castpd_ps(hi), _MM_SHUFFLE(2, 0, 2, 0)));
}

// Holds the words to the 24-bit range; only a NaN's payload can lie outside it.
inline __m128i HoldFour(__m128i v)
{
    const __m128i lowest = _mm_set1_epi32(-8388608);
    const __m128i highest = _mm_set1_epi32(8388607);
    const __m128i below = _mm_cmplt_epi32(v, lowest);
    v = _mm_or_si128(_mm_andnot_si128(below, v), _mm_and_si128(below, lowest));
    const __m128i above = _mm_cmpgt_epi32(v, highest);
    return _mm_or_si128(_mm_andnot_si128(above, v), _mm_and_si128(above, highest));
}

// Packs four words of the 24-bit range into the low 12 bytes, the rest zero.
inline __m128i PackFour(__m128i v)
{
    // In each 64-bit lane the odd word moves down next to the even one: 6 bytes a lane.
    const __m128i even = _mm_and_si128(v, _mm_set_epi32(0, 0xFFFFFF, 0, 0xFFFFFF));
    const __m128i odd =
        _mm_and_si128(_mm_srli_epi64(v, 8), _mm_set_epi32(0xFFFF, -16777216, 0xFFFF, -16777216));
    const __m128i lanes = _mm_or_si128(even, odd);
    const __m128i mask48 = _mm_set_epi32(0, 0, 0xFFFF, -1);
    return _mm_or_si128(_mm_and_si128(lanes, mask48), _mm_slli_si128(_mm_srli_si128(lanes, 8), 6));
}

// Four packed samples from the low 12 bytes of x, sign-extended to 32 bits.
inline __m128i UnpackFour(__m128i x)
{
    const __m128i lanes = _mm_unpacklo_epi64(x, _mm_srli_si128(x, 6));
    const __m128i first = _mm_and_si128(_mm_slli_epi64(lanes, 8), _mm_set_epi32(0, -256, 0, -256));
    const __m128i second =
        _mm_and_si128(_mm_slli_epi64(lanes, 16), _mm_set_epi32(-256, 0, -256, 0));
    return _mm_srai_epi32(_mm_or_si128(first, second), 8);
}

// Four 32-bit integers times the unit and gain, rounded to single. At gain 1.0 the factor is a
// power of two, so converting to single first and scaling there rounds once, at the same place.
struct Widening
{
    bool unity;
    __m128 unit;
    __m128d factor;
};

Widening MakeWidening(float gain)
{
    return {gain == 1.0f, _mm_set1_ps(1.1920928955078125e-7f),
            _mm_set1_pd(static_cast<double>(gain) * 1.1920928955078125e-7)};
}

inline __m128 WidenFour(__m128i v, const Widening& w)
{
    if (w.unity) return _mm_mul_ps(_mm_cvtepi32_ps(v), w.unit);
    const __m128d factor = w.factor;
    const __m128 lo = _mm_cvtpd_ps(_mm_mul_pd(_mm_cvtepi32_pd(v), factor));
    const __m128 hi = _mm_cvtpd_ps(_mm_mul_pd(_mm_cvtepi32_pd(_mm_srli_si128(v, 8)), factor));
    return _mm_movelh_ps(lo, hi);
}

// Where the product before rounding is exact in single precision (at gain 1.0, or after the
// single product of the unpacked row), clamping and converting singles rounds to the same
// integer in the same mode, at twice the width of the double path. A NaN's integer is its
// payload's low bits, which only the double path reproduces: a step that meets one is left to
// the scalar row. Toward zero is the exception: the rounding constant makes every sum positive,
// so the rule then rounds down, where the conversion would truncate; the double path serves
// that mode.
struct SingleNarrowing
{
    __m128 gain;
    __m128 scale;
    __m128 lowest;
    __m128 highest;
};

SingleNarrowing MakeSingleNarrowing(float gain)
{
    return {_mm_set1_ps(gain), _mm_set1_ps(8388608.0f), _mm_set1_ps(-8388608.0f),
            _mm_set1_ps(8388607.0f)};
}

// Four singles, times the gain in single when asked, to rounded integers; nan collects NaNs.
inline __m128i RoundFourSingle(const float* s, const SingleNarrowing& n, bool singleProduct,
                               __m128& nan)
{
    __m128 x = _mm_loadu_ps(s);
    if (singleProduct) x = _mm_mul_ps(x, n.gain);
    nan = _mm_or_ps(nan, _mm_cmpunord_ps(x, x));
    x = _mm_min_ps(n.highest, _mm_max_ps(n.lowest, _mm_mul_ps(x, n.scale)));
    return _mm_cvtps_epi32(x);
}

// Whether the caller rounds toward zero, where only the double path follows the rule.
inline bool RoundsTowardZero()
{
    return (_mm_getcsr() & _MM_ROUND_MASK) == _MM_ROUND_TOWARD_ZERO;
}

inline void StorePackedBlock(Byte* d, __m128i a, __m128i b, __m128i c, __m128i e)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm_or_si128(a, _mm_slli_si128(b, 12)));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 16),
                     _mm_or_si128(_mm_srli_si128(b, 4), _mm_slli_si128(c, 8)));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 32),
                     _mm_or_si128(_mm_srli_si128(c, 8), _mm_slli_si128(e, 4)));
}

void NarrowToPackedAtUnity(Byte* d, const float* s, long blocks)
{
    const SingleNarrowing n = MakeSingleNarrowing(1.0f);
    const TQAUDIO_COPYFUNC scalar = ScalarCopyFunction(TQSAMPLE_PCM24, TQSAMPLE_FLOAT32);
    for (; blocks > 0; --blocks, s += kBlock, d += 3 * kBlock)
    {
        __m128 nan = _mm_setzero_ps();
        const __m128i a = RoundFourSingle(s, n, false, nan);
        const __m128i b = RoundFourSingle(s + 4, n, false, nan);
        const __m128i c = RoundFourSingle(s + 8, n, false, nan);
        const __m128i e = RoundFourSingle(s + 12, n, false, nan);
        if (_mm_movemask_ps(nan))
            scalar(d, s, kBlock, 1.0f);
        else
            StorePackedBlock(d, PackFour(a), PackFour(b), PackFour(c), PackFour(e));
    }
}

template <bool SingleProduct>
void NarrowToUnpacked(int32_t* d, const float* s, long count, float gain)
{
    const SingleNarrowing n = MakeSingleNarrowing(gain);
    const TQAUDIO_COPYFUNC scalar = ScalarCopyFunction(TQSAMPLE_UNPACKED24, TQSAMPLE_FLOAT32);
    for (; count > 0; count -= 16, s += 16, d += 16)
    {
        __m128 nan = _mm_setzero_ps();
        const __m128i a = RoundFourSingle(s, n, SingleProduct, nan);
        const __m128i b = RoundFourSingle(s + 4, n, SingleProduct, nan);
        const __m128i c = RoundFourSingle(s + 8, n, SingleProduct, nan);
        const __m128i e = RoundFourSingle(s + 12, n, SingleProduct, nan);
        if (_mm_movemask_ps(nan))
        {
            scalar(d, s, 16, gain);
            continue;
        }
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d), a);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 4), b);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 8), c);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 12), e);
    }
}

// The unpacked row through double: the single product, then the rule on it.
void NarrowToUnpackedThroughDouble(int32_t* d, const float* s, long count, float gain)
{
    const Narrowing n = MakeNarrowing(8388608.0);
    const __m128 g = _mm_set1_ps(gain);
    for (; count > 0; count -= 4, s += 4, d += 4)
    {
        const __m128i v = RoundFour(_mm_mul_ps(_mm_loadu_ps(s), g), n);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d), v);
    }
}

void NarrowToPacked(Byte* d, const float* s, long blocks, const Narrowing& n)
{
    for (; blocks > 0; --blocks, s += kBlock, d += 3 * kBlock)
    {
        const __m128i a = PackFour(HoldFour(RoundFour(_mm_loadu_ps(s), n)));
        const __m128i b = PackFour(HoldFour(RoundFour(_mm_loadu_ps(s + 4), n)));
        const __m128i c = PackFour(HoldFour(RoundFour(_mm_loadu_ps(s + 8), n)));
        const __m128i e = PackFour(HoldFour(RoundFour(_mm_loadu_ps(s + 12), n)));
        StorePackedBlock(d, a, b, c, e);
    }
}

} // namespace

void CopyFloat32ToPcm24Sse2(void* dst, const void* src, long count, float gain)
{
    if (count <= 0) return;
    const long blocks = count / kBlock;
    auto* d = static_cast<Byte*>(dst);
    auto* s = static_cast<const float*>(src);
    if (gain == 1.0f && !RoundsTowardZero())
        NarrowToPackedAtUnity(d, s, blocks);
    else
        NarrowToPacked(d, s, blocks, MakeNarrowing(static_cast<double>(gain) * 8388608.0));
    const long done = blocks * kBlock;
    ScalarCopyFunction(TQSAMPLE_PCM24, TQSAMPLE_FLOAT32)(d + 3 * done, s + done, count - done,
                                                         gain);
}

// This row forms gain times the sample in single precision before it scales.
void CopyFloat32ToUnpacked24Sse2(void* dst, const void* src, long count, float gain)
{
    if (count <= 0) return;
    auto* d = static_cast<int32_t*>(dst);
    auto* s = static_cast<const float*>(src);
    const long done = count / 16 * 16;
    // At gain 1.0 the single product is the sample itself.
    if (RoundsTowardZero())
        NarrowToUnpackedThroughDouble(d, s, done, gain);
    else if (gain == 1.0f)
        NarrowToUnpacked<false>(d, s, done, gain);
    else
        NarrowToUnpacked<true>(d, s, done, gain);
    ScalarCopyFunction(TQSAMPLE_UNPACKED24, TQSAMPLE_FLOAT32)(d + done, s + done, count - done,
                                                              gain);
}

// Widening, so it runs backwards like the scalar row: the tail first, then blocks downwards.
void CopyPcm24ToFloat32Sse2(void* dst, const void* src, long count, float gain)
{
    if (count <= 0) return;
    const long blocks = count / kBlock;
    const long done = blocks * kBlock;
    auto* d = static_cast<float*>(dst);
    auto* s = static_cast<const Byte*>(src);
    ScalarCopyFunction(TQSAMPLE_FLOAT32, TQSAMPLE_PCM24)(d + done, s + 3 * done, count - done,
                                                         gain);
    const Widening widening = MakeWidening(gain);
    for (long i = done - kBlock; i >= 0; i -= kBlock)
    {
        const Byte* p = s + 3 * i;
        const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        const __m128i y = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 16));
        const __m128i z = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 32));
        const __m128 a = WidenFour(UnpackFour(x), widening);
        const __m128 b = WidenFour(
            UnpackFour(_mm_or_si128(_mm_srli_si128(x, 12), _mm_slli_si128(y, 4))), widening);
        const __m128 c = WidenFour(
            UnpackFour(_mm_or_si128(_mm_srli_si128(y, 8), _mm_slli_si128(z, 8))), widening);
        const __m128 e = WidenFour(UnpackFour(_mm_srli_si128(z, 4)), widening);
        _mm_storeu_ps(d + i, a);
        _mm_storeu_ps(d + i + 4, b);
        _mm_storeu_ps(d + i + 8, c);
        _mm_storeu_ps(d + i + 12, e);
    }
}

// The word is taken whole, as the scalar row takes it: a value beyond 24 bits stays beyond.
void CopyUnpacked24ToFloat32Sse2(void* dst, const void* src, long count, float gain)
{
    if (count <= 0) return;
    const Widening widening = MakeWidening(gain);
    auto* d = static_cast<float*>(dst);
    auto* s = static_cast<const int32_t*>(src);
    long left = count;
    for (; left >= 8; left -= 8, s += 8, d += 8)
    {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + 4));
        _mm_storeu_ps(d, WidenFour(a, widening));
        _mm_storeu_ps(d + 4, WidenFour(b, widening));
    }
    ScalarCopyFunction(TQSAMPLE_FLOAT32, TQSAMPLE_UNPACKED24)(d, s, left, gain);
}

// With SSSE3 a byte shuffle packs and unpacks four samples at once, where SSE2 needs a dozen
// shifts and masks; the arithmetic is that of the SSE2 rows.
#define TQ_SSSE3 __attribute__((target("ssse3")))

namespace {
// Four words of the 24-bit range into 12 bytes, and 4 more that the next store overwrites.
TQ_SSSE3 inline void StorePackedFour(Byte* d, __m128i v)
{
    const __m128i pack = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm_shuffle_epi8(v, pack));
}

// Four packed samples from the low 12 bytes of x, widened to singles.
TQ_SSSE3 inline __m128 WidenPackedFour(__m128i x, const Widening& widening)
{
    // Each sample to the top three bytes of its lane, then down with its sign.
    const __m128i spread = _mm_setr_epi8(-1, 0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11);
    return WidenFour(_mm_srai_epi32(_mm_shuffle_epi8(x, spread), 8), widening);
}
} // namespace

TQ_SSSE3 void CopyFloat32ToPcm24Ssse3(void* dst, const void* src, long count, float gain)
{
    if (count <= 0) return;
    const TQAUDIO_COPYFUNC scalar = ScalarCopyFunction(TQSAMPLE_PCM24, TQSAMPLE_FLOAT32);
    auto* d = static_cast<Byte*>(dst);
    auto* s = static_cast<const float*>(src);
    // Each store writes 12 bytes of samples and 4 that the next store or step overwrites, so a
    // step runs only while two more samples follow it.
    long left = count;
    if (gain == 1.0f && !RoundsTowardZero())
    {
        const SingleNarrowing n = MakeSingleNarrowing(1.0f);
        for (; left >= kBlock + 2; left -= kBlock, s += kBlock, d += 3 * kBlock)
        {
            __m128 nan = _mm_setzero_ps();
            const __m128i a = RoundFourSingle(s, n, false, nan);
            const __m128i b = RoundFourSingle(s + 4, n, false, nan);
            const __m128i c = RoundFourSingle(s + 8, n, false, nan);
            const __m128i e = RoundFourSingle(s + 12, n, false, nan);
            if (_mm_movemask_ps(nan))
            {
                scalar(d, s, kBlock, 1.0f);
                continue;
            }
            StorePackedFour(d, a);
            StorePackedFour(d + 12, b);
            StorePackedFour(d + 24, c);
            StorePackedFour(d + 36, e);
        }
    }
    else
    {
        const Narrowing n = MakeNarrowing(static_cast<double>(gain) * 8388608.0);
        for (; left >= kBlock + 2; left -= kBlock, s += kBlock, d += 3 * kBlock)
        {
            const __m128i a = HoldFour(RoundFour(_mm_loadu_ps(s), n));
            const __m128i b = HoldFour(RoundFour(_mm_loadu_ps(s + 4), n));
            const __m128i c = HoldFour(RoundFour(_mm_loadu_ps(s + 8), n));
            const __m128i e = HoldFour(RoundFour(_mm_loadu_ps(s + 12), n));
            StorePackedFour(d, a);
            StorePackedFour(d + 12, b);
            StorePackedFour(d + 24, c);
            StorePackedFour(d + 36, e);
        }
    }
    scalar(d, s, left, gain);
}

TQ_SSSE3 void CopyPcm24ToFloat32Ssse3(void* dst, const void* src, long count, float gain)
{
    if (count <= 0) return;
    const long done = count / kBlock * kBlock;
    auto* d = static_cast<float*>(dst);
    auto* s = static_cast<const Byte*>(src);
    ScalarCopyFunction(TQSAMPLE_FLOAT32, TQSAMPLE_PCM24)(d + done, s + 3 * done, count - done,
                                                         gain);
    const Widening widening = MakeWidening(gain);
    for (long i = done - kBlock; i >= 0; i -= kBlock)
    {
        const Byte* p = s + 3 * i;
        const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        const __m128i y = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 16));
        const __m128i z = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 32));
        const __m128 a = WidenPackedFour(x, widening);
        const __m128 b = WidenPackedFour(_mm_alignr_epi8(y, x, 12), widening);
        const __m128 c = WidenPackedFour(_mm_alignr_epi8(z, y, 8), widening);
        const __m128 e = WidenPackedFour(_mm_srli_si128(z, 4), widening);
        _mm_storeu_ps(d + i, a);
        _mm_storeu_ps(d + i + 4, b);
        _mm_storeu_ps(d + i + 8, c);
        _mm_storeu_ps(d + i + 12, e);
    }
}

} // namespace tq::audio
