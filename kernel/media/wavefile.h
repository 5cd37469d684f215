// Whole wave files on all three framings (RIFF and RF64, Wave64, AIFF): recognition, their format,
// fresh files, headers written over existing ones, and the repair of files whose writer died.
#pragma once

#include "tqkernelapi.h"

#include <mmreg.h>

struct _tqwaveformat;

// --- Recognition and format ---

// A RIFF or RF64 file of form "WAVE" with a "fmt " chunk whose format is plain PCM or float, or
// any format with allowCompressed. A file that will not open is no wave file.
TQKERNEL_API BOOL TqFileIsWave(const WCHAR* path, BOOL allowCompressed);
// The same for Wave64. Its fmt may hold 16 bytes, as a PCM writer leaves it.
TQKERNEL_API BOOL TqFileIsWave64(const WCHAR* path, BOOL allowCompressed);
// AIFF, or AIFF-C without compression.
TQKERNEL_API BOOL TqFileIsAiff(const WCHAR* path);
// The format of a wave (RIFF or RF64), Wave64 or AIFF file holding plain PCM or float, tried in
// that order, as a malloc'ed header (18 + cbSize bytes; extensible headers stay extensible) that
// the caller frees; null if none fits. A PCM header of 20 bits is read as 24 with the block
// alignment to match. frames (optional) gets the whole frames of the sample data, no more than
// the file holds; dataStart (optional) the offset of the first sample. Both are left alone on
// failure.
TQKERNEL_API WAVEFORMATEX* TqGetFileWfx(const WCHAR* path, ULONGLONG* frames, ULONGLONG* dataStart);
// Writes a format over that of a wave or AIFF file, inside its existing "fmt " or "COMM" chunk:
// nothing outside the chunk is written. The header must pass the vetting below; an AIFF file
// takes PCM only (0x8004E016). A "fmt " shorter than 16 bytes, or a file that is neither, gives
// 0x8004E00B. A Wave64 file is not handled.
TQKERNEL_API HRESULT TqSetFileWfx(const WCHAR* path, const WAVEFORMATEX* wfx);

// --- Fresh files ---

// Every function that writes a header first vets the format: cbSize must be 0, and a PCM header
// must not have 20 bits, and its block alignment must be channels times bytes per sample. Else
// 0x8004E000, and nothing is touched.
//
// mode is CreateFileW's creation disposition, but 3 (OPEN_EXISTING) truncates and 4
// (OPEN_ALWAYS) creates anew, since a header written over the start of an existing file would
// leave the old contents behind it. The file is opened for reading and writing, shared for
// reading; 0x8004E007 if it cannot be.

// "RIFF" (size 38), "WAVE", an 18-byte "fmt " and an empty "data".
TQKERNEL_API HRESULT TqInitializeWav(const WCHAR* path, const WAVEFORMATEX* wfx, DWORD mode);
// The Wave64 twin: fmt of 18 bytes padded to 24, an empty data chunk (stored size 24). The stored
// file size is 130 until the file's writer sets it with riff64_SetRIFFSize or rewrites the header
// with TqInsertW64Header when it finishes.
TQKERNEL_API HRESULT TqInitializeWav64(const WCHAR* path, const WAVEFORMATEX* wfx, DWORD mode);
// A header of headerBytes (made even) before the samples, the room behind "fmt " taken by a
// "JUNK" of zeros, so that the header can later grow in place. Below 54 gives E_INVALIDARG and
// leaves the file created and empty.
TQKERNEL_API HRESULT TqInitializeWavWithJunk(const WCHAR* path, const WAVEFORMATEX* wfx, DWORD mode,
                                             DWORD headerBytes);
// The Wave64 twin: headerBytes raised to a multiple of 8, at least 136; the stored file size is
// headerBytes + 24 until the writer sets it. At 136 the fmt holds 16 bytes, so that the junk is
// not empty (see TqInsertW64Header).
TQKERNEL_API HRESULT TqInitializeWav64WithJunk(const WCHAR* path, const WAVEFORMATEX* wfx,
                                               DWORD mode, DWORD headerBytes);

// --- Headers over existing files ---

// Writes a complete header in the first headerBytes of an open file, in front of dataBytes of
// samples; the cursor is kept. headerBytes must be even, no more than the file's length, and 46
// (an 18-byte "fmt ") or at least 54 (and a "JUNK" of headerBytes - 54 zero bytes); else
// 0x8004E083. 44 and 52 take a 16-byte "fmt " (with an empty "JUNK" at 52), which loses nothing
// for a header without a codec tail, so that the commonest layouts can be rewritten in place.
// 0x8004E03A when the RIFF size would not fit 32 bits.
TQKERNEL_API HRESULT TqInsertWavHeader(HANDLE file, const WAVEFORMATEX* wfx, DWORD dataBytes,
                                       DWORD headerBytes);
