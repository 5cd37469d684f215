// Tests of the Wave64 chunk layer on files built in code, and on a sparse file past 4 GiB.
#include "riff64.h"
#include "wavefile.h"

#include "kernel/media/wave64image.h"

#include <gtest/gtest.h>

using namespace tq::test;

namespace {

const GUID kOther = {0x12345678, 0x9ABC, 0xDEF0, {1, 1, 2, 3, 5, 8, 13, 21}};

} // namespace

// A chunk written in one go leaves its padding out of the stored size; one finished afterwards
// counts it. Both must walk the same.
TEST(Riff64Chunks, BothWaysOfCountingThePaddingWalkAlike)
{
    TempFile f;
    const Bytes payload = Pattern(18, 1);
    ULONGLONG written = 0;
    ASSERT_EQ(riff64_WriteChunk(f.Handle(), &RIFF64_GUID_FMT, payload.data(), 18, &written), S_OK);
    EXPECT_EQ(written, 48u);
    EXPECT_EQ(f.Pos(), 48u);
    ASSERT_EQ(riff64_WriteChunkToFile(f.Handle(), &kOther, payload.data(), 18), S_OK);
    EXPECT_EQ(f.Pos(), 96u);
    ASSERT_EQ(riff64_WriteChunk(f.Handle(), &kTestGuid, "tail", 4, nullptr), S_OK);
    EXPECT_EQ(f.Read(16, 8), U64(42));
    EXPECT_EQ(f.Read(48 + 16, 8), U64(48));
    EXPECT_EQ(f.Read(24, 18), payload);
    EXPECT_EQ(f.Read(42, 6), Bytes(6, 0)) << "padding is zeros";

    f.Seek(0);
    ULONGLONG size = 0;
    ASSERT_EQ(riff64_FindChunkHeader(f.Handle(), &kTestGuid, &size, nullptr), S_OK);
    EXPECT_EQ(size, 4u);
    EXPECT_EQ(f.Pos(), 120u);
    f.Seek(0);
    ASSERT_EQ(riff64_FindChunkHeader(f.Handle(), &kOther, &size, nullptr), S_OK);
    EXPECT_EQ(size, 24u) << "the padding counted in the size reads as payload";

    // Reading steps to the next multiple of 8, also without the last chunk's padding.
    f.Seek(24);
    Bytes back(18);
    ASSERT_EQ(riff64_ReadData(f.Handle(), back.data(), 18), S_OK);
    EXPECT_EQ(back, payload);
    EXPECT_EQ(f.Pos(), 48u);
    TempFile cut(GuidBytes(kTestGuid) + U64(29) + Text("abcde"));
    cut.Seek(0);
    ASSERT_EQ(riff64_ReadChunkHeader(cut.Handle(), nullptr, &size), S_OK);
    ASSERT_EQ(size, 5u);
    Bytes five(5);
    EXPECT_EQ(riff64_ReadData(cut.Handle(), five.data(), 5), S_OK);
    EXPECT_EQ(cut.Pos(), 32u);
}

TEST(Riff64Header, FileAndChunkHeaders)
{
    const Bytes body = W64Chunk(RIFF64_GUID_FMT, Pattern(16));
    const struct
    {
        const char* name;
        Bytes file;
        HRESULT hr;
        ULONGLONG size;
    } cases[] = {
        {"honest", W64File(body), S_OK, body.size()},
        {"stored size below the header", W64File(body, RIFF64_GUID_WAVE, 8), S_OK, 0},
        {"other form", W64File(body, kOther), S_OK, body.size()},
        {"RIFF instead", Riff(Chunk("fmt ", Pattern(16))), TQ_E_NORIFFHEADER, 0},
        {"cut inside the size", Cut(W64File(body), 20), TQ_E_NORIFFHEADER, 0},
        {"cut inside the form", Cut(W64File(body), 30), TQ_E_READFAILED, 0},
    };
    for (const auto& c : cases)
    {
        TempFile f(c.file);
        ULONGLONG size = 99;
        GUID form = {};
        EXPECT_EQ(riff64_ReadFileID(f.Handle(), &size, &form), c.hr) << c.name;
        EXPECT_EQ(size, c.size) << c.name;
    }

    // Stored sizes below 24 read as an empty payload.
    TempFile small(GuidBytes(kOther) + U64(10) + GuidBytes(RIFF64_GUID_LIST) + U64(30) +
                   GuidBytes(kTestGuid));
    GUID id = {};
    ULONGLONG size = 99;
    ASSERT_EQ(riff64_ReadChunkHeader(small.Handle(), &id, &size), S_OK);
    EXPECT_TRUE(IsEqualGUID(id, kOther));
    EXPECT_EQ(size, 0u);
    EXPECT_EQ(riff64_ReadListHeader(small.Handle(), &id, &size), TQ_E_CORRUPTFILE)
        << "a list too small for its type";
    small.Seek(0);
    EXPECT_EQ(riff64_ReadListHeader(small.Handle(), &id, &size), TQ_E_NOLISTHEADER);

    const struct
    {
        ULONGLONG size;
        HRESULT hr;
    } validation[] = {{48, S_OK},
                      {0, TQ_E_ZEROLENGTHCHUNK},
                      {42, TQ_E_BADCHUNKHEADER},
                      {0x800000000ull, TQ_E_BADCHUNKHEADER},
                      {0x1000000000ull, S_OK}};
    for (const auto& v : validation)
        EXPECT_EQ(riff64_ValidateChunkHeader(&kOther, v.size), v.hr) << v.size;
}

