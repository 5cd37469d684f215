// Display texts of audio formats: sample types, bit depths, channel layouts, format tags, codec
// names and whole formats, in the kernel language.
#pragma once

#include "tqkernelapi.h"
#include "tqsampletype.h"
#include "tqwaveformat.h"

// Text functions write at most size characters including the terminator and always terminate
// a text they write. A text cut to fit returns TQ_E_BUFFERTOOSMALL; a null dst or a size below 1
// is E_INVALIDARG, and nothing is written.

// "16 Bit", "32 Bit (IEEE Float)", "24 Bit (Unpacked)", "8 Bit (Signed)", "24 Bit (MAC)" for
// big-endian, "16 Bit (RA)" for right-aligned. TQSAMPLE_NONE gives an empty text; an unknown code
// an empty text and E_INVALIDARG.
TQKERNEL_API HRESULT TqAudio_GetSampleTypeText(TQSAMPLETYPE type, wchar_t* dst, int size);
// "%d Bit" alone. significantBits counts what carries the value: the mantissa of a float (24 and
// 53) and the value of a right-aligned word (16 and 24) instead of the container's 32 and 64.
TQKERNEL_API HRESULT TqAudio_GetBitDepthText(TQSAMPLETYPE type, wchar_t* dst, int size,
                                             BOOL significantBits);
// "Mono", "Stereo", "5.1", "7.1" or a layout such as "3/2 (L, C, R, Ls, Rs)" with " + LFE", for
// the channel counts and speaker masks that name one exactly; else "6 Channel". A mask of 0 names
// only mono and stereo.
TQKERNEL_API HRESULT TqAudio_GetChannelsText(UINT channels, DWORD channelMask, wchar_t* dst,
                                             int size);

// The tag the codec tables know a format by: aliases of one codec map to one tag. Unlisted tags
// come back unchanged.
TQKERNEL_API WORD TqAudio_ConvertToCanonicalWaveFormatTag(WORD tag);
// The codec's name: with shortOnly FALSE the long name where there is one, else the short one;
// an alias is named by its canonical tag. A tag with no name gives "0x" and the tag in decimal
// ("0x12345" for tag 12345), wrapped as "'0x12345' Compression" when shortOnly is FALSE.
// Returns 0 when a table named the tag, 1 when it did not; dst may be null to ask only that.
TQKERNEL_API int TqAudio_GetCompressionTypeName(WORD tag, wchar_t* dst, int size, BOOL shortOnly);
// "PCM", "PCM (float)", "PCM (unpacked)", "PCM (signed)", "PCM (big endian)"; any other tag is
// named by the system's audio compression manager. "Unknown" and E_FAIL when it cannot.
TQKERNEL_API HRESULT TqAudio_GetTagText(WORD tag, wchar_t* dst, int size);

// Rate, bits and channels of an uncompressed header ("44,100 Hz, 16 Bit, Stereo" in the
// locale's form); a compressed one is described by the audio compression manager. "Unknown" and
// E_FAIL when it cannot.
TQKERNEL_API HRESULT TqAudio_GetAttribsText(const WAVEFORMATEX* wfx, wchar_t* dst, int size);
TQKERNEL_API HRESULT TqAudio_GetAttribsTextForRecord(const _tqwaveformat* fmt, wchar_t* dst,
                                                     int size);

// Flags of TqAudio_GetFormatText.
#ifdef __cplusplus
enum TQFORMATTEXT_FLAGS : unsigned int
#else
enum TQFORMATTEXT_FLAGS
#endif
{
    // A compressed format is described as PCM of its rate and channels: 16-bit up to 16 bits per
    // sample, else 24-bit.
    TQFMTTEXT_AS_PCM = 1,
    // The significant bits instead of the sample type, and no tag name for PCM and float.
    TQFMTTEXT_BIT_DEPTH = 2,
    // No tag name.
    TQFMTTEXT_NO_TAG = 4,
    // The long codec name.
    TQFMTTEXT_LONG_TAG = 8,
    // A compressed format is described by TqAudio_GetAttribsText alone.
    TQFMTTEXT_CODEC_ATTRIBS = 16,
    // A compressed format starts with its bit rate where that is not the plain PCM rate.
    TQFMTTEXT_BITRATE = 32,
};
typedef enum TQFORMATTEXT_FLAGS TQFORMATTEXT_FLAGS;

// The parts of a format joined by the locale's list separator, each only where it says
// something: bit rate, sample rate, sample type or depth, channels, tag name.
// "44,100 Hz, 16 Bit, Stereo, PCM" for CD audio with flags 0. S_OK, TQ_E_BUFFERTOOSMALL,
// E_INVALIDARG, E_POINTER; with TQFMTTEXT_CODEC_ATTRIBS, what TqAudio_GetAttribsText returns.
TQKERNEL_API HRESULT TqAudio_GetFormatText(const _tqwaveformat* fmt, wchar_t* dst, int size,
                                           DWORD flags);

#ifdef __cplusplus
inline HRESULT TqAudio_GetSampleTypeText(const _tqwaveformat& fmt, wchar_t* dst, int size)
{
    return TqAudio_GetSampleTypeText(fmt.Type(), dst, size);
}
inline HRESULT TqAudio_GetBitDepthText(const _tqwaveformat& fmt, wchar_t* dst, int size,
                                       BOOL significantBits)
{
    return TqAudio_GetBitDepthText(fmt.Type(), dst, size, significantBits);
}
inline HRESULT TqAudio_GetAttribsText(const _tqwaveformat& fmt, wchar_t* dst, int size)
{
    return TqAudio_GetAttribsTextForRecord(&fmt, dst, size);
}
#endif
