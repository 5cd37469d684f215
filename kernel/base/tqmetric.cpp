// The settings store: opening the key of a product and version, and every reader and writer.
#include "tqmetric.h"

#include "tqprintf.h"

#include <vector>

namespace tq::metric {
namespace {

constexpr DWORD kStreamLimit = 2048;
constexpr wchar_t kMetrics[] = L"\\Metrics";

HKEY Store(HTQMETRIC handle)
{
    // The process default handle is never set in this system, so it reads as no store.
    if (!handle || handle == TQMETRIC_DEFAULT) return nullptr;
    return handle->key;
}

// The store's own names: DWORD values go by the bare number.
void StoreName(int number, int type, wchar_t* name)
{
    if (type == TQMETRIC_DWORD)
        TqCchPrintF(name, 16, nullptr, L"%u", number < 0 ? 0u - number : 0u + number);
    else
        TqMetricGetName(number, type, name);
}

// Reads a value of any type; the registry's result, with *type and *bytes filled in.
LONG Query(HKEY key, const wchar_t* name, DWORD* type, void* buffer, DWORD* bytes)
{
    return RegQueryValueExW(key, name, nullptr, type, static_cast<BYTE*>(buffer), bytes);
}

bool ReadDword(HTQMETRIC handle, const wchar_t* name, DWORD* value)
{
    HKEY key = Store(handle);
    if (!key) return false;
    DWORD type = 0, bytes = sizeof(DWORD);
    return Query(key, name, &type, value, &bytes) == ERROR_SUCCESS && type == REG_DWORD &&
           bytes == sizeof(DWORD);
}

bool ReadNumbered(HTQMETRIC handle, int number, DWORD* value)
{
    wchar_t name[16];
    StoreName(number, TQMETRIC_DWORD, name);
    return ReadDword(handle, name, value);
}

HRESULT Write(HTQMETRIC handle, int number, DWORD type, const void* data, DWORD bytes)
{
    HKEY key = Store(handle);
    if (!key) return E_FAIL;
    wchar_t name[16];
    StoreName(number, static_cast<int>(type), name);
    return RegSetValueExW(key, name, 0, type, static_cast<const BYTE*>(data), bytes) ==
                   ERROR_SUCCESS
               ? S_OK
               : E_FAIL;
}

int Clamp(int value, int min, int max)
{
    if (value < min) return min;
    if (value > max) return max;
    return value;
}

// Shared by the text readers; the default is copied with all of its characters (chars).
int ReadText(HTQMETRIC handle, int number, DWORD wanted, wchar_t* buffer, int capacity,
             const wchar_t* defaultText, int defaultChars, BOOL onlyIfAbsent)
{
    if (!buffer || capacity < 1) return 0;
    ZeroMemory(buffer, capacity * sizeof(wchar_t));
    HKEY key = Store(handle);
    bool storedEmpty = false;
    if (key)
    {
        wchar_t name[16];
        StoreName(number, static_cast<int>(wanted), name);
        DWORD type = 0;
        // One character stays free, so what was read is always terminated.
        DWORD bytes = (capacity - 1) * sizeof(wchar_t);
        if (Query(key, name, &type, buffer, &bytes) == ERROR_SUCCESS && type == wanted)
        {
            if (bytes > sizeof(wchar_t))
            {
                const int chars = static_cast<int>(bytes / sizeof(wchar_t));
                return buffer[chars - 1] ? chars : chars - 1;
            }
            storedEmpty = true;
        }
        ZeroMemory(buffer, capacity * sizeof(wchar_t));
    }
    if (storedEmpty && onlyIfAbsent) return 0;
    if (!defaultText) return 0;
    const int chars = defaultChars < capacity ? defaultChars : capacity - 1;
    CopyMemory(buffer, defaultText, chars * sizeof(wchar_t));
    return chars;
}

int MultiTextChars(const wchar_t* list)
{
    const wchar_t* p = list;
    while (*p)
        p += lstrlenW(p) + 1;
    return static_cast<int>(p - list);
}

HRESULT DeleteTree(HKEY root, const wchar_t* path)
{
    const LONG result = RegDeleteTreeW(root, path);
    return result == ERROR_SUCCESS ? S_OK : HRESULT_FROM_WIN32(result);
}

void VersionKeyPath(wchar_t* path, const wchar_t* company, const wchar_t* product, DWORD version)
{
    if ((version >> 16) > 255)
        TqCchPrintF(path, MAX_PATH, nullptr, L"Software\\%s\\%s\\%d.%d", company, product,
                    static_cast<int>(version >> 24), static_cast<int>((version >> 16) & 255));
    else
        TqCchPrintF(path, MAX_PATH, nullptr, L"Software\\%s\\%s", company, product);
}

HRESULT DeleteVersionKey(const wchar_t* product, DWORD version, const wchar_t* company,
                         bool machineToo)
{
    if (!product || !company) return E_INVALIDARG;
    wchar_t path[MAX_PATH];
    VersionKeyPath(path, company, product, version);
    // The machine's key needs rights a user rarely has; its failure does not count.
    if (machineToo) DeleteTree(HKEY_LOCAL_MACHINE, path);
    return DeleteTree(HKEY_CURRENT_USER, path);
}

} // namespace
} // namespace tq::metric