TEST(Riff64Search, BoundsListsAndEntries)
{
    const Bytes entries = W64Chunk(kOther, Pattern(3)) + W64Chunk(kTestGuid, Pattern(9), true);
    const Bytes file =
        W64File(W64Chunk(RIFF64_GUID_FMT, Pattern(16)) + W64List(kOther, Pattern(8)) +
                W64List(kTestGuid, entries) + W64Chunk(RIFF64_GUID_DATA, Pattern(5)));
    TempFile f(file);

    ULONGLONG size = 0;
    ULONGLONG left = 0;
    ASSERT_EQ(riff64_FindChunkHeaderInRIFF(f.Handle(), &RIFF64_GUID_DATA, &size, &left), S_OK);
    EXPECT_EQ(size, 5u);
    EXPECT_EQ(left, 8u) << "the match's payload is not taken off";
    EXPECT_EQ(f.Pos(), file.size() - 8);
    EXPECT_EQ(riff64_FindChunkHeaderInRIFF(f.Handle(), &RIFF64_GUID_JUNK, &size, &left),
              TQ_E_NOTFOUND);

    ULONGLONG remaining = 23;
    f.Seek(40);
    EXPECT_EQ(riff64_FindChunkHeader(f.Handle(), &RIFF64_GUID_FMT, &size, &remaining),
              TQ_E_NOTFOUND);
    EXPECT_EQ(remaining, 23u);
    remaining = 100;
    f.Seek(40);
    ASSERT_EQ(riff64_FindChunkHeader(f.Handle(), &RIFF64_GUID_LIST, &size, &remaining), S_OK);
    EXPECT_EQ(remaining, 100u - 24 - 16 - 24) << "fmt's header and payload, the list's header";

    ASSERT_EQ(riff64_FindListChunkFromStart(f.Handle(), &kTestGuid, &size), S_OK);
    EXPECT_EQ(size, entries.size());
    ULONGLONG pos = 0;
    ASSERT_EQ(riff64_SaveLocation(f.Handle(), &pos), S_OK);
    DWORD count = 0;
    ULONGLONG bound = size;
    ASSERT_EQ(riff64_GetNumListEntries(f.Handle(), &count, &bound), S_OK);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(bound, size) << "not changed";
    EXPECT_EQ(f.Pos(), pos) << "restored";
    ASSERT_EQ(riff64_SeekListEntry(f.Handle(), 1, &bound), S_OK);
    GUID id = {};
    ASSERT_EQ(riff64_ReadChunkHeader(f.Handle(), &id, &size), S_OK);
    EXPECT_TRUE(IsEqualGUID(id, kTestGuid));
    ASSERT_EQ(riff64_RestoreLocation(f.Handle(), pos), S_OK);
    bound = entries.size();
    EXPECT_EQ(riff64_SeekListEntry(f.Handle(), 3, &bound), TQ_E_NOTFOUND);
    EXPECT_EQ(bound, 0u);
}

