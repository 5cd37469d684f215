// Recognition of AIFF and uncompressed AIFF-C, and the wave format of such a file.
#include "iff.h"

#include "filecursor.h"

#include <algorithm>

using tq::riff::FileCursor;

namespace {

constexpr DWORD kFormTypeBytes = 4;
constexpr DWORD kCommBytes = 18;
constexpr DWORD kCommAifcBytes = 22;

// "COMM" as read, in machine order.
struct Comm
{
    WORD channels;
    DWORD frames;
    WORD bits;
    WORD exponent;
    WORD mantissa[4];
    DWORD compression; // AIFF-C only
};

// Finds "COMM" from the cursor within bound and reads it.
HRESULT ReadComm(HANDLE file, DWORD bound, bool aifc, Comm& comm)
{
    DWORD size = 0;
    if (const HRESULT hr = iff_FindChunkHeader(file, IFF_ID_COMM, &size, &bound); FAILED(hr))
        return hr;
    BYTE raw[kCommAifcBytes] = {};
    const DWORD count = aifc ? kCommAifcBytes : kCommBytes;
    FileCursor c(file);
    if (const HRESULT hr = c.Read(raw, count); FAILED(hr)) return hr;
    const auto word = [&raw](int at) { return static_cast<WORD>(raw[at] << 8 | raw[at + 1]); };
    const auto dword = [&word](int at) {
        return static_cast<DWORD>(word(at)) << 16 | word(at + 2);
    };
    comm.channels = word(0);
    comm.frames = dword(2);
    comm.bits = word(6);
    comm.exponent = word(8);
    for (int i = 0; i < 4; ++i)
        comm.mantissa[i] = word(10 + 2 * i);
    comm.compression = aifc ? dword(18) : IFF_ID_NONE;
    return S_OK;
}

// The bound of the chunks behind the form type.
DWORD ChunkBound(DWORD formSize)
{
    return formSize > kFormTypeBytes ? formSize - kFormTypeBytes : 0;
}

} // namespace

TQKERNEL_API BOOL iff_IsAIFFFileEx(HANDLE file, DWORD* size, BOOL* isAifc, BOOL* littleEndian)
{
    if (size) *size = 0;
    if (isAifc) *isAifc = FALSE;
    if (littleEndian) *littleEndian = FALSE;
    FileCursor c(file);
    tIFFCHUNKHEADER header = {};
    DWORD form = 0;
    if (FAILED(c.SeekTo(0)) || FAILED(iff_ReadChunkHdr(file, &header)) ||
        header.id != IFF_ID_FORM || FAILED(iff_ReadDWORD(file, &form)))
        return FALSE;
    if (size) *size = header.size;
    if (form == IFF_ID_AIFF) return TRUE;
    if (form != IFF_ID_AIFC) return FALSE;
    if (isAifc) *isAifc = TRUE;
    ULONGLONG pos = 0;
    if (FAILED(c.Tell(pos))) return FALSE;
    Comm comm = {};
    const HRESULT hr = ReadComm(file, ChunkBound(header.size), true, comm);
    c.SeekTo(pos);
    if (FAILED(hr)) return FALSE;
    if (comm.compression == IFF_ID_NONE) return TRUE;
    if (comm.compression != IFF_ID_SOWT) return FALSE;
    if (littleEndian) *littleEndian = TRUE;
    return TRUE;
}

TQKERNEL_API BOOL iff_IsAIFFFile(HANDLE file, DWORD* size)
{
    return iff_IsAIFFFileEx(file, size, nullptr, nullptr);
}

TQKERNEL_API HRESULT iff_GetAIFFWfx(HANDLE file, WAVEFORMATEX* wfx, DWORD* frames, DWORD* dataStart)
{
    if (frames) *frames = 0;
    if (dataStart) *dataStart = 0;
    if (!wfx) return E_POINTER;
    DWORD formSize = 0;
    BOOL aifc = FALSE, littleEndian = FALSE;
    if (!iff_IsAIFFFileEx(file, &formSize, &aifc, &littleEndian)) return TQ_E_CORRUPTFILE;
    FileCursor c(file);
    ULONGLONG chunksStart = 0;
    if (const HRESULT hr = c.Tell(chunksStart); FAILED(hr)) return hr;
    Comm comm = {};
    if (const HRESULT hr = ReadComm(file, ChunkBound(formSize), aifc != FALSE, comm); FAILED(hr))
        return hr;

    *wfx = {};
    if (comm.bits == 8)
        wfx->wFormatTag = WAVE_FORMAT_AIFF_SIGNED8;
    else
        wfx->wFormatTag = littleEndian ? WAVE_FORMAT_PCM : WAVE_FORMAT_AIFF_BIGENDIAN;
    wfx->nChannels = comm.channels;
    wfx->wBitsPerSample = comm.bits;
    wfx->nSamplesPerSec = aiff_ConvertRate(comm.exponent, comm.mantissa);
    const DWORD frameBytes = static_cast<DWORD>(comm.bits >> 3) * comm.channels;
    wfx->nAvgBytesPerSec = frameBytes * wfx->nSamplesPerSec;
    // The alignment is taken as the record holds it: a frame of 64 KiB wraps to 0, which must
    // not reach the frame count's division.
    const WORD blockAlign = static_cast<WORD>(frameBytes);
    wfx->nBlockAlign = blockAlign ? blockAlign : 1;

    if (const HRESULT hr = c.SeekTo(chunksStart); FAILED(hr)) return hr;
    DWORD bound = ChunkBound(formSize);
    DWORD size = 0;
    if (const HRESULT hr = iff_FindChunkHeader(file, IFF_ID_SSND, &size, &bound); FAILED(hr))
        return hr;
    DWORD offset = 0, blockSize = 0;
    if (const HRESULT hr = iff_ReadDWORD(file, &offset); FAILED(hr)) return hr;
    if (const HRESULT hr = iff_ReadDWORD(file, &blockSize); FAILED(hr)) return hr;
    ULONGLONG behind = 0;
    if (const HRESULT hr = c.Tell(behind); FAILED(hr)) return hr;
    const ULONGLONG front = 8ull + offset;
    const ULONGLONG sampleBytes = size > front ? size - front : 0;
    if (frames)
        *frames =
            static_cast<DWORD>(std::min<ULONGLONG>(sampleBytes / wfx->nBlockAlign, comm.frames));
    if (dataStart) *dataStart = static_cast<DWORD>(behind + offset);
    return S_OK;
}
