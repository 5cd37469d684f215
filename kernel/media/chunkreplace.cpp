// Replacing a metadata chunk of a file without ever moving what follows it.
#include "chunkframing.h"

#include <algorithm>

namespace tq::media {

namespace {

constexpr DWORD kZeroBlock = 4096;

HRESULT WriteZeroes(tq::riff::FileCursor& c, ULONGLONG count) noexcept
{
    static const BYTE zeroes[kZeroBlock] = {};
    while (count)
    {
        const DWORD step = count < kZeroBlock ? static_cast<DWORD>(count) : kZeroBlock;
        if (const HRESULT hr = c.Write(zeroes, step); FAILED(hr)) return hr;
        count -= step;
    }
    return S_OK;
}

HRESULT InPlace(Framing& framing, ULONGLONG dataPos, ULONGLONG oldSize, const void* data,
                DWORD size) noexcept
{
    // A chunk cut short by the end of the file is not filled out beyond it.
    tq::riff::FileCursor& c = framing.Cursor();
    ULONGLONG length = 0;
    if (const HRESULT hr = c.Length(length); FAILED(hr)) return hr;
    const ULONGLONG fill = std::min(dataPos + oldSize, std::max(length, dataPos + size));
    HRESULT hr = c.SeekTo(dataPos);
    if (SUCCEEDED(hr)) hr = c.Write(data, size);
    if (SUCCEEDED(hr)) hr = WriteZeroes(c, fill - dataPos - size);
    return FAILED(hr) ? TQ_E_WRITEFAILED : S_OK;
}

// Appends the new chunk behind everything, then makes the form include it, then retires the
// old one. Each step leaves a file that reads: until the form grows, the new chunk lies outside
// it; until the old one is filler, the old one is found first.
HRESULT Append(Framing& framing, DWORD id, const void* data, DWORD size, ChunkSizing sizing,
               bool hadOld, ULONGLONG oldPos, ULONGLONG* written) noexcept
{
    tq::riff::FileCursor& c = framing.Cursor();
    ULONGLONG length = 0;
    ULONGLONG pos = 0;
    if (const HRESULT hr = c.Length(length); FAILED(hr)) return hr;
    if (const HRESULT hr = framing.AppendPosition(pos); FAILED(hr)) return hr;
    const ULONGLONG stored = sizing == ChunkSizing::KeepOld ? framing.EvenSize(size) : size;
    const ULONGLONG end = pos + framing.Extent(stored);
    if (!framing.CanEndAt(end)) return TQ_E_SIZELIMIT;

    HRESULT hr = c.SeekTo(pos);
    if (SUCCEEDED(hr)) hr = framing.WriteHeader(id, stored);
    if (SUCCEEDED(hr)) hr = c.Write(data, size);
    if (SUCCEEDED(hr)) hr = WriteZeroes(c, end - pos - framing.HeaderBytes() - size);
    if (SUCCEEDED(hr)) hr = framing.SetFormEnd(end);
    if (FAILED(hr))
    {
        // Give back what was appended; the file is as it was.
        if (end > length && SUCCEEDED(c.SeekTo(std::max(length, pos)))) c.Truncate();
        return TQ_E_WRITEFAILED;
    }
    if (written) *written = end > length ? end - length : 0;
    return hadOld ? framing.MakeJunk(oldPos) : S_OK;
}

// The chunk gets its exact size and filler the rest of its room: header first, so that a write
// that fails between leaves the old extent described.
HRESULT InPlaceExact(Framing& framing, DWORD id, ULONGLONG dataPos, ULONGLONG oldSize,
                     const void* data, DWORD size) noexcept
{
    tq::riff::FileCursor& c = framing.Cursor();
    const ULONGLONG headerPos = dataPos - framing.HeaderBytes();
    const ULONGLONG rest = framing.Extent(oldSize) - framing.Extent(size);
    HRESULT hr = c.SeekTo(headerPos + framing.Extent(size));
    if (SUCCEEDED(hr) && rest) hr = framing.WriteHeader(RIFF_ID_JUNK, rest - framing.HeaderBytes());
    if (SUCCEEDED(hr)) hr = c.SeekTo(headerPos);
    if (SUCCEEDED(hr)) hr = framing.WriteHeader(id, size);
    if (SUCCEEDED(hr)) hr = c.Write(data, size);
    if (SUCCEEDED(hr)) hr = WriteZeroes(c, framing.Extent(size) - framing.HeaderBytes() - size);
    return FAILED(hr) ? TQ_E_WRITEFAILED : S_OK;
}

} // namespace

HRESULT ReplaceChunk(Framing& framing, DWORD id, DWORD alternate, const void* data, DWORD size,
                     ChunkSizing sizing, ULONGLONG* written) noexcept
{
    if (written) *written = 0;
    if (!data && size) return E_INVALIDARG;
    if (const HRESULT hr = framing.ReadHeader(); FAILED(hr)) return hr;
    ULONGLONG oldSize = 0;
    bool hadOld = SUCCEEDED(framing.Find(id, oldSize));
    if (!hadOld && alternate) hadOld = SUCCEEDED(framing.Find(alternate, oldSize));
    ULONGLONG dataPos = 0;
    if (hadOld)
    {
        if (const HRESULT hr = framing.Cursor().Tell(dataPos); FAILED(hr)) return hr;
        if (sizing == ChunkSizing::KeepOld && oldSize >= size)
            return InPlace(framing, dataPos, oldSize, data, size);
        ULONGLONG length = 0;
        if (const HRESULT hr = framing.Cursor().Length(length); FAILED(hr)) return hr;
        const ULONGLONG oldExtent = framing.Extent(oldSize), newExtent = framing.Extent(size);
        const bool fits =
            oldExtent == newExtent || (oldExtent >= newExtent + framing.HeaderBytes());
        // Only a chunk the file holds whole is rewritten in place.
        if (sizing == ChunkSizing::Exact && fits && dataPos + oldSize <= length)
            return InPlaceExact(framing, id, dataPos, oldSize, data, size);
    }
    return Append(framing, id, data, size, sizing, hadOld, dataPos - framing.HeaderBytes(),
                  written);
}

HRESULT RetireChunk(Framing& framing, DWORD id) noexcept
{
    if (const HRESULT hr = framing.ReadHeader(); FAILED(hr)) return hr;
    ULONGLONG size = 0;
    if (FAILED(framing.Find(id, size))) return S_FALSE;
    ULONGLONG dataPos = 0;
    if (const HRESULT hr = framing.Cursor().Tell(dataPos); FAILED(hr)) return hr;
    return framing.MakeJunk(dataPos - framing.HeaderBytes());
}

} // namespace tq::media
