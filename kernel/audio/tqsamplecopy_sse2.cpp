// SSE2 variants of the copy functions between 16-bit, single and double samples. Built with SSE2
// code generation, so nothing here may be reached without the lookup's processor check.
#include "tqsamplecopy_sse2.h"

#include <emmintrin.h>
#include <stdint.h>
#include <string.h>

#include "tqcpu.h"
#include "tqsamplecopy.h"

namespace tq::audio {
namespace {

constexpr unsigned kRoundingControl = 0x6000; // MXCSR bits 13 and 14; clear is to nearest
constexpr unsigned kFlushDenormals = 0x8040;  // flush-to-zero and denormals-are-zero

// Whether the processor honours denormals-are-zero; asked once, as the answer never changes.
bool FlushesDenormals()
{
    static const bool flushes = (TqGetCPUSupport(TQCPU_FTZDAZ) & TQCPU_FTZDAZ) != 0;
    return flushes;
}

// The control word the 16-bit kernels run under: round to nearest, denormals flushed where the
// processor honours that. The caller's word comes back at the end. Loading the control word
// stalls the pipeline, so it is loaded only when it has to change.
class KernelControlWord
{
public:
    KernelControlWord() : m_saved(_mm_getcsr())
    {
        unsigned word = m_saved & ~kRoundingControl;
        if (FlushesDenormals()) word |= kFlushDenormals;
        m_changed = word != m_saved;
        if (m_changed) _mm_setcsr(word);
    }
    ~KernelControlWord()
    {
        if (m_changed) _mm_setcsr(m_saved);
        _mm_sfence();
    }
    KernelControlWord(const KernelControlWord&) = delete;
    KernelControlWord& operator=(const KernelControlWord&) = delete;

private:
    unsigned m_saved;
    bool m_changed;
};

bool IsAligned(const void* p, uintptr_t alignment)
{
    return (reinterpret_cast<uintptr_t>(p) & (alignment - 1)) == 0;
}

// Whole samples from p to its next 16-byte boundary; p must be aligned to the sample size.
long SamplesToBoundary(const void* p, unsigned sampleSize)
{
    return static_cast<long>(((16 - (reinterpret_cast<uintptr_t>(p) & 15)) & 15) / sampleSize);
}

long Min(long a, long b)
{
    return a < b ? a : b;
}

// groups of four singles from a 16-byte aligned source, times scale, to saturated 16-bit.
void Float32ToPcm16Kernel(int16_t* d, const float* s, long groups, float scale)
{
    const __m128 k = _mm_set1_ps(scale);
    for (; groups >= 4; groups -= 4, s += 16, d += 16)
    {
        const __m128i a = _mm_cvtps_epi32(_mm_mul_ps(_mm_load_ps(s), k));
        const __m128i b = _mm_cvtps_epi32(_mm_mul_ps(_mm_load_ps(s + 4), k));
        const __m128i c = _mm_cvtps_epi32(_mm_mul_ps(_mm_load_ps(s + 8), k));
        const __m128i e = _mm_cvtps_epi32(_mm_mul_ps(_mm_load_ps(s + 12), k));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm_packs_epi32(a, b));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 8), _mm_packs_epi32(c, e));
    }
    for (; groups > 0; --groups, s += 4, d += 4)
    {
        const __m128i a = _mm_cvtps_epi32(_mm_mul_ps(_mm_load_ps(s), k));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(d), _mm_packs_epi32(a, a));
    }
}

