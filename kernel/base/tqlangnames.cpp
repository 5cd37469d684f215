// What a handle's language is called: abbreviation, language tag, and the order of a person's
// names.
#include "tqlanghandle.h"

#include <strsafe.h>

using namespace tq::lang;

namespace {

struct LanguageTag
{
    WORD primary;
    const wchar_t* tag;
};

// Languages with a tag of their own; all others are answered as US English where a tag is a must.
constexpr LanguageTag kLanguageTags[] = {
    {LANG_CHINESE, L"zh-CN"}, {LANG_GERMAN, L"de-DE"},   {LANG_SPANISH, L"es-ES"},
    {LANG_FRENCH, L"fr-FR"},  {LANG_JAPANESE, L"ja-JP"}, {LANG_POLISH, L"pl-PL"},
    {LANG_RUSSIAN, L"ru-RU"},
};

const wchar_t* TagOf(HTQLANG lang)
{
    const WORD primary = PRIMARYLANGID(LANGIDFROMLCID(EffectiveLcid(Resolve(lang))));
    for (const LanguageTag& entry : kLanguageTags)
        if (entry.primary == primary) return entry.tag;
    return nullptr;
}

constexpr LCID kJapanese = 1041;

} // namespace

TQKERNEL_API int TqLang_GetLangAbbrev(HTQLANG lang, wchar_t* buffer, int capacity)
{
    if (!buffer || capacity < 1) return 0;
    const LCID lcid = TqLang_GetConditionedLCID(EffectiveLcid(Resolve(lang)));
    const int written = GetLocaleInfoW(lcid, LOCALE_SABBREVLANGNAME, buffer, capacity);
    if (written <= 0)
    {
        buffer[0] = 0;
        return 0;
    }
    return written - 1;
}

TQKERNEL_API int TqLang_GetLangllCC(HTQLANG lang, wchar_t* buffer, int capacity)
{
    if (!buffer || capacity < 1) return 1;
    const wchar_t* tag = TagOf(lang);
    StringCchCopyW(buffer, capacity, tag ? tag : L"");
    return tag ? 0 : 1;
}

TQKERNEL_API const wchar_t* getLanguageString(HTQLANG lang)
{
    const wchar_t* tag = TagOf(lang);
    return tag ? tag : L"en-US";
}

TQKERNEL_API BOOL TqLang_IsNameOrderReversed(HTQLANG lang)
{
    return EffectiveLcid(Resolve(lang)) == kJapanese;
}

TQKERNEL_API HRESULT TqLang_LocalizeUserName(HTQLANG lang, const wchar_t* first,
                                             const wchar_t* last, wchar_t* buffer, int capacity)
{
    if (!buffer || capacity < 1) return E_INVALIDARG;
    if (!first) first = L"";
    if (!last) last = L"";
    const bool reversed = TqLang_IsNameOrderReversed(lang);
    const HRESULT hr = StringCchPrintfW(buffer, capacity, L"%s %s", reversed ? last : first,
                                        reversed ? first : last);
    return hr == STRSAFE_E_INSUFFICIENT_BUFFER ? TQ_E_BUFFERTOOSMALL : hr;
}
