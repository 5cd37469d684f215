// The XML document: opening, closing, and the lookups in a parsed tree.
#include "xmldocument.h"

#include "xmlencoding.h"
#include "xmltree.h"

#include <cwchar>

using namespace tq::xml;

namespace {

struct FindCursor
{
    tagTQXML_ELEMENT* element; // null: the top level
    INT32 index;
};

// Copies text, cut to capacity and always terminated; 0x8004E03C when cut.
HRESULT CopyCut(const WCHAR* text, WCHAR* buffer, DWORD capacity) noexcept
{
    if (!buffer || capacity == 0) return E_INVALIDARG;
    const size_t length = wcslen(text);
    const size_t copied = length < capacity ? length : capacity - 1;
    wmemcpy(buffer, text, copied);
    buffer[copied] = L'\0';
    return copied == length ? S_OK : TQ_E_BUFFERTOOSMALL;
}

// The index of an open cursor, or -1. Cursors are mostly used like a stack, so the newest is
// tried first.
INT32 CursorIndex(tTQLIST* cursors, TQXML_FINDCURSOR cursor) noexcept
{
    if (!cursors || cursor == TQXML_NOCURSOR || cursors->count == 0) return -1;
    void* item = reinterpret_cast<void*>(cursor);
    const INT32 last = cursors->count - 1;
    if (ItemAt<void>(cursors, last) == item) return last;
    return TqList_FindSpecificItemRange(cursors, 0, -1, item);
}

} // namespace

CTqXML_Document::CTqXML_Document() noexcept = default;

CTqXML_Document::~CTqXML_Document()
{
    Close();
}

// --- Opening and closing ---

HRESULT CTqXML_Document::OpenFile(const WCHAR* path) noexcept
{
    Close();
    if (!path) return E_INVALIDARG;
    if (const HRESULT hr = m_mapped.Open(path); FAILED(hr)) return hr;
    if (const HRESULT hr = Open(m_mapped.Data(), m_mapped.Size()); FAILED(hr))
    {
        m_mapped.Close();
        return hr;
    }
    lstrcpynW(m_path, path, MAX_PATH);
    return S_OK;
}

HRESULT CTqXML_Document::OpenMemory(const void* data, DWORD size) noexcept
{
    Close();
    if (!data && size) return E_INVALIDARG;
    if (size == 0) return TQ_E_CORRUPTFILE;
    // Text runs are converted with int counts; no document of this kind comes near the limit.
    if (size >= 0x80000000u) return E_INVALIDARG;
    return Open(static_cast<const BYTE*>(data), size);
}

HRESULT CTqXML_Document::Open(const BYTE* data, DWORD size) noexcept
{
    m_encoding = CreateEncoding(data, size);
    if (!m_encoding) return E_OUTOFMEMORY;
    if (FAILED(CreateOwnedList(&m_topLevel)) ||
        FAILED(TqList_CreateExZ(&m_cursors, 0, 0, 0, TQLIST_OPT_HEAP, 0, 0, 0)))
    {
        Close();
        return E_OUTOFMEMORY;
    }
    m_data = data;
    m_size = size;
    return S_OK;
}

HRESULT CTqXML_Document::CloseFile() noexcept
{
    Close();
    return S_OK;
}

HRESULT CTqXML_Document::CloseMemory() noexcept
{
    Close();
    return S_OK;
}

void CTqXML_Document::Close() noexcept
{
    ClearCursors();
    ClearTree();
    TqList_Destroy(m_cursors);
    m_cursors = nullptr;
    if (TqList_IsListFast(&m_topLevel)) TqList_Destroy(&m_topLevel);
    if (m_encoding) m_encoding->Release();
    m_encoding = nullptr;
    m_mapped.Close();
    if (m_owned) GlobalFree(m_owned);
    m_owned = nullptr;
    m_data = nullptr;
    m_size = 0;
    m_path[0] = L'\0';
}

void CTqXML_Document::ClearTree() noexcept
{
    m_current = nullptr;
    if (!TqList_IsListFast(&m_topLevel)) return;
    while (m_topLevel.count > 0)
        FreeBranch(&m_topLevel, ItemAt<tagTQXML_CONTENT>(&m_topLevel, m_topLevel.count - 1));
}

void CTqXML_Document::ClearCursors() noexcept
{
    if (m_cursors) TqList_DeleteList(m_cursors, 0, -1, FALSE);
}

tTQLIST* CTqXML_Document::Siblings(tagTQXML_ELEMENT* parent) noexcept
{
    return parent ? &parent->children : &m_topLevel;
}

// --- Walking ---

TQXML_FINDCURSOR CTqXML_Document::FindContentFirst(tagTQXML_ELEMENT* element,
                                                   tagTQXML_CONTENT** content) noexcept
{
    if (content) *content = nullptr;
    if (!m_cursors || !content) return TQXML_NOCURSOR;
    tTQLIST* list = Siblings(element);
    if (!TqList_IsListFast(list) || list->count == 0) return TQXML_NOCURSOR;
    const FindCursor initial = {element, 0};
    INT32 index = -1;
    if (FAILED(TqList_AllocAndInsertItem(m_cursors, &initial, sizeof initial, -1, &index)))
        return TQXML_NOCURSOR;
    *content = ItemAt<tagTQXML_CONTENT>(list, 0);
    return reinterpret_cast<TQXML_FINDCURSOR>(ItemAt<FindCursor>(m_cursors, index));
}

