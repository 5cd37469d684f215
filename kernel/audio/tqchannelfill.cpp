// Filling buffers: silence of a format, silence of one channel, and one frame repeated.
#include "tqchannels.h"

#include <stdint.h>

#include "tqchannellayout.h"
#include "tqframeloop.h"
#include "tqsamplecopy.h"

namespace tq::audio {
namespace {

// The silence byte of a header: S_OK with *value, S_FALSE when the header is extensible with a
// subformat that has no silence here (nothing is written for it), E_FAIL for any other tag.
HRESULT SilenceOfHeader(const WAVEFORMATEX* wfx, BYTE* value)
{
    const bool eightBit = wfx->wBitsPerSample == 8;
    switch (wfx->wFormatTag)
    {
    case WAVE_FORMAT_PCM:
    case WAVE_FORMAT_TQ_PCM_BIGENDIAN:
        *value = eightBit ? 0x80 : 0x00;
        return S_OK;
    case WAVE_FORMAT_IEEE_FLOAT:
    case WAVE_FORMAT_TQ_PCM_UNPACKED:
    case WAVE_FORMAT_TQ_PCM_SIGNED:
        *value = 0x00;
        return S_OK;
    case WAVE_FORMAT_EXTENSIBLE:
    {
        WORD tag = 0;
        if (!TqAudio_GetFormatTagExtensible(reinterpret_cast<const WAVEFORMATEXTENSIBLE*>(wfx),
                                            &tag))
            return S_FALSE;
        *value = tag == WAVE_FORMAT_PCM && eightBit ? 0x80 : 0x00;
        return S_OK;
    }
    default:
        return E_FAIL;
    }
}

// The silence byte of one channel by tag and bits; extensible headers have none.
HRESULT SilenceOfChannel(const WAVEFORMATEX* wfx, BYTE* value)
{
    const WORD bits = wfx->wBitsPerSample;
    switch (wfx->wFormatTag)
    {
    case WAVE_FORMAT_PCM:
    case WAVE_FORMAT_TQ_PCM_UNPACKED:
    case WAVE_FORMAT_TQ_PCM_SIGNED:
    case WAVE_FORMAT_TQ_PCM_BIGENDIAN:
        if (bits == 8)
        {
            *value = wfx->wFormatTag == WAVE_FORMAT_TQ_PCM_SIGNED ? 0x00 : 0x80;
            return S_OK;
        }
        *value = 0x00;
        return bits == 16 || bits == 24 || bits == 32 ? S_OK : E_FAIL;
    case WAVE_FORMAT_IEEE_FLOAT:
        *value = 0x00;
        return bits == 32 || bits == 64 ? S_OK : E_FAIL;
    default:
        return E_FAIL;
    }
}

// Bytes of frames frames of blockAlign bytes; false when that does not fit in memory.
bool FillSize(WORD blockAlign, long frames, size_t* size)
{
    const uint64_t bytes = static_cast<uint64_t>(blockAlign) * static_cast<uint64_t>(frames);
    if (bytes > SIZE_MAX) return false;
    *size = static_cast<size_t>(bytes);
    return true;
}

// The buffer types each sample type of a stereo frame converts into; the rest of each row is
// TQSAMPLE_NONE. Any other pair fills silence.
struct FillConversions
{
    TQSAMPLETYPE sample;
    TQSAMPLETYPE buffers[6];
};
constexpr FillConversions kFillConversions[] = {
    {TQSAMPLE_PCM16,
     {TQSAMPLE_PCM24, TQSAMPLE_PCM32, TQSAMPLE_FLOAT32, TQSAMPLE_FLOAT64, TQSAMPLE_UNPACKED24}},
    {TQSAMPLE_PCM24,
     {TQSAMPLE_PCM16, TQSAMPLE_PCM32, TQSAMPLE_FLOAT32, TQSAMPLE_FLOAT64, TQSAMPLE_UNPACKED24}},
    {TQSAMPLE_FLOAT32,
     {TQSAMPLE_PCM16, TQSAMPLE_PCM24, TQSAMPLE_PCM32, TQSAMPLE_FLOAT32, TQSAMPLE_FLOAT64,
      TQSAMPLE_UNPACKED24}},
    {TQSAMPLE_FLOAT64,
     {TQSAMPLE_PCM16, TQSAMPLE_PCM24, TQSAMPLE_PCM32, TQSAMPLE_FLOAT32, TQSAMPLE_FLOAT64,
      TQSAMPLE_UNPACKED24}},
    {TQSAMPLE_UNPACKED24,
     {TQSAMPLE_PCM16, TQSAMPLE_PCM24, TQSAMPLE_PCM32, TQSAMPLE_FLOAT32, TQSAMPLE_FLOAT64}},
};

TQAUDIO_COPYFUNC FillConversion(TQSAMPLETYPE bufferType, TQSAMPLETYPE sampleType)
{
    if (bufferType == TQSAMPLE_NONE) return nullptr;
    for (const FillConversions& row : kFillConversions)
    {
        if (row.sample != sampleType) continue;
        for (TQSAMPLETYPE buffer : row.buffers)
        {
            if (buffer == bufferType) return TqAudio_GetCopyFunction2(bufferType, sampleType);
        }
    }
    return nullptr;
}

void RepeatFrame(void* dst, size_t frameBytes, const void* frame, size_t frameUsed, long frames)
{
    auto* d = static_cast<BYTE*>(dst);
    ForEachFrame(frames, [&](size_t i) { memcpy(d + i * frameBytes, frame, frameUsed); });
}

} // namespace
} // namespace tq::audio

