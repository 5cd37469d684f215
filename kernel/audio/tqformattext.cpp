// Display texts of audio formats, assembled from the kernel language's strings.
#include "tqformattext.h"

#include <mmsystem.h>
#include <msacm.h>
#include <stdarg.h>
#include <stdint.h>

#include "tqcodecnames.h"
#include "tqlang.h"
#include "tqprintf.h"
#include "tqstrings.h"

namespace tq::audio {
namespace {

// Parts are formatted here first and then copied, so that every cut is noticed.
constexpr int kTextChars = 260;
using Text = wchar_t[kTextChars];

bool IsDestination(const wchar_t* dst, int size)
{
    return dst && size >= 1;
}

// Copies as much of text as fits into size characters with the terminator.
HRESULT CopyText(wchar_t* dst, int size, const wchar_t* text)
{
    int i = 0;
    for (; i < size - 1 && text[i]; ++i)
        dst[i] = text[i];
    dst[i] = 0;
    return text[i] ? TQ_E_BUFFERTOOSMALL : S_OK;
}

void Format(Text& out, const wchar_t* format, ...)
{
    va_list args;
    va_start(args, format);
    TqNVPrintF(out, kTextChars, nullptr, format, args);
    va_end(args);
}

// How each sample type is shown: the text with its bit count, and the bits of its depth, by the
// container and by what carries the value.
struct SampleTypeText
{
    TQSAMPLETYPE type;
    const wchar_t* format;
    int bits;
    int containerBits;
    int significantBits;
};

const SampleTypeText kSampleTypeTexts[] = {
    {TQSAMPLE_PCM8, TQS(AudioFmtBits), 8, 8, 8},
    {TQSAMPLE_PCM16, TQS(AudioFmtBits), 16, 16, 16},
    {TQSAMPLE_PCM24, TQS(AudioFmtBits), 24, 24, 24},
    {TQSAMPLE_PCM32, TQS(AudioFmtBits), 32, 32, 32},
    {TQSAMPLE_FLOAT32, TQS(AudioFmtBitsFloat), 32, 32, 24},
    {TQSAMPLE_FLOAT64, TQS(AudioFmtBitsFloat), 64, 64, 53},
    {TQSAMPLE_UNPACKED24, TQS(AudioFmtBitsUnpacked), 24, 24, 24},
    {TQSAMPLE_SIGNED8, TQS(AudioFmtBitsSigned), 8, 8, 8},
    {TQSAMPLE_BE16, TQS(AudioFmtBitsBigEndian), 16, 16, 16},
    {TQSAMPLE_BE24, TQS(AudioFmtBitsBigEndian), 24, 24, 24},
    {TQSAMPLE_BE32, TQS(AudioFmtBitsBigEndian), 32, 32, 32},
    {TQSAMPLE_RA16, TQS(AudioFmtBitsRightAligned), 16, 32, 16},
    {TQSAMPLE_RA24, TQS(AudioFmtBitsRightAligned), 24, 32, 24},
};

const SampleTypeText* FindSampleTypeText(TQSAMPLETYPE type)
{
    for (const SampleTypeText& row : kSampleTypeTexts)
    {
        if (row.type == type) return &row;
    }
    return nullptr;
}

// Speaker layouts named by channel count and mask together, searched from the top.
struct LayoutText
{
    DWORD mask;
    UINT channels;
    const wchar_t* text;
    bool lfe;
};

const LayoutText kLayoutTexts[] = {
    {0x000, 1, TQS(AudioFmtMono), false},        {0x000, 2, TQS(AudioFmtStereo), false},
    {0x003, 2, TQS(AudioFmtStereo), false},      {0x03F, 6, TQS(AudioFmtSurround51), false},
    {0x60F, 6, TQS(AudioFmtSurround51), false},  {0x0FF, 8, TQS(AudioFmtSurround71), false},
    {0x004, 1, TQS(AudioFmtLayoutC), false},     {0x00C, 2, TQS(AudioFmtLayoutC), true},
    {0x00B, 3, TQS(AudioFmtLayoutLR), true},     {0x007, 3, TQS(AudioFmtLayoutLCR), false},
    {0x00F, 4, TQS(AudioFmtLayoutLCR), true},    {0x013, 3, TQS(AudioFmtLayoutLRLs), false},
    {0x01B, 4, TQS(AudioFmtLayoutLRLs), true},   {0x017, 4, TQS(AudioFmtLayoutLCRLs), false},
    {0x01F, 5, TQS(AudioFmtLayoutLCRLs), true},  {0x033, 4, TQS(AudioFmtLayoutLRLsRs), false},
    {0x03B, 5, TQS(AudioFmtLayoutLRLsRs), true}, {0x037, 5, TQS(AudioFmtLayoutLCRLsRs), false},
};

void ChannelsText(Text& out, UINT channels, DWORD mask)
{
    for (const LayoutText& row : kLayoutTexts)
    {
        if (row.mask != mask || row.channels != channels) continue;
        Format(out, L"%s%s", TqGetString(row.text),
               row.lfe ? TqGetString(TQS(AudioFmtLayoutLfe)) : L"");
        return;
    }
    Format(out, TqGetString(TQS(AudioFmtChannels)), channels);
}

HRESULT Unknown(wchar_t* dst, int size)
{
    CopyText(dst, size, TqGetString(TQS(AudioFmtUnknown)));
    return E_FAIL;
}

// A compressed header as the audio compression manager describes it.
HRESULT CodecAttribsText(const WAVEFORMATEX* wfx, wchar_t* dst, int size)
{
    ACMFORMATDETAILSW details = {};
    details.cbStruct = sizeof(details);
    details.dwFormatTag = wfx->wFormatTag;
    // The query only reads the format.
    details.pwfx = const_cast<WAVEFORMATEX*>(wfx);
    const bool plain =
        wfx->wFormatTag == WAVE_FORMAT_PCM || wfx->wFormatTag == WAVE_FORMAT_IEEE_FLOAT;
    details.cbwfx = plain ? sizeof(PCMWAVEFORMAT) : sizeof(WAVEFORMATEX) + wfx->cbSize;
    if (acmFormatDetailsW(nullptr, &details, ACM_FORMATDETAILSF_FORMAT) != MMSYSERR_NOERROR)
        return Unknown(dst, size);
    details.szFormat[ACMFORMATDETAILS_FORMAT_CHARS - 1] = 0;
    return CopyText(dst, size, details.szFormat);
}

HRESULT PlainAttribsText(const WAVEFORMATEX* wfx, wchar_t* dst, int size)
{
    const UINT channels = wfx->nChannels;
    bool isFloat = wfx->wFormatTag == WAVE_FORMAT_IEEE_FLOAT;
    Text channelText;
    Format(channelText, TqGetString(TQS(AudioFmtChannels)), channels);
    if (channels == 1)
        CopyText(channelText, kTextChars, TqGetString(TQS(AudioFmtMono)));
    else if (channels == 2)
        CopyText(channelText, kTextChars, TqGetString(TQS(AudioFmtStereo)));
    else if ((channels == 6 || channels == 8) && wfx->wFormatTag == WAVE_FORMAT_EXTENSIBLE)
    {
        const auto* wfext = reinterpret_cast<const WAVEFORMATEXTENSIBLE*>(wfx);
        const DWORD mask = wfext->dwChannelMask;
        if (channels == 6 && (mask == 0x03F || mask == 0x60F))
            CopyText(channelText, kTextChars, TqGetString(TQS(AudioFmtSurround51)));
        if (channels == 8 && (mask == 0x0FF || mask == 0x63F))
            CopyText(channelText, kTextChars, TqGetString(TQS(AudioFmtSurround71)));
        // Only surround headers are asked for a float subformat; extensible float of other
        // counts reads as integer, as it always has.
        WORD tag = 0;
        isFloat = TqAudio_GetFormatTagExtensible(wfext, &tag) && tag == WAVE_FORMAT_IEEE_FLOAT;
    }
    Text text;
    Format(text, TqGetString(isFloat ? TQS(AudioFmtAttribsFloat) : TQS(AudioFmtAttribs)),
           wfx->nSamplesPerSec, wfx->wBitsPerSample, channelText);
    return CopyText(dst, size, text);
}

// Parts joined by the locale's list separator, held to the destination part by part.
class PartList
{
public:
    PartList(wchar_t* dst, int size) : m_dst(dst), m_room(size - 1)
    {
        m_dst[0] = 0;
        Format(m_separator, L"$, ");
    }
    void Add(const wchar_t* part)
    {
        if (!part[0]) return;
        if (m_length) Append(m_separator);
        Append(part);
    }
    HRESULT Result() const { return m_cut ? TQ_E_BUFFERTOOSMALL : S_OK; }

private:
    void Append(const wchar_t* text)
    {
        while (*text && m_length < m_room)
            m_dst[m_length++] = *text++;
        m_dst[m_length] = 0;
        if (*text) m_cut = true;
    }

