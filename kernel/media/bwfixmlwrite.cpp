// Writing the broadcast-wave record as chunk data: the iXML document, with the unknown elements
// back where they stood, and the choice between it and bext.
#include "bwfinternal.h"
#include "bwftext.h"
#include "lockedblock.h"

#include <cstring>

using namespace tq::bwf;

namespace {

constexpr const WCHAR* kDeclaration = L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n";

void AppendEscaped(TextBuilder& out, const WCHAR* text)
{
    for (; text && *text; ++text)
    {
        switch (*text)
        {
        case L'&':
            out.Append(L"&amp;");
            break;
        case L'<':
            out.Append(L"&lt;");
            break;
        case L'>':
            out.Append(L"&gt;");
            break;
        default:
            out.Append(text, 1);
        }
    }
}

bool IsEntry(INT32 index)
{
    return index == TQMETA_IXML_TRACK || index == TQMETA_IXML_SYNC_POINT;
}

class Writer
{
public:
    Writer(const _tagTQBWF_Chunk* chunk, INT32 first, INT32 last)
        : m_chunk(chunk), m_first(first), m_last(last), m_unknown(last >= TQMETA_IXML_END)
    {
    }

    void Document(TextBuilder& out);

private:
    INT32 Entries(INT32 index) const
    {
        return index == TQMETA_IXML_TRACK ? m_chunk->trackCount : m_chunk->syncPointCount;
    }
    const WCHAR* Value(INT32 index, INT32 entry) const;
    bool Placed(const LISTUNKNOWN* node) const;
    void Container(TextBuilder& out, const _tagIxml_Info* row, INT32 entry, int level);
    void Children(TextBuilder& out, const _tagIxml_Info* container, INT32 entry, int level);
    void UnknownsAt(TextBuilder& out, INT32 parent, INT32 after, INT32 entry, int level);
    void Unknown(TextBuilder& out, const LISTUNKNOWN* node, int level, bool pretty);

