// RIFF chunk layer on platform file handles: reading, searching, writing and deleting chunks.
#pragma once

#include "tqkernelapi.h"

// Ids are u32 values in file byte order: the four characters as they stand in the file.
#define RIFF_ID(a, b, c, d)                                                                        \
    ((DWORD)(BYTE)(a) | ((DWORD)(BYTE)(b) << 8) | ((DWORD)(BYTE)(c) << 16) |                       \
     ((DWORD)(BYTE)(d) << 24))

#define RIFF_ID_RIFF RIFF_ID('R', 'I', 'F', 'F')
#define RIFF_ID_LIST RIFF_ID('L', 'I', 'S', 'T')
#define RIFF_ID_WAVE RIFF_ID('W', 'A', 'V', 'E')
#define RIFF_ID_FMT RIFF_ID('f', 'm', 't', ' ')
#define RIFF_ID_DATA RIFF_ID('d', 'a', 't', 'a')
#define RIFF_ID_INFO RIFF_ID('I', 'N', 'F', 'O')
#define RIFF_ID_CDDA RIFF_ID('C', 'D', 'D', 'A')
#define RIFF_ID_JUNK RIFF_ID('J', 'U', 'N', 'K')

// Codes of the file layers; their texts are in the error handler's table. The first is spelt
// as the error handler spells it, so both headers can meet in one source.
#define TQ_E_OPENFAILED ((HRESULT)0x8004E007L)      // the file could not be opened
#define TQ_E_READFAILED ((HRESULT)0x8004E008L)      // read failed or came up short
#define TQ_E_WRITEFAILED ((HRESULT)0x8004E009L)     // write failed
#define TQ_E_CORRUPTFILE ((HRESULT)0x8004E00BL)     // corrupt or of unknown format
#define TQ_E_NEWERVERSION ((HRESULT)0x8004E01CL)    // made by an unsupported version
#define TQ_E_SIZELIMIT ((HRESULT)0x8004E03AL)       // size limit of the format exceeded
#define TQ_E_NORIFFHEADER ((HRESULT)0x8004E080L)    // RIFF header missing
#define TQ_E_NOLISTHEADER ((HRESULT)0x8004E081L)    // LIST header missing
#define TQ_E_ZEROLENGTHCHUNK ((HRESULT)0x8004E082L) // chunk of length 0
#define TQ_E_BADCHUNKHEADER ((HRESULT)0x8004E083L)  // chunk header not acceptable to this version

// A chunk's data read into a block of its own. `size` is given by the caller (the chunk's size);
// `data` receives a locked block of the movable global heap, which the caller unlocks and frees.
typedef struct tRIFFBLOCK
{
    DWORD size;
    void* data;
} tRIFFBLOCK;

// Every function works at the file pointer of `file` and leaves it where it stopped, unless said
// otherwise. Sizes of chunks count their data only; an odd size is followed by one pad byte that
// the size does not count. Out pointers named optional may be null.

// --- Reading ---

// Reads the 12-byte file header. size (optional, zeroed first) gets the byte count of the chunks
// (the size field minus 4), form (optional) the form type. A size field below 4 is corrupt.
TQKERNEL_API HRESULT riff_ReadFileID(HANDLE file, DWORD* size, DWORD* form);
// Reads an 8-byte chunk header; both outputs optional.
TQKERNEL_API HRESULT riff_ReadChunkHeader(HANDLE file, DWORD* id, DWORD* size);
// Reads a "LIST" header and its type; size (optional) is the size field minus 4.
TQKERNEL_API HRESULT riff_ReadListHeader(HANDLE file, DWORD* type, DWORD* size);
// Reads exactly size bytes, then steps over the pad if size is odd.
TQKERNEL_API HRESULT riff_ReadData(HANDLE file, void* buffer, DWORD size);
// Reads the lesser of a and b bytes, then steps forward by a minus that, plus 1 if b is odd.
// Pass the chunk's size as a, and as b either the chunk's size again or the buffer's size.
TQKERNEL_API HRESULT riff_ReadDataBounded(HANDLE file, void* buffer, DWORD a, DWORD b);
// Reads block->size bytes (and the pad) into a new zero-filled block; see tRIFFBLOCK. A size of 0
// gives S_OK and no block; a size beyond the end of the file is refused before allocating.
TQKERNEL_API HRESULT riff_ReadDataAlloc(HANDLE file, tRIFFBLOCK* block);
// Reads an 8-bit text chunk of *size bytes into buffer (bufferChars wide characters, terminated;
// a longer text is cut), converting from the ANSI code page, and leaves the cursor behind the
// chunk and its pad. *size is increased by 1 on every path past the argument checks.
TQKERNEL_API HRESULT riff_ReadANSIString(HANDLE file, WCHAR* buffer, DWORD bufferChars,
                                         DWORD* size);
