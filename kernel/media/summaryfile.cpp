// The summary list on file: a list of type "INFO" holds 8-bit texts in the ANSI code page, one of
// type "UNFO" the same texts as 16-bit characters. The logic is the same on every framing; the
// RIFF entry points are here.
#include "lockedblock.h"
#include "summaryframing.h"

#include <cstring>
#include <new>

using tq::media::AllocLocked;
using tq::media::Clamp32;
using tq::media::FreeLocked;
using tq::media::RiffFraming;

namespace tq::summary {

namespace {

// No text of a summary comes near this; a larger size comes from a damaged file, and the
// conversions below count in int.
constexpr ULONGLONG kLargestText = 0x7FFFFF00;

constexpr ULONGLONG TakeOff(ULONGLONG remaining, ULONGLONG count)
{
    return count >= remaining ? 0 : remaining - count;
}

// An 8-bit text as a locked wide text of size + 1 characters (never shorter than the text).
WCHAR* WidenAnsi(const char* text, ULONGLONG size)
{
    auto* wide = static_cast<WCHAR*>(AllocLocked((static_cast<SIZE_T>(size) + 1) * sizeof(WCHAR)));
    if (wide && text[0])
    {
        MultiByteToWideChar(CP_ACP, MB_PRECOMPOSED, text, -1, wide, static_cast<int>(size) + 1);
        wide[size] = 0;
    }
    return wide;
}

// A 16-bit text of size bytes, cut at size / 2 characters, as a locked text of size + 2 bytes.
WCHAR* CopyWide(char* data, ULONGLONG size)
{
    auto* text = reinterpret_cast<WCHAR*>(data);
    text[size / 2] = 0;
    auto* copy = static_cast<WCHAR*>(AllocLocked(static_cast<SIZE_T>(size) + 2));
    if (copy) std::memcpy(copy, text, (lstrlenW(text) + 1) * sizeof(WCHAR));
    return copy;
}

// The bytes an item's text is stored in, terminator included, or 0 for no memory.
DWORD StoredText(const WCHAR* text, bool wide, std::unique_ptr<char[]>& stored)
{
    if (wide)
    {
        const DWORD size = (lstrlenW(text) + 1) * sizeof(WCHAR);
        stored.reset(new (std::nothrow) char[size]);
        if (stored) std::memcpy(stored.get(), text, size);
        return stored ? size : 0;
    }
    const int size = WideCharToMultiByte(CP_ACP, 0, text, -1, nullptr, 0, nullptr, nullptr);
    stored.reset(size > 0 ? new (std::nothrow) char[size] : nullptr);
    if (!stored) return 0;
    WideCharToMultiByte(CP_ACP, 0, text, -1, stored.get(), size, nullptr, nullptr);
    return static_cast<DWORD>(size);
}

HRESULT LoadEntries(Framing& framing, tSUMMARYLIST* list, ULONGLONG bound, bool wide) noexcept
{
    DWORD count = 0;
    if (const HRESULT hr = framing.CountEntries(bound, count); FAILED(hr)) return hr;
    if (count == 0) return S_OK;
    list->items = static_cast<tSUMMARYITEM*>(AllocLocked(count * sizeof(tSUMMARYITEM)));
    if (!list->items) return E_OUTOFMEMORY;
    const DWORD header = framing.HeaderBytes();
    ULONGLONG left = bound;
    for (DWORD i = 0; i < count; ++i)
    {
        DWORD id = 0;
        ULONGLONG size = 0;
        if (const HRESULT hr = framing.ReadEntryHeader(id, size); FAILED(hr)) return hr;
        // A size the list cannot hold comes from a damaged file; it must not cost an allocation.
        if (left < header || size > left - header || size > kLargestText) return TQ_E_CORRUPTFILE;
        left = TakeOff(left, framing.Extent(size));
        // An entry named by a GUID of another family has no id an item could carry.
        if (id == 0)
        {
            if (const HRESULT hr = framing.Cursor().Skip(framing.Extent(size) - header); FAILED(hr))
                return hr;
            continue;
        }
        std::unique_ptr<char[]> data;
        if (const HRESULT hr = ReadEntry(framing, size, data); FAILED(hr)) return hr;
        WCHAR* text = wide ? CopyWide(data.get(), size) : WidenAnsi(data.get(), size);
        if (!text) return E_OUTOFMEMORY;
        list->items[list->count++] = {id, text};
    }
    return S_OK;
}

HRESULT FindString(Framing& framing, DWORD id, WCHAR* buffer, DWORD bufferChars,
                   ULONGLONG& remaining) noexcept
{
    ULONGLONG listSize = 0;
    if (const HRESULT hr = framing.FindList(RIFF_ID_INFO, listSize, remaining); FAILED(hr))
        return hr;
    ULONGLONG size = 0;
    if (const HRESULT hr = framing.FindEntry(id, size, listSize); FAILED(hr)) return hr;
    if (size > listSize || size > kLargestText) return TQ_E_CORRUPTFILE;
    std::unique_ptr<char[]> data;
    if (const HRESULT hr = ReadEntry(framing, size, data); FAILED(hr)) return hr;
    buffer[0] = 0;
    if (!data[0]) return S_OK;
    WCHAR* text = WidenAnsi(data.get(), size);
    if (!text) return E_OUTOFMEMORY;
    lstrcpynW(buffer, text, static_cast<int>(bufferChars));
    FreeLocked(text);
    return S_OK;
}

} // namespace

HRESULT ReadEntry(Framing& framing, ULONGLONG size, std::unique_ptr<char[]>& data) noexcept
{
    ULONGLONG left = 0;
    if (const HRESULT hr = framing.Cursor().BytesLeft(left); FAILED(hr)) return hr;
    if (size > left || size > kLargestText) return TQ_E_READFAILED;
    data.reset(new (std::nothrow) char[static_cast<size_t>(size) + 2]);
    if (!data) return E_OUTOFMEMORY;
    data[size] = data[size + 1] = 0;
    if (const HRESULT hr = framing.Cursor().Read(data.get(), static_cast<DWORD>(size)); FAILED(hr))
        return hr;
    // A seek, so that an entry that ends the file without its pad still reads.
    return framing.Cursor().Skip(framing.Extent(size) - framing.HeaderBytes() - size);
}

HRESULT WritePad(Framing& framing, ULONGLONG count) noexcept
{
    static const BYTE kZeros[8] = {};
    return count ? framing.Cursor().Write(kZeros, static_cast<DWORD>(count)) : S_OK;
}

HRESULT LoadList(Framing& framing, tSUMMARYLIST* list, const ULONGLONG* listSize,
                 bool wide) noexcept
{
    if (!list || !listSize) return E_INVALIDARG;
    TqSummary_Free(list);
    const HRESULT hr = LoadEntries(framing, list, *listSize, wide);
    if (FAILED(hr)) TqSummary_Free(list);
    return hr;
}

HRESULT SaveList(Framing& framing, const tSUMMARYLIST* list, ULONGLONG* written, bool wide) noexcept
{
    if (written) *written = 0;
    if (!list) return E_INVALIDARG;
    if (list->count == 0) return S_OK;
    const DWORD type = wide ? RIFF_ID_UNFO : RIFF_ID_INFO;
    ULONGLONG start = 0;
    if (const HRESULT hr = framing.Cursor().Tell(start); FAILED(hr)) return hr;
    // The size is known only when the items are written: it is filled in afterwards.
    if (const HRESULT hr = framing.WriteListHeader(type, 0); FAILED(hr)) return hr;
    ULONGLONG total = framing.ListTypeBytes();
    for (LONG i = 0; i < list->count; ++i)
    {
        const tSUMMARYITEM& item = list->items[i];
        if (!item.text) continue;
        std::unique_ptr<char[]> stored;
        const DWORD size = StoredText(item.text, wide, stored);
        if (size == 0) return E_OUTOFMEMORY;
        const ULONGLONG extent = framing.Extent(size);
        HRESULT hr = framing.WriteHeader(item.id, size);
        if (SUCCEEDED(hr)) hr = framing.Cursor().Write(stored.get(), size);
        if (SUCCEEDED(hr)) hr = WritePad(framing, extent - framing.HeaderBytes() - size);
        if (FAILED(hr)) return hr;
        total += extent;
    }
    if (const HRESULT hr = framing.Cursor().SeekTo(start); FAILED(hr)) return hr;
    if (const HRESULT hr = framing.WriteListHeader(type, total); FAILED(hr)) return hr;
    const ULONGLONG end = start + framing.HeaderBytes() + total;
    if (const HRESULT hr = framing.Cursor().SeekTo(end); FAILED(hr)) return hr;
    if (written) *written = end - start;
    return S_OK;
}

HRESULT GetString(Framing& framing, DWORD id, WCHAR* buffer, DWORD bufferChars,
                  ULONGLONG* remaining) noexcept
{
    if (!buffer || bufferChars == 0) return E_INVALIDARG;
    tq::riff::CursorKeeper keeper(framing.Cursor());
    if (!keeper.Saved()) return TQ_E_READFAILED;
    // Without a bound the search ends only where the file does.
    ULONGLONG left = remaining ? *remaining : ~0ull;
    const HRESULT hr = FindString(framing, id, buffer, bufferChars, left);
    if (remaining) *remaining = left;
    return hr;
}

} // namespace tq::summary

