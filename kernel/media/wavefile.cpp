// Recognition of wave, Wave64 and AIFF files, and reading and rewriting their format.
#include "wavefile.h"

#include "filecursor.h"
#include "iff.h"
#include "rf64walk.h"
#include "riff64.h"
#include "tqwaveformat.h"
#include "uniquehandle.h"
#include "wavefileinternal.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

using tq::riff::CursorKeeper;
using tq::riff::FileCursor;

namespace {

// Room for an extensible header; a longer codec tail is of no use to a plain-format reader.
constexpr DWORD kHeaderRoom = sizeof(WAVEFORMATEXTENSIBLE);
constexpr ULONGLONG kLargestW64Fmt = 4096;

// A format chunk as far as it is read, zero-filled behind what the chunk held.
struct FoundFormat
{
    union
    {
        WAVEFORMATEX wfx;
        BYTE bytes[kHeaderRoom];
    };
    ULONGLONG frames;
    ULONGLONG dataStart;
};

tq::UniqueFile OpenForReading(const WCHAR* path)
{
    if (!path) return tq::UniqueFile();
    return tq::UniqueFile(::CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                        FILE_ATTRIBUTE_NORMAL, nullptr));
}

// Reads fmtSize bytes of a format chunk at the cursor into found, and makes its cbSize no larger
// than what the chunk held. false for a chunk too short for a header.
bool ReadFormatBytes(FileCursor& c, ULONGLONG fmtSize, FoundFormat& found)
{
    std::memset(found.bytes, 0, sizeof found.bytes);
    // A PCM writer's header without cbSize is the shortest there is.
    if (fmtSize < 16) return false;
    const DWORD count = static_cast<DWORD>(std::min<ULONGLONG>(fmtSize, kHeaderRoom));
    if (FAILED(c.Read(found.bytes, count))) return false;
    const DWORD tail = count > sizeof(WAVEFORMATEX) ? count - sizeof(WAVEFORMATEX) : 0;
    found.wfx.cbSize = static_cast<WORD>(std::min<DWORD>(found.wfx.cbSize, tail));
    return true;
}

// A plain PCM or float format, as far as it can describe samples: 20-bit PCM is read as 24.
bool IsUsable(WAVEFORMATEX& wfx)
{
    if (wfx.wFormatTag == WAVE_FORMAT_PCM) TqAudio_FixBadWfx(&wfx);
    return !TqAudio_IsCompressed(&wfx) && wfx.nBlockAlign != 0;
}

// Whole frames of a data chunk, no more than the file holds behind its start.
HRESULT SetFrames(FileCursor& c, ULONGLONG dataSize, ULONGLONG dataStart, FoundFormat& found)
{
    ULONGLONG length = 0;
    if (const HRESULT hr = c.Length(length); FAILED(hr)) return hr;
    const ULONGLONG held = length > dataStart ? length - dataStart : 0;
    found.frames = std::min(dataSize, held) / found.wfx.nBlockAlign;
    found.dataStart = dataStart;
    return S_OK;
}

// A RIFF or RF64 file of form "WAVE": its "fmt " read, the cursor behind what was read.
bool FindWaveFormat(FileCursor& c, FoundFormat& found)
{
    DWORD header[3];
    if (FAILED(c.SeekTo(0)) || FAILED(c.Read(header, sizeof header))) return false;
    if ((header[0] != RIFF_ID_RIFF && header[0] != RIFF_ID_RF64) || header[2] != RIFF_ID_WAVE)
        return false;
    ULONGLONG fmtSize = 0;
    if (!tq::rf64::FindChunk(c, RIFF_ID_FMT, &fmtSize, false, nullptr, nullptr, nullptr, nullptr))
        return false;
    return ReadFormatBytes(c, fmtSize, found);
}

