// The summary list in memory: finding, setting, copying, comparing and merging items.
#include "lockedblock.h"
#include "summary.h"

#include <cstring>

using tq::media::AllocLocked;
using tq::media::FreeLocked;

namespace {

// A locked copy of text, or null for no memory.
WCHAR* CopyText(const WCHAR* text)
{
    const size_t chars = lstrlenW(text) + 1;
    auto* copy = static_cast<WCHAR*>(AllocLocked(chars * sizeof(WCHAR)));
    if (copy) std::memcpy(copy, text, chars * sizeof(WCHAR));
    return copy;
}

bool SameText(const WCHAR* a, const WCHAR* b)
{
    if (!a || !b) return a == b;
    return lstrcmpW(a, b) == 0;
}

HRESULT RemoveItem(tSUMMARYLIST* list, LONG index)
{
    FreeLocked(list->items[index].text);
    if (list->count == 1)
    {
        TqSummary_Free(list);
        return S_OK;
    }
    std::memmove(&list->items[index], &list->items[index + 1],
                 (list->count - index - 1) * sizeof(tSUMMARYITEM));
    --list->count;
    list->items[list->count] = {};
    return S_OK;
}

HRESULT AppendItem(tSUMMARYLIST* list, DWORD id, const WCHAR* text)
{
    WCHAR* copy = CopyText(text);
    if (!copy) return E_OUTOFMEMORY;
    auto* items = static_cast<tSUMMARYITEM*>(AllocLocked((list->count + 1) * sizeof(tSUMMARYITEM)));
    if (!items)
    {
        FreeLocked(copy);
        return E_OUTOFMEMORY;
    }
    if (list->count > 0) std::memcpy(items, list->items, list->count * sizeof(tSUMMARYITEM));
    items[list->count] = {id, copy};
    FreeLocked(list->items);
    list->items = items;
    ++list->count;
    return S_OK;
}

} // namespace

TQKERNEL_API LONG TqSummary_GetItemIndex(const tSUMMARYLIST* list, DWORD id)
{
    if (list && list->items)
        for (LONG i = 0; i < list->count; ++i)
            if (list->items[i].id == id) return i;
    return TQ_E_NOTFOUND;
}

TQKERNEL_API const WCHAR* TqSummary_GetItemText(const tSUMMARYLIST* list, DWORD id)
{
    const LONG index = TqSummary_GetItemIndex(list, id);
    return index < 0 ? nullptr : list->items[index].text;
}

TQKERNEL_API HRESULT TqSummary_SetItem(tSUMMARYLIST* list, DWORD id, const WCHAR* text)
{
    if (!list || id == 0) return E_INVALIDARG;
    const LONG index = TqSummary_GetItemIndex(list, id);
    if (index < 0) return text ? AppendItem(list, id, text) : S_OK;
    if (!text) return RemoveItem(list, index);
    WCHAR* copy = CopyText(text);
    if (!copy) return E_OUTOFMEMORY;
    FreeLocked(list->items[index].text);
    list->items[index].text = copy;
    return S_OK;
}

TQKERNEL_API HRESULT TqSummary_Copy(tSUMMARYLIST* dst, const tSUMMARYLIST* src)
{
    if (!dst || !src) return E_INVALIDARG;
    if (dst == src) return S_OK;
    TqSummary_Free(dst);
    for (LONG i = 0; i < src->count; ++i)
    {
        const tSUMMARYITEM& item = src->items[i];
        if (!item.text) continue;
        if (const HRESULT hr = AppendItem(dst, item.id, item.text); FAILED(hr))
        {
            TqSummary_Free(dst);
            return hr;
        }
    }
    return S_OK;
}

TQKERNEL_API BOOL TqSummary_Compare(const tSUMMARYLIST* a, const tSUMMARYLIST* b)
{
    if (!a || !b || a->count != b->count) return FALSE;
    for (LONG i = 0; i < a->count; ++i)
        if (!SameText(a->items[i].text, b->items[i].text)) return FALSE;
    return TRUE;
}

TQKERNEL_API HRESULT TqSummary_Merge(tSUMMARYLIST* dst, const tSUMMARYLIST* src,
                                     const tSUMMARYLIST* before, const tSUMMARYLIST* after)
{
    if (!dst || !src || dst == before || dst == after) return E_INVALIDARG;
    // Work on a copy, so that a failure leaves dst as it was.
    tSUMMARYLIST merged = {};
    HRESULT hr = TqSummary_Copy(&merged, src);
    // Changed and added items, in the order the edited list holds them.
    for (LONG i = 0; SUCCEEDED(hr) && after && i < after->count; ++i)
    {
        const tSUMMARYITEM& item = after->items[i];
        if (!SameText(item.text, TqSummary_GetItemText(before, item.id)))
            hr = TqSummary_SetItem(&merged, item.id, item.text);
    }
    // Removed items.
    for (LONG i = 0; SUCCEEDED(hr) && before && i < before->count; ++i)
    {
        const DWORD id = before->items[i].id;
        if (TqSummary_GetItemIndex(after, id) < 0) hr = TqSummary_SetItem(&merged, id, nullptr);
    }
    if (FAILED(hr))
    {
        TqSummary_Free(&merged);
        return hr;
    }
    TqSummary_Free(dst);
    *dst = merged;
    return S_OK;
}

TQKERNEL_API void TqSummary_Free(tSUMMARYLIST* list)
{
    if (!list) return;
    for (LONG i = 0; list->items && i < list->count; ++i)
        FreeLocked(list->items[i].text);
    FreeLocked(list->items);
    list->items = nullptr;
    list->count = 0;
}
