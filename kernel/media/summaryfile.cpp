// The summary list on file: "LIST" "INFO" holds 8-bit texts in the ANSI code page, "LIST" "UNFO"
// the same texts as 16-bit characters.
#include "lockedblock.h"
#include "summary.h"

#include <cstring>
#include <memory>
#include <new>

using tq::media::AllocLocked;
using tq::media::FreeLocked;

namespace {

constexpr DWORD kChunkHeaderBytes = 8;
constexpr DWORD kListHeaderBytes = 12;

// A chunk's data, terminated by two zero bytes; null for no memory.
std::unique_ptr<char[]> ReadTerminated(HANDLE file, DWORD size, HRESULT& hr)
{
    std::unique_ptr<char[]> data(new (std::nothrow) char[static_cast<size_t>(size) + 2]);
    if (!data)
    {
        hr = E_OUTOFMEMORY;
        return nullptr;
    }
    hr = riff_ReadData(file, data.get(), size);
    data[size] = data[static_cast<size_t>(size) + 1] = 0;
    return data;
}

// An 8-bit text as a locked wide text of size + 1 characters (never shorter than the text).
WCHAR* WidenAnsi(const char* text, DWORD size)
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
WCHAR* CopyWide(char* data, DWORD size)
{
    auto* text = reinterpret_cast<WCHAR*>(data);
    text[size / 2] = 0;
    auto* copy = static_cast<WCHAR*>(AllocLocked(static_cast<SIZE_T>(size) + 2));
    if (copy) std::memcpy(copy, text, (lstrlenW(text) + 1) * sizeof(WCHAR));
    return copy;
}

HRESULT LoadList(HANDLE file, tSUMMARYLIST* list, DWORD* listSize, bool wide)
{
    if (!list || !listSize) return E_INVALIDARG;
    TqSummary_Free(list);
    DWORD count = 0;
    if (const HRESULT hr = riff_GetNumListEntries(file, &count, listSize); FAILED(hr)) return hr;
    if (count == 0) return S_OK;

    list->items = static_cast<tSUMMARYITEM*>(AllocLocked(count * sizeof(tSUMMARYITEM)));
    if (!list->items) return E_OUTOFMEMORY;
    DWORD left = *listSize;
    HRESULT hr = S_OK;
    for (DWORD i = 0; i < count && SUCCEEDED(hr); ++i)
    {
        DWORD id = 0, size = 0;
        hr = riff_ReadChunkHeader(file, &id, &size);
        if (FAILED(hr)) break;
        // A size the list cannot hold comes from a damaged file; it must not cost an allocation.
        if (left < kChunkHeaderBytes || size > left - kChunkHeaderBytes)
        {
            hr = TQ_E_CORRUPTFILE;
            break;
        }
        std::unique_ptr<char[]> data = ReadTerminated(file, size, hr);
        if (FAILED(hr)) break;
        WCHAR* text = wide ? CopyWide(data.get(), size) : WidenAnsi(data.get(), size);
        if (!text)
        {
            hr = E_OUTOFMEMORY;
            break;
        }
        list->items[list->count++] = {id, text};
        const ULONGLONG used = kChunkHeaderBytes + static_cast<ULONGLONG>(size) + (size & 1);
        left = used >= left ? 0 : static_cast<DWORD>(left - used);
    }
    if (FAILED(hr)) TqSummary_Free(list);
    return hr;
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

HRESULT SaveList(HANDLE file, const tSUMMARYLIST* list, DWORD* written, DWORD type)
{
    if (written) *written = 0;
    if (!list) return E_INVALIDARG;
    if (list->count == 0) return S_OK;
    DWORD start = 0;
    if (const HRESULT hr = riff_SaveLocation(file, &start); FAILED(hr)) return hr;
    // The size is known only when the items are written: it is filled in afterwards.
    if (const HRESULT hr = riff_WriteListHeader(file, type, 0); FAILED(hr)) return hr;
    DWORD total = 4;
    for (LONG i = 0; i < list->count; ++i)
    {
        const tSUMMARYITEM& item = list->items[i];
        if (!item.text) continue;
        std::unique_ptr<char[]> stored;
        const DWORD size = StoredText(item.text, type == RIFF_ID_UNFO, stored);
        if (size == 0) return E_OUTOFMEMORY;
        DWORD chunk = 0;
        if (const HRESULT hr = riff_WriteChunk(file, item.id, stored.get(), size, &chunk);
            FAILED(hr))
            return hr;
        if (total > 0xFFFFFFFFu - kListHeaderBytes - chunk) return TQ_E_SIZELIMIT;
        total += chunk;
    }
    if (const HRESULT hr = riff_RestoreLocation(file, start); FAILED(hr)) return hr;
    if (const HRESULT hr = riff_WriteListHeader(file, type, total); FAILED(hr)) return hr;
    if (const HRESULT hr = riff_RestoreLocation(file, start + kChunkHeaderBytes + total);
        FAILED(hr))
        return hr;
    if (written) *written = total + kChunkHeaderBytes;
    return S_OK;
}

HRESULT FindString(HANDLE file, DWORD id, WCHAR* buffer, DWORD bufferChars, DWORD* remaining)
{
    DWORD listSize = 0;
    if (const HRESULT hr = riff_FindListChunk(file, RIFF_ID_INFO, &listSize, remaining); FAILED(hr))
        return hr;
    DWORD size = 0;
    if (const HRESULT hr = riff_FindChunkHeader(file, id, &size, &listSize); FAILED(hr)) return hr;
    if (size > listSize) return TQ_E_CORRUPTFILE;
    HRESULT hr = S_OK;
    std::unique_ptr<char[]> data = ReadTerminated(file, size, hr);
    if (FAILED(hr)) return hr;
    buffer[0] = 0;
    if (!data[0]) return S_OK;
    WCHAR* text = WidenAnsi(data.get(), size);
    if (!text) return E_OUTOFMEMORY;
    lstrcpynW(buffer, text, static_cast<int>(bufferChars));
    FreeLocked(text);
    return S_OK;
}

} // namespace

TQKERNEL_API HRESULT TqSummary_Load(HANDLE file, tSUMMARYLIST* list, DWORD* listSize)
{
    return LoadList(file, list, listSize, false);
}

TQKERNEL_API HRESULT TqSummary_LoadUNFO(HANDLE file, tSUMMARYLIST* list, DWORD* listSize)
{
    return LoadList(file, list, listSize, true);
}

TQKERNEL_API HRESULT TqSummary_Save(HANDLE file, const tSUMMARYLIST* list, DWORD* written)
{
    return SaveList(file, list, written, RIFF_ID_INFO);
}

TQKERNEL_API HRESULT TqSummary_SaveUNFO(HANDLE file, const tSUMMARYLIST* list, DWORD* written)
{
    return SaveList(file, list, written, RIFF_ID_UNFO);
}

TQKERNEL_API HRESULT TqSummary_GetStringFromFile(HANDLE file, DWORD id, WCHAR* buffer,
                                                 DWORD bufferChars, DWORD* remaining)
{
    if (!buffer || bufferChars == 0) return E_INVALIDARG;
    DWORD start = 0;
    if (const HRESULT hr = riff_SaveLocation(file, &start); FAILED(hr)) return hr;
    const HRESULT hr = FindString(file, id, buffer, bufferChars, remaining);
    riff_RestoreLocation(file, start);
    return hr;
}
