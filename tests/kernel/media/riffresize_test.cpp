// Tests of the RIFF size field, the 4 GiB limit and chunk deletion on files.
#include "riff.h"

#include "kernel/media/riffimage.h"

#include <gtest/gtest.h>

using namespace tq::test;

TEST(RiffSize, SetAndUpdateKeepTheCursor)
{
    TempFile f(Riff(Chunk("data", Pattern(10))));
    f.Seek(21);
    ASSERT_EQ(riff_SetRIFFSize(f.Handle(), 0x01020304), S_OK);
    EXPECT_EQ(f.U32At(4), 0x01020304u);
    ASSERT_EQ(riff_UpdateRIFFSize(f.Handle(), 0x10), S_OK);
    EXPECT_EQ(f.U32At(4), 0x01020314u);
    ASSERT_EQ(riff_UpdateRIFFSize(f.Handle(), -0x01020314), S_OK);
    EXPECT_EQ(f.U32At(4), 0u);
    // Below zero would wrap into a huge size: refused, nothing written.
    EXPECT_EQ(riff_UpdateRIFFSize(f.Handle(), -1), E_INVALIDARG);
    EXPECT_EQ(f.U32At(4), 0u);
    EXPECT_EQ(f.Pos(), 21u);

    TempFile noSize(Text("RIFF"));
    noSize.Seek(3);
    EXPECT_EQ(riff_UpdateRIFFSize(noSize.Handle(), 1), TQ_E_READFAILED);
    EXPECT_EQ(noSize.Pos(), 3u);
}

TEST(RiffSize, GrowingPastTheLimitCutsTheFileAtItsOldEnd)
{
    // A file that has just outgrown the format: its header describes 0xFFFFFF08 bytes, and 4 KiB
    // more have been appended. Extended with SetEndOfFile, so it is sparse and costs no writes.
    constexpr DWORD kOldSize = 0xFFFFFF00;
    constexpr ULONGLONG kOldEnd = kOldSize + 8ull;
    TempFile f(Riff(Chunk("data", {}), "WAVE", kOldSize));
    ULARGE_INTEGER freeBytes = {};
    ::GetDiskFreeSpaceExW(f.Path().substr(0, 3).c_str(), &freeBytes, nullptr, nullptr);
    if (freeBytes.QuadPart < kOldEnd + 0x1000) GTEST_SKIP() << "no room for a 4 GiB file";
    f.Seek(kOldEnd + 0x1000);
    ASSERT_TRUE(::SetEndOfFile(f.Handle()));
    f.Seek(1234);

    EXPECT_EQ(riff_UpdateRIFFSize(f.Handle(), 0xF8), TQ_E_SIZELIMIT); // 0xFFFFFFF8
    EXPECT_EQ(f.Length(), kOldEnd);
    EXPECT_EQ(f.U32At(4), kOldSize);
    EXPECT_EQ(f.Pos(), 1234u);

    EXPECT_EQ(riff_UpdateRIFFSize(f.Handle(), 0xF7), S_OK); // one byte less still fits
    EXPECT_EQ(f.U32At(4), 0xFFFFFFF7u);
    EXPECT_EQ(f.Length(), kOldEnd);
}

TEST(RiffSize, OverflowIsCaughtAndNeverGrowsAShortFile)
{
    // The sum would wrap in 32 bits; the header claims far more than the file holds.
    const Bytes bytes = Riff(Chunk("data", Pattern(4)), "WAVE", 0xFFFFFFF0);
    TempFile f(bytes);
    EXPECT_EQ(riff_UpdateRIFFSize(f.Handle(), 0x20), TQ_E_SIZELIMIT);
    EXPECT_EQ(f.Read(), bytes);
}

TEST(RiffDelete, ChunksAndListsAreCutOutAndTheSizeFollows)
{
    const Bytes fmt = Chunk("fmt ", Pattern(16));
    const Bytes odd = Chunk("odd ", Text("abcde"));
    const Bytes big = Chunk("data", Pattern(10000, 7)); // more than two blocks move
    const Bytes adtl = List("adtl", Chunk("labl", Text("a")));
    const struct
    {
        const char* name;
        Bytes before;
        DWORD id;
        BOOL isList;
        Bytes after;
    } cases[] = {
        {"middle, odd", Riff(fmt + odd + big), Id("odd "), FALSE, Riff(fmt + big)},
        {"last", Riff(fmt + odd + big), Id("data"), FALSE, Riff(fmt + odd)},
        {"list by type", Riff(adtl + List("INFO", Chunk("INAM", Text("name"))) + odd), Id("INFO"),
         TRUE, Riff(adtl + odd)},
    };
    for (const auto& c : cases)
    {
        TempFile f(c.before);
        DWORD removed = 0;
        ASSERT_EQ(riff_DeleteChunk(f.Handle(), c.id, &removed, c.isList), S_OK) << c.name;
        EXPECT_EQ(removed, c.before.size() - c.after.size()) << c.name;
        EXPECT_EQ(f.Read(), c.after) << c.name;
        EXPECT_EQ(f.Pos(), c.after.size()) << c.name;
    }
}

TEST(RiffDelete, LastOddChunkWithoutItsPadIsRemoved)
{
    TempFile f(Cut(Riff(Chunk("fmt ", Pattern(2)) + Chunk("odd ", Text("abc"))), 33));
    DWORD removed = 0;
    ASSERT_EQ(riff_DeleteChunk(f.Handle(), Id("odd "), &removed, FALSE), S_OK);
    EXPECT_EQ(removed, 12u); // the extent counts the missing pad
    EXPECT_EQ(f.Length(), 22u);
    EXPECT_EQ(f.U32At(4), 26u - 12);
}

TEST(RiffDelete, BadFilesAreLeftUntouched)
{
    const struct
    {
        const char* name;
        Bytes bytes;
        BOOL isList;
        HRESULT expected;
    } cases[] = {
        {"not found", Riff(Chunk("fmt ", Pattern(4))), FALSE, TQ_E_NOTFOUND},
        {"list not found", Riff(List("INFO", {})), TRUE, TQ_E_NOTFOUND},
        {"no RIFF header", With(Riff(Chunk("data", Pattern(4))), 0, 'r'), FALSE, TQ_E_NORIFFHEADER},
        {"beyond the file", Riff(Header("data", 1000) + Pattern(10), "WAVE", 2000), FALSE,
         TQ_E_CORRUPTFILE},
        {"beyond the RIFF", Riff(Chunk("data", Pattern(10)), "WAVE", 20), FALSE, TQ_E_CORRUPTFILE},
        {"truncated", Text("RIFF") + U32(4), FALSE, TQ_E_READFAILED},
    };
    for (const auto& c : cases)
    {
        TempFile f(c.bytes);
        DWORD removed = 77;
        EXPECT_EQ(riff_DeleteChunk(f.Handle(), Id("data"), &removed, c.isList), c.expected)
            << c.name;
        EXPECT_EQ(removed, 0u) << c.name;
        EXPECT_EQ(f.Read(), c.bytes) << c.name;
    }
}
