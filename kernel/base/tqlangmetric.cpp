// The user's language stored in the registry, per company, product and version.
#include "tqlang.h"

#include <strsafe.h>

namespace {

constexpr wchar_t kCompany[] = L"Ostrel";
constexpr wchar_t kValueName[] = L"ULangID";

// The registry key's own RAII type, so no path leaves it open.
class RegKey
{
public:
    RegKey() = default;
    ~RegKey()
    {
        if (m_key) RegCloseKey(m_key);
    }
    RegKey(const RegKey&) = delete;
    RegKey& operator=(const RegKey&) = delete;
    HKEY* Put() { return &m_key; }
    HKEY Get() const { return m_key; }

private:
    HKEY m_key = nullptr;
};

// "Software\<company>\<product>\<major>.<minor>\Lang", without the version part when the
// version's top byte is 0.
bool KeyPath(const wchar_t* company, const wchar_t* product, DWORD version, wchar_t* path,
             size_t capacity)
{
    if (!company || !product) return false;
    const DWORD major = version >> 24;
    const DWORD minor = (version >> 16) & 0xFF;
    const HRESULT hr =
        major ? StringCchPrintfW(path, capacity, L"Software\\%s\\%s\\%lu.%lu\\Lang", company,
                                 product, major, minor)
              : StringCchPrintfW(path, capacity, L"Software\\%s\\%s\\Lang", company, product);
    return SUCCEEDED(hr);
}

bool ReadLcid(HKEY root, const wchar_t* path, LCID* lcid)
{
    RegKey key;
    if (RegOpenKeyExW(root, path, 0, KEY_QUERY_VALUE, key.Put()) != ERROR_SUCCESS) return false;
    DWORD type = 0;
    DWORD value = 0;
    DWORD size = sizeof(value);
    if (RegQueryValueExW(key.Get(), kValueName, nullptr, &type, reinterpret_cast<BYTE*>(&value),
                         &size) != ERROR_SUCCESS ||
        type != REG_DWORD || size != sizeof(value))
        return false;
    *lcid = value;
    return true;
}

BOOL Load(const wchar_t* company, const wchar_t* product, DWORD version, LCID* lcid)
{
    wchar_t path[512];
    if (!lcid || !KeyPath(company, product, version, path, ARRAYSIZE(path))) return FALSE;
    return ReadLcid(HKEY_CURRENT_USER, path, lcid) || ReadLcid(HKEY_LOCAL_MACHINE, path, lcid);
}

HRESULT Save(const wchar_t* company, const wchar_t* product, DWORD version, LCID lcid)
{
    wchar_t path[512];
    if (!KeyPath(company, product, version, path, ARRAYSIZE(path))) return E_INVALIDARG;
    RegKey key;
    LSTATUS status = RegCreateKeyExW(HKEY_CURRENT_USER, path, 0, nullptr, 0, KEY_SET_VALUE, nullptr,
                                     key.Put(), nullptr);
    if (status != ERROR_SUCCESS) return HRESULT_FROM_WIN32(status);
    const DWORD value = lcid;
    status = RegSetValueExW(key.Get(), kValueName, 0, REG_DWORD,
                            reinterpret_cast<const BYTE*>(&value), sizeof(value));
    return HRESULT_FROM_WIN32(status);
}

} // namespace

TQKERNEL_API BOOL TqLang_LoadUserLCIDMetric(const wchar_t* product, DWORD version, LCID* lcid,
                                            BOOL noVersion)
{
    return Load(kCompany, product, noVersion ? 0 : version, lcid);
}

TQKERNEL_API BOOL TqLang_LoadUserLCIDMetricAppReg(const wchar_t* company, const wchar_t* product,
                                                  DWORD version, LCID* lcid)
{
    return Load(company, product, version, lcid);
}

TQKERNEL_API HRESULT TqLang_SaveUserLCIDMetric(const wchar_t* product, DWORD version, LCID lcid,
                                               BOOL noVersion)
{
    return Save(kCompany, product, noVersion ? 0 : version, lcid);
}

TQKERNEL_API HRESULT TqLang_SaveUserLCIDMetricAppReg(const wchar_t* company, const wchar_t* product,
                                                     DWORD version, LCID lcid)
{
    return Save(company, product, version, lcid);
}
