// Platform headers: their sample types, compression tests, repair and construction.
#include "tqwaveformat.h"

#include <bit>
#include <initializer_list>

#include "tqwaveformatinternal.h"

using namespace tq::audio;

namespace {

bool IsPlainSampleTag(WORD tag)
{
    switch (tag)
    {
    case WAVE_FORMAT_PCM:
    case WAVE_FORMAT_IEEE_FLOAT:
    case WAVE_FORMAT_TQ_PCM_UNPACKED:
    case WAVE_FORMAT_TQ_PCM_SIGNED:
    case WAVE_FORMAT_TQ_PCM_BIGENDIAN:
        return true;
    default:
        return false;
    }
}

WORD BlockAlignOf(WORD bitsPerSample, WORD channels)
{
    return static_cast<WORD>((bitsPerSample >> 3) * channels);
}

} // namespace

extern "C" TQSAMPLETYPE TqAudio_GetSampleType(const WAVEFORMATEX* wfx)
{
    if (!wfx) return TQSAMPLE_NONE;
    if (wfx->wFormatTag != WAVE_FORMAT_EXTENSIBLE)
        return TqAudio_GetSampleType2(wfx->wFormatTag, wfx->wBitsPerSample);

    const GUID subformat = SubformatOf(*wfx);
    if (!IsTagDerived(subformat)) return TQSAMPLE_NONE;
    const TQSAMPLETYPE type =
        TqAudio_GetSampleType2(TagOfSubformat(subformat), wfx->wBitsPerSample);
    // 24 valid bits in a 32-bit PCM container is the unpacked 24-bit form.
    if (type == TQSAMPLE_PCM32 && Extensible(*wfx).Samples.wValidBitsPerSample == 24)
        return TQSAMPLE_UNPACKED24;
    return type;
}

extern "C" BOOL TqAudio_IsCompressedExtensible(const WAVEFORMATEXTENSIBLE* wfext)
{
    if (!wfext || wfext->Format.cbSize < kExtensibleCbSize) return TRUE;
    const GUID subformat = SubformatOf(wfext->Format);
    return !IsSameGuid(subformat, SubformatOfTag(WAVE_FORMAT_PCM)) &&
           !IsSameGuid(subformat, SubformatOfTag(WAVE_FORMAT_IEEE_FLOAT));
}

extern "C" BOOL TqAudio_IsCompressed(const WAVEFORMATEX* wfx)
{
    if (!wfx) return TRUE;
    if (wfx->wFormatTag == WAVE_FORMAT_EXTENSIBLE)
        return TqAudio_IsCompressedExtensible(&Extensible(*wfx));
    // The right-aligned tag is compressed here: only channel copies can read it.
    if (!IsPlainSampleTag(wfx->wFormatTag)) return TRUE;
    return wfx->nBlockAlign != BlockAlignOf(wfx->wBitsPerSample, wfx->nChannels);
}

extern "C" WORD TqAudio_GetWaveFormatTag(const WAVEFORMATEX* wfx)
{
    if (!wfx) return 0;
    if (wfx->wFormatTag != WAVE_FORMAT_EXTENSIBLE || wfx->cbSize < kExtensibleCbSize)
        return wfx->wFormatTag;
    const GUID subformat = SubformatOf(*wfx);
    return IsTagDerived(subformat) ? TagOfSubformat(subformat) : 0;
}

extern "C" BOOL TqAudio_GetFormatTagExtensible(const WAVEFORMATEXTENSIBLE* wfext, WORD* tag)
{
    if (!wfext || !tag || wfext->Format.wFormatTag != WAVE_FORMAT_EXTENSIBLE ||
        wfext->Format.cbSize < kExtensibleCbSize)
        return FALSE;
    const GUID subformat = SubformatOf(wfext->Format);
    for (WORD plain : {WAVE_FORMAT_PCM, WAVE_FORMAT_IEEE_FLOAT})
    {
        if (IsSameGuid(subformat, SubformatOfTag(plain)))
        {
            *tag = plain;
            return TRUE;
        }
    }
    return FALSE;
}

extern "C" BOOL TqAudio_IsEqualFormat(const WAVEFORMATEX* a, const WAVEFORMATEX* b)
{
    if (!a || !b) return FALSE;
    return a->nChannels == b->nChannels && a->nSamplesPerSec == b->nSamplesPerSec &&
           a->wBitsPerSample == b->wBitsPerSample && a->wFormatTag == b->wFormatTag;
}

