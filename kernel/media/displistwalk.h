// The walk that loads "DISP" chunks into a display list, over any source of chunks: a file in
// one of the chunk framings, or a COM stream of RIFF chunks.
#pragma once

#include "displist.h"
#include "lockedblock.h"

#include <algorithm>

namespace tq::summary {

// A Source reads an entry header (id, size of the data) at its position and tells how many
// bytes a chunk takes (Extent) and its header (HeaderBytes); it reads exactly (Read), moves
// (Skip, SeekTo, Tell) and tells how many bytes follow its position (BytesLeft).
template <class Source>
HRESULT WalkDisplay(Source& source, tDISPLIST* list, ULONGLONG* remaining) noexcept
{
    constexpr DWORD kFormatBytes = 4;
    // A chunk claiming more comes from a damaged file; beyond it sizes with their pad could wrap.
    constexpr ULONGLONG kLargestChunk = 1ull << 62;
    if (!list || !remaining) return E_INVALIDARG;
    if (list->count == 0) return S_OK;
    ULONGLONG start = 0;
    if (const HRESULT hr = source.Tell(start); FAILED(hr)) return hr;
    const DWORD header = source.HeaderBytes();
    for (;;)
    {
        if (*remaining < header) return source.SeekTo(start);
        DWORD id = 0;
        ULONGLONG size = 0;
        if (const HRESULT hr = source.ReadEntryHeader(id, size); FAILED(hr)) return hr;
        if (size > *remaining - header || size > kLargestChunk) return TQ_E_CORRUPTFILE;
        const ULONGLONG body = source.Extent(size) - header;
        *remaining -= std::min(*remaining, source.Extent(size));
        if (id != RIFF_ID_DISP || size < kFormatBytes)
        {
            if (const HRESULT hr = source.Skip(body); FAILED(hr)) return hr;
            continue;
        }
        DWORD format = 0;
        if (const HRESULT hr = source.Read(&format, kFormatBytes); FAILED(hr)) return hr;
        const ULONGLONG payload = size - kFormatBytes;
        // Formats the list does not hold are dropped.
        tDISPITEM* item = displist_GetItem(list, format);
        if (!item)
        {
            if (const HRESULT hr = source.Skip(body - kFormatBytes); FAILED(hr)) return hr;
            continue;
        }
        // A size the source cannot hold is refused before allocating.
        ULONGLONG left = 0;
        if (const HRESULT hr = source.BytesLeft(left); FAILED(hr)) return hr;
        if (payload > left || payload > MAXDWORD) return TQ_E_READFAILED;
        void* data = nullptr;
        if (payload)
        {
            data = tq::media::AllocLocked(static_cast<SIZE_T>(payload));
            if (!data) return E_OUTOFMEMORY;
            if (const HRESULT hr = source.Read(data, static_cast<DWORD>(payload)); FAILED(hr))
            {
                tq::media::FreeLocked(data);
                return hr;
            }
        }
        tq::media::FreeLocked(item->data);
        item->data = data;
        item->size = static_cast<DWORD>(payload);
        if (const HRESULT hr = source.Skip(body - size); FAILED(hr)) return hr;
    }
}

} // namespace tq::summary
