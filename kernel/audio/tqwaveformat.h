// Wave format records: the kernel's _tqwaveformat, and its conversions to and from the platform's
// WAVEFORMATEX and WAVEFORMATEXTENSIBLE headers.
#pragma once

#include "tqkernelapi.h"
#include "tqsampletype.h"

#include <mmreg.h>

// What kind of platform header a _tqwaveformat becomes when it is written out.
#ifdef __cplusplus
enum TQWAVEFORMAT_COPY_DEST : unsigned int
#else
enum TQWAVEFORMAT_COPY_DEST
#endif
{
    // Extensible if there is room for it and the source was extensible or has a non-default mask.
    TQWFXDEST_AUTO = 0,
    // Extensible only because of a non-default mask.
    TQWFXDEST_PLAIN_IF_DEFAULT = 1,
    // The mask of a plain sample format is dropped: never extensible for those.
    TQWFXDEST_PLAIN = 2,
    // Extensible for more than two channels.
    TQWFXDEST_EXTENSIBLE_MULTICHANNEL = 3,
    // Always extensible.
    TQWFXDEST_EXTENSIBLE = 4,
};
typedef enum TQWAVEFORMAT_COPY_DEST TQWAVEFORMAT_COPY_DEST;

#define TQWAVEFORMAT_FLAG_COMPRESSED 0x08u // wFormatTag and wBitsPerSample are valid
#define TQWAVEFORMAT_FLAG_EXTENSIBLE 0x10u // the header it was read from was extensible

// Size of the fixed part; a record with a codec tail also has cbExtra and abExtra.
#define TQWAVEFORMAT_FIXED_SIZE 32u
// Offset of abExtra, and the most tail bytes a record keeps.
#define TQWAVEFORMAT_EXTRA_OFFSET 34u
#define TQWAVEFORMAT_MAX_EXTRA 1024u

typedef struct _tqwaveformat _tqwaveformat;

// Sample types of platform headers. An extensible header counts only with a subformat derived from
// a tag; its cbSize is not looked at, so the caller must pass 40 readable bytes.
TQKERNEL_API TQSAMPLETYPE TqAudio_GetSampleType(const WAVEFORMATEX* wfx);

// TRUE unless the header is a plain sample format this kernel can copy.
TQKERNEL_API BOOL TqAudio_IsCompressed(const WAVEFORMATEX* wfx);
// The extensible half of that test: a short cbSize or a subformat other than PCM or float.
TQKERNEL_API BOOL TqAudio_IsCompressedExtensible(const WAVEFORMATEXTENSIBLE* wfext);
// The tag a header stands for: the subformat's tag for an extensible one; 0 for null, or for an
// extensible subformat that is not derived from a tag.
TQKERNEL_API WORD TqAudio_GetWaveFormatTag(const WAVEFORMATEX* wfx);
// For an extensible header with the exact PCM or float subformat: writes 1 or 3 and answers
// TRUE. Anything else answers FALSE and writes nothing.
TQKERNEL_API BOOL TqAudio_GetFormatTagExtensible(const WAVEFORMATEXTENSIBLE* wfext, WORD* tag);
// Same channels, rate, bits and tag. FALSE when either is null.
TQKERNEL_API BOOL TqAudio_IsEqualFormat(const WAVEFORMATEX* a, const WAVEFORMATEX* b);
// Repairs a PCM header: 20 bits become 24, and the block alignment follows the bits. TRUE when
// anything changed. Other tags are left alone.
TQKERNEL_API BOOL TqAudio_FixBadWfx(WAVEFORMATEX* wfx);

// A plain header for a sample type (cbSize 0). Returns wfx.
TQKERNEL_API WAVEFORMATEX* TqAudio_InitWfx(WAVEFORMATEX* wfx, DWORD samplesPerSec,
                                           TQSAMPLETYPE type, WORD channels);
// A header for any tag: extensible, with the mask, when destSize holds 40 bytes and a non-zero
// mask is not the default one or there are 3 or more channels; else plain, and the bytes beyond
// the 18 are left alone. A mask with more speakers than channels becomes the default mask.
// Returns wfx.
TQKERNEL_API WAVEFORMATEX* TqAudio_InitWfxFlex(WAVEFORMATEX* wfx, WORD formatTag,
                                               DWORD samplesPerSec, WORD bitsPerSample,
                                               WORD channels, DWORD channelMask, UINT destSize);
// Copies cbSize + 18 bytes of wfx, at most 40. Returns wfext.
TQKERNEL_API WAVEFORMATEXTENSIBLE* TqAudio_CopyWfxToWfExt(const WAVEFORMATEX* wfx,
                                                          WAVEFORMATEXTENSIBLE* wfext);
// Writes the plain form of wfext (18 bytes; an extensible PCM or float header becomes tag 1 or 3
// with cbSize 0). Returns wfx, or null, leaving wfx untouched, for any other subformat.
TQKERNEL_API WAVEFORMATEX* TqAudio_CopyWfExtToWfx(const WAVEFORMATEXTENSIBLE* wfext,
                                                  WAVEFORMATEX* wfx);

