// Single-channel moves within and between interleaved buffers: extract, insert, mute, copy,
// spread and swap.
#include "tqchannels.h"

#include <limits.h>

#include "tqchannellayout.h"
#include "tqframeloop.h"
#include "tqsamplecopy.h"

namespace tq::audio {
namespace {

using Byte = BYTE;

// The types whose samples the pair, copy and swap functions move.
constexpr TQSAMPLETYPE kPlainPcmAndFloat[] = {TQSAMPLE_PCM8,  TQSAMPLE_PCM16,   TQSAMPLE_PCM24,
                                              TQSAMPLE_PCM32, TQSAMPLE_FLOAT32, TQSAMPLE_FLOAT64};

// Sample channel of every frame of src into sample 0 of every frame of dst; steps in samples.
template <size_t N>
void MoveStrided(Byte* dst, size_t dstStep, const Byte* src, size_t srcStep, long frames)
{
    ForEachFrame(frames,
                 [&](size_t i) { memcpy(dst + i * dstStep * N, src + i * srcStep * N, N); });
}

HRESULT MoveChannel(void* dst, size_t dstStep, size_t dstChannel, const void* src, size_t srcStep,
                    size_t srcChannel, size_t sampleBytes, long frames)
{
    const bool moved = WithSampleSize(sampleBytes, [&](auto size) {
        constexpr size_t N = decltype(size)::value;
        MoveStrided<N>(static_cast<Byte*>(dst) + dstChannel * N, dstStep,
                       static_cast<const Byte*>(src) + srcChannel * N, srcStep, frames);
    });
    return moved ? S_OK : E_FAIL;
}

// Every channel of each dst frame from one channel of the src frame. In place, a dst with
// fewer channels is written forward and one with more backward, so that no frame is overwritten
// before it is read.
template <size_t N>
void Spread(Byte* dst, UINT dstChannels, const Byte* src, UINT srcChannels, UINT channel,
            long frames)
{
    auto frame = [&](size_t i) {
        Byte sample[N];
        memcpy(sample, src + (i * srcChannels + channel) * N, N);
        Byte* d = dst + i * dstChannels * N;
        for (UINT c = 0; c < dstChannels; ++c)
            memcpy(d + c * N, sample, N);
    };
    if (dstChannels <= srcChannels)
        ForEachFrame(frames, frame);
    else
        ForEachFrameBackward(frames, frame);
}

HRESULT SpreadChannel(void* dst, UINT dstChannels, const void* src, UINT srcChannels, UINT channel,
                      size_t sampleBytes, long frames)
{
    const bool spread = WithSampleSize(sampleBytes, [&](auto size) {
        Spread<decltype(size)::value>(static_cast<Byte*>(dst), dstChannels,
                                      static_cast<const Byte*>(src), srcChannels, channel, frames);
    });
    return spread ? S_OK : E_FAIL;
}

template <size_t N>
void SwapPairs(Byte* dst, const Byte* src, size_t frameBytes, long frames)
{
    ForEachFrame(frames, [&](size_t i) {
        Byte left[N];
        const Byte* s = src + i * frameBytes;
        Byte* d = dst + i * frameBytes;
        memcpy(left, s, N);
        memmove(d, s + N, N);
        memcpy(d + N, left, N);
    });
}

HRESULT Swap(void* dst, const void* src, const WAVEFORMATEX* wfx, long frames)
{
    ChannelLayout layout;
    HRESULT hr = LayoutOf(wfx, &layout);
    if (FAILED(hr)) return hr;
    if (layout.channels == 1) return S_OK;
    if (!layout.HasType(kPlainPcmAndFloat)) return E_FAIL;
    if (!HasWork(frames, dst && src, &hr)) return hr;
    WithSampleSize(layout.sampleBytes, [&](auto size) {
        SwapPairs<decltype(size)::value>(static_cast<Byte*>(dst), static_cast<const Byte*>(src),
                                         layout.FrameBytes(), frames);
    });
    return S_OK;
}

} // namespace

HRESULT SameTypeBlockCopy(void* dst, const void* src, TQSAMPLETYPE type, long frames, UINT channels)
{
    const TQAUDIO_COPYFUNC copy = TqAudio_GetCopyFunction2(type, type);
    if (!copy) return E_NOTIMPL;
    HRESULT hr;
    if (!HasWork(frames, dst && src, &hr)) return hr;
    const long long count = static_cast<long long>(frames) * channels;
    if (count > LONG_MAX) return E_INVALIDARG;
    copy(dst, src, static_cast<long>(count), 1.0f);
    return S_OK;
}

} // namespace tq::audio

