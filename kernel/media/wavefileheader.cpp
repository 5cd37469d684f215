// Wave headers: fresh WAV and Wave64 files, and complete headers written over existing ones.
#include "wavefile.h"

#include "filecursor.h"
#include "riff64.h"
#include "rf64.h"
#include "tqwaveformat.h"
#include "uniquehandle.h"
#include "wavefileinternal.h"

#include <cstring>

using tq::riff::CursorKeeper;
using tq::riff::FileCursor;

namespace tq::wave {

namespace {

void Put(std::vector<BYTE>& b, const void* data, size_t count)
{
    const auto* at = static_cast<const BYTE*>(data);
    b.insert(b.end(), at, at + count);
}

void Put32(std::vector<BYTE>& b, DWORD value)
{
    Put(b, &value, sizeof value);
}

void Put64(std::vector<BYTE>& b, ULONGLONG value)
{
    Put(b, &value, sizeof value);
}

} // namespace

HRESULT Vet(const WAVEFORMATEX* wfx) noexcept
{
    if (!wfx) return E_POINTER;
    if (wfx->cbSize != 0) return TQ_E_MEDIATYPE;
    if (wfx->wFormatTag != WAVE_FORMAT_PCM) return S_OK;
    if (wfx->wBitsPerSample == 20) return TQ_E_MEDIATYPE;
    if (wfx->nBlockAlign != wfx->nChannels * (wfx->wBitsPerSample >> 3)) return TQ_E_MEDIATYPE;
    return S_OK;
}

HeaderImage WavHeader(const WAVEFORMATEX& wfx, DWORD riffSize, DWORD fmtBytes, bool hasJunk,
                      DWORD junkBytes, DWORD dataSize)
{
    HeaderImage image;
    auto& b = image.front;
    Put32(b, RIFF_ID_RIFF);
    Put32(b, riffSize);
    Put32(b, RIFF_ID_WAVE);
    Put32(b, RIFF_ID_FMT);
    Put32(b, fmtBytes);
    Put(b, &wfx, fmtBytes);
    if (hasJunk)
    {
        Put32(b, RIFF_ID_JUNK);
        Put32(b, junkBytes);
        image.zeros = junkBytes;
    }
    Put32(image.back, RIFF_ID_DATA);
    Put32(image.back, dataSize);
    return image;
}

HeaderImage W64Header(const WAVEFORMATEX& wfx, ULONGLONG storedFileSize, DWORD fmtBytes,
                      bool hasJunk, ULONGLONG junkPayload, ULONGLONG storedDataSize)
{
    HeaderImage image;
    auto& b = image.front;
    Put(b, &RIFF64_GUID_RIFF, sizeof(GUID));
    Put64(b, storedFileSize);
    Put(b, &RIFF64_GUID_WAVE, sizeof(GUID));
    Put(b, &RIFF64_GUID_FMT, sizeof(GUID));
    // Stored as a chunk written in one go stores it: without its padding.
    Put64(b, fmtBytes + 24ull);
    Put(b, &wfx, fmtBytes < sizeof wfx ? fmtBytes : sizeof wfx);
    b.resize(
        b.size() + (fmtBytes > sizeof wfx ? fmtBytes - sizeof wfx : 0) + (8 - fmtBytes % 8) % 8, 0);
    if (hasJunk)
    {
        Put(b, &RIFF64_GUID_JUNK, sizeof(GUID));
        Put64(b, junkPayload + 24);
        image.zeros = junkPayload;
    }
    Put(image.back, &RIFF64_GUID_DATA, sizeof(GUID));
    Put64(image.back, storedDataSize);
    return image;
}

HRESULT WriteHeader(HANDLE file, const HeaderImage& image) noexcept
{
    FileCursor c(file);
    if (FAILED(c.SeekTo(0))) return TQ_E_WRITEFAILED;
    if (const HRESULT hr = c.Write(image.front.data(), static_cast<DWORD>(image.front.size()));
        FAILED(hr))
        return hr;
    static const BYTE kZeros[1024] = {};
    for (ULONGLONG left = image.zeros; left;)
    {
        const DWORD count = left < sizeof kZeros ? static_cast<DWORD>(left) : sizeof kZeros;
        if (const HRESULT hr = c.Write(kZeros, count); FAILED(hr)) return hr;
        left -= count;
    }
    return c.Write(image.back.data(), static_cast<DWORD>(image.back.size()));
}

} // namespace tq::wave

