// Changing the length of a RIFF file: its size field, the 4 GiB limit and deleting chunks.
#include "riff.h"

#include "filecursor.h"
#include "riffwalk.h"

using tq::riff::CursorKeeper;
using tq::riff::FileCursor;

namespace {

constexpr ULONGLONG kSizeFieldOffset = 4;
// A RIFF size at or above this leaves no room for the 8 bytes of the file header.
constexpr ULONGLONG kSizeLimit = 0xFFFFFFF8ull;

// The delta is 64-bit so that a deletion of more than 2 GiB can be expressed.
HRESULT UpdateSize(FileCursor& c, LONGLONG delta) noexcept
{
    CursorKeeper keeper(c);
    if (!keeper.Saved()) return TQ_E_READFAILED;
    DWORD size = 0;
    if (FAILED(c.SeekTo(kSizeFieldOffset)) || FAILED(c.Read(&size, sizeof size)))
        return TQ_E_READFAILED;
    const LONGLONG sum = static_cast<LONGLONG>(size) + delta;
    if (sum < 0) return E_INVALIDARG;
    if (static_cast<ULONGLONG>(sum) >= kSizeLimit)
    {
        // What was appended beyond the old end cannot be described: it goes. The cut only
        // shortens, so a header that claims more than the file holds never grows the file.
        const ULONGLONG oldEnd = static_cast<ULONGLONG>(size) + 8;
        ULONGLONG length = 0;
        if (FAILED(c.Length(length))) return TQ_E_READFAILED;
        if (length > oldEnd)
        {
            if (const HRESULT hr = c.SeekTo(oldEnd); FAILED(hr)) return hr;
            if (const HRESULT hr = c.Truncate(); FAILED(hr)) return hr;
        }
        return TQ_E_SIZELIMIT;
    }
    const auto newSize = static_cast<DWORD>(sum);
    if (FAILED(c.SeekTo(kSizeFieldOffset))) return TQ_E_WRITEFAILED;
    return c.Write(&newSize, sizeof newSize);
}

} // namespace

TQKERNEL_API HRESULT riff_SetRIFFSize(HANDLE file, DWORD size)
{
    FileCursor c(file);
    CursorKeeper keeper(c);
    if (!keeper.Saved() || FAILED(c.SeekTo(kSizeFieldOffset))) return TQ_E_WRITEFAILED;
    return c.Write(&size, sizeof size);
}

TQKERNEL_API HRESULT riff_UpdateRIFFSize(HANDLE file, LONG delta)
{
    FileCursor c(file);
    return UpdateSize(c, delta);
}

TQKERNEL_API HRESULT riff_DeleteChunk(HANDLE file, DWORD id, DWORD* removed, BOOL isList)
{
    using namespace tq::riff;
    if (removed) *removed = 0;
    FileCursor c(file);
    DWORD bound = 0;
    if (const HRESULT hr = c.SeekTo(0); FAILED(hr)) return hr;
    if (const HRESULT hr = ReadFileID(c, &bound, nullptr); FAILED(hr)) return hr;
    DWORD size = 0;
    const HRESULT found =
        isList ? FindListChunk(c, id, &size, &bound) : FindChunkHeader(c, id, &size, &bound);
    if (FAILED(found)) return found;

    // Refuse a chunk that claims more than the RIFF or the file holds before touching anything:
    // moving by such an extent would eat what follows, and the size field could not shrink by
    // it. The pad of a last odd chunk may be missing.
    ULONGLONG dataStart = 0;
    ULONGLONG length = 0;
    if (const HRESULT hr = c.Tell(dataStart); FAILED(hr)) return hr;
    if (const HRESULT hr = c.Length(length); FAILED(hr)) return hr;
    if (size > bound || dataStart + size > length) return TQ_E_CORRUPTFILE;

    const DWORD header = kChunkHeaderBytes + (isList ? kListTypeBytes : 0);
    const ULONGLONG start = dataStart - header;
    const ULONGLONG extent = Padded(size) + header;
    if (const HRESULT hr = MoveTailDown(c, start + extent, start); FAILED(hr)) return hr;
    // The chunk is gone from here on, whatever becomes of the size field.
    if (removed) *removed = static_cast<DWORD>(extent);
    return UpdateSize(c, -static_cast<LONGLONG>(extent));
}