    const _tagTQBWF_Chunk* m_chunk;
    INT32 m_first;
    INT32 m_last;
    bool m_unknown;
};

const WCHAR* Writer::Value(INT32 index, INT32 entry) const
{
    if (index < m_first || index > m_last) return nullptr;
    if (IsTrackField(index)) return m_chunk->tracks[entry][index - TQMETA_IXML_CHANNEL_INDEX];
    if (IsSyncPointField(index))
        return m_chunk->syncPoints[entry][index - TQMETA_IXML_SYNC_POINT_TYPE];
    return m_chunk->values[index];
}

// Whether the anchor of an unknown element names a place the walk reaches; those that do not
// (a host may have removed entries since) go at the end of the document instead of being lost.
bool Writer::Placed(const LISTUNKNOWN* node) const
{
    const _tagIxml_Info* parent = RowOf(node->parentIndex);
    if (!parent || parent->kind != TQIXML_KIND_CONTAINER || node->parentIndex >= TQMETA_IXML_END)
        return false;
    if (IsEntry(node->parentIndex) &&
        (node->entry < 0 || node->entry >= Entries(node->parentIndex)))
        return false;
    if (node->afterIndex == 0) return true;
    const _tagIxml_Info* after = RowOf(node->afterIndex);
    if (!after || !after->parent || lstrcmpW(after->parent, parent->name) != 0) return false;
    return !IsEntry(node->afterIndex) ||
           (node->entry >= 0 && node->entry < Entries(node->afterIndex));
}

void Writer::UnknownsAt(TextBuilder& out, INT32 parent, INT32 after, INT32 entry, int level)
{
    if (!m_unknown) return;
    const bool byEntry = IsEntry(parent) || IsEntry(after);
    for (const LISTUNKNOWN* node = m_chunk->unknownRoot.child; node; node = node->next)
    {
        if (node->parentIndex != parent || node->afterIndex != after) continue;
        if (byEntry && node->entry != entry) continue;
        if (Placed(node)) Unknown(out, node, level, true);
    }
}

void Writer::Unknown(TextBuilder& out, const LISTUNKNOWN* node, int level, bool pretty)
{
    if (pretty) out.Repeat(L'\t', level);
    out.Append(L"<");
    out.Append(node->name);
    out.Append(node->attributes);
    if (!node->text && !node->child)
        out.Append(L"/>");
    else
    {
        out.Append(L">");
        AppendEscaped(out, node->text);
        // Layout between a text and child elements would become part of the text when read
        // again, so such an element is written on one line.
        const bool nested = pretty && !node->text;
        if (nested) out.Append(L"\r\n");
        for (const LISTUNKNOWN* child = node->child; child; child = child->next)
            Unknown(out, child, level + 1, nested);
        if (nested) out.Repeat(L'\t', level);
        out.Append(L"</");
        out.Append(node->name);
        out.Append(L">");
    }
    if (pretty) out.Append(L"\r\n");
}

void Writer::Children(TextBuilder& out, const _tagIxml_Info* container, INT32 entry, int level)
{
    INT32 count = 0;
    const _tagIxml_Info* rows = Rows(count);
    UnknownsAt(out, container->index, 0, entry, level);
    for (INT32 i = 0; i < count && rows[i].index < TQMETA_IXML_END; ++i)
    {
        const _tagIxml_Info& row = rows[i];
        if (!row.parent || lstrcmpW(row.parent, container->name) != 0) continue;
        if (IsEntry(row.index))
        {
            for (INT32 e = 0; e < Entries(row.index); ++e)
            {
                Container(out, &row, e, level);
                UnknownsAt(out, container->index, row.index, e, level);
            }
            continue;
        }
        if (row.kind == TQIXML_KIND_CONTAINER)
            Container(out, &row, -1, level);
        else if (const WCHAR* value = Value(row.index, entry))
        {
            out.Repeat(L'\t', level);
            out.Append(L"<");
            out.Append(row.name);
            out.Append(L">");
            AppendEscaped(out, value);
            out.Append(L"</");
            out.Append(row.name);
            out.Append(L">\r\n");
        }
        UnknownsAt(out, container->index, row.index, entry, level);
    }
}

// A container is written only when something stands in it; the root always is.
void Writer::Container(TextBuilder& out, const _tagIxml_Info* row, INT32 entry, int level)
{
    TextBuilder inner;
    Children(inner, row, entry, level + 1);
    if (row->index == TQMETA_IXML_BWFXML && m_unknown)
        for (const LISTUNKNOWN* node = m_chunk->unknownRoot.child; node; node = node->next)
            if (!Placed(node)) Unknown(inner, node, level + 1, true);
    if (inner.Failed())
    {
        out.Fail();
        return;
    }
    if (inner.Empty() && row->index != TQMETA_IXML_BWFXML) return;
    out.Repeat(L'\t', level);
    out.Append(L"<");
    out.Append(row->name);
    out.Append(L">\r\n");
    out.Append(inner.Text(), inner.Length());
    out.Repeat(L'\t', level);
    out.Append(L"</");
    out.Append(row->name);
    out.Append(L">\r\n");
}

void Writer::Document(TextBuilder& out)
{
    out.Append(kDeclaration);
    Container(out, RowOf(TQMETA_IXML_BWFXML), -1, m_chunk->nodeLevel);
}

HRESULT BuildIxml(const _tagTQBWF_Chunk* chunk, void** buffer, DWORD* size, INT32 first, INT32 last)
{
    TextBuilder text;
    Writer(chunk, first, last).Document(text);
    if (text.Failed()) return E_OUTOFMEMORY;
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, text.Text(), static_cast<int>(text.Length()),
                                          nullptr, 0, nullptr, nullptr);
    if (bytes <= 0) return E_FAIL;
    if (size) *size = static_cast<DWORD>(bytes);
    if (!buffer) return S_OK;
    void* block = tq::media::AllocLocked(static_cast<SIZE_T>(bytes));
    if (!block) return E_OUTOFMEMORY;
    WideCharToMultiByte(CP_UTF8, 0, text.Text(), static_cast<int>(text.Length()),
                        static_cast<char*>(block), bytes, nullptr, nullptr);
    *buffer = block;
    return S_OK;
}

} // namespace

TQKERNEL_API HRESULT BuildRawBwfIxmlChunkGlobal(const _tagTQBWF_Chunk* chunk, void** buffer,
                                                DWORD* size, DWORD type, INT32 first, INT32 last)
{
    if (buffer) *buffer = nullptr;
    if (!chunk) return S_OK;
    if ((buffer && !size) || first > last) return E_INVALIDARG;
    if (type == BWF_CHUNK_BEXT) return BuildBext(chunk, buffer, size);
    if (type == BWF_CHUNK_IXML) return BuildIxml(chunk, buffer, size, first, last);
    return E_INVALIDARG;
}

TQKERNEL_API HRESULT BuildAndWriteRawIxmlChunk(HANDLE file, const _tagTQBWF_Chunk* chunk,
                                               DWORD riffType)
{
    if (!chunk || riffType > BWF_RF64) return E_INVALIDARG;
    void* data = nullptr;
    DWORD size = 0;
    if (const HRESULT hr = BuildRawBwfIxmlChunkGlobal(chunk, &data, &size, BWF_CHUNK_IXML,
                                                      TQMETA_IXML_BWFXML, TQMETA_IXML_END);
        FAILED(hr))
        return hr;
    HRESULT hr = S_OK;
    switch (riffType)
    {
    case BWF_RIFF:
        hr = bwfriff_UpdateStreamChunk(BWF_CHUNK_IXML, file, data, size, nullptr);
        break;
    case BWF_WAVE64:
        hr = bwfriff64_UpdateStreamChunk(BWF_CHUNK_IXML, file, data, size, nullptr);
        break;
    default:
        hr = bwfRF64_UpdateStreamChunk(BWF_CHUNK_IXML, file, data, size, nullptr);
    }
    tq::media::FreeLocked(data);
    return hr;
}
