// The chunk framings of Wave64 and RF64 files.
#include "chunkframing.h"
#include "rf64.h"
#include "riff64.h"

#include <algorithm>

namespace tq::media {

namespace {

constexpr ULONGLONG kWave64FormStart = 40;
constexpr ULONGLONG kRf64FormStart = 12;
// As many chunks as the RF64 walk itself looks at.
constexpr int kMaxChunks = 10000;

// The GUID a Wave64 file names a RIFF id by; filler keeps the spelling files of this family
// have always carried.
GUID Wave64Id(DWORD id)
{
    if (id == RIFF_ID_JUNK) return RIFF64_GUID_JUNK;
    GUID guid = RIFF64_GUID_FMT;
    guid.Data1 = id;
    return guid;
}

// The RIFF id a Wave64 GUID stands for, or 0 for a GUID outside the family.
DWORD RiffIdOf(const GUID& guid)
{
    if (IsEqualGUID(guid, RIFF64_GUID_JUNK)) return RIFF_ID_JUNK;
    GUID family = guid;
    family.Data1 = RIFF64_GUID_FMT.Data1;
    return IsEqualGUID(family, RIFF64_GUID_FMT) ? guid.Data1 : 0;
}

} // namespace

HRESULT Wave64Framing::ReadHeader() noexcept
{
    if (const HRESULT hr = Cursor().SeekTo(0); FAILED(hr)) return hr;
    return riff64_ReadFileID(m_file, nullptr, nullptr);
}

HRESULT Wave64Framing::Find(DWORD id, ULONGLONG& size) noexcept
{
    const GUID guid = Wave64Id(id);
    return riff64_FindChunkHeaderInRIFF(m_file, &guid, &size, nullptr);
}

HRESULT Wave64Framing::WriteHeader(DWORD id, ULONGLONG size) noexcept
{
    const GUID guid = Wave64Id(id);
    return riff64_WriteChunkHeader(m_file, &guid, size);
}

HRESULT Wave64Framing::AppendPosition(ULONGLONG& pos) noexcept
{
    ULONGLONG chunks = 0;
    if (const HRESULT hr = Cursor().SeekTo(0); FAILED(hr)) return hr;
    if (const HRESULT hr = riff64_ReadFileID(m_file, &chunks, nullptr); FAILED(hr)) return hr;
    ULONGLONG length = 0;
    if (const HRESULT hr = Cursor().Length(length); FAILED(hr)) return hr;
    if (chunks > length) return TQ_E_CORRUPTFILE;
    const ULONGLONG formEnd = kWave64FormStart + chunks;
    ULONGLONG end = kWave64FormStart;
    for (int i = 0; i < kMaxChunks && end < formEnd; ++i)
    {
        ULONGLONG size = 0;
        if (FAILED(Cursor().SeekTo(end)) || FAILED(riff64_ReadChunkHeader(m_file, nullptr, &size)))
            break;
        if (size > length) return TQ_E_CORRUPTFILE;
        end += Extent(size);
    }
    // The alignment of a last chunk may be missing.
    if (std::max(end, formEnd) > Aligned(length)) return TQ_E_CORRUPTFILE;
    pos = Aligned(std::max(end, formEnd));
    return S_OK;
}

HRESULT Wave64Framing::SetFormEnd(ULONGLONG end) noexcept
{
    // The stored size is the file's length; the layer adds the 24 of the header.
    return riff64_SetRIFFSize(m_file, end - 24);
}

HRESULT Wave64Framing::MakeJunk(ULONGLONG pos) noexcept
{
    if (FAILED(Cursor().SeekTo(pos))) return TQ_E_WRITEFAILED;
    const GUID junk = RIFF64_GUID_JUNK;
    return Cursor().Write(&junk, sizeof junk);
}

HRESULT Wave64Framing::Delete(DWORD id, ULONGLONG& removed) noexcept
{
    const GUID guid = Wave64Id(id);
    return riff64_DeleteChunk(m_file, &guid, &removed);
}

bool Rf64Framing::HasDs64(HANDLE file) noexcept
{
    ULONGLONG size = 0;
    return RF64_FindChunk(file, RIFF_ID_DS64, &size, TRUE, nullptr, nullptr, nullptr) &&
           size >= sizeof(tRF64DS64);
}

HRESULT Rf64Framing::ReadHeader() noexcept
{
    DWORD header[3] = {};
    if (const HRESULT hr = Cursor().SeekTo(0); FAILED(hr)) return hr;
    if (const HRESULT hr = Cursor().Read(header, sizeof header); FAILED(hr)) return hr;
    if (header[0] != RIFF_ID_RF64 && header[0] != RIFF_ID_RIFF) return TQ_E_NORIFFHEADER;
    return S_OK;
}

HRESULT Rf64Framing::ReadDs64(ULONGLONG& riffSize, ULONGLONG& dataSize) noexcept
{
    ULONGLONG size = 0;
    if (!RF64_FindChunk(m_file, RIFF_ID_DS64, &size, TRUE, nullptr, nullptr, nullptr))
        return TQ_E_NOTFOUND;
    tRF64DS64 ds64 = {};
    if (size < sizeof ds64) return TQ_E_CORRUPTFILE;
    if (const HRESULT hr = Cursor().Read(&ds64, sizeof ds64); FAILED(hr)) return hr;
    riffSize = ds64.riffSize;
    dataSize = ds64.dataSize;
    return S_OK;
}

HRESULT Rf64Framing::Find(DWORD id, ULONGLONG& size) noexcept
{
    ULONGLONG dataPos = 0;
    if (!RF64_FindChunk(m_file, id, &size, FALSE, &dataPos, nullptr, nullptr)) return TQ_E_NOTFOUND;
    if (id == RIFF_ID_DATA) return S_OK;
    // The walk gives sizes made even; an odd chunk's own size matters to its reader.
    DWORD stored = 0;
    if (const HRESULT hr = Cursor().SeekTo(dataPos - 4); FAILED(hr)) return hr;
    if (const HRESULT hr = Cursor().Read(&stored, sizeof stored); FAILED(hr)) return hr;
    if (stored + static_cast<ULONGLONG>(stored & 1) == size) size = stored;
    return S_OK;
}

HRESULT Rf64Framing::WriteHeader(DWORD id, ULONGLONG size) noexcept
{
    if (size > MAXDWORD) return TQ_E_SIZELIMIT;
    return riff_WriteChunkHeader(m_file, id, static_cast<DWORD>(size));
}

HRESULT Rf64Framing::AppendPosition(ULONGLONG& pos) noexcept
{
    ULONGLONG riffSize = 0, dataSize = 0;
    if (const HRESULT hr = ReadDs64(riffSize, dataSize); FAILED(hr)) return hr;
    ULONGLONG length = 0;
    if (const HRESULT hr = Cursor().Length(length); FAILED(hr)) return hr;
    if (riffSize > length) return TQ_E_CORRUPTFILE;
    const ULONGLONG formEnd = riffSize + 8;
    ULONGLONG end = kRf64FormStart;
    for (int i = 0; i < kMaxChunks && end < formEnd; ++i)
    {
        DWORD header[2] = {};
        if (FAILED(Cursor().SeekTo(end)) || FAILED(Cursor().Read(header, sizeof header))) break;
        const ULONGLONG size =
            header[0] == RIFF_ID_DATA && header[1] == RF64_SIZE_IN_DS64 ? dataSize : header[1];
        if (size > length) return TQ_E_CORRUPTFILE;
        end += Extent(size);
    }
    if (std::max(end, formEnd) > length + 1) return TQ_E_CORRUPTFILE;
    pos = std::max(end, formEnd);
    pos += pos & 1;
    return S_OK;
}

HRESULT Rf64Framing::SetFormEnd(ULONGLONG end) noexcept
{
    ULONGLONG riffSize = 0, dataSize = 0;
    if (const HRESULT hr = ReadDs64(riffSize, dataSize); FAILED(hr)) return TQ_E_WRITEFAILED;
    return RF64_UpdateRIFFSize(m_file, static_cast<LONGLONG>(end - 8 - riffSize));
}

HRESULT Rf64Framing::MakeJunk(ULONGLONG pos) noexcept
{
    if (FAILED(Cursor().SeekTo(pos))) return TQ_E_WRITEFAILED;
    const DWORD junk = RIFF_ID_JUNK;
    return Cursor().Write(&junk, sizeof junk);
}

HRESULT Rf64Framing::Delete(DWORD id, ULONGLONG& removed) noexcept
{
    return RF64_DeleteChunk(m_file, id, &removed, FALSE);
}

HRESULT Wave64Framing::ReadEntryHeader(DWORD& id, ULONGLONG& size) noexcept
{
    GUID guid = {};
    if (const HRESULT hr = riff64_ReadChunkHeader(m_file, &guid, &size); FAILED(hr)) return hr;
    id = RiffIdOf(guid);
    return S_OK;
}

HRESULT Wave64Framing::CountEntries(ULONGLONG bound, DWORD& count) noexcept
{
    return riff64_GetNumListEntries(m_file, &count, &bound);
}

HRESULT Wave64Framing::FindList(DWORD type, ULONGLONG& size, ULONGLONG& remaining) noexcept
{
    const GUID guid = Wave64Id(type);
    return riff64_FindListChunk(m_file, &guid, &size, &remaining);
}

HRESULT Wave64Framing::FindEntry(DWORD id, ULONGLONG& size, ULONGLONG& remaining) noexcept
{
    const GUID guid = Wave64Id(id);
    return riff64_FindChunkHeader(m_file, &guid, &size, &remaining);
}

HRESULT Wave64Framing::WriteListHeader(DWORD type, ULONGLONG size) noexcept
{
    const GUID guid = Wave64Id(type);
    return riff64_WriteListHeader(m_file, &guid, size);
}

HRESULT Rf64Framing::ReadEntryHeader(DWORD& id, ULONGLONG& size) noexcept
{
    DWORD chunkSize = 0;
    if (const HRESULT hr = riff_ReadChunkHeader(m_file, &id, &chunkSize); FAILED(hr)) return hr;
    size = chunkSize;
    if (id != RIFF_ID_DATA || chunkSize != RF64_SIZE_IN_DS64) return S_OK;
    // The audio, walked past at the top level: its size is in ds64.
    ULONGLONG pos = 0, riffSize = 0, dataSize = 0;
    if (const HRESULT hr = Cursor().Tell(pos); FAILED(hr)) return hr;
    if (SUCCEEDED(ReadDs64(riffSize, dataSize))) size = dataSize;
    return Cursor().SeekTo(pos);
}

HRESULT Rf64Framing::CountEntries(ULONGLONG bound, DWORD& count) noexcept
{
    return RF64_GetNumListEntries(m_file, &count, &bound);
}

HRESULT Rf64Framing::FindList(DWORD type, ULONGLONG& size, ULONGLONG& remaining) noexcept
{
    return RF64_FindListChunk(m_file, type, &size, &remaining);
}

HRESULT Rf64Framing::FindEntry(DWORD id, ULONGLONG& size, ULONGLONG& remaining) noexcept
{
    return RF64_FindChunkHeader(m_file, id, &size, &remaining);
}

HRESULT Rf64Framing::WriteListHeader(DWORD type, ULONGLONG size) noexcept
{
    // Lists keep the 32-bit sizes of RIFF; only "data" and the form have 64-bit ones.
    if (size > MAXDWORD - 8) return TQ_E_SIZELIMIT;
    return riff_WriteListHeader(m_file, type, static_cast<DWORD>(size));
}

} // namespace tq::media
