// Opening a document on UTF-8 text: the reader takes Unicode only as UTF-16 behind FF FE.
#include "xmldocument.h"

#include <cstring>

namespace {

constexpr BYTE kUtf16Mark[2] = {0xFF, 0xFE};
constexpr BYTE kUtf8Mark[3] = {0xEF, 0xBB, 0xBF};

// A GlobalAlloc block of size bytes, or null.
BYTE* Copy(const BYTE* data, DWORD size) noexcept
{
    auto* copy = static_cast<BYTE*>(GlobalAlloc(GMEM_FIXED, size));
    if (copy) std::memcpy(copy, data, size);
    return copy;
}

} // namespace

HRESULT CTqXML_Document::OpenMemoryUtf8(const void* data, DWORD size) noexcept
{
    Close();
    if (!data && size) return E_INVALIDARG;
    if (size >= 0x80000000u) return E_INVALIDARG;
    if (size == 0) return TQ_E_CORRUPTFILE;
    // The document reads the copy and keeps it until it is closed.
    auto openOwned = [this](void* copy, DWORD bytes) {
        if (!copy) return E_OUTOFMEMORY;
        const HRESULT hr = OpenMemory(copy, bytes);
        if (FAILED(hr))
            GlobalFree(copy);
        else
            m_owned = static_cast<BYTE*>(copy);
        return hr;
    };
    const auto* bytes = static_cast<const BYTE*>(data);
    if (size >= 2 && std::memcmp(bytes, kUtf16Mark, 2) == 0)
        return openOwned(Copy(bytes, size), size);
    if (size >= 3 && std::memcmp(bytes, kUtf8Mark, 3) == 0)
    {
        bytes += 3;
        size -= 3;
    }
    const auto* end = static_cast<const BYTE*>(std::memchr(bytes, 0, size));
    const auto length = end ? static_cast<int>(end - bytes) : static_cast<int>(size);
    const char* text = reinterpret_cast<const char*>(bytes);
    // Bytes that are no UTF-8 become U+FFFD rather than failing the whole document.
    const int chars = length ? MultiByteToWideChar(CP_UTF8, 0, text, length, nullptr, 0) : 0;
    if (chars <= 0) return TQ_E_CORRUPTFILE;
    const DWORD wideBytes = (static_cast<DWORD>(chars) + 1) * sizeof(WCHAR);
    auto* wide = static_cast<WCHAR*>(GlobalAlloc(GMEM_FIXED, wideBytes));
    if (wide)
    {
        wide[0] = 0xFEFF; // FF FE in memory
        MultiByteToWideChar(CP_UTF8, 0, text, length, wide + 1, chars);
    }
    return openOwned(wide, wideBytes);
}