// Sizes from a damaged file cannot send a walk backwards or round in circles.
TEST(Riff64Search, HostileSizesEndTheWalk)
{
    const struct
    {
        const char* name;
        Bytes file;
    } cases[] = {
        {"size near 2^64",
         W64File(GuidBytes(kOther) + U64(~0ull - 20) + W64Chunk(RIFF64_GUID_DATA, Pattern(8)))},
        {"size that wraps to a step back",
         W64File(GuidBytes(kOther) + U64(~0ull - 47) + Pattern(40))},
        {"empty chunks to the end", W64File(GuidBytes(kOther) + U64(0) + GuidBytes(kOther) +
                                            U64(3) + GuidBytes(kOther) + U64(0))},
    };
    for (const auto& c : cases)
    {
        TempFile f(c.file);
        f.Seek(40);
        ULONGLONG size = 0;
        EXPECT_EQ(riff64_FindChunkHeader(f.Handle(), &kTestGuid, &size, nullptr), TQ_E_READFAILED)
            << c.name;
        f.Seek(40);
        DWORD count = 0;
        ULONGLONG bound = ~0ull;
        riff64_GetNumListEntries(f.Handle(), &count, &bound);
        EXPECT_LE(count, 3u) << c.name;
        tRIFF64BLOCK block = {~0ull - 7, nullptr};
        EXPECT_EQ(riff64_ReadDataAlloc(f.Handle(), &block), TQ_E_READFAILED) << c.name;
        EXPECT_EQ(block.data, nullptr);
    }
}

TEST(Riff64Write, ListOfUnknownLengthAndHeaders)
{
    TempFile f;
    ASSERT_EQ(riff64_WriteFileID(f.Handle(), &RIFF64_GUID_WAVE, 0), S_OK);
    ULONGLONG start = 0;
    ASSERT_EQ(riff64_PrepareList(f.Handle(), &kOther, &start), S_OK);
    EXPECT_EQ(start, 40u);
    ASSERT_EQ(riff64_WriteChunk(f.Handle(), &kTestGuid, "abc", 3, nullptr), S_OK);
    ASSERT_EQ(riff64_WriteToFile(f.Handle(), "xyz", 3), S_OK);
    EXPECT_EQ(riff64_AmountWritten(f.Handle(), start), 24u + 16 + 32 + 3);
    ASSERT_EQ(riff64_CompleteChunk(f.Handle(), start), S_OK);
    EXPECT_EQ(f.Pos(), 40u + 80);
    EXPECT_EQ(f.Read(40 + 16, 8), U64(80));
    ASSERT_EQ(riff64_SetRIFFSize(f.Handle(), 16 + 80), S_OK);
    EXPECT_EQ(f.Pos(), 120u) << "restored";

    GUID type = {};
    ULONGLONG size = 0;
    f.Seek(40);
    ASSERT_EQ(riff64_ReadListHeader(f.Handle(), &type, &size), S_OK);
    EXPECT_TRUE(IsEqualGUID(type, kOther));
    EXPECT_EQ(size, 40u);
    ASSERT_EQ(riff64_FindChunkHeaderInRIFF(f.Handle(), &RIFF64_GUID_LIST, &size, nullptr), S_OK);
    EXPECT_EQ(size, 56u);

    // Same layout from the plain writers.
    TempFile g;
    ASSERT_EQ(riff64_WriteFileID(g.Handle(), &RIFF64_GUID_WAVE, 16 + 80), S_OK);
    ASSERT_EQ(riff64_WriteListHeader(g.Handle(), &kOther, 16 + 32 + 8), S_OK);
    ASSERT_EQ(riff64_WriteChunk(g.Handle(), &kTestGuid, "abc", 3, nullptr), S_OK);
    ULONGLONG written = 0;
    ASSERT_EQ(riff64_WriteData(g.Handle(), "xyz", 3, &written), S_OK);
    EXPECT_EQ(written, 8u);
    EXPECT_EQ(g.Read(), f.Read());
}

