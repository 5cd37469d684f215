// The broadcast-wave record: its owned texts, accessors and freeing.
#include "bwfinternal.h"
#include "lockedblock.h"

#include <cstring>

using tq::media::AllocLocked;
using tq::media::FreeLocked;

namespace tq::bwf {

WCHAR* CopyText(const WCHAR* text) noexcept
{
    if (!text) return nullptr;
    const SIZE_T bytes = (static_cast<SIZE_T>(lstrlenW(text)) + 1) * sizeof(WCHAR);
    auto* copy = static_cast<WCHAR*>(AllocLocked(bytes));
    if (copy) std::memcpy(copy, text, bytes);
    return copy;
}

char* CopyText(const char* text) noexcept
{
    if (!text) return nullptr;
    const SIZE_T bytes = std::strlen(text) + 1;
    auto* copy = static_cast<char*>(AllocLocked(bytes));
    if (copy) std::memcpy(copy, text, bytes);
    return copy;
}

void FreeText(WCHAR*& text) noexcept
{
    FreeLocked(text);
    text = nullptr;
}

// Without recursion: a hostile document can nest as deep as it likes.
void FreeUnknown(LISTUNKNOWN* first) noexcept
{
    while (first)
    {
        if (first->child)
        {
            // Splice the children in ahead of the siblings, then free this node alone.
            LISTUNKNOWN* last = first->child;
            while (last->next)
                last = last->next;
            last->next = first->next;
            first->next = first->child;
            first->child = nullptr;
        }
        LISTUNKNOWN* next = first->next;
        FreeText(first->name);
        FreeText(first->attributes);
        FreeText(first->text);
        FreeLocked(first);
        first = next;
    }
}

bool IsTrackField(INT32 index) noexcept
{
    return index >= TQMETA_IXML_CHANNEL_INDEX && index <= TQMETA_IXML_FUNCTION;
}

bool IsSyncPointField(INT32 index) noexcept
{
    return index >= TQMETA_IXML_SYNC_POINT_TYPE && index <= TQMETA_IXML_SYNC_POINT_EVENT_DURATION;
}

bool IsSingleLeaf(INT32 index) noexcept
{
    const _tagIxml_Info* row = RowOf(index);
    return row && row->name && row->kind != TQIXML_KIND_CONTAINER && index < TQMETA_IXML_END &&
           !IsTrackField(index) && !IsSyncPointField(index);
}

const _tagIxml_Info* Rows(INT32& count) noexcept
{
    return GetTblIxmlInfo(&count);
}

const _tagIxml_Info* RowOf(INT32 index) noexcept
{
    const INT32 row = GetIxmlInfoIndexForMetaIdxGlobal(nullptr, index);
    INT32 count = 0;
    return row < 0 ? nullptr : &Rows(count)[row];
}

} // namespace tq::bwf

using namespace tq::bwf;

namespace {

WCHAR** EntrySlot(_tagTQBWF_Chunk* chunk, INT32 entry, INT32 index)
{
    if (IsTrackField(index) && entry >= 0 && entry < TQBWF_MAX_TRACKS)
        return &chunk->tracks[entry][index - TQMETA_IXML_CHANNEL_INDEX];
    if (IsSyncPointField(index) && entry >= 0 && entry < TQBWF_MAX_SYNC_POINTS)
        return &chunk->syncPoints[entry][index - TQMETA_IXML_SYNC_POINT_TYPE];
    return nullptr;
}

HRESULT Replace(WCHAR*& slot, const WCHAR* text)
{
    WCHAR* copy = nullptr;
    if (text && !(copy = CopyText(text))) return E_OUTOFMEMORY;
    FreeText(slot);
    slot = copy;
    return S_OK;
}

} // namespace

namespace tq::bwf {

void FreeIxmlPart(_tagTQBWF_Chunk* chunk) noexcept
{
    for (WCHAR*& value : chunk->values)
        FreeText(value);
    for (auto& track : chunk->tracks)
        for (WCHAR*& value : track)
            FreeText(value);
    for (auto& point : chunk->syncPoints)
        for (WCHAR*& value : point)
            FreeText(value);
    FreeUnknown(chunk->unknownRoot.child);
    FreeText(chunk->unknownRoot.name);
    chunk->unknownRoot = {};
    chunk->trackCount = 0;
    chunk->syncPointCount = 0;
    chunk->ixmlRead = FALSE;
}

} // namespace tq::bwf

