// Cue points and their labels to AIFF markers and back.
#include "cuemark.h"

#include "iff.h"
#include "mriff.h"

#include <cstring>
#include <memory>
#include <new>

namespace {

constexpr DWORD kCueCountBytes = 4;
// id, play position, chunk id, chunk start, block start, offset
constexpr DWORD kCuePointBytes = 24;
constexpr DWORD kMarkCountBytes = 2;
constexpr DWORD kMarkEntryBytes = 6; // id, position; the counted name follows
constexpr DWORD kMaxMarkerId = 32767;
constexpr DWORD kMaxNameBytes = 255;
constexpr DWORD kLabelIdBytes = 4;
constexpr DWORD kAdtl = RIFF_ID('a', 'd', 't', 'l');
constexpr DWORD kLabl = RIFF_ID('l', 'a', 'b', 'l');
constexpr DWORD kCueChunk = RIFF_ID('d', 'a', 't', 'a');
// A hostile list of labels could make each marker's search long; beyond this many nobody names
// markers by hand.
constexpr DWORD kMaxLabels = 65536;

DWORD Le32(const BYTE* p)
{
    return DWORD(p[0]) | DWORD(p[1]) << 8 | DWORD(p[2]) << 16 | DWORD(p[3]) << 24;
}

void PutLe32(BYTE* p, DWORD v)
{
    p[0] = BYTE(v);
    p[1] = BYTE(v >> 8);
    p[2] = BYTE(v >> 16);
    p[3] = BYTE(v >> 24);
}

// A counted name with its count byte, padded so that both together are even.
DWORD CountedBytes(DWORD length)
{
    return (1 + length + 1) & ~DWORD(1);
}

// A label's "labl" chunk: cue id, text and its terminator, padded to even; with the header.
DWORD LabelChunkBytes(DWORD length)
{
    return 8 + ((kLabelIdBytes + length + 1 + 1) & ~DWORD(1));
}

struct Name
{
    const BYTE* text;
    DWORD length;
};

// Calls f(cueId, text, length) for each "labl" of a LIST "adtl", in order, found through the
// memory twin of the RIFF layer. The text points into adtl and ends at its terminator, the
// chunk's end or the longest name a marker holds.
template <class F>
void ForEachLabel(const void* adtl, DWORD size, F&& f)
{
    if (!adtl || size < 4) return;
    const auto* base = static_cast<const BYTE*>(adtl);
    _tMRIFF m;
    // The cursor only reads.
    if (FAILED(mriff_Init(&m, const_cast<void*>(adtl), size, size))) return;
    DWORD type = 0, got = 0;
    if (!mriff_ReadFile(&m, &type, 4, &got) || type != kAdtl) return;
    DWORD remaining = size - 4;
    for (DWORD count = 0; count < kMaxLabels; ++count)
    {
        DWORD chunkSize = 0;
        if (FAILED(mriff_FindChunkHeader(&m, kLabl, &chunkSize, &remaining))) return;
        const DWORD at = mriff_GetFilePointer(&m);
        DWORD cueId = 0;
        if (chunkSize >= kLabelIdBytes && mriff_ReadFile(&m, &cueId, kLabelIdBytes, &got))
        {
            const BYTE* text = base + at + kLabelIdBytes;
            DWORD held = size - at - kLabelIdBytes;
            if (held > chunkSize - kLabelIdBytes) held = chunkSize - kLabelIdBytes;
            if (held > kMaxNameBytes) held = kMaxNameBytes;
            const auto* end = static_cast<const BYTE*>(std::memchr(text, 0, held));
            f(cueId, text, end ? static_cast<DWORD>(end - text) : held);
        }
        const ULONGLONG padded = ULONGLONG(chunkSize) + (chunkSize & 1);
        if (padded >= remaining) return;
        remaining -= static_cast<DWORD>(padded);
        mriff_TqSetFilePointer(&m, LONGLONG(at) + LONGLONG(padded), FILE_BEGIN);
    }
}

// Calls f(id, position, name, length) for each whole marker of "MARK" data, as the marker
// lookup walks them.
template <class F>
HRESULT ForEachMarker(const void* mark, DWORD size, F&& f)
{
    if (!mark || size < kMarkCountBytes) return TQ_E_CORRUPTFILE;
    const auto* p = static_cast<const BYTE*>(mark);
    const DWORD count = DWORD(p[0]) << 8 | p[1];
    DWORD at = kMarkCountBytes;
    for (DWORD i = 0; i < count && size - at >= kMarkEntryBytes + 1; ++i)
    {
        const BYTE* entry = p + at;
        const WORD id = static_cast<WORD>(entry[0] << 8 | entry[1]);
        const DWORD position =
            DWORD(entry[2]) << 24 | DWORD(entry[3]) << 16 | DWORD(entry[4]) << 8 | entry[5];
        const DWORD length = entry[6];
        const DWORD step = kMarkEntryBytes + CountedBytes(length);
        // A name cut by the chunk's end still names its marker as far as it goes.
        const DWORD held = size - at - kMarkEntryBytes - 1;
        f(id, position, entry + kMarkEntryBytes + 1, length < held ? length : held);
        if (step > size - at) break;
        at += step;
    }
    return S_OK;
}

} // namespace

