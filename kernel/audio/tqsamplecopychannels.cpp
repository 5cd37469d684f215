// The channel copy table: one channel of an interleaved buffer to one channel of another, at gain
// 1.0, for all pairs of the block types and the rows of the right-aligned types.
#include "tqsamplecopy.h"

#include <array>
#include <utility>

#include "tqcpu.h"
#include "tqsamplecodec.h"
#include "tqsamplecopy_sse2.h"

namespace tq::audio {
namespace {

using Word = IntSample<4, 32, false>;
using Word24 = IntSample<4, 24, false>;

// The rows of the right-aligned types, each as it has always behaved. Two of them are not the
// mirror of their opposite, and are kept so: 128 from 18 steps through its source as 32-bit words
// although 18 is packed, and 129 from 32 keeps a 16-bit scale in a container read back as 24-bit.
template <TQSAMPLETYPE DT, TQSAMPLETYPE ST>
struct RightAlignedOp;

template <unsigned DSize, unsigned SSize, bool UsesFpu>
struct RightAlignedShape
{
    static constexpr unsigned kDstSize = DSize;
    static constexpr unsigned kSrcSize = SSize;
    static constexpr bool kUsesFpu = UsesFpu;
};

template <>
struct RightAlignedOp<TQSAMPLE_PCM16, TQSAMPLE_RA16> : RightAlignedShape<2, 4, false>
{
    void operator()(Byte* d, const Byte* s) const { memcpy(d, s, 2); }
};
template <>
struct RightAlignedOp<TQSAMPLE_PCM16, TQSAMPLE_RA24> : RightAlignedShape<2, 4, true>
{
    void operator()(Byte* d, const Byte* s) const
    {
        const int32_t w = Word::Load(s) << 8;
        StoreRounded<SampleFormat<TQSAMPLE_PCM16>>(d, w * 1.1920928955078125e-7 * 32768.0);
    }
};
template <>
struct RightAlignedOp<TQSAMPLE_PCM24, TQSAMPLE_RA16> : RightAlignedShape<3, 4, false>
{
    void operator()(Byte* d, const Byte* s) const
    {
        d[0] = 0;
        memcpy(d + 1, s, 2);
    }
};
template <>
struct RightAlignedOp<TQSAMPLE_PCM24, TQSAMPLE_RA24> : RightAlignedShape<3, 4, false>
{
    void operator()(Byte* d, const Byte* s) const { memcpy(d, s, 3); }
};
template <>
struct RightAlignedOp<TQSAMPLE_PCM32, TQSAMPLE_RA16> : RightAlignedShape<4, 4, false>
{
    void operator()(Byte* d, const Byte* s) const { Word::Store(d, Word::Load(s) << 16); }
};
template <TQSAMPLETYPE DT>
struct RightAligned16ToFloat : RightAlignedShape<SampleFormat<DT>::kSize, 4, true>
{
    void operator()(Byte* d, const Byte* s) const
    {
        const int16_t low = static_cast<int16_t>(Word::Load(s));
        SampleFormat<DT>::Store(d, low * 3.0517578125e-5);
    }
};
template <>
struct RightAlignedOp<TQSAMPLE_FLOAT32, TQSAMPLE_RA16> : RightAligned16ToFloat<TQSAMPLE_FLOAT32>
{
};
template <>
struct RightAlignedOp<TQSAMPLE_FLOAT64, TQSAMPLE_RA16> : RightAligned16ToFloat<TQSAMPLE_FLOAT64>
{
};
template <TQSAMPLETYPE DT>
struct RightAligned24ToFloat : RightAlignedShape<SampleFormat<DT>::kSize, 4, true>
{
    void operator()(Byte* d, const Byte* s) const
    {
        SampleFormat<DT>::Store(d, (Word::Load(s) << 8) * 1.1920928955078125e-7);
    }
};
template <>
struct RightAlignedOp<TQSAMPLE_FLOAT32, TQSAMPLE_RA24> : RightAligned24ToFloat<TQSAMPLE_FLOAT32>
{
};
template <>
struct RightAlignedOp<TQSAMPLE_FLOAT64, TQSAMPLE_RA24> : RightAligned24ToFloat<TQSAMPLE_FLOAT64>
{
};
template <>
struct RightAlignedOp<TQSAMPLE_UNPACKED24, TQSAMPLE_RA16> : RightAlignedShape<4, 4, false>
{
    void operator()(Byte* d, const Byte* s) const { Word::Store(d, Word::Load(s) << 8); }
};
template <>
struct RightAlignedOp<TQSAMPLE_RA16, TQSAMPLE_PCM16> : RightAlignedShape<4, 2, false>
{
    void operator()(Byte* d, const Byte* s) const
    {
        Word::Store(d, SampleFormat<TQSAMPLE_PCM16>::Load(s));
    }
};
template <>
struct RightAlignedOp<TQSAMPLE_RA16, TQSAMPLE_PCM24> : RightAlignedShape<4, 4, false>
{
    void operator()(Byte* d, const Byte* s) const
    {
        Word::Store(d, Word24::Held(Word::Load(s)) >> 8);
    }
};
template <>
struct RightAlignedOp<TQSAMPLE_RA16, TQSAMPLE_FLOAT32> : RightAlignedShape<4, 4, true>
{
    void operator()(Byte* d, const Byte* s) const
    {
        const double v = static_cast<double>(SampleFormat<TQSAMPLE_FLOAT32>::Load(s)) * 32768.0;
        Word::Store(d, static_cast<int16_t>(ClampRound<SampleFormat<TQSAMPLE_PCM16>>(v)));
    }
};
template <>
struct RightAlignedOp<TQSAMPLE_RA24, TQSAMPLE_PCM16> : RightAlignedShape<4, 2, false>
{
    void operator()(Byte* d, const Byte* s) const
    {
        Word::Store(d, SampleFormat<TQSAMPLE_PCM16>::Load(s) << 8);
    }
};
template <>
struct RightAlignedOp<TQSAMPLE_RA24, TQSAMPLE_PCM24> : RightAlignedShape<4, 3, false>
{
    void operator()(Byte* d, const Byte* s) const
    {
        Word::Store(d, SampleFormat<TQSAMPLE_PCM24>::Load(s));
    }
};
template <>
struct RightAlignedOp<TQSAMPLE_RA24, TQSAMPLE_FLOAT32> : RightAlignedShape<4, 4, true>
{
    void operator()(Byte* d, const Byte* s) const
    {
        const double v = static_cast<double>(SampleFormat<TQSAMPLE_FLOAT32>::Load(s)) * 8388608.0;
        Word::Store(d, ClampRound<SampleFormat<TQSAMPLE_PCM24>>(v) >> 8);
    }
};

template <TQSAMPLETYPE DT, TQSAMPLETYPE ST>
concept HasRightAlignedRow = requires
{
    RightAlignedOp<DT, ST>::kDstSize;
};

template <class Op, unsigned DSize, unsigned SSize>
void CopyChannel(void* dst, unsigned long dstStride, unsigned long dstChannel, const void* src,
                 unsigned long srcStride, unsigned long srcChannel, long frames)
{
    if (frames <= 0) return;
    auto* d = static_cast<Byte*>(dst) + static_cast<size_t>(dstChannel) * DSize;
    auto* s = static_cast<const Byte*>(src) + static_cast<size_t>(srcChannel) * SSize;
    const size_t dStep = static_cast<size_t>(dstStride) * DSize;
    const size_t sStep = static_cast<size_t>(srcStride) * SSize;
    if constexpr (Op::kUsesFpu)
    {
        FpuDoublePrecision precision;
        Strided(d, dStep, s, sStep, frames, Op{});
    }
    else
    {
        Strided(d, dStep, s, sStep, frames, Op{});
    }
}

template <TQSAMPLETYPE DT, TQSAMPLETYPE ST>
constexpr TQAUDIO_COPYCHANNELSFUNC ChannelEntry()
{
    if constexpr (BlockTypeIndex(DT) >= 0 && BlockTypeIndex(ST) >= 0)
        return &CopyChannel<UnityOp<DT, ST>, SampleFormat<DT>::kSize, SampleFormat<ST>::kSize>;
    else if constexpr (HasRightAlignedRow<DT, ST>)
        return &CopyChannel<RightAlignedOp<DT, ST>, RightAlignedOp<DT, ST>::kDstSize,
                            RightAlignedOp<DT, ST>::kSrcSize>;
    else
        return nullptr;
}

constexpr TQSAMPLETYPE kChannelTypes[] = {
    TQSAMPLE_PCM8,    TQSAMPLE_PCM16,      TQSAMPLE_PCM24,   TQSAMPLE_PCM32, TQSAMPLE_FLOAT32,
    TQSAMPLE_FLOAT64, TQSAMPLE_UNPACKED24, TQSAMPLE_SIGNED8, TQSAMPLE_BE16,  TQSAMPLE_BE24,
    TQSAMPLE_BE32,    TQSAMPLE_RA16,       TQSAMPLE_RA24};
constexpr size_t kChannelTypeCount = sizeof(kChannelTypes) / sizeof(kChannelTypes[0]);

constexpr int ChannelTypeIndex(unsigned code)
{
    for (size_t i = 0; i < kChannelTypeCount; ++i)
    {
        if (kChannelTypes[i] == code) return static_cast<int>(i);
    }
    return -1;
}

using ChannelRow = std::array<TQAUDIO_COPYCHANNELSFUNC, kChannelTypeCount>;

template <TQSAMPLETYPE DT, size_t... S>
constexpr ChannelRow MakeChannelRow(std::index_sequence<S...>)
{
    return {ChannelEntry<DT, kChannelTypes[S]>()...};
}

template <size_t... D>
constexpr std::array<ChannelRow, kChannelTypeCount> MakeChannelTable(std::index_sequence<D...>)
{
    return {MakeChannelRow<kChannelTypes[D]>(std::make_index_sequence<kChannelTypeCount>{})...};
}

// Rows are destinations, columns sources, both in the order of kChannelTypes.
constexpr auto kChannelTable = MakeChannelTable(std::make_index_sequence<kChannelTypeCount>{});

} // namespace

TQAUDIO_COPYCHANNELSFUNC ScalarCopyChannelsFunction(TQSAMPLETYPE dstType, TQSAMPLETYPE srcType)
{
    const int d = ChannelTypeIndex(dstType);
    const int s = ChannelTypeIndex(srcType);
    return d < 0 || s < 0 ? nullptr : kChannelTable[d][s];
}

} // namespace tq::audio