namespace {

using namespace tq::wave;

constexpr DWORD kWavBare = 46;  // header, 18-byte "fmt ", "data" header
constexpr DWORD kWavShort = 44; // the same with a 16-byte "fmt "
constexpr DWORD kWavJunk = 54;  // kWavBare and a "JUNK" header
constexpr DWORD kW64Bare = 112; // header, fmt of 18 bytes padded to 24, data header
constexpr DWORD kW64Junk = 136; // kW64Bare and a junk header
constexpr ULONGLONG kW64FreshStoredSize = 130;

// CreateFileW's dispositions, but an existing file is always emptied: a fresh header over old
// contents would describe none of them.
DWORD Disposition(DWORD mode)
{
    if (mode == OPEN_EXISTING) return TRUNCATE_EXISTING;
    if (mode == OPEN_ALWAYS) return CREATE_ALWAYS;
    return mode;
}

HRESULT Open(const WCHAR* path, DWORD mode, tq::UniqueFile& file)
{
    if (!path) return E_POINTER;
    file.Reset(::CreateFileW(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                             Disposition(mode), FILE_ATTRIBUTE_NORMAL, nullptr));
    return file ? S_OK : TQ_E_OPENFAILED;
}

// The fmt size a WAV header of headerBytes has room for, or 0 for none.
DWORD WavFmtBytes(DWORD headerBytes)
{
    if (headerBytes == kWavBare || headerBytes >= kWavJunk) return 18;
    if (headerBytes == kWavShort || headerBytes == kWavShort + 8) return 16;
    return 0;
}

// How a Wave64 header fills headerBytes: the fmt payload (the header's 18 bytes, 16 without
// cbSize, or 40 with zeros behind the 18) and a junk payload, or none. A junk chunk is never left
// empty, because a widely used reader refuses any chunk without a payload.
struct W64Layout
{
    DWORD fmtBytes = 0; // 0: no layout fills headerBytes
    bool hasJunk = false;
    ULONGLONG junkPayload = 0;
};

W64Layout W64LayoutFor(ULONGLONG headerBytes)
{
    if (headerBytes == kW64Bare) return {18, false, 0};
    if (headerBytes == kW64Bare - 8) return {16, false, 0};
    if (headerBytes == kW64Bare + 16) return {40, false, 0};
    if (headerBytes == kW64Junk) return {16, true, 8};
    if (headerBytes > kW64Junk) return {18, true, headerBytes - kW64Junk};
    return {};
}

HRESULT RecordHeader(const _tqwaveformat* fmt, WAVEFORMATEX& wfx)
{
    if (!fmt) return E_POINTER;
    return TqAudio_GeneralCopyWfx(&wfx, sizeof wfx, fmt, TQWFXDEST_PLAIN);
}

} // namespace

TQKERNEL_API HRESULT TqInitializeWav(const WCHAR* path, const WAVEFORMATEX* wfx, DWORD mode)
{
    if (const HRESULT hr = Vet(wfx); FAILED(hr)) return hr;
    tq::UniqueFile file;
    if (const HRESULT hr = Open(path, mode, file); FAILED(hr)) return hr;
    return WriteHeader(file.Get(), WavHeader(*wfx, kWavBare - 8, 18, false, 0, 0));
}

TQKERNEL_API HRESULT TqInitializeWav64(const WCHAR* path, const WAVEFORMATEX* wfx, DWORD mode)
{
    if (const HRESULT hr = Vet(wfx); FAILED(hr)) return hr;
    tq::UniqueFile file;
    if (const HRESULT hr = Open(path, mode, file); FAILED(hr)) return hr;
    return WriteHeader(file.Get(), W64Header(*wfx, kW64FreshStoredSize, 18, false, 0, 24));
}

TQKERNEL_API HRESULT TqInitializeWavWithJunk(const WCHAR* path, const WAVEFORMATEX* wfx, DWORD mode,
                                             DWORD headerBytes)
{
    if (const HRESULT hr = Vet(wfx); FAILED(hr)) return hr;
    tq::UniqueFile file;
    if (const HRESULT hr = Open(path, mode, file); FAILED(hr)) return hr;
    headerBytes &= ~1u;
    if (headerBytes < kWavJunk) return E_INVALIDARG;
    return WriteHeader(file.Get(),
                       WavHeader(*wfx, headerBytes - 8, 18, true, headerBytes - kWavJunk, 0));
}

TQKERNEL_API HRESULT TqInitializeWav64WithJunk(const WCHAR* path, const WAVEFORMATEX* wfx,
                                               DWORD mode, DWORD headerBytes)
{
    if (const HRESULT hr = Vet(wfx); FAILED(hr)) return hr;
    tq::UniqueFile file;
    if (const HRESULT hr = Open(path, mode, file); FAILED(hr)) return hr;
    const ULONGLONG header = (headerBytes + 7ull) & ~7ull;
    if (header < kW64Junk) return E_INVALIDARG;
    const W64Layout layout = W64LayoutFor(header);
    return WriteHeader(file.Get(),
                       W64Header(*wfx, header + 24, layout.fmtBytes, true, layout.junkPayload, 24));
}