// Seeks to 0, reads the header and gives its size field plus 4 (4 short of the file's length);
// the cursor stays behind the header.
TQKERNEL_API HRESULT riff_GetFileSize(HANDLE file, DWORD* size);

// --- Locating ---

// The current position, which must lie below 4 GiB, and seeking back to it.
TQKERNEL_API HRESULT riff_SaveLocation(HANDLE file, DWORD* pos);
TQKERNEL_API HRESULT riff_RestoreLocation(HANDLE file, DWORD pos);
// Steps over size bytes and the pad; returns the bytes stepped (0 if the seek failed).
TQKERNEL_API ULONGLONG riff_SkipChunk(HANDLE file, DWORD size);
// Sets the cursor to the first chunk, offset 12.
TQKERNEL_API HRESULT riff_SeekDataStart(HANDLE file);
// 0x8004E083 for a size with the top bit set, 0x8004E082 for size 0, else S_OK.
TQKERNEL_API HRESULT riff_ValidateChunkHeader(DWORD id, DWORD size);

// Searches from the cursor for a chunk; on a match the cursor stands at its data. remaining
// (optional, in and out) bounds the scan: below 8 gives 0x8004E00A; each header read costs 8,
// each chunk skipped its padded size (never below 0); the data of the match is not taken off.
// Without remaining the scan ends only by a failed read.
TQKERNEL_API HRESULT riff_FindChunkHeader(HANDLE file, DWORD id, DWORD* size, DWORD* remaining);
// Seeks to 0, reads the file header and searches within its bound; riffSize (optional) gets
// what is left of the bound, on success and failure alike.
TQKERNEL_API HRESULT riff_FindChunkHeaderInRIFF(HANDLE file, DWORD id, DWORD* size,
                                                DWORD* riffSize);
// Searches from the cursor for a "LIST" of the given type, bounded as above; its type costs 4.
// On a match size (optional) is the list's size minus 4 and the cursor is at its first entry.
TQKERNEL_API HRESULT riff_FindListChunk(HANDLE file, DWORD type, DWORD* size, DWORD* remaining);
// The same from the file's first chunk, bounded by the file header.
TQKERNEL_API HRESULT riff_FindListChunkFromStart(HANDLE file, DWORD type, DWORD* size);
// Counts the chunks from the cursor within *remaining bytes (not changed); the cursor is
// restored, also after a failed read.
TQKERNEL_API HRESULT riff_GetNumListEntries(HANDLE file, DWORD* count, DWORD* remaining);
// Steps over index chunks, bounded by remaining (optional, in and out) as in the search.
TQKERNEL_API HRESULT riff_SeekListEntry(HANDLE file, DWORD index, DWORD* remaining);

// --- Writing ---

// "RIFF", size, form.
TQKERNEL_API HRESULT riff_WriteFileID(HANDLE file, DWORD form, DWORD size);
// "LIST", size, type; size counts the type.
TQKERNEL_API HRESULT riff_WriteListHeader(HANDLE file, DWORD type, DWORD size);
TQKERNEL_API HRESULT riff_WriteChunkHeader(HANDLE file, DWORD id, DWORD size);
// Header, data and a zero pad byte if size is odd; written (optional) gets the padded size + 8.
TQKERNEL_API HRESULT riff_WriteChunk(HANDLE file, DWORD id, const void* buffer, DWORD size,
                                     DWORD* written);
// Writes text in the ANSI code page with its terminator, padded to even (no chunk header);
// written (optional) gets the byte count with the pad.
TQKERNEL_API HRESULT riff_WriteANSIString(HANDLE file, const WCHAR* text, DWORD* written);
// Writes size at offset 4; the cursor is restored.
TQKERNEL_API HRESULT riff_SetRIFFSize(HANDLE file, DWORD size);
// Adds delta to the size at offset 4; the cursor is restored in every case. A sum of 0xFFFFFFF8
// or more means the file has outgrown the format: it is cut back to its old end (old size + 8)
// and the result is 0x8004E03A. A sum below 0 gives E_INVALIDARG and changes nothing.
TQKERNEL_API HRESULT riff_UpdateRIFFSize(HANDLE file, LONG delta);
// Removes the first chunk of that id within the file header's bound (with isList, the first
// "LIST" of that type) by moving the rest of the file down and cutting it; the RIFF size
// shrinks by the extent, which removed (optional, zeroed first) receives. A chunk that runs
// beyond the RIFF bound or the file is refused as corrupt before anything is written. The
// cursor is left at the new end of the file.
TQKERNEL_API HRESULT riff_DeleteChunk(HANDLE file, DWORD id, DWORD* removed, BOOL isList);