using namespace tq::audio;

extern "C" double TqAudio_GetNormalizeFactor(int bits)
{
    switch (bits)
    {
    case 8:
        return 128.0;
    case 16:
        return 32768.0;
    case 24:
        return 8388608.0;
    case 32:
        return 2147483648.0;
    default:
        return 1.0;
    }
}

extern "C" HRESULT TqAudio_ExtractChannelByType(void* dst, UINT channel, const void* src,
                                                TQSAMPLETYPE type, UINT channels, long frames)
{
    if (channel >= channels) return E_INVALIDARG;
    if (channels == 1) return SameTypeBlockCopy(dst, src, type, frames, 1);
    const ChannelLayout layout = LayoutOf(type, channels);
    if (!layout.sampleBytes) return E_FAIL;
    HRESULT hr;
    if (!HasWork(frames, dst && src, &hr)) return hr;
    return MoveChannel(dst, 1, 0, src, channels, channel, layout.sampleBytes, frames);
}

extern "C" HRESULT TqAudio_ExtractChannel(void* dst, UINT channel, const void* src,
                                          const WAVEFORMATEX* srcWfx, long frames)
{
    ChannelLayout layout;
    const HRESULT hr = LayoutOf(srcWfx, &layout);
    if (FAILED(hr)) return hr;
    return TqAudio_ExtractChannelByType(dst, channel, src, layout.type, layout.channels, frames);
}

extern "C" HRESULT TqAudio_ExtractChannelPair(void* dst, UINT firstChannel, const void* src,
                                              const WAVEFORMATEX* srcWfx, long frames)
{
    ChannelLayout layout;
    HRESULT hr = LayoutOf(srcWfx, &layout);
    if (FAILED(hr)) return hr;
    if (layout.channels < 2 || firstChannel > layout.channels - 2) return E_INVALIDARG;
    if (layout.channels == 2) return SameTypeBlockCopy(dst, src, layout.type, frames, 2);
    if (!layout.HasType(kPlainPcmAndFloat)) return E_FAIL;
    if (!HasWork(frames, dst && src, &hr)) return hr;
    // A pair of adjacent samples moves as one sample of twice the size.
    const size_t pairBytes = 2 * layout.sampleBytes;
    auto* d = static_cast<Byte*>(dst);
    auto* s = static_cast<const Byte*>(src) + firstChannel * layout.sampleBytes;
    const size_t frameBytes = layout.FrameBytes();
    ForEachFrame(frames,
                 [&](size_t i) { memcpy(d + i * pairBytes, s + i * frameBytes, pairBytes); });
    return S_OK;
}

extern "C" HRESULT TqAudio_InsertChannel(void* dst, TQSAMPLETYPE type, UINT channels, UINT channel,
                                         const void* src, long frames)
{
    if (channel >= channels) return E_INVALIDARG;
    const ChannelLayout layout = LayoutOf(type, channels);
    if (!layout.sampleBytes) return E_FAIL;
    HRESULT hr;
    if (!HasWork(frames, dst && src, &hr)) return hr;
    if (channels == 1)
    {
        memmove(dst, src, layout.sampleBytes * static_cast<size_t>(frames));
        return S_OK;
    }
    return MoveChannel(dst, channels, channel, src, 1, 0, layout.sampleBytes, frames);
}

extern "C" HRESULT TqAudio_MuteChannelByType(void* buffer, TQSAMPLETYPE type, UINT channels,
                                             UINT channel, long frames)
{
    if (channel >= channels) return E_INVALIDARG;
    const ChannelLayout layout = LayoutOf(type, channels);
    if (!layout.sampleBytes) return E_FAIL;
    if (frames <= 0) return S_OK;
    if (!buffer) return E_POINTER;
    const BYTE silence = SilenceByte(type);
    WithSampleSize(layout.sampleBytes, [&](auto size) {
        constexpr size_t N = decltype(size)::value;
        Byte sample[N];
        memset(sample, silence, N);
        MoveStrided<N>(static_cast<Byte*>(buffer) + channel * N, channels, sample, 0, frames);
    });
    return S_OK;
}