TQKERNEL_API void FreeBwfChunkGlobal(_tagTQBWF_Chunk* chunk)
{
    if (!chunk) return;
    FreeLocked(chunk->codingHistory);
    FreeIxmlPart(chunk);
    std::memset(chunk, 0, sizeof *chunk);
}

TQKERNEL_API LISTUNKNOWN* GetIxmlUnknownTagRoot(_tagTQBWF_Chunk* chunk)
{
    return chunk ? &chunk->unknownRoot : nullptr;
}

TQKERNEL_API void SetNodeLevelGlobal(_tagTQBWF_Chunk* chunk, INT32 level)
{
    if (chunk) chunk->nodeLevel = level < 0 ? 0 : level;
}

TQKERNEL_API INT32 GetNodeLevelGlobal(const _tagTQBWF_Chunk* chunk)
{
    return chunk ? chunk->nodeLevel : 0;
}

TQKERNEL_API const char* GetIxmlCodingHistoryValueGlobal(const _tagTQBWF_Chunk* chunk)
{
    return chunk ? chunk->codingHistory : nullptr;
}

TQKERNEL_API HRESULT SetIxmlCodingHistoryValueGlobal(_tagTQBWF_Chunk* chunk, const char* text)
{
    if (!chunk) return E_INVALIDARG;
    char* copy = nullptr;
    if (text && !(copy = CopyText(text))) return E_OUTOFMEMORY;
    FreeLocked(chunk->codingHistory);
    chunk->codingHistory = copy;
    return S_OK;
}

TQKERNEL_API const WCHAR* GetIxmlValueGlobal(const _tagTQBWF_Chunk* chunk, INT32 index)
{
    if (!chunk || !IsSingleLeaf(index)) return nullptr;
    return chunk->values[index];
}

TQKERNEL_API HRESULT SetIxmlValueGlobal(_tagTQBWF_Chunk* chunk, INT32 index, const WCHAR* text)
{
    if (!chunk || !IsSingleLeaf(index)) return E_INVALIDARG;
    return Replace(chunk->values[index], text);
}

TQKERNEL_API const WCHAR* GetIxmlEntryValueGlobal(const _tagTQBWF_Chunk* chunk, INT32 entry,
                                                  INT32 index)
{
    if (!chunk) return nullptr;
    const INT32 count = IsTrackField(index) ? chunk->trackCount : chunk->syncPointCount;
    if (entry >= count) return nullptr;
    WCHAR** slot = EntrySlot(const_cast<_tagTQBWF_Chunk*>(chunk), entry, index);
    return slot ? *slot : nullptr;
}

TQKERNEL_API HRESULT SetIxmlEntryValueGlobal(_tagTQBWF_Chunk* chunk, INT32 entry, INT32 index,
                                             const WCHAR* text)
{
    if (!chunk) return E_INVALIDARG;
    INT32& count = IsTrackField(index) ? chunk->trackCount : chunk->syncPointCount;
    WCHAR** slot = EntrySlot(chunk, entry, index);
    if (!slot || entry > count) return E_INVALIDARG;
    WCHAR* copy = nullptr;
    if (text && !(copy = CopyText(text))) return E_OUTOFMEMORY;
    if (entry == count)
    {
        // A new entry starts empty, whatever an entry dropped before left in its place.
        WCHAR** first = IsTrackField(index) ? chunk->tracks[entry] : chunk->syncPoints[entry];
        const INT32 fields = IsTrackField(index) ? TQBWF_TRACK_FIELDS : TQBWF_SYNC_POINT_FIELDS;
        for (INT32 i = 0; i < fields; ++i)
            FreeText(first[i]);
        ++count;
    }
    FreeText(*slot);
    *slot = copy;
    return S_OK;
}
