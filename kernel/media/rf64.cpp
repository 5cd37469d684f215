// RF64: the chunk walk that takes its sizes from ds64, and the linear searches behind "data".
#include "rf64.h"

#include "filecursor.h"
#include "rf64walk.h"
#include "riffwalk.h"

#include <algorithm>

using tq::riff::FileCursor;

namespace {

// Enough for any file a writer produces; a damaged file full of empty chunks stops here.
constexpr int kChunkLimit = 10000;

constexpr ULONGLONG TakeOff(ULONGLONG remaining, ULONGLONG count)
{
    return count >= remaining ? 0 : remaining - count;
}

constexpr ULONGLONG Padded64(ULONGLONG size)
{
    return size + (size & 1);
}

// Moves forward by a count read from a file; a count the platform would take as a move backwards
// fails like a read past the end.
HRESULT SkipForward(FileCursor& c, ULONGLONG count)
{
    return count > (1ull << 62) ? TQ_E_READFAILED : c.Skip(count);
}

// The size of "data" once a ds64 has been read: its 64-bit value, or the 32-bit field when
// ds64 holds 0 and the field is a real size.
ULONGLONG DataSizeBehindDs64(DWORD field, const tRF64DS64& ds64)
{
    if (ds64.dataSize) return ds64.dataSize;
    return field >= 0xFFFFFFFEu ? 0 : field;
}

} // namespace

namespace tq::rf64 {

BOOL FindChunk(FileCursor& c, DWORD id, ULONGLONG* size, bool stopAtData, ULONGLONG* dataPos,
               ULONGLONG* remaining, ULONGLONG* fileEnd, tRF64DS64* ds64Out)
{
    if (remaining) *remaining = 0;
    DWORD header[3];
    if (FAILED(c.SeekTo(0)) || FAILED(c.Read(header, sizeof header))) return FALSE;
    if (header[0] != RIFF_ID_RIFF && header[0] != RIFF_ID_RF64) return FALSE;
    tRF64DS64 ds64 = {};
    bool haveDs64 = false;
    ULONGLONG left = header[1];
    BOOL found = FALSE;
    for (int chunk = 0; chunk < kChunkLimit; ++chunk)
    {
        DWORD chunkId = 0;
        DWORD field = 0;
        if (FAILED(tq::riff::ReadChunkHeader(c, &chunkId, &field))) break;
        if ((field & 1) && field < 0xFFFFFFFFu) ++field;
        left = TakeOff(left, tq::riff::kChunkHeaderBytes);
        const bool isData = chunkId == RIFF_ID_DATA;
        const ULONGLONG chunkSize = isData && haveDs64 ? DataSizeBehindDs64(field, ds64) : field;
        if (chunkId == id)
        {
            ULONGLONG pos = 0;
            if (FAILED(c.Tell(pos))) break;
            if (size) *size = chunkSize;
            if (dataPos) *dataPos = pos;
            found = TRUE;
            break;
        }
        if (isData && (stopAtData || (!haveDs64 && field == RF64_SIZE_IN_DS64))) break;
        if (chunkId == RIFF_ID_DS64)
        {
            ULONGLONG pos = 0;
            if (FAILED(c.Tell(pos))) break;
            ds64 = {};
            DWORD got = 0;
            c.ReadSome(&ds64, std::min<DWORD>(field, sizeof ds64), got);
            if (FAILED(c.SeekTo(pos))) break;
            haveDs64 = true;
            left = TakeOff(ds64.riffSize, 12);
            if (fileEnd) *fileEnd = ds64.riffSize + 8;
        }
        const ULONGLONG skip = isData ? Padded64(chunkSize) : field;
        if (FAILED(SkipForward(c, skip))) break;
        left = TakeOff(left, skip);
        if (left < tq::riff::kChunkHeaderBytes) break;
    }
    if (remaining) *remaining = left;
    if (ds64Out) *ds64Out = haveDs64 ? ds64 : tRF64DS64{};
    return found;
}

HRESULT FindChunkHeader(FileCursor& c, DWORD id, ULONGLONG* size, ULONGLONG* remaining)
{
    ULONGLONG left = remaining ? *remaining : 0;
    HRESULT hr = S_OK;
    for (;;)
    {
        if (remaining && left < tq::riff::kChunkHeaderBytes)
        {
            hr = TQ_E_NOTFOUND;
            break;
        }
        DWORD chunkId = 0;
        DWORD chunkSize = 0;
        if (hr = tq::riff::ReadChunkHeader(c, &chunkId, &chunkSize); FAILED(hr)) break;
        left = TakeOff(left, tq::riff::kChunkHeaderBytes);
        if (chunkId == id)
        {
            if (size) *size = chunkSize;
            break;
        }
        if (hr = c.Skip(tq::riff::Padded(chunkSize)); FAILED(hr)) break;
        left = TakeOff(left, tq::riff::Padded(chunkSize));
    }
    if (remaining) *remaining = left;
    return hr;
}

HRESULT FindListChunk(FileCursor& c, DWORD type, ULONGLONG* size, ULONGLONG* remaining)
{
    for (;;)
    {
        ULONGLONG listSize = 0;
        if (const HRESULT hr = FindChunkHeader(c, RIFF_ID_LIST, &listSize, remaining); FAILED(hr))
            return hr;
        if (remaining && *remaining < tq::riff::kListTypeBytes) return TQ_E_NOTFOUND;
        if (listSize < tq::riff::kListTypeBytes) return TQ_E_CORRUPTFILE;
        DWORD listType = 0;
        if (const HRESULT hr = c.Read(&listType, sizeof listType); FAILED(hr)) return hr;
        if (remaining) *remaining -= tq::riff::kListTypeBytes;
        if (listType == type)
        {
            if (size) *size = listSize - tq::riff::kListTypeBytes;
            return S_OK;
        }
        const ULONGLONG rest = Padded64(listSize) - tq::riff::kListTypeBytes;
        if (const HRESULT hr = c.Skip(rest); FAILED(hr)) return hr;
        if (remaining) *remaining = TakeOff(*remaining, rest);
    }
}

} // namespace tq::rf64