extern "C" BOOL TqAudio_FixBadWfx(WAVEFORMATEX* wfx)
{
    if (!wfx || wfx->wFormatTag != WAVE_FORMAT_PCM) return FALSE;
    BOOL changed = FALSE;
    if (wfx->wBitsPerSample == 20)
    {
        wfx->wBitsPerSample = 24;
        changed = TRUE;
    }
    const WORD blockAlign = BlockAlignOf(wfx->wBitsPerSample, wfx->nChannels);
    if (wfx->nBlockAlign != blockAlign)
    {
        wfx->nBlockAlign = blockAlign;
        changed = TRUE;
    }
    return changed;
}

extern "C" WAVEFORMATEX* TqAudio_InitWfx(WAVEFORMATEX* wfx, DWORD samplesPerSec, TQSAMPLETYPE type,
                                         WORD channels)
{
    if (!wfx) return nullptr;
    wfx->wFormatTag = TqAudio_FormatTagFromSampleType(type);
    wfx->nChannels = channels;
    wfx->nSamplesPerSec = samplesPerSec;
    wfx->wBitsPerSample = TqAudio_BitsFromSampleType(type);
    wfx->nBlockAlign = BlockAlignOf(wfx->wBitsPerSample, channels);
    wfx->nAvgBytesPerSec = wfx->nBlockAlign * samplesPerSec;
    wfx->cbSize = 0;
    return wfx;
}

extern "C" WAVEFORMATEX* TqAudio_InitWfxFlex(WAVEFORMATEX* wfx, WORD formatTag, DWORD samplesPerSec,
                                             WORD bitsPerSample, WORD channels, DWORD channelMask,
                                             UINT destSize)
{
    if (!wfx) return nullptr;
    wfx->nChannels = channels;
    wfx->nSamplesPerSec = samplesPerSec;
    wfx->wBitsPerSample = bitsPerSample;
    wfx->nBlockAlign = BlockAlignOf(bitsPerSample, channels);
    wfx->nAvgBytesPerSec = wfx->nBlockAlign * samplesPerSec;

    // A mask naming more speakers than there are channels cannot be right: use the default one.
    const DWORD mask = std::popcount(channelMask) > channels ? 0 : channelMask;
    const bool extensible = channelMask != 0 &&
                            (channels >= 3 || channelMask != DefaultChannelMask(channels)) &&
                            destSize >= kExtensibleSize;
    if (!extensible)
    {
        wfx->wFormatTag = formatTag;
        wfx->cbSize = 0;
        return wfx;
    }
    auto* wfext = reinterpret_cast<WAVEFORMATEXTENSIBLE*>(wfx);
    wfx->wFormatTag = WAVE_FORMAT_EXTENSIBLE;
    wfx->cbSize = kExtensibleCbSize;
    wfext->Samples.wValidBitsPerSample = bitsPerSample;
    wfext->dwChannelMask = EffectiveChannelMask(mask, channels);
    wfext->SubFormat = SubformatOfTag(formatTag);
    return wfx;
}

extern "C" WAVEFORMATEXTENSIBLE* TqAudio_CopyWfxToWfExt(const WAVEFORMATEX* wfx,
                                                        WAVEFORMATEXTENSIBLE* wfext)
{
    if (!wfx || !wfext) return nullptr;
    const UINT bytes = sizeof(WAVEFORMATEX) + wfx->cbSize;
    memmove(wfext, wfx, bytes < kExtensibleSize ? bytes : kExtensibleSize);
    return wfext;
}

extern "C" WAVEFORMATEX* TqAudio_CopyWfExtToWfx(const WAVEFORMATEXTENSIBLE* wfext,
                                                WAVEFORMATEX* wfx)
{
    if (!wfext || !wfx) return nullptr;
    // The first 16 bytes are the same in both records; only tag and cbSize differ.
    constexpr size_t kCommon = offsetof(WAVEFORMATEX, cbSize);
    if (wfext->Format.wFormatTag != WAVE_FORMAT_EXTENSIBLE)
    {
        const WORD cbSize = wfext->Format.cbSize;
        memmove(wfx, wfext, kCommon);
        wfx->cbSize = cbSize;
        return wfx;
    }
    WORD tag = 0;
    if (!TqAudio_GetFormatTagExtensible(wfext, &tag)) return nullptr;
    memmove(wfx, wfext, kCommon);
    wfx->wFormatTag = tag;
    wfx->cbSize = 0;
    return wfx;
}
