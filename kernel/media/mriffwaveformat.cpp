// Wave headers on the memory cursor for the kernel's own format record.
#include "mriff.h"

#include "mriffwave.h"
#include "tqwaveformat.h"

#include <algorithm>

namespace {

// Room for an extensible header and a short codec tail.
constexpr UINT kHeaderRoom = 136;

union HeaderBytes
{
    WAVEFORMATEX wfx;
    BYTE bytes[kHeaderRoom];
};

} // namespace

TQKERNEL_API HRESULT mriff_WriteWaveHeaderFromRecord(_tMRIFF* m, const _tqwaveformat* fmt,
                                                     DWORD dataBytes, DWORD trailerBytes)
{
    if (!fmt) return E_POINTER;
    HeaderBytes header = {};
    const HRESULT hr = TqAudio_GeneralCopyWfx(&header.wfx, kHeaderRoom, fmt, TQWFXDEST_AUTO);
    if (FAILED(hr)) return hr;
    return mriff_WriteWaveHeader(m, &header.wfx, dataBytes, trailerBytes);
}

TQKERNEL_API HRESULT mriff_GetWfxAsRecord(_tqwaveformat* fmt, const void* data, DWORD size,
                                          DWORD* dataBytes)
{
    if (!fmt) return E_POINTER;
    HeaderBytes header;
    DWORD fmtBytes = 0;
    DWORD dataSize = 0;
    HRESULT hr =
        tq::riff::ReadWaveFormat(data, size, header.bytes, kHeaderRoom, fmtBytes, dataSize);
    if (FAILED(hr)) return hr;
    // The record reads cbSize bytes behind the header; it gets no more than the chunk gave.
    const DWORD tail = fmtBytes > sizeof(WAVEFORMATEX) ? fmtBytes - sizeof(WAVEFORMATEX) : 0;
    header.wfx.cbSize = static_cast<WORD>(std::min<DWORD>(header.wfx.cbSize, tail));
    if (hr = fmt->Init(TQWAVEFORMAT_FIXED_SIZE, header.wfx); FAILED(hr)) return hr;
    if (dataBytes) *dataBytes = dataSize;
    return S_OK;
}
