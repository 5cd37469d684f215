// The chunk framing of plain RIFF files.
#include "chunkframing.h"

#include <algorithm>

namespace tq::media {

namespace {

constexpr ULONGLONG kFormStart = 12;
constexpr ULONGLONG kLargestRiffSize = 0xFFFFFFF7ull;

// A 64-bit bound as the 32-bit one of the RIFF layer: a RIFF file cannot hold more.

} // namespace

HRESULT RiffFraming::ReadHeader() noexcept
{
    if (const HRESULT hr = Cursor().SeekTo(0); FAILED(hr)) return hr;
    return riff_ReadFileID(m_file, nullptr, nullptr);
}

HRESULT RiffFraming::Find(DWORD id, ULONGLONG& size) noexcept
{
    DWORD chunkSize = 0;
    if (const HRESULT hr = riff_FindChunkHeaderInRIFF(m_file, id, &chunkSize, nullptr); FAILED(hr))
        return hr;
    size = chunkSize;
    return S_OK;
}

HRESULT RiffFraming::WriteHeader(DWORD id, ULONGLONG size) noexcept
{
    if (size > MAXDWORD) return TQ_E_SIZELIMIT;
    return riff_WriteChunkHeader(m_file, id, static_cast<DWORD>(size));
}

HRESULT RiffFraming::AppendPosition(ULONGLONG& pos) noexcept
{
    DWORD riffSize = 0;
    if (const HRESULT hr = Cursor().SeekTo(0); FAILED(hr)) return hr;
    if (const HRESULT hr = riff_ReadFileID(m_file, &riffSize, nullptr); FAILED(hr)) return hr;
    const ULONGLONG formEnd = kFormStart + riffSize;
    // A chunk (usually the audio of a file whose writer died) may run past the form's end:
    // what it claims is kept clear too.
    ULONGLONG end = kFormStart;
    while (end < formEnd)
    {
        DWORD size = 0;
        if (FAILED(Cursor().SeekTo(end)) || FAILED(riff_ReadChunkHeader(m_file, nullptr, &size)))
            break;
        end += Extent(size);
    }
    ULONGLONG length = 0;
    if (const HRESULT hr = Cursor().Length(length); FAILED(hr)) return hr;
    // The pad of a last odd chunk may be missing.
    if (std::max(end, formEnd) > length + 1) return TQ_E_CORRUPTFILE;
    pos = std::max(end, formEnd);
    pos += pos & 1;
    return S_OK;
}

bool RiffFraming::CanEndAt(ULONGLONG end) const noexcept
{
    return end >= kFormStart && end - 8 <= kLargestRiffSize;
}

HRESULT RiffFraming::SetFormEnd(ULONGLONG end) noexcept
{
    if (!CanEndAt(end)) return TQ_E_SIZELIMIT;
    return riff_SetRIFFSize(m_file, static_cast<DWORD>(end - 8));
}

HRESULT RiffFraming::MakeJunk(ULONGLONG pos) noexcept
{
    if (const HRESULT hr = Cursor().SeekTo(pos); FAILED(hr)) return TQ_E_WRITEFAILED;
    const DWORD junk = RIFF_ID_JUNK;
    return Cursor().Write(&junk, sizeof junk);
}

HRESULT RiffFraming::Delete(DWORD id, ULONGLONG& removed) noexcept
{
    DWORD bytes = 0;
    const HRESULT hr = riff_DeleteChunk(m_file, id, &bytes, FALSE);
    removed = bytes;
    return hr;
}

HRESULT RiffFraming::ReadEntryHeader(DWORD& id, ULONGLONG& size) noexcept
{
    DWORD chunkSize = 0;
    if (const HRESULT hr = riff_ReadChunkHeader(m_file, &id, &chunkSize); FAILED(hr)) return hr;
    size = chunkSize;
    return S_OK;
}

HRESULT RiffFraming::CountEntries(ULONGLONG bound, DWORD& count) noexcept
{
    DWORD left = Clamp32(bound);
    return riff_GetNumListEntries(m_file, &count, &left);
}

HRESULT RiffFraming::FindList(DWORD type, ULONGLONG& size, ULONGLONG& remaining) noexcept
{
    DWORD left = Clamp32(remaining), listSize = 0;
    const HRESULT hr = riff_FindListChunk(m_file, type, &listSize, &left);
    remaining = left;
    size = listSize;
    return hr;
}

HRESULT RiffFraming::FindEntry(DWORD id, ULONGLONG& size, ULONGLONG& remaining) noexcept
{
    DWORD left = Clamp32(remaining), entrySize = 0;
    const HRESULT hr = riff_FindChunkHeader(m_file, id, &entrySize, &left);
    remaining = left;
    size = entrySize;
    return hr;
}

HRESULT RiffFraming::WriteListHeader(DWORD type, ULONGLONG size) noexcept
{
    // The whole list, header included, must stay countable in 32 bits.
    if (size > MAXDWORD - 8) return TQ_E_SIZELIMIT;
    return riff_WriteListHeader(m_file, type, static_cast<DWORD>(size));
}

} // namespace tq::media