TQKERNEL_API HRESULT iff_MarkFromCue(const void* cue, DWORD cueSize, const void* adtl,
                                     DWORD adtlSize, void* mark, DWORD capacity, DWORD* markSize)
{
    if (!markSize) return E_POINTER;
    *markSize = 0;
    if (!cue || cueSize < kCueCountBytes) return TQ_E_CORRUPTFILE;
    const auto* points = static_cast<const BYTE*>(cue) + kCueCountBytes;
    DWORD count = Le32(static_cast<const BYTE*>(cue));
    if (count > (cueSize - kCueCountBytes) / kCuePointBytes)
        count = (cueSize - kCueCountBytes) / kCuePointBytes;
    if (count > kMaxMarkerId) count = kMaxMarkerId;
    const auto id = [points](DWORD i) { return Le32(points + i * kCuePointBytes); };

    // Each marker's name, the first label that gives its cue id.
    const std::unique_ptr<Name[]> names(new (std::nothrow) Name[count + 1]());
    if (!names) return E_OUTOFMEMORY;
    ForEachLabel(adtl, adtlSize, [&](DWORD cueId, const BYTE* text, DWORD length) {
        // Writers number their cue points from 1 in order; anything else is looked for.
        DWORD i = cueId - 1;
        if (i >= count || id(i) != cueId)
            for (i = 0; i < count && id(i) != cueId;)
                ++i;
        if (i < count && !names[i].text) names[i] = {text, length};
    });

    bool keepIds = true;
    BYTE seen[(kMaxMarkerId + 1) / 8] = {};
    for (DWORD i = 0; i < count && keepIds; ++i)
    {
        const DWORD v = id(i);
        keepIds = v >= 1 && v <= kMaxMarkerId && !(seen[v / 8] & (1 << (v % 8)));
        if (keepIds) seen[v / 8] |= BYTE(1 << (v % 8));
    }

    DWORD size = kMarkCountBytes;
    for (DWORD i = 0; i < count; ++i)
        size += kMarkEntryBytes + CountedBytes(names[i].length);
    *markSize = size;
    if (!mark) return S_OK;
    if (capacity < size) return TQ_E_BUFFERTOOSMALL;

    auto* out = static_cast<BYTE*>(mark);
    out[0] = BYTE(count >> 8);
    out[1] = BYTE(count);
    out += kMarkCountBytes;
    for (DWORD i = 0; i < count; ++i)
    {
        const DWORD markerId = keepIds ? id(i) : i + 1;
        const DWORD position = Le32(points + i * kCuePointBytes + 20);
        out[0] = BYTE(markerId >> 8);
        out[1] = BYTE(markerId);
        out[2] = BYTE(position >> 24);
        out[3] = BYTE(position >> 16);
        out[4] = BYTE(position >> 8);
        out[5] = BYTE(position);
        out[6] = BYTE(names[i].length);
        if (names[i].length) std::memcpy(out + 7, names[i].text, names[i].length);
        const DWORD counted = CountedBytes(names[i].length);
        if (counted > 1 + names[i].length) out[7 + names[i].length] = 0;
        out += kMarkEntryBytes + counted;
    }
    return S_OK;
}

TQKERNEL_API HRESULT riff_CueFromMark(const void* mark, DWORD markSize, void* cue,
                                      DWORD cueCapacity, DWORD* cueSize, void* adtl,
                                      DWORD adtlCapacity, DWORD* adtlSize)
{
    if (!cueSize || !adtlSize) return E_POINTER;
    *cueSize = 0;
    *adtlSize = 0;
    DWORD count = 0;
    ULONGLONG labels = 0;
    HRESULT hr = ForEachMarker(mark, markSize, [&](WORD, DWORD, const BYTE*, DWORD length) {
        ++count;
        if (length) labels += LabelChunkBytes(length);
    });
    if (FAILED(hr)) return hr;
    // Markers are at most 65535 and their names 255 bytes: both sizes stay far below 4 GiB.
    const DWORD cueBytes = kCueCountBytes + count * kCuePointBytes;
    const DWORD adtlBytes = labels ? 4 + static_cast<DWORD>(labels) : 0;
    *cueSize = cueBytes;
    *adtlSize = adtlBytes;
    if (!cue && !adtl) return S_OK;
    if (!cue || cueCapacity < cueBytes || (adtlBytes && (!adtl || adtlCapacity < adtlBytes)))
        return TQ_E_BUFFERTOOSMALL;

    auto* point = static_cast<BYTE*>(cue);
    PutLe32(point, count);
    point += kCueCountBytes;
    _tMRIFF m = {};
    if (adtlBytes)
    {
        mriff_Init(&m, adtl, 0, adtlBytes);
        const DWORD type = kAdtl;
        DWORD written = 0;
        mriff_WriteFile(&m, &type, 4, &written);
    }
    return ForEachMarker(mark, markSize,
                         [&](WORD id, DWORD position, const BYTE* name, DWORD length) {
                             PutLe32(point, id);
                             PutLe32(point + 4, position);
                             PutLe32(point + 8, kCueChunk);
                             PutLe32(point + 12, 0);
                             PutLe32(point + 16, 0);
                             PutLe32(point + 20, position);
                             point += kCuePointBytes;
                             if (!length) return;
                             BYTE label[kLabelIdBytes + kMaxNameBytes + 2] = {};
                             PutLe32(label, id);
                             std::memcpy(label + kLabelIdBytes, name, length);
                             const DWORD chunk = LabelChunkBytes(length) - 8;
                             DWORD written = 0;
                             mriff_WriteChunkHeader(&m, kLabl, kLabelIdBytes + length + 1);
                             mriff_WriteFile(&m, label, chunk, &written);
                         });
}
