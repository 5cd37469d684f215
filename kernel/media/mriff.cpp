// The memory twin of the RIFF chunk layer: the cursor, its file-like primitives, and the reads,
// searches and header writes of the file layer on a byte block.
#include "mriff.h"

#include "memorycursor.h"
#include "riffwalk.h"

#include <algorithm>

using tq::riff::MemoryCursor;
using tq::riff::OnMemoryCursor;

namespace {

// Distances beyond any block clamp the same as at 2^33; held there so no sum can overflow.
constexpr LONGLONG kFarAway = 0x200000000ll;

// The offset a seek aims at before clamping, or false for an unknown method.
bool SeekTarget(const MemoryCursor& c, const _tMRIFF& m, LONGLONG distance, DWORD method,
                LONGLONG& target)
{
    distance = std::clamp(distance, -kFarAway, kFarAway);
    switch (method)
    {
    case FILE_BEGIN:
        target = distance;
        return true;
    case FILE_CURRENT:
        target = c.Offset() + distance;
        return true;
    case FILE_END:
        target = m.dataSize + distance;
        return true;
    default:
        return false;
    }
}

} // namespace

TQKERNEL_API HRESULT mriff_Init(_tMRIFF* m, void* base, DWORD dataSize, DWORD capacity)
{
    if (!m) return E_POINTER;
    if (!base && capacity != 0) return E_POINTER;
    if (dataSize > capacity) return E_INVALIDARG;
    const auto bytes = static_cast<BYTE*>(base);
    m->base = bytes;
    m->current = bytes;
    m->dataEnd = bytes + dataSize;
    m->capacityEnd = bytes + capacity;
    m->dataSize = dataSize;
    m->capacity = capacity;
    return S_OK;
}

// --- File-like primitives ---

TQKERNEL_API DWORD mriff_GetFilePointer(const _tMRIFF* m)
{
    if (FAILED(tq::riff::CheckMemoryCursor(m))) return INVALID_SET_FILE_POINTER;
    return static_cast<DWORD>(m->current - m->base);
}

TQKERNEL_API DWORD mriff_SetFilePointer(_tMRIFF* m, LONG distance, LONG* distanceHigh, DWORD method)
{
    if (FAILED(tq::riff::CheckMemoryCursor(m))) return INVALID_SET_FILE_POINTER;
    MemoryCursor c(*m);
    // As on the platform: without a high half the distance is a signed 32-bit value.
    const LONGLONG full =
        distanceHigh ? static_cast<LONGLONG>((static_cast<ULONGLONG>(*distanceHigh) << 32) |
                                             static_cast<DWORD>(distance))
                     : distance;
    LONGLONG target = 0;
    if (!SeekTarget(c, *m, full, method, target)) return INVALID_SET_FILE_POINTER;
    if (distanceHigh) *distanceHigh = 0;
    return c.MoveTo(target);
}

TQKERNEL_API LONGLONG mriff_TqSetFilePointer(_tMRIFF* m, LONGLONG distance, DWORD method)
{
    if (FAILED(tq::riff::CheckMemoryCursor(m))) return -1;
    MemoryCursor c(*m);
    LONGLONG target = 0;
    if (!SeekTarget(c, *m, distance, method, target)) return -1;
    return c.MoveTo(target);
}

TQKERNEL_API BOOL mriff_ReadFile(_tMRIFF* m, void* buffer, DWORD count, DWORD* read)
{
    if (read) *read = 0;
    if (FAILED(tq::riff::CheckMemoryCursor(m)) || (!buffer && count != 0)) return FALSE;
    DWORD got = 0;
    MemoryCursor(*m).ReadSome(buffer, count, got);
    if (read) *read = got;
    return got == count;
}

TQKERNEL_API BOOL mriff_WriteFile(_tMRIFF* m, const void* buffer, DWORD count, DWORD* written)
{
    if (written) *written = 0;
    if (FAILED(tq::riff::CheckMemoryCursor(m)) || (!buffer && count != 0)) return FALSE;
    DWORD put = 0;
    MemoryCursor(*m).WriteSome(buffer, count, put);
    if (written) *written = put;
    return TRUE;
}

TQKERNEL_API LONG mriff_UpdateDataSize(_tMRIFF* m, LONG delta)
{
    if (FAILED(tq::riff::CheckMemoryCursor(m))) return 0;
    return MemoryCursor(*m).ResizeData(delta);
}

// --- Twins of the file functions ---

TQKERNEL_API HRESULT mriff_ReadFileID(_tMRIFF* m, DWORD* size, DWORD* form)
{
    return OnMemoryCursor(m, [&](MemoryCursor& c) { return tq::riff::ReadFileID(c, size, form); });
}

