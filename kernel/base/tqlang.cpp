// Language handles: opening with the language module, the kernel language, and switching language.
#include "tqlanghandle.h"

#include <commctrl.h>
#include <shlwapi.h>

#include <memory>

#include "tqstrings.h"

namespace tq::lang {
namespace {

constexpr UINT kDefaultTempChars = 8192;
constexpr UINT kMinTempChars = 2048;
constexpr UINT kTempReserve = 1024;
constexpr LANGID kUsEnglish = 0x409;

HTQLANG g_kernelLang = nullptr;

// Primary languages written right to left: Arabic, Hebrew, Urdu, Farsi.
bool IsRtlLanguage(LCID lcid)
{
    const WORD primary = PRIMARYLANGID(LANGIDFROMLCID(lcid));
    return primary == LANG_ARABIC || primary == LANG_HEBREW || primary == LANG_URDU ||
           primary == LANG_FARSI;
}

void Destroy(tagTQLANG* lang)
{
    if (!lang) return;
    if (lang->ownsLangModule) FreeLibrary(lang->langModule);
    TqList_Destroy(lang->stringCache);
    if (lang->tempBuffer) GlobalFree(lang->tempBuffer);
    if (lang->lockInitialized) DeleteCriticalSection(&lang->lock);
    GlobalFree(lang);
}

struct LangDeleter
{
    void operator()(tagTQLANG* lang) const { Destroy(lang); }
};
using UniqueLang = std::unique_ptr<tagTQLANG, LangDeleter>;

// The process's default activation context, whatever context the caller runs in, so that the
// language module binds as the program's manifest says.
class ProcessActCtxScope
{
public:
    ProcessActCtxScope() { m_active = ActivateActCtx(nullptr, &m_cookie) != FALSE; }
    ~ProcessActCtxScope()
    {
        if (m_active) DeactivateActCtx(0, m_cookie);
    }
    ProcessActCtxScope(const ProcessActCtxScope&) = delete;
    ProcessActCtxScope& operator=(const ProcessActCtxScope&) = delete;

private:
    ULONG_PTR m_cookie = 0;
    bool m_active = false;
};

// "program.exe" gives "program.LNG" beside it.
HMODULE LoadLanguageModule(HMODULE module)
{
    wchar_t path[MAX_PATH];
    const DWORD length = GetModuleFileNameW(module, path, MAX_PATH);
    if (length == 0 || length >= MAX_PATH - 4) return nullptr;
    if (!PathRenameExtensionW(path, L".LNG")) return nullptr;
    ProcessActCtxScope scope;
    return LoadLibraryW(path);
}

// Switches one handle; the cache is emptied only when the language really changes.
void SwitchHandle(tagTQLANG* lang, LCID lcid)
{
    if (lang->lcid != lcid)
    {
        lang->lcid = lcid;
        InterlockedExchange(&lang->langIndex, 0);
        EmptyStringCache(lang);
    }
    lang->useLangModule = !TqLang_IsLCIDEnglish(lcid);
}

void SetLangModule(tagTQLANG* lang, HMODULE instance)
{
    if (lang->ownsLangModule && lang->langModule != instance) FreeLibrary(lang->langModule);
    lang->ownsLangModule = FALSE;
    lang->langModule = instance ? instance : lang->module;
    EmptyStringCache(lang);
}

} // namespace

tagTQLANG* Resolve(HTQLANG lang)
{
    return lang ? lang : g_kernelLang;
}

LCID EffectiveLcid(const tagTQLANG* lang)
{
    if (lang && lang->lcid) return lang->lcid;
    return MAKELCID(GetUserDefaultUILanguage(), SORT_DEFAULT);
}

int LangIndex(tagTQLANG* lang)
{
    const LONG known = lang ? lang->langIndex : 0;
    if (known >= 1) return known;
    const LCID wanted = TqLang_GetConditionedLCID(EffectiveLcid(lang));
    LONG index = 1;
    for (int i = 0; i < TQLANG_SLOTCOUNT; ++i)
    {
        if (TqLang_GetConditionedLCID(g_tqLangLcids[i]) == wanted)
        {
            index = i + 1;
            break;
        }
    }
    // Racing first users compute the same value, so no lock is needed.
    if (lang) InterlockedExchange(&lang->langIndex, index);
    return index;
}

void EmptyStringCache(tagTQLANG* lang)
{
    LangLock hold(lang);
    if (lang->stringCache) TqList_DeleteList(lang->stringCache, 0, -1, TRUE);
}

} // namespace tq::lang

using namespace tq::lang;