// blocks of sixteen 16-bit samples, times scale, to a 16-byte aligned destination.
void Pcm16ToFloat32Kernel(float* d, const int16_t* s, long blocks, float scale)
{
    const __m128 k = _mm_set1_ps(scale);
    const __m128i zero = _mm_setzero_si128();
    // Each word goes to the high half of a 32-bit lane and is shifted down with its sign.
    auto widen = [&](__m128i words) {
        return _mm_mul_ps(_mm_cvtepi32_ps(_mm_srai_epi32(words, 16)), k);
    };
    for (; blocks > 0; --blocks, s += 16, d += 16)
    {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + 8));
        _mm_store_ps(d, widen(_mm_unpacklo_epi16(zero, a)));
        _mm_store_ps(d + 4, widen(_mm_unpackhi_epi16(zero, a)));
        _mm_store_ps(d + 8, widen(_mm_unpacklo_epi16(zero, b)));
        _mm_store_ps(d + 12, widen(_mm_unpackhi_epi16(zero, b)));
    }
}

// The per-sample form of the 16-bit widening: single precision throughout, like the kernel.
void Pcm16ToFloat32Single(float* d, const int16_t* s, long count, float scale)
{
    for (; count > 0; --count, ++s, ++d)
    {
        int16_t x;
        memcpy(&x, s, sizeof x);
        const float v = static_cast<float>(x) * scale;
        memcpy(d, &v, sizeof v);
    }
}

} // namespace

// The source aligned to 16 bytes runs through the kernel, the ends through the scalar function.
// Both form gain times sample in single precision. Where they differ from the scalar function:
// a scaled value beyond the 32-bit range (or a NaN) converts to the integer-indefinite value and
// saturates to -32768 even when positive, and the kernel rounds to nearest whatever the caller's
// rounding mode.
void CopyFloat32ToPcm16Sse2(void* dst, const void* src, long count, float gain)
{
    const TQAUDIO_COPYFUNC scalar = ScalarCopyFunction(TQSAMPLE_PCM16, TQSAMPLE_FLOAT32);
    if (count <= 0) return;
    if (!IsAligned(src, 4))
    {
        scalar(dst, src, count, gain);
        return;
    }
    const long head = Min(SamplesToBoundary(src, 4), count);
    const long groups = (count - head) / 4;
    auto* d = static_cast<int16_t*>(dst);
    auto* s = static_cast<const float*>(src);
    scalar(d, s, head, gain);
    if (groups > 0)
    {
        KernelControlWord controlWord;
        Float32ToPcm16Kernel(d + head, s + head, groups, gain * 32768.0f);
    }
    const long done = head + groups * 4;
    scalar(d + done, s + done, count - done, gain);
}

// Works with k = gain / 32768 in single precision everywhere, so at a gain other than 1.0 a
// result can differ in the last bit from the scalar function, which multiplies in double. In
// place it is the scalar function, which runs backwards.
void CopyPcm16ToFloat32Sse2(void* dst, const void* src, long count, float gain)
{
    if (count <= 0) return;
    if (dst == src || !IsAligned(dst, 4))
    {
        ScalarCopyFunction(TQSAMPLE_FLOAT32, TQSAMPLE_PCM16)(dst, src, count, gain);
        return;
    }
    const float k = gain * 3.0517578125e-5f;
    const long head = Min(SamplesToBoundary(dst, 4), count);
    const long blocks = (count - head) / 16;
    auto* d = static_cast<float*>(dst);
    auto* s = static_cast<const int16_t*>(src);
    Pcm16ToFloat32Single(d, s, head, k);
    if (blocks > 0)
    {
        KernelControlWord controlWord;
        Pcm16ToFloat32Kernel(d + head, s + head, blocks, k);
    }
    const long done = head + blocks * 16;
    Pcm16ToFloat32Single(d + done, s + done, count - done, k);
}

