// Channel operations on interleaved buffers: moving, muting, swapping and mixing channels, and
// silence.
#pragma once

#include "tqkernelapi.h"
#include "tqsampletype.h"
#include "tqwaveformat.h"

// Buffers are interleaved, channel index fastest, frame stride nBlockAlign. Functions that move or
// mix samples by a header's type need nBlockAlign to be nChannels times the type's sample size
// (E_INVALIDARG otherwise); the FillSilence functions take nBlockAlign as it stands. Results:
// S_OK, also for 0 frames; E_FAIL for a type or channel count the function does not support;
// E_NOTIMPL for a pair of types without a copy function; E_INVALIDARG for a channel out of range
// or negative frames; E_POINTER.

// 128.0, 32768.0, 8388608.0, 2147483648.0 for 8, 16, 24, 32 bits; 1.0 for anything else.
TQKERNEL_API double TqAudio_GetNormalizeFactor(int bits);

// ---------------------------------------------------------------------------------------------
// Single channels

// One channel of src into the plane dst. A one-channel source is a block copy (E_NOTIMPL where
// the type has none); otherwise any of the eleven block types.
TQKERNEL_API HRESULT TqAudio_ExtractChannel(void* dst, UINT channel, const void* src,
                                            const WAVEFORMATEX* srcWfx, long frames);
TQKERNEL_API HRESULT TqAudio_ExtractChannelByType(void* dst, UINT channel, const void* src,
                                                  TQSAMPLETYPE type, UINT channels, long frames);
// Channels firstChannel and firstChannel + 1 of src into the stereo buffer dst: 8-bit, 16-bit,
// 24-bit, 32-bit, single and double; a two-channel source is a block copy of all.
TQKERNEL_API HRESULT TqAudio_ExtractChannelPair(void* dst, UINT firstChannel, const void* src,
                                                const WAVEFORMATEX* srcWfx, long frames);
// The plane src into one channel of dst; any of the eleven block types.
TQKERNEL_API HRESULT TqAudio_InsertChannel(void* dst, TQSAMPLETYPE type, UINT channels,
                                           UINT channel, const void* src, long frames);

// Silence of the type into one channel: 128 for unsigned 8-bit, zero bytes for the other block
// types. 0 or fewer frames are S_OK; E_FAIL outside the block types.
TQKERNEL_API HRESULT TqAudio_MuteChannel(void* buffer, const WAVEFORMATEX* wfx, UINT channel,
                                         long frames);
TQKERNEL_API HRESULT TqAudio_MuteChannelForRecord(void* buffer, const _tqwaveformat* fmt,
                                                  UINT channel, long frames);
TQKERNEL_API HRESULT TqAudio_MuteChannelByType(void* buffer, TQSAMPLETYPE type, UINT channels,
                                               UINT channel, long frames);

// Sample fromChannel over sample toChannel of each frame: 8-bit, 16-bit, 24-bit, 32-bit, single
// and double. One channel is S_OK and does nothing.
TQKERNEL_API HRESULT TqAudio_CopyChannelToChannel(void* buffer, const WAVEFORMATEX* wfx,
                                                  UINT fromChannel, UINT toChannel, long frames);

// Every channel of each dst frame gets the sample of channel in the src frame. Both sides must
// have the same type: E_NOTIMPL otherwise. A one-channel dst is TqAudio_ExtractChannel.
TQKERNEL_API HRESULT TqAudio_CopyChannelToAll(void* dst, const void* src,
                                              const WAVEFORMATEX* srcWfx,
                                              const WAVEFORMATEX* dstWfx, UINT channel,
                                              long frames);
// The same, with E_INVALIDARG for different or unknown types. dst may be src: the frames are
// walked in the order that reads each frame before it is overwritten.
TQKERNEL_API HRESULT TqAudio_CopyChannelToMultiMono(void* dst, const WAVEFORMATEX* dstWfx,
                                                    const void* src, const WAVEFORMATEX* srcWfx,
                                                    UINT channel, long frames);
TQKERNEL_API HRESULT TqAudio_CopyChannelToMultiMono2(void* dst, UINT dstChannels, const void* src,
                                                     UINT srcChannels, UINT channel, long frames,
                                                     TQSAMPLETYPE type);

