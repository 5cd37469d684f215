// Writing records out: platform headers by destination kind, record copies, allocating copies.
#include "tqwaveformat.h"

#include "tqwaveformatinternal.h"

using namespace tq::audio;

namespace {

// Big enough for the platform headers the kernel meets, with a short codec tail.
constexpr UINT kScratchRecordSize = 128;

// A record on the stack, read from a platform header.
class ScratchRecord
{
public:
    HRESULT Read(const WAVEFORMATEX* wfx)
    {
        return TqWaveFormat_InitFromWfx(Get(), sizeof(m_bytes), wfx);
    }
    _tqwaveformat* Get() { return reinterpret_cast<_tqwaveformat*>(m_bytes); }

private:
    alignas(8) BYTE m_bytes[kScratchRecordSize];
};

// A locked block of the movable global heap that is freed unless handed over.
class LockedGlobalBlock
{
public:
    explicit LockedGlobalBlock(SIZE_T bytes) : m_handle(GlobalAlloc(GHND, bytes))
    {
        if (m_handle) m_pointer = GlobalLock(m_handle);
    }
    LockedGlobalBlock(const LockedGlobalBlock&) = delete;
    LockedGlobalBlock& operator=(const LockedGlobalBlock&) = delete;
    ~LockedGlobalBlock()
    {
        if (!m_handle) return;
        if (m_pointer) GlobalUnlock(m_handle);
        GlobalFree(m_handle);
    }
    void* Get() const { return m_pointer; }
    // The caller now owns the block, still locked.
    void* Release()
    {
        m_handle = nullptr;
        return m_pointer;
    }

private:
    HGLOBAL m_handle;
    void* m_pointer = nullptr;
};

bool IsValidDest(TQWAVEFORMAT_COPY_DEST dest)
{
    return dest <= TQWFXDEST_EXTENSIBLE;
}

bool IsCompressedRecord(const _tqwaveformat& fmt)
{
    return (fmt.dwFlags & TQWAVEFORMAT_FLAG_COMPRESSED) != 0;
}

// Whether dest itself asks for an extensible header (dstSize matters only to the automatic kind).
bool WantsExtensible(const _tqwaveformat& fmt, DWORD mask, UINT dstSize,
                     TQWAVEFORMAT_COPY_DEST dest)
{
    switch (dest)
    {
    case TQWFXDEST_EXTENSIBLE_MULTICHANNEL:
        return fmt.nChannels > 2;
    case TQWFXDEST_EXTENSIBLE:
        return true;
    case TQWFXDEST_AUTO:
        if (dstSize < kExtensibleSize) return false;
        return (fmt.dwFlags & TQWAVEFORMAT_FLAG_EXTENSIBLE) ||
               IsNonDefaultMask(mask, fmt.nChannels);
    default:
        return false;
    }
}

void WriteExtensible(WAVEFORMATEX* dst, WORD tag, WORD validBits, DWORD mask)
{
    auto* wfext = reinterpret_cast<WAVEFORMATEXTENSIBLE*>(dst);
    dst->wFormatTag = WAVE_FORMAT_EXTENSIBLE;
    dst->cbSize = kExtensibleCbSize;
    wfext->Samples.wValidBitsPerSample = validBits;
    wfext->dwChannelMask = mask;
    wfext->SubFormat = SubformatOfTag(tag);
}

void WriteCompressed(WAVEFORMATEX* dst, UINT dstSize, const _tqwaveformat& fmt, bool wish)
{
    const UINT extra = ExtraOf(fmt);
    dst->wFormatTag = fmt.wFormatTag;
    dst->nChannels = fmt.nChannels;
    dst->nSamplesPerSec = fmt.nSamplesPerSec;
    dst->wBitsPerSample = fmt.wBitsPerSample;
    dst->nBlockAlign = fmt.nBlockAlign;
    dst->nAvgBytesPerSec = fmt.nAvgBytesPerSec;
    dst->cbSize = 0;
    const bool extensible = wish || (IsNonDefaultMask(fmt.dwChannelMask, fmt.nChannels) &&
                                     dstSize >= kExtensibleSize + extra);
    if (extensible) WriteExtensible(dst, fmt.wFormatTag, fmt.wBitsPerSample, fmt.dwChannelMask);

    const UINT used = sizeof(WAVEFORMATEX) + dst->cbSize;
    const UINT fits = dstSize > used ? dstSize - used : 0;
    const UINT count = extra < fits ? extra : fits;
    if (!count) return;
    // A plain PCM or float header is the 16-byte legacy form, which has no cbSize: its tail
    // follows at once.
    const bool legacy = !extensible && (fmt.wFormatTag == WAVE_FORMAT_PCM ||
                                        fmt.wFormatTag == WAVE_FORMAT_IEEE_FLOAT);
    dst->cbSize = static_cast<WORD>(dst->cbSize + count);
    const UINT offset = legacy ? offsetof(WAVEFORMATEX, cbSize) : used;
    memcpy(reinterpret_cast<BYTE*>(dst) + offset, fmt.abExtra, count);
}

UINT AllocationSize(const _tqwaveformat& fmt, TQWAVEFORMAT_COPY_DEST dest)
{
    bool extensible = false;
    switch (dest)
    {
    case TQWFXDEST_AUTO:
        extensible = (fmt.dwFlags & TQWAVEFORMAT_FLAG_EXTENSIBLE) ||
                     IsNonDefaultMask(fmt.dwChannelMask, fmt.nChannels);
        break;
    case TQWFXDEST_PLAIN_IF_DEFAULT:
        extensible = IsNonDefaultMask(fmt.dwChannelMask, fmt.nChannels);
        break;
    case TQWFXDEST_EXTENSIBLE_MULTICHANNEL:
        extensible = fmt.nChannels >= 3;
        break;
    case TQWFXDEST_EXTENSIBLE:
        extensible = true;
        break;
    default:
        break;
    }
    return (extensible ? kExtensibleSize : sizeof(WAVEFORMATEX)) + ExtraOf(fmt);
}

} // namespace