TQKERNEL_API BOOL RF64_FindChunk(HANDLE file, DWORD id, ULONGLONG* size, BOOL stopAtData,
                                 ULONGLONG* dataPos, ULONGLONG* remaining, ULONGLONG* fileEnd)
{
    if (!file || file == INVALID_HANDLE_VALUE) return FALSE;
    FileCursor c(file);
    return tq::rf64::FindChunk(c, id, size, stopAtData != FALSE, dataPos, remaining, fileEnd,
                               nullptr);
}

TQKERNEL_API HRESULT RF64_FindChunkHeaderInRIFF(HANDLE file, DWORD id, ULONGLONG* size,
                                                ULONGLONG* riffSize)
{
    return RF64_FindChunk(file, id, size, FALSE, nullptr, riffSize, nullptr) ? S_OK : TQ_E_NOTFOUND;
}

TQKERNEL_API HRESULT RF64_FindChunkHeader(HANDLE file, DWORD id, ULONGLONG* size,
                                          ULONGLONG* remaining)
{
    FileCursor c(file);
    return tq::rf64::FindChunkHeader(c, id, size, remaining);
}

TQKERNEL_API HRESULT RF64_FindListChunk(HANDLE file, DWORD type, ULONGLONG* size,
                                        ULONGLONG* remaining)
{
    FileCursor c(file);
    return tq::rf64::FindListChunk(c, type, size, remaining);
}

TQKERNEL_API HRESULT RF64_GetNumListEntries(HANDLE file, DWORD* count, ULONGLONG* remaining)
{
    if (!count || !remaining) return E_POINTER;
    *count = 0;
    FileCursor c(file);
    tq::riff::CursorKeeper keeper(c);
    if (!keeper.Saved()) return TQ_E_READFAILED;
    ULONGLONG left = *remaining;
    DWORD entries = 0;
    while (left >= tq::riff::kChunkHeaderBytes)
    {
        DWORD entrySize = 0;
        if (const HRESULT hr = tq::riff::ReadChunkHeader(c, nullptr, &entrySize); FAILED(hr))
            return hr;
        if (const HRESULT hr = c.Skip(tq::riff::Padded(entrySize)); FAILED(hr)) return hr;
        left = TakeOff(left, tq::riff::kChunkHeaderBytes + tq::riff::Padded(entrySize));
        ++entries;
    }
    *count = entries;
    return S_OK;
}

TQKERNEL_API HRESULT SeekToRF64End(HANDLE file)
{
    FileCursor c(file);
    ULONGLONG size = 0;
    if (!RF64_FindChunk(file, RIFF_ID_DS64, &size, TRUE, nullptr, nullptr, nullptr))
        return TQ_E_NOTFOUND;
    tRF64DS64 ds64;
    if (size < sizeof ds64) return TQ_E_READFAILED;
    if (const HRESULT hr = c.Read(&ds64, sizeof ds64); FAILED(hr)) return hr;
    // A size the platform would take as a negative position is no end of anything.
    if (ds64.riffSize > (1ull << 62)) return TQ_E_READFAILED;
    return c.SeekTo(ds64.riffSize + 8);
}
