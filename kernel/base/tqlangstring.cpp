// Strings of a language handle: language-table records, numeric ids and their cache, the ring.
#include "tqlanghandle.h"
#include "tqresource.h"
#include "tqstrings.h"

#include <wchar.h>

namespace tq::lang {

const wchar_t g_emptyString[1] = {};

namespace {

constexpr int kLoadChars = 1024;
constexpr LANGID kUsEnglish = 0x409;
constexpr UINT_PTR kMaxNumericId = 0xFFFF;

bool IsNumericId(const void* id)
{
    return reinterpret_cast<UINT_PTR>(id) <= kMaxNumericId;
}

bool IsRecord(const wchar_t* value)
{
    const auto address = reinterpret_cast<UINT_PTR>(value);
    return address > kMaxNumericId && (address & 3) == 0 && value[0] == TQLANG_MARKER;
}

// Translators mark text that is not to be shown with a leading "^*".
int StripHiddenMarker(wchar_t* text, int length)
{
    if (length < 2 || text[0] != L'^' || text[1] != L'*') return length;
    wmemmove(text, text + 2, length - 1); // with the terminator
    return length - 2;
}

int CopyText(const wchar_t* text, wchar_t* buffer, int capacity)
{
    const int length = static_cast<int>(wcsnlen(text, capacity - 1));
    wmemcpy(buffer, text, length);
    buffer[length] = 0;
    return length;
}

// A record's text in the handle's language. A numeric slot is looked up once in the language
// module and the slot then holds the text (or the English text when there is none), so every
// later use is a plain read.
const wchar_t* ResolveRecord(tagTQLANG* lang, const wchar_t* id)
{
    auto* record = reinterpret_cast<TQLANGRECORD*>(const_cast<wchar_t*>(id));
    const int count = record->marker[1] & 0xFF;
    if (count < 1) return g_emptyString;
    int slot = LangIndex(lang);
    if (slot > count) slot = count;
    const wchar_t* value = record->slots[slot - 1];
    if (!IsNumericId(value)) return value;

    // The language is taken from the table entry behind the slot's own; that off-by-one is how
    // the records have always resolved, and only numeric slots can notice it.
    const LANGID language =
        slot < TQLANG_SLOTCOUNT ? LANGIDFROMLCID(g_tqLangLcids[slot]) : LANGID(LANG_NEUTRAL);
    const HMODULE module = lang ? lang->langModule : nullptr;
    int length = 0;
    const wchar_t* text =
        module ? FindStringResource(module, static_cast<UINT>(reinterpret_cast<UINT_PTR>(value)),
                                    language, &length)
               : nullptr;
    if (text && text[length] == 0)
    {
        record->slots[slot - 1] = text;
        return text;
    }
    const wchar_t* english = record->slots[0];
    if (IsNumericId(english)) return g_emptyString;
    record->slots[slot - 1] = english;
    return english;
}

int CompareCached(UINT_PTR, const void* key, const void* item)
{
    const UINT id = *static_cast<const UINT*>(key);
    const UINT other = static_cast<const CachedString*>(item)->id;
    return id < other ? -1 : id > other ? 1 : 0;
}

int CopyCounted(const wchar_t* text, int length, wchar_t* buffer, int capacity)
{
    if (!text) return 0;
    if (length > capacity - 1) length = capacity - 1;
    wmemcpy(buffer, text, length);
    buffer[length] = 0;
    return length;
}

// The language module in the handle's language; then, when there is no language module apart
// from the module, the module's US English text; else, or failing that, the module's text in the
// language the system picks.
int LoadNumeric(tagTQLANG* lang, UINT id, wchar_t* buffer, int capacity)
{
    buffer[0] = 0;
    if (!lang) return LoadStringW(GetModuleHandleW(nullptr), id, buffer, capacity);
    int length = 0;
    if (lang->useLangModule && lang->langModule)
    {
        const LANGID language = LANGIDFROMLCID(EffectiveLcid(lang));
        const wchar_t* text = FindStringResource(lang->langModule, id, language, &length);
        if (text) return CopyCounted(text, length, buffer, capacity);
    }
    if (lang->module == lang->langModule)
    {
        const wchar_t* text = FindStringResource(lang->module, id, kUsEnglish, &length);
        if (text) return CopyCounted(text, length, buffer, capacity);
    }
    return LoadStringW(lang->module, id, buffer, capacity);
}

const wchar_t* CachedNumeric(tagTQLANG* lang, UINT id)
{
    LangLock hold(lang);
    tTQLIST* cache = lang->stringCache;
    if (!cache) return g_emptyString;
    const INT32 found = TqList_FindSortedItemRange(cache, &id, 0, -1, CompareCached);
    auto** items = static_cast<CachedString**>(cache->items);
    if (found >= 0) return items[found]->text;

    wchar_t text[kLoadChars];
    const int length = TqLoadString(lang, MAKEINTRESOURCEW(id), text, kLoadChars);
    if (length <= 0) return g_emptyString;
    const SIZE_T size = offsetof(CachedString, text) + (length + 1) * sizeof(wchar_t);
    const INT32 at = TqList_FindSortedInsertIndexRange(cache, &id, 0, -1, CompareCached);
    INT32 inserted = -1;
    if (FAILED(TqList_AllocAndInsertItem(cache, nullptr, size, at, &inserted)) || inserted < 0)
        return g_emptyString;
    CachedString* item = static_cast<CachedString**>(cache->items)[inserted];
    item->id = id;
    wmemcpy(item->text, text, length + 1);
    return item->text;
}

} // namespace
} // namespace tq::lang

