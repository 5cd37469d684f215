// The chunk framing under the metadata readers and writers (broadcast wave, project links): one
// implementation per file family, so that reading, replacing and deleting are written once.
#pragma once

#include "bwf.h"
#include "filecursor.h"

namespace tq::media {

// A 64-bit size or bound as the 32-bit one of the RIFF forms, which cannot count more.
inline DWORD Clamp32(ULONGLONG value) noexcept
{
    return value > MAXDWORD ? MAXDWORD : static_cast<DWORD>(value);
}

// Chunks are named by their four-character id; a framing that names chunks otherwise maps it.
// Positions and sizes are 64-bit; sizes count the data only.
class Framing
{
public:
    explicit Framing(HANDLE file) noexcept : m_cursor(file) {}
    virtual ~Framing() = default;
    Framing(const Framing&) = delete;
    Framing& operator=(const Framing&) = delete;

    tq::riff::FileCursor& Cursor() noexcept { return m_cursor; }

    // Reads the file header; an unknown form is refused.
    virtual HRESULT ReadHeader() noexcept = 0;
    // Searches the top level of the form for the chunk; the cursor ends at its data.
    virtual HRESULT Find(DWORD id, ULONGLONG& size) noexcept = 0;
    virtual DWORD HeaderBytes() const noexcept = 0;
    // The size a chunk of size data bytes takes, header and pad included.
    virtual ULONGLONG Extent(ULONGLONG size) const noexcept = 0;
    // The data size written into the header of a new chunk of size data bytes when its size
    // is to count its pad.
    virtual ULONGLONG EvenSize(ULONGLONG size) const noexcept = 0;
    // Writes a chunk header at the cursor.
    virtual HRESULT WriteHeader(DWORD id, ULONGLONG size) noexcept = 0;
    // Where a new chunk can go without touching any chunk: behind the form and behind every
    // chunk it holds, even one that claims more than the form does. A file whose form or chunks
    // claim more than the file holds (its writer died) is refused as corrupt: it wants repair,
    // and a chunk behind what it claims would leave a hole of that size.
    virtual HRESULT AppendPosition(ULONGLONG& pos) noexcept = 0;
    // Whether the format can describe a form that ends at end.
    virtual bool CanEndAt(ULONGLONG end) const noexcept = 0;
    // Makes the form end at end.
    virtual HRESULT SetFormEnd(ULONGLONG end) noexcept = 0;
    // Turns the chunk whose header starts at pos into filler of the same extent.
    virtual HRESULT MakeJunk(ULONGLONG pos) noexcept = 0;
    // Removes the chunk, moving what follows down; removed gets its extent.
    virtual HRESULT Delete(DWORD id, ULONGLONG& removed) noexcept = 0;

    // --- Lists and their entries, from the cursor, within a bound the caller keeps ---

    // The bytes of a list's type behind its header.
    virtual DWORD ListTypeBytes() const noexcept = 0;
    // Reads the header of a list's entry; an id that has no four-character form reads as 0.
    virtual HRESULT ReadEntryHeader(DWORD& id, ULONGLONG& size) noexcept = 0;
    // Counts the entries within bound; the cursor is restored.
    virtual HRESULT CountEntries(ULONGLONG bound, DWORD& count) noexcept = 0;
    // Searches for a list of that type (size: without its type) or for an entry, taking what
    // is passed over off remaining as the chunk layer of the family does.
    virtual HRESULT FindList(DWORD type, ULONGLONG& size, ULONGLONG& remaining) noexcept = 0;
    virtual HRESULT FindEntry(DWORD id, ULONGLONG& size, ULONGLONG& remaining) noexcept = 0;
    // Writes a list header at the cursor; size counts the type.
    virtual HRESULT WriteListHeader(DWORD type, ULONGLONG size) noexcept = 0;

private:
    tq::riff::FileCursor m_cursor;
};

// RIFF with 32-bit sizes.
class RiffFraming final : public Framing
{
public:
    explicit RiffFraming(HANDLE file) noexcept : Framing(file), m_file(file) {}

    HRESULT ReadHeader() noexcept override;
    HRESULT Find(DWORD id, ULONGLONG& size) noexcept override;
    DWORD HeaderBytes() const noexcept override { return 8; }
    ULONGLONG Extent(ULONGLONG size) const noexcept override { return 8 + size + (size & 1); }
    ULONGLONG EvenSize(ULONGLONG size) const noexcept override { return size + (size & 1); }
    HRESULT WriteHeader(DWORD id, ULONGLONG size) noexcept override;
    HRESULT AppendPosition(ULONGLONG& pos) noexcept override;
    bool CanEndAt(ULONGLONG end) const noexcept override;
    HRESULT SetFormEnd(ULONGLONG end) noexcept override;
    HRESULT MakeJunk(ULONGLONG pos) noexcept override;
    HRESULT Delete(DWORD id, ULONGLONG& removed) noexcept override;
    DWORD ListTypeBytes() const noexcept override { return 4; }
    HRESULT ReadEntryHeader(DWORD& id, ULONGLONG& size) noexcept override;
    HRESULT CountEntries(ULONGLONG bound, DWORD& count) noexcept override;
    HRESULT FindList(DWORD type, ULONGLONG& size, ULONGLONG& remaining) noexcept override;
    HRESULT FindEntry(DWORD id, ULONGLONG& size, ULONGLONG& remaining) noexcept override;
    HRESULT WriteListHeader(DWORD type, ULONGLONG size) noexcept override;

private:
    HANDLE m_file;
};

// How a replacement treats sizes.
enum class ChunkSizing
{
    // Text-like chunks: one replaced in place keeps its old size, with zeroes behind the data;
    // an appended one's size counts its pad.
    KeepOld,
    // Blocks whose size is part of the data: one replaced in place gets its exact size and
    // filler takes the rest of its room (when the rest can hold a filler's header).
    Exact,
};

// Replaces the first chunk of id (or else of alternate, when not 0) by data: in place when the
// old one has room, else the old one becomes filler and the new one goes behind everything.
// written (optional) gets the bytes the file grew by.
HRESULT ReplaceChunk(Framing& framing, DWORD id, DWORD alternate, const void* data, DWORD size,
                     ChunkSizing sizing, ULONGLONG* written) noexcept;
// Turns the first chunk of id into filler; S_FALSE when there is none.
HRESULT RetireChunk(Framing& framing, DWORD id) noexcept;

// Wave64: chunks named by GUIDs made from the id, 64-bit sizes that count their 24-byte header,
// chunks aligned to 8 bytes.
class Wave64Framing final : public Framing
{
public:
    explicit Wave64Framing(HANDLE file) noexcept : Framing(file), m_file(file) {}