    wchar_t* m_dst;
    int m_room;
    int m_length = 0;
    bool m_cut = false;
    Text m_separator;
};

// Whole units where the rate is a whole number of them, else tenths, rounded.
void BitRateText(Text& out, uint64_t bitsPerSecond)
{
    struct Unit
    {
        uint64_t size;
        const wchar_t* name;
    };
    const Unit unit = bitsPerSecond < 1000      ? Unit{1, TqGetString(TQS(AudioFmtUnitBps))}
                      : bitsPerSecond < 1000000 ? Unit{1000, TqGetString(TQS(AudioFmtUnitKbps))}
                                                : Unit{1000000, TqGetString(TQS(AudioFmtUnitMbps))};
    if (bitsPerSecond % unit.size == 0)
    {
        Format(out, TqGetString(TQS(AudioFmtBitRateWhole)),
               static_cast<int>(bitsPerSecond / unit.size), unit.name);
        return;
    }
    const uint64_t tenth = unit.size / 10;
    Format(out, TqGetString(TQS(AudioFmtBitRateTenths)),
           static_cast<int>((bitsPerSecond + tenth / 2) / tenth), unit.name);
}

bool HasOwnBitRate(const _tqwaveformat& fmt)
{
    const uint64_t plain =
        uint64_t{fmt.wBitsPerSample} * fmt.nChannels * uint64_t{fmt.nSamplesPerSec};
    return fmt.nAvgBytesPerSec != 0 && uint64_t{fmt.nAvgBytesPerSec} * 8 != plain;
}

// A text made from a sample type's row: empty for no type, cleared with E_INVALIDARG for a type
// the table does not know.
template <class Compose>
HRESULT FormatSampleTypeRow(TQSAMPLETYPE type, wchar_t* dst, int size, Compose compose)
{
    if (!IsDestination(dst, size)) return E_INVALIDARG;
    if (type == TQSAMPLE_NONE) return CopyText(dst, size, L"");
    const SampleTypeText* row = FindSampleTypeText(type);
    if (!row)
    {
        dst[0] = 0;
        return E_INVALIDARG;
    }
    Text text;
    compose(text, *row);
    return CopyText(dst, size, text);
}

} // namespace
} // namespace tq::audio