extern "C" HRESULT TqAudio_GeneralCopyWfx(WAVEFORMATEX* dst, UINT dstSize, const _tqwaveformat* fmt,
                                          TQWAVEFORMAT_COPY_DEST dest)
{
    if (!dst || !fmt) return E_POINTER;
    if (!IsValidDest(dest)) return E_INVALIDARG;
    if (dstSize < sizeof(WAVEFORMATEX)) return TQ_E_BUFFERTOOSMALL;

    const bool compressed = IsCompressedRecord(*fmt);
    const DWORD mask = dest == TQWFXDEST_PLAIN && !compressed ? 0 : fmt->dwChannelMask;
    const bool wish = WantsExtensible(*fmt, mask, dstSize, dest);
    if (wish && dstSize < kExtensibleSize) return TQ_E_BUFFERTOOSMALL;

    if (compressed)
    {
        WriteCompressed(dst, dstSize, *fmt, wish);
        return S_OK;
    }
    const TQSAMPLETYPE type = fmt->Type();
    const WORD tag = TqAudio_FormatTagFromSampleType(type);
    const WORD bits = TqAudio_BitsFromSampleType(type);
    if (!wish)
    {
        TqAudio_InitWfxFlex(dst, tag, fmt->nSamplesPerSec, bits, fmt->nChannels, mask, dstSize);
        return S_OK;
    }
    TqAudio_InitWfxFlex(dst, tag, fmt->nSamplesPerSec, bits, fmt->nChannels, 0,
                        sizeof(WAVEFORMATEX));
    WriteExtensible(dst, tag, bits, EffectiveChannelMask(mask, fmt->nChannels));
    return S_OK;
}

