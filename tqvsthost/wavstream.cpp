// Reading and writing WAV files: the chunks through the RIFF layer, the samples in blocks.
#include "wavstream.h"

#include "riff.h"
#include "tqwaveformat.h"

#include <algorithm>
#include <cstring>

namespace tqhost {
namespace {

// Room for the largest header a copy needs to read, extensible included.
constexpr DWORD kMinimumFormatBytes = sizeof(WAVEFORMATEXTENSIBLE);
// The largest format chunk worth keeping; beyond this it is not a plain sample format.
constexpr DWORD kMaximumFormatBytes = 4096;

HRESULT LastError()
{
    const DWORD error = GetLastError();
    return error ? HRESULT_FROM_WIN32(error) : E_FAIL;
}

} // namespace

void ShiftHighAligned24(BYTE* bytes, size_t count, bool fromFile)
{
    for (size_t i = 0; i < count; ++i, bytes += 4)
    {
        INT32 word;
        std::memcpy(&word, bytes, 4);
        word = fromFile ? word >> 8 : static_cast<INT32>(static_cast<UINT32>(word) << 8);
        std::memcpy(bytes, &word, 4);
    }
}

bool WavFormat::HighAligned24() const
{
    const WAVEFORMATEX* header = Header();
    return header->wFormatTag == WAVE_FORMAT_EXTENSIBLE &&
           TqAudio_GetSampleType(header) == TQSAMPLE_UNPACKED24;
}

HRESULT WavReader::Open(const std::wstring& path)
{
    m_file.Reset(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                             FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (m_file.Get() == INVALID_HANDLE_VALUE) return LastError();
    DWORD form = 0;
    HRESULT hr = riff_ReadFileID(m_file.Get(), nullptr, &form);
    if (FAILED(hr)) return hr;
    if (form != RIFF_ID_WAVE) return TQ_E_CORRUPTFILE;

    DWORD size = 0;
    hr = riff_FindChunkHeaderInRIFF(m_file.Get(), RIFF_ID_FMT, &size, nullptr);
    if (FAILED(hr)) return hr;
    if (size < sizeof(PCMWAVEFORMAT) || size > kMaximumFormatBytes) return TQ_E_CORRUPTFILE;
    m_format.chunk.assign(std::max(size, kMinimumFormatBytes), 0);
    hr = riff_ReadData(m_file.Get(), m_format.chunk.data(), size);
    if (FAILED(hr)) return hr;
    m_format.size = size;

    const WAVEFORMATEX* header = m_format.Header();
    if (header->nBlockAlign == 0 || header->nChannels == 0) return TQ_E_CORRUPTFILE;
    m_frameBytes = header->nBlockAlign;
    m_highAligned24 = m_format.HighAligned24();

    hr = riff_FindChunkHeaderInRIFF(m_file.Get(), RIFF_ID_DATA, &size, nullptr);
    if (FAILED(hr)) return hr;
    // A data chunk cut short by a failed recording keeps what is there.
    LARGE_INTEGER here = {}, end = {};
    SetFilePointerEx(m_file.Get(), here, &here, FILE_CURRENT);
    GetFileSizeEx(m_file.Get(), &end);
    const UINT64 available = static_cast<UINT64>(end.QuadPart - here.QuadPart);
    m_dataBytes = static_cast<UINT32>(std::min<UINT64>(size, available));
    m_dataBytes -= m_dataBytes % m_frameBytes;
    m_position = 0;
    return S_OK;
}

HRESULT WavReader::Read(void* buffer, UINT32 frames, UINT32* read)
{
    *read = 0;
    const UINT32 bytes = static_cast<UINT32>(
        std::min<UINT64>(UINT64(frames) * m_frameBytes, m_dataBytes - m_position));
    if (bytes == 0) return S_OK;
    DWORD got = 0;
    if (!ReadFile(m_file.Get(), buffer, bytes, &got, nullptr)) return LastError();
    if (got != bytes) return TQ_E_READFAILED;
    if (m_highAligned24) ShiftHighAligned24(static_cast<BYTE*>(buffer), bytes / 4, true);
    m_position += bytes;
    *read = bytes / m_frameBytes;
    return S_OK;
}

std::wstring TemporaryNameFor(const std::wstring& path)
{
    return path + L".tqvsthost-" + std::to_wstring(GetCurrentProcessId()) + L".tmp";
}

WavWriter::~WavWriter()
{
    if (m_file.Get() == INVALID_HANDLE_VALUE) return;
    m_file.Reset();
    DeleteFileW(m_tempPath.c_str());
}

HRESULT WavWriter::Create(const std::wstring& path, const WavFormat& format)
{
    m_path = path;
    m_tempPath = TemporaryNameFor(path);
    m_frameBytes = format.Header()->nBlockAlign;
    m_highAligned24 = format.HighAligned24();
    m_file.Reset(CreateFileW(m_tempPath.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                             CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (m_file.Get() == INVALID_HANDLE_VALUE) return LastError();
    HRESULT hr = riff_WriteFileID(m_file.Get(), RIFF_ID_WAVE, 4);
    if (SUCCEEDED(hr))
        hr = riff_WriteChunk(m_file.Get(), RIFF_ID_FMT, format.chunk.data(), format.size, nullptr);
    if (SUCCEEDED(hr)) hr = riff_SaveLocation(m_file.Get(), &m_dataSizeOffset);
    if (SUCCEEDED(hr)) hr = riff_WriteChunkHeader(m_file.Get(), RIFF_ID_DATA, 0);
    m_dataSizeOffset += 4;
    return hr;
}

HRESULT WavWriter::Write(const void* buffer, UINT32 frames)
{
    const UINT64 bytes = UINT64(frames) * m_frameBytes;
    if (m_dataBytes + bytes > 0xFFFFFF00ull - m_dataSizeOffset) return TQ_E_SIZELIMIT;
    if (m_highAligned24)
    {
        m_shifted.assign(static_cast<const BYTE*>(buffer),
                         static_cast<const BYTE*>(buffer) + static_cast<size_t>(bytes));
        ShiftHighAligned24(m_shifted.data(), m_shifted.size() / 4, false);
        buffer = m_shifted.data();
    }
    DWORD written = 0;
    if (!WriteFile(m_file.Get(), buffer, static_cast<DWORD>(bytes), &written, nullptr))
        return LastError();
    if (written != bytes) return TQ_E_WRITEFAILED;
    m_dataBytes += static_cast<UINT32>(bytes);
    return S_OK;
}

HRESULT WavWriter::Commit()
{
    if (m_dataBytes % 2)
    {
        const BYTE pad = 0;
        DWORD written = 0;
        if (!WriteFile(m_file.Get(), &pad, 1, &written, nullptr)) return LastError();
    }
    DWORD end = 0;
    HRESULT hr = riff_SaveLocation(m_file.Get(), &end);
    if (SUCCEEDED(hr)) hr = riff_SetRIFFSize(m_file.Get(), end - 8);
    if (SUCCEEDED(hr)) hr = riff_RestoreLocation(m_file.Get(), m_dataSizeOffset);
    DWORD written = 0;
    if (SUCCEEDED(hr) && !WriteFile(m_file.Get(), &m_dataBytes, 4, &written, nullptr))
        hr = LastError();
    if (FAILED(hr)) return hr;
    m_file.Reset();
    if (!MoveFileExW(m_tempPath.c_str(), m_path.c_str(), MOVEFILE_REPLACE_EXISTING))
    {
        hr = LastError();
        DeleteFileW(m_tempPath.c_str());
        return hr;
    }
    return S_OK;
}

} // namespace tqhost
