// What the wave utilities share: format vetting and the header images they write in one piece.
#pragma once

#include "wavefile.h"

#include <vector>

namespace tq::wave {

#define TQ_E_MEDIATYPE ((HRESULT)0x8004E000L)         // an unsupported media type
#define TQ_E_UNSUPPORTEDFORMAT ((HRESULT)0x8004E016L) // the file is an unsupported format

// cbSize 0, and a PCM header of whole bytes whose block alignment matches; else 0x8004E000.
HRESULT Vet(const WAVEFORMATEX* wfx) noexcept;

// A header as it is written from offset 0: the front, junk zero bytes, and the "data" header.
struct HeaderImage
{
    std::vector<BYTE> front;
    ULONGLONG zeros = 0;
    std::vector<BYTE> back;

    ULONGLONG Size() const { return front.size() + zeros + back.size(); }
};

// fmtBytes (16 or 18) of wfx in "fmt ", a "JUNK" of junkBytes zeros when hasJunk, and a "data"
// header; the sizes are the caller's.
HeaderImage WavHeader(const WAVEFORMATEX& wfx, DWORD riffSize, DWORD fmtBytes, bool hasJunk,
                      DWORD junkBytes, DWORD dataSize);
// The Wave64 twin; sizes are stored as given, and the fmt payload is padded to 8.
HeaderImage W64Header(const WAVEFORMATEX& wfx, ULONGLONG storedFileSize, DWORD fmtBytes,
                      bool hasJunk, ULONGLONG junkPayload, ULONGLONG storedDataSize);
// Writes the image at offset 0; the cursor ends behind it.
HRESULT WriteHeader(HANDLE file, const HeaderImage& image) noexcept;

} // namespace tq::wave