using namespace tq::audio;

extern "C" TQAUDIO_COPYCHANNELSFUNC TqAudio_GetCopyChannelsFunction2(TQSAMPLETYPE dstType,
                                                                     TQSAMPLETYPE srcType)
{
    if (dstType == TQSAMPLE_FLOAT64 && srcType == TQSAMPLE_PCM16 &&
        (TqGetCPUSupport(TQCPU_ALLOWABLE) & TQCPU_SSE2))
        return &CopyChannelPcm16ToFloat64Sse2;
    return ScalarCopyChannelsFunction(dstType, srcType);
}

extern "C" TQAUDIO_COPYCHANNELSFUNC TqAudio_GetCopyChannelsFunction(const WAVEFORMATEX* dstWfx,
                                                                    const WAVEFORMATEX* srcWfx)
{
    return TqAudio_GetCopyChannelsFunction2(TqAudio_GetSampleType(dstWfx),
                                            TqAudio_GetSampleType(srcWfx));
}

extern "C" HRESULT TqAudio_CopyChannelsByType(TQSAMPLETYPE dstType, UINT dstChannels, void* dst,
                                              TQSAMPLETYPE srcType, UINT srcChannels,
                                              const void* src, long frames, const int* channelMap)
{
    if (frames == 0) return S_OK;
    if (!channelMap)
        return TqAudio_CopyByType(dstType, dst, srcType, src, srcChannels, frames, 1.0f);
    if (frames < 0) return E_INVALIDARG;
    const TQAUDIO_COPYCHANNELSFUNC copy = TqAudio_GetCopyChannelsFunction2(dstType, srcType);
    if (!copy) return E_NOTIMPL;
    if (!dst || !src) return E_POINTER;
    for (UINT channel = 0; channel < srcChannels; ++channel)
    {
        const int target = channelMap[channel];
        if (target < 0 || static_cast<UINT>(target) >= dstChannels) continue;
        copy(dst, dstChannels, static_cast<unsigned long>(target), src, srcChannels, channel,
             frames);
    }
    return S_OK;
}

extern "C" HRESULT TqAudio_CopyChannels(const WAVEFORMATEX* dstWfx, void* dst,
                                        const WAVEFORMATEX* srcWfx, const void* src, long frames,
                                        const int* channelMap)
{
    if (frames == 0) return S_OK;
    if (!dstWfx || !srcWfx) return E_POINTER;
    return TqAudio_CopyChannelsByType(TqAudio_GetSampleType(dstWfx), dstWfx->nChannels, dst,
                                      TqAudio_GetSampleType(srcWfx), srcWfx->nChannels, src, frames,
                                      channelMap);
}
