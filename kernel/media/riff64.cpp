// Wave64 chunk layer on platform file handles: reading, locating, searching and writing chunks.
#include "riff64.h"

#include "riff64walk.h"
#include "riffwalk.h"

#include <algorithm>

using tq::riff::FileCursor;
using namespace tq::riff64;

namespace tq::riff64 {

namespace {

constexpr DWORD kPiece = 1u << 30;
const BYTE kZeros[8] = {};

} // namespace

HRESULT ReadAll(FileCursor& c, void* buffer, ULONGLONG count) noexcept
{
    if (count > static_cast<SIZE_T>(-1)) return E_INVALIDARG;
    auto* at = static_cast<BYTE*>(buffer);
    while (count)
    {
        const DWORD piece = static_cast<DWORD>(std::min<ULONGLONG>(count, kPiece));
        if (const HRESULT hr = c.Read(at, piece); FAILED(hr)) return hr;
        at += piece;
        count -= piece;
    }
    return S_OK;
}

HRESULT WriteAll(FileCursor& c, const void* buffer, ULONGLONG count) noexcept
{
    if (count > static_cast<SIZE_T>(-1)) return E_INVALIDARG;
    const auto* at = static_cast<const BYTE*>(buffer);
    while (count)
    {
        const DWORD piece = static_cast<DWORD>(std::min<ULONGLONG>(count, kPiece));
        if (const HRESULT hr = c.Write(at, piece); FAILED(hr)) return hr;
        at += piece;
        count -= piece;
    }
    return S_OK;
}

HRESULT ReadChunkHeader(FileCursor& c, GUID* id, ULONGLONG* size) noexcept
{
    struct
    {
        GUID id;
        ULONGLONG size;
    } header;
    static_assert(sizeof header == kHeaderBytes);
    if (const HRESULT hr = c.Read(&header, sizeof header); FAILED(hr)) return hr;
    if (id) *id = header.id;
    if (size) *size = Payload(header.size);
    return S_OK;
}

} // namespace tq::riff64

namespace {

HRESULT WriteHeader(FileCursor& c, const GUID& id, ULONGLONG size)
{
    struct
    {
        GUID id;
        ULONGLONG size;
    } header = {id, size + kHeaderBytes};
    return c.Write(&header, sizeof header);
}

HRESULT WritePadded(FileCursor& c, const void* buffer, ULONGLONG size, ULONGLONG* written)
{
    if (written) *written = 0;
    if (!buffer && size != 0) return E_POINTER;
    if (const HRESULT hr = WriteAll(c, buffer, size); FAILED(hr)) return hr;
    const ULONGLONG padded = Round8(size);
    if (const HRESULT hr = c.Write(kZeros, static_cast<DWORD>(padded - size)); FAILED(hr))
        return hr;
    if (written) *written = padded;
    return S_OK;
}

HRESULT FindChunk(FileCursor& c, const GUID& id, ULONGLONG* size, ULONGLONG* remaining)
{
    ULONGLONG left = remaining ? *remaining : 0;
    HRESULT hr = S_OK;
    for (;;)
    {
        if (remaining && left < kHeaderBytes)
        {
            hr = TQ_E_NOTFOUND;
            break;
        }
        GUID chunkId;
        ULONGLONG payload = 0;
        if (hr = ReadChunkHeader(c, &chunkId, &payload); FAILED(hr)) break;
        left = TakeOff(left, kHeaderBytes);
        if (IsEqualGUID(chunkId, id))
        {
            if (size) *size = payload;
            break;
        }
        if (hr = SkipForward(c, Round8(payload)); FAILED(hr)) break;
        left = TakeOff(left, Round8(payload));
    }
    if (remaining) *remaining = left;
    return hr;
}

HRESULT ReadFileID(FileCursor& c, ULONGLONG* size, GUID* form)
{
    if (size) *size = 0;
    struct
    {
        GUID id;
        ULONGLONG size;
    } header = {};
    // A header cut short is judged by its GUID, which the zeros then fail.
    DWORD got = 0;
    c.ReadSome(&header, sizeof header, got);
    if (got != sizeof header || !IsEqualGUID(header.id, RIFF64_GUID_RIFF)) return TQ_E_NORIFFHEADER;
    GUID formId;
    if (const HRESULT hr = c.Read(&formId, sizeof formId); FAILED(hr)) return hr;
    if (size) *size = TakeOff(Payload(header.size), kGuidBytes);
    if (form) *form = formId;
    return S_OK;
}

HRESULT FindList(FileCursor& c, const GUID& type, ULONGLONG* size, ULONGLONG* remaining)
{
    for (;;)
    {
        ULONGLONG payload = 0;
        if (const HRESULT hr = FindChunk(c, RIFF64_GUID_LIST, &payload, remaining); FAILED(hr))
            return hr;
        if (remaining && *remaining < 8) return TQ_E_NOTFOUND;
        if (payload < kGuidBytes) return TQ_E_CORRUPTFILE;
        GUID listType;
        if (const HRESULT hr = c.Read(&listType, sizeof listType); FAILED(hr)) return hr;
        if (remaining) *remaining = TakeOff(*remaining, kGuidBytes);
        if (IsEqualGUID(listType, type))
        {
            if (size) *size = payload - kGuidBytes;
            return S_OK;
        }
        const ULONGLONG rest = Round8(payload) - kGuidBytes;
        if (const HRESULT hr = SkipForward(c, rest); FAILED(hr)) return hr;
        if (remaining) *remaining = TakeOff(*remaining, rest);
    }
}

// Steps over up to `index` chunks while the bound lasts; gives the count stepped.
HRESULT StepChunks(FileCursor& c, DWORD index, ULONGLONG& left, bool bounded, DWORD& stepped)
{
    stepped = 0;
    while (stepped < index)
    {
        if (bounded && left < kHeaderBytes) return TQ_E_NOTFOUND;
        ULONGLONG payload = 0;
        if (const HRESULT hr = ReadChunkHeader(c, nullptr, &payload); FAILED(hr)) return hr;
        if (const HRESULT hr = SkipForward(c, Round8(payload)); FAILED(hr)) return hr;
        left = TakeOff(left, kHeaderBytes + Round8(payload));
        ++stepped;
    }
    return S_OK;
}

} // namespace