// Exactly the scalar rule: the double product rounded to single in the caller's mode. Forwards,
// every load of a step before its stores, so it works in place.
void CopyFloat64ToFloat32Sse2(void* dst, const void* src, long count, float gain)
{
    if (count <= 0) return;
    const __m128d g = _mm_set1_pd(gain);
    auto* d = static_cast<float*>(dst);
    auto* s = static_cast<const double*>(src);
    auto narrow = [&](__m128d a, __m128d b) {
        return _mm_movelh_ps(_mm_cvtpd_ps(_mm_mul_pd(a, g)), _mm_cvtpd_ps(_mm_mul_pd(b, g)));
    };
    for (; count >= 8; count -= 8, s += 8, d += 8)
    {
        const __m128d a = _mm_loadu_pd(s);
        const __m128d b = _mm_loadu_pd(s + 2);
        const __m128d c = _mm_loadu_pd(s + 4);
        const __m128d e = _mm_loadu_pd(s + 6);
        _mm_storeu_ps(d, narrow(a, b));
        _mm_storeu_ps(d + 4, narrow(c, e));
    }
    for (; count > 0; --count, ++s, ++d)
    {
        double x;
        memcpy(&x, s, sizeof x);
        const float v = static_cast<float>(x * static_cast<double>(gain));
        memcpy(d, &v, sizeof v);
    }
}

// Exactly the scalar rule. Backwards, every load of a step before its stores, so it works in
// place like the scalar function.
void CopyFloat32ToFloat64Sse2(void* dst, const void* src, long count, float gain)
{
    if (count <= 0) return;
    const __m128d g = _mm_set1_pd(gain);
    auto* d = static_cast<double*>(dst) + count;
    auto* s = static_cast<const float*>(src) + count;
    for (; count >= 8; count -= 8)
    {
        s -= 8;
        d -= 8;
        const __m128 a = _mm_loadu_ps(s);
        const __m128 b = _mm_loadu_ps(s + 4);
        _mm_storeu_pd(d, _mm_mul_pd(_mm_cvtps_pd(a), g));
        _mm_storeu_pd(d + 2, _mm_mul_pd(_mm_cvtps_pd(_mm_movehl_ps(a, a)), g));
        _mm_storeu_pd(d + 4, _mm_mul_pd(_mm_cvtps_pd(b), g));
        _mm_storeu_pd(d + 6, _mm_mul_pd(_mm_cvtps_pd(_mm_movehl_ps(b, b)), g));
    }
    while (count-- > 0)
    {
        float x;
        memcpy(&x, --s, sizeof x);
        const double v = static_cast<double>(x) * static_cast<double>(gain);
        memcpy(--d, &v, sizeof v);
    }
}

// Exact (a 16-bit value times a power of two), so identical to the scalar function.
void CopyChannelPcm16ToFloat64Sse2(void* dst, unsigned long dstStride, unsigned long dstChannel,
                                   const void* src, unsigned long srcStride,
                                   unsigned long srcChannel, long frames)
{
    if (frames <= 0) return;
    const __m128d unit = _mm_set1_pd(3.0517578125e-5);
    auto* d = static_cast<double*>(dst) + dstChannel;
    auto* s = static_cast<const int16_t*>(src) + srcChannel;
    auto next = [&] {
        int16_t x;
        memcpy(&x, s, sizeof x);
        s += srcStride;
        return static_cast<int>(x);
    };
    auto put = [&](__m128d pair) {
        _mm_storel_pd(d, pair);
        _mm_storeh_pd(d + dstStride, pair);
        d += 2 * static_cast<size_t>(dstStride);
    };
    for (; frames >= 4; frames -= 4)
    {
        const int x0 = next();
        const int x1 = next();
        const int x2 = next();
        const int x3 = next();
        const __m128i words = _mm_setr_epi32(x0, x1, x2, x3);
        put(_mm_mul_pd(_mm_cvtepi32_pd(words), unit));
        put(_mm_mul_pd(_mm_cvtepi32_pd(_mm_unpackhi_epi64(words, words)), unit));
    }
    for (; frames > 0; --frames)
    {
        _mm_storel_pd(d, _mm_mul_sd(_mm_cvtsi32_sd(_mm_setzero_pd(), next()), unit));
        d += dstStride;
    }
}

} // namespace tq::audio
