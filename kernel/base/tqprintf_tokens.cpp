// The process-wide table of named tokens that "$(name)" expands: a sorted, thread-safe heap list.
#include "tqprintf.h"

#include "tqlist.h"
#include "tqprintf_tokens.h"

#include <string.h>

namespace tq::printing {
namespace {

// One allocation per token: this record, then the name text and, 4-byte aligned, the value text.
struct Token
{
    const wchar_t* name;
    int valueLength;
    const wchar_t* value;
};

tTQLIST* g_tokens = nullptr;

int CompareTokens(UINT_PTR, const void* key, const void* item)
{
    return lstrcmpiW(static_cast<const Token*>(key)->name, static_cast<const Token*>(item)->name);
}

// Holds the list's own lock by hand: a lookup and its copy, or a search and its insertion, must
// not be split by another thread's change.
class TableLock
{
public:
    explicit TableLock(tTQLIST* list) : m_list(list) { EnterCriticalSection(&m_list->lock); }
    ~TableLock() { LeaveCriticalSection(&m_list->lock); }
    TableLock(const TableLock&) = delete;
    TableLock& operator=(const TableLock&) = delete;

private:
    tTQLIST* m_list;
};

const Token* TokenAt(INT32 index)
{
    return static_cast<Token* const*>(g_tokens->items)[index];
}

INT32 FindToken(const wchar_t* name)
{
    const Token key = {name, 0, nullptr};
    return TqList_FindSortedItemRange(g_tokens, &key, 0, -1, CompareTokens);
}

bool IsValidName(const wchar_t* name)
{
    return name && *name && wcslen(name) <= kMaxTokenName;
}

} // namespace

bool CopyTokenValue(const wchar_t* name, wchar_t* dest, size_t room, size_t* copied)
{
    *copied = 0;
    if (!g_tokens) return false;
    TableLock lock(g_tokens);
    const INT32 index = FindToken(name);
    if (index < 0) return false;
    const Token* token = TokenAt(index);
    const size_t length = static_cast<size_t>(token->valueLength);
    *copied = length < room ? length : room;
    memcpy(dest, token->value, *copied * sizeof(wchar_t));
    return true;
}

} // namespace tq::printing

using namespace tq::printing;

TQKERNEL_API HRESULT TqPrintF_Initialize(void)
{
    if (g_tokens) return S_OK;
    tTQLIST* list = nullptr;
    const HRESULT hr =
        TqList_CreateExZ(&list, 0, 16, 16, TQLIST_OPT_HEAP | TQLIST_OPT_THREADSAFE, 0, 0, 0);
    if (FAILED(hr)) return hr;
    g_tokens = list;
    return S_OK;
}

TQKERNEL_API void TqPrintF_Terminate(void)
{
    TqList_Destroy(g_tokens);
    g_tokens = nullptr;
}

TQKERNEL_API BOOL TqPrintF_AddToken(const wchar_t* name, const wchar_t* value)
{
    if (!g_tokens || !IsValidName(name)) return FALSE;
    if (!value) value = L"";
    const size_t nameBytes = (wcslen(name) + 1) * sizeof(wchar_t);
    const size_t valueLength = wcslen(value);
    if (valueLength > 0x7FFFFFFE) return FALSE;
    const size_t valueOffset = (sizeof(Token) + nameBytes + 3) & ~size_t{3};
    const size_t size = valueOffset + (valueLength + 1) * sizeof(wchar_t);

    TableLock lock(g_tokens);
    void* memory = nullptr;
    if (FAILED(TqList_AllocItem(g_tokens, size, &memory))) return FALSE;
    auto* token = static_cast<Token*>(memory);
    auto* bytes = static_cast<BYTE*>(memory);
    auto* nameCopy = reinterpret_cast<wchar_t*>(bytes + sizeof(Token));
    auto* valueCopy = reinterpret_cast<wchar_t*>(bytes + valueOffset);
    memcpy(nameCopy, name, nameBytes);
    memcpy(valueCopy, value, (valueLength + 1) * sizeof(wchar_t));
    *token = {nameCopy, static_cast<int>(valueLength), valueCopy};

    // The old token goes only once the new one is made, so a failure leaves the table as it was.
    const INT32 existing = FindToken(name);
    INT32 index = existing;
    if (existing < 0)
        index = TqList_FindSortedInsertIndexRange(g_tokens, token, 0, -1, CompareTokens);
    if (FAILED(TqList_InsertList(g_tokens, index, nullptr, -1)))
    {
        TqList_DeleteList(g_tokens, -1, -1, FALSE);
        return FALSE;
    }
    if (existing >= 0) TqList_DeleteList(g_tokens, existing + 1, 1, FALSE);
    return TRUE;
}

TQKERNEL_API BOOL TqPrintF_DeleteToken(const wchar_t* name)
{
    if (!g_tokens || !IsValidName(name)) return FALSE;
    TableLock lock(g_tokens);
    const INT32 index = FindToken(name);
    if (index < 0) return FALSE;
    return SUCCEEDED(TqList_DeleteList(g_tokens, index, 1, TRUE));
}
