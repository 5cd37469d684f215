// The sample copy engine: block and channel copy functions looked up by destination and source
// sample type, and the copies that use them.
#pragma once

#include "tqkernelapi.h"
#include "tqsampletype.h"
#include "tqwaveformat.h"

// Converts count samples (frames times channels) from src to dst with a gain. dst may equal src.
// A count of 0 or less writes nothing.
typedef void (*TQAUDIO_COPYFUNC)(void* dst, const void* src, long count, float gain);
// Converts one channel at gain 1.0: sample i is read at index srcChannel + i * srcStride and
// written at dstChannel + i * dstStride, in units of each type's sample size. Not for in-place
// use.
typedef void (*TQAUDIO_COPYCHANNELSFUNC)(void* dst, unsigned long dstStride,
                                         unsigned long dstChannel, const void* src,
                                         unsigned long srcStride, unsigned long srcChannel,
                                         long frames);

// The block copy function of a pair, or null: codes outside 16 to 66, and four big-endian pairs
// ((64, 48), (64, 66), (65, 48), (65, 66)), have none. A function stays valid for the process;
// look it up once, never on the audio thread.
TQKERNEL_API TQAUDIO_COPYFUNC TqAudio_GetCopyFunction2(TQSAMPLETYPE dstType, TQSAMPLETYPE srcType);
TQKERNEL_API TQAUDIO_COPYFUNC TqAudio_GetCopyFunction(const WAVEFORMATEX* dstWfx,
                                                      const WAVEFORMATEX* srcWfx);
// The channel copy function of a pair, or null. Every pair of the eleven block types has one, and
// so have the right-aligned types in some pairs.
TQKERNEL_API TQAUDIO_COPYCHANNELSFUNC TqAudio_GetCopyChannelsFunction2(TQSAMPLETYPE dstType,
                                                                       TQSAMPLETYPE srcType);
TQKERNEL_API TQAUDIO_COPYCHANNELSFUNC TqAudio_GetCopyChannelsFunction(const WAVEFORMATEX* dstWfx,
                                                                      const WAVEFORMATEX* srcWfx);

// Copies frames of srcChannels samples each. S_OK (at once for 0 frames); E_NOTIMPL when the
// pair has no function; E_POINTER; E_INVALIDARG for negative frames or a count beyond a long.
TQKERNEL_API HRESULT TqAudio_CopyByType(TQSAMPLETYPE dstType, void* dst, TQSAMPLETYPE srcType,
                                        const void* src, UINT srcChannels, long frames, float gain);
// The same from headers; the destination's channel count is not looked at.
TQKERNEL_API HRESULT TqAudio_Copy(const WAVEFORMATEX* dstWfx, void* dst, const WAVEFORMATEX* srcWfx,
                                  const void* src, long frames, float gain);

// Copies interleaved channels: channelMap has one entry per source channel, the destination
// channel it goes to; a negative entry, or one not below dstChannels, skips that source channel.
// A null map is a block copy at gain 1.0. Results as for TqAudio_CopyByType.
TQKERNEL_API HRESULT TqAudio_CopyChannelsByType(TQSAMPLETYPE dstType, UINT dstChannels, void* dst,
                                                TQSAMPLETYPE srcType, UINT srcChannels,
                                                const void* src, long frames,
                                                const int* channelMap);
TQKERNEL_API HRESULT TqAudio_CopyChannels(const WAVEFORMATEX* dstWfx, void* dst,
                                          const WAVEFORMATEX* srcWfx, const void* src, long frames,
                                          const int* channelMap);

// Proves the round trip between integer and float types over every integer value. S_OK; else
// the failure code when parentWindow is null, or 0 after showing the failure in a box on it.
TQKERNEL_API HRESULT TqAudioCopy_UnitTest(HWND parentWindow);

#ifdef __cplusplus
#include <concepts>

// The forms that take a _tqwaveformat on either side, or both.
namespace tq::audio {
template <class T>
concept AudioFormatRecord = std::same_as<T, WAVEFORMATEX> || std::same_as<T, _tqwaveformat>;

inline TQSAMPLETYPE TypeOf(const WAVEFORMATEX* wfx)
{
    return TqAudio_GetSampleType(wfx);
}
inline TQSAMPLETYPE TypeOf(const _tqwaveformat* fmt)
{
    return fmt ? fmt->Type() : TQSAMPLE_NONE;
}
inline UINT ChannelsOf(const WAVEFORMATEX* wfx)
{
    return wfx ? wfx->nChannels : 0;
}
inline UINT ChannelsOf(const _tqwaveformat* fmt)
{
    return fmt ? fmt->nChannels : 0;
}

// The functions the lookups hand out when no processor variant is allowed.
TQAUDIO_COPYFUNC ScalarCopyFunction(TQSAMPLETYPE dstType, TQSAMPLETYPE srcType);
TQAUDIO_COPYCHANNELSFUNC ScalarCopyChannelsFunction(TQSAMPLETYPE dstType, TQSAMPLETYPE srcType);
} // namespace tq::audio

template <tq::audio::AudioFormatRecord D, tq::audio::AudioFormatRecord S>
inline TQAUDIO_COPYFUNC TqAudio_GetCopyFunction(const D* dst, const S* src)
{
    return TqAudio_GetCopyFunction2(tq::audio::TypeOf(dst), tq::audio::TypeOf(src));
}

template <tq::audio::AudioFormatRecord D, tq::audio::AudioFormatRecord S>
inline TQAUDIO_COPYCHANNELSFUNC TqAudio_GetCopyChannelsFunction(const D* dst, const S* src)
{
    return TqAudio_GetCopyChannelsFunction2(tq::audio::TypeOf(dst), tq::audio::TypeOf(src));
}

template <tq::audio::AudioFormatRecord D, tq::audio::AudioFormatRecord S>
inline HRESULT TqAudio_Copy(const D* dstFmt, void* dst, const S* srcFmt, const void* src,
                            long frames, float gain)
{
    if (frames == 0) return S_OK;
    if (!dstFmt || !srcFmt) return E_POINTER;
    return TqAudio_CopyByType(tq::audio::TypeOf(dstFmt), dst, tq::audio::TypeOf(srcFmt), src,
                              tq::audio::ChannelsOf(srcFmt), frames, gain);
}

template <tq::audio::AudioFormatRecord D, tq::audio::AudioFormatRecord S>
inline HRESULT TqAudio_CopyChannels(const D* dstFmt, void* dst, const S* srcFmt, const void* src,
                                    long frames, const int* channelMap)
{
    if (frames == 0) return S_OK;
    if (!dstFmt || !srcFmt) return E_POINTER;
    return TqAudio_CopyChannelsByType(tq::audio::TypeOf(dstFmt), tq::audio::ChannelsOf(dstFmt), dst,
                                      tq::audio::TypeOf(srcFmt), tq::audio::ChannelsOf(srcFmt), src,
                                      frames, channelMap);
}
#endif