// --- Reading ---

TQKERNEL_API HRESULT riff64_ReadFileID(HANDLE file, ULONGLONG* size, GUID* form)
{
    FileCursor c(file);
    return ReadFileID(c, size, form);
}

TQKERNEL_API HRESULT riff64_ReadChunkHeader(HANDLE file, GUID* id, ULONGLONG* size)
{
    FileCursor c(file);
    return ReadChunkHeader(c, id, size);
}

TQKERNEL_API HRESULT riff64_ReadListHeader(HANDLE file, GUID* type, ULONGLONG* size)
{
    FileCursor c(file);
    GUID id;
    ULONGLONG payload = 0;
    if (const HRESULT hr = ReadChunkHeader(c, &id, &payload); FAILED(hr)) return hr;
    if (!IsEqualGUID(id, RIFF64_GUID_LIST)) return TQ_E_NOLISTHEADER;
    if (payload < kGuidBytes) return TQ_E_CORRUPTFILE;
    GUID listType;
    if (const HRESULT hr = c.Read(&listType, sizeof listType); FAILED(hr)) return hr;
    if (type) *type = listType;
    if (size) *size = payload - kGuidBytes;
    return S_OK;
}

TQKERNEL_API HRESULT riff64_ReadData(HANDLE file, void* buffer, ULONGLONG size)
{
    if (!buffer && size != 0) return E_POINTER;
    FileCursor c(file);
    if (const HRESULT hr = ReadAll(c, buffer, size); FAILED(hr)) return hr;
    // A seek, so a last chunk without its padding still reads.
    return c.Skip(Round8(size) - size);
}

TQKERNEL_API HRESULT riff64_ReadDataBounded(HANDLE file, void* buffer, ULONGLONG a, ULONGLONG b)
{
    const ULONGLONG count = std::min(a, b);
    if (!buffer && count != 0) return E_POINTER;
    FileCursor c(file);
    if (const HRESULT hr = ReadAll(c, buffer, count); FAILED(hr)) return hr;
    // b modulo 8 is not the padding of anything; it is the step this function has always taken,
    // and callers pass equal arguments, for which the rest of the chunk is a multiple of 8 away.
    return SkipForward(c, (a - count) + (b % 8));
}

TQKERNEL_API HRESULT riff64_ReadDataAlloc(HANDLE file, tRIFF64BLOCK* block)
{
    if (!block) return E_POINTER;
    block->data = nullptr;
    if (block->size == 0) return S_OK;
    FileCursor c(file);
    // A size read from a damaged file must not cost an allocation it cannot fill.
    ULONGLONG left = 0;
    if (const HRESULT hr = c.BytesLeft(left); FAILED(hr)) return hr;
    if (left < block->size) return TQ_E_READFAILED;
    if (block->size > static_cast<SIZE_T>(-1)) return E_OUTOFMEMORY;
    tq::riff::GlobalBlock memory(static_cast<SIZE_T>(block->size));
    if (!memory.Data()) return E_OUTOFMEMORY;
    if (const HRESULT hr = riff64_ReadData(file, memory.Data(), block->size); FAILED(hr)) return hr;
    block->data = memory.Release();
    return S_OK;
}

