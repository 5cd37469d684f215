// The IFF family of chunk files, big-endian twin of the RIFF layer, and the AIFF layer on it:
// recognition of AIFF and uncompressed AIFF-C, the 80-bit extended sample rate, markers,
// chunk deletion and the wave format of an AIFF file.
#pragma once

#include "riff.h"

#include <mmreg.h>

// Ids are big-endian u32 values, so that the id as text reads in file order: "COMM" is
// 0x434F4D4D.
#define IFF_ID(a, b, c, d)                                                                         \
    (((DWORD)(BYTE)(a) << 24) | ((DWORD)(BYTE)(b) << 16) | ((DWORD)(BYTE)(c) << 8) |               \
     (DWORD)(BYTE)(d))

#define IFF_ID_FORM IFF_ID('F', 'O', 'R', 'M')
#define IFF_ID_AIFF IFF_ID('A', 'I', 'F', 'F')
#define IFF_ID_AIFC IFF_ID('A', 'I', 'F', 'C')
#define IFF_ID_COMM IFF_ID('C', 'O', 'M', 'M')
#define IFF_ID_SSND IFF_ID('S', 'S', 'N', 'D')
#define IFF_ID_MARK IFF_ID('M', 'A', 'R', 'K')
#define IFF_ID_NONE IFF_ID('N', 'O', 'N', 'E')
#define IFF_ID_SOWT IFF_ID('s', 'o', 'w', 't')
#define IFF_ID_FVER IFF_ID('F', 'V', 'E', 'R')
// Float AIFF-C: big-endian IEEE samples, the ids written in either case.
#define IFF_ID_FL32 IFF_ID('f', 'l', '3', '2')
#define IFF_ID_FL32_UPPER IFF_ID('F', 'L', '3', '2')
#define IFF_ID_FL64 IFF_ID('f', 'l', '6', '4')
#define IFF_ID_FL64_UPPER IFF_ID('F', 'L', '6', '4')

// Format tags of AIFF sample data: signed 8-bit, and big-endian samples of other widths.
#define WAVE_FORMAT_AIFF_SIGNED8 0xFE01
#define WAVE_FORMAT_AIFF_BIGENDIAN 0xFE02

// A chunk header with both words in machine order.
typedef struct tIFFCHUNKHEADER
{
    DWORD id;
    DWORD size;
} tIFFCHUNKHEADER;

#pragma pack(push, 1)
// The fixed front of a "MARK" entry, 7 bytes as in the file; the name follows.
typedef struct tAIFFMARKER
{
    WORD id;
    DWORD position; // in frames
    BYTE nameLength;
} tAIFFMARKER;
#pragma pack(pop)

// The file pointer is the cursor, and codes are those of the RIFF layer.

// --- Byte order ---

// In-place swaps of count words of 2 or 4 bytes; the write forms are the same swaps, named for
// the direction they serve.
TQKERNEL_API void iff_ByteSwap16(void* buffer, DWORD count);
TQKERNEL_API void iff_ByteSwap32(void* buffer, DWORD count);
TQKERNEL_API void aiff_WriteByteSwap16(void* buffer, DWORD count);
TQKERNEL_API void aiff_WriteByteSwap32(void* buffer, DWORD count);

// --- Reading and writing ---

// Reads 8 bytes and swaps both words.
TQKERNEL_API HRESULT iff_ReadChunkHdr(HANDLE file, tIFFCHUNKHEADER* header);
TQKERNEL_API HRESULT iff_ReadDWORD(HANDLE file, DWORD* value);
TQKERNEL_API HRESULT iff_ReadWORD(HANDLE file, WORD* value);
// 0x8004E00B for a header that is not "FORM"; else reads the form type.
TQKERNEL_API HRESULT iff_ReadFormType(HANDLE file, const tIFFCHUNKHEADER* header, DWORD* type);
// "FORM", size and form, big-endian.
TQKERNEL_API HRESULT iff_WriteFileID(HANDLE file, DWORD form, DWORD size);
// A header, big-endian; the data is the caller's.
TQKERNEL_API HRESULT iff_WriteChunk(HANDLE file, const tIFFCHUNKHEADER* header);
TQKERNEL_API HRESULT iff_WriteDWORD(HANDLE file, DWORD value);
TQKERNEL_API HRESULT iff_WriteWORD(HANDLE file, WORD value);
// Steps over size bytes and the pad; returns the bytes stepped (0 if the seek failed).
TQKERNEL_API ULONGLONG iff_SkipChunk(HANDLE file, DWORD size);

