// Version record strings, looked up under the record's first translation.
#include "tqversion.h"

#include <cwchar>
#include <iterator>
#include <memory>

namespace {

// The first entry of "\VarFileInfo\Translation": a language and a code page.
struct Translation
{
    WORD language;
    WORD codePage;
};

} // namespace

TQKERNEL_API HRESULT TqVersion_GetString(const wchar_t* file, const wchar_t* key, wchar_t* buffer,
                                         int capacity)
{
    if (!file || !key || !buffer || capacity < 1) return E_INVALIDARG;
    buffer[0] = L'\0';

    DWORD ignored = 0;
    const DWORD size = GetFileVersionInfoSizeW(file, &ignored);
    if (!size) return TQ_E_NOTFOUND;
    auto record = std::make_unique_for_overwrite<BYTE[]>(size);
    if (!GetFileVersionInfoW(file, 0, size, record.get())) return TQ_E_NOTFOUND;

    void* found = nullptr;
    UINT length = 0;
    if (!VerQueryValueW(record.get(), L"\\VarFileInfo\\Translation", &found, &length) ||
        length < sizeof(Translation))
        return TQ_E_NOTFOUND;
    const auto* translation = static_cast<const Translation*>(found);

    wchar_t path[300];
    const int written = _snwprintf(path, std::size(path), L"\\StringFileInfo\\%04hX%04hX\\%s",
                                   translation->language, translation->codePage, key);
    if (written < 0 || written >= static_cast<int>(std::size(path))) return TQ_E_NOTFOUND;
    if (!VerQueryValueW(record.get(), path, &found, &length) || !found) return TQ_E_NOTFOUND;

    // The length counts the terminator when there is one; do not rely on it.
    const auto* text = static_cast<const wchar_t*>(found);
    const size_t chars = wcsnlen(text, length);
    if (chars >= static_cast<size_t>(capacity))
    {
        wmemcpy(buffer, text, capacity - 1);
        buffer[capacity - 1] = L'\0';
        return TQ_E_BUFFERTOOSMALL;
    }
    wmemcpy(buffer, text, chars);
    buffer[chars] = L'\0';
    return S_OK;
}