// --- Locating ---

TQKERNEL_API HRESULT riff64_SaveLocation(HANDLE file, ULONGLONG* pos)
{
    if (!pos) return E_POINTER;
    return FileCursor(file).Tell(*pos);
}

TQKERNEL_API HRESULT riff64_RestoreLocation(HANDLE file, ULONGLONG pos)
{
    return FileCursor(file).SeekTo(pos);
}

TQKERNEL_API ULONGLONG riff64_SkipChunk(HANDLE file, ULONGLONG size)
{
    FileCursor c(file);
    return SUCCEEDED(SkipForward(c, Round8(size))) ? Round8(size) : 0;
}

TQKERNEL_API HRESULT riff64_SeekDataStart(HANDLE file)
{
    return FileCursor(file).SeekTo(kFileHeaderBytes);
}

TQKERNEL_API HRESULT riff64_ValidateChunkHeader(const GUID* /*id*/, ULONGLONG size)
{
    if (size & 0x800000007ull) return TQ_E_BADCHUNKHEADER;
    if (size == 0) return TQ_E_ZEROLENGTHCHUNK;
    return S_OK;
}

TQKERNEL_API HRESULT riff64_FindChunkHeader(HANDLE file, const GUID* id, ULONGLONG* size,
                                            ULONGLONG* remaining)
{
    if (!id) return E_POINTER;
    FileCursor c(file);
    return FindChunk(c, *id, size, remaining);
}

TQKERNEL_API HRESULT riff64_FindChunkHeaderInRIFF(HANDLE file, const GUID* id, ULONGLONG* size,
                                                  ULONGLONG* riffSize)
{
    if (!id) return E_POINTER;
    FileCursor c(file);
    ULONGLONG bound = 0;
    HRESULT hr = c.SeekTo(0);
    if (SUCCEEDED(hr)) hr = ReadFileID(c, &bound, nullptr);
    if (SUCCEEDED(hr)) hr = FindChunk(c, *id, size, &bound);
    if (riffSize) *riffSize = bound;
    return hr;
}

TQKERNEL_API HRESULT riff64_FindListChunk(HANDLE file, const GUID* type, ULONGLONG* size,
                                          ULONGLONG* remaining)
{
    if (!type) return E_POINTER;
    FileCursor c(file);
    return FindList(c, *type, size, remaining);
}

TQKERNEL_API HRESULT riff64_FindListChunkFromStart(HANDLE file, const GUID* type, ULONGLONG* size)
{
    if (!type) return E_POINTER;
    FileCursor c(file);
    ULONGLONG bound = 0;
    if (const HRESULT hr = c.SeekTo(0); FAILED(hr)) return hr;
    if (const HRESULT hr = ReadFileID(c, &bound, nullptr); FAILED(hr)) return hr;
    return FindList(c, *type, size, &bound);
}

TQKERNEL_API HRESULT riff64_GetNumListEntries(HANDLE file, DWORD* count, ULONGLONG* remaining)
{
    if (!count || !remaining) return E_POINTER;
    *count = 0;
    FileCursor c(file);
    tq::riff::CursorKeeper keeper(c);
    if (!keeper.Saved()) return TQ_E_READFAILED;
    ULONGLONG left = *remaining;
    DWORD entries = 0;
    const HRESULT hr = StepChunks(c, MAXDWORD, left, true, entries);
    // Running out of the bound is how the count ends.
    if (FAILED(hr) && hr != TQ_E_NOTFOUND) return hr;
    *count = entries;
    return S_OK;
}

TQKERNEL_API HRESULT riff64_SeekListEntry(HANDLE file, DWORD index, ULONGLONG* remaining)
{
    FileCursor c(file);
    ULONGLONG left = remaining ? *remaining : 0;
    DWORD stepped = 0;
    const HRESULT hr = StepChunks(c, index, left, remaining != nullptr, stepped);
    if (remaining) *remaining = left;
    return hr;
}

// --- Writing ---

TQKERNEL_API HRESULT riff64_WriteFileID(HANDLE file, const GUID* form, ULONGLONG size)
{
    if (!form) return E_POINTER;
    FileCursor c(file);
    if (const HRESULT hr = WriteHeader(c, RIFF64_GUID_RIFF, size); FAILED(hr)) return hr;
    return c.Write(form, sizeof *form);
}

TQKERNEL_API HRESULT riff64_WriteListHeader(HANDLE file, const GUID* type, ULONGLONG size)
{
    if (!type) return E_POINTER;
    FileCursor c(file);
    if (const HRESULT hr = WriteHeader(c, RIFF64_GUID_LIST, size); FAILED(hr)) return hr;
    return c.Write(type, sizeof *type);
}

