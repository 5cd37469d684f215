// Reading an iXML document into the broadcast-wave record: known elements into their fields,
// unknown ones into a tree that remembers where they stood.
#include "bwfinternal.h"
#include "bwftext.h"
#include "lockedblock.h"
#include "xmldocument.h"
#include "xmlescapes.h"

#include <cstring>

using namespace tq::bwf;
using tq::media::AllocLocked;
using tq::media::FreeLocked;

namespace {

// Unknown elements below this depth are dropped: the copy recurses, and a hostile document
// could nest without end.
constexpr int kMaxUnknownDepth = 48;

template <class T>
T* ItemAt(const tTQLIST& list, INT32 i)
{
    return static_cast<T*>(static_cast<void**>(list.items)[i]);
}

bool SameName(const WCHAR* a, const WCHAR* b)
{
    return a && b && CompareStringOrdinal(a, -1, b, -1, TRUE) == CSTR_EQUAL;
}

// The element's character data without entities; empty for none. Null for no memory.
WCHAR* ElementText(CTqXML_Document& doc, tagTQXML_ELEMENT* element)
{
    DWORD chars = 0;
    if (FAILED(doc.GetContentStringReqLen(element, &chars)) || chars == 0) return CopyText(L"");
    auto* text = static_cast<WCHAR*>(AllocLocked(static_cast<SIZE_T>(chars) * sizeof(WCHAR)));
    if (!text) return nullptr;
    doc.GetContentString(element, text, chars);
    TqXML_RemoveEscapes(text);
    return text;
}

bool IsBlank(const WCHAR* text)
{
    for (; *text; ++text)
        if (*text != L' ' && *text != L'\t' && *text != L'\r' && *text != L'\n') return false;
    return true;
}

class Reader
{
public:
    Reader(CTqXML_Document& doc, _tagTQBWF_Chunk* chunk) : m_doc(doc), m_chunk(chunk)
    {
        m_tail = &chunk->unknownRoot.child;
        while (*m_tail)
            m_tail = &(*m_tail)->next;
    }

    HRESULT Walk(tagTQXML_ELEMENT* container, INT32 containerIndex, INT32 entry);

private:
    const _tagIxml_Info* Known(const WCHAR* parent, const WCHAR* name) const;
    HRESULT KeepUnknown(tagTQXML_ELEMENT* element, INT32 parentIndex, INT32 afterIndex,
                        INT32 entry);
    LISTUNKNOWN* CopyUnknown(tagTQXML_ELEMENT* element, int depth);

