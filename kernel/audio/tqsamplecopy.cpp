// The block copy table: one function per pair of sample types, with gain, and the block copies.
#include "tqsamplecopy.h"

#include <array>
#include <limits.h>
#include <utility>

#include "tqcpu.h"
#include "tqsamplecodec.h"
#include "tqsamplecopy_avx2.h"
#include "tqsamplecopy_sse2.h"

namespace tq::audio {
namespace {

template <TQSAMPLETYPE DT, TQSAMPLETYPE ST>
void BlockCopy(void* dst, const void* src, long count, float gain)
{
    using D = SampleFormat<DT>;
    using S = SampleFormat<ST>;
    if (count <= 0) return;
    const bool unity = static_cast<double>(gain) == 1.0;
    if constexpr (DT == ST)
    {
        if (unity)
        {
            if (dst != src) memmove(dst, src, static_cast<size_t>(count) * D::kSize);
            return;
        }
    }
    auto* d = static_cast<Byte*>(dst);
    auto* s = static_cast<const Byte*>(src);
    // Widening runs backwards so that it can work in place; the unpacked word into 32 bits does
    // too, although it keeps the width.
    constexpr bool backward =
        D::kSize > S::kSize || (DT == TQSAMPLE_PCM32 && ST == TQSAMPLE_UNPACKED24);
    auto run = [&](const auto& op) {
        if constexpr (backward)
            Backward<D::kSize, S::kSize>(d, s, count, op);
        else
            Forward<D::kSize, S::kSize>(d, s, count, op);
    };
    if (unity)
    {
        if constexpr (UnityOp<DT, ST>::kUsesFpu)
        {
            FpuDoublePrecision precision;
            run(UnityOp<DT, ST>{});
        }
        else
        {
            run(UnityOp<DT, ST>{});
        }
        return;
    }
    FpuDoublePrecision precision;
    run(GainOp<DT, ST>{gain});
}

// Four pairs have no block function: big-endian 16 and 24-bit from the unpacked and big-endian
// 32-bit words.
constexpr bool HasBlockCopy(TQSAMPLETYPE dst, TQSAMPLETYPE src)
{
    return !((dst == TQSAMPLE_BE16 || dst == TQSAMPLE_BE24) &&
             (src == TQSAMPLE_UNPACKED24 || src == TQSAMPLE_BE32));
}

template <TQSAMPLETYPE DT, TQSAMPLETYPE ST>
constexpr TQAUDIO_COPYFUNC BlockEntry()
{
    // Intended: one function serves both directions of a byte swap at equal width, and the table
    // has always handed out that one pointer for both. It reads big-endian and writes
    // little-endian, so at a gain other than 1.0 only that direction scales correctly.
    if constexpr (DT == TQSAMPLE_BE16 && ST == TQSAMPLE_PCM16)
        return &BlockCopy<TQSAMPLE_PCM16, TQSAMPLE_BE16>;
    else if constexpr (DT == TQSAMPLE_BE32 && ST == TQSAMPLE_PCM32)
        return &BlockCopy<TQSAMPLE_PCM32, TQSAMPLE_BE32>;
    else if constexpr (HasBlockCopy(DT, ST))
        return &BlockCopy<DT, ST>;
    else
        return nullptr;
}

using BlockRow = std::array<TQAUDIO_COPYFUNC, kBlockTypeCount>;

template <TQSAMPLETYPE DT, size_t... S>
constexpr BlockRow MakeBlockRow(std::index_sequence<S...>)
{
    return {BlockEntry<DT, kBlockTypes[S]>()...};
}

template <size_t... D>
constexpr std::array<BlockRow, kBlockTypeCount> MakeBlockTable(std::index_sequence<D...>)
{
    return {MakeBlockRow<kBlockTypes[D]>(std::make_index_sequence<kBlockTypeCount>{})...};
}

// Rows are destinations, columns sources, both in the order of kBlockTypes.
constexpr auto kBlockTable = MakeBlockTable(std::make_index_sequence<kBlockTypeCount>{});

struct VectorVariant
{
    TQSAMPLETYPE dst;
    TQSAMPLETYPE src;
    DWORD features; // all of these must be allowed
    TQAUDIO_COPYFUNC function;
};

// The first allowed variant of a pair wins, so the richer instruction sets come first.
constexpr VectorVariant kVectorVariants[] = {
    {TQSAMPLE_PCM24, TQSAMPLE_FLOAT32, TQCPU_AVX2 | TQCPU_SSE2 | TQCPU_SSE,
     &CopyFloat32ToPcm24Avx2},
    {TQSAMPLE_UNPACKED24, TQSAMPLE_FLOAT32, TQCPU_AVX2 | TQCPU_SSE2 | TQCPU_SSE,
     &CopyFloat32ToUnpacked24Avx2},
    {TQSAMPLE_PCM24, TQSAMPLE_FLOAT32, TQCPU_SSSE3 | TQCPU_SSE2 | TQCPU_SSE,
     &CopyFloat32ToPcm24Ssse3},
    {TQSAMPLE_FLOAT32, TQSAMPLE_PCM24, TQCPU_SSSE3 | TQCPU_SSE2 | TQCPU_SSE,
     &CopyPcm24ToFloat32Ssse3},
    {TQSAMPLE_PCM16, TQSAMPLE_FLOAT32, TQCPU_SSE2, &CopyFloat32ToPcm16Sse2},
    {TQSAMPLE_FLOAT32, TQSAMPLE_PCM16, TQCPU_SSE2, &CopyPcm16ToFloat32Sse2},
    {TQSAMPLE_FLOAT32, TQSAMPLE_FLOAT64, TQCPU_SSE2 | TQCPU_SSE, &CopyFloat64ToFloat32Sse2},
    {TQSAMPLE_FLOAT64, TQSAMPLE_FLOAT32, TQCPU_SSE2 | TQCPU_SSE, &CopyFloat32ToFloat64Sse2},
    {TQSAMPLE_PCM24, TQSAMPLE_FLOAT32, TQCPU_SSE2 | TQCPU_SSE, &CopyFloat32ToPcm24Sse2},
    {TQSAMPLE_FLOAT32, TQSAMPLE_PCM24, TQCPU_SSE2 | TQCPU_SSE, &CopyPcm24ToFloat32Sse2},
    {TQSAMPLE_UNPACKED24, TQSAMPLE_FLOAT32, TQCPU_SSE2 | TQCPU_SSE, &CopyFloat32ToUnpacked24Sse2},
    {TQSAMPLE_FLOAT32, TQSAMPLE_UNPACKED24, TQCPU_SSE2 | TQCPU_SSE, &CopyUnpacked24ToFloat32Sse2},
};

// frames times channels as a count, if it fits.
bool SampleCount(long frames, UINT channels, long* count)
{
    const long long product = static_cast<long long>(frames) * channels;
    if (product > LONG_MAX) return false;
    *count = static_cast<long>(product);
    return true;
}

} // namespace

TQAUDIO_COPYFUNC ScalarCopyFunction(TQSAMPLETYPE dstType, TQSAMPLETYPE srcType)
{
    const int d = BlockTypeIndex(dstType);
    const int s = BlockTypeIndex(srcType);
    return d < 0 || s < 0 ? nullptr : kBlockTable[d][s];
}

} // namespace tq::audio