TQKERNEL_API HRESULT TqLang_Open(HTQLANG* out, HMODULE module, LCID lcid, UINT tempChars)
{
    if (!out) return E_POINTER;
    if (*out) return TQ_S_LANGALREADYOPEN;

    UniqueLang lang(static_cast<tagTQLANG*>(GlobalAlloc(GPTR, sizeof(tagTQLANG))));
    if (!lang) return E_OUTOFMEMORY;
    lang->module = module ? module : GetModuleHandleW(nullptr);
    InitializeCriticalSection(&lang->lock);
    lang->lockInitialized = TRUE;

    if (tempChars == 0) tempChars = kDefaultTempChars;
    lang->tempChars = tempChars < kMinTempChars ? kMinTempChars : tempChars;
    lang->tempReserve = kTempReserve;
    lang->tempBuffer = static_cast<wchar_t*>(GlobalAlloc(GPTR, lang->tempChars * sizeof(wchar_t)));
    if (!lang->tempBuffer) return E_OUTOFMEMORY;
    if (FAILED(TqList_CreateExZ(&lang->stringCache, 0, 16, 16, TQLIST_OPT_HEAP, 0, 0, 0)))
        return E_OUTOFMEMORY;

    lang->lcid = lcid;
    lang->useLangModule = !TqLang_IsLCIDEnglish(EffectiveLcid(lang.get()));
    if (HMODULE found = LoadLanguageModule(lang->module))
    {
        lang->langModule = found;
        lang->ownsLangModule = TRUE;
    }
    else
    {
        lang->langModule = lang->module;
    }
    *out = lang.release();
    return S_OK;
}

TQKERNEL_API HRESULT TqLang_Close(HTQLANG lang)
{
    if (!lang) return S_OK;
    if (lang == g_kernelLang) g_kernelLang = nullptr;
    Destroy(lang);
    return S_OK;
}

TQKERNEL_API HTQLANG TqLang_GetKernelLang(void)
{
    return g_kernelLang;
}

TQKERNEL_API HRESULT TqLang_OpenKernelLang(HMODULE module)
{
    HTQLANG lang = g_kernelLang;
    const HRESULT hr = TqLang_Open(&lang, module, 0, 0);
    g_kernelLang = lang;
    return hr;
}

TQKERNEL_API void TqLang_CloseKernelLang(void)
{
    TqLang_Close(g_kernelLang);
}

TQKERNEL_API LCID TqLang_GetLCID(HTQLANG lang)
{
    const tagTQLANG* h = Resolve(lang);
    return h ? h->lcid : 0;
}

TQKERNEL_API HINSTANCE TqLang_InstFromLang(HTQLANG lang)
{
    const tagTQLANG* h = Resolve(lang);
    if (!h) return GetModuleHandleW(nullptr);
    return h->useLangModule && h->langModule ? h->langModule : h->module;
}

TQKERNEL_API HRESULT TqLang_ChangeLangInst(HTQLANG lang, HINSTANCE instance)
{
    tagTQLANG* h = Resolve(lang);
    if (!h) return E_INVALIDARG;
    SetLangModule(h, instance);
    if (g_kernelLang && g_kernelLang != h) SetLangModule(g_kernelLang, instance);
    return S_OK;
}

TQKERNEL_API int TqLang_UpdateKernelLCID(HTQLANG lang, LCID lcid)
{
    if (!lang || !g_kernelLang) return 0;
    if (lcid == 0) lcid = MAKELCID(kUsEnglish, SORT_DEFAULT);
    SwitchHandle(lang, lcid);
    if (g_kernelLang != lang) SwitchHandle(g_kernelLang, lcid);
    SetProcessDefaultLayout(IsRtlLanguage(lcid) ? LAYOUT_RTL : 0);
    return 1;
}

TQKERNEL_API BOOL TqLang_UpdateThreadLocale(HTQLANG lang)
{
    const LCID lcid = EffectiveLcid(Resolve(lang));
    if (!SetThreadLocale(lcid)) return FALSE;
    InitMUILanguage(LANGIDFROMLCID(lcid));
    return TRUE;
}

TQKERNEL_API LCID TqLang_GetConditionedLCID(LCID lcid)
{
    const LCID primary = lcid & 0x3FF;
    const LCID sublanguage = (lcid & 0xFFFF) >> 10;
    if (primary == LANG_PORTUGUESE) return lcid;
    if (primary == LANG_CHINESE)
    {
        // Sublanguages 1, 3 and 5 (Taiwan, Hong Kong, Macao) write traditional characters.
        const bool traditional = sublanguage == 1 || sublanguage == 3 || sublanguage == 5;
        return primary + (traditional ? 0x400 : 0x800);
    }
    return primary + 0x400;
}

TQKERNEL_API BOOL TqLang_IsLCIDEnglish(LCID lcid)
{
    return PRIMARYLANGID(LANGIDFROMLCID(lcid)) == LANG_ENGLISH;
}

TQKERNEL_API BOOL TqLang_UseRTL(HTQLANG lang)
{
    return IsRtlLanguage(EffectiveLcid(Resolve(lang)));
}

TQKERNEL_API BOOL TqLang_EnableProcessMirroring(void)
{
    return SetProcessDefaultLayout(LAYOUT_RTL);
}

TQKERNEL_API BOOL TqLang_DisableProcessMirroring(void)
{
    return SetProcessDefaultLayout(0);
}
