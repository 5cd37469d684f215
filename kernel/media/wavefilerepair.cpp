// Repair of WAV and Wave64 files whose writer died before it could set the sizes in the header.
#include "wavefile.h"

#include "filecursor.h"
#include "riff64.h"
#include "tqwaveformat.h"
#include "wavefileinternal.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

using tq::riff::CursorKeeper;
using tq::riff::FileCursor;

namespace {

// Where the two framings keep what the repair looks for.
struct Framing
{
    ULONGLONG formatOffset; // the broken header's format record
    ULONGLONG firstChunk;   // where the chunk walk starts
    // Where the byte scan starts: behind the shortest format chunk a writer makes (16 bytes),
    // so that a "data" header straight behind it is found too.
    ULONGLONG scanFrom;
    const BYTE* marker; // the id of "data"
    DWORD markerBytes;
    ULONGLONG headerBytes; // from the id to the samples
    HRESULT (*walk)(HANDLE file, ULONGLONG bound, ULONGLONG& dataStart);
};

HRESULT WalkWav(HANDLE file, ULONGLONG bound, ULONGLONG& dataStart)
{
    DWORD remaining = static_cast<DWORD>(std::min<ULONGLONG>(bound, MAXDWORD));
    if (const HRESULT hr = riff_FindChunkHeader(file, RIFF_ID_DATA, nullptr, &remaining);
        FAILED(hr))
        return hr;
    return FileCursor(file).Tell(dataStart);
}

HRESULT WalkW64(HANDLE file, ULONGLONG bound, ULONGLONG& dataStart)
{
    if (const HRESULT hr = riff64_FindChunkHeader(file, &RIFF64_GUID_DATA, nullptr, &bound);
        FAILED(hr))
        return hr;
    return FileCursor(file).Tell(dataStart);
}

const DWORD kDataId = RIFF_ID_DATA;

const Framing kWav = {20, 12, 36, reinterpret_cast<const BYTE*>(&kDataId), 4, 8, WalkWav};
const Framing kW64 = {64, 40, 80,     reinterpret_cast<const BYTE*>(&RIFF64_GUID_DATA),
                      16, 24, WalkW64};

bool IsPcmWidth(WORD bits)
{
    return bits == 8 || bits == 16 || bits == 24 || bits == 32;
}

// What the broken header says where it makes sense, the defaults where it does not.
WAVEFORMATEX RepairedFormat(const WAVEFORMATEX& broken, const WAVEFORMATEX* given)
{
    WAVEFORMATEX fallback = {WAVE_FORMAT_PCM, 2, 44100, 0, 0, 16, 0};
    if (given) fallback = *given;
    const auto plainTag = [](WORD tag) {
        return tag == WAVE_FORMAT_PCM || tag == WAVE_FORMAT_IEEE_FLOAT;
    };
    WAVEFORMATEX wfx = {};
    wfx.wFormatTag = plainTag(broken.wFormatTag)     ? broken.wFormatTag
                     : plainTag(fallback.wFormatTag) ? fallback.wFormatTag
                                                     : WAVE_FORMAT_PCM;
    const bool rateOk = broken.nSamplesPerSec >= 2000 && broken.nSamplesPerSec <= 384000;
    wfx.nSamplesPerSec = rateOk ? broken.nSamplesPerSec : fallback.nSamplesPerSec;
    const bool channelsOk = broken.nChannels == 1 || broken.nChannels == 2;
    wfx.nChannels = channelsOk ? broken.nChannels : fallback.nChannels ? fallback.nChannels : 2;
    if (wfx.wFormatTag == WAVE_FORMAT_PCM)
    {
        const WORD held = std::min<WORD>(fallback.wBitsPerSample, 32);
        wfx.wBitsPerSample = IsPcmWidth(broken.wBitsPerSample) ? broken.wBitsPerSample
                             : IsPcmWidth(held)                ? held
                                                               : 16;
    }
    else
    {
        const bool floatOk = broken.wBitsPerSample == 32 || broken.wBitsPerSample == 64;
        wfx.wBitsPerSample = floatOk                         ? broken.wBitsPerSample
                             : fallback.wBitsPerSample <= 32 ? 32
                                                             : 64;
    }
    wfx.nBlockAlign = static_cast<WORD>(wfx.nChannels * (wfx.wBitsPerSample >> 3));
    wfx.nAvgBytesPerSec = wfx.nSamplesPerSec * wfx.nBlockAlign;
    return wfx;
}

// The first offset in [from, limit) at which the marker stands whole, read in blocks of 4,096
// that overlap by the marker's length less one.
HRESULT ScanForMarker(FileCursor& c, const Framing& f, ULONGLONG from, ULONGLONG limit,
                      ULONGLONG& hit)
{
    constexpr DWORD kBlockBytes = 4096;
    const std::unique_ptr<BYTE[]> block(new (std::nothrow) BYTE[kBlockBytes]);
    if (!block) return E_OUTOFMEMORY;
    while (from + f.markerBytes <= limit)
    {
        const DWORD want = static_cast<DWORD>(std::min<ULONGLONG>(kBlockBytes, limit - from));
        DWORD got = 0;
        if (FAILED(c.SeekTo(from)) || !c.ReadSome(block.get(), want, got)) return TQ_E_READFAILED;
        if (got < f.markerBytes) break;
        const BYTE* begin = block.get();
        const BYTE* end = begin + got;
        const BYTE* at = std::search(begin, end, f.marker, f.marker + f.markerBytes);
        if (at != end)
        {
            hit = from + static_cast<ULONGLONG>(at - begin);
            return S_OK;
        }
        from += got - (f.markerBytes - 1);
    }
    return TQ_E_NOTFOUND;
}

HRESULT FindDataStart(FileCursor& c, const Framing& f, ULONGLONG limit, ULONGLONG length,
                      ULONGLONG& dataStart)
{
    if (limit > f.firstChunk && SUCCEEDED(c.SeekTo(f.firstChunk)) &&
        SUCCEEDED(f.walk(c.Handle(), limit - f.firstChunk, dataStart)) && dataStart <= length)
        return S_OK;
    ULONGLONG hit = 0;
    const HRESULT hr = ScanForMarker(c, f, f.scanFrom, limit, hit);
    if (SUCCEEDED(hr) && hit + f.headerBytes <= length)
    {
        dataStart = hit + f.headerBytes;
        return S_OK;
    }
    if (FAILED(hr) && hr != TQ_E_NOTFOUND) return hr;
    // No header to be found before the limit: the caller knows the samples start there, unless
    // the file ended first.
    if (limit >= length) return TQ_E_NOTFOUND;
    dataStart = limit;
    return S_OK;
}

// Everything the repair needs before it writes: the format, the data start and length.
HRESULT PlanRepair(FileCursor& c, const Framing& f, const WAVEFORMATEX* given, ULONGLONG limit,
                   WAVEFORMATEX& wfx, ULONGLONG& dataStart, ULONGLONG& dataBytes)
{
    ULONGLONG length = 0;
    if (const HRESULT hr = c.Length(length); FAILED(hr)) return hr;
    WAVEFORMATEX broken;
    if (FAILED(c.SeekTo(f.formatOffset)) || FAILED(c.Read(&broken, sizeof broken)))
        return TQ_E_READFAILED;
    wfx = RepairedFormat(broken, given);
    if (const HRESULT hr = FindDataStart(c, f, std::min(limit, length), length, dataStart);
        FAILED(hr))
        return hr;
    dataBytes = (length - dataStart) / wfx.nBlockAlign * wfx.nBlockAlign;
    return S_OK;
}

HRESULT RecordHeader(const _tqwaveformat* fmt, WAVEFORMATEX& wfx, const WAVEFORMATEX*& out)
{
    out = nullptr;
    if (!fmt) return S_OK;
    if (const HRESULT hr = TqAudio_GeneralCopyWfx(&wfx, sizeof wfx, fmt, TQWFXDEST_PLAIN);
        FAILED(hr))
        return hr;
    out = &wfx;
    return S_OK;
}

} // namespace