bool FindW64Format(FileCursor& c, FoundFormat& found)
{
    GUID form;
    ULONGLONG bound = 0;
    if (FAILED(c.SeekTo(0)) || FAILED(riff64_ReadFileID(c.Handle(), &bound, &form)) ||
        !IsEqualGUID(form, RIFF64_GUID_WAVE))
        return false;
    ULONGLONG fmtSize = 0;
    if (FAILED(riff64_FindChunkHeader(c.Handle(), &RIFF64_GUID_FMT, &fmtSize, &bound)))
        return false;
    if (fmtSize > kLargestW64Fmt) return false;
    return ReadFormatBytes(c, fmtSize, found);
}

bool ReadWave(FileCursor& c, FoundFormat& found)
{
    CursorKeeper keeper(c);
    if (!FindWaveFormat(c, found) || !IsUsable(found.wfx)) return false;
    ULONGLONG dataSize = 0;
    ULONGLONG dataPos = 0;
    if (!tq::rf64::FindChunk(c, RIFF_ID_DATA, &dataSize, false, &dataPos, nullptr, nullptr,
                             nullptr))
        return false;
    return SUCCEEDED(SetFrames(c, dataSize, dataPos, found));
}

bool ReadWave64(FileCursor& c, FoundFormat& found)
{
    CursorKeeper keeper(c);
    if (!FindW64Format(c, found) || !IsUsable(found.wfx)) return false;
    ULONGLONG dataSize = 0;
    ULONGLONG dataPos = 0;
    if (FAILED(riff64_FindChunkHeaderInRIFF(c.Handle(), &RIFF64_GUID_DATA, &dataSize, nullptr)) ||
        FAILED(c.Tell(dataPos)))
        return false;
    return SUCCEEDED(SetFrames(c, dataSize, dataPos, found));
}

bool ReadAiff(FileCursor& c, FoundFormat& found)
{
    CursorKeeper keeper(c);
    std::memset(found.bytes, 0, sizeof found.bytes);
    DWORD frames = 0;
    DWORD dataStart = 0;
    if (FAILED(iff_GetAIFFWfx(c.Handle(), &found.wfx, &frames, &dataStart))) return false;
    if (!IsUsable(found.wfx)) return false;
    found.frames = frames;
    found.dataStart = dataStart;
    return true;
}

void PutBE16(BYTE* at, WORD value)
{
    at[0] = static_cast<BYTE>(value >> 8);
    at[1] = static_cast<BYTE>(value);
}

// Rewrites channels, bits and rate of "COMM"; the frame count and anything of AIFF-C stay.
HRESULT SetAiffFormat(FileCursor& c, const WAVEFORMATEX& wfx)
{
    constexpr DWORD kCommBytes = 18;
    WAVEFORMATEX current;
    DWORD formSize = 0;
    if (FAILED(iff_GetAIFFWfx(c.Handle(), &current, nullptr, nullptr)) ||
        !iff_IsAIFFFile(c.Handle(), &formSize))
        return TQ_E_CORRUPTFILE;
    if (wfx.wFormatTag != WAVE_FORMAT_PCM) return TQ_E_UNSUPPORTEDFORMAT;
    DWORD bound = formSize > 4 ? formSize - 4 : 0;
    DWORD size = 0;
    ULONGLONG pos = 0;
    BYTE comm[kCommBytes];
    if (FAILED(iff_FindChunkHeader(c.Handle(), IFF_ID_COMM, &size, &bound)) || size < kCommBytes ||
        FAILED(c.Tell(pos)) || FAILED(c.Read(comm, sizeof comm)))
        return TQ_E_CORRUPTFILE;
    WORD exponent = 0;
    WORD mantissa[4] = {};
    aiff_CreateRate(wfx.nSamplesPerSec, &exponent, mantissa);
    PutBE16(comm, wfx.nChannels);
    PutBE16(comm + 6, wfx.wBitsPerSample);
    PutBE16(comm + 8, exponent);
    for (int i = 0; i < 4; ++i)
        PutBE16(comm + 10 + 2 * i, mantissa[i]);
    if (FAILED(c.SeekTo(pos))) return TQ_E_WRITEFAILED;
    return c.Write(comm, sizeof comm);
}

} // namespace

