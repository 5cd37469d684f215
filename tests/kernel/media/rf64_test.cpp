// Tests of the RF64 layer on files built in code, and on a sparse file past 4 GiB.
#include "rf64.h"
#include "wavefile.h"

#include "kernel/media/wave64image.h"

#include <gtest/gtest.h>

using namespace tq::test;

namespace {

constexpr DWORD kTail = RIFF_ID('t', 'a', 'i', 'l');

// The RF64 file most tests start from: 1000 bytes of samples whose size only ds64 holds, then a
// list and a chunk behind them.
Bytes Rf64WithTail(ULONGLONG ds64DataSize = 1000, DWORD dataField = RF64_SIZE_IN_DS64)
{
    return Rf64File(Chunk("bext", Pattern(10)) + Header("data", dataField) + Pattern(1000) +
                        List("INFO", Chunk("INAM", Text("name"))) + Chunk("tail", Pattern(3)),
                    ds64DataSize);
}

ULONGLONG DataOffset(const Bytes& file)
{
    const Bytes id = Text("data");
    return static_cast<ULONGLONG>(std::search(file.begin(), file.end(), id.begin(), id.end()) -
                                  file.begin()) +
           8;
}

} // namespace

TEST(Rf64Walk, SizesFromDs64AndFromPlainRiff)
{
    const Bytes rf64 = Rf64WithTail();
    const struct
    {
        const char* name;
        Bytes file;
        DWORD id;
        BOOL stopAtData;
        BOOL found;
        ULONGLONG size;
    } cases[] = {
        {"data behind ds64", rf64, RIFF_ID_DATA, FALSE, TRUE, 1000},
        {"a chunk behind data", rf64, kTail, FALSE, TRUE, 4},
        {"stopping at data", rf64, kTail, TRUE, FALSE, 0},
        {"ds64 with no data size keeps the field", Rf64WithTail(0, 1000), kTail, FALSE, TRUE, 4},
        {"ds64 with no data size and none in the field", Rf64WithTail(0), RIFF_ID_DATA, FALSE, TRUE,
         0},
        {"plain RIFF, odd size made even",
         Riff(Chunk("fmt ", Pattern(16)) + Chunk("data", Pattern(5))), RIFF_ID_DATA, FALSE, TRUE,
         6},
        {"plain RIFF with a data size to be found elsewhere",
         Riff(Header("data", RF64_SIZE_IN_DS64) + Pattern(8) + Chunk("tail", Pattern(4))), kTail,
         FALSE, FALSE, 0},
        {"not a RIFF file", Text("RIFX") + Bytes(rf64.begin() + 4, rf64.end()), RIFF_ID_DATA, FALSE,
         FALSE, 0},
    };
    for (const auto& c : cases)
    {
        TempFile f(c.file);
        ULONGLONG size = 0, dataPos = 0, remaining = 0, fileEnd = 0;
        EXPECT_EQ(
            RF64_FindChunk(f.Handle(), c.id, &size, c.stopAtData, &dataPos, &remaining, &fileEnd),
            c.found)
            << c.name;
        if (!c.found) continue;
        EXPECT_EQ(size, c.size) << c.name;
        EXPECT_EQ(dataPos, f.Pos()) << c.name;
        if (c.id == RIFF_ID_DATA)
        {
            EXPECT_EQ(dataPos, DataOffset(c.file)) << c.name;
        }
    }

    TempFile f(rf64);
    ULONGLONG remaining = 0, fileEnd = 0;
    ASSERT_TRUE(RF64_FindChunk(f.Handle(), kTail, nullptr, FALSE, nullptr, &remaining, &fileEnd));
    EXPECT_EQ(fileEnd, rf64.size());
    EXPECT_EQ(remaining, 4u) << "the bound from ds64, less 12, less all before the match's data";
    EXPECT_FALSE(RF64_FindChunk(nullptr, RIFF_ID_DATA, nullptr, FALSE, nullptr, nullptr, nullptr));
    EXPECT_FALSE(RF64_FindChunk(INVALID_HANDLE_VALUE, RIFF_ID_DATA, nullptr, FALSE, nullptr,
                                nullptr, nullptr));
    EXPECT_EQ(RF64_FindChunkHeaderInRIFF(f.Handle(), RIFF_ID_DATA, nullptr, nullptr), S_OK);
    EXPECT_EQ(RF64_FindChunkHeaderInRIFF(f.Handle(), RIFF_ID('n', 'o', 'n', 'e'), nullptr, nullptr),
              TQ_E_NOTFOUND);
}

