// Display lists in memory and as "DISP" chunks.
#include "displist.h"
#include "lockedblock.h"

#include <cstring>
#include <memory>
#include <new>

using tq::media::AllocLocked;
using tq::media::FreeLocked;

namespace {

constexpr DWORD kChunkHeaderBytes = 8;
constexpr DWORD kFormatBytes = 4;
constexpr DWORD kDefaultFormats[] = {CF_TEXT, CF_DIB};

ULONGLONG PaddedChunk(DWORD size)
{
    return kChunkHeaderBytes + static_cast<ULONGLONG>(size) + (size & 1);
}

HRESULT ReadExact(HANDLE file, void* buffer, DWORD bytes)
{
    DWORD read = 0;
    return ReadFile(file, buffer, bytes, &read, nullptr) && read == bytes ? S_OK : TQ_E_READFAILED;
}

HRESULT SkipBytes(HANDLE file, LONGLONG bytes)
{
    LARGE_INTEGER distance;
    distance.QuadPart = bytes;
    return SetFilePointerEx(file, distance, nullptr, FILE_CURRENT) ? S_OK : TQ_E_READFAILED;
}

HRESULT LoadPayload(HANDLE file, tDISPITEM& item, DWORD bytes)
{
    void* data = nullptr;
    if (bytes)
    {
        data = AllocLocked(bytes);
        if (!data) return E_OUTOFMEMORY;
        if (const HRESULT hr = ReadExact(file, data, bytes); FAILED(hr))
        {
            FreeLocked(data);
            return hr;
        }
    }
    FreeLocked(item.data);
    item.data = data;
    item.size = bytes;
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

TQKERNEL_API HRESULT displist_Load(HANDLE file, tDISPLIST* list, DWORD* remaining)
{
    if (!list || !remaining) return E_INVALIDARG;
    if (list->count == 0) return S_OK;
    DWORD start = 0;
    if (const HRESULT hr = riff_SaveLocation(file, &start); FAILED(hr)) return hr;
    for (;;)
    {
        if (*remaining < kChunkHeaderBytes)
        {
            riff_RestoreLocation(file, start);
            return S_OK;
        }
        DWORD id = 0, size = 0;
        if (const HRESULT hr = riff_ReadChunkHeader(file, &id, &size); FAILED(hr)) return hr;
        // A chunk the bound cannot hold comes from a damaged file.
        if (size > *remaining - kChunkHeaderBytes) return TQ_E_CORRUPTFILE;
        const ULONGLONG used = PaddedChunk(size);
        *remaining = used >= *remaining ? 0 : static_cast<DWORD>(*remaining - used);

        if (id != RIFF_ID_DISP || size < kFormatBytes)
        {
            if (const HRESULT hr = SkipBytes(file, used - kChunkHeaderBytes); FAILED(hr)) return hr;
            continue;
        }
        DWORD format = 0;
        if (const HRESULT hr = ReadExact(file, &format, kFormatBytes); FAILED(hr)) return hr;
        // Formats the list does not hold are dropped.
        tDISPITEM* item = displist_GetItem(list, format);
        const DWORD payload = size - kFormatBytes;
        if (const HRESULT hr = item ? LoadPayload(file, *item, payload) : SkipBytes(file, payload);
            FAILED(hr))
            return hr;
        if (const HRESULT hr = SkipBytes(file, size & 1); FAILED(hr)) return hr;
    }
}

TQKERNEL_API HRESULT displist_Save(HANDLE file, const tDISPLIST* list, DWORD* written)
{
    if (written) *written = 0;
    if (!list) return E_INVALIDARG;
    DWORD total = 0;
    for (INT32 i = 0; i < list->count; ++i)
    {
        const tDISPITEM& item = list->items[i];
        if (!item.data || item.size == 0) continue;
        if (item.size > 0xFFFFFFFFu - kFormatBytes - 1) return TQ_E_SIZELIMIT;
        const DWORD size = item.size + kFormatBytes;
        if (const HRESULT hr = riff_WriteChunkHeader(file, RIFF_ID_DISP, size); FAILED(hr))
            return hr;
        DWORD done = 0;
        static const BYTE kPad = 0;
        if (!WriteFile(file, &item.format, kFormatBytes, &done, nullptr) || done != kFormatBytes ||
            !WriteFile(file, item.data, item.size, &done, nullptr) || done != item.size ||
            ((size & 1) && (!WriteFile(file, &kPad, 1, &done, nullptr) || done != 1)))
            return TQ_E_WRITEFAILED;
        total += static_cast<DWORD>(PaddedChunk(size));
    }
    if (written) *written = total;
    return S_OK;
}
