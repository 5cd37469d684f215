// Wave64 chunk layer on platform file handles: the RIFF layer's twin with 16-byte GUID ids,
// 64-bit sizes that count their own 24-byte header, and chunks aligned to 8 bytes.
#pragma once

#include "riff.h"

// The ids, stored in the file as the bytes of a GUID in its memory form.
static const GUID RIFF64_GUID_RIFF = {
    0x66666972, 0x912E, 0x11CF, {0xA5, 0xD6, 0x28, 0xDB, 0x04, 0xC1, 0x00, 0x00}};
static const GUID RIFF64_GUID_LIST = {
    0x7473696C, 0x912F, 0x11CF, {0xA5, 0xD6, 0x28, 0xDB, 0x04, 0xC1, 0x00, 0x00}};
static const GUID RIFF64_GUID_WAVE = {
    0x65766177, 0xACF3, 0x11D3, {0x8C, 0xD1, 0x00, 0xC0, 0x4F, 0x8E, 0xDB, 0x8A}};
static const GUID RIFF64_GUID_FMT = {
    0x20746D66, 0xACF3, 0x11D3, {0x8C, 0xD1, 0x00, 0xC0, 0x4F, 0x8E, 0xDB, 0x8A}};
static const GUID RIFF64_GUID_DATA = {
    0x61746164, 0xACF3, 0x11D3, {0x8C, 0xD1, 0x00, 0xC0, 0x4F, 0x8E, 0xDB, 0x8A}};
// Its third group reads 113D where its siblings have 11D3. Files this system wrote carry it so,
// and it must go on being written so that they stay one family.
static const GUID RIFF64_GUID_JUNK = {
    0x6B6E756A, 0xACF3, 0x113D, {0x8C, 0xD1, 0x00, 0xC0, 0x4F, 0x8E, 0xDB, 0x8A}};

// A chunk's data read into a block of its own, as tRIFFBLOCK with a 64-bit size.
typedef struct tRIFF64BLOCK
{
    ULONGLONG size;
    void* data;
} tRIFF64BLOCK;

// Sizes passed in and out count the payload only: reading a header takes the 24 bytes of id and
// size off the stored value (never below 0), writing one adds them. A chunk is followed by zero
// bytes up to the next multiple of 8. The stored size of a chunk written in one go leaves that
// padding out; one finished by riff64_CompleteChunk counts it. Readers accept both, because
// skipping always rounds the payload up to 8. Out pointers named optional may be null.

// --- Reading ---

// Reads the 40-byte file header. An id other than the riff GUID, or a header too short to hold
// one, gives 0x8004E080. size (optional, zeroed first) gets the byte count of the chunks (stored
// size minus 40), form (optional) the form GUID.
TQKERNEL_API HRESULT riff64_ReadFileID(HANDLE file, ULONGLONG* size, GUID* form);
// Reads a 24-byte chunk header; both outputs optional.
TQKERNEL_API HRESULT riff64_ReadChunkHeader(HANDLE file, GUID* id, ULONGLONG* size);
// Reads a list header and its type GUID; size (optional) is the payload minus the type.
TQKERNEL_API HRESULT riff64_ReadListHeader(HANDLE file, GUID* type, ULONGLONG* size);
// Reads exactly size bytes, then steps to the next multiple of 8 of size.
TQKERNEL_API HRESULT riff64_ReadData(HANDLE file, void* buffer, ULONGLONG size);
// Reads the lesser of a and b bytes, then steps forward by a minus that, plus b modulo 8. Pass
// the chunk's size to both, or the chunk's size and the buffer's size.
TQKERNEL_API HRESULT riff64_ReadDataBounded(HANDLE file, void* buffer, ULONGLONG a, ULONGLONG b);
// Reads block->size bytes and the padding into a new zero-filled, locked block of the movable
// global heap, which the caller unlocks and frees. Size 0 gives S_OK and no block; a size beyond
// the end of the file is refused before allocating.
TQKERNEL_API HRESULT riff64_ReadDataAlloc(HANDLE file, tRIFF64BLOCK* block);

// --- Locating ---

TQKERNEL_API HRESULT riff64_SaveLocation(HANDLE file, ULONGLONG* pos);
TQKERNEL_API HRESULT riff64_RestoreLocation(HANDLE file, ULONGLONG pos);
// Steps over size bytes rounded up to 8; returns the bytes stepped (0 if the seek failed).
TQKERNEL_API ULONGLONG riff64_SkipChunk(HANDLE file, ULONGLONG size);
// Sets the cursor to the first chunk, offset 40.
TQKERNEL_API HRESULT riff64_SeekDataStart(HANDLE file);
// 0x8004E083 for a size with any of the bits 0x800000007 set, 0x8004E082 for size 0, else S_OK.
TQKERNEL_API HRESULT riff64_ValidateChunkHeader(const GUID* id, ULONGLONG size);