HRESULT CTqXML_Document::FindContentNext(TQXML_FINDCURSOR cursor,
                                         tagTQXML_CONTENT** content) noexcept
{
    if (content) *content = nullptr;
    if (CursorIndex(m_cursors, cursor) < 0) return E_HANDLE;
    if (!content) return E_POINTER;
    auto* at = reinterpret_cast<FindCursor*>(cursor);
    const tTQLIST* list = Siblings(at->element);
    if (at->index + 1 >= list->count) return TQ_E_NOTFOUND;
    *content = ItemAt<tagTQXML_CONTENT>(list, ++at->index);
    return S_OK;
}

HRESULT CTqXML_Document::FindContentClose(TQXML_FINDCURSOR cursor) noexcept
{
    const INT32 index = CursorIndex(m_cursors, cursor);
    if (index < 0) return E_HANDLE;
    return TqList_DeleteList(m_cursors, index, 1, FALSE);
}

// --- Lookups ---

HRESULT CTqXML_Document::FindChild(tagTQXML_CONTENT* content, const WCHAR* name,
                                   tagTQXML_CONTENT** child) noexcept
{
    if (child) *child = nullptr;
    if (!content || !name || !child || content->type != XML_CONTENT_ELEMENT) return E_INVALIDARG;
    const tTQLIST* children = &content->data.element.children;
    for (INT32 i = 0; i < children->count; ++i)
    {
        auto* c = ItemAt<tagTQXML_CONTENT>(children, i);
        // The search stops at the first text or comment: callers look up the fields of
        // records whose elements hold only elements.
        if (c->type != XML_CONTENT_ELEMENT) break;
        if (lstrcmpW(c->data.element.name, name) == 0)
        {
            *child = c;
            return S_OK;
        }
    }
    return TQ_E_NOTFOUND;
}

HRESULT CTqXML_Document::GetCharDataContent(tagTQXML_ELEMENT* element,
                                            tagTQXML_CONTENT** content) noexcept
{
    if (content) *content = nullptr;
    if (!element || !content) return E_INVALIDARG;
    const tTQLIST* children = &element->children;
    for (INT32 i = 0; i < children->count; ++i)
    {
        auto* c = ItemAt<tagTQXML_CONTENT>(children, i);
        if (c->type == XML_CONTENT_CHARDATA)
        {
            *content = c;
            return S_OK;
        }
    }
    return TQ_E_NOTFOUND;
}

HRESULT CTqXML_Document::GetContentStringReqLen(tagTQXML_ELEMENT* element, DWORD* chars) noexcept
{
    if (chars) *chars = 0;
    if (!element || !chars) return E_INVALIDARG;
    if (element->isEmptyTag) return TQ_E_NOTFOUND;
    tagTQXML_CONTENT* text = nullptr;
    if (const HRESULT hr = GetCharDataContent(element, &text); FAILED(hr)) return hr;
    *chars = static_cast<DWORD>(wcslen(text->data.text) + 1);
    return S_OK;
}

HRESULT CTqXML_Document::GetContentString(tagTQXML_ELEMENT* element, WCHAR* buffer,
                                          DWORD capacity) noexcept
{
    if (!element || !buffer || capacity == 0) return E_INVALIDARG;
    buffer[0] = L'\0';
    if (element->isEmptyTag) return TQ_E_NOTFOUND;
    tagTQXML_CONTENT* text = nullptr;
    if (const HRESULT hr = GetCharDataContent(element, &text); FAILED(hr)) return hr;
    return CopyCut(text->data.text, buffer, capacity);
}

HRESULT CTqXML_Document::GetAttribute(tagTQXML_ELEMENT* element, const WCHAR* name,
                                      tagTQXML_ATTRIBUTE** attribute) noexcept
{
    if (attribute) *attribute = nullptr;
    if (!element || !name || !attribute) return E_INVALIDARG;
    const tTQLIST* attributes = &element->attributes;
    for (INT32 i = 0; i < attributes->count; ++i)
    {
        auto* a = ItemAt<tagTQXML_ATTRIBUTE>(attributes, i);
        if (a->name && lstrcmpW(a->name, name) == 0)
        {
            *attribute = a;
            return S_OK;
        }
    }
    return TQ_E_NOTFOUND;
}

HRESULT CTqXML_Document::GetAttributeString(tagTQXML_ELEMENT* element, const WCHAR* name,
                                            WCHAR* buffer, DWORD capacity) noexcept
{
    if (!buffer || capacity == 0) return E_INVALIDARG;
    buffer[0] = L'\0';
    tagTQXML_ATTRIBUTE* attribute = nullptr;
    if (const HRESULT hr = GetAttribute(element, name, &attribute); FAILED(hr)) return hr;
    return CopyCut(attribute->value ? attribute->value : L"", buffer, capacity);
}

HRESULT CTqXML_Document::GetChildContentString(tagTQXML_CONTENT* content, const WCHAR* name,
                                               WCHAR* buffer, DWORD capacity) noexcept
{
    if (!buffer || capacity == 0) return E_INVALIDARG;
    buffer[0] = L'\0';
    tagTQXML_CONTENT* child = nullptr;
    if (const HRESULT hr = FindChild(content, name, &child); FAILED(hr)) return hr;
    return GetContentString(&child->data.element, buffer, capacity);
}
