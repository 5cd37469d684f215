// Writing WAV, RF64, Wave64 and AIFF files with carried chunks.
#include "mediawriter.h"

#include "iff.h"
#include "listframing.h"
#include "riff64.h"
#include "tqwaveformat.h"
#include "wavstream.h"

#include <cstring>

namespace tqhost {
namespace {

constexpr DWORD Fourcc(char a, char b, char c, char d)
{
    return DWORD(BYTE(a)) | DWORD(BYTE(b)) << 8 | DWORD(BYTE(c)) << 16 | DWORD(BYTE(d)) << 24;
}
constexpr DWORD kList = Fourcc('L', 'I', 'S', 'T');
// The room a ds64 chunk needs after its header: RIFF size, data size, sample count, table length.
constexpr DWORD kDs64Bytes = 28;
constexpr UINT64 kRiffLimit = 0xFFFFFFFFull;
// The one AIFF-C version there is, as its version chunk carries it.
constexpr UINT32 kAifcVersion1 = 0xA2805140;

HRESULT LastError()
{
    const DWORD error = GetLastError();
    return error ? HRESULT_FROM_WIN32(error) : E_FAIL;
}

void PutBigEndian32(BYTE* p, UINT32 value)
{
    p[0] = BYTE(value >> 24);
    p[1] = BYTE(value >> 16);
    p[2] = BYTE(value >> 8);
    p[3] = BYTE(value);
}

void PutBigEndian16(BYTE* p, UINT16 value)
{
    p[0] = BYTE(value >> 8);
    p[1] = BYTE(value);
}

// The format chunk's bytes: the input's own when the samples keep their type, else plain PCM
// or float of the new type.
std::vector<BYTE> FormatChunk(const MediaLayout& input, TQSAMPLETYPE type)
{
    const WAVEFORMATEX* header = input.Header();
    if (type == input.sampleType && input.container != Container::Aiff)
    {
        size_t size = header->wFormatTag == WAVE_FORMAT_PCM
                          ? sizeof(PCMWAVEFORMAT)
                          : std::min(sizeof(WAVEFORMATEX) + header->cbSize, input.format.size());
        return std::vector<BYTE>(input.format.begin(), input.format.begin() + size);
    }
    WAVEFORMATEX wfx = {};
    const bool isFloat = type == TQSAMPLE_FLOAT32 || type == TQSAMPLE_FLOAT64;
    wfx.wFormatTag = isFloat ? WAVE_FORMAT_IEEE_FLOAT : WAVE_FORMAT_PCM;
    wfx.nChannels = header->nChannels;
    wfx.nSamplesPerSec = header->nSamplesPerSec;
    wfx.wBitsPerSample = static_cast<WORD>(TqAudio_BytesFromSampleType(type) * 8);
    wfx.nBlockAlign = static_cast<WORD>(wfx.nChannels * TqAudio_BytesFromSampleType(type));
    wfx.nAvgBytesPerSec = wfx.nSamplesPerSec * wfx.nBlockAlign;
    const BYTE* bytes = reinterpret_cast<const BYTE*>(&wfx);
    return std::vector<BYTE>(bytes,
                             bytes + (isFloat ? sizeof(WAVEFORMATEX) : sizeof(PCMWAVEFORMAT)));
}

} // namespace

Container OutputContainer(const std::wstring& path, Container input)
{
    const size_t dot = path.find_last_of(L".\\/");
    const std::wstring extension =
        dot != std::wstring::npos && path[dot] == L'.' ? path.substr(dot + 1) : L"";
    if (_wcsicmp(extension.c_str(), L"wav") == 0)
        return input == Container::Rf64 ? Container::Rf64 : Container::Wave;
    if (_wcsicmp(extension.c_str(), L"w64") == 0) return Container::Wave64;
    if (_wcsicmp(extension.c_str(), L"aif") == 0 || _wcsicmp(extension.c_str(), L"aiff") == 0 ||
        _wcsicmp(extension.c_str(), L"aifc") == 0)
        return Container::Aiff;
    return input;
}

TQSAMPLETYPE OutputSampleType(Container container, TQSAMPLETYPE input)
{
    if (container == Container::Aiff)
    {
        switch (input)
        {
        case TQSAMPLE_PCM8:
        case TQSAMPLE_SIGNED8:
            return TQSAMPLE_SIGNED8;
        case TQSAMPLE_PCM16:
        case TQSAMPLE_BE16:
            return TQSAMPLE_BE16;
        case TQSAMPLE_PCM24:
        case TQSAMPLE_UNPACKED24:
        case TQSAMPLE_BE24:
            return TQSAMPLE_BE24;
        case TQSAMPLE_PCM32:
        case TQSAMPLE_BE32:
            return TQSAMPLE_BE32;
        case TQSAMPLE_FLOAT32:
        case TQSAMPLE_FLOAT64:
            return input; // AIFF-C, big-endian in the file
        default:
            return TQSAMPLE_NONE;
        }
    }
    switch (input)
    {
    case TQSAMPLE_SIGNED8:
        return TQSAMPLE_PCM8;
    case TQSAMPLE_BE16:
        return TQSAMPLE_PCM16;
    case TQSAMPLE_BE24:
        return TQSAMPLE_PCM24;
    case TQSAMPLE_BE32:
        return TQSAMPLE_PCM32;
    default:
        return input;
    }
}

MediaWriter::~MediaWriter()
{
    if (m_file.Get() == INVALID_HANDLE_VALUE) return;
    m_file.Reset();
    DeleteFileW(m_tempPath.c_str());
}

HRESULT MediaWriter::WriteBytes(const void* data, size_t size)
{
    DWORD written = 0;
    if (!WriteFile(m_file.Get(), data, static_cast<DWORD>(size), &written, nullptr))
        return LastError();
    return written == size ? S_OK : TQ_E_WRITEFAILED;
}

HRESULT MediaWriter::WriteAt(UINT64 offset, const void* data, size_t size)
{
    LARGE_INTEGER to;
    to.QuadPart = static_cast<LONGLONG>(offset);
    if (!SetFilePointerEx(m_file.Get(), to, nullptr, FILE_BEGIN)) return LastError();
    return WriteBytes(data, size);
}

UINT64 MediaWriter::Position() const
{
    LARGE_INTEGER here = {};
    SetFilePointerEx(m_file.Get(), here, &here, FILE_CURRENT);
    return static_cast<UINT64>(here.QuadPart);
}

HRESULT MediaWriter::Create(const std::wstring& path, Container container, const MediaLayout& input,
                            TQSAMPLETYPE type, const std::vector<MediaChunk>& chunks,
                            std::vector<std::wstring>& dropped)
{
    m_path = path;
    m_tempPath = TemporaryNameFor(path);
    m_container = container;
    const WAVEFORMATEX* header = input.Header();
    m_frameBytes = header->nChannels * TqAudio_BytesFromSampleType(type);
    m_highAligned24 = type == input.sampleType && input.highAligned24;
    m_file.Reset(CreateFileW(m_tempPath.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                             CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (m_file.Get() == INVALID_HANDLE_VALUE) return LastError();
    static const BYTE zeros[8] = {};
    HRESULT hr = S_OK;
    const auto put = [&](const void* data, size_t size) {
        if (SUCCEEDED(hr)) hr = WriteBytes(data, size);
    };
    std::vector<BYTE> head;
    if (container == Container::Aiff)
    {
        // Integer samples go in plain AIFF, which every reader takes; float needs AIFF-C, whose
        // version chunk readers expect before anything else.
        const bool isFloat = type == TQSAMPLE_FLOAT32 || type == TQSAMPLE_FLOAT64;
        m_swapBytes = isFloat ? TqAudio_BytesFromSampleType(type) : 0;
        if (isFloat)
        {
            put("FORM\0\0\0\0AIFCFVER\0\0\0\4", 20);
            BYTE version[4];
            PutBigEndian32(version, kAifcVersion1);
            put(version, 4);
        }
        else
            put("FORM\0\0\0\0AIFF", 12);
        m_commFrames = Position() + 10;
        // AIFF-C adds the compression id and its name, a counted text padded to even.
        const char* name =
            type == TQSAMPLE_FLOAT64 ? "64-bit floating point" : "32-bit floating point";
        const size_t nameBytes = (1 + std::strlen(name) + 1) & ~size_t(1);
        std::vector<BYTE> comm(8 + 18 + (isFloat ? 4 + nameBytes : 0), 0);
        std::memcpy(comm.data(), "COMM", 4);
        PutBigEndian32(comm.data() + 4, static_cast<UINT32>(comm.size() - 8));
        PutBigEndian16(comm.data() + 8, header->nChannels);
        PutBigEndian16(comm.data() + 14,
                       static_cast<UINT16>(TqAudio_BytesFromSampleType(type) * 8));
        WORD exponent = 0, mantissa[4] = {};
        aiff_CreateRate(header->nSamplesPerSec, &exponent, mantissa);
        PutBigEndian16(comm.data() + 16, exponent);
        for (int i = 0; i < 4; ++i)
            PutBigEndian16(comm.data() + 18 + 2 * i, mantissa[i]);
        if (isFloat)
        {
            PutBigEndian32(comm.data() + 26, type == TQSAMPLE_FLOAT64 ? IFF_ID_FL64 : IFF_ID_FL32);
            comm[30] = static_cast<BYTE>(std::strlen(name));
            std::memcpy(comm.data() + 31, name, std::strlen(name));
        }
        put(comm.data(), comm.size());
        for (const MediaChunk& chunk : chunks)
        {
            if (!chunk.aiff)
            {
                dropped.push_back(chunk.Name());
                continue;
            }
            BYTE chunkHeader[8];
            std::memcpy(chunkHeader, &chunk.fourcc, 4);
            PutBigEndian32(chunkHeader + 4, static_cast<UINT32>(chunk.data.size()));
            put(chunkHeader, 8);
            put(chunk.data.data(), chunk.data.size());
            put(zeros, chunk.data.size() & 1);
        }
        m_dataHeader = Position();
        put("SSND\0\0\0\0\0\0\0\0\0\0\0\0", 16);
        return hr;
    }

    const std::vector<BYTE> format = FormatChunk(input, type);
    if (container == Container::Wave64)
    {
        UINT64 size = 0;
        put(&RIFF64_GUID_RIFF, 16);
        put(&size, 8);
        put(&RIFF64_GUID_WAVE, 16);
        const auto chunk64 = [&](const GUID& id, const std::vector<BYTE>& data) {
            const UINT64 stored = data.size() + 24;
            put(&id, 16);
            put(&stored, 8);
            put(data.data(), data.size());
            put(zeros, (8 - data.size() % 8) % 8);
        };
        chunk64(RIFF64_GUID_FMT, format);
        for (const MediaChunk& chunk : chunks)
        {
            std::vector<BYTE> list;
            if (chunk.aiff)
                dropped.push_back(chunk.Name());
            else if (chunk.guid != Wave64Guid(kList))
                chunk64(chunk.guid, chunk.data);
            // A RIFF list becomes a Wave64 list, so that Wave64 readers find its entries.
            else if (RiffListToWave64(chunk.data, list))
                chunk64(RIFF64_GUID_LIST, list);
            else
                dropped.push_back(chunk.Name());
        }
        m_dataHeader = Position();
        put(&RIFF64_GUID_DATA, 16);
        put(&size, 8);
        return hr;
    }

    // WAV: room for a ds64 behind the file header, so that the file can become RF64 at the end.
    put("RIFF\0\0\0\0WAVEJUNK", 16);
    const DWORD ds64Bytes = kDs64Bytes;
    put(&ds64Bytes, 4);
    BYTE ds64[kDs64Bytes] = {};
    put(ds64, sizeof(ds64));
    const auto chunk32 = [&](DWORD id, const std::vector<BYTE>& data) {
        const auto size = static_cast<DWORD>(data.size());
        put(&id, 4);
        put(&size, 4);
        put(data.data(), data.size());
        put(zeros, data.size() & 1);
    };
    chunk32(Fourcc('f', 'm', 't', ' '), format);
    for (const MediaChunk& chunk : chunks)
    {
        // A Wave64 list takes the RIFF framing; one whose ids have no four-character form
        // cannot.
        std::vector<BYTE> list;
        const bool wave64List = chunk.guid == RIFF64_GUID_LIST;
        const bool framed = !wave64List || Wave64ListToRiff(chunk.data, list);
        const std::vector<BYTE>& data = wave64List ? list : chunk.data;
        if (chunk.aiff || !chunk.fourcc || !framed || data.size() > kRiffLimit)
            dropped.push_back(chunk.Name());
        else
            chunk32(chunk.fourcc, data);
    }
    m_dataHeader = Position();
    put("data\0\0\0\0", 8);
    return hr;
}

HRESULT MediaWriter::Write(const void* buffer, UINT32 frames)
{
    const size_t bytes = size_t(frames) * m_frameBytes;
    if (m_highAligned24 || m_swapBytes)
    {
        m_shifted.assign(static_cast<const BYTE*>(buffer),
                         static_cast<const BYTE*>(buffer) + bytes);
        if (m_highAligned24) ShiftHighAligned24(m_shifted.data(), m_shifted.size() / 4, false);
        if (m_swapBytes) SwapSampleBytes(m_shifted.data(), m_shifted.size(), m_swapBytes);
        buffer = m_shifted.data();
    }
    if (m_container == Container::Aiff && m_dataBytes + bytes + 16 > kRiffLimit - m_dataHeader)
        return TQ_E_SIZELIMIT;
    const HRESULT hr = WriteBytes(buffer, bytes);
    if (FAILED(hr)) return hr;
    m_dataBytes += bytes;
    m_frames += frames;
    return S_OK;
}

HRESULT MediaWriter::Commit()
{
    static const BYTE zeros[8] = {};
    HRESULT hr = S_OK;
    if (m_container == Container::Wave64)
        hr = WriteBytes(zeros, (8 - m_dataBytes % 8) % 8);
    else
        hr = WriteBytes(zeros, m_dataBytes & 1);
    LARGE_INTEGER end = {};
    if (SUCCEEDED(hr) && !SetFilePointerEx(m_file.Get(), end, &end, FILE_CURRENT)) hr = LastError();
    if (FAILED(hr)) return hr;
    const auto fileSize = static_cast<UINT64>(end.QuadPart);
    if (m_container == Container::Aiff)
    {
        BYTE word[4];
        PutBigEndian32(word, static_cast<UINT32>(fileSize - 8));
        hr = WriteAt(4, word, 4);
        PutBigEndian32(word, static_cast<UINT32>(m_frames));
        if (SUCCEEDED(hr)) hr = WriteAt(m_commFrames, word, 4);
        PutBigEndian32(word, static_cast<UINT32>(m_dataBytes + 8));
        if (SUCCEEDED(hr)) hr = WriteAt(m_dataHeader + 4, word, 4);
    }
    else if (m_container == Container::Wave64)
    {
        hr = WriteAt(16, &fileSize, 8);
        const UINT64 stored = m_dataBytes + 24;
        if (SUCCEEDED(hr)) hr = WriteAt(m_dataHeader + 16, &stored, 8);
    }
    else if (m_container == Container::Rf64 || fileSize - 8 > kRiffLimit ||
             m_dataBytes > kRiffLimit)
    {
        m_container = Container::Rf64;
        BYTE head[48];
        std::memcpy(head, "RF64\xFF\xFF\xFF\xFFWAVEds64", 16);
        const DWORD ds64Bytes = kDs64Bytes;
        std::memcpy(head + 16, &ds64Bytes, 4);
        const UINT64 sizes[3] = {fileSize - 8, m_dataBytes, m_frames};
        std::memcpy(head + 20, sizes, 24);
        std::memset(head + 44, 0, 4);
        hr = WriteAt(0, head, sizeof(head));
        const DWORD inDs64 = 0xFFFFFFFF;
        if (SUCCEEDED(hr)) hr = WriteAt(m_dataHeader + 4, &inDs64, 4);
    }
    else
    {
        const auto riffSize = static_cast<DWORD>(fileSize - 8);
        const auto dataSize = static_cast<DWORD>(m_dataBytes);
        hr = WriteAt(4, &riffSize, 4);
        if (SUCCEEDED(hr)) hr = WriteAt(m_dataHeader + 4, &dataSize, 4);
    }
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