using namespace tq::metric;

TQKERNEL_API wchar_t* TqMetricGetName(int number, int type, wchar_t* buffer)
{
    if (!buffer) return nullptr;
    const unsigned magnitude = number < 0 ? 0u - number : 0u + number;
    const wchar_t* format = type == TQMETRIC_STRING   ? L"S%u"
                            : type == TQMETRIC_BINARY ? L"B%u"
                            : type == TQMETRIC_DWORD  ? L"D%u"
                                                      : L"Z%u";
    TqCchPrintF(buffer, 16, nullptr, format, magnitude);
    return buffer;
}

TQKERNEL_API HRESULT TqMetric_OpenAppVersion(HTQMETRIC* out, const wchar_t* path,
                                             const wchar_t* subKey)
{
    if (!out) return E_INVALIDARG;
    *out = nullptr;
    if (!path) return E_INVALIDARG;
    auto* handle = static_cast<HTQMETRIC>(GlobalAlloc(GPTR, sizeof(_tqmetric)));
    if (!handle) return E_OUTOFMEMORY;
    *out = handle;
    HRESULT hr = subKey && *subKey
                     ? TqCchPrintF(handle->keyPath, MAX_PATH, nullptr, L"%s\\%s", path, subKey)
                     : TqCchPrintF(handle->keyPath, MAX_PATH, nullptr, L"%s", path);
    if (FAILED(hr)) return hr;
    const LONG result = RegCreateKeyW(HKEY_CURRENT_USER, handle->keyPath, &handle->key);
    if (result != ERROR_SUCCESS)
    {
        handle->key = nullptr;
        return HRESULT_FROM_WIN32(result);
    }
    return S_OK;
}

TQKERNEL_API HRESULT TqMetric_OpenRegHiveAndVersion(HTQMETRIC* out, const wchar_t* product,
                                                    DWORD version, const wchar_t* company,
                                                    const wchar_t* subKey)
{
    if (out) *out = nullptr;
    if (!product || !company) return E_INVALIDARG;
    wchar_t path[MAX_PATH];
    VersionKeyPath(path, company, product, version);
    if (lstrlenW(path) + lstrlenW(kMetrics) >= MAX_PATH) return TQ_E_BUFFERTOOSMALL;
    lstrcatW(path, kMetrics);
    return TqMetric_OpenAppVersion(out, path, subKey);
}

TQKERNEL_API HRESULT TqMetric_Open(HTQMETRIC* out, const wchar_t* product, DWORD version,
                                   const wchar_t* subKey)
{
    return TqMetric_OpenRegHiveAndVersion(out, product, version, L"Ostrel", subKey);
}

TQKERNEL_API HRESULT TqMetric_OpenSubKey(HTQMETRIC* out, HTQMETRIC parent, const wchar_t* subKey)
{
    if (out) *out = nullptr;
    if (!parent || parent == TQMETRIC_DEFAULT) return E_FAIL;
    wchar_t path[MAX_PATH];
    lstrcpynW(path, parent->keyPath, MAX_PATH);
    if (wchar_t* metrics = wcsstr(path, kMetrics)) *metrics = 0;
    if (lstrlenW(path) + lstrlenW(kMetrics) >= MAX_PATH) return TQ_E_BUFFERTOOSMALL;
    lstrcatW(path, kMetrics);
    return TqMetric_OpenAppVersion(out, path, subKey);
}

