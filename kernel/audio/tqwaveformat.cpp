// The _tqwaveformat record: initialisation from values and from platform headers, and equality.
#include "tqwaveformat.h"

#include "tqwaveformatinternal.h"

using namespace tq::audio;

namespace {

// A structure of fewer than 33 bytes is taken to be the fixed part only.
void Clear(_tqwaveformat& fmt, UINT structSize)
{
    const UINT size =
        structSize < TQWAVEFORMAT_FIXED_SIZE + 1 ? TQWAVEFORMAT_FIXED_SIZE : structSize;
    memset(&fmt, 0, size);
    fmt.cbStruct = size;
}

// Room for tail bytes in a cleared structure of cbStruct bytes.
UINT TailRoom(const _tqwaveformat& fmt)
{
    if (fmt.cbStruct < TQWAVEFORMAT_EXTRA_OFFSET) return 0;
    const UINT room = fmt.cbStruct - TQWAVEFORMAT_EXTRA_OFFSET;
    return room < TQWAVEFORMAT_MAX_EXTRA ? room : TQWAVEFORMAT_MAX_EXTRA;
}

// The codec bytes that follow a platform header, by the header's own rules.
struct HeaderTail
{
    const BYTE* bytes = nullptr;
    UINT length = 0;
};

HeaderTail TailOf(const WAVEFORMATEX& wfx)
{
    const auto* base = reinterpret_cast<const BYTE*>(&wfx);
    if (wfx.wFormatTag == WAVE_FORMAT_EXTENSIBLE)
    {
        if (wfx.cbSize <= kExtensibleCbSize) return {};
        return {base + kExtensibleSize, static_cast<UINT>(wfx.cbSize - kExtensibleCbSize)};
    }
    return {base + sizeof(WAVEFORMATEX), wfx.cbSize};
}

bool SameMask(DWORD a, DWORD b, unsigned channels)
{
    return EffectiveChannelMask(a, channels) == EffectiveChannelMask(b, channels);
}

bool IsCompressedRecord(const _tqwaveformat& fmt)
{
    return (fmt.dwFlags & TQWAVEFORMAT_FLAG_COMPRESSED) != 0;
}

// Headers that lost their subformat can still be read when every size in them agrees. The first
// test multiplies by bits, not bytes, and a 32-bit header so rescued is read as float: both are
// intended, as files written that way have always been read like this.
TQSAMPLETYPE RescueNullSubformat(const WAVEFORMATEX& wfx)
{
    static constexpr GUID kNull{};
    if (!IsSameGuid(SubformatOf(wfx), kNull)) return TQSAMPLE_NONE;
    if (wfx.cbSize != 0 && wfx.cbSize != kExtensibleCbSize) return TQSAMPLE_NONE;
    if (static_cast<UINT>(wfx.nChannels) * wfx.wBitsPerSample != wfx.nBlockAlign)
        return TQSAMPLE_NONE;
    if (static_cast<ULONGLONG>(wfx.nSamplesPerSec) * wfx.nBlockAlign != wfx.nAvgBytesPerSec)
        return TQSAMPLE_NONE;
    switch (wfx.wBitsPerSample)
    {
    case 8:
        return TQSAMPLE_PCM8;
    case 16:
        return TQSAMPLE_PCM16;
    case 24:
        return TQSAMPLE_PCM24;
    case 32:
        return TQSAMPLE_FLOAT32;
    case 64:
        return TQSAMPLE_FLOAT64;
    default:
        return TQSAMPLE_NONE;
    }
}

} // namespace

extern "C" void TqWaveFormat_Init(_tqwaveformat* fmt, DWORD samplesPerSec, TQSAMPLETYPE type,
                                  WORD channels, DWORD channelMask, UINT structSize)
{
    if (!fmt) return;
    Clear(*fmt, structSize);
    fmt->sampleType = type;
    fmt->nSamplesPerSec = samplesPerSec;
    fmt->nChannels = channels;
    fmt->dwChannelMask = channelMask;
    fmt->nBlockAlign = static_cast<WORD>(TqAudio_BytesFromSampleType(type) * channels);
    fmt->nAvgBytesPerSec = fmt->nBlockAlign * samplesPerSec;
    fmt->cbStruct = TQWAVEFORMAT_FIXED_SIZE;
}

extern "C" void TqWaveFormat_InitAsWfx(_tqwaveformat* fmt, WORD formatTag, DWORD samplesPerSec,
                                       WORD bitsPerSample, WORD channels, DWORD channelMask,
                                       UINT structSize)
{
    if (!fmt) return;
    Clear(*fmt, structSize);
    if (formatTag == WAVE_FORMAT_PCM && bitsPerSample == 20) bitsPerSample = 24;
    fmt->sampleType = TqAudio_GetSampleType2(formatTag, bitsPerSample);
    if (fmt->sampleType == TQSAMPLE_NONE)
    {
        fmt->dwFlags = TQWAVEFORMAT_FLAG_COMPRESSED;
        fmt->wFormatTag = formatTag;
        fmt->wBitsPerSample = bitsPerSample;
    }
    fmt->nSamplesPerSec = samplesPerSec;
    fmt->nChannels = channels;
    fmt->dwChannelMask = channelMask;
    fmt->nBlockAlign = static_cast<WORD>(static_cast<UINT>(channels) * bitsPerSample / 8);
    fmt->nAvgBytesPerSec = fmt->nBlockAlign * samplesPerSec;
    fmt->cbStruct = TQWAVEFORMAT_FIXED_SIZE;
}

