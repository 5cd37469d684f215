// What the channel functions share: the layout of an interleaved buffer, argument checks and
// sample moves by size. Internal to kernel/audio.
#pragma once

#include <stddef.h>
#include <string.h>

#include <type_traits>

#include "tqsampletype.h"
#include "tqwaveformat.h"

namespace tq::audio {

// An interleaved buffer: sampleBytes is 0 for a type without a plain sample size.
struct ChannelLayout
{
    TQSAMPLETYPE type = TQSAMPLE_NONE;
    UINT channels = 0;
    size_t sampleBytes = 0;

    size_t FrameBytes() const { return sampleBytes * channels; }
    template <size_t N>
    bool HasType(const TQSAMPLETYPE (&types)[N]) const
    {
        for (TQSAMPLETYPE t : types)
        {
            if (t == type) return true;
        }
        return false;
    }
};

inline ChannelLayout LayoutOf(TQSAMPLETYPE type, UINT channels)
{
    return {type, channels, TqAudio_BytesFromSampleType(type)};
}

// The layout a header describes. E_POINTER; E_INVALIDARG for no channels, or a block alignment
// that is not the channel count times the sample size of a type that has one.
inline HRESULT LayoutOf(const WAVEFORMATEX* wfx, ChannelLayout* layout)
{
    if (!wfx) return E_POINTER;
    *layout = LayoutOf(TqAudio_GetSampleType(wfx), wfx->nChannels);
    if (layout->channels == 0) return E_INVALIDARG;
    if (layout->sampleBytes && wfx->nBlockAlign != layout->FrameBytes()) return E_INVALIDARG;
    return S_OK;
}

// The last check before work: true when there are frames and the buffers are present. Otherwise
// *result is what the caller returns: S_OK for 0 frames, E_INVALIDARG for negative frames, or
// E_POINTER.
inline bool HasWork(long frames, bool buffersPresent, HRESULT* result)
{
    *result = frames < 0 ? E_INVALIDARG : frames == 0 ? S_OK : buffersPresent ? S_OK : E_POINTER;
    return frames > 0 && buffersPresent;
}

// The same-type block copy at gain 1.0 of count samples. E_NOTIMPL when the type has none.
HRESULT SameTypeBlockCopy(void* dst, const void* src, TQSAMPLETYPE type, long frames,
                          UINT channels);

// Calls fn with std::integral_constant<size_t, N> for a sample size N of 1, 2, 3, 4 or 8, so
// that moves compile to fixed-size copies. False for any other size.
template <class Fn>
inline bool WithSampleSize(size_t bytes, const Fn& fn)
{
    switch (bytes)
    {
    case 1:
        fn(std::integral_constant<size_t, 1>{});
        return true;
    case 2:
        fn(std::integral_constant<size_t, 2>{});
        return true;
    case 3:
        fn(std::integral_constant<size_t, 3>{});
        return true;
    case 4:
        fn(std::integral_constant<size_t, 4>{});
        return true;
    case 8:
        fn(std::integral_constant<size_t, 8>{});
        return true;
    default:
        return false;
    }
}

// The silence byte of a block type: offset binary 8-bit is the only one that is not zero.
inline BYTE SilenceByte(TQSAMPLETYPE type)
{
    return type == TQSAMPLE_PCM8 ? 0x80 : 0x00;
}

} // namespace tq::audio
