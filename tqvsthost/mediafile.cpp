// Walking the chunks of WAV, RF64, Wave64 and AIFF files, and reading their samples.
#include "mediafile.h"

#include "iff.h"
#include "riff64.h"
#include "tqwaveformat.h"
#include "wavstream.h"

#include <objbase.h>

#include <algorithm>
#include <cstring>

namespace tqhost {
namespace {

// Beyond these the file is not worth walking further: a chunk count or metadata size that large
// comes from damage, and holding it in memory would only hurt.
constexpr size_t kMaxChunks = 10000;
constexpr UINT64 kMaxMetadataBytes = UINT64(64) << 20;
constexpr DWORD kMaxFormatBytes = 4096;

constexpr DWORD Fourcc(char a, char b, char c, char d)
{
    return DWORD(BYTE(a)) | DWORD(BYTE(b)) << 8 | DWORD(BYTE(c)) << 16 | DWORD(BYTE(d)) << 24;
}
constexpr DWORD kRiff = Fourcc('R', 'I', 'F', 'F');
constexpr DWORD kRf64 = Fourcc('R', 'F', '6', '4');
constexpr DWORD kWave = Fourcc('W', 'A', 'V', 'E');
constexpr DWORD kFmt = Fourcc('f', 'm', 't', ' ');
constexpr DWORD kData = Fourcc('d', 'a', 't', 'a');
constexpr DWORD kDs64 = Fourcc('d', 's', '6', '4');
constexpr DWORD kJunk = Fourcc('J', 'U', 'N', 'K');
constexpr DWORD kList = Fourcc('L', 'I', 'S', 'T');

// Chunks that hold the container's own framing, rewritten by every writer, never carried.
bool IsFraming(DWORD fourcc, bool aiff)
{
    if (aiff)
        return fourcc == Fourcc('C', 'O', 'M', 'M') || fourcc == Fourcc('S', 'S', 'N', 'D') ||
               fourcc == Fourcc('F', 'V', 'E', 'R');
    return fourcc == kFmt || fourcc == kData || fourcc == kDs64 || fourcc == kJunk ||
           fourcc == Fourcc('j', 'u', 'n', 'k') || fourcc == Fourcc('F', 'L', 'L', 'R') ||
           fourcc == Fourcc('P', 'A', 'D', ' ');
}

// Reads exactly size bytes at offset.
bool ReadAt(HANDLE file, UINT64 offset, void* buffer, DWORD size)
{
    LARGE_INTEGER to;
    to.QuadPart = static_cast<LONGLONG>(offset);
    DWORD got = 0;
    return SetFilePointerEx(file, to, nullptr, FILE_BEGIN) &&
           ReadFile(file, buffer, size, &got, nullptr) && got == size;
}

UINT32 BigEndian32(const BYTE* p)
{
    return UINT32(p[0]) << 24 | p[1] << 16 | p[2] << 8 | p[3];
}

std::wstring FourccText(DWORD fourcc)
{
    std::wstring text;
    for (int i = 0; i < 4; ++i)
    {
        const wchar_t c = static_cast<wchar_t>((fourcc >> (8 * i)) & 0xFF);
        text += c >= 0x20 && c <= 0x7E ? c : L'.';
    }
    return text;
}

class Walker
{
public:
    Walker(HANDLE file, UINT64 fileSize, MediaLayout& layout)
        : m_file(file), m_fileSize(fileSize), m_layout(layout)
    {
    }

    // Keeps a metadata chunk's payload, or notes why it could not.
    bool Keep(MediaChunk chunk, UINT64 payloadOffset, UINT64 size)
    {
        if (m_layout.chunks.size() >= kMaxChunks) return false;
        if (payloadOffset + size > m_fileSize)
        {
            m_layout.warnings.push_back(L"chunk " + chunk.Name() + L" at offset " +
                                        std::to_wstring(chunk.offset) +
                                        L" runs past the end of the file; left out");
            return false;
        }
        if (m_kept + size > kMaxMetadataBytes)
        {
            m_layout.warnings.push_back(L"chunk " + chunk.Name() + L" is too large to keep");
            return true;
        }
        chunk.data.resize(static_cast<size_t>(size));
        if (size && !ReadAt(m_file, payloadOffset, chunk.data.data(), static_cast<DWORD>(size)))
            return false;
        m_kept += size;
        m_layout.chunks.push_back(std::move(chunk));
        return true;
    }