TQKERNEL_API void TqMetric_Close(HTQMETRIC handle)
{
    if (!handle || handle == TQMETRIC_DEFAULT) return;
    if (handle->firstKey) RegCloseKey(handle->firstKey);
    if (handle->key) RegCloseKey(handle->key);
    GlobalFree(handle);
}

TQKERNEL_API HRESULT TqMetric_DeleteAllHiveAndVersion(const wchar_t* product, DWORD version,
                                                      const wchar_t* company)
{
    return DeleteVersionKey(product, version, company, true);
}

TQKERNEL_API HRESULT TqMetric_DeleteAll(const wchar_t* product, DWORD version)
{
    return DeleteVersionKey(product, version, L"Ostrel", true);
}

TQKERNEL_API HRESULT TqMetric_DeleteUserMetrics(const wchar_t* product, DWORD version)
{
    return DeleteVersionKey(product, version, L"Ostrel", false);
}

TQKERNEL_API HRESULT TqMetric_DeleteKeyHiveAndVersion(const wchar_t* product, DWORD version,
                                                      const wchar_t* company, const wchar_t* subKey)
{
    // Without a sub key this would take the whole Metrics key with it.
    if (!product || !company || !subKey || !*subKey) return E_INVALIDARG;
    wchar_t path[MAX_PATH];
    VersionKeyPath(path, company, product, version);
    wchar_t full[MAX_PATH];
    const HRESULT hr = TqCchPrintF(full, MAX_PATH, nullptr, L"%s%s\\%s", path, kMetrics, subKey);
    if (FAILED(hr)) return hr;
    return DeleteTree(HKEY_CURRENT_USER, full);
}

TQKERNEL_API HRESULT TqMetric_DeleteKey(const wchar_t* product, DWORD version,
                                        const wchar_t* subKey)
{
    return TqMetric_DeleteKeyHiveAndVersion(product, version, L"Ostrel", subKey);
}

TQKERNEL_API HRESULT TqMetric_CloseAndDeleteKey(HTQMETRIC handle)
{
    if (!handle || handle == TQMETRIC_DEFAULT) return E_FAIL;
    wchar_t path[MAX_PATH];
    lstrcpynW(path, handle->keyPath, MAX_PATH);
    TqMetric_Close(handle);
    if (!path[0]) return E_FAIL;
    return DeleteTree(HKEY_CURRENT_USER, path);
}

TQKERNEL_API DWORD TqGetMetric(HTQMETRIC handle, int number)
{
    DWORD value = 0;
    return ReadNumbered(handle, number, &value) ? value : 0;
}

TQKERNEL_API int TqGetMetricEx(HTQMETRIC handle, int number, int min, int max, int defaultValue)
{
    if (!Store(handle)) return defaultValue;
    DWORD stored = 0;
    const int value =
        ReadNumbered(handle, number, &stored) ? static_cast<int>(stored) : defaultValue;
    return min == max ? value : Clamp(value, min, max);
}

TQKERNEL_API BOOL TqGetMetricBool(HTQMETRIC handle, int number, BOOL defaultValue)
{
    DWORD value = 0;
    if (!ReadNumbered(handle, number, &value)) return defaultValue;
    return value ? TRUE : FALSE;
}

TQKERNEL_API HRESULT TqSetMetric(HTQMETRIC handle, int number, DWORD value)
{
    return Write(handle, number, REG_DWORD, &value, sizeof(value));
}

TQKERNEL_API DWORD TqGetMetricUsingName(HTQMETRIC handle, const wchar_t* name, DWORD defaultValue)
{
    DWORD value = 0;
    return name && ReadDword(handle, name, &value) ? value : defaultValue;
}

