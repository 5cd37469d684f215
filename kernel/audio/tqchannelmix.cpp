// Channel mixes: the per-frame average into every channel, and channel count changes by down-mix
// to mono and up-mix from mono.
#include "tqchannels.h"

#include "tqchannellayout.h"
#include "tqframeloop.h"
#include "tqsamplecodec.h"

namespace tq::audio {
namespace {

// The average of one frame in its own type, for the mono mix.
template <TQSAMPLETYPE T>
struct FrameAverage;

// The integer types divide their plain sum; each keeps the arithmetic it has always had, so that
// a mono mix of existing material comes out as it did: 8-bit averages the stored unsigned bytes,
// and the 32-bit sum wraps.
template <>
struct FrameAverage<TQSAMPLE_PCM8>
{
    void operator()(Byte* out, const Byte* frame, UINT channels) const
    {
        unsigned sum = 0;
        for (UINT c = 0; c < channels; ++c)
            sum += frame[c];
        out[0] = static_cast<Byte>(sum / channels);
    }
};
template <>
struct FrameAverage<TQSAMPLE_PCM16>
{
    void operator()(Byte* out, const Byte* frame, UINT channels) const
    {
        using F = SampleFormat<TQSAMPLE_PCM16>;
        int32_t sum = 0;
        for (UINT c = 0; c < channels; ++c)
            sum += F::Load(frame + 2 * c);
        F::Store(out, sum / static_cast<int32_t>(channels));
    }
};
template <>
struct FrameAverage<TQSAMPLE_PCM24>
{
    void operator()(Byte* out, const Byte* frame, UINT channels) const
    {
        using F = SampleFormat<TQSAMPLE_PCM24>;
        double sum = 0.0;
        for (UINT c = 0; c < channels; ++c)
            sum += F::Load(frame + 3 * c) * F::kUnit;
        StoreRounded<F>(out, sum / channels * F::kScale);
    }
};
template <>
struct FrameAverage<TQSAMPLE_PCM32>
{
    void operator()(Byte* out, const Byte* frame, UINT channels) const
    {
        using F = SampleFormat<TQSAMPLE_PCM32>;
        uint32_t sum = 0;
        for (UINT c = 0; c < channels; ++c)
            sum += static_cast<uint32_t>(F::Load(frame + 4 * c));
        F::Store(out, static_cast<int32_t>(sum) / static_cast<int32_t>(channels));
    }
};
template <TQSAMPLETYPE T>
struct FloatFrameAverage
{
    void operator()(Byte* out, const Byte* frame, UINT channels) const
    {
        using F = SampleFormat<T>;
        double sum = 0.0;
        for (UINT c = 0; c < channels; ++c)
            sum += F::Load(frame + F::kSize * c);
        F::Store(out, sum / channels);
    }
};
template <>
struct FrameAverage<TQSAMPLE_FLOAT32> : FloatFrameAverage<TQSAMPLE_FLOAT32>
{
};
template <>
struct FrameAverage<TQSAMPLE_FLOAT64> : FloatFrameAverage<TQSAMPLE_FLOAT64>
{
};

// Each frame is read whole before any of its channels is written, so dst may be src.
template <TQSAMPLETYPE T>
void MonoMix(void* dst, const void* src, UINT channels, long frames)
{
    constexpr size_t kSize = SampleFormat<T>::kSize;
    const size_t frameBytes = kSize * channels;
    auto* d = static_cast<Byte*>(dst);
    auto* s = static_cast<const Byte*>(src);
    FpuDoublePrecision precision;
    const FrameAverage<T> average;
    ForEachFrame(frames, [&](size_t i) {
        Byte value[kSize];
        average(value, s + i * frameBytes, channels);
        for (UINT c = 0; c < channels; ++c)
            memcpy(d + i * frameBytes + c * kSize, value, kSize);
    });
}

// The sum of a frame at full scale 1.0, in double precision, left to right.
template <TQSAMPLETYPE T>
double FrameSum(const Byte* frame, UINT channels)
{
    using F = SampleFormat<T>;
    double sum = 0.0;
    for (UINT c = 0; c < channels; ++c)
    {
        if constexpr (F::kFloat)
            sum += F::Load(frame + F::kSize * c);
        else
            sum += F::Load(frame + F::kSize * c) * F::kUnit;
    }
    return sum;
}

// One mono sample per frame; the sample of frame i lies below frame i, so dst may be src.
template <TQSAMPLETYPE T, bool Average>
void DownMix(void* dst, const void* src, UINT channels, long frames)
{
    using F = SampleFormat<T>;
    auto* d = static_cast<Byte*>(dst);
    auto* s = static_cast<const Byte*>(src);
    const size_t frameBytes = F::kSize * channels;
    FpuDoublePrecision precision;
    ForEachFrame(frames, [&](size_t i) {
        double v = FrameSum<T>(s + i * frameBytes, channels);
        if constexpr (Average) v /= channels;
        if constexpr (F::kFloat)
            F::Store(d + i * F::kSize, v);
        else
            StoreRounded<F>(d + i * F::kSize, v * F::kScale);
    });
}

// The averaging mix of unsigned 8-bit has always averaged in 16-bit integers, truncating, and
// rounded only the result; mixes of existing material must come out as they did.
template <>
void DownMix<TQSAMPLE_PCM8, true>(void* dst, const void* src, UINT channels, long frames)
{
    using F = SampleFormat<TQSAMPLE_PCM8>;
    using Pcm16 = SampleFormat<TQSAMPLE_PCM16>;
    auto* d = static_cast<Byte*>(dst);
    auto* s = static_cast<const Byte*>(src);
    FpuDoublePrecision precision;
    ForEachFrame(frames, [&](size_t i) {
        int32_t sum = 0;
        for (UINT c = 0; c < channels; ++c)
            sum += F::Load(s + i * channels + c) << 8;
        const int32_t average = sum / static_cast<int32_t>(channels);
        StoreRounded<F>(d + i, average * Pcm16::kUnit * F::kScale);
    });
}

using MixFunction = void (*)(void* dst, const void* src, UINT channels, long frames);

struct MixRow
{
    TQSAMPLETYPE type;
    MixFunction sum;
    MixFunction average;
};

template <TQSAMPLETYPE T>
constexpr MixRow DownMixRow()
{
    return {T, &DownMix<T, false>, &DownMix<T, true>};
}
// Unpacked 24-bit words have no down-mix.
constexpr MixRow kDownMixes[] = {
    DownMixRow<TQSAMPLE_PCM8>(),    DownMixRow<TQSAMPLE_PCM16>(),   DownMixRow<TQSAMPLE_PCM24>(),
    DownMixRow<TQSAMPLE_PCM32>(),   DownMixRow<TQSAMPLE_FLOAT32>(), DownMixRow<TQSAMPLE_FLOAT64>(),
    DownMixRow<TQSAMPLE_SIGNED8>(), DownMixRow<TQSAMPLE_BE16>(),    DownMixRow<TQSAMPLE_BE24>(),
    DownMixRow<TQSAMPLE_BE32>(),
};

struct MonoRow
{
    TQSAMPLETYPE type;
    MixFunction mix;
};
constexpr MonoRow kMonoMixes[] = {
    {TQSAMPLE_PCM8, &MonoMix<TQSAMPLE_PCM8>},       {TQSAMPLE_PCM16, &MonoMix<TQSAMPLE_PCM16>},
    {TQSAMPLE_PCM24, &MonoMix<TQSAMPLE_PCM24>},     {TQSAMPLE_PCM32, &MonoMix<TQSAMPLE_PCM32>},
    {TQSAMPLE_FLOAT32, &MonoMix<TQSAMPLE_FLOAT32>}, {TQSAMPLE_FLOAT64, &MonoMix<TQSAMPLE_FLOAT64>},
};

// Every channel of each frame from the one channel of the source, last frame first, so that dst
// may be src.
template <size_t N>
void UpMix(Byte* dst, const Byte* src, UINT channels, long frames)
{
    ForEachFrameBackward(frames, [&](size_t i) {
        Byte sample[N];
        memcpy(sample, src + i * N, N);
        for (UINT c = 0; c < channels; ++c)
            memcpy(dst + (i * channels + c) * N, sample, N);
    });
}

HRESULT ChangeChannels(void* dst, UINT dstChannels, const void* src, const WAVEFORMATEX* srcWfx,
                       long frames, bool average)
{
    ChannelLayout layout;
    HRESULT hr = LayoutOf(srcWfx, &layout);
    if (FAILED(hr)) return hr;
    if (dstChannels == 0) return E_INVALIDARG;
    if (dstChannels == layout.channels)
        return SameTypeBlockCopy(dst, src, layout.type, frames, layout.channels);
    if (dstChannels < layout.channels)
    {
        if (dstChannels != 1) return E_FAIL;
        for (const MixRow& row : kDownMixes)
        {
            if (row.type != layout.type) continue;
            if (HasWork(frames, dst && src, &hr))
                (average ? row.average : row.sum)(dst, src, layout.channels, frames);
            return hr;
        }
        return E_FAIL;
    }
    if (layout.channels != 1 || !layout.sampleBytes) return E_FAIL;
    if (!HasWork(frames, dst && src, &hr)) return hr;
    WithSampleSize(layout.sampleBytes, [&](auto size) {
        UpMix<decltype(size)::value>(static_cast<Byte*>(dst), static_cast<const Byte*>(src),
                                     dstChannels, frames);
    });
    return S_OK;
}

} // namespace
} // namespace tq::audio

using namespace tq::audio;

extern "C" HRESULT TqAudio_MonoChannel(void* dst, const void* src, const WAVEFORMATEX* wfx,
                                       long frames)
{
    ChannelLayout layout;
    HRESULT hr = LayoutOf(wfx, &layout);
    if (FAILED(hr)) return hr;
    if (layout.channels == 1) return SameTypeBlockCopy(dst, src, layout.type, frames, 1);
    for (const MonoRow& row : kMonoMixes)
    {
        if (row.type != layout.type) continue;
        if (HasWork(frames, dst && src, &hr)) row.mix(dst, src, layout.channels, frames);
        return hr;
    }
    return E_FAIL;
}

extern "C" HRESULT TqAudio_ChannelChange(void* dst, UINT dstChannels, const void* src,
                                         const WAVEFORMATEX* srcWfx, long frames)
{
    return ChangeChannels(dst, dstChannels, src, srcWfx, frames, false);
}

extern "C" HRESULT TqAudio_ChannelChangeAvg(void* dst, UINT dstChannels, const void* src,
                                            const WAVEFORMATEX* srcWfx, long frames)
{
    return ChangeChannels(dst, dstChannels, src, srcWfx, frames, true);
}
