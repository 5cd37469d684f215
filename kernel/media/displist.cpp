// Display lists in memory and as "DISP" chunks; the chunks are read and written once for every
// framing, and the RIFF entry points are here.
#include "lockedblock.h"
#include "summaryframing.h"

#include <cstring>

using tq::media::AllocLocked;
using tq::media::FreeLocked;
using tq::media::RiffFraming;

namespace {

constexpr DWORD kFormatBytes = 4;
constexpr DWORD kDefaultFormats[] = {CF_TEXT, CF_DIB};
// A chunk claiming more than this comes from a damaged file; beyond it sizes with their pad
// could wrap.
constexpr ULONGLONG kLargestChunk = 1ull << 62;

constexpr ULONGLONG TakeOff(ULONGLONG remaining, ULONGLONG count)
{
    return count >= remaining ? 0 : remaining - count;
}

DWORD Clamp32(ULONGLONG value)
{
    return value > MAXDWORD ? MAXDWORD : static_cast<DWORD>(value);
}

// The payload at the cursor into the item; a size the file cannot hold is refused before
// allocating.
HRESULT LoadPayload(tq::riff::FileCursor& c, tDISPITEM& item, ULONGLONG bytes)
{
    void* data = nullptr;
    if (bytes)
    {
        ULONGLONG left = 0;
        if (const HRESULT hr = c.BytesLeft(left); FAILED(hr)) return hr;
        if (bytes > left || bytes > MAXDWORD) return TQ_E_READFAILED;
        data = AllocLocked(static_cast<SIZE_T>(bytes));
        if (!data) return E_OUTOFMEMORY;
        if (const HRESULT hr = c.Read(data, static_cast<DWORD>(bytes)); FAILED(hr))
        {
            FreeLocked(data);
            return hr;
        }
    }
    FreeLocked(item.data);
    item.data = data;
    item.size = static_cast<DWORD>(bytes);
    return S_OK;
}

} // namespace

TQKERNEL_API HRESULT displist_Create(tDISPLIST* list)
{
    if (!list) return E_INVALIDARG;
    displist_Destroy(list);
    auto* items = static_cast<tDISPITEM*>(
        AllocLocked(sizeof(kDefaultFormats) / sizeof(DWORD) * sizeof(tDISPITEM)));
    if (!items) return E_OUTOFMEMORY;
    for (DWORD format : kDefaultFormats)
        items[list->count++].format = format;
    list->items = items;
    return S_OK;
}

TQKERNEL_API void displist_Free(tDISPLIST* list)
{
    if (!list || !list->items) return;
    for (INT32 i = 0; i < list->count; ++i)
    {
        FreeLocked(list->items[i].data);
        list->items[i].data = nullptr;
        list->items[i].size = 0;
    }
}

TQKERNEL_API void displist_Destroy(tDISPLIST* list)
{
    if (!list) return;
    displist_Free(list);
    FreeLocked(list->items);
    list->items = nullptr;
    list->count = 0;
}

TQKERNEL_API tDISPITEM* displist_GetItem(const tDISPLIST* list, DWORD format)
{
    if (!list || !list->items) return nullptr;
    for (INT32 i = 0; i < list->count; ++i)
        if (list->items[i].format == format) return &list->items[i];
    return nullptr;
}

TQKERNEL_API HRESULT displist_SetItem(tDISPLIST* list, DWORD format, DWORD size, const void* data)
{
    tDISPITEM* item = displist_GetItem(list, format);
    if (!item) return DISPLIST_E_UNKNOWNFORMAT;
    if (!data || size == 0)
    {
        FreeLocked(item->data);
        item->data = nullptr;
        item->size = 0;
        return S_OK;
    }
    void* copy = AllocLocked(size);
    if (!copy) return E_OUTOFMEMORY;
    std::memcpy(copy, data, size);
    FreeLocked(item->data);
    item->data = copy;
    item->size = size;
    return S_OK;
}

namespace tq::summary {

HRESULT LoadDisplay(Framing& framing, tDISPLIST* list, ULONGLONG* remaining) noexcept
{
    if (!list || !remaining) return E_INVALIDARG;
    if (list->count == 0) return S_OK;
    tq::riff::FileCursor& c = framing.Cursor();
    ULONGLONG start = 0;
    if (const HRESULT hr = c.Tell(start); FAILED(hr)) return hr;
    const DWORD header = framing.HeaderBytes();
    for (;;)
    {
        if (*remaining < header) return c.SeekTo(start);
        DWORD id = 0;
        ULONGLONG size = 0;
        if (const HRESULT hr = framing.ReadEntryHeader(id, size); FAILED(hr)) return hr;
        // A chunk the bound cannot hold comes from a damaged file.
        if (size > *remaining - header || size > kLargestChunk) return TQ_E_CORRUPTFILE;
        const ULONGLONG body = framing.Extent(size) - header;
        *remaining = TakeOff(*remaining, framing.Extent(size));
        if (id != RIFF_ID_DISP || size < kFormatBytes)
        {
            if (const HRESULT hr = c.Skip(body); FAILED(hr)) return hr;
            continue;
        }
        DWORD format = 0;
        if (const HRESULT hr = c.Read(&format, kFormatBytes); FAILED(hr)) return hr;
        // Formats the list does not hold are dropped.
        tDISPITEM* item = displist_GetItem(list, format);
        const ULONGLONG payload = size - kFormatBytes;
        if (const HRESULT hr = item ? LoadPayload(c, *item, payload) : c.Skip(payload); FAILED(hr))
            return hr;
        if (const HRESULT hr = c.Skip(body - size); FAILED(hr)) return hr;
    }
}

HRESULT SaveDisplay(Framing& framing, const tDISPLIST* list, ULONGLONG* written) noexcept
{
    if (written) *written = 0;
    if (!list) return E_INVALIDARG;
    ULONGLONG total = 0;
    for (INT32 i = 0; i < list->count; ++i)
    {
        const tDISPITEM& item = list->items[i];
        if (!item.data || item.size == 0) continue;
        const ULONGLONG size = static_cast<ULONGLONG>(item.size) + kFormatBytes;
        const ULONGLONG extent = framing.Extent(size);
        HRESULT hr = framing.WriteHeader(RIFF_ID_DISP, size);
        if (SUCCEEDED(hr)) hr = framing.Cursor().Write(&item.format, kFormatBytes);
        if (SUCCEEDED(hr)) hr = framing.Cursor().Write(item.data, item.size);
        if (SUCCEEDED(hr)) hr = WritePad(framing, extent - framing.HeaderBytes() - size);
        if (FAILED(hr)) return hr;
        total += extent;
        if (written) *written = total;
    }
    return S_OK;
}

} // namespace tq::summary

TQKERNEL_API HRESULT displist_Load(HANDLE file, tDISPLIST* list, DWORD* remaining)
{
    if (!remaining) return E_INVALIDARG;
    RiffFraming framing(file);
    ULONGLONG bound = *remaining;
    const HRESULT hr = tq::summary::LoadDisplay(framing, list, &bound);
    *remaining = Clamp32(bound);
    return hr;
}

TQKERNEL_API HRESULT displist_Save(HANDLE file, const tDISPLIST* list, DWORD* written)
{
    RiffFraming framing(file);
    ULONGLONG bytes = 0;
    const HRESULT hr = tq::summary::SaveDisplay(framing, list, &bytes);
    if (written) *written = Clamp32(bytes);
    return hr;
}