    HRESULT ReadHeader() noexcept override;
    HRESULT Find(DWORD id, ULONGLONG& size) noexcept override;
    DWORD HeaderBytes() const noexcept override { return 24; }
    ULONGLONG Extent(ULONGLONG size) const noexcept override { return 24 + Aligned(size); }
    ULONGLONG EvenSize(ULONGLONG size) const noexcept override { return Aligned(size); }
    HRESULT WriteHeader(DWORD id, ULONGLONG size) noexcept override;
    HRESULT AppendPosition(ULONGLONG& pos) noexcept override;
    bool CanEndAt(ULONGLONG end) const noexcept override { return end >= 40; }
    HRESULT SetFormEnd(ULONGLONG end) noexcept override;
    HRESULT MakeJunk(ULONGLONG pos) noexcept override;
    HRESULT Delete(DWORD id, ULONGLONG& removed) noexcept override;
    DWORD ListTypeBytes() const noexcept override { return 16; }
    HRESULT ReadEntryHeader(DWORD& id, ULONGLONG& size) noexcept override;
    HRESULT CountEntries(ULONGLONG bound, DWORD& count) noexcept override;
    HRESULT FindList(DWORD type, ULONGLONG& size, ULONGLONG& remaining) noexcept override;
    HRESULT FindEntry(DWORD id, ULONGLONG& size, ULONGLONG& remaining) noexcept override;
    HRESULT WriteListHeader(DWORD type, ULONGLONG size) noexcept override;

private:
    static ULONGLONG Aligned(ULONGLONG size) noexcept { return (size + 7) & ~7ull; }

    HANDLE m_file;
};

// RF64: RIFF chunks, with the true sizes of the file and of "data" in "ds64". Only for files
// that carry a ds64; plain RIFF files take RiffFraming (see OpenRf64Framing).
class Rf64Framing final : public Framing
{
public:
    explicit Rf64Framing(HANDLE file) noexcept : Framing(file), m_file(file) {}

    HRESULT ReadHeader() noexcept override;
    HRESULT Find(DWORD id, ULONGLONG& size) noexcept override;
    DWORD HeaderBytes() const noexcept override { return 8; }
    ULONGLONG Extent(ULONGLONG size) const noexcept override { return 8 + size + (size & 1); }
    ULONGLONG EvenSize(ULONGLONG size) const noexcept override { return size + (size & 1); }
    HRESULT WriteHeader(DWORD id, ULONGLONG size) noexcept override;
    HRESULT AppendPosition(ULONGLONG& pos) noexcept override;
    bool CanEndAt(ULONGLONG end) const noexcept override { return end >= 12; }
    HRESULT SetFormEnd(ULONGLONG end) noexcept override;
    HRESULT MakeJunk(ULONGLONG pos) noexcept override;
    HRESULT Delete(DWORD id, ULONGLONG& removed) noexcept override;
    DWORD ListTypeBytes() const noexcept override { return 4; }
    HRESULT ReadEntryHeader(DWORD& id, ULONGLONG& size) noexcept override;
    HRESULT CountEntries(ULONGLONG bound, DWORD& count) noexcept override;
    HRESULT FindList(DWORD type, ULONGLONG& size, ULONGLONG& remaining) noexcept override;
    HRESULT FindEntry(DWORD id, ULONGLONG& size, ULONGLONG& remaining) noexcept override;
    HRESULT WriteListHeader(DWORD type, ULONGLONG size) noexcept override;

    // Whether the file carries a ds64 (the cursor is moved).
    static bool HasDs64(HANDLE file) noexcept;

private:
    HRESULT ReadDs64(ULONGLONG& riffSize, ULONGLONG& dataSize) noexcept;

    HANDLE m_file;
};

} // namespace tq::media

namespace tq::bwf {

using tq::media::Framing;

// The broadcast-wave reader and writer over any framing.
HRESULT LoadInfo(Framing& framing, _tagTQBWF_Chunk* chunk, BOOL* found, bool quick) noexcept;
HRESULT ReadFormat(Framing& framing, DWORD* sampleRate, WORD* bits, WORD* channels) noexcept;
HRESULT UpdateStreamChunk(Framing& framing, DWORD kind, const void* data, DWORD size,
                          ULONGLONG* written) noexcept;
HRESULT DeleteChunk(Framing& framing, DWORD kind, ULONGLONG* bytes) noexcept;

} // namespace tq::bwf
