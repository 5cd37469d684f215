// Reading bext and iXML from a file into the broadcast-wave record, over any framing.
#include "chunkframing.h"
#include "bwfinternal.h"
#include "lockedblock.h"

#include <algorithm>
#include <cstring>

using tq::media::AllocLocked;
using tq::media::FreeLocked;

namespace tq::bwf {

namespace {

constexpr DWORD kFormatBytes = 40; // the largest "fmt " worth reading here
constexpr DWORD kBextFixedBytes = 602;

// A chunk's data into a locked block one byte longer than the chunk, so that text at its end is
// terminated. A size the file cannot hold is refused before allocating.
HRESULT ReadWhole(Framing& framing, ULONGLONG size, BYTE*& data) noexcept
{
    data = nullptr;
    ULONGLONG left = 0;
    if (const HRESULT hr = framing.Cursor().BytesLeft(left); FAILED(hr)) return hr;
    if (size > left || size >= MAXDWORD) return TQ_E_READFAILED;
    auto* block = static_cast<BYTE*>(AllocLocked(static_cast<SIZE_T>(size) + 1));
    if (!block) return E_OUTOFMEMORY;
    if (const HRESULT hr = framing.Cursor().Read(block, static_cast<DWORD>(size)); FAILED(hr))
    {
        FreeLocked(block);
        return hr;
    }
    data = block;
    return S_OK;
}

HRESULT FindBext(Framing& framing, ULONGLONG& size) noexcept
{
    // Some writers spell the id in capitals.
    if (SUCCEEDED(framing.Find(RIFF_ID_BEXT, size))) return S_OK;
    return framing.Find(RIFF_ID_BEXT_UPPER, size);
}

HRESULT LoadBext(Framing& framing, _tagTQBWF_Chunk* chunk, bool quick) noexcept
{
    ULONGLONG size = 0;
    if (const HRESULT hr = FindBext(framing, size); FAILED(hr)) return hr;
    if (size < 8) return TQ_E_CORRUPTFILE;
    if (quick)
    {
        BYTE fixed[kBextFixedBytes] = {};
        const DWORD count = static_cast<DWORD>(std::min<ULONGLONG>(size, kBextFixedBytes));
        if (const HRESULT hr = framing.Cursor().Read(fixed, count); FAILED(hr)) return hr;
        return ParseBext(fixed, count, chunk, false);
    }
    BYTE* data = nullptr;
    if (const HRESULT hr = ReadWhole(framing, size, data); FAILED(hr)) return hr;
    const HRESULT hr = ParseBext(data, static_cast<DWORD>(size), chunk, true);
    FreeLocked(data);
    return hr;
}

HRESULT LoadIxml(Framing& framing, _tagTQBWF_Chunk* chunk) noexcept
{
    ULONGLONG size = 0;
    if (const HRESULT hr = framing.Find(RIFF_ID_IXML, size); FAILED(hr)) return hr;
    BYTE* data = nullptr;
    if (const HRESULT hr = ReadWhole(framing, size, data); FAILED(hr)) return hr;
    const HRESULT hr = ExtractIxmlContent(data, static_cast<DWORD>(size), chunk);
    FreeLocked(data);
    return hr;
}

} // namespace

HRESULT ReadFormat(Framing& framing, DWORD* sampleRate, WORD* bits, WORD* channels) noexcept
{
    ULONGLONG size = 0;
    if (const HRESULT hr = framing.Find(RIFF_ID_FMT, size); FAILED(hr)) return hr;
    if (size < 16) return TQ_E_CORRUPTFILE;
    BYTE format[16];
    if (const HRESULT hr = framing.Cursor().Read(format, sizeof format); FAILED(hr)) return hr;
    if (channels) std::memcpy(channels, format + 2, 2);
    if (sampleRate) std::memcpy(sampleRate, format + 4, 4);
    if (bits) std::memcpy(bits, format + 14, 2);
    return S_OK;
}

HRESULT LoadInfo(Framing& framing, _tagTQBWF_Chunk* chunk, BOOL* found, bool quick) noexcept
{
    if (!chunk || !found) return E_INVALIDARG;
    *found = FALSE;
    FreeBwfChunkGlobal(chunk);
    if (const HRESULT hr = framing.ReadHeader(); FAILED(hr)) return hr;

    if (SUCCEEDED(ReadFormat(framing, &chunk->sampleRate, nullptr, nullptr)))
        chunk->valid |= TQBWF_VALID_SAMPLERATE;
    const bool bext = SUCCEEDED(LoadBext(framing, chunk, quick));
    // A damaged iXML leaves what bext gave.
    const bool ixml = !quick && SUCCEEDED(LoadIxml(framing, chunk));
    *found = bext || ixml;
    return S_OK;
}

} // namespace tq::bwf