// Writes a record as a platform header of at most dstSize bytes, the kind chosen by dest. A codec
// tail is cut to what fits. S_OK; E_POINTER; E_INVALIDARG for an unknown dest;
// TQ_E_BUFFERTOOSMALL, nothing written, when dstSize cannot hold the header dest asks for.
TQKERNEL_API HRESULT TqAudio_GeneralCopyWfx(WAVEFORMATEX* dst, UINT dstSize,
                                            const _tqwaveformat* fmt, TQWAVEFORMAT_COPY_DEST dest);
// Copies a record into one of dstSize bytes (0 counts as 32), zero-filling the rest; a tail that
// does not fit is dropped. S_OK, E_POINTER, E_INVALIDARG.
TQKERNEL_API HRESULT TqAudio_GeneralCopyTqWaveFormat(_tqwaveformat* dst, UINT dstSize,
                                                     const _tqwaveformat* src,
                                                     TQWAVEFORMAT_COPY_DEST dest);
// Rewrites a platform header as the kind dest asks for, through a 128-byte record (so at most 94
// tail bytes survive).
TQKERNEL_API HRESULT TqAudio_CopyWfx(WAVEFORMATEX* dst, UINT dstSize, const WAVEFORMATEX* src,
                                     TQWAVEFORMAT_COPY_DEST dest);
TQKERNEL_API HRESULT TqAudio_CopyWfExt(WAVEFORMATEXTENSIBLE* wfext, const WAVEFORMATEX* wfx,
                                       TQWAVEFORMAT_COPY_DEST dest);

// A zero-filled, locked block of the movable global heap holding the header; the caller unlocks
// and frees it (GlobalHandle, GlobalUnlock, GlobalFree). Null for null input or no memory.
TQKERNEL_API WAVEFORMATEX* TqAudio_AllocAndCopyWfx(const WAVEFORMATEX* wfx,
                                                   TQWAVEFORMAT_COPY_DEST dest);
TQKERNEL_API WAVEFORMATEX* TqAudio_AllocAndCopyWfxFromRecord(const _tqwaveformat* fmt,
                                                             TQWAVEFORMAT_COPY_DEST dest);

// The record's own operations; the members of _tqwaveformat call these.
// Clears the record (32 bytes, or structSize when that is 33 or more) and describes a plain
// sample format.
TQKERNEL_API void TqWaveFormat_Init(_tqwaveformat* fmt, DWORD samplesPerSec, TQSAMPLETYPE type,
                                    WORD channels, DWORD channelMask, UINT structSize);
// The same from a tag and bits; a tag and bits that name no sample type make a compressed record.
TQKERNEL_API void TqWaveFormat_InitAsWfx(_tqwaveformat* fmt, WORD formatTag, DWORD samplesPerSec,
                                         WORD bitsPerSample, WORD channels, DWORD channelMask,
                                         UINT structSize);
// Reads a platform header; a codec tail is kept as far as structSize allows. E_POINTER.
TQKERNEL_API HRESULT TqWaveFormat_InitFromWfx(_tqwaveformat* fmt, UINT structSize,
                                              const WAVEFORMATEX* wfx);
// Recomputes block alignment and byte rate of a plain sample format; returns nBlockAlign.
TQKERNEL_API WORD TqWaveFormat_UpdateBlockAlign(_tqwaveformat* fmt);
// Equality: a mask of 0 equals the default mask of the channel count; compressed records also
// compare tag, byte rate, bits and the codec tail.
TQKERNEL_API BOOL TqWaveFormat_IsEqual(const _tqwaveformat* a, const _tqwaveformat* b);
TQKERNEL_API BOOL TqWaveFormat_IsEqualWfx(const _tqwaveformat* fmt, const WAVEFORMATEX* wfx);

