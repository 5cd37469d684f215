// Resources through the language search order: finding, loading, and the string table reader.
#include "tqresource.h"

#include <strsafe.h>

namespace tq::lang {
namespace {

constexpr LANGID kUsEnglish = 0x409;

// A module handle of a data-file mapping carries flags in its low bits.
const BYTE* ImageBase(HMODULE module)
{
    return reinterpret_cast<const BYTE*>(reinterpret_cast<UINT_PTR>(module) & ~UINT_PTR(3));
}

bool ModuleHolds(HMODULE module, const void* address)
{
    if (!module) return false;
    const BYTE* base = ImageBase(module);
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    if (dos->e_magic != IMAGE_DOS_SIGNATURE) return false;
    const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const auto* at = static_cast<const BYTE*>(address);
    return at >= base && at < base + nt->OptionalHeader.SizeOfImage;
}

// The module a resource handle belongs to, among the two a handle searches.
HMODULE ModuleOfResource(const tagTQLANG* lang, HRSRC resource)
{
    if (!lang) return GetModuleHandleW(nullptr);
    if (ModuleHolds(lang->langModule, resource)) return lang->langModule;
    return lang->module;
}

HRSRC FindInModule(HMODULE module, const wchar_t* name, const wchar_t* type, LANGID language)
{
    if (HRSRC found = FindResourceExW(module, type, name, language)) return found;
    // Resources compiled without a language statement sit under the neutral language.
    return FindResourceW(module, name, type);
}

// Joins the abbreviated names of the languages a resource comes in.
struct AbbrevCollector
{
    wchar_t* buffer;
    size_t capacity;
    HRESULT result;
};

BOOL CALLBACK CollectAbbrev(HMODULE, LPCWSTR, LPCWSTR, WORD language, LONG_PTR param)
{
    auto* collect = reinterpret_cast<AbbrevCollector*>(param);
    wchar_t abbrev[16];
    if (!GetLocaleInfoW(MAKELCID(language, SORT_DEFAULT), LOCALE_SABBREVLANGNAME, abbrev,
                        ARRAYSIZE(abbrev)))
        return TRUE;
    if (collect->buffer[0]) StringCchCatW(collect->buffer, collect->capacity, L",");
    if (FAILED(StringCchCatW(collect->buffer, collect->capacity, abbrev)))
    {
        collect->result = TQ_E_BUFFERTOOSMALL;
        return FALSE;
    }
    collect->result = S_OK;
    return TRUE;
}

} // namespace

FoundResource FindBySearchOrder(tagTQLANG* lang, const wchar_t* name, const wchar_t* type)
{
    if (!lang)
    {
        HMODULE exe = GetModuleHandleW(nullptr);
        return {FindResourceW(exe, name, type), exe};
    }
    if (lang->useLangModule && lang->langModule)
    {
        const LANGID language = LANGIDFROMLCID(EffectiveLcid(lang));
        if (HRSRC found = FindResourceExW(lang->langModule, type, name, language))
            return {found, lang->langModule};
    }
    if (lang->module == lang->langModule)
        return {FindInModule(lang->module, name, type, kUsEnglish), lang->module};
    return {FindResourceW(lang->module, name, type), lang->module};
}

const wchar_t* FindStringResource(HMODULE module, UINT id, LANGID language, int* length)
{
    *length = 0;
    // Strings come in blocks of 16, each a count followed by that many characters.
    const wchar_t* block = MAKEINTRESOURCEW((id >> 4) + 1);
    HRSRC resource = FindResourceExW(module, RT_STRING, block, language);
    if (!resource) return nullptr;
    HGLOBAL loaded = LoadResource(module, resource);
    const auto* text = static_cast<const wchar_t*>(loaded ? LockResource(loaded) : nullptr);
    if (!text) return nullptr;
    const wchar_t* end = text + SizeofResource(module, resource) / sizeof(wchar_t);
    for (UINT skip = id & 15; skip > 0 && text < end; --skip)
        text += 1 + *text;
    if (text >= end || *text == 0 || text + 1 + *text > end) return nullptr;
    *length = *text;
    return text + 1;
}

} // namespace tq::lang

using namespace tq::lang;

TQKERNEL_API HRSRC TqFindResource(HTQLANG lang, const wchar_t* name, const wchar_t* type)
{
    return FindBySearchOrder(Resolve(lang), name, type).resource;
}

TQKERNEL_API HRSRC TqFindResourceMulti(HTQLANG lang, const wchar_t* const* names, int count,
                                       const wchar_t* type, int* hit)
{
    if (hit) *hit = -1;
    if (!names || count < 1) return nullptr;
    tagTQLANG* h = Resolve(lang);
    if (h && h->useLangModule && h->langModule)
    {
        const LANGID language = LANGIDFROMLCID(EffectiveLcid(h));
        for (int i = 0; i < count; ++i)
        {
            if (HRSRC found = FindResourceExW(h->langModule, type, names[i], language))
            {
                if (hit) *hit = i;
                return found;
            }
        }
    }
    HMODULE module = h ? h->module : GetModuleHandleW(nullptr);
    const bool english = h && h->module == h->langModule;
    for (int i = 0; i < count; ++i)
    {
        HRSRC found = english ? FindInModule(module, names[i], type, kUsEnglish)
                              : FindResourceW(module, names[i], type);
        if (found)
        {
            if (hit) *hit = i;
            return found;
        }
    }
    return nullptr;
}

TQKERNEL_API HINSTANCE TqFindResInstance(HTQLANG lang, const wchar_t* name, const wchar_t* type)
{
    const FoundResource found = FindBySearchOrder(Resolve(lang), name, type);
    return found.resource ? found.module : nullptr;
}

TQKERNEL_API HGLOBAL TqLoadResource(HTQLANG lang, HRSRC resource)
{
    if (!resource) return nullptr;
    return LoadResource(ModuleOfResource(Resolve(lang), resource), resource);
}

TQKERNEL_API DWORD TqSizeofResource(HTQLANG lang, HRSRC resource)
{
    if (!resource) return 0;
    return SizeofResource(ModuleOfResource(Resolve(lang), resource), resource);
}

TQKERNEL_API const void* TqLoadResourceCustom(HTQLANG lang, const wchar_t* name,
                                              const wchar_t* type, DWORD* size)
{
    if (size) *size = 0;
    const FoundResource found = FindBySearchOrder(Resolve(lang), name, type);
    if (!found.resource) return nullptr;
    HGLOBAL loaded = LoadResource(found.module, found.resource);
    const void* data = loaded ? LockResource(loaded) : nullptr;
    if (data && size) *size = SizeofResource(found.module, found.resource);
    return data;
}

TQKERNEL_API HRESULT TqEnumResourceLanguages(HTQLANG lang, UINT id, wchar_t* buffer, int capacity)
{
    if (!buffer || capacity < 1) return E_INVALIDARG;
    buffer[0] = 0;
    const tagTQLANG* h = Resolve(lang);
    if (!h || !h->langModule) return TQ_E_NOTFOUND;

    AbbrevCollector collect{buffer, static_cast<size_t>(capacity), TQ_E_NOTFOUND};
    EnumResourceLanguagesW(h->langModule, RT_VERSION, MAKEINTRESOURCEW(id), CollectAbbrev,
                           reinterpret_cast<LONG_PTR>(&collect));
    return collect.result;
}
