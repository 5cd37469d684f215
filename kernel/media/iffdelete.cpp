// Deleting a chunk of an AIFF file.
#include "iff.h"

#include "filecursor.h"

#include <algorithm>
#include <memory>
#include <new>

using tq::riff::FileCursor;

namespace {

constexpr DWORD kMoveBlock = 4096;
constexpr DWORD kHeaderBytes = 8;
constexpr DWORD kFileHeaderBytes = 12;

// Moves the bytes from `from` to the end of the file down to `to`, and ends the file there.
HRESULT MoveTailDown(FileCursor& c, ULONGLONG from, ULONGLONG to, ULONGLONG length)
{
    const std::unique_ptr<BYTE[]> block(new (std::nothrow) BYTE[kMoveBlock]());
    if (!block) return E_OUTOFMEMORY;
    while (from < length)
    {
        const DWORD count = static_cast<DWORD>(std::min<ULONGLONG>(kMoveBlock, length - from));
        if (const HRESULT hr = c.SeekTo(from); FAILED(hr)) return hr;
        if (const HRESULT hr = c.Read(block.get(), count); FAILED(hr)) return hr;
        if (const HRESULT hr = c.SeekTo(to); FAILED(hr)) return hr;
        if (const HRESULT hr = c.Write(block.get(), count); FAILED(hr)) return hr;
        from += count;
        to += count;
    }
    if (const HRESULT hr = c.SeekTo(to); FAILED(hr)) return hr;
    return c.Truncate();
}

} // namespace

TQKERNEL_API HRESULT iff_DeleteChunk(HANDLE file, DWORD id, DWORD* removed)
{
    if (removed) *removed = 0;
    FileCursor c(file);
    ULONGLONG length = 0;
    if (const HRESULT hr = c.Length(length); FAILED(hr)) return hr;
    DWORD formSize = 0;
    if (!iff_IsAIFFFile(file, &formSize)) return TQ_E_CORRUPTFILE;
    if (const HRESULT hr = c.SeekTo(kFileHeaderBytes); FAILED(hr)) return hr;
    DWORD bound = formSize > 4 ? formSize - 4 : 0;
    DWORD size = 0;
    if (const HRESULT hr = iff_FindChunkHeader(file, id, &size, &bound); FAILED(hr)) return hr;

    // A chunk that claims more than the FORM or the file holds is refused before anything is
    // written: moving by its extent would eat what follows it. The pad of a last odd chunk
    // may be missing.
    ULONGLONG dataStart = 0;
    if (const HRESULT hr = c.Tell(dataStart); FAILED(hr)) return hr;
    if (size > bound || dataStart + size > length) return TQ_E_CORRUPTFILE;
    const ULONGLONG start = dataStart - kHeaderBytes;
    const ULONGLONG extent = static_cast<ULONGLONG>(size) + (size & 1) + kHeaderBytes;
    if (extent > formSize) return TQ_E_CORRUPTFILE;
    if (const HRESULT hr = MoveTailDown(c, std::min(start + extent, length), start, length);
        FAILED(hr))
        return hr;
    if (removed) *removed = static_cast<DWORD>(extent);
    if (const HRESULT hr = c.SeekTo(4); FAILED(hr)) return hr;
    if (const HRESULT hr = iff_WriteDWORD(file, formSize - static_cast<DWORD>(extent)); FAILED(hr))
        return hr;
    return c.SeekTo(start + (length - std::min(start + extent, length)));
}