// Exchanges the first two samples of each frame; further channels keep their place and, in the
// copying form, are not written. 8-bit, 16-bit, 24-bit, 32-bit, single and double. One channel
// is S_OK and copies nothing.
TQKERNEL_API HRESULT TqAudio_SwapStereoChannels(void* buffer, const WAVEFORMATEX* wfx, long frames);
TQKERNEL_API HRESULT TqAudio_CopySwapStereoChannels(void* dst, const void* src,
                                                    const WAVEFORMATEX* wfx, long frames);

// ---------------------------------------------------------------------------------------------
// Mixes

// Every channel of a frame gets the frame's average (dst may be src): 8-bit, 16-bit and 32-bit
// by integer division (32-bit sums wrap), 24-bit by the rounding rule, single and double in
// double precision. One channel is a block copy.
TQKERNEL_API HRESULT TqAudio_MonoChannel(void* dst, const void* src, const WAVEFORMATEX* wfx,
                                         long frames);

// Changes the channel count of a buffer of the source's type; dst may be src. Equal counts are a
// block copy. Down-mixes go to one channel only: ChannelChange keeps the sum, so loud material
// clips, ChannelChangeAvg takes the average; the unpacked 24-bit and right-aligned types are
// E_FAIL. Up-mixes come from one channel only and copy it to every channel. E_FAIL otherwise.
TQKERNEL_API HRESULT TqAudio_ChannelChange(void* dst, UINT dstChannels, const void* src,
                                           const WAVEFORMATEX* srcWfx, long frames);
TQKERNEL_API HRESULT TqAudio_ChannelChangeAvg(void* dst, UINT dstChannels, const void* src,
                                              const WAVEFORMATEX* srcWfx, long frames);

// ---------------------------------------------------------------------------------------------
// Silence

// nBlockAlign times frames bytes of silence: 128 for 8-bit PCM (also big-endian tagged and
// extensible), zero for the other PCM and float formats. An extensible header of another
// subformat is S_OK and nothing is written; other tags are E_FAIL.
TQKERNEL_API HRESULT TqAudio_FillSilence(const WAVEFORMATEX* wfx, void* buffer, long frames);
// The same by sample type; compressed records are E_FAIL.
TQKERNEL_API HRESULT TqAudio_FillSilenceForRecord(const _tqwaveformat* fmt, void* buffer,
                                                  long frames);
// Silence into one channel, chosen by tag and bits: PCM and the system's PCM tags at 8, 16, 24,
// 32 bits, float at 32 and 64 bits. Fewer than two channels is TqAudio_FillSilence; E_FAIL for a
// channel out of range and for extensible headers of two or more channels.
TQKERNEL_API HRESULT TqAudio_FillSilenceChannel(const WAVEFORMATEX* wfx, void* buffer, UINT channel,
                                                long frames);

// Fills frames frames of dst with one frame. With equal types sample is a whole frame of dst's
// format. Otherwise sample is a stereo frame (a mono one serves both sides) whose two samples are
// converted at gain 1.0 into the first two channels of every frame, the others left as they are.
// Conversions exist from 16-bit, 24-bit, unpacked 24-bit, single and double samples into buffers
// of those types and of 32-bit; any other pair fills silence instead, and fails only where
// TqAudio_FillSilence does.
TQKERNEL_API HRESULT TqAudio_FillWithSample(const WAVEFORMATEX* dstWfx, void* dst,
                                            const WAVEFORMATEX* sampleWfx, const void* sample,
                                            long frames);

#ifdef __cplusplus
inline HRESULT TqAudio_ExtractChannel(void* dst, UINT channel, const void* src, TQSAMPLETYPE type,
                                      UINT channels, long frames)
{
    return TqAudio_ExtractChannelByType(dst, channel, src, type, channels, frames);
}
inline HRESULT TqAudio_MuteChannel(void* buffer, const _tqwaveformat* fmt, UINT channel,
                                   long frames)
{
    return TqAudio_MuteChannelForRecord(buffer, fmt, channel, frames);
}
inline HRESULT TqAudio_MuteChannel(void* buffer, TQSAMPLETYPE type, UINT channels, UINT channel,
                                   long frames)
{
    return TqAudio_MuteChannelByType(buffer, type, channels, channel, frames);
}
inline HRESULT TqAudio_FillSilence(const _tqwaveformat* fmt, void* buffer, long frames)
{
    return TqAudio_FillSilenceForRecord(fmt, buffer, frames);
}
#endif
