// Recognition of AIFF and uncompressed AIFF-C, and the wave format of such a file or of a
// float AIFF-C file.
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

// What a FORM file holds, as far as its samples go.
enum class Kind
{
    None,      // not AIFF, or AIFF-C of a compression this layer does not read
    BigEndian, // AIFF, AIFF-C "NONE"
    Sowt,      // AIFF-C "sowt": little-endian
    Float32,   // AIFF-C "fl32": big-endian IEEE single
    Float64,   // AIFF-C "fl64": big-endian IEEE double
};

Kind KindOf(DWORD compression)
{
    switch (compression)
    {
    case IFF_ID_NONE:
        return Kind::BigEndian;
    case IFF_ID_SOWT:
        return Kind::Sowt;
    case IFF_ID_FL32:
    case IFF_ID_FL32_UPPER:
        return Kind::Float32;
    case IFF_ID_FL64:
    case IFF_ID_FL64_UPPER:
        return Kind::Float64;
    default:
        return Kind::None;
    }
}

// Reads the header and, for AIFF-C, the compression of "COMM"; the cursor ends behind the form
// type. size and aifc get what the header says, also for a kind of None.
Kind Classify(HANDLE file, DWORD& size, bool& aifc)
{
    size = 0;
    aifc = false;
    FileCursor c(file);
    tIFFCHUNKHEADER header = {};
    DWORD form = 0;
    if (FAILED(c.SeekTo(0)) || FAILED(iff_ReadChunkHdr(file, &header)) ||
        header.id != IFF_ID_FORM || FAILED(iff_ReadDWORD(file, &form)))
        return Kind::None;
    size = header.size;
    if (form == IFF_ID_AIFF) return Kind::BigEndian;
    if (form != IFF_ID_AIFC) return Kind::None;
    aifc = true;
    ULONGLONG pos = 0;
    if (FAILED(c.Tell(pos))) return Kind::None;
    Comm comm = {};
    const HRESULT hr = ReadComm(file, ChunkBound(header.size), true, comm);
    c.SeekTo(pos);
    return FAILED(hr) ? Kind::None : KindOf(comm.compression);
}

HRESULT GetWfx(HANDLE file, WAVEFORMATEX* wfx, DWORD* frames, DWORD* dataStart, bool takeFloat,
               BOOL* bigEndianFloat)
{
    if (frames) *frames = 0;
    if (dataStart) *dataStart = 0;
    if (bigEndianFloat) *bigEndianFloat = FALSE;
    if (!wfx) return E_POINTER;
    DWORD formSize = 0;
    bool aifc = false;
    const Kind kind = Classify(file, formSize, aifc);
    const bool isFloat = kind == Kind::Float32 || kind == Kind::Float64;
    if (kind == Kind::None || (isFloat && !takeFloat)) return TQ_E_CORRUPTFILE;
    FileCursor c(file);
    ULONGLONG chunksStart = 0;
    if (const HRESULT hr = c.Tell(chunksStart); FAILED(hr)) return hr;
    Comm comm = {};
    if (const HRESULT hr = ReadComm(file, ChunkBound(formSize), aifc, comm); FAILED(hr)) return hr;

    *wfx = {};
    if (isFloat)
    {
        // The compression names the sample; writers differ in the bit count they put beside it.
        wfx->wFormatTag = WAVE_FORMAT_IEEE_FLOAT;
        comm.bits = kind == Kind::Float32 ? 32 : 64;
    }
    else if (comm.bits == 8)
        wfx->wFormatTag = WAVE_FORMAT_AIFF_SIGNED8;
    else
        wfx->wFormatTag = kind == Kind::Sowt ? WAVE_FORMAT_PCM : WAVE_FORMAT_AIFF_BIGENDIAN;
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
    if (bigEndianFloat) *bigEndianFloat = isFloat;
    return S_OK;
}

} // namespace

TQKERNEL_API BOOL iff_IsAIFFFileEx(HANDLE file, DWORD* size, BOOL* isAifc, BOOL* littleEndian)
{
    if (size) *size = 0;
    if (isAifc) *isAifc = FALSE;
    if (littleEndian) *littleEndian = FALSE;
    DWORD formSize = 0;
    bool aifc = false;
    const Kind kind = Classify(file, formSize, aifc);
    if (size) *size = formSize;
    if (isAifc) *isAifc = aifc;
    // Only uncompressed integer samples count as AIFF here; float AIFF-C is for the Ex reader.
    if (kind != Kind::BigEndian && kind != Kind::Sowt) return FALSE;
    if (littleEndian) *littleEndian = kind == Kind::Sowt;
    return TRUE;
}

TQKERNEL_API BOOL iff_IsAIFFFile(HANDLE file, DWORD* size)
{
    return iff_IsAIFFFileEx(file, size, nullptr, nullptr);
}

TQKERNEL_API HRESULT iff_GetAIFFWfx(HANDLE file, WAVEFORMATEX* wfx, DWORD* frames, DWORD* dataStart)
{
    return GetWfx(file, wfx, frames, dataStart, false, nullptr);
}

TQKERNEL_API HRESULT iff_GetAIFFWfxEx(HANDLE file, WAVEFORMATEX* wfx, DWORD* frames,
                                      DWORD* dataStart, BOOL* bigEndianFloat)
{
    return GetWfx(file, wfx, frames, dataStart, true, bigEndianFloat);
}