TQKERNEL_API HRESULT mriff_ReadChunkHeader(_tMRIFF* m, DWORD* id, DWORD* size)
{
    return OnMemoryCursor(m,
                          [&](MemoryCursor& c) { return tq::riff::ReadChunkHeader(c, id, size); });
}

TQKERNEL_API HRESULT mriff_ReadListHeader(_tMRIFF* m, DWORD* type, DWORD* size)
{
    return OnMemoryCursor(m,
                          [&](MemoryCursor& c) { return tq::riff::ReadListHeader(c, type, size); });
}

TQKERNEL_API HRESULT mriff_ReadData(_tMRIFF* m, void* buffer, DWORD size)
{
    return OnMemoryCursor(m, [&](MemoryCursor& c) { return tq::riff::ReadData(c, buffer, size); });
}

TQKERNEL_API HRESULT mriff_ReadDataBounded(_tMRIFF* m, void* buffer, DWORD a, DWORD b)
{
    return OnMemoryCursor(
        m, [&](MemoryCursor& c) { return tq::riff::ReadDataBounded(c, buffer, a, b); });
}

TQKERNEL_API HRESULT mriff_ReadDataAlloc(_tMRIFF* m, tRIFFBLOCK* block)
{
    return OnMemoryCursor(m, [&](MemoryCursor& c) { return tq::riff::ReadDataAlloc(c, block); });
}

TQKERNEL_API HRESULT mriff_FindChunkHeader(_tMRIFF* m, DWORD id, DWORD* size, DWORD* remaining)
{
    return OnMemoryCursor(
        m, [&](MemoryCursor& c) { return tq::riff::FindChunkHeader(c, id, size, remaining); });
}

TQKERNEL_API HRESULT mriff_FindChunkHeaderInRIFF(_tMRIFF* m, DWORD id, DWORD* size, DWORD* riffSize)
{
    if (riffSize) *riffSize = 0;
    return OnMemoryCursor(
        m, [&](MemoryCursor& c) { return tq::riff::FindChunkHeaderInRIFF(c, id, size, riffSize); });
}

TQKERNEL_API HRESULT mriff_FindListChunk(_tMRIFF* m, DWORD type, DWORD* size, DWORD* remaining)
{
    return OnMemoryCursor(
        m, [&](MemoryCursor& c) { return tq::riff::FindListChunk(c, type, size, remaining); });
}

TQKERNEL_API HRESULT mriff_FindListChunkFromStart(_tMRIFF* m, DWORD type, DWORD* size)
{
    return OnMemoryCursor(
        m, [&](MemoryCursor& c) { return tq::riff::FindListChunkFromStart(c, type, size); });
}

TQKERNEL_API HRESULT mriff_GetNumListEntries(_tMRIFF* m, DWORD* count, DWORD* remaining)
{
    if (count) *count = 0;
    return OnMemoryCursor(
        m, [&](MemoryCursor& c) { return tq::riff::GetNumListEntries(c, count, remaining); });
}

TQKERNEL_API HRESULT mriff_SeekDataStart(_tMRIFF* m)
{
    return OnMemoryCursor(m, [&](MemoryCursor& c) { return c.SeekTo(tq::riff::kFileHeaderBytes); });
}

TQKERNEL_API ULONGLONG mriff_SkipChunk(_tMRIFF* m, DWORD size)
{
    if (FAILED(tq::riff::CheckMemoryCursor(m))) return 0;
    MemoryCursor c(*m);
    return tq::riff::SkipChunk(c, size);
}

TQKERNEL_API HRESULT mriff_SaveLocation(_tMRIFF* m, DWORD* pos)
{
    return OnMemoryCursor(m, [&](MemoryCursor& c) { return tq::riff::SaveLocation(c, pos); });
}

TQKERNEL_API HRESULT mriff_RestoreLocation(_tMRIFF* m, DWORD pos)
{
    return OnMemoryCursor(m, [&](MemoryCursor& c) { return c.SeekTo(pos); });
}

TQKERNEL_API HRESULT mriff_WriteChunkHeader(_tMRIFF* m, DWORD id, DWORD size)
{
    return OnMemoryCursor(m,
                          [&](MemoryCursor& c) { return tq::riff::WriteChunkHeader(c, id, size); });
}

TQKERNEL_API HRESULT mriff_WriteListHeader(_tMRIFF* m, DWORD type, DWORD size)
{
    return OnMemoryCursor(
        m, [&](MemoryCursor& c) { return tq::riff::WriteListHeader(c, type, size); });
}

TQKERNEL_API HRESULT mriff_WriteFileID(_tMRIFF* m, DWORD form, DWORD size)
{
    return OnMemoryCursor(m, [&](MemoryCursor& c) { return tq::riff::WriteFileID(c, form, size); });
}