extern "C" HRESULT TqAudio_GeneralCopyTqWaveFormat(_tqwaveformat* dst, UINT dstSize,
                                                   const _tqwaveformat* src,
                                                   TQWAVEFORMAT_COPY_DEST dest)
{
    if (!dst || !src) return E_POINTER;
    if (!IsValidDest(dest)) return E_INVALIDARG;
    if (dstSize == 0) dstSize = TQWAVEFORMAT_FIXED_SIZE;

    const UINT extra = ExtraOf(*src);
    const UINT srcSize = extra ? TQWAVEFORMAT_EXTRA_OFFSET + extra : TQWAVEFORMAT_FIXED_SIZE;
    const UINT copied = srcSize < dstSize ? srcSize : dstSize;
    memmove(dst, src, copied);
    if (dstSize > copied) memset(reinterpret_cast<BYTE*>(dst) + copied, 0, dstSize - copied);

    // Without room for cbExtra the copy is the fixed part alone; a tail that does not fit whole
    // is dropped, never cut.
    UINT kept = 0;
    if (dstSize >= TQWAVEFORMAT_EXTRA_OFFSET)
    {
        UINT room = dstSize - TQWAVEFORMAT_EXTRA_OFFSET;
        if (room > TQWAVEFORMAT_MAX_EXTRA) room = TQWAVEFORMAT_MAX_EXTRA;
        kept = extra <= room ? extra : 0;
        dst->cbExtra = static_cast<UINT16>(kept);
    }
    dst->cbStruct = TQWAVEFORMAT_FIXED_SIZE + kept;
    return S_OK;
}

extern "C" HRESULT TqAudio_CopyWfx(WAVEFORMATEX* dst, UINT dstSize, const WAVEFORMATEX* src,
                                   TQWAVEFORMAT_COPY_DEST dest)
{
    if (!dst || !src) return E_POINTER;
    ScratchRecord record;
    record.Read(src);
    return TqAudio_GeneralCopyWfx(dst, dstSize, record.Get(), dest);
}

extern "C" HRESULT TqAudio_CopyWfExt(WAVEFORMATEXTENSIBLE* wfext, const WAVEFORMATEX* wfx,
                                     TQWAVEFORMAT_COPY_DEST dest)
{
    return TqAudio_CopyWfx(reinterpret_cast<WAVEFORMATEX*>(wfext), kExtensibleSize, wfx, dest);
}

extern "C" WAVEFORMATEX* TqAudio_AllocAndCopyWfxFromRecord(const _tqwaveformat* fmt,
                                                           TQWAVEFORMAT_COPY_DEST dest)
{
    if (!fmt || !IsValidDest(dest)) return nullptr;
    const UINT size = AllocationSize(*fmt, dest);
    LockedGlobalBlock block(size);
    auto* wfx = static_cast<WAVEFORMATEX*>(block.Get());
    if (!wfx || FAILED(TqAudio_GeneralCopyWfx(wfx, size, fmt, dest))) return nullptr;
    return static_cast<WAVEFORMATEX*>(block.Release());
}

extern "C" WAVEFORMATEX* TqAudio_AllocAndCopyWfx(const WAVEFORMATEX* wfx,
                                                 TQWAVEFORMAT_COPY_DEST dest)
{
    if (!wfx || !IsValidDest(dest)) return nullptr;
    const bool extensible = wfx->wFormatTag == WAVE_FORMAT_EXTENSIBLE;
    // When the header already is the kind asked for, it is copied as it stands.
    const bool verbatim =
        dest == TQWFXDEST_AUTO ||
        (!extensible && (dest == TQWFXDEST_PLAIN_IF_DEFAULT || dest == TQWFXDEST_PLAIN)) ||
        (extensible && dest == TQWFXDEST_EXTENSIBLE);
    if (!verbatim)
    {
        ScratchRecord record;
        record.Read(wfx);
        return TqAudio_AllocAndCopyWfxFromRecord(record.Get(), dest);
    }
    const UINT size = sizeof(WAVEFORMATEX) + wfx->cbSize;
    LockedGlobalBlock block(size);
    if (!block.Get()) return nullptr;
    memcpy(block.Get(), wfx, size);
    return static_cast<WAVEFORMATEX*>(block.Release());
}