TQKERNEL_API HRESULT TqFixTrashedWav(HANDLE file, const WAVEFORMATEX* wfx, DWORD scanLimit)
{
    FileCursor c(file);
    CursorKeeper keeper(c);
    if (!keeper.Saved()) return TQ_E_READFAILED;
    WAVEFORMATEX repaired;
    ULONGLONG dataStart = 0;
    ULONGLONG dataBytes = 0;
    if (const HRESULT hr = PlanRepair(c, kWav, wfx, scanLimit, repaired, dataStart, dataBytes);
        FAILED(hr))
        return hr;
    if (dataStart > MAXDWORD || dataBytes > MAXDWORD) return TQ_E_SIZELIMIT;
    return TqInsertWavHeader(file, &repaired, static_cast<DWORD>(dataBytes),
                             static_cast<DWORD>(dataStart));
}

TQKERNEL_API HRESULT TqFixTrashedW64(HANDLE file, const WAVEFORMATEX* wfx, ULONGLONG scanLimit)
{
    FileCursor c(file);
    CursorKeeper keeper(c);
    if (!keeper.Saved()) return TQ_E_READFAILED;
    WAVEFORMATEX repaired;
    ULONGLONG dataStart = 0;
    ULONGLONG dataBytes = 0;
    if (const HRESULT hr =
            PlanRepair(c, kW64, wfx, scanLimit & ~7ull, repaired, dataStart, dataBytes);
        FAILED(hr))
        return hr;
    return TqInsertW64Header(file, &repaired, dataBytes, dataStart);
}

TQKERNEL_API HRESULT TqFixTrashedWavFromRecord(HANDLE file, const _tqwaveformat* fmt,
                                               DWORD scanLimit)
{
    WAVEFORMATEX wfx;
    const WAVEFORMATEX* given = nullptr;
    if (const HRESULT hr = RecordHeader(fmt, wfx, given); FAILED(hr)) return hr;
    return TqFixTrashedWav(file, given, scanLimit);
}

TQKERNEL_API HRESULT TqFixTrashedW64FromRecord(HANDLE file, const _tqwaveformat* fmt,
                                               ULONGLONG scanLimit)
{
    WAVEFORMATEX wfx;
    const WAVEFORMATEX* given = nullptr;
    if (const HRESULT hr = RecordHeader(fmt, wfx, given); FAILED(hr)) return hr;
    return TqFixTrashedW64(file, given, scanLimit);
}
