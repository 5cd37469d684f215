// RF64: RIFF chunk framing past 4 GiB, with the true sizes of the file and of "data" in a "ds64"
// chunk. The walk also takes plain RIFF files, so callers need not tell the two apart.
#pragma once

#include "riff.h"

#define RIFF_ID_RF64 RIFF_ID('R', 'F', '6', '4')
#define RIFF_ID_DS64 RIFF_ID('d', 's', '6', '4')

// A 32-bit "data" size of this value means: the size is in ds64.
#define RF64_SIZE_IN_DS64 0xFFFFFFFFu

// The first 28 bytes of "ds64", read and written as a unit.
#pragma pack(push, 4)
typedef struct tRF64DS64
{
    ULONGLONG riffSize;   // the file's length minus 8
    ULONGLONG dataSize;   // the size of "data"
    ULONGLONG frameCount; // samples per channel
    DWORD tableLength;    // entries of a table that follows; not used
} tRF64DS64;
#pragma pack(pop)

// The walk every RF64 function stands on. From the file's start (id "RIFF" or "RF64"), it walks
// at most 10,000 chunks for id; a file with more before it is taken as not having it. On a match
// it answers TRUE, with size (optional) the chunk's size made even, or for "data" behind a ds64
// the 64-bit size from ds64; dataPos (optional) the offset of the chunk's data; and the cursor
// there. "data" is skipped by its ds64 size; without ds64, a "data" of size 0xFFFFFFFF ends the
// walk, as does "data" itself with stopAtData. remaining (optional) gets what is left of the
// RIFF bound (the ds64 one once seen) on both outcomes; fileEnd (optional) the ds64 RIFF size
// plus 8 when a ds64 was read.
TQKERNEL_API BOOL RF64_FindChunk(HANDLE file, DWORD id, ULONGLONG* size, BOOL stopAtData,
                                 ULONGLONG* dataPos, ULONGLONG* remaining, ULONGLONG* fileEnd);
// RF64_FindChunk from the start as S_OK or 0x8004E00A; riffSize (optional) gets the bound left.
TQKERNEL_API HRESULT RF64_FindChunkHeaderInRIFF(HANDLE file, DWORD id, ULONGLONG* size,
                                                ULONGLONG* riffSize);

// The linear searches of the RIFF layer with a 64-bit bound, for the 32-bit chunks behind
// "data" (see SeekToRF64End): they know nothing of ds64.
TQKERNEL_API HRESULT RF64_FindChunkHeader(HANDLE file, DWORD id, ULONGLONG* size,
                                          ULONGLONG* remaining);
TQKERNEL_API HRESULT RF64_FindListChunk(HANDLE file, DWORD type, ULONGLONG* size,
                                        ULONGLONG* remaining);
TQKERNEL_API HRESULT RF64_GetNumListEntries(HANDLE file, DWORD* count, ULONGLONG* remaining);

// Seeks to the ds64 RIFF size plus 8, where chunks behind the audio follow. 0x8004E00A without a
// ds64 before "data", 0x8004E008 for a ds64 shorter than 28 bytes.
TQKERNEL_API HRESULT SeekToRF64End(HANDLE file);
// Adds delta to the ds64 RIFF size; the cursor is restored. Any failure gives 0x8004E009.
TQKERNEL_API HRESULT RF64_UpdateRIFFSize(HANDLE file, LONGLONG delta);
// Removes a chunk: with isList the first "LIST" of type id behind "data", else the first chunk
// RF64_FindChunk finds. The rest of the file moves down and the ds64 RIFF size shrinks by the
// extent (padded size + 8, + 4 for a list), which removed (optional, zeroed first) receives; the
// 32-bit size at offset 4 is left alone. A plain RIFF file without ds64 goes to riff_DeleteChunk.
// A chunk that runs beyond the file is refused before anything is written.
TQKERNEL_API HRESULT RF64_DeleteChunk(HANDLE file, DWORD id, ULONGLONG* removed, BOOL isList);