extern "C" HRESULT TqWaveFormat_InitFromWfx(_tqwaveformat* fmt, UINT structSize,
                                            const WAVEFORMATEX* wfx)
{
    if (!fmt || !wfx) return E_POINTER;
    Clear(*fmt, structSize);
    fmt->nSamplesPerSec = wfx->nSamplesPerSec;
    fmt->nChannels = wfx->nChannels;
    fmt->nBlockAlign = wfx->nBlockAlign;
    fmt->nAvgBytesPerSec = wfx->nAvgBytesPerSec;
    fmt->sampleType = TqAudio_GetSampleType(wfx);

    if (wfx->wFormatTag == WAVE_FORMAT_PCM)
    {
        WAVEFORMATEX repaired = *wfx;
        TqAudio_FixBadWfx(&repaired);
        fmt->nBlockAlign = repaired.nBlockAlign;
    }
    else if (wfx->wFormatTag == WAVE_FORMAT_EXTENSIBLE)
    {
        fmt->dwChannelMask = Extensible(*wfx).dwChannelMask;
        fmt->dwFlags |= TQWAVEFORMAT_FLAG_EXTENSIBLE;
        if (fmt->sampleType == TQSAMPLE_NONE) fmt->sampleType = RescueNullSubformat(*wfx);
    }

    UINT extra = 0;
    if (fmt->sampleType == TQSAMPLE_NONE)
    {
        fmt->wFormatTag = TqAudio_GetWaveFormatTag(wfx);
        fmt->dwFlags |= TQWAVEFORMAT_FLAG_COMPRESSED;
        fmt->wBitsPerSample = wfx->wBitsPerSample;
        // PCM and float headers carry no codec bytes even when cbSize says otherwise.
        const bool hasTail =
            wfx->wFormatTag != WAVE_FORMAT_PCM && wfx->wFormatTag != WAVE_FORMAT_IEEE_FLOAT;
        const HeaderTail tail = hasTail ? TailOf(*wfx) : HeaderTail{};
        const UINT room = TailRoom(*fmt);
        extra = tail.length < room ? tail.length : room;
        if (extra) memcpy(fmt->abExtra, tail.bytes, extra);
        if (fmt->cbStruct >= TQWAVEFORMAT_EXTRA_OFFSET) fmt->cbExtra = static_cast<UINT16>(extra);
    }
    fmt->cbStruct = TQWAVEFORMAT_FIXED_SIZE + extra;
    return S_OK;
}

extern "C" WORD TqWaveFormat_UpdateBlockAlign(_tqwaveformat* fmt)
{
    if (!fmt) return 0;
    if (fmt->sampleType != TQSAMPLE_NONE)
    {
        fmt->nBlockAlign = static_cast<WORD>(fmt->BytesPerSample() * fmt->nChannels);
        fmt->nAvgBytesPerSec = fmt->nBlockAlign * fmt->nSamplesPerSec;
    }
    return fmt->nBlockAlign;
}

extern "C" BOOL TqWaveFormat_IsEqual(const _tqwaveformat* a, const _tqwaveformat* b)
{
    if (!a || !b) return FALSE;
    if (a->sampleType != b->sampleType || a->nSamplesPerSec != b->nSamplesPerSec ||
        a->nChannels != b->nChannels || IsCompressedRecord(*a) != IsCompressedRecord(*b))
        return FALSE;
    if (!SameMask(a->dwChannelMask, b->dwChannelMask, a->nChannels)) return FALSE;
    if (!IsCompressedRecord(*a)) return TRUE;
    const UINT extra = ExtraOf(*a);
    return a->wFormatTag == b->wFormatTag && a->nAvgBytesPerSec == b->nAvgBytesPerSec &&
           a->wBitsPerSample == b->wBitsPerSample && extra == ExtraOf(*b) &&
           memcmp(a->abExtra, b->abExtra, extra) == 0;
}

extern "C" BOOL TqWaveFormat_IsEqualWfx(const _tqwaveformat* fmt, const WAVEFORMATEX* wfx)
{
    if (!fmt || !wfx) return FALSE;
    if (fmt->nSamplesPerSec != wfx->nSamplesPerSec || fmt->nChannels != wfx->nChannels)
        return FALSE;
    const bool compressed = IsCompressedRecord(*fmt);
    if (compressed)
    {
        if (fmt->wFormatTag != TqAudio_GetWaveFormatTag(wfx) ||
            fmt->nAvgBytesPerSec != wfx->nAvgBytesPerSec ||
            fmt->wBitsPerSample != wfx->wBitsPerSample)
            return FALSE;
    }
    else if (fmt->sampleType != static_cast<UINT32>(TqAudio_GetSampleType(wfx)))
    {
        return FALSE;
    }
    const DWORD headerMask =
        wfx->wFormatTag == WAVE_FORMAT_EXTENSIBLE ? Extensible(*wfx).dwChannelMask : 0;
    if (!SameMask(fmt->dwChannelMask, headerMask, fmt->nChannels)) return FALSE;
    if (!compressed) return TRUE;
    const HeaderTail tail = TailOf(*wfx);
    return tail.length == ExtraOf(*fmt) && memcmp(fmt->abExtra, tail.bytes, tail.length) == 0;
}