    // The format chunk of a WAV or Wave64 file.
    HRESULT Format(UINT64 payloadOffset, UINT64 size)
    {
        if (size < sizeof(PCMWAVEFORMAT) || size > kMaxFormatBytes) return TQ_E_CORRUPTFILE;
        m_layout.format.assign(
            std::max<size_t>(static_cast<size_t>(size), sizeof(WAVEFORMATEXTENSIBLE)), 0);
        if (!ReadAt(m_file, payloadOffset, m_layout.format.data(), static_cast<DWORD>(size)))
            return TQ_E_READFAILED;
        return S_OK;
    }

    void Data(UINT64 payloadOffset, UINT64 size)
    {
        m_layout.dataStart = payloadOffset;
        m_layout.declaredDataBytes = size;
        m_layout.dataBytes = std::min(size, m_fileSize - std::min(m_fileSize, payloadOffset));
    }

private:
    HANDLE m_file;
    UINT64 m_fileSize;
    MediaLayout& m_layout;
    UINT64 m_kept = 0;
};

HRESULT WalkRiff(HANDLE file, UINT64 fileSize, MediaLayout& layout, Walker& walker)
{
    BYTE head[12];
    if (!ReadAt(file, 0, head, 12)) return TQ_E_NORIFFHEADER;
    DWORD id, size32, form;
    std::memcpy(&id, head, 4);
    std::memcpy(&size32, head + 4, 4);
    std::memcpy(&form, head + 8, 4);
    if ((id != kRiff && id != kRf64) || form != kWave) return TQ_E_NORIFFHEADER;
    layout.container = id == kRf64 ? Container::Rf64 : Container::Wave;
    UINT64 end = fileSize;
    UINT64 ds64Data = 0;
    bool haveDs64 = false;
    if (size32 >= 4 && size32 != 0xFFFFFFFF && UINT64(size32) + 8 < fileSize) end = size32 + 8ull;
    UINT64 at = 12;
    for (size_t count = 0; at + 8 <= end && count < kMaxChunks; ++count)
    {
        BYTE header[8];
        if (!ReadAt(file, at, header, 8)) break;
        DWORD chunkId, chunkSize;
        std::memcpy(&chunkId, header, 4);
        std::memcpy(&chunkSize, header + 4, 4);
        UINT64 size = chunkSize;
        if (chunkId == kDs64 && chunkSize >= 28)
        {
            BYTE ds64[16];
            if (ReadAt(file, at + 8, ds64, 16))
            {
                UINT64 riffSize;
                std::memcpy(&riffSize, ds64, 8);
                std::memcpy(&ds64Data, ds64 + 8, 8);
                haveDs64 = true;
                if (riffSize + 8 < fileSize && riffSize >= 4)
                    end = riffSize + 8;
                else
                    end = fileSize;
            }
        }
        else if (chunkId == kFmt)
        {
            const HRESULT hr = walker.Format(at + 8, size);
            if (FAILED(hr)) return hr;
        }
        else if (chunkId == kData)
        {
            if (chunkSize == 0xFFFFFFFF) size = haveDs64 ? ds64Data : fileSize - at - 8;
            walker.Data(at + 8, size);
            // What follows an empty data chunk is most likely the samples of a writer that died
            // before it could set the size, not chunks.
            if (size == 0 && at + 8 < end)
            {
                layout.warnings.push_back(L"the data chunk claims no samples but " +
                                          std::to_wstring(end - at - 8) +
                                          L" bytes follow it; the file may need repair");
                break;
            }
        }
        else if (!IsFraming(chunkId, false))
        {
            MediaChunk chunk;
            chunk.fourcc = chunkId;
            chunk.guid = Wave64Guid(chunkId);
            chunk.offset = at;
            if (!walker.Keep(std::move(chunk), at + 8, size)) break;
        }
        // A size past the end (a ds64 claim included) would only wrap the walk around.
        if (size > fileSize - at) break;
        at += 8 + size + (size & 1);
    }
    return S_OK;
}

HRESULT WalkWave64(HANDLE file, UINT64 fileSize, MediaLayout& layout, Walker& walker)
{
    BYTE head[40];
    if (!ReadAt(file, 0, head, 40)) return TQ_E_NORIFFHEADER;
    GUID riff, wave;
    UINT64 size;
    std::memcpy(&riff, head, 16);
    std::memcpy(&size, head + 16, 8);
    std::memcpy(&wave, head + 24, 16);
    if (riff != RIFF64_GUID_RIFF || wave != RIFF64_GUID_WAVE) return TQ_E_NORIFFHEADER;
    layout.container = Container::Wave64;
    const UINT64 end = size > 40 && size < fileSize ? size : fileSize;
    UINT64 at = 40;
    for (size_t count = 0; at + 24 <= end && count < kMaxChunks; ++count)
    {
        BYTE header[24];
        if (!ReadAt(file, at, header, 24)) break;
        GUID id;
        UINT64 stored;
        std::memcpy(&id, header, 16);
        std::memcpy(&stored, header + 16, 8);
        if (stored < 24)
        {
            layout.warnings.push_back(L"a chunk at offset " + std::to_wstring(at) +
                                      L" has an impossible size; the walk stops there");
            break;
        }
        const UINT64 payload = stored - 24;
        if (id == RIFF64_GUID_FMT)
        {
            const HRESULT hr = walker.Format(at + 24, payload);
            if (FAILED(hr)) return hr;
        }
        else if (id == RIFF64_GUID_DATA)
            walker.Data(at + 24, payload);
        else if (id != RIFF64_GUID_JUNK)
        {
            MediaChunk chunk;
            chunk.guid = id;
            chunk.fourcc = id == RIFF64_GUID_LIST ? kList : FourccOfWave64Guid(id);
            chunk.offset = at;
            if (chunk.fourcc != kJunk && !walker.Keep(std::move(chunk), at + 24, payload)) break;
        }
        if (payload > fileSize) break;
        at += 24 + ((payload + 7) & ~UINT64(7));
    }
    return S_OK;
}

HRESULT WalkAiff(HANDLE file, UINT64 fileSize, MediaLayout& layout, Walker& walker)
{
    BYTE head[12];
    if (!ReadAt(file, 0, head, 12) ||
        (std::memcmp(head + 8, "AIFF", 4) != 0 && std::memcmp(head + 8, "AIFC", 4) != 0))
        return TQ_E_NORIFFHEADER;
    layout.container = Container::Aiff;
    layout.aifc = std::memcmp(head + 8, "AIFC", 4) == 0;
    WAVEFORMATEX wfx = {};
    DWORD frames = 0, dataStart = 0;
    BOOL bigEndianFloat = FALSE;
    if (FAILED(iff_GetAIFFWfxEx(file, &wfx, &frames, &dataStart, &bigEndianFloat)))
        return TQ_E_CORRUPTFILE;
    layout.bigEndianFloat = bigEndianFloat != FALSE;
    layout.format.assign(sizeof(WAVEFORMATEXTENSIBLE), 0);
    std::memcpy(layout.format.data(), &wfx, sizeof(wfx));
    if (wfx.nBlockAlign == 0) return TQ_E_CORRUPTFILE;
    walker.Data(dataStart, UINT64(frames) * wfx.nBlockAlign);

    const UINT64 formEnd = UINT64(BigEndian32(head + 4)) + 8;
    const UINT64 end = std::min(formEnd, fileSize);
    UINT64 at = 12;
    for (size_t count = 0; at + 8 <= end && count < kMaxChunks; ++count)
    {
        BYTE header[8];
        if (!ReadAt(file, at, header, 8)) break;
        DWORD id;
        std::memcpy(&id, header, 4);
        const UINT64 size = BigEndian32(header + 4);
        if (!IsFraming(id, true))
        {
            MediaChunk chunk;
            chunk.fourcc = id;
            chunk.aiff = true;
            chunk.offset = at;
            if (!walker.Keep(std::move(chunk), at + 8, size)) break;
        }
        if (size > fileSize - at) break;
        at += 8 + size + (size & 1);
    }
    return S_OK;
}

// The kernel's type for the samples of an AIFF file, whose format the kernel gives with tags
// of its own for big-endian and signed 8-bit data.
TQSAMPLETYPE AiffSampleType(const WAVEFORMATEX& wfx)
{
    if (wfx.wFormatTag == WAVE_FORMAT_AIFF_SIGNED8) return TQSAMPLE_SIGNED8;
    if (wfx.wFormatTag != WAVE_FORMAT_AIFF_BIGENDIAN) return TqAudio_GetSampleType(&wfx);
    switch (wfx.wBitsPerSample)
    {
    case 16:
        return TQSAMPLE_BE16;
    case 24:
        return TQSAMPLE_BE24;
    case 32:
        return TQSAMPLE_BE32;
    default:
        return TQSAMPLE_NONE;
    }
}

} // namespace

const wchar_t* ContainerName(Container container)
{
    switch (container)
    {
    case Container::Wave:
        return L"WAV";
    case Container::Rf64:
        return L"RF64";
    case Container::Wave64:
        return L"Wave64";
    case Container::Aiff:
        return L"AIFF";
    }
    return L"?";
}

std::wstring MediaChunk::Name() const
{
    if (fourcc) return FourccText(fourcc);
    wchar_t text[40];
    StringFromGUID2(guid, text, 40);
    return text;
}

GUID Wave64Guid(DWORD fourcc)
{
    GUID guid = RIFF64_GUID_FMT;
    guid.Data1 = fourcc;
    return guid;
}

DWORD FourccOfWave64Guid(const GUID& guid)
{
    GUID family = guid;
    family.Data1 = RIFF64_GUID_FMT.Data1;
    return family == RIFF64_GUID_FMT ? guid.Data1 : 0;
}

HRESULT ReadMediaLayout(HANDLE file, MediaLayout& layout)
{
    layout = MediaLayout();
    LARGE_INTEGER size = {};
    if (!GetFileSizeEx(file, &size)) return HRESULT_FROM_WIN32(GetLastError());
    const auto fileSize = static_cast<UINT64>(size.QuadPart);
    Walker walker(file, fileSize, layout);
    BYTE magic[4] = {};
    if (!ReadAt(file, 0, magic, 4)) return TQ_E_NORIFFHEADER;
    HRESULT hr;
    if (std::memcmp(magic, "FORM", 4) == 0)
        hr = WalkAiff(file, fileSize, layout, walker);
    else if (std::memcmp(magic, "riff", 4) == 0)
        hr = WalkWave64(file, fileSize, layout, walker);
    else
        hr = WalkRiff(file, fileSize, layout, walker);
    if (FAILED(hr)) return hr;
    if (layout.format.empty() || layout.dataStart == 0) return TQ_E_CORRUPTFILE;
    const WAVEFORMATEX* header = layout.Header();
    if (header->nBlockAlign == 0 || header->nChannels == 0 || header->nSamplesPerSec == 0)
        return TQ_E_CORRUPTFILE;
    if (layout.container == Container::Aiff)
        layout.sampleType = AiffSampleType(*header);
    else
    {
        layout.sampleType = TqAudio_GetSampleType(header);
        layout.highAligned24 = header->wFormatTag == WAVE_FORMAT_EXTENSIBLE &&
                               layout.sampleType == TQSAMPLE_UNPACKED24;
    }
    layout.dataBytes -= layout.dataBytes % header->nBlockAlign;
    return S_OK;
}

void SwapSampleBytes(void* samples, size_t bytes, UINT32 sampleBytes)
{
    auto* p = static_cast<BYTE*>(samples);
    for (size_t at = 0; sampleBytes > 1 && at + sampleBytes <= bytes; at += sampleBytes)
        std::reverse(p + at, p + at + sampleBytes);
}

HRESULT MediaReader::Open(const std::wstring& path)
{
    m_file.Reset(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                             FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (m_file.Get() == INVALID_HANDLE_VALUE) return HRESULT_FROM_WIN32(GetLastError());
    const HRESULT hr = ReadMediaLayout(m_file.Get(), m_layout);
    if (FAILED(hr)) return hr;
    LARGE_INTEGER to;
    to.QuadPart = static_cast<LONGLONG>(m_layout.dataStart);
    if (!SetFilePointerEx(m_file.Get(), to, nullptr, FILE_BEGIN))
        return HRESULT_FROM_WIN32(GetLastError());
    m_position = 0;
    return S_OK;
}

HRESULT MediaReader::Read(void* buffer, UINT32 frames, UINT32* read)
{
    *read = 0;
    const UINT32 frameBytes = m_layout.Header()->nBlockAlign;
    const auto bytes = static_cast<UINT32>(
        std::min<UINT64>(UINT64(frames) * frameBytes, m_layout.dataBytes - m_position));
    if (bytes == 0) return S_OK;
    DWORD got = 0;
    if (!ReadFile(m_file.Get(), buffer, bytes, &got, nullptr))
        return HRESULT_FROM_WIN32(GetLastError());
    if (got != bytes) return TQ_E_READFAILED;
    if (m_layout.highAligned24) ShiftHighAligned24(static_cast<BYTE*>(buffer), bytes / 4, true);
    if (m_layout.bigEndianFloat)
        SwapSampleBytes(buffer, bytes, m_layout.Header()->wBitsPerSample / 8);
    m_position += bytes;
    *read = bytes / frameBytes;
    return S_OK;
}

} // namespace tqhost
