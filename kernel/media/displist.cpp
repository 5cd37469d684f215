// Display lists in memory and as "DISP" chunks; the chunks are read and written once for every
// framing, and the RIFF entry points are here.
#include "lockedblock.h"
#include "displistwalk.h"
#include "summaryframing.h"

#include <cstring>

using tq::media::AllocLocked;
using tq::media::Clamp32;
using tq::media::FreeLocked;
using tq::media::RiffFraming;

namespace {

constexpr DWORD kFormatBytes = 4;
constexpr DWORD kDefaultFormats[] = {CF_TEXT, CF_DIB};

// A file in one of the framings as a source of chunks for the walk.
class FramingSource
{
public:
    explicit FramingSource(tq::media::Framing& framing) noexcept : m_f(framing) {}
    DWORD HeaderBytes() const noexcept { return m_f.HeaderBytes(); }
    ULONGLONG Extent(ULONGLONG size) const noexcept { return m_f.Extent(size); }
    HRESULT ReadEntryHeader(DWORD& id, ULONGLONG& size) noexcept
    {
        return m_f.ReadEntryHeader(id, size);
    }
    HRESULT Read(void* buffer, DWORD count) noexcept { return m_f.Cursor().Read(buffer, count); }
    HRESULT Skip(ULONGLONG count) noexcept { return m_f.Cursor().Skip(count); }
    HRESULT SeekTo(ULONGLONG pos) noexcept { return m_f.Cursor().SeekTo(pos); }
    HRESULT Tell(ULONGLONG& pos) noexcept { return m_f.Cursor().Tell(pos); }
    HRESULT BytesLeft(ULONGLONG& count) noexcept { return m_f.Cursor().BytesLeft(count); }

private:
    tq::media::Framing& m_f;
};

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
    FramingSource source(framing);
    return WalkDisplay(source, list, remaining);
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
