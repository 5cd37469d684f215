// Replacing and removing the bext and iXML chunks of a file, over any framing.
#include "bwfframing.h"

#include <algorithm>

namespace tq::bwf {

namespace {

constexpr DWORD kZeroBlock = 4096;

DWORD IdOf(DWORD kind)
{
    return kind == BWF_CHUNK_BEXT ? RIFF_ID_BEXT : RIFF_ID_IXML;
}

// The chunk of that kind; bext may be spelt in capitals.
HRESULT FindKind(Framing& framing, DWORD kind, ULONGLONG& size, DWORD& id) noexcept
{
    id = IdOf(kind);
    if (SUCCEEDED(framing.Find(id, size))) return S_OK;
    if (kind != BWF_CHUNK_BEXT) return TQ_E_NOTFOUND;
    id = RIFF_ID_BEXT_UPPER;
    return framing.Find(id, size);
}

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

// Appends a new chunk behind everything, then makes the form include it, then retires the old
// one. Each step leaves a file that reads: until the form grows, the new chunk lies outside it;
// until the old one is filler, it is the one found first.
HRESULT Append(Framing& framing, DWORD id, const void* data, DWORD size, bool hadOld,
               ULONGLONG oldPos, ULONGLONG* written) noexcept
{
    tq::riff::FileCursor& c = framing.Cursor();
    ULONGLONG length = 0;
    ULONGLONG pos = 0;
    if (const HRESULT hr = c.Length(length); FAILED(hr)) return hr;
    if (const HRESULT hr = framing.AppendPosition(pos); FAILED(hr)) return hr;
    const ULONGLONG stored = framing.StoredSize(size);
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
        return FAILED(hr) && hr != TQ_E_SIZELIMIT ? TQ_E_WRITEFAILED : hr;
    }
    if (written) *written = end > length ? end - length : 0;
    if (hadOld) return framing.MakeJunk(oldPos);
    return S_OK;
}

} // namespace

HRESULT UpdateStreamChunk(Framing& framing, DWORD kind, const void* data, DWORD size,
                          ULONGLONG* written) noexcept
{
    if (written) *written = 0;
    if (kind != BWF_CHUNK_BEXT && kind != BWF_CHUNK_IXML) return E_INVALIDARG;
    if (!data && size) return E_INVALIDARG;
    if (const HRESULT hr = framing.ReadHeader(); FAILED(hr)) return hr;

    ULONGLONG oldSize = 0;
    DWORD id = 0;
    const bool hadOld = SUCCEEDED(FindKind(framing, kind, oldSize, id));
    ULONGLONG dataPos = 0;
    if (hadOld)
    {
        if (const HRESULT hr = framing.Cursor().Tell(dataPos); FAILED(hr)) return hr;
        if (oldSize >= size)
        {
            // In place: the chunk keeps its size, zeroes stand behind the new data.
            // A chunk cut short by the end of the file is not filled out beyond it.
            tq::riff::FileCursor& c = framing.Cursor();
            ULONGLONG length = 0;
            if (const HRESULT hr = c.Length(length); FAILED(hr)) return hr;
            const ULONGLONG fill = std::min(dataPos + oldSize, std::max(length, dataPos + size));
            HRESULT hr = c.Write(data, size);
            if (SUCCEEDED(hr)) hr = WriteZeroes(c, fill - dataPos - size);
            return FAILED(hr) ? TQ_E_WRITEFAILED : S_OK;
        }
    }
    return Append(framing, IdOf(kind), data, size, hadOld, dataPos - framing.HeaderBytes(),
                  written);
}

HRESULT DeleteChunk(Framing& framing, DWORD kind, ULONGLONG* bytes) noexcept
{
    if (bytes) *bytes = 0;
    if (kind != BWF_CHUNK_BEXT && kind != BWF_CHUNK_IXML) return E_INVALIDARG;
    ULONGLONG removed = 0;
    HRESULT hr = framing.Delete(IdOf(kind), removed);
    if (hr == TQ_E_NOTFOUND && kind == BWF_CHUNK_BEXT)
        hr = framing.Delete(RIFF_ID_BEXT_UPPER, removed);
    if (hr == TQ_E_NOTFOUND) return S_OK;
    if (FAILED(hr)) return hr;
    if (bytes) *bytes = removed;
    return S_OK;
}

} // namespace tq::bwf