namespace {

HRESULT LoadRiff(HANDLE file, tSUMMARYLIST* list, DWORD* listSize, bool wide)
{
    if (!listSize) return E_INVALIDARG;
    RiffFraming framing(file);
    const ULONGLONG bound = *listSize;
    return tq::summary::LoadList(framing, list, &bound, wide);
}

HRESULT SaveRiff(HANDLE file, const tSUMMARYLIST* list, DWORD* written, bool wide)
{
    RiffFraming framing(file);
    ULONGLONG bytes = 0;
    const HRESULT hr = tq::summary::SaveList(framing, list, &bytes, wide);
    if (written) *written = Clamp32(bytes);
    return hr;
}

} // namespace

TQKERNEL_API HRESULT TqSummary_Load(HANDLE file, tSUMMARYLIST* list, DWORD* listSize)
{
    return LoadRiff(file, list, listSize, false);
}

TQKERNEL_API HRESULT TqSummary_LoadUNFO(HANDLE file, tSUMMARYLIST* list, DWORD* listSize)
{
    return LoadRiff(file, list, listSize, true);
}

TQKERNEL_API HRESULT TqSummary_Save(HANDLE file, const tSUMMARYLIST* list, DWORD* written)
{
    return SaveRiff(file, list, written, false);
}

TQKERNEL_API HRESULT TqSummary_SaveUNFO(HANDLE file, const tSUMMARYLIST* list, DWORD* written)
{
    return SaveRiff(file, list, written, true);
}

TQKERNEL_API HRESULT TqSummary_GetStringFromFile(HANDLE file, DWORD id, WCHAR* buffer,
                                                 DWORD bufferChars, DWORD* remaining)
{
    RiffFraming framing(file);
    ULONGLONG bound = remaining ? *remaining : 0;
    const HRESULT hr =
        tq::summary::GetString(framing, id, buffer, bufferChars, remaining ? &bound : nullptr);
    if (remaining) *remaining = Clamp32(bound);
    return hr;
}