TQKERNEL_API HRESULT riff64_WriteChunkHeader(HANDLE file, const GUID* id, ULONGLONG size)
{
    if (!id) return E_POINTER;
    FileCursor c(file);
    return WriteHeader(c, *id, size);
}

TQKERNEL_API HRESULT riff64_WriteData(HANDLE file, const void* buffer, ULONGLONG size,
                                      ULONGLONG* written)
{
    FileCursor c(file);
    return WritePadded(c, buffer, size, written);
}

TQKERNEL_API HRESULT riff64_WriteChunk(HANDLE file, const GUID* id, const void* buffer,
                                       ULONGLONG size, ULONGLONG* written)
{
    if (written) *written = 0;
    if (!id || (!buffer && size != 0)) return E_POINTER;
    FileCursor c(file);
    if (const HRESULT hr = WriteHeader(c, *id, size); FAILED(hr)) return hr;
    ULONGLONG padded = 0;
    if (const HRESULT hr = WritePadded(c, buffer, size, &padded); FAILED(hr)) return hr;
    if (written) *written = padded + kHeaderBytes;
    return S_OK;
}

// --- Chunks whose length is known only afterwards ---

TQKERNEL_API ULONGLONG riff64_AmountWritten(HANDLE file, ULONGLONG start)
{
    ULONGLONG now = 0;
    if (FAILED(FileCursor(file).Tell(now))) return 0;
    return now > start ? now - start : 0;
}

TQKERNEL_API HRESULT riff64_Pad(HANDLE file, ULONGLONG start)
{
    FileCursor c(file);
    ULONGLONG now = 0;
    if (const HRESULT hr = c.Tell(now); FAILED(hr)) return hr;
    if (now < start) return E_INVALIDARG;
    const ULONGLONG distance = now - start;
    return c.Write(kZeros, static_cast<DWORD>(Round8(distance) - distance));
}

TQKERNEL_API HRESULT riff64_WriteToFile(HANDLE file, const void* buffer, DWORD size)
{
    if (!buffer && size != 0) return E_POINTER;
    return FileCursor(file).Write(buffer, size);
}

TQKERNEL_API HRESULT riff64_PrepareChunk(HANDLE file, const GUID* id, ULONGLONG* start)
{
    if (!id) return E_POINTER;
    FileCursor c(file);
    ULONGLONG now = 0;
    if (const HRESULT hr = c.Tell(now); FAILED(hr)) return hr;
    if (start) *start = now;
    return WriteHeader(c, *id, 0);
}

TQKERNEL_API HRESULT riff64_PrepareList(HANDLE file, const GUID* type, ULONGLONG* start)
{
    if (!type) return E_POINTER;
    FileCursor c(file);
    ULONGLONG now = 0;
    if (const HRESULT hr = c.Tell(now); FAILED(hr)) return hr;
    if (start) *start = now;
    if (const HRESULT hr = WriteHeader(c, RIFF64_GUID_LIST, 0); FAILED(hr)) return hr;
    return c.Write(type, sizeof *type);
}

TQKERNEL_API HRESULT riff64_CompleteChunk(HANDLE file, ULONGLONG start)
{
    if (const HRESULT hr = riff64_Pad(file, start); FAILED(hr)) return hr;
    FileCursor c(file);
    ULONGLONG end = 0;
    if (const HRESULT hr = c.Tell(end); FAILED(hr)) return hr;
    const ULONGLONG stored = end - start;
    if (FAILED(c.SeekTo(start + kGuidBytes))) return TQ_E_WRITEFAILED;
    const HRESULT hr = c.Write(&stored, sizeof stored);
    if (FAILED(c.SeekTo(end))) return TQ_E_WRITEFAILED;
    return hr;
}

TQKERNEL_API HRESULT riff64_WriteChunkToFile(HANDLE file, const GUID* id, const void* buffer,
                                             ULONGLONG size)
{
    ULONGLONG start = 0;
    if (const HRESULT hr = riff64_SaveLocation(file, &start); FAILED(hr)) return hr;
    if (const HRESULT hr = riff64_WriteChunk(file, id, buffer, size, nullptr); FAILED(hr))
        return hr;
    return riff64_CompleteChunk(file, start);
}

TQKERNEL_API const WCHAR* riff64_getGUIDLabel(const GUID* /*id*/)
{
    return nullptr;
}

TQKERNEL_API const WCHAR* riff64_getGUIDLabelProperly(const GUID* /*id*/)
{
    return nullptr;
}