// --- Searching ---

// As riff_FindChunkHeader, with big-endian headers: size (optional) gets the match's size,
// remaining (optional, in and out) bounds the scan.
TQKERNEL_API HRESULT iff_FindChunkHeader(HANDLE file, DWORD id, DWORD* size, DWORD* remaining);
// Walks from the cursor with no bound until a match or a failed read.
TQKERNEL_API HRESULT iff_SeekChunkHeader(HANDLE file, DWORD id, DWORD* size);
// Clears size (optional) and walks from the first chunk: 0x8004E080 when the file does not
// start with "FORM" and a form type, 0x8004E00A for any failure of the walk.
TQKERNEL_API HRESULT iff_FindChunkFromStart(HANDLE file, DWORD id, DWORD* size);
// Finds the marker of that id in "MARK": entry gets its front, swapped, and the cursor stands
// at its name. 0x8004E080 for an entry cut short, 0x8004E00A when there is none.
TQKERNEL_API HRESULT iff_FindMarker(HANDLE file, tAIFFMARKER* entry, WORD markerId);

// --- Editing ---

// Removes the first chunk of that id within the FORM bound by moving the rest of the file
// down and cutting it; the FORM size shrinks by the extent (padded size + 8), which removed
// (optional, cleared first) receives. 0x8004E00B for a file that is not AIFF, or a chunk that
// runs beyond the FORM or the file (refused before anything is written).
TQKERNEL_API HRESULT iff_DeleteChunk(HANDLE file, DWORD id, DWORD* removed);

// --- AIFF ---

// True for "AIFF" and for "AIFC" whose compression is "NONE" or "sowt"; any other AIFF-C is
// compressed and not taken. size gets the FORM size field, isAifc and littleEndian (all
// optional, cleared first) what the file is. The cursor ends behind the form type.
TQKERNEL_API BOOL iff_IsAIFFFileEx(HANDLE file, DWORD* size, BOOL* isAifc, BOOL* littleEndian);
TQKERNEL_API BOOL iff_IsAIFFFile(HANDLE file, DWORD* size);
// The format from "COMM": tag 0xFE01 for 8 bits, 1 for AIFF-C "sowt", else 0xFE02; cbSize 0.
// frames (optional) is the lesser of the frames "SSND" holds and those "COMM" promises;
// dataStart (optional) is the offset of the first sample. 0x8004E00B for a file that is not
// AIFF, 0x8004E008 for a "COMM" cut short.
TQKERNEL_API HRESULT iff_GetAIFFWfx(HANDLE file, WAVEFORMATEX* wfx, DWORD* frames,
                                    DWORD* dataStart);
// The same, and float AIFF-C too ("fl32" and "fl64", in either case): WAVE_FORMAT_IEEE_FLOAT of
// 32 or 64 bits, whatever bit count "COMM" gives. Such samples stay big-endian in the file, so
// the tag alone would misdescribe them: bigEndianFloat (optional, cleared first) is set for
// them, and a caller swaps each sample. The plain form leaves these files out, so that no
// caller of it takes big-endian floats for little-endian ones.
TQKERNEL_API HRESULT iff_GetAIFFWfxEx(HANDLE file, WAVEFORMATEX* wfx, DWORD* frames,
                                      DWORD* dataStart, BOOL* bigEndianFloat);

// The 80-bit extended sample rate: a sign and exponent word and four mantissa words, most
// significant first, all in machine order. A negative value gives 44,100; any exponent comes
// back as a rate no further than one doubling past 384,000.
TQKERNEL_API DWORD aiff_ConvertRate(WORD exponent, const WORD* mantissa);
TQKERNEL_API void aiff_CreateRate(DWORD rate, WORD* exponent, WORD* mantissa);