extern "C" HRESULT TqAudio_MuteChannel(void* buffer, const WAVEFORMATEX* wfx, UINT channel,
                                       long frames)
{
    ChannelLayout layout;
    const HRESULT hr = LayoutOf(wfx, &layout);
    if (FAILED(hr)) return hr;
    return TqAudio_MuteChannelByType(buffer, layout.type, layout.channels, channel, frames);
}

extern "C" HRESULT TqAudio_MuteChannelForRecord(void* buffer, const _tqwaveformat* fmt,
                                                UINT channel, long frames)
{
    if (!fmt) return E_POINTER;
    return TqAudio_MuteChannelByType(buffer, fmt->Type(), fmt->nChannels, channel, frames);
}

extern "C" HRESULT TqAudio_CopyChannelToChannel(void* buffer, const WAVEFORMATEX* wfx,
                                                UINT fromChannel, UINT toChannel, long frames)
{
    ChannelLayout layout;
    HRESULT hr = LayoutOf(wfx, &layout);
    if (FAILED(hr)) return hr;
    if (fromChannel >= layout.channels || toChannel >= layout.channels) return E_INVALIDARG;
    if (layout.channels == 1) return S_OK;
    if (!layout.HasType(kPlainPcmAndFloat)) return E_FAIL;
    if (!HasWork(frames, buffer != nullptr, &hr) || fromChannel == toChannel) return hr;
    return MoveChannel(buffer, layout.channels, toChannel, buffer, layout.channels, fromChannel,
                       layout.sampleBytes, frames);
}

extern "C" HRESULT TqAudio_CopyChannelToAll(void* dst, const void* src, const WAVEFORMATEX* srcWfx,
                                            const WAVEFORMATEX* dstWfx, UINT channel, long frames)
{
    ChannelLayout from, to;
    HRESULT hr = LayoutOf(srcWfx, &from);
    if (SUCCEEDED(hr)) hr = LayoutOf(dstWfx, &to);
    if (FAILED(hr)) return hr;
    if (from.type != to.type) return E_NOTIMPL;
    if (channel >= from.channels) return E_INVALIDARG;
    if (to.channels == 1) return TqAudio_ExtractChannel(dst, channel, src, srcWfx, frames);
    if (!from.sampleBytes) return E_FAIL;
    if (!HasWork(frames, dst && src, &hr)) return hr;
    return SpreadChannel(dst, to.channels, src, from.channels, channel, from.sampleBytes, frames);
}

extern "C" HRESULT TqAudio_CopyChannelToMultiMono2(void* dst, UINT dstChannels, const void* src,
                                                   UINT srcChannels, UINT channel, long frames,
                                                   TQSAMPLETYPE type)
{
    const size_t sampleBytes = TqAudio_BytesFromSampleType(type);
    if (!sampleBytes || dstChannels == 0 || channel >= srcChannels) return E_INVALIDARG;
    HRESULT hr;
    if (!HasWork(frames, dst && src, &hr)) return hr;
    return SpreadChannel(dst, dstChannels, src, srcChannels, channel, sampleBytes, frames);
}

extern "C" HRESULT TqAudio_CopyChannelToMultiMono(void* dst, const WAVEFORMATEX* dstWfx,
                                                  const void* src, const WAVEFORMATEX* srcWfx,
                                                  UINT channel, long frames)
{
    ChannelLayout from, to;
    HRESULT hr = LayoutOf(srcWfx, &from);
    if (SUCCEEDED(hr)) hr = LayoutOf(dstWfx, &to);
    if (FAILED(hr)) return hr;
    if (from.type != to.type) return E_INVALIDARG;
    return TqAudio_CopyChannelToMultiMono2(dst, to.channels, src, from.channels, channel, frames,
                                           from.type);
}

extern "C" HRESULT TqAudio_SwapStereoChannels(void* buffer, const WAVEFORMATEX* wfx, long frames)
{
    return Swap(buffer, buffer, wfx, frames);
}

extern "C" HRESULT TqAudio_CopySwapStereoChannels(void* dst, const void* src,
                                                  const WAVEFORMATEX* wfx, long frames)
{
    return Swap(dst, src, wfx, frames);
}