using namespace tq::audio;

extern "C" HRESULT TqAudio_GetSampleTypeText(TQSAMPLETYPE type, wchar_t* dst, int size)
{
    return FormatSampleTypeRow(type, dst, size, [](Text& text, const SampleTypeText& row) {
        Format(text, TqGetString(row.format), row.bits);
    });
}

extern "C" HRESULT TqAudio_GetBitDepthText(TQSAMPLETYPE type, wchar_t* dst, int size,
                                           BOOL significantBits)
{
    return FormatSampleTypeRow(type, dst, size, [&](Text& text, const SampleTypeText& row) {
        Format(text, TqGetString(TQS(AudioFmtBits)),
               significantBits ? row.significantBits : row.containerBits);
    });
}

extern "C" HRESULT TqAudio_GetChannelsText(UINT channels, DWORD channelMask, wchar_t* dst, int size)
{
    if (!IsDestination(dst, size)) return E_INVALIDARG;
    Text text;
    ChannelsText(text, channels, channelMask);
    return CopyText(dst, size, text);
}

extern "C" WORD TqAudio_ConvertToCanonicalWaveFormatTag(WORD tag)
{
    return CanonicalCodecTag(tag);
}

extern "C" int TqAudio_GetCompressionTypeName(WORD tag, wchar_t* dst, int size, BOOL shortOnly)
{
    const wchar_t* name = shortOnly ? nullptr : LongCodecName(tag);
    if (!name) name = ShortCodecName(tag);
    if (!name)
    {
        const WORD canonical = CanonicalCodecTag(tag);
        if (canonical != tag) name = ShortCodecName(canonical);
    }
    if (name)
    {
        if (IsDestination(dst, size)) CopyText(dst, size, name);
        return 0;
    }
    if (IsDestination(dst, size))
    {
        // The tag is printed in decimal behind the "0x", just as the format says: that is the
        // text users have always seen for an unnamed codec.
        Text number;
        Format(number, TqGetString(TQS(AudioFmtCodecNumber)), tag);
        if (shortOnly)
        {
            CopyText(dst, size, number);
        }
        else
        {
            wchar_t wrapped[32];
            TqCchPrintF(wrapped, 32, nullptr, TqGetString(TQS(AudioFmtCodecUnnamed)), number);
            CopyText(dst, size, wrapped);
        }
    }
    return 1;
}

extern "C" HRESULT TqAudio_GetTagText(WORD tag, wchar_t* dst, int size)
{
    if (!IsDestination(dst, size)) return E_INVALIDARG;
    switch (tag)
    {
    case WAVE_FORMAT_PCM:
        return CopyText(dst, size, TqGetString(TQS(AudioFmtTagPcm)));
    case WAVE_FORMAT_IEEE_FLOAT:
        return CopyText(dst, size, TqGetString(TQS(AudioFmtTagFloat)));
    case WAVE_FORMAT_TQ_PCM_UNPACKED:
        return CopyText(dst, size, TqGetString(TQS(AudioFmtTagUnpacked)));
    case WAVE_FORMAT_TQ_PCM_SIGNED:
        return CopyText(dst, size, TqGetString(TQS(AudioFmtTagSigned)));
    case WAVE_FORMAT_TQ_PCM_BIGENDIAN:
        return CopyText(dst, size, TqGetString(TQS(AudioFmtTagBigEndian)));
    default:
        break;
    }
    ACMFORMATTAGDETAILSW details = {};
    details.cbStruct = sizeof(details);
    details.dwFormatTag = tag;
    if (acmFormatTagDetailsW(nullptr, &details, ACM_FORMATTAGDETAILSF_FORMATTAG) !=
        MMSYSERR_NOERROR)
        return Unknown(dst, size);
    details.szFormatTag[ACMFORMATTAGDETAILS_FORMATTAG_CHARS - 1] = 0;
    return CopyText(dst, size, details.szFormatTag);
}