// Searches from the cursor for a chunk; on a match the cursor stands at its data and size
// (optional) holds its payload. remaining (optional, in and out) bounds the scan: below 24 gives
// 0x8004E00A; each header costs 24 and each chunk skipped its payload rounded up to 8. Without
// remaining the scan ends only by a failed read.
TQKERNEL_API HRESULT riff64_FindChunkHeader(HANDLE file, const GUID* id, ULONGLONG* size,
                                            ULONGLONG* remaining);
// Seeks to 0, reads the file header and searches within its bound; riffSize (optional) gets what
// is left of the bound, on success and failure alike.
TQKERNEL_API HRESULT riff64_FindChunkHeaderInRIFF(HANDLE file, const GUID* id, ULONGLONG* size,
                                                  ULONGLONG* riffSize);
// Searches from the cursor for a list of that type, bounded as above; 0x8004E00A when fewer than
// 8 bytes remain for the type, which costs 16. size (optional) is the payload minus the type.
TQKERNEL_API HRESULT riff64_FindListChunk(HANDLE file, const GUID* type, ULONGLONG* size,
                                          ULONGLONG* remaining);
TQKERNEL_API HRESULT riff64_FindListChunkFromStart(HANDLE file, const GUID* type, ULONGLONG* size);
// Counts the chunks from the cursor while at least 24 of *remaining bytes (not changed) are left;
// the cursor is restored.
TQKERNEL_API HRESULT riff64_GetNumListEntries(HANDLE file, DWORD* count, ULONGLONG* remaining);
// Steps over index chunks, bounded by remaining (optional, in and out) as in the search.
TQKERNEL_API HRESULT riff64_SeekListEntry(HANDLE file, DWORD index, ULONGLONG* remaining);

// --- Writing ---

// The riff GUID, size + 24 and the form; size counts the form GUID and the chunks.
TQKERNEL_API HRESULT riff64_WriteFileID(HANDLE file, const GUID* form, ULONGLONG size);
// The list GUID, size + 24 and the type; size counts the type.
TQKERNEL_API HRESULT riff64_WriteListHeader(HANDLE file, const GUID* type, ULONGLONG size);
TQKERNEL_API HRESULT riff64_WriteChunkHeader(HANDLE file, const GUID* id, ULONGLONG size);
// The data and zero bytes up to a multiple of 8; written (optional) gets the padded count.
TQKERNEL_API HRESULT riff64_WriteData(HANDLE file, const void* buffer, ULONGLONG size,
                                      ULONGLONG* written);
// Header (stored size: size + 24) and padded data; written (optional) gets the padded size + 24.
TQKERNEL_API HRESULT riff64_WriteChunk(HANDLE file, const GUID* id, const void* buffer,
                                       ULONGLONG size, ULONGLONG* written);
// Stores size + 24 at offset 16; the cursor is restored.
TQKERNEL_API HRESULT riff64_SetRIFFSize(HANDLE file, ULONGLONG size);
// Adds delta to the stored size at offset 16; the cursor is restored. A sum below 0 gives
// E_INVALIDARG and changes nothing.
TQKERNEL_API HRESULT riff64_UpdateRIFFSize(HANDLE file, LONGLONG delta);
// Removes the first chunk of that GUID within the header's bound by moving the rest of the file
// down and cutting it; the stored file size shrinks by the extent (payload rounded up to 8, plus
// 24), which removed (optional, zeroed first) receives. A chunk that runs beyond the bound or
// the file is refused as corrupt before anything is written.
TQKERNEL_API HRESULT riff64_DeleteChunk(HANDLE file, const GUID* id, ULONGLONG* removed);

// --- Chunks whose length is known only afterwards ---

// The cursor minus start (0 if the cursor cannot be had).
TQKERNEL_API ULONGLONG riff64_AmountWritten(HANDLE file, ULONGLONG start);
// Writes zero bytes until the distance of the cursor from start is a multiple of 8.
TQKERNEL_API HRESULT riff64_Pad(HANDLE file, ULONGLONG start);
// A plain write of size bytes.
TQKERNEL_API HRESULT riff64_WriteToFile(HANDLE file, const void* buffer, DWORD size);
// start (optional) gets the cursor; then the GUID and the stored size 24.
TQKERNEL_API HRESULT riff64_PrepareChunk(HANDLE file, const GUID* id, ULONGLONG* start);
// start (optional) gets the cursor; then the list GUID, the stored size 24 and the type.
TQKERNEL_API HRESULT riff64_PrepareList(HANDLE file, const GUID* type, ULONGLONG* start);
// Pads from start and stores the distance, padding included, as the size of the chunk at start.
// The cursor ends behind the padding.
TQKERNEL_API HRESULT riff64_CompleteChunk(HANDLE file, ULONGLONG start);
// riff64_WriteChunk finished by riff64_CompleteChunk: its stored size counts the padding.
TQKERNEL_API HRESULT riff64_WriteChunkToFile(HANDLE file, const GUID* id, const void* buffer,
                                             ULONGLONG size);

// There is no table of chunk names: both give null for every GUID, and callers show the GUID.
TQKERNEL_API const WCHAR* riff64_getGUIDLabel(const GUID* id);
TQKERNEL_API const WCHAR* riff64_getGUIDLabelProperly(const GUID* id);