TQKERNEL_API HRESULT TqSetMetricUsingName(HTQMETRIC handle, const wchar_t* name, DWORD value)
{
    HKEY key = Store(handle);
    if (!key || !name) return E_FAIL;
    const LONG result = RegSetValueExW(key, name, 0, REG_DWORD,
                                       reinterpret_cast<const BYTE*>(&value), sizeof(value));
    return result == ERROR_SUCCESS ? S_OK : HRESULT_FROM_WIN32(result);
}

TQKERNEL_API DWORD TqGetMetricBinary(HTQMETRIC handle, int number, void* buffer, DWORD size)
{
    if (!buffer) return 0;
    ZeroMemory(buffer, size);
    HKEY key = Store(handle);
    if (!key) return 0;
    wchar_t name[16];
    StoreName(number, TQMETRIC_BINARY, name);
    DWORD type = 0, bytes = size;
    if (Query(key, name, &type, buffer, &bytes) == ERROR_SUCCESS && type == REG_BINARY)
        return bytes;
    ZeroMemory(buffer, size);
    return 0;
}

TQKERNEL_API HRESULT TqGetMetricBinaryEx(HTQMETRIC handle, int number, void* buffer, DWORD size,
                                         DWORD* outSize)
{
    if (!outSize) return E_INVALIDARG;
    *outSize = 0;
    HKEY key = Store(handle);
    if (!key) return TQ_E_NOTFOUND;
    wchar_t name[16];
    StoreName(number, TQMETRIC_BINARY, name);
    DWORD type = 0, bytes = buffer ? size : 0;
    const LONG result = Query(key, name, &type, buffer, &bytes);
    if ((result != ERROR_SUCCESS && result != ERROR_MORE_DATA) || type != REG_BINARY)
        return S_FALSE;
    *outSize = bytes;
    if (result == ERROR_MORE_DATA || (!buffer && bytes)) return TQ_E_BUFFERTOOSMALL;
    return S_OK;
}

TQKERNEL_API HRESULT TqSetMetricBinary(HTQMETRIC handle, int number, const void* data, DWORD size)
{
    if (!data && size) return E_FAIL;
    return Write(handle, number, REG_BINARY, data, size);
}

TQKERNEL_API HRESULT TqGetMetricStream(HTQMETRIC handle, int number, IStream* stream)
{
    if (!stream) return E_INVALIDARG;
    DWORD size = 0;
    HRESULT hr = TqGetMetricBinaryEx(handle, number, nullptr, 0, &size);
    if (hr != TQ_E_BUFFERTOOSMALL && hr != S_OK) return hr;
    if (!size) return E_UNEXPECTED;
    std::vector<BYTE> data(size);
    DWORD read = 0;
    hr = TqGetMetricBinaryEx(handle, number, data.data(), size, &read);
    if (hr != S_OK || read != size) return E_UNEXPECTED;
    LARGE_INTEGER start = {};
    hr = stream->Seek(start, STREAM_SEEK_SET, nullptr);
    if (FAILED(hr)) return hr;
    ULONG written = 0;
    hr = stream->Write(data.data(), size, &written);
    if (FAILED(hr)) return hr;
    return written == size ? S_OK : E_UNEXPECTED;
}

TQKERNEL_API HRESULT TqSetMetricStream(HTQMETRIC handle, int number, IStream* stream)
{
    if (!stream) return E_INVALIDARG;
    LARGE_INTEGER zero = {};
    ULARGE_INTEGER end = {};
    HRESULT hr = stream->Seek(zero, STREAM_SEEK_END, &end);
    if (FAILED(hr)) return hr;
    if (end.QuadPart > kStreamLimit) return E_INVALIDARG;
    if (end.QuadPart == 0) return E_UNEXPECTED;
    HGLOBAL memory = nullptr;
    hr = GetHGlobalFromStream(stream, &memory);
    if (FAILED(hr)) return hr;
    const void* data = GlobalLock(memory);
    if (!data) return E_FAIL;
    hr = TqSetMetricBinary(handle, number, data, static_cast<DWORD>(end.QuadPart));
    GlobalUnlock(memory);
    return hr;
}

TQKERNEL_API int TqGetMetricStringEx(HTQMETRIC handle, int number, wchar_t* buffer, int capacity,
                                     const wchar_t* defaultText, BOOL onlyIfAbsent)
{
    return ReadText(handle, number, REG_SZ, buffer, capacity, defaultText,
                    defaultText ? lstrlenW(defaultText) : 0, onlyIfAbsent);
}

