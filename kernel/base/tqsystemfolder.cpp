// Special folders with the product below them, the company's shared folder and the preset folder.
#include "tqpath.h"

#include "tqprintf.h"
#include "uniquehandle.h"

#include <shlobj.h>

namespace tq::path {
namespace {

constexpr wchar_t kSharedKey[] = L"Software\\Ostrel\\Shared Information";
constexpr wchar_t kSharedValue[] = L"SharedComponentsFolder";
constexpr wchar_t kPresetValue[] = L"VSTPresetPath";
constexpr HRESULT kNeedsAdministrator = static_cast<HRESULT>(0x8004E142L);

// The system folder, then the formatted tail, then the folder made to exist.
HRESULT SpecialFolder(wchar_t* buffer, int capacity, int csidl, const wchar_t* format, ...)
{
    if (!buffer || capacity < MAX_PATH) return E_INVALIDARG;
    buffer[0] = 0;
    if (FAILED(SHGetFolderPathW(nullptr, csidl | CSIDL_FLAG_CREATE, nullptr, SHGFP_TYPE_CURRENT,
                                buffer)))
        return E_FAIL;
    const int length = TqAddSlashToPathName(buffer, capacity);
    if (!length) return E_FAIL;
    va_list args;
    va_start(args, format);
    const HRESULT printed =
        TqNVPrintF(buffer + length, static_cast<size_t>(capacity - length), nullptr, format, args);
    va_end(args);
    if (FAILED(printed)) return E_FAIL;
    return SUCCEEDED(TqCreateDirectory(buffer)) ? S_OK : E_FAIL;
}

// A REG_SZ value into buffer, terminated; false when missing, of another type, or too long.
bool ReadText(HKEY root, const wchar_t* key, const wchar_t* value, wchar_t* buffer, int capacity)
{
    DWORD size = static_cast<DWORD>(capacity) * sizeof(wchar_t);
    if (RegGetValueW(root, key, value, RRF_RT_REG_SZ, nullptr, buffer, &size) != ERROR_SUCCESS)
        return false;
    return buffer[0] != 0;
}

bool WriteText(const tq::UniqueRegKey& key, const wchar_t* value, const wchar_t* text)
{
    return RegSetValueExW(key.Get(), value, 0, REG_SZ, reinterpret_cast<const BYTE*>(text),
                          static_cast<DWORD>((lstrlenW(text) + 1) * sizeof(wchar_t))) ==
           ERROR_SUCCESS;
}

void PresetKey(wchar_t* key, DWORD version, const wchar_t* product)
{
    TqCchPrintF(key, MAX_PATH, nullptr, L"Software\\Ostrel\\%s\\%d.%d\\Metrics",
                product ? product : L"", static_cast<int>(version >> 24),
                static_cast<int>((version >> 16) & 255));
}

} // namespace
} // namespace tq::path

using namespace tq::path;

// Folders the user sees and keeps own files in get no company folder, so they stay uncluttered.
TQKERNEL_API BOOL TqIsHiddenFolderByDefault(int csidl)
{
    switch (csidl & ~0xFF00)
    {
    case 5:
    case 12:
    case 16:
    case 25:
    case 40:
    case 46:
    case 53:
    case 54:
    case 55:
        return FALSE;
    default:
        return TRUE;
    }
}

TQKERNEL_API HRESULT TqGetSpecialFolderVer(wchar_t* buffer, int capacity, int csidl,
                                           const wchar_t* product, int major, int minor)
{
    if (!product) return E_INVALIDARG;
    if (TqIsHiddenFolderByDefault(csidl))
        return SpecialFolder(buffer, capacity, csidl, L"Ostrel\\%s\\%d.%d\\", product, major,
                             minor);
    return SpecialFolder(buffer, capacity, csidl, L"%s\\%d.%d\\", product, major, minor);
}

TQKERNEL_API HRESULT TqGetSpecialFolderNoVer(wchar_t* buffer, int capacity, int csidl,
                                             const wchar_t* product)
{
    if (!product) return E_INVALIDARG;
    if (TqIsHiddenFolderByDefault(csidl))
        return SpecialFolder(buffer, capacity, csidl, L"Ostrel\\%s\\", product);
    return SpecialFolder(buffer, capacity, csidl, L"%s\\", product);
}

TQKERNEL_API HRESULT TqGetSpecialFolderNoVerNoCompany(wchar_t* buffer, int capacity, int csidl,
                                                      const wchar_t* product)
{
    if (!product) return E_INVALIDARG;
    return SpecialFolder(buffer, capacity, csidl, L"%s\\", product);
}

TQKERNEL_API HRESULT TqGetSharedComponentsFolder(wchar_t* buffer, int capacity)
{
    if (!buffer || capacity < 1) return E_INVALIDARG;
    if (!ReadText(HKEY_LOCAL_MACHINE, kSharedKey, kSharedValue, buffer, capacity) ||
        !TqAddSlashToPathName(buffer, capacity))
    {
        buffer[0] = 0;
        return E_FAIL;
    }
    return S_OK;
}

TQKERNEL_API HRESULT TqSetSharedComponentsFolder(const wchar_t* folder)
{
    if (!folder) return E_INVALIDARG;
    HKEY key = nullptr;
    if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, kSharedKey, 0, nullptr, 0, KEY_SET_VALUE, nullptr, &key,
                        nullptr) != ERROR_SUCCESS)
        return kNeedsAdministrator;
    return WriteText(tq::UniqueRegKey(key), kSharedValue, folder) ? S_OK : kNeedsAdministrator;
}

TQKERNEL_API HRESULT TqGetPresetFolder(wchar_t* buffer, int capacity, DWORD version,
                                       const wchar_t* product)
{
    if (!buffer || capacity < 1) return S_OK;
    wchar_t keyPath[MAX_PATH];
    PresetKey(keyPath, version, product);
    HKEY key = nullptr;
    if (RegCreateKeyW(HKEY_CURRENT_USER, keyPath, &key) == ERROR_SUCCESS &&
        ReadText(tq::UniqueRegKey(key).Get(), nullptr, kPresetValue, buffer, capacity))
        return S_OK;
    buffer[0] = 0;
    wchar_t documents[MAX_PATH];
    if (SUCCEEDED(SHGetFolderPathW(nullptr, CSIDL_PERSONAL | CSIDL_FLAG_CREATE, nullptr,
                                   SHGFP_TYPE_CURRENT, documents)))
        lstrcpynW(buffer, documents, capacity);
    return S_OK;
}

TQKERNEL_API HRESULT TqSetPresetFolder(const wchar_t* folder, DWORD version, const wchar_t* product)
{
    if (!folder) return E_INVALIDARG;
    wchar_t keyPath[MAX_PATH];
    PresetKey(keyPath, version, product);
    HKEY key = nullptr;
    if (RegCreateKeyW(HKEY_CURRENT_USER, keyPath, &key) != ERROR_SUCCESS) return E_FAIL;
    return WriteText(tq::UniqueRegKey(key), kPresetValue, folder) ? S_OK : E_FAIL;
}
