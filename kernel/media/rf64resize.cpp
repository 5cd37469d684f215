// Changing the length of an RF64 file: the ds64 RIFF size and deleting chunks.
#include "rf64.h"

#include "filecursor.h"
#include "rf64walk.h"
#include "riffwalk.h"

using tq::riff::CursorKeeper;
using tq::riff::FileCursor;

namespace {

// Finds ds64 ahead of "data" and reads it; pos gets the offset of its data.
bool ReadDs64(FileCursor& c, tRF64DS64& ds64, ULONGLONG& pos)
{
    ULONGLONG size = 0;
    if (!tq::rf64::FindChunk(c, RIFF_ID_DS64, &size, true, &pos, nullptr, nullptr, nullptr))
        return false;
    return size >= sizeof ds64 && SUCCEEDED(c.Read(&ds64, sizeof ds64));
}

HRESULT UpdateSize(FileCursor& c, LONGLONG delta)
{
    CursorKeeper keeper(c);
    tRF64DS64 ds64;
    ULONGLONG pos = 0;
    if (!keeper.Saved() || !ReadDs64(c, ds64, pos)) return TQ_E_WRITEFAILED;
    if (delta < 0 && static_cast<ULONGLONG>(-(delta + 1)) + 1 > ds64.riffSize)
        return TQ_E_WRITEFAILED;
    ds64.riffSize += static_cast<ULONGLONG>(delta);
    if (FAILED(c.SeekTo(pos))) return TQ_E_WRITEFAILED;
    return c.Write(&ds64, sizeof ds64);
}

// Finds the first "LIST" of that type behind "data"; the cursor stands at its first entry.
bool FindListBehindData(FileCursor& c, DWORD type, ULONGLONG& size)
{
    ULONGLONG dataSize = 0;
    if (!tq::rf64::FindChunk(c, RIFF_ID_DATA, &dataSize, false, nullptr, nullptr, nullptr, nullptr))
        return false;
    if (dataSize > (1ull << 62) || FAILED(c.Skip(dataSize + (dataSize & 1)))) return false;
    return SUCCEEDED(tq::rf64::FindListChunk(c, type, &size, nullptr));
}

} // namespace

TQKERNEL_API HRESULT RF64_UpdateRIFFSize(HANDLE file, LONGLONG delta)
{
    FileCursor c(file);
    return UpdateSize(c, delta);
}

TQKERNEL_API HRESULT RF64_DeleteChunk(HANDLE file, DWORD id, ULONGLONG* removed, BOOL isList)
{
    if (removed) *removed = 0;
    // The ds64 carries the size the deletion has to shrink.
    if (id == RIFF_ID_DS64 && !isList) return E_INVALIDARG;
    FileCursor c(file);
    // Without a ds64 there is no 64-bit size to shrink: that is a plain RIFF file, and the RIFF
    // layer's deletion keeps its 32-bit size right. Asked first, so that nothing moves before
    // it is known which size will follow the move.
    tRF64DS64 ds64;
    ULONGLONG ds64Pos = 0;
    if (!ReadDs64(c, ds64, ds64Pos))
    {
        DWORD plainRemoved = 0;
        const HRESULT hr = riff_DeleteChunk(file, id, &plainRemoved, isList);
        if (removed) *removed = plainRemoved;
        return hr;
    }

    ULONGLONG size = 0;
    const bool found = isList ? FindListBehindData(c, id, size)
                              : tq::rf64::FindChunk(c, id, &size, false, nullptr, nullptr, nullptr,
                                                    nullptr) != FALSE;
    if (!found) return TQ_E_NOTFOUND;
    const ULONGLONG header = tq::riff::kChunkHeaderBytes + (isList ? tq::riff::kListTypeBytes : 0);
    ULONGLONG dataStart = 0;
    ULONGLONG length = 0;
    if (const HRESULT hr = c.Tell(dataStart); FAILED(hr)) return hr;
    if (const HRESULT hr = c.Length(length); FAILED(hr)) return hr;
    // Refused before anything moves: a chunk that claims more than the file holds would take
    // what follows it along. The pad of a last odd chunk may be missing.
    if (size > length - dataStart) return TQ_E_CORRUPTFILE;
    const ULONGLONG start = dataStart - header;
    const ULONGLONG extent = size + (size & 1) + header;
    const ULONGLONG behind = start + extent < length ? start + extent : length;
    if (const HRESULT hr = tq::riff::MoveTailDown(c, behind, start); FAILED(hr)) return hr;
    if (removed) *removed = extent;
    return UpdateSize(c, -static_cast<LONGLONG>(extent));
}
