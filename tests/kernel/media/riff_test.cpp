// Tests of the RIFF chunk layer on files: reading, searching, list helpers and writing.
#include "riff.h"

#include "kernel/media/riffimage.h"

#include <gtest/gtest.h>

#include <array>

using namespace tq::test;

namespace {

// "fmt " of 16 bytes, "odd " of 5 and its pad, "LIST" "INFO" with two entries, "data" of 4.
Bytes SampleFile()
{
    return Riff(Chunk("fmt ", Pattern(16)) + Chunk("odd ", Text("abcde")) +
                List("INFO", Chunk("INAM", Text("name")) + Chunk("IART", Text("art"))) +
                Chunk("data", Pattern(4, 0xA0)));
}
constexpr DWORD kOddData = 44, kListStart = 50, kDataData = 94;
constexpr DWORD kChunkBytes = 98 - 12; // the bound the file header gives

} // namespace

TEST(RiffRead, FileHeaders)
{
    TempFile f(SampleFile());
    DWORD size = 0, form = 0;
    ASSERT_EQ(riff_ReadFileID(f.Handle(), &size, &form), S_OK);
    EXPECT_EQ(size, kChunkBytes);
    EXPECT_EQ(form, Id("WAVE"));
    EXPECT_EQ(f.Pos(), 12u);

    const struct
    {
        const char* name;
        Bytes bytes;
        HRESULT expected;
    } bad[] = {
        {"wrong id", With(SampleFile(), 0, 'X'), TQ_E_NORIFFHEADER},
        {"truncated", Cut(SampleFile(), 10), TQ_E_READFAILED},
        {"size below the form", Riff({}, "WAVE", 3), TQ_E_CORRUPTFILE},
    };
    for (const auto& c : bad)
    {
        TempFile g(c.bytes);
        size = 0xDEAD;
        EXPECT_EQ(riff_ReadFileID(g.Handle(), &size, nullptr), c.expected) << c.name;
        EXPECT_EQ(size, 0u) << c.name;
    }
}

TEST(RiffRead, ChunkAndListHeaders)
{
    TempFile f(SampleFile());
    DWORD id = 0, size = 0;
    f.Seek(kListStart);
    ASSERT_EQ(riff_ReadListHeader(f.Handle(), &id, &size), S_OK);
    EXPECT_EQ(id, Id("INFO"));
    EXPECT_EQ(size, 24u); // the entries, without the type
    EXPECT_EQ(f.Pos(), kListStart + 12u);

    f.Seek(12);
    EXPECT_EQ(riff_ReadListHeader(f.Handle(), &id, &size), TQ_E_NOLISTHEADER);
    f.Seek(f.Length() - 4);
    EXPECT_EQ(riff_ReadChunkHeader(f.Handle(), &id, &size), TQ_E_READFAILED);
}

TEST(RiffRead, OddDataStepsOverThePadEvenWhenTheFileEndsBeforeIt)
{
    TempFile f(Cut(Riff(Chunk("odd ", Text("abc"))), 23));
    f.Seek(20);
    char text[4] = {};
    ASSERT_EQ(riff_ReadData(f.Handle(), text, 3), S_OK);
    EXPECT_STREQ(text, "abc");
    EXPECT_EQ(f.Pos(), 24u);

    f.Seek(20);
    EXPECT_EQ(riff_ReadData(f.Handle(), text, 4), TQ_E_READFAILED);
    EXPECT_EQ(riff_ReadData(f.Handle(), nullptr, 4), E_POINTER);
}

TEST(RiffRead, BoundedReadTakesTheRemainderFromAAndTheParityFromB)
{
    const struct
    {
        DWORD a, b, read, endsAt;
    } cases[] = {
        {5, 5, 5, 6}, // a chunk read whole, pad skipped
        {5, 3, 3, 6}, // cut to the buffer; odd buffer size: one step more
        {5, 8, 5, 5}, // even buffer size: the pad of the odd chunk stays
        {6, 4, 4, 6},
    };
    const Bytes data = Pattern(8, 1);
    for (const auto& c : cases)
    {
        TempFile f(data);
        std::array<BYTE, 10> buffer;
        buffer.fill(0xEE);
        ASSERT_EQ(riff_ReadDataBounded(f.Handle(), buffer.data(), c.a, c.b), S_OK);
        for (DWORD i = 0; i < buffer.size(); ++i)
            EXPECT_EQ(buffer[i], i < c.read ? data[i] : 0xEE) << c.a << "," << c.b << " @" << i;
        EXPECT_EQ(f.Pos(), c.endsAt) << c.a << "," << c.b;
    }
}