TEST(Riff64Resize, SizesAndDeletion)
{
    const Bytes head = W64Chunk(RIFF64_GUID_FMT, Pattern(18));
    const Bytes middle = W64Chunk(kOther, Pattern(11, 50));
    const Bytes tail = W64Chunk(RIFF64_GUID_DATA, Pattern(4100, 9));
    const Bytes file = W64File(head + middle + tail);
    TempFile f(file);
    f.Seek(77);
    ASSERT_EQ(riff64_UpdateRIFFSize(f.Handle(), 8), S_OK);
    EXPECT_EQ(f.Read(16, 8), U64(file.size() + 8));
    EXPECT_EQ(riff64_UpdateRIFFSize(f.Handle(), -static_cast<LONGLONG>(file.size()) - 9),
              E_INVALIDARG);
    EXPECT_EQ(f.Read(16, 8), U64(file.size() + 8)) << "unchanged";
    ASSERT_EQ(riff64_UpdateRIFFSize(f.Handle(), -8), S_OK);
    EXPECT_EQ(f.Pos(), 77u);

    ULONGLONG removed = 0;
    ASSERT_EQ(riff64_DeleteChunk(f.Handle(), &kOther, &removed), S_OK);
    EXPECT_EQ(removed, middle.size());
    EXPECT_EQ(f.Read(), W64File(head + tail));

    ASSERT_EQ(riff64_DeleteChunk(f.Handle(), &RIFF64_GUID_DATA, &removed), S_OK);
    EXPECT_EQ(f.Read(), W64File(head)) << "the last chunk: nothing moves, the file is cut";
    EXPECT_EQ(riff64_DeleteChunk(f.Handle(), &RIFF64_GUID_DATA, &removed), TQ_E_NOTFOUND);

    // A chunk that claims more than the file holds is refused before anything is written.
    const Bytes lying = W64File(head + GuidBytes(kOther) + U64(5000) + Pattern(100));
    TempFile g(lying);
    EXPECT_EQ(riff64_DeleteChunk(g.Handle(), &kOther, &removed), TQ_E_CORRUPTFILE);
    EXPECT_EQ(removed, 0u);
    EXPECT_EQ(g.Read(), lying);
}

// A Wave64 file of more than 4 GiB whose body is a hole: every 64-bit size is written, walked,
// given a chunk behind the samples, and read back.
TEST(Riff64Large, SparseFilePast4GiB)
{
    TempFile f;
    const WAVEFORMATEX wfx = Pcm(2, 48000, 16);
    const ULONGLONG dataBytes = (5ull << 30) + 4 * 1000;
    const ULONGLONG end = 112 + dataBytes;
    if (!MakeSparse(f.Handle(), end)) GTEST_SKIP() << "the file system refuses sparse files";
    ASSERT_EQ(TqInsertW64Header(f.Handle(), &wfx, dataBytes, 112), S_OK);
    const Bytes first = Pattern(8, 1), last = Pattern(8, 100);
    WriteAt(f.Handle(), 112, first);
    WriteAt(f.Handle(), end - 8, last);

    f.Seek(end);
    ASSERT_EQ(riff64_WriteChunkToFile(f.Handle(), &kTestGuid, "metadata!", 9), S_OK);
    ASSERT_EQ(riff64_UpdateRIFFSize(f.Handle(), 40), S_OK);
    EXPECT_EQ(f.Read(16, 8), U64(end + 40));

    ULONGLONG size = 0;
    ASSERT_EQ(riff64_FindChunkHeaderInRIFF(f.Handle(), &RIFF64_GUID_DATA, &size, nullptr), S_OK);
    EXPECT_EQ(size, dataBytes);
    EXPECT_EQ(f.Pos(), 112u);
    ULONGLONG left = 0;
    ASSERT_EQ(riff64_FindChunkHeaderInRIFF(f.Handle(), &kTestGuid, &size, &left), S_OK);
    EXPECT_EQ(size, 16u) << "finished afterwards: the padding is counted";
    EXPECT_EQ(f.Pos(), end + 24);
    Bytes text(9);
    ASSERT_EQ(riff64_ReadData(f.Handle(), text.data(), 9), S_OK);
    EXPECT_EQ(text, Text("metadata!"));

    f.Close();
    ULONGLONG frames = 0, dataStart = 0;
    WAVEFORMATEX* got = TqGetFileWfx(f.Path().c_str(), &frames, &dataStart);
    ASSERT_NE(got, nullptr);
    EXPECT_EQ(got->nChannels, 2);
    free(got);
    EXPECT_EQ(frames, dataBytes / 4);
    EXPECT_EQ(dataStart, 112u);

    HANDLE h = CreateFileW(f.Path().c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                           OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(h, INVALID_HANDLE_VALUE);
    ULONGLONG removed = 0;
    EXPECT_EQ(riff64_DeleteChunk(h, &kTestGuid, &removed), S_OK);
    EXPECT_EQ(removed, 40u);
    EXPECT_EQ(ReadAt(h, 16, 8), U64(end));
    LARGE_INTEGER length = {};
    GetFileSizeEx(h, &length);
    EXPECT_EQ(static_cast<ULONGLONG>(length.QuadPart), end);
    EXPECT_EQ(ReadAt(h, 112, 8), first);
    EXPECT_EQ(ReadAt(h, end - 8, 8), last);
    CloseHandle(h);
}
