// CD audio track records: the "CDDA" RIFF files that describe one track of an audio CD.
#include "cdaudio.h"

#include "filecursor.h"
#include "riffwalk.h"
#include "uniquehandle.h"

static_assert(sizeof(tRIFFCDDA) == 24, "the record is the whole fmt chunk");

TQKERNEL_API HRESULT riff_ReadRIFFCDDA(HANDLE file, tRIFFCDDA* record)
{
    using namespace tq::riff;
    if (!record) return E_POINTER;
    *record = {};
    FileCursor c(file);
    DWORD bound = 0;
    DWORD form = 0;
    if (const HRESULT hr = c.SeekTo(0); FAILED(hr)) return hr;
    if (const HRESULT hr = ReadFileID(c, &bound, &form); FAILED(hr)) return hr;
    if (form != RIFF_ID_CDDA) return TQ_E_CORRUPTFILE;
    DWORD size = 0;
    if (const HRESULT hr = FindChunkHeader(c, RIFF_ID_FMT, &size, &bound); FAILED(hr)) return hr;
    if (size != sizeof *record) return TQ_E_NEWERVERSION;
    const HRESULT hr = c.Read(record, sizeof *record);
    if (FAILED(hr)) *record = {};
    return hr;
}

TQKERNEL_API HRESULT riff_ReadCDAFile(const WCHAR* path, DWORD* track, DWORD* startSector,
                                      DWORD* startFrames, DWORD* lengthSectors, DWORD* discId)
{
    tRIFFCDDA record = {};
    HRESULT hr = E_INVALIDARG;
    if (path)
    {
        const tq::UniqueFile file(::CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr,
                                                OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
        hr = file ? riff_ReadRIFFCDDA(file.Get(), &record) : TQ_E_OPENFAILED;
    }
    if (track) *track = record.track;
    if (startSector) *startSector = record.startSector;
    if (startFrames)
        *startFrames = (record.startMinute * 60u + record.startSecond) * 75u + record.startFrame;
    if (lengthSectors) *lengthSectors = record.lengthSectors;
    if (discId) *discId = record.discId;
    return hr;
}