TEST(RiffRead, AllocatedReadGivesABlockOrNothing)
{
    TempFile f(SampleFile());
    f.Seek(kOddData);
    tRIFFBLOCK block = {5, reinterpret_cast<void*>(1)};
    ASSERT_EQ(riff_ReadDataAlloc(f.Handle(), &block), S_OK);
    ASSERT_NE(block.data, nullptr);
    EXPECT_EQ(std::memcmp(block.data, "abcde", 5), 0);
    EXPECT_EQ(f.Pos(), kOddData + 6u);
    FreeBlock(block.data);

    block = {0, reinterpret_cast<void*>(1)};
    EXPECT_EQ(riff_ReadDataAlloc(f.Handle(), &block), S_OK);
    EXPECT_EQ(block.data, nullptr);

    // A size from a damaged header that the file cannot hold: no block, no read.
    f.Seek(kDataData);
    block = {0x7FFFFFF0, nullptr};
    EXPECT_EQ(riff_ReadDataAlloc(f.Handle(), &block), TQ_E_READFAILED);
    EXPECT_EQ(block.data, nullptr);
    EXPECT_EQ(f.Pos(), kDataData);
}

TEST(RiffRead, AnsiStringIsTerminatedCutAndSizedPlusOne)
{
    TempFile f(Riff(Chunk("ICMT", Text("0123456789")) + Chunk("INAM", Text("abcdefg"))));
    wchar_t text[32];
    DWORD size = 10;
    f.Seek(20);
    ASSERT_EQ(riff_ReadANSIString(f.Handle(), text, 32, &size), S_OK);
    EXPECT_EQ(size, 11u);
    // The last byte read is forced to 0, so an unterminated chunk loses its last character.
    EXPECT_STREQ(text, L"012345678");
    EXPECT_EQ(f.Pos(), 30u);

    // Cut to the buffer; the cursor still ends behind the odd chunk and its pad.
    size = 7;
    f.Seek(38);
    ASSERT_EQ(riff_ReadANSIString(f.Handle(), text, 4, &size), S_OK);
    EXPECT_STREQ(text, L"abc");
    EXPECT_EQ(size, 8u);
    EXPECT_EQ(f.Pos(), 46u);
    EXPECT_EQ(riff_ReadANSIString(f.Handle(), nullptr, 4, &size), E_INVALIDARG);
}

TEST(RiffRead, FileSizeIsTheSizeFieldPlusFour)
{
    const Bytes bytes = Riff(Chunk("data", Pattern(80)));
    ASSERT_EQ(bytes.size(), 100u);
    TempFile f(bytes);
    f.Seek(50);
    DWORD size = 0;
    ASSERT_EQ(riff_GetFileSize(f.Handle(), &size), S_OK);
    EXPECT_EQ(size, 96u);
    EXPECT_EQ(f.Pos(), 12u);
}

TEST(RiffSearch, TheBoundDecidesWhereTheSearchEnds)
{
    const struct
    {
        const char* name;
        DWORD id;
        DWORD remaining; // MAXDWORD: no bound
        HRESULT expected;
        DWORD left;
        DWORD endsAt;
    } cases[] = {
        {"found; its data not taken off", Id("data"), kChunkBytes, S_OK, 4, kDataData},
        // 8 + 16 + 8 + 6 + 8 + 28 = 74 leaves 2.
        {"bound ends before", Id("data"), 76, TQ_E_NOTFOUND, 2, kDataData - 8},
        {"below 8 at once", Id("fmt "), 7, TQ_E_NOTFOUND, 7, 12},
        {"chunk larger than the bound", Id("data"), 20, TQ_E_NOTFOUND, 0, 36},
        {"no bound: the end of the file", Id("none"), MAXDWORD, TQ_E_READFAILED, MAXDWORD, 98},
    };
    for (const auto& c : cases)
    {
        TempFile f(SampleFile());
        f.Seek(12);
        DWORD size = 0, remaining = c.remaining;
        EXPECT_EQ(riff_FindChunkHeader(f.Handle(), c.id, &size,
                                       c.remaining == MAXDWORD ? nullptr : &remaining),
                  c.expected)
            << c.name;
        EXPECT_EQ(remaining, c.left) << c.name;
        EXPECT_EQ(f.Pos(), c.endsAt) << c.name;
    }
}

TEST(RiffSearch, InRiffSearchesFromTheStartAndReportsTheRestOfTheBound)
{
    TempFile f(SampleFile());
    f.Seek(kDataData);
    DWORD size = 0, riffSize = 0;
    ASSERT_EQ(riff_FindChunkHeaderInRIFF(f.Handle(), Id("odd "), &size, &riffSize), S_OK);
    EXPECT_EQ(size, 5u);
    EXPECT_EQ(f.Pos(), kOddData);
    EXPECT_EQ(riffSize, kChunkBytes - 24 - 8);
    EXPECT_EQ(riff_FindChunkHeaderInRIFF(f.Handle(), Id("none"), &size, &riffSize), TQ_E_NOTFOUND);
    EXPECT_EQ(riffSize, 0u);

    // A size beyond the file: the bound ends the search, without it a read fails.
    TempFile g(Riff(Header("big ", 0x7FFFFFF0) + Pattern(8) + Chunk("data", {})));
    EXPECT_EQ(riff_FindChunkHeaderInRIFF(g.Handle(), Id("data"), nullptr, nullptr), TQ_E_NOTFOUND);
    g.Seek(12);
    EXPECT_EQ(riff_FindChunkHeader(g.Handle(), Id("data"), nullptr, nullptr), TQ_E_READFAILED);
}

