// Wave headers and INFO texts on the memory cursor.
#include "mriffwave.h"

#include "memorycursor.h"
#include "riffwalk.h"

#include <algorithm>
#include <cstring>

using tq::riff::MemoryCursor;

namespace {

constexpr DWORD kBareHeaderBytes = 18; // a WAVEFORMATEX up to and including cbSize
static_assert(sizeof(WAVEFORMATEX) == kBareHeaderBytes, "the platform header is packed");
constexpr DWORD kPcmHeaderBytes = 16; // the same without cbSize
constexpr ULONGLONG kSizeLimit = 0xFFFFFFF8ull;

} // namespace

namespace tq::riff {

HRESULT ReadWaveFormat(const void* data, DWORD size, void* header, DWORD capacity, DWORD& fmtBytes,
                       DWORD& dataBytes) noexcept
{
    if (size < kFileHeaderBytes) return TQ_E_NOTFOUND;
    if (!data) return E_POINTER;
    // Only read through: the cursor needs a writable pointer but never writes.
    _tMRIFF m;
    mriff_Init(&m, const_cast<void*>(data), size, size);
    MemoryCursor c(m);

    DWORD form = 0;
    if (const HRESULT hr = ReadFileID(c, nullptr, &form); FAILED(hr)) return hr;
    if (form != RIFF_ID_WAVE) return E_FAIL;
    DWORD fmtSize = 0;
    if (const HRESULT hr = FindChunkHeaderInRIFF(c, RIFF_ID_FMT, &fmtSize, nullptr); FAILED(hr))
        return hr;
    if (const HRESULT hr = riff_ValidateChunkHeader(RIFF_ID_FMT, fmtSize); FAILED(hr)) return hr;
    const DWORD copied = std::min(fmtSize, capacity);
    std::memset(header, 0, capacity);
    if (const HRESULT hr = c.Read(header, copied); FAILED(hr)) return hr;
    DWORD dataSize = 0;
    if (const HRESULT hr = FindChunkHeaderInRIFF(c, RIFF_ID_DATA, &dataSize, nullptr); FAILED(hr))
        return hr;
    fmtBytes = copied;
    dataBytes = dataSize;
    return S_OK;
}

} // namespace tq::riff

TQKERNEL_API HRESULT mriff_GetInfoString(_tMRIFF* m, DWORD id, char* buffer, DWORD bufferSize,
                                         DWORD* remaining)
{
    if (!buffer || bufferSize == 0) return E_INVALIDARG;
    return tq::riff::OnMemoryCursor(m, [&](MemoryCursor& c) {
        buffer[0] = '\0';
        const DWORD start = c.Offset();
        DWORD bound = remaining ? *remaining : 0;
        DWORD listSize = 0;
        DWORD size = 0;
        HRESULT hr =
            tq::riff::FindListChunk(c, RIFF_ID_INFO, &listSize, remaining ? &bound : nullptr);
        if (SUCCEEDED(hr)) hr = tq::riff::FindChunkHeader(c, id, &size, &listSize);
        const DWORD count = std::min(size, bufferSize);
        if (SUCCEEDED(hr)) hr = c.Read(buffer, count);
        if (SUCCEEDED(hr))
            buffer[count < bufferSize ? count : bufferSize - 1] = '\0';
        else
            buffer[0] = '\0';
        c.MoveTo(start);
        return hr;
    });
}

TQKERNEL_API HRESULT mriff_WriteWaveHeader(_tMRIFF* m, const WAVEFORMATEX* wfx, DWORD dataBytes,
                                           DWORD trailerBytes)
{
    if (!wfx) return E_POINTER;
    return tq::riff::OnMemoryCursor(m, [&](MemoryCursor& c) {
        using namespace tq::riff;
        // PCM is written in its short form, with the derived fields made right; anything else
        // keeps its cbSize bytes, without which an extensible or codec header is unreadable.
        PCMWAVEFORMAT pcm = {};
        const void* fmt = wfx;
        DWORD fmtSize = kBareHeaderBytes + wfx->cbSize;
        if (wfx->wFormatTag == WAVE_FORMAT_PCM)
        {
            pcm.wf.wFormatTag = WAVE_FORMAT_PCM;
            pcm.wf.nChannels = wfx->nChannels;
            pcm.wf.nSamplesPerSec = wfx->nSamplesPerSec;
            pcm.wf.nBlockAlign = static_cast<WORD>((wfx->wBitsPerSample >> 3) * wfx->nChannels);
            pcm.wf.nAvgBytesPerSec = pcm.wf.nBlockAlign * wfx->nSamplesPerSec;
            pcm.wBitsPerSample = wfx->wBitsPerSample;
            fmt = &pcm;
            fmtSize = kPcmHeaderBytes;
        }
        ULONGLONG riffSize =
            static_cast<ULONGLONG>(trailerBytes) + 20 + Padded(fmtSize) + dataBytes;
        riffSize += riffSize & 1;
        if (riffSize >= kSizeLimit) return TQ_E_SIZELIMIT;

        const BYTE pad = 0;
        HRESULT hr = WriteFileID(c, RIFF_ID_WAVE, static_cast<DWORD>(riffSize));
        if (SUCCEEDED(hr)) hr = WriteChunkHeader(c, RIFF_ID_FMT, fmtSize);
        if (SUCCEEDED(hr)) hr = c.Write(fmt, fmtSize);
        if (SUCCEEDED(hr)) hr = c.Write(&pad, fmtSize & 1);
        if (SUCCEEDED(hr)) hr = WriteChunkHeader(c, RIFF_ID_DATA, dataBytes);
        return hr;
    });
}

TQKERNEL_API HRESULT mriff_GetWfx(WAVEFORMATEX* wfx, const void* data, DWORD size, DWORD* dataBytes)
{
    if (!wfx) return E_POINTER;
    WAVEFORMATEX header;
    DWORD fmtBytes = 0;
    DWORD dataSize = 0;
    const HRESULT hr =
        tq::riff::ReadWaveFormat(data, size, &header, kBareHeaderBytes, fmtBytes, dataSize);
    if (FAILED(hr)) return hr;
    header.cbSize = 0;
    *wfx = header;
    if (dataBytes) *dataBytes = dataSize;
    return S_OK;
}