// A damaged file of empty chunks must not hold the walk for long: it looks at 10,000 chunks and
// no more, so a chunk behind more than that many counts as missing.
TEST(Rf64Walk, TenThousandChunkBound)
{
    for (const int before : {9999, 10000})
    {
        Bytes chunks;
        for (int i = 0; i < before; ++i)
            chunks = chunks + Header("JUNK", 0);
        TempFile f(Riff(chunks + Chunk("tail", Pattern(2))));
        EXPECT_EQ(RF64_FindChunk(f.Handle(), kTail, nullptr, FALSE, nullptr, nullptr, nullptr),
                  before < 10000)
            << before << " chunks before";
    }
}

TEST(Rf64Walk, ChunksBehindTheSamples)
{
    const Bytes file = Rf64WithTail();
    TempFile f(file);
    ULONGLONG size = 0, fileEnd = 0;
    ASSERT_TRUE(RF64_FindChunk(f.Handle(), RIFF_ID_DATA, &size, FALSE, nullptr, nullptr, &fileEnd));
    f.Seek(f.Pos() + size);
    const ULONGLONG behind = f.Pos();
    ULONGLONG remaining = fileEnd - behind;
    DWORD count = 0;
    ASSERT_EQ(RF64_GetNumListEntries(f.Handle(), &count, &remaining), S_OK);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(f.Pos(), behind);
    ULONGLONG listSize = 0;
    ASSERT_EQ(RF64_FindListChunk(f.Handle(), RIFF_ID_INFO, &listSize, &remaining), S_OK);
    EXPECT_EQ(listSize, 12u);
    ASSERT_EQ(RF64_FindChunkHeader(f.Handle(), kTail, &size, &remaining), S_OK);
    EXPECT_EQ(size, 3u);
    EXPECT_EQ(remaining, 4u);
    EXPECT_EQ(RF64_FindChunkHeader(f.Handle(), kTail, &size, &remaining), TQ_E_NOTFOUND);

    // Appending behind the audio: the end comes from ds64, and the new chunk is found.
    ASSERT_EQ(SeekToRF64End(f.Handle()), S_OK);
    EXPECT_EQ(f.Pos(), file.size());
    ASSERT_EQ(riff_WriteChunk(f.Handle(), RIFF_ID('n', 'e', 'w', ' '), "abc", 3, nullptr), S_OK);
    ASSERT_EQ(RF64_UpdateRIFFSize(f.Handle(), 12), S_OK);
    EXPECT_EQ(f.Pos(), file.size() + 12) << "restored";
    EXPECT_EQ(f.U32At(4), 0xFFFFFFFFu) << "the 32-bit size is left alone";
    ASSERT_TRUE(RF64_FindChunk(f.Handle(), RIFF_ID('n', 'e', 'w', ' '), &size, FALSE, nullptr,
                               nullptr, &fileEnd));
    EXPECT_EQ(size, 4u);
    EXPECT_EQ(fileEnd, file.size() + 12);

    TempFile plain(Riff(Chunk("data", Pattern(4))));
    EXPECT_EQ(SeekToRF64End(plain.Handle()), TQ_E_NOTFOUND);
    EXPECT_EQ(RF64_UpdateRIFFSize(plain.Handle(), 4), TQ_E_WRITEFAILED);
    EXPECT_EQ(plain.Read(), Riff(Chunk("data", Pattern(4))));
}

TEST(Rf64Resize, Deletion)
{
    const Bytes list = List("INFO", Chunk("INAM", Text("name")));
    const Bytes original = Rf64WithTail();
    {
        TempFile f(original);
        ULONGLONG removed = 0;
        ASSERT_EQ(RF64_DeleteChunk(f.Handle(), RIFF_ID_INFO, &removed, TRUE), S_OK);
        EXPECT_EQ(removed, list.size());
        Bytes expected = Rf64File(Chunk("bext", Pattern(10)) + Header("data", RF64_SIZE_IN_DS64) +
                                      Pattern(1000) + Chunk("tail", Pattern(3)),
                                  1000);
        EXPECT_EQ(f.Read(), expected);
        ASSERT_EQ(RF64_DeleteChunk(f.Handle(), RIFF_ID('b', 'e', 'x', 't'), &removed, FALSE), S_OK);
        EXPECT_EQ(removed, 18u);
        ULONGLONG size = 0;
        ASSERT_TRUE(RF64_FindChunk(f.Handle(), kTail, &size, FALSE, nullptr, nullptr, nullptr));
        EXPECT_EQ(f.Read(f.Pos(), 3), Pattern(3));
        EXPECT_EQ(f.U32At(12 + 8), original.size() - list.size() - 18 - 8) << "ds64 RIFF size";
        EXPECT_EQ(RF64_DeleteChunk(f.Handle(), RIFF_ID_INFO, &removed, TRUE), TQ_E_NOTFOUND);
        EXPECT_EQ(RF64_DeleteChunk(f.Handle(), RIFF_ID_DS64, &removed, FALSE), E_INVALIDARG);
    }
    {
        // Without ds64 the RIFF layer's deletion keeps the 32-bit size right.
        const Bytes plain = Riff(Chunk("fmt ", Pattern(16)) + Chunk("bext", Pattern(6)) +
                                 Chunk("data", Pattern(8)));
        TempFile f(plain);
        ULONGLONG removed = 0;
        ASSERT_EQ(RF64_DeleteChunk(f.Handle(), RIFF_ID('b', 'e', 'x', 't'), &removed, FALSE), S_OK);
        EXPECT_EQ(removed, 14u);
        EXPECT_EQ(f.Read(), Riff(Chunk("fmt ", Pattern(16)) + Chunk("data", Pattern(8))));
    }
    {
        // A chunk that claims more than the file holds is refused before anything moves.
        const Bytes lying = Rf64File(Header("bext", 5000) + Pattern(20), 0);
        TempFile f(lying);
        ULONGLONG removed = 0;
        EXPECT_EQ(RF64_DeleteChunk(f.Handle(), RIFF_ID('b', 'e', 'x', 't'), &removed, FALSE),
                  TQ_E_CORRUPTFILE);
        EXPECT_EQ(f.Read(), lying);
    }
}

