// The RIFF chunk layer over a byte block: a memory cursor and the twins of the file functions.
#pragma once

#include "riff.h"

#include <mmreg.h>

struct _tqwaveformat;

// A cursor over caller memory. The current pointer stays between base and end of data; end of
// data stays at or below end of capacity; dataSize and capacity are the same ends as counts.
typedef struct _tMRIFF
{
    BYTE* base;
    BYTE* current;
    BYTE* dataEnd;
    BYTE* capacityEnd;
    DWORD dataSize;
    DWORD capacity;
} _tMRIFF;

// The cursor starts at base. E_POINTER for a null cursor (or a null base with a capacity),
// E_INVALIDARG for dataSize above capacity.
TQKERNEL_API HRESULT mriff_Init(_tMRIFF* m, void* base, DWORD dataSize, DWORD capacity);

// --- File-like primitives ---

// The cursor's offset from base.
TQKERNEL_API DWORD mriff_GetFilePointer(const _tMRIFF* m);
// Seeks as the platform does (FILE_BEGIN from base, FILE_CURRENT, FILE_END from end of data),
// with distanceHigh (optional) as the high half of the distance, and clamps the result between
// base and end of data. Returns the new offset, and sets *distanceHigh to 0; an unknown method
// or a bad cursor returns INVALID_SET_FILE_POINTER and leaves the cursor.
TQKERNEL_API DWORD mriff_SetFilePointer(_tMRIFF* m, LONG distance, LONG* distanceHigh,
                                        DWORD method);
// The same with a 64-bit distance; returns the new offset, or -1 as above.
TQKERNEL_API LONGLONG mriff_TqSetFilePointer(_tMRIFF* m, LONGLONG distance, DWORD method);
// Copies what there is before end of data; FALSE if that was fewer than count bytes.
TQKERNEL_API BOOL mriff_ReadFile(_tMRIFF* m, void* buffer, DWORD count, DWORD* read);
// Copies what fits before end of capacity, reports the count and moves end of data along when
// the cursor passes it. Always TRUE for a good cursor: callers compare the count.
TQKERNEL_API BOOL mriff_WriteFile(_tMRIFF* m, const void* buffer, DWORD count, DWORD* written);
// Moves end of data by delta, by at most the room there is (capacity above, base below), keeps
// the cursor inside, and returns how far it moved.
TQKERNEL_API LONG mriff_UpdateDataSize(_tMRIFF* m, LONG delta);

// --- Twins of the file functions, same arguments and codes, on the memory cursor ---

TQKERNEL_API HRESULT mriff_ReadFileID(_tMRIFF* m, DWORD* size, DWORD* form);
TQKERNEL_API HRESULT mriff_ReadChunkHeader(_tMRIFF* m, DWORD* id, DWORD* size);
TQKERNEL_API HRESULT mriff_ReadListHeader(_tMRIFF* m, DWORD* type, DWORD* size);
TQKERNEL_API HRESULT mriff_ReadData(_tMRIFF* m, void* buffer, DWORD size);
TQKERNEL_API HRESULT mriff_ReadDataBounded(_tMRIFF* m, void* buffer, DWORD a, DWORD b);
TQKERNEL_API HRESULT mriff_ReadDataAlloc(_tMRIFF* m, tRIFFBLOCK* block);
TQKERNEL_API HRESULT mriff_FindChunkHeader(_tMRIFF* m, DWORD id, DWORD* size, DWORD* remaining);
TQKERNEL_API HRESULT mriff_FindChunkHeaderInRIFF(_tMRIFF* m, DWORD id, DWORD* size,
                                                 DWORD* riffSize);
TQKERNEL_API HRESULT mriff_FindListChunk(_tMRIFF* m, DWORD type, DWORD* size, DWORD* remaining);
TQKERNEL_API HRESULT mriff_FindListChunkFromStart(_tMRIFF* m, DWORD type, DWORD* size);
TQKERNEL_API HRESULT mriff_GetNumListEntries(_tMRIFF* m, DWORD* count, DWORD* remaining);
TQKERNEL_API HRESULT mriff_SeekDataStart(_tMRIFF* m);
TQKERNEL_API ULONGLONG mriff_SkipChunk(_tMRIFF* m, DWORD size);
TQKERNEL_API HRESULT mriff_SaveLocation(_tMRIFF* m, DWORD* pos);
TQKERNEL_API HRESULT mriff_RestoreLocation(_tMRIFF* m, DWORD pos);
TQKERNEL_API HRESULT mriff_WriteChunkHeader(_tMRIFF* m, DWORD id, DWORD size);
TQKERNEL_API HRESULT mriff_WriteListHeader(_tMRIFF* m, DWORD type, DWORD size);
TQKERNEL_API HRESULT mriff_WriteFileID(_tMRIFF* m, DWORD form, DWORD size);

// --- Wave headers and INFO texts ---

// Finds "LIST" "INFO" from the cursor within *remaining (optional; not changed), then id in that
// list, and copies the lesser of the chunk's size and bufferSize bytes into buffer, which is
// always terminated (at the end of what was read, or in its last byte). The cursor is put back.
TQKERNEL_API HRESULT mriff_GetInfoString(_tMRIFF* m, DWORD id, char* buffer, DWORD bufferSize,
                                         DWORD* remaining);
// Writes at the cursor a "WAVE" file header, "fmt " and the header of "data" with dataBytes;
// the samples are the caller's. Tag 1 gets a 16-byte "fmt " whose block alignment and average
// rate are computed anew; any other tag gets the header with its cbSize bytes. The RIFF size is
// trailerBytes + 20 + the "fmt " size + dataBytes, made even.
TQKERNEL_API HRESULT mriff_WriteWaveHeader(_tMRIFF* m, const WAVEFORMATEX* wfx, DWORD dataBytes,
                                           DWORD trailerBytes);
// Reads the format and the size of "data" (dataBytes, optional) from a block that holds the
// start of a wave file; the block need not hold the samples. Both chunks are searched from the
// start within the file header's bound. wfx gets the first 18 bytes of "fmt ", zero-filled if it
// is shorter, as a bare header: a cbSize is cleared because the bytes it counts are not copied.
// A block below 12 bytes gives 0x8004E00A, a form other than "WAVE" E_FAIL, an empty "fmt "
// 0x8004E082.
TQKERNEL_API HRESULT mriff_GetWfx(WAVEFORMATEX* wfx, const void* data, DWORD size,
                                  DWORD* dataBytes);

// The same for the kernel's own format record. The header is built for a 136-byte destination
// with automatic choice of the extensible form.
TQKERNEL_API HRESULT mriff_WriteWaveHeaderFromRecord(_tMRIFF* m, const struct _tqwaveformat* fmt,
                                                     DWORD dataBytes, DWORD trailerBytes);
// fmt, of at least 32 bytes, is initialised as a record without codec tail from the whole "fmt "
// chunk, so an extensible header keeps its sub-format.
TQKERNEL_API HRESULT mriff_GetWfxAsRecord(struct _tqwaveformat* fmt, const void* data, DWORD size,
                                          DWORD* dataBytes);

#ifdef __cplusplus
inline HRESULT mriff_WriteWaveHeader(_tMRIFF* m, const _tqwaveformat* fmt, DWORD dataBytes,
                                     DWORD trailerBytes)
{
    return mriff_WriteWaveHeaderFromRecord(m, fmt, dataBytes, trailerBytes);
}
inline HRESULT mriff_GetWfx(_tqwaveformat* fmt, const void* data, DWORD size, DWORD* dataBytes)
{
    return mriff_GetWfxAsRecord(fmt, data, size, dataBytes);
}
#endif