extern "C" HRESULT TqAudio_GetAttribsText(const WAVEFORMATEX* wfx, wchar_t* dst, int size)
{
    if (!IsDestination(dst, size)) return E_INVALIDARG;
    if (!wfx)
    {
        dst[0] = 0;
        return E_POINTER;
    }
    return TqAudio_IsCompressed(wfx) ? CodecAttribsText(wfx, dst, size)
                                     : PlainAttribsText(wfx, dst, size);
}

extern "C" HRESULT TqAudio_GetAttribsTextForRecord(const _tqwaveformat* fmt, wchar_t* dst, int size)
{
    if (!IsDestination(dst, size)) return E_INVALIDARG;
    dst[0] = 0;
    if (!fmt) return E_POINTER;
    union
    {
        WAVEFORMATEX wfx;
        BYTE bytes[80];
    } header;
    const HRESULT hr =
        TqAudio_GeneralCopyWfx(&header.wfx, sizeof(header), fmt, TQWFXDEST_PLAIN_IF_DEFAULT);
    if (FAILED(hr)) return hr;
    return TqAudio_GetAttribsText(&header.wfx, dst, size);
}

extern "C" HRESULT TqAudio_GetFormatText(const _tqwaveformat* fmt, wchar_t* dst, int size,
                                         DWORD flags)
{
    if (!IsDestination(dst, size)) return E_INVALIDARG;
    dst[0] = 0;
    if (!fmt) return E_POINTER;
    const bool compressed = fmt->IsCompressed();
    if (compressed && (flags & TQFMTTEXT_AS_PCM))
    {
        _tqwaveformat pcm;
        pcm.Init(fmt->nSamplesPerSec, fmt->wBitsPerSample < 17 ? TQSAMPLE_PCM16 : TQSAMPLE_PCM24,
                 fmt->nChannels, fmt->dwChannelMask);
        return TqAudio_GetFormatText(&pcm, dst, size, flags & ~TQFMTTEXT_AS_PCM);
    }
    if (compressed && (flags & TQFMTTEXT_CODEC_ATTRIBS))
    {
        _tqwaveformat_wfxplus header;
        const HRESULT hr =
            TqAudio_GeneralCopyWfx(&header.wfx, sizeof(header), fmt, TQWFXDEST_PLAIN_IF_DEFAULT);
        if (FAILED(hr)) return hr;
        return TqAudio_GetAttribsText(&header.wfx, dst, size);
    }

    PartList parts(dst, size);
    Text part;
    if (compressed && (flags & TQFMTTEXT_BITRATE) && HasOwnBitRate(*fmt))
    {
        BitRateText(part, uint64_t{fmt->nAvgBytesPerSec} * 8);
        parts.Add(part);
    }
    Format(part, TqGetString(TQS(AudioFmtRate)), fmt->nSamplesPerSec);
    parts.Add(part);
    part[0] = 0;
    if (!compressed && (flags & TQFMTTEXT_BIT_DEPTH))
        TqAudio_GetBitDepthText(fmt->Type(), part, kTextChars, TRUE);
    else if (!compressed)
        TqAudio_GetSampleTypeText(fmt->Type(), part, kTextChars);
    else if (fmt->wBitsPerSample && fmt->wFormatTag)
        Format(part, TqGetString(TQS(AudioFmtBits)), fmt->wBitsPerSample);
    parts.Add(part);
    ChannelsText(part, fmt->nChannels, fmt->dwChannelMask);
    parts.Add(part);

    const WORD tag = fmt->FormatTag();
    const bool plainTag = tag == WAVE_FORMAT_PCM || tag == WAVE_FORMAT_IEEE_FLOAT;
    const bool withTag =
        !(flags & TQFMTTEXT_NO_TAG) && !((flags & TQFMTTEXT_BIT_DEPTH) && plainTag);
    if (withTag &&
        TqAudio_GetCompressionTypeName(tag, part, kTextChars, !(flags & TQFMTTEXT_LONG_TAG)) == 0)
        parts.Add(part);
    return parts.Result();
}