// An RF64 file of more than 4 GiB whose body is a hole: ds64 sizes written, walked, a chunk
// added behind the samples and removed again, and the samples at both ends still in place.
TEST(Rf64Large, SparseFilePast4GiB)
{
    TempFile f;
    const ULONGLONG dataBytes = (5ull << 30) + 6;
    const Bytes head = Rf64File(Header("data", RF64_SIZE_IN_DS64), dataBytes, 0);
    const ULONGLONG dataStart = head.size();
    const ULONGLONG end = dataStart + dataBytes;
    if (!MakeSparse(f.Handle(), end)) GTEST_SKIP() << "the file system refuses sparse files";
    // ds64 told the truth about the samples but not yet about the file.
    WriteAt(f.Handle(), 0, Rf64File(Header("data", RF64_SIZE_IN_DS64), dataBytes, end - 8));
    const Bytes first = Pattern(4, 1), last = Pattern(4, 200);
    WriteAt(f.Handle(), dataStart, first);
    WriteAt(f.Handle(), end - 4, last);

    ASSERT_EQ(SeekToRF64End(f.Handle()), S_OK);
    EXPECT_EQ(f.Pos(), end);
    ASSERT_EQ(riff_WriteChunk(f.Handle(), RIFF_ID('b', 'e', 'x', 't'), "origin", 6, nullptr), S_OK);
    ASSERT_EQ(riff_WriteChunk(f.Handle(), kTail, "end", 3, nullptr), S_OK);
    ASSERT_EQ(RF64_UpdateRIFFSize(f.Handle(), 14 + 12), S_OK);

    ULONGLONG size = 0, dataPos = 0, fileEnd = 0;
    ASSERT_TRUE(RF64_FindChunk(f.Handle(), RIFF_ID_DATA, &size, FALSE, &dataPos, nullptr, nullptr));
    EXPECT_EQ(size, dataBytes);
    EXPECT_EQ(dataPos, dataStart);
    ASSERT_TRUE(RF64_FindChunk(f.Handle(), kTail, &size, FALSE, &dataPos, nullptr, &fileEnd));
    EXPECT_EQ(dataPos, end + 14 + 8);
    EXPECT_EQ(fileEnd, end + 26);

    ULONGLONG removed = 0;
    ASSERT_EQ(RF64_DeleteChunk(f.Handle(), RIFF_ID('b', 'e', 'x', 't'), &removed, FALSE), S_OK);
    EXPECT_EQ(removed, 14u);
    EXPECT_EQ(f.Length(), end + 12);
    ASSERT_TRUE(RF64_FindChunk(f.Handle(), kTail, &size, FALSE, &dataPos, nullptr, &fileEnd));
    EXPECT_EQ(dataPos, end + 8);
    EXPECT_EQ(fileEnd, end + 12);
    EXPECT_EQ(ReadAt(f.Handle(), dataStart, 4), first);
    EXPECT_EQ(ReadAt(f.Handle(), end - 4, 4), last);

    f.Close();
    ULONGLONG frames = 0, start = 0;
    WAVEFORMATEX* wfx = TqGetFileWfx(f.Path().c_str(), &frames, &start);
    ASSERT_NE(wfx, nullptr);
    EXPECT_EQ(wfx->nBlockAlign, 4);
    free(wfx);
    EXPECT_EQ(frames, dataBytes / 4);
    EXPECT_EQ(start, dataStart);
}