// The kernel's audio format record, of variable length. cbStruct is 32 plus cbExtra once
// initialised: it does not count the cbExtra word itself, so a record with a tail occupies
// cbStruct + 2 bytes, and cbExtra exists only when cbStruct is above 32.
#pragma pack(push, 2)
struct _tqwaveformat
{
    UINT32 cbStruct;
    UINT32 sampleType; // TQSAMPLETYPE; 0 when compressed
    UINT32 nSamplesPerSec;
    UINT16 nChannels;
    UINT16 nBlockAlign;
    UINT32 dwChannelMask; // 0 means the default mask of nChannels
    UINT32 dwFlags;       // TQWAVEFORMAT_FLAG_*
    UINT16 wFormatTag;    // valid with TQWAVEFORMAT_FLAG_COMPRESSED
    UINT16 wBitsPerSample;
    UINT32 nAvgBytesPerSec;
    UINT16 cbExtra; // length of abExtra, when cbStruct is above 32
    BYTE abExtra[]; // codec bytes that followed the platform header

#ifdef __cplusplus
    void Init(DWORD samplesPerSec, TQSAMPLETYPE type, WORD channels, DWORD channelMask = 0,
              UINT structSize = TQWAVEFORMAT_FIXED_SIZE)
    {
        TqWaveFormat_Init(this, samplesPerSec, type, channels, channelMask, structSize);
    }
    void InitAsWfx(WORD formatTag, DWORD samplesPerSec, WORD bitsPerSample, WORD channels,
                   DWORD channelMask = 0, UINT structSize = TQWAVEFORMAT_FIXED_SIZE)
    {
        TqWaveFormat_InitAsWfx(this, formatTag, samplesPerSec, bitsPerSample, channels, channelMask,
                               structSize);
    }
    HRESULT Init(UINT structSize, const WAVEFORMATEX& wfx)
    {
        return TqWaveFormat_InitFromWfx(this, structSize, &wfx);
    }
    WORD UpdateBlockAlign()
    {
        return TqWaveFormat_UpdateBlockAlign(this);
    }
    bool IsCompressed() const
    {
        return (dwFlags & TQWAVEFORMAT_FLAG_COMPRESSED) != 0;
    }
    WORD FormatTag() const
    {
        return IsCompressed() ? wFormatTag : TqAudio_FormatTagFromSampleType(Type());
    }
    WORD BitsPerSample() const
    {
        return IsCompressed() ? wBitsPerSample : TqAudio_BitsFromSampleType(Type());
    }
    WORD BytesPerSample() const
    {
        return IsCompressed() ? static_cast<WORD>(wBitsPerSample >> 3)
                              : TqAudio_BytesFromSampleType(Type());
    }
    TQSAMPLETYPE Type() const
    {
        return static_cast<TQSAMPLETYPE>(sampleType);
    }
    bool operator==(const _tqwaveformat& other) const
    {
        return TqWaveFormat_IsEqual(this, &other) != FALSE;
    }
    bool operator==(const WAVEFORMATEX& wfx) const
    {
        return TqWaveFormat_IsEqualWfx(this, &wfx) != FALSE;
    }
#endif
};
#pragma pack(pop)

#ifdef __cplusplus
// Room for a WAVEFORMATEXTENSIBLE and a short codec tail, 136 bytes in all.
struct _tqwaveformat_wfxplus
{
    WAVEFORMATEX wfx;
    BYTE more[118];

    HRESULT Init(const WAVEFORMATEX* src, TQWAVEFORMAT_COPY_DEST dest)
    {
        return TqAudio_CopyWfx(&wfx, sizeof(*this), src, dest);
    }
    operator const WAVEFORMATEX*() const { return &wfx; }
};

// A bare WAVEFORMATEX made from a record, to pass where a platform header is expected: plain
// sample formats without their mask, compressed ones without their tail.
struct _tqwaveformat_wfxcopyhelper
{
    WAVEFORMATEX wfx;

    explicit _tqwaveformat_wfxcopyhelper(const _tqwaveformat& fmt)
    {
        TqAudio_GeneralCopyWfx(&wfx, sizeof(*this), &fmt, TQWFXDEST_AUTO);
    }
    operator const WAVEFORMATEX*() const { return &wfx; }
};

// The same at 40 bytes: extensible where TQWFXDEST_AUTO wants it, else a bare header with up to
// 22 bytes of codec tail.
struct _tqwaveformat_wfxecopyhelper
{
    union
    {
        WAVEFORMATEX wfx;
        WAVEFORMATEXTENSIBLE wfext;
    };

    explicit _tqwaveformat_wfxecopyhelper(const _tqwaveformat& fmt)
    {
        TqAudio_GeneralCopyWfx(&wfx, sizeof(*this), &fmt, TQWFXDEST_AUTO);
    }
    operator const WAVEFORMATEX*() const { return &wfx; }
};

inline WAVEFORMATEX* TqAudio_AllocAndCopyWfx(const _tqwaveformat* fmt, TQWAVEFORMAT_COPY_DEST dest)
{
    return TqAudio_AllocAndCopyWfxFromRecord(fmt, dest);
}
inline WAVEFORMATEX* TqAudio_AllocAndCopyWfx(const _tqwaveformat& fmt, TQWAVEFORMAT_COPY_DEST dest)
{
    return TqAudio_AllocAndCopyWfxFromRecord(&fmt, dest);
}
inline HRESULT TqAudio_GeneralCopyWfx(WAVEFORMATEX* dst, UINT dstSize, const _tqwaveformat& fmt,
                                      TQWAVEFORMAT_COPY_DEST dest)
{
    return TqAudio_GeneralCopyWfx(dst, dstSize, &fmt, dest);
}
inline HRESULT TqAudio_GeneralCopyTqWaveFormat(_tqwaveformat* dst, UINT dstSize,
                                               const _tqwaveformat& src,
                                               TQWAVEFORMAT_COPY_DEST dest)
{
    return TqAudio_GeneralCopyTqWaveFormat(dst, dstSize, &src, dest);
}
#endif