TQKERNEL_API HRESULT TqInsertWavHeader(HANDLE file, const WAVEFORMATEX* wfx, DWORD dataBytes,
                                       DWORD headerBytes)
{
    if (const HRESULT hr = Vet(wfx); FAILED(hr)) return hr;
    FileCursor c(file);
    ULONGLONG length = 0;
    if (const HRESULT hr = c.Length(length); FAILED(hr)) return hr;
    const DWORD fmtBytes = WavFmtBytes(headerBytes);
    if ((headerBytes & 1) || headerBytes > length || fmtBytes == 0) return TQ_E_BADCHUNKHEADER;
    const ULONGLONG riffSize = headerBytes - 8ull + dataBytes;
    if (riffSize > MAXDWORD) return TQ_E_SIZELIMIT;
    const DWORD fixedBytes = 12 + 8 + fmtBytes + 8;
    const bool hasJunk = headerBytes > fixedBytes;
    const DWORD junkBytes = hasJunk ? headerBytes - fixedBytes - 8 : 0;
    CursorKeeper keeper(c);
    if (!keeper.Saved()) return TQ_E_READFAILED;
    return WriteHeader(file, WavHeader(*wfx, static_cast<DWORD>(riffSize), fmtBytes, hasJunk,
                                       junkBytes, dataBytes));
}

TQKERNEL_API HRESULT TqInsertW64Header(HANDLE file, const WAVEFORMATEX* wfx, ULONGLONG dataBytes,
                                       ULONGLONG headerBytes)
{
    if (const HRESULT hr = Vet(wfx); FAILED(hr)) return hr;
    FileCursor c(file);
    ULONGLONG length = 0;
    if (const HRESULT hr = c.Length(length); FAILED(hr)) return hr;
    const W64Layout layout = W64LayoutFor(headerBytes);
    if ((headerBytes & 7) || headerBytes > length || layout.fmtBytes == 0)
        return TQ_E_BADCHUNKHEADER;
    if (dataBytes > ~0ull - headerBytes - 24) return TQ_E_SIZELIMIT;
    CursorKeeper keeper(c);
    if (!keeper.Saved()) return TQ_E_READFAILED;
    return WriteHeader(file, W64Header(*wfx, headerBytes + dataBytes, layout.fmtBytes,
                                       layout.hasJunk, layout.junkPayload, dataBytes + 24));
}

TQKERNEL_API HRESULT TqInitializeWavFromRecord(const WCHAR* path, const _tqwaveformat* fmt,
                                               DWORD mode)
{
    WAVEFORMATEX wfx;
    if (const HRESULT hr = RecordHeader(fmt, wfx); FAILED(hr)) return hr;
    return TqInitializeWav(path, &wfx, mode);
}

TQKERNEL_API HRESULT TqInitializeWav64FromRecord(const WCHAR* path, const _tqwaveformat* fmt,
                                                 DWORD mode)
{
    WAVEFORMATEX wfx;
    if (const HRESULT hr = RecordHeader(fmt, wfx); FAILED(hr)) return hr;
    return TqInitializeWav64(path, &wfx, mode);
}

TQKERNEL_API HRESULT TqInitializeWavWithJunkFromRecord(const WCHAR* path, const _tqwaveformat* fmt,
                                                       DWORD mode, DWORD headerBytes)
{
    WAVEFORMATEX wfx;
    if (const HRESULT hr = RecordHeader(fmt, wfx); FAILED(hr)) return hr;
    return TqInitializeWavWithJunk(path, &wfx, mode, headerBytes);
}

TQKERNEL_API HRESULT TqInitializeWav64WithJunkFromRecord(const WCHAR* path,
                                                         const _tqwaveformat* fmt, DWORD mode,
                                                         DWORD headerBytes)
{
    WAVEFORMATEX wfx;
    if (const HRESULT hr = RecordHeader(fmt, wfx); FAILED(hr)) return hr;
    return TqInitializeWav64WithJunk(path, &wfx, mode, headerBytes);
}

TQKERNEL_API HRESULT TqInsertWavHeaderFromRecord(HANDLE file, const _tqwaveformat* fmt,
                                                 DWORD dataBytes, DWORD headerBytes)
{
    WAVEFORMATEX wfx;
    if (const HRESULT hr = RecordHeader(fmt, wfx); FAILED(hr)) return hr;
    return TqInsertWavHeader(file, &wfx, dataBytes, headerBytes);
}

TQKERNEL_API HRESULT TqInsertW64HeaderFromRecord(HANDLE file, const _tqwaveformat* fmt,
                                                 ULONGLONG dataBytes, ULONGLONG headerBytes)
{
    WAVEFORMATEX wfx;
    if (const HRESULT hr = RecordHeader(fmt, wfx); FAILED(hr)) return hr;
    return TqInsertW64Header(file, &wfx, dataBytes, headerBytes);
}