using namespace tq::lang;

TQKERNEL_API BOOL IsTQLANGSTRINGID(HTQLANG, const wchar_t* value)
{
    return IsRecord(value);
}

TQKERNEL_API const wchar_t* TqGetString(HTQLANG lang, const wchar_t* id)
{
    tagTQLANG* h = Resolve(lang);
    if (IsNumericId(id))
    {
        if (!h) return g_emptyString;
        return CachedNumeric(h, static_cast<UINT>(reinterpret_cast<UINT_PTR>(id)));
    }
    return IsRecord(id) ? ResolveRecord(h, id) : id;
}

TQKERNEL_API const wchar_t* TqGetStringSmart(HTQLANG lang, const wchar_t* value)
{
    return value ? TqGetString(lang, value) : nullptr;
}

TQKERNEL_API int TqLoadString(HTQLANG lang, const wchar_t* id, wchar_t* buffer, int capacity)
{
    if (!buffer || capacity < 1) return 0;
    tagTQLANG* h = Resolve(lang);
    int length = 0;
    if (IsNumericId(id))
        length =
            LoadNumeric(h, static_cast<UINT>(reinterpret_cast<UINT_PTR>(id)), buffer, capacity);
    else
        length = CopyText(IsRecord(id) ? ResolveRecord(h, id) : id, buffer, capacity);
    return StripHiddenMarker(buffer, length);
}

TQKERNEL_API wchar_t* TqGetTempStringBuffer(HTQLANG lang, UINT chars)
{
    tagTQLANG* h = Resolve(lang);
    if (!h || !h->tempBuffer || chars >= h->tempChars) return nullptr;
    LangLock hold(h);
    // Also wrap when the block would run past the end, which the reserve alone cannot promise
    // for blocks larger than the reserve.
    if (h->tempPos > h->tempChars - h->tempReserve || h->tempPos + chars + 1 > h->tempChars)
        h->tempPos = 0;
    wchar_t* block = h->tempBuffer + h->tempPos;
    if (chars == 0) block[0] = 0;
    h->tempPos = (h->tempPos + chars + 2) & ~1u;
    return block;
}

TQKERNEL_API const wchar_t* TqGetPrintFromWideString(HTQLANG lang, const wchar_t* text)
{
    const tagTQLANG* h = Resolve(lang);
    if (!h || !h->tempBuffer || !text) return g_emptyString;
    return text;
}

TQKERNEL_API const wchar_t* TqGetWideFromPrintString(HTQLANG lang, const wchar_t* text)
{
    return TqGetPrintFromWideString(lang, text);
}

TQKERNEL_API const char* TqGetMultiByteFromPrintString(HTQLANG lang, const wchar_t* text)
{
    static const char empty[1] = {};
    if (!text) return empty;
    const int bytes = WideCharToMultiByte(CP_ACP, 0, text, -1, nullptr, 0, nullptr, nullptr);
    if (bytes <= 0) return empty;
    auto* block = reinterpret_cast<char*>(TqGetTempStringBuffer(lang, (bytes + 1) / 2));
    if (!block) return empty;
    if (WideCharToMultiByte(CP_ACP, 0, text, -1, block, bytes, nullptr, nullptr) <= 0) return empty;
    return block;
}

TQKERNEL_API const wchar_t* TqGetPrintFromMultiByteString(HTQLANG lang, const char* text)
{
    if (!text) return g_emptyString;
    const int chars = MultiByteToWideChar(CP_ACP, 0, text, -1, nullptr, 0);
    if (chars <= 0) return g_emptyString;
    wchar_t* block = TqGetTempStringBuffer(lang, chars);
    if (!block) return g_emptyString;
    if (MultiByteToWideChar(CP_ACP, 0, text, -1, block, chars) <= 0) return g_emptyString;
    return block;
}
