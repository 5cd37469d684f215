// Chunk reading, searching and header writing, shared by the file layer and its memory twin.
#pragma once

#include "riff.h"

#include <algorithm>

// A Cursor offers Read (exact, else 0x8004E008), ReadSome, Write (exact, else 0x8004E009),
// Skip, SeekTo, Tell and BytesLeft; FileCursor and MemoryCursor are the two.
namespace tq::riff {

inline constexpr DWORD kFileHeaderBytes = 12;
inline constexpr DWORD kChunkHeaderBytes = 8;
inline constexpr DWORD kListTypeBytes = 4;

// A chunk's size with its pad; 64-bit because 0xFFFFFFFF pads to 2^32.
constexpr ULONGLONG Padded(DWORD size)
{
    return static_cast<ULONGLONG>(size) + (size & 1);
}

// What is left of a bound after taking off count; never below 0.
constexpr DWORD TakeOff(DWORD remaining, ULONGLONG count)
{
    return count >= remaining ? 0 : static_cast<DWORD>(remaining - count);
}

template <class Cursor>
HRESULT ReadChunkHeader(Cursor& c, DWORD* id, DWORD* size)
{
    DWORD header[2];
    if (const HRESULT hr = c.Read(header, sizeof header); FAILED(hr)) return hr;
    if (id) *id = header[0];
    if (size) *size = header[1];
    return S_OK;
}

template <class Cursor>
HRESULT ReadFileID(Cursor& c, DWORD* size, DWORD* form)
{
    if (size) *size = 0;
    DWORD header[3];
    if (const HRESULT hr = c.Read(header, sizeof header); FAILED(hr)) return hr;
    if (header[0] != RIFF_ID_RIFF) return TQ_E_NORIFFHEADER;
    // The size counts the form type; less than that cannot be a RIFF file.
    if (header[1] < kListTypeBytes) return TQ_E_CORRUPTFILE;
    if (size) *size = header[1] - kListTypeBytes;
    if (form) *form = header[2];
    return S_OK;
}

template <class Cursor>
HRESULT ReadListHeader(Cursor& c, DWORD* type, DWORD* size)
{
    DWORD id = 0;
    DWORD listSize = 0;
    if (const HRESULT hr = ReadChunkHeader(c, &id, &listSize); FAILED(hr)) return hr;
    if (id != RIFF_ID_LIST) return TQ_E_NOLISTHEADER;
    if (listSize < kListTypeBytes) return TQ_E_CORRUPTFILE;
    DWORD listType = 0;
    if (const HRESULT hr = c.Read(&listType, sizeof listType); FAILED(hr)) return hr;
    if (type) *type = listType;
    if (size) *size = listSize - kListTypeBytes;
    return S_OK;
}

template <class Cursor>
HRESULT ReadData(Cursor& c, void* buffer, DWORD size)
{
    if (!buffer && size != 0) return E_POINTER;
    if (const HRESULT hr = c.Read(buffer, size); FAILED(hr)) return hr;
    // A seek, so an odd chunk that ends the file without its pad still reads.
    return c.Skip(size & 1);
}

template <class Cursor>
HRESULT ReadDataBounded(Cursor& c, void* buffer, DWORD a, DWORD b)
{
    const DWORD count = std::min(a, b);
    if (!buffer && count != 0) return E_POINTER;
    if (const HRESULT hr = c.Read(buffer, count); FAILED(hr)) return hr;
    // The pad follows the parity of b, not of a: intended, callers that pass the buffer's size
    // as b rely on this step as it has always been taken.
    return c.Skip(static_cast<ULONGLONG>(a - count) + (b & 1));
}

// The block is owned here until the read has succeeded.
class GlobalBlock
{
public:
    explicit GlobalBlock(SIZE_T size) noexcept
    {
        m_handle = ::GlobalAlloc(GHND, size);
        if (m_handle) m_data = ::GlobalLock(m_handle);
    }
    GlobalBlock(const GlobalBlock&) = delete;
    GlobalBlock& operator=(const GlobalBlock&) = delete;
    ~GlobalBlock()
    {
        if (!m_handle) return;
        if (m_data) ::GlobalUnlock(m_handle);
        ::GlobalFree(m_handle);
    }
    void* Data() const noexcept { return m_data; }
    // Hands the locked block to the caller.
    void* Release() noexcept
    {
        m_handle = nullptr;
        return m_data;
    }

private:
    HGLOBAL m_handle = nullptr;
    void* m_data = nullptr;
};

template <class Cursor>
HRESULT ReadDataAlloc(Cursor& c, tRIFFBLOCK* block)
{
    if (!block) return E_POINTER;
    block->data = nullptr;
    if (block->size == 0) return S_OK;
    // A size read from a damaged file must not cost an allocation it cannot fill.
    ULONGLONG left = 0;
    if (const HRESULT hr = c.BytesLeft(left); FAILED(hr)) return hr;
    if (left < block->size) return TQ_E_READFAILED;
    GlobalBlock memory(block->size);
    if (!memory.Data()) return E_OUTOFMEMORY;
    if (const HRESULT hr = ReadData(c, memory.Data(), block->size); FAILED(hr)) return hr;
    block->data = memory.Release();
    return S_OK;
}

// Returns the bytes stepped, or 0 if the cursor could not move.
template <class Cursor>
ULONGLONG SkipChunk(Cursor& c, DWORD size)
{
    return SUCCEEDED(c.Skip(Padded(size))) ? Padded(size) : 0;
}

template <class Cursor>
HRESULT SaveLocation(Cursor& c, DWORD* pos)
{
    if (!pos) return E_POINTER;
    ULONGLONG now = 0;
    if (const HRESULT hr = c.Tell(now); FAILED(hr)) return hr;
    if (now > MAXDWORD) return TQ_E_SIZELIMIT;
    *pos = static_cast<DWORD>(now);
    return S_OK;
}

template <class Cursor>
HRESULT FindChunkHeader(Cursor& c, DWORD id, DWORD* size, DWORD* remaining)
{
    DWORD left = remaining ? *remaining : 0;
    HRESULT hr = S_OK;
    for (;;)
    {
        if (remaining && left < kChunkHeaderBytes)
        {
            hr = TQ_E_NOTFOUND;
            break;
        }
        DWORD chunkId = 0;
        DWORD chunkSize = 0;
        if (hr = ReadChunkHeader(c, &chunkId, &chunkSize); FAILED(hr)) break;
        left = TakeOff(left, kChunkHeaderBytes);
        if (chunkId == id)
        {
            if (size) *size = chunkSize;
            break;
        }
        if (hr = c.Skip(Padded(chunkSize)); FAILED(hr)) break;
        left = TakeOff(left, Padded(chunkSize));
    }
    if (remaining) *remaining = left;
    return hr;
}

template <class Cursor>
HRESULT FindChunkHeaderInRIFF(Cursor& c, DWORD id, DWORD* size, DWORD* riffSize)
{
    DWORD bound = 0;
    HRESULT hr = c.SeekTo(0);
    if (SUCCEEDED(hr)) hr = ReadFileID(c, &bound, nullptr);
    if (SUCCEEDED(hr)) hr = FindChunkHeader(c, id, size, &bound);
    if (riffSize) *riffSize = bound;
    return hr;
}

template <class Cursor>
HRESULT FindListChunk(Cursor& c, DWORD type, DWORD* size, DWORD* remaining)
{
    for (;;)
    {
        DWORD listSize = 0;
        if (const HRESULT hr = FindChunkHeader(c, RIFF_ID_LIST, &listSize, remaining); FAILED(hr))
            return hr;
        if (remaining && *remaining < kListTypeBytes) return TQ_E_NOTFOUND;
        if (listSize < kListTypeBytes) return TQ_E_CORRUPTFILE;
        DWORD listType = 0;
        if (const HRESULT hr = c.Read(&listType, sizeof listType); FAILED(hr)) return hr;
        if (remaining) *remaining -= kListTypeBytes;
        if (listType == type)
        {
            if (size) *size = listSize - kListTypeBytes;
            return S_OK;
        }
        const ULONGLONG rest = Padded(listSize) - kListTypeBytes;
        if (const HRESULT hr = c.Skip(rest); FAILED(hr)) return hr;
        if (remaining) *remaining = TakeOff(*remaining, rest);
    }
}

template <class Cursor>
HRESULT FindListChunkFromStart(Cursor& c, DWORD type, DWORD* size)
{
    DWORD bound = 0;
    if (const HRESULT hr = c.SeekTo(0); FAILED(hr)) return hr;
    if (const HRESULT hr = ReadFileID(c, &bound, nullptr); FAILED(hr)) return hr;
    return FindListChunk(c, type, size, &bound);
}

template <class Cursor>
HRESULT GetNumListEntries(Cursor& c, DWORD* count, const DWORD* remaining)
{
    if (!count || !remaining) return E_POINTER;
    *count = 0;
    ULONGLONG start = 0;
    if (const HRESULT hr = c.Tell(start); FAILED(hr)) return hr;
    DWORD left = *remaining;
    DWORD entries = 0;
    HRESULT hr = S_OK;
    while (left >= kChunkHeaderBytes)
    {
        DWORD entrySize = 0;
        if (hr = ReadChunkHeader(c, nullptr, &entrySize); FAILED(hr)) break;
        if (hr = c.Skip(Padded(entrySize)); FAILED(hr)) break;
        left = TakeOff(left, kChunkHeaderBytes + Padded(entrySize));
        ++entries;
    }
    const HRESULT restored = c.SeekTo(start);
    if (FAILED(hr)) return hr;
    if (FAILED(restored)) return restored;
    *count = entries;
    return S_OK;
}

template <class Cursor>
HRESULT SeekListEntry(Cursor& c, DWORD index, DWORD* remaining)
{
    DWORD left = remaining ? *remaining : 0;
    HRESULT hr = S_OK;
    for (DWORD i = 0; i < index; ++i)
    {
        if (remaining && left < kChunkHeaderBytes)
        {
            hr = TQ_E_NOTFOUND;
            break;
        }
        DWORD entrySize = 0;
        if (hr = ReadChunkHeader(c, nullptr, &entrySize); FAILED(hr)) break;
        if (hr = c.Skip(Padded(entrySize)); FAILED(hr)) break;
        left = TakeOff(left, kChunkHeaderBytes + Padded(entrySize));
    }
    if (remaining) *remaining = left;
    return hr;
}

template <class Cursor>
HRESULT WriteChunkHeader(Cursor& c, DWORD id, DWORD size)
{
    const DWORD header[2] = {id, size};
    return c.Write(header, sizeof header);
}

// The caller's size counts the type.
template <class Cursor>
HRESULT WriteListHeader(Cursor& c, DWORD type, DWORD size)
{
    const DWORD header[3] = {RIFF_ID_LIST, size, type};
    return c.Write(header, sizeof header);
}

template <class Cursor>
HRESULT WriteFileID(Cursor& c, DWORD form, DWORD size)
{
    const DWORD header[3] = {RIFF_ID_RIFF, size, form};
    return c.Write(header, sizeof header);
}

} // namespace tq::riff
