// Changing the length of a Wave64 file: its stored size and deleting chunks.
#include "riff64.h"

#include "riff64walk.h"

using tq::riff::CursorKeeper;
using tq::riff::FileCursor;
using namespace tq::riff64;

TQKERNEL_API HRESULT riff64_SetRIFFSize(HANDLE file, ULONGLONG size)
{
    FileCursor c(file);
    CursorKeeper keeper(c);
    if (!keeper.Saved() || FAILED(c.SeekTo(kSizeFieldOffset))) return TQ_E_WRITEFAILED;
    const ULONGLONG stored = size + kHeaderBytes;
    return c.Write(&stored, sizeof stored);
}

TQKERNEL_API HRESULT riff64_UpdateRIFFSize(HANDLE file, LONGLONG delta)
{
    FileCursor c(file);
    CursorKeeper keeper(c);
    if (!keeper.Saved()) return TQ_E_READFAILED;
    ULONGLONG stored = 0;
    if (FAILED(c.SeekTo(kSizeFieldOffset)) || FAILED(c.Read(&stored, sizeof stored)))
        return TQ_E_READFAILED;
    if (delta < 0 && static_cast<ULONGLONG>(-(delta + 1)) + 1 > stored) return E_INVALIDARG;
    stored += static_cast<ULONGLONG>(delta);
    if (FAILED(c.SeekTo(kSizeFieldOffset))) return TQ_E_WRITEFAILED;
    return c.Write(&stored, sizeof stored);
}

TQKERNEL_API HRESULT riff64_DeleteChunk(HANDLE file, const GUID* id, ULONGLONG* removed)
{
    if (removed) *removed = 0;
    if (!id) return E_POINTER;
    FileCursor c(file);
    ULONGLONG length = 0;
    if (const HRESULT hr = c.Length(length); FAILED(hr)) return hr;
    ULONGLONG bound = 0;
    if (const HRESULT hr = c.SeekTo(0); FAILED(hr)) return hr;
    if (const HRESULT hr = riff64_ReadFileID(file, &bound, nullptr); FAILED(hr)) return hr;
    ULONGLONG payload = 0;
    if (const HRESULT hr = riff64_FindChunkHeader(file, id, &payload, &bound); FAILED(hr))
        return hr;

    // A chunk that claims more than the bound or the file holds is refused before anything is
    // written: moving by its extent would eat what follows it. The padding of the last chunk
    // may be missing.
    ULONGLONG dataStart = 0;
    if (const HRESULT hr = c.Tell(dataStart); FAILED(hr)) return hr;
    if (payload > bound || payload > length - dataStart) return TQ_E_CORRUPTFILE;
    const ULONGLONG start = dataStart - kHeaderBytes;
    const ULONGLONG extent = Round8(payload) + kHeaderBytes;
    const ULONGLONG behind = start + extent < length ? start + extent : length;
    if (const HRESULT hr = MoveTailDown(c, behind, start); FAILED(hr)) return hr;
    if (removed) *removed = extent;
    return riff64_UpdateRIFFSize(file, -static_cast<LONGLONG>(extent));
}