TQKERNEL_API HRESULT TqSetMetricString(HTQMETRIC handle, int number, const wchar_t* text)
{
    if (!text) text = L"";
    return Write(handle, number, REG_SZ, text,
                 static_cast<DWORD>((lstrlenW(text) + 1) * sizeof(wchar_t)));
}

TQKERNEL_API int TqGetMetricMultiStringEx(HTQMETRIC handle, int number, wchar_t* buffer,
                                          int capacity, const wchar_t* defaultList,
                                          BOOL onlyIfAbsent)
{
    return ReadText(handle, number, REG_MULTI_SZ, buffer, capacity, defaultList,
                    defaultList ? MultiTextChars(defaultList) : 0, onlyIfAbsent);
}

TQKERNEL_API HRESULT TqSetMetricMultiString(HTQMETRIC handle, int number, const wchar_t* data,
                                            int chars)
{
    if (!data || chars <= 0) return Write(handle, number, REG_MULTI_SZ, L"\0", 2 * sizeof(wchar_t));
    return Write(handle, number, REG_MULTI_SZ, data, static_cast<DWORD>(chars) * sizeof(wchar_t));
}

TQKERNEL_API int TqDoesMetricExist(HTQMETRIC handle, int number, int type)
{
    HKEY key = Store(handle);
    if (!key) return 1;
    wchar_t name[16];
    StoreName(number, type, name);
    DWORD stored = 0;
    if (Query(key, name, &stored, nullptr, nullptr) != ERROR_SUCCESS) return 1;
    const DWORD wanted =
        type == TQMETRIC_STRING || type == TQMETRIC_BINARY || type == TQMETRIC_DWORD
            ? static_cast<DWORD>(type)
            : REG_MULTI_SZ;
    return stored == wanted ? 0 : 1;
}

TQKERNEL_API HRESULT TqDeleteMetric(HTQMETRIC handle, int number, int type)
{
    HKEY key = Store(handle);
    if (!key) return S_FALSE;
    wchar_t name[16];
    StoreName(number, type, name);
    return RegDeleteValueW(key, name) == ERROR_SUCCESS ? S_OK : E_FAIL;
}

TQKERNEL_API HRESULT TqDeleteMetricUsingName(HTQMETRIC handle, const wchar_t* name, int type)
{
    HKEY key = Store(handle);
    if (!key) return S_FALSE;
    DWORD stored = 0;
    if (!name || Query(key, name, &stored, nullptr, nullptr) != ERROR_SUCCESS ||
        stored != static_cast<DWORD>(type))
        return E_FAIL;
    return RegDeleteValueW(key, name) == ERROR_SUCCESS ? S_OK : E_FAIL;
}

TQKERNEL_API HRESULT TqGetMetricAny(HTQMETRIC handle, int number, int type, void* buffer,
                                    DWORD size, DWORD* outSize)
{
    HKEY key = Store(handle);
    if (!key) return TQ_E_NOTFOUND;
    wchar_t name[16];
    StoreName(number, TQMETRIC_DWORD, name);
    DWORD stored = 0, bytes = buffer ? size : 0;
    const LONG result = Query(key, name, &stored, buffer, &bytes);
    if (result == ERROR_MORE_DATA)
    {
        if (outSize) *outSize = bytes;
        return TQ_E_BUFFERTOOSMALL;
    }
    if (result == ERROR_SUCCESS && stored == static_cast<DWORD>(type)) return TQ_E_NOTFOUND;
    if (outSize) *outSize = bytes;
    if (result == ERROR_SUCCESS && stored == REG_SZ && buffer && size >= sizeof(wchar_t))
    {
        auto* text = static_cast<wchar_t*>(buffer);
        const DWORD chars = bytes / sizeof(wchar_t);
        const DWORD room = size / sizeof(wchar_t);
        if (chars < room)
        {
            text[chars] = 0;
            return S_OK;
        }
        if (chars && !text[chars - 1]) return S_OK; // stored with its terminator
        text[room - 1] = 0;
        return TQ_E_BUFFERTOOSMALL;
    }
    return S_OK;
}