    CTqXML_Document& m_doc;
    _tagTQBWF_Chunk* m_chunk;
    LISTUNKNOWN** m_tail;
};

const _tagIxml_Info* Reader::Known(const WCHAR* parent, const WCHAR* name) const
{
    INT32 count = 0;
    const _tagIxml_Info* rows = Rows(count);
    for (INT32 i = 0; i < count && rows[i].index < TQMETA_IXML_END; ++i)
        if (SameName(rows[i].parent, parent) && SameName(rows[i].name, name)) return &rows[i];
    return nullptr;
}

LISTUNKNOWN* Reader::CopyUnknown(tagTQXML_ELEMENT* element, int depth)
{
    auto* node = static_cast<LISTUNKNOWN*>(AllocLocked(sizeof(LISTUNKNOWN)));
    if (!node) return nullptr;
    node->name = CopyText(element->name ? element->name : L"");
    TextBuilder attributes;
    for (INT32 i = 0; i < element->attributes.count; ++i)
    {
        const auto* a = ItemAt<tagTQXML_ATTRIBUTE>(element->attributes, i);
        attributes.Append(L" ");
        attributes.Append(a->name);
        attributes.Append(L"=\"");
        attributes.Append(a->value);
        attributes.Append(L"\"");
    }
    if (!attributes.Empty()) node->attributes = CopyText(attributes.Text());
    bool failed = !node->name || attributes.Failed() || (!attributes.Empty() && !node->attributes);

    bool hasChildren = false;
    LISTUNKNOWN** tail = &node->child;
    for (INT32 i = 0; i < element->children.count && !failed; ++i)
    {
        auto* content = ItemAt<tagTQXML_CONTENT>(element->children, i);
        if (content->type != XML_CONTENT_ELEMENT) continue;
        hasChildren = true;
        if (depth + 1 >= kMaxUnknownDepth) continue;
        LISTUNKNOWN* child = CopyUnknown(&content->data.element, depth + 1);
        if (!child)
        {
            failed = true;
            break;
        }
        *tail = child;
        tail = &child->next;
    }
    if (!failed)
    {
        WCHAR* text = ElementText(m_doc, element);
        failed = !text;
        // Indentation between child elements is layout, not content.
        if (text && (IsBlank(text) && (hasChildren || !text[0]))) FreeText(text);
        node->text = text;
    }
    if (failed)
    {
        FreeUnknown(node);
        return nullptr;
    }
    return node;
}

HRESULT Reader::KeepUnknown(tagTQXML_ELEMENT* element, INT32 parentIndex, INT32 afterIndex,
                            INT32 entry)
{
    LISTUNKNOWN* node = CopyUnknown(element, 0);
    if (!node) return E_OUTOFMEMORY;
    node->parentIndex = parentIndex;
    node->afterIndex = afterIndex;
    node->entry = entry;
    *m_tail = node;
    m_tail = &node->next;
    return S_OK;
}

HRESULT Reader::Walk(tagTQXML_ELEMENT* container, INT32 containerIndex, INT32 entry)
{
    const _tagIxml_Info* containerRow = RowOf(containerIndex);
    INT32 after = 0;
    INT32 afterEntry = entry;
    for (INT32 i = 0; i < container->children.count; ++i)
    {
        auto* content = ItemAt<tagTQXML_CONTENT>(container->children, i);
        if (content->type != XML_CONTENT_ELEMENT) continue;
        tagTQXML_ELEMENT* element = &content->data.element;
        const _tagIxml_Info* row = Known(containerRow->name, element->name);
        WCHAR** slot = nullptr;
        INT32 childEntry = -1;
        if (row && row->index == TQMETA_IXML_TRACK && m_chunk->trackCount < TQBWF_MAX_TRACKS)
            childEntry = m_chunk->trackCount++;
        else if (row && row->index == TQMETA_IXML_SYNC_POINT &&
                 m_chunk->syncPointCount < TQBWF_MAX_SYNC_POINTS)
            childEntry = m_chunk->syncPointCount++;
        else if (row && IsTrackField(row->index))
            slot = &m_chunk->tracks[entry][row->index - TQMETA_IXML_CHANNEL_INDEX];
        else if (row && IsSyncPointField(row->index))
            slot = &m_chunk->syncPoints[entry][row->index - TQMETA_IXML_SYNC_POINT_TYPE];
        else if (row && row->kind != TQIXML_KIND_CONTAINER)
            slot = &m_chunk->values[row->index];

        HRESULT hr = S_OK;
        if (row && row->kind == TQIXML_KIND_CONTAINER &&
            (childEntry >= 0 ||
             (row->index != TQMETA_IXML_TRACK && row->index != TQMETA_IXML_SYNC_POINT)))
        {
            hr = Walk(element, row->index, childEntry);
            after = row->index;
            afterEntry = childEntry;
        }
        else if (slot && !*slot)
        {
            *slot = ElementText(m_doc, element);
            if (!*slot) hr = E_OUTOFMEMORY;
            after = row->index;
            afterEntry = entry;
        }
        else
        {
            // Unknown, a second copy of a field, or an entry past the limit: kept as it was.
            hr = KeepUnknown(element, containerIndex, after, afterEntry);
        }
        if (FAILED(hr)) return hr;
    }
    return S_OK;
}

} // namespace

TQKERNEL_API HRESULT ExtractIxmlContent(const void* data, DWORD size, _tagTQBWF_Chunk* chunk)
{
    if (!data || !chunk) return E_INVALIDARG;
    // A document replaces whatever iXML the record held; bext stays.
    FreeIxmlPart(chunk);
    HRESULT hr = E_FAIL;
    {
        CTqXML_Document doc;
        const HRESULT opened = doc.OpenMemoryUtf8(data, size);
        if (opened == E_OUTOFMEMORY) return opened;
        if (SUCCEEDED(opened))
        {
            doc.ParseFile();
            tagTQXML_CONTENT* content = nullptr;
            const TQXML_FINDCURSOR cursor = doc.FindContentFirst(nullptr, &content);
            while (content && !(content->type == XML_CONTENT_ELEMENT &&
                                SameName(content->data.element.name, L"BWFXML")))
            {
                if (FAILED(doc.FindContentNext(cursor, &content))) content = nullptr;
            }
            if (cursor != TQXML_NOCURSOR) doc.FindContentClose(cursor);
            if (content)
            {
                chunk->ixmlRead = TRUE;
                if (!chunk->unknownRoot.name)
                    chunk->unknownRoot.name = CopyText(L"<Unknown iXML Element List>");
                Reader reader(doc, chunk);
                hr = reader.Walk(&content->data.element, TQMETA_IXML_BWFXML, -1);
            }
        }
        doc.CloseMemory();
    }
    return hr;
}