TEST(RiffSearch, ListsAreFoundByTypeAndOthersSkipped)
{
    TempFile f(Riff(List("adtl", Chunk("labl", Text("xyz"))) + Chunk("data", Pattern(2)) +
                    List("INFO", Chunk("INAM", Text("n")))));
    f.Seek(12);
    DWORD size = 0, remaining = static_cast<DWORD>(f.Length() - 12);
    ASSERT_EQ(riff_FindListChunk(f.Handle(), Id("INFO"), &size, &remaining), S_OK);
    EXPECT_EQ(size, 10u);
    EXPECT_EQ(f.Pos(), 12u + 24 + 10 + 12);
    EXPECT_EQ(remaining, 10u);

    ASSERT_EQ(riff_FindListChunkFromStart(f.Handle(), Id("adtl"), &size), S_OK);
    EXPECT_EQ(size, 12u);
    EXPECT_EQ(f.Pos(), 24u);
    EXPECT_EQ(riff_FindListChunkFromStart(f.Handle(), Id("none"), &size), TQ_E_NOTFOUND);

    // The "LIST" header fits the bound, its type does not.
    f.Seek(12);
    remaining = 10;
    EXPECT_EQ(riff_FindListChunk(f.Handle(), Id("adtl"), &size, &remaining), TQ_E_NOTFOUND);

    TempFile tooSmall(Riff(Header("LIST", 2) + Pattern(2) + Chunk("data", {})));
    EXPECT_EQ(riff_FindListChunkFromStart(tooSmall.Handle(), Id("INFO"), &size), TQ_E_CORRUPTFILE);
}

TEST(RiffList, EntriesAreCountedWithoutMovingTheCursor)
{
    TempFile f(SampleFile());
    f.Seek(kListStart + 12);
    DWORD count = 0, remaining = 24;
    ASSERT_EQ(riff_GetNumListEntries(f.Handle(), &count, &remaining), S_OK);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(remaining, 24u);
    EXPECT_EQ(f.Pos(), kListStart + 12u);

    // An entry header cut by the end of the file: the failure restores the cursor as well.
    TempFile g(Cut(SampleFile(), kListStart + 12 + 12 + 4));
    g.Seek(kListStart + 12);
    EXPECT_EQ(riff_GetNumListEntries(g.Handle(), &count, &remaining), TQ_E_READFAILED);
    EXPECT_EQ(g.Pos(), kListStart + 12u);
}

TEST(RiffList, SeekingAnEntryStepsOverTheOnesBefore)
{
    TempFile f(Riff(
        List("INFO", Chunk("IAAA", Text("a")) + Chunk("IBBB", Text("bb")) + Chunk("ICCC", {}))));
    DWORD remaining = 28, id = 0;
    f.Seek(24);
    ASSERT_EQ(riff_SeekListEntry(f.Handle(), 0, &remaining), S_OK);
    EXPECT_EQ(f.Pos(), 24u);
    ASSERT_EQ(riff_SeekListEntry(f.Handle(), 2, &remaining), S_OK);
    EXPECT_EQ(remaining, 8u);
    ASSERT_EQ(riff_ReadChunkHeader(f.Handle(), &id, nullptr), S_OK);
    EXPECT_EQ(id, Id("ICCC"));

    f.Seek(24);
    remaining = 28;
    EXPECT_EQ(riff_SeekListEntry(f.Handle(), 4, &remaining), TQ_E_NOTFOUND);
    EXPECT_EQ(remaining, 0u);
}

TEST(RiffWrite, HeadersChunksAndTextsAreWrittenWithTheirPads)
{
    TempFile f;
    DWORD written = 0;
    ASSERT_EQ(riff_WriteFileID(f.Handle(), Id("WAVE"), 0x11223344), S_OK);
    ASSERT_EQ(riff_WriteListHeader(f.Handle(), Id("INFO"), 13), S_OK);
    ASSERT_EQ(riff_WriteChunk(f.Handle(), Id("INAM"), "abc", 3, &written), S_OK);
    EXPECT_EQ(written, 12u);
    ASSERT_EQ(riff_WriteChunkHeader(f.Handle(), Id("data"), 2), S_OK);
    ASSERT_EQ(riff_WriteANSIString(f.Handle(), L"abcd", &written), S_OK);
    EXPECT_EQ(written, 6u);
    ASSERT_EQ(riff_WriteANSIString(f.Handle(), L"xy", &written), S_OK);
    EXPECT_EQ(written, 4u);
    EXPECT_EQ(f.Read(), Header("RIFF", 0x11223344) + Text("WAVE") + Header("LIST", 13) +
                            Text("INFO") + Chunk("INAM", Text("abc")) + Header("data", 2) +
                            Text("abcd") + Bytes(2) + Text("xy") + Bytes(2));

    HANDLE readOnly =
        ::CreateFileW(f.Path().c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                      OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(readOnly, INVALID_HANDLE_VALUE);
    EXPECT_EQ(riff_WriteChunk(readOnly, Id("data"), "a", 1, &written), TQ_E_WRITEFAILED);
    EXPECT_EQ(written, 0u);
    ::CloseHandle(readOnly);
}