// The Wave64 twin: headerBytes a multiple of 8, no more than the file's length, and 112 or more
// than 136 (junk payload headerBytes - 136); else 0x8004E083. A junk chunk is never left empty,
// since a widely used reader refuses chunks without payload: 136 takes a 16-byte fmt and junk of
// 8. Where the samples of other writers start, 104 takes a 16-byte fmt and 128 a 40-byte one
// (the header and zeros), both without junk. The stored file size is headerBytes + dataBytes.
TQKERNEL_API HRESULT TqInsertW64Header(HANDLE file, const WAVEFORMATEX* wfx, ULONGLONG dataBytes,
                                       ULONGLONG headerBytes);

// --- Repair ---

// Rebuilds the header of an open WAV file whose writer died before it could set the sizes. The
// format is read from the broken header where it makes sense (rate 2,000 to 384,000, 1 or 2
// channels, PCM of 8, 16, 24 or 32 bits or float of 32 or 64) and taken from wfx, or else 44,100
// Hz 16-bit stereo PCM, where it does not. The samples start behind the "data" chunk header the
// walk from the first chunk finds, else behind the first "data" a byte scan finds, else at
// scanLimit when that lies before the file's end; a file whose end comes first gives 0x8004E00A.
// The data is the whole frames from there to the end. Nothing is written before all of this is
// known, and only the header is written. The cursor is kept.
TQKERNEL_API HRESULT TqFixTrashedWav(HANDLE file, const WAVEFORMATEX* wfx, DWORD scanLimit);
// The Wave64 twin; the format is read at offset 64, the scan looks for the data GUID, and
// scanLimit is rounded down to a multiple of 8.
TQKERNEL_API HRESULT TqFixTrashedW64(HANDLE file, const WAVEFORMATEX* wfx, ULONGLONG scanLimit);

// The same for the kernel's format record, written as a plain header.
TQKERNEL_API HRESULT TqInitializeWavFromRecord(const WCHAR* path, const struct _tqwaveformat* fmt,
                                               DWORD mode);
TQKERNEL_API HRESULT TqInitializeWav64FromRecord(const WCHAR* path, const struct _tqwaveformat* fmt,
                                                 DWORD mode);
TQKERNEL_API HRESULT TqInitializeWavWithJunkFromRecord(const WCHAR* path,
                                                       const struct _tqwaveformat* fmt, DWORD mode,
                                                       DWORD headerBytes);
TQKERNEL_API HRESULT TqInitializeWav64WithJunkFromRecord(const WCHAR* path,
                                                         const struct _tqwaveformat* fmt,
                                                         DWORD mode, DWORD headerBytes);
TQKERNEL_API HRESULT TqInsertWavHeaderFromRecord(HANDLE file, const struct _tqwaveformat* fmt,
                                                 DWORD dataBytes, DWORD headerBytes);
TQKERNEL_API HRESULT TqInsertW64HeaderFromRecord(HANDLE file, const struct _tqwaveformat* fmt,
                                                 ULONGLONG dataBytes, ULONGLONG headerBytes);
TQKERNEL_API HRESULT TqFixTrashedWavFromRecord(HANDLE file, const struct _tqwaveformat* fmt,
                                               DWORD scanLimit);
TQKERNEL_API HRESULT TqFixTrashedW64FromRecord(HANDLE file, const struct _tqwaveformat* fmt,
                                               ULONGLONG scanLimit);

// In C++ the record overloads take a reference, so that a null format stays the header's.
#ifdef __cplusplus
inline HRESULT TqInitializeWav(const WCHAR* path, const _tqwaveformat& fmt, DWORD mode)
{
    return TqInitializeWavFromRecord(path, &fmt, mode);
}
inline HRESULT TqInitializeWav64(const WCHAR* path, const _tqwaveformat& fmt, DWORD mode)
{
    return TqInitializeWav64FromRecord(path, &fmt, mode);
}
inline HRESULT TqInitializeWavWithJunk(const WCHAR* path, const _tqwaveformat& fmt, DWORD mode,
                                       DWORD headerBytes)
{
    return TqInitializeWavWithJunkFromRecord(path, &fmt, mode, headerBytes);
}
inline HRESULT TqInitializeWav64WithJunk(const WCHAR* path, const _tqwaveformat& fmt, DWORD mode,
                                         DWORD headerBytes)
{
    return TqInitializeWav64WithJunkFromRecord(path, &fmt, mode, headerBytes);
}
inline HRESULT TqInsertWavHeader(HANDLE file, const _tqwaveformat& fmt, DWORD dataBytes,
                                 DWORD headerBytes)
{
    return TqInsertWavHeaderFromRecord(file, &fmt, dataBytes, headerBytes);
}
inline HRESULT TqInsertW64Header(HANDLE file, const _tqwaveformat& fmt, ULONGLONG dataBytes,
                                 ULONGLONG headerBytes)
{
    return TqInsertW64HeaderFromRecord(file, &fmt, dataBytes, headerBytes);
}
inline HRESULT TqFixTrashedWav(HANDLE file, const _tqwaveformat& fmt, DWORD scanLimit)
{
    return TqFixTrashedWavFromRecord(file, &fmt, scanLimit);
}
inline HRESULT TqFixTrashedW64(HANDLE file, const _tqwaveformat& fmt, ULONGLONG scanLimit)
{
    return TqFixTrashedW64FromRecord(file, &fmt, scanLimit);
}
#endif