TQKERNEL_API BOOL TqFileIsWave(const WCHAR* path, BOOL allowCompressed)
{
    const tq::UniqueFile file = OpenForReading(path);
    if (!file) return FALSE;
    FileCursor c(file.Get());
    FoundFormat found;
    if (!FindWaveFormat(c, found)) return FALSE;
    return allowCompressed || !TqAudio_IsCompressed(&found.wfx);
}

TQKERNEL_API BOOL TqFileIsWave64(const WCHAR* path, BOOL allowCompressed)
{
    const tq::UniqueFile file = OpenForReading(path);
    if (!file) return FALSE;
    FileCursor c(file.Get());
    FoundFormat found;
    if (!FindW64Format(c, found)) return FALSE;
    return allowCompressed || !TqAudio_IsCompressed(&found.wfx);
}

TQKERNEL_API BOOL TqFileIsAiff(const WCHAR* path)
{
    const tq::UniqueFile file = OpenForReading(path);
    return file && iff_IsAIFFFile(file.Get(), nullptr);
}

TQKERNEL_API WAVEFORMATEX* TqGetFileWfx(const WCHAR* path, ULONGLONG* frames, ULONGLONG* dataStart)
{
    const tq::UniqueFile file = OpenForReading(path);
    if (!file) return nullptr;
    FileCursor c(file.Get());
    FoundFormat found;
    if (!ReadWave(c, found) && !ReadWave64(c, found) && !ReadAiff(c, found)) return nullptr;
    const size_t bytes = sizeof(WAVEFORMATEX) + found.wfx.cbSize;
    auto* wfx = static_cast<WAVEFORMATEX*>(std::malloc(bytes));
    if (!wfx) return nullptr;
    std::memcpy(wfx, found.bytes, bytes);
    if (frames) *frames = found.frames;
    if (dataStart) *dataStart = found.dataStart;
    return wfx;
}

TQKERNEL_API HRESULT TqSetFileWfx(const WCHAR* path, const WAVEFORMATEX* wfx)
{
    if (const HRESULT hr = tq::wave::Vet(wfx); FAILED(hr)) return hr;
    if (!path) return E_POINTER;
    const tq::UniqueFile file(::CreateFileW(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ,
                                            nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                                            nullptr));
    if (!file) return TQ_E_OPENFAILED;
    FileCursor c(file.Get());

    DWORD header[3];
    ULONGLONG fmtSize = 0;
    if (SUCCEEDED(c.Read(header, sizeof header)) &&
        (header[0] == RIFF_ID_RIFF || header[0] == RIFF_ID_RF64) && header[2] == RIFF_ID_WAVE &&
        tq::rf64::FindChunk(c, RIFF_ID_FMT, &fmtSize, false, nullptr, nullptr, nullptr, nullptr))
    {
        // The chunk keeps its size, so nothing behind it moves or is written over: a 16-byte
        // chunk takes the header without cbSize, which is 0 here, and a longer one is zero-
        // filled behind the 18 bytes.
        ULONGLONG left = 0;
        if (const HRESULT hr = c.BytesLeft(left); FAILED(hr)) return hr;
        if (fmtSize < 16 || fmtSize > left) return TQ_E_CORRUPTFILE;
        const DWORD head = static_cast<DWORD>(std::min<ULONGLONG>(fmtSize, sizeof *wfx));
        if (const HRESULT hr = c.Write(wfx, head); FAILED(hr)) return hr;
        static const BYTE kZeros[256] = {};
        for (ULONGLONG left = fmtSize - head; left;)
        {
            const DWORD count = static_cast<DWORD>(std::min<ULONGLONG>(left, sizeof kZeros));
            if (const HRESULT hr = c.Write(kZeros, count); FAILED(hr)) return hr;
            left -= count;
        }
        return S_OK;
    }
    return SetAiffFormat(c, *wfx);
}