using namespace tq::audio;

extern "C" TQAUDIO_COPYFUNC TqAudio_GetCopyFunction2(TQSAMPLETYPE dstType, TQSAMPLETYPE srcType)
{
    const TQAUDIO_COPYFUNC scalar = ScalarCopyFunction(dstType, srcType);
    if (!scalar) return nullptr;
    const DWORD allowed = TqGetCPUSupport(0);
    for (const VectorVariant& variant : kVectorVariants)
    {
        if (variant.dst == dstType && variant.src == srcType &&
            (allowed & variant.features) == variant.features)
            return variant.function;
    }
    return scalar;
}

extern "C" TQAUDIO_COPYFUNC TqAudio_GetCopyFunction(const WAVEFORMATEX* dstWfx,
                                                    const WAVEFORMATEX* srcWfx)
{
    return TqAudio_GetCopyFunction2(TqAudio_GetSampleType(dstWfx), TqAudio_GetSampleType(srcWfx));
}

extern "C" HRESULT TqAudio_CopyByType(TQSAMPLETYPE dstType, void* dst, TQSAMPLETYPE srcType,
                                      const void* src, UINT srcChannels, long frames, float gain)
{
    if (frames == 0) return S_OK;
    if (frames < 0) return E_INVALIDARG;
    const TQAUDIO_COPYFUNC copy = TqAudio_GetCopyFunction2(dstType, srcType);
    if (!copy) return E_NOTIMPL;
    if (!dst || !src) return E_POINTER;
    long count = 0;
    if (!SampleCount(frames, srcChannels, &count)) return E_INVALIDARG;
    copy(dst, src, count, gain);
    return S_OK;
}

extern "C" HRESULT TqAudio_Copy(const WAVEFORMATEX* dstWfx, void* dst, const WAVEFORMATEX* srcWfx,
                                const void* src, long frames, float gain)
{
    if (frames == 0) return S_OK;
    if (!dstWfx || !srcWfx) return E_POINTER;
    return TqAudio_CopyByType(TqAudio_GetSampleType(dstWfx), dst, TqAudio_GetSampleType(srcWfx),
                              src, srcWfx->nChannels, frames, gain);
}