using namespace tq::audio;

extern "C" HRESULT TqAudio_FillSilence(const WAVEFORMATEX* wfx, void* buffer, long frames)
{
    if (!wfx) return E_POINTER;
    if (frames < 0) return E_INVALIDARG;
    size_t size = 0;
    if (!FillSize(wfx->nBlockAlign, frames, &size)) return E_INVALIDARG;
    if (size == 0) return S_OK;
    BYTE value = 0;
    const HRESULT hr = SilenceOfHeader(wfx, &value);
    if (hr != S_OK) return SUCCEEDED(hr) ? S_OK : hr;
    if (!buffer) return E_POINTER;
    memset(buffer, value, size);
    return S_OK;
}

extern "C" HRESULT TqAudio_FillSilenceForRecord(const _tqwaveformat* fmt, void* buffer, long frames)
{
    if (!fmt) return E_POINTER;
    if (frames < 0) return E_INVALIDARG;
    size_t size = 0;
    if (!FillSize(fmt->nBlockAlign, frames, &size)) return E_INVALIDARG;
    if (size == 0) return S_OK;
    if (!TqAudio_BytesFromSampleType(fmt->Type())) return E_FAIL;
    if (!buffer) return E_POINTER;
    memset(buffer, SilenceByte(fmt->Type()), size);
    return S_OK;
}

extern "C" HRESULT TqAudio_FillSilenceChannel(const WAVEFORMATEX* wfx, void* buffer, UINT channel,
                                              long frames)
{
    if (!wfx) return E_POINTER;
    if (channel >= wfx->nChannels) return E_FAIL;
    if (frames < 0) return E_INVALIDARG;
    if (frames == 0) return S_OK;
    if (wfx->nChannels < 2) return TqAudio_FillSilence(wfx, buffer, frames);
    BYTE value = 0;
    const HRESULT hr = SilenceOfChannel(wfx, &value);
    if (FAILED(hr)) return hr;
    const size_t sampleBytes = wfx->nBlockAlign / wfx->nChannels;
    if (sampleBytes == 0) return E_INVALIDARG;
    if (!buffer) return E_POINTER;
    auto* b = static_cast<BYTE*>(buffer) + channel * sampleBytes;
    const size_t frameBytes = wfx->nBlockAlign;
    ForEachFrame(frames, [&](size_t i) { memset(b + i * frameBytes, value, sampleBytes); });
    return S_OK;
}

extern "C" HRESULT TqAudio_FillWithSample(const WAVEFORMATEX* dstWfx, void* dst,
                                          const WAVEFORMATEX* sampleWfx, const void* sample,
                                          long frames)
{
    ChannelLayout to, from;
    HRESULT hr = LayoutOf(dstWfx, &to);
    if (SUCCEEDED(hr)) hr = LayoutOf(sampleWfx, &from);
    if (FAILED(hr)) return hr;
    if (to.type == from.type && to.sampleBytes)
    {
        if (!HasWork(frames, dst && sample, &hr)) return hr;
        RepeatFrame(dst, to.FrameBytes(), sample, to.FrameBytes(), frames);
        return S_OK;
    }
    const TQAUDIO_COPYFUNC convert = FillConversion(to.type, from.type);
    if (!convert)
    {
        hr = TqAudio_FillSilence(dstWfx, dst, frames);
        return FAILED(hr) ? hr : S_OK;
    }
    if (!HasWork(frames, dst && sample, &hr)) return hr;
    // The pair is converted once; every frame gets the same bytes.
    BYTE pair[2 * 8];
    const UINT written = to.channels < 2 ? to.channels : 2;
    for (UINT c = 0; c < written; ++c)
    {
        const UINT source = c < from.channels ? c : 0;
        convert(pair + c * to.sampleBytes,
                static_cast<const BYTE*>(sample) + source * from.sampleBytes, 1, 1.0f);
    }
    RepeatFrame(dst, to.FrameBytes(), pair, written * to.sampleBytes, frames);
    return S_OK;
}
