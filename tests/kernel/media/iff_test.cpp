// Tests of the IFF chunk layer: headers, searches, markers and deletion.
#include "iff.h"

#include "kernel/media/aiffimage.h"

#include <gtest/gtest.h>

using namespace tq::test;

namespace {

// 12 + COMM (8 + 18) + odd (8 + 3 + pad) + SSND (8 + 8 + 4).
Bytes Sample()
{
    return Form("AIFF", IffChunk("COMM", CommData(1, 2, 16, 44100)) +
                            IffChunk("odd ", Text("abc")) + IffChunk("SSND", SsndData(Pattern(4))));
}
constexpr DWORD kOddStart = 38, kSsndStart = 50;

} // namespace

TEST(Iff, HeadersReadAndWriteBigEndian)
{
    TempFile f;
    ASSERT_EQ(iff_WriteFileID(f.Handle(), IFF_ID_AIFF, 0x01020304), S_OK);
    const tIFFCHUNKHEADER out = {IFF_ID_COMM, 18};
    ASSERT_EQ(iff_WriteChunk(f.Handle(), &out), S_OK);
    ASSERT_EQ(iff_WriteWORD(f.Handle(), 0xA1B2), S_OK);
    EXPECT_EQ(f.Read(), Text("FORM") + BE32(0x01020304) + Text("AIFF") + Text("COMM") + BE32(18) +
                            BE16(0xA1B2));

    f.Seek(0);
    tIFFCHUNKHEADER h = {};
    DWORD type = 0;
    ASSERT_EQ(iff_ReadChunkHdr(f.Handle(), &h), S_OK);
    EXPECT_EQ(h.id, IFF_ID_FORM);
    EXPECT_EQ(h.size, 0x01020304u);
    ASSERT_EQ(iff_ReadFormType(f.Handle(), &h, &type), S_OK);
    EXPECT_EQ(type, IFF_ID_AIFF);
    ASSERT_EQ(iff_ReadChunkHdr(f.Handle(), &h), S_OK);
    EXPECT_EQ(iff_ReadFormType(f.Handle(), &h, &type), TQ_E_CORRUPTFILE) << "COMM is no FORM";
    WORD w = 0;
    ASSERT_EQ(iff_ReadWORD(f.Handle(), &w), S_OK);
    EXPECT_EQ(w, 0xA1B2);
    EXPECT_EQ(iff_ReadWORD(f.Handle(), &w), TQ_E_READFAILED);

    BYTE words[] = {1, 2, 3, 4, 5, 6, 7, 8};
    iff_ByteSwap32(words, 2);
    EXPECT_EQ(Bytes(words, words + 8), (Bytes{4, 3, 2, 1, 8, 7, 6, 5}));
    aiff_WriteByteSwap16(words, 1);
    iff_ByteSwap16(words, 0);
    EXPECT_EQ(Bytes(words, words + 8), (Bytes{3, 4, 2, 1, 8, 7, 6, 5}));
}

TEST(Iff, SearchesAreBoundedAndStepOverPads)
{
    TempFile f(Sample());
    DWORD size = 0;
    f.Seek(12);
    DWORD remaining = static_cast<DWORD>(Sample().size() - 12);
    ASSERT_EQ(iff_FindChunkHeader(f.Handle(), IFF_ID_SSND, &size, &remaining), S_OK);
    EXPECT_EQ(size, 12u);
    EXPECT_EQ(f.Pos(), kSsndStart + 8u);
    EXPECT_EQ(remaining, 12u);

    f.Seek(12);
    remaining = kSsndStart - 12; // ends in front of SSND
    EXPECT_EQ(iff_FindChunkHeader(f.Handle(), IFF_ID_SSND, &size, &remaining), TQ_E_NOTFOUND);
    EXPECT_EQ(remaining, 0u);
    f.Seek(12);
    EXPECT_EQ(iff_SeekChunkHeader(f.Handle(), IFF_ID('n', 'o', 'n', 'e'), nullptr),
              TQ_E_READFAILED);

    ASSERT_EQ(iff_FindChunkFromStart(f.Handle(), IFF_ID('o', 'd', 'd', ' '), &size), S_OK);
    EXPECT_EQ(size, 3u);
    EXPECT_EQ(f.Pos(), kOddStart + 8u);
    EXPECT_EQ(iff_FindChunkFromStart(f.Handle(), IFF_ID('n', 'o', 'n', 'e'), &size), TQ_E_NOTFOUND);
    EXPECT_EQ(size, 0u);
    TempFile riff(Riff(Chunk("fmt ", Pattern(16))));
    EXPECT_EQ(iff_FindChunkFromStart(riff.Handle(), IFF_ID_COMM, &size), TQ_E_NORIFFHEADER);
    TempFile cut(Cut(Sample(), 10));
    EXPECT_EQ(iff_FindChunkFromStart(cut.Handle(), IFF_ID_COMM, &size), TQ_E_NORIFFHEADER);
}

TEST(Iff, Markers)
{
    // Names of odd length take no pad, even ones one.
    const Bytes mark = BE16(3) + BE16(1) + BE32(100) + Bytes{1} + Text("a") + BE16(2) + BE32(200) +
                       Bytes{2} + Text("bc") + Bytes{0} + BE16(7) + BE32(700) + Bytes{0, 0};
    TempFile f(Form("AIFF", IffChunk("COMM", CommData(1, 0, 16, 8000)) + IffChunk("MARK", mark)));
    tAIFFMARKER entry = {};
    ASSERT_EQ(iff_FindMarker(f.Handle(), &entry, 2), S_OK);
    EXPECT_EQ(entry.position, 200u);
    EXPECT_EQ(entry.nameLength, 2);
    char name[2];
    ASSERT_EQ(riff_ReadData(f.Handle(), name, 2), S_OK);
    EXPECT_EQ(std::string(name, 2), "bc");
    ASSERT_EQ(iff_FindMarker(f.Handle(), &entry, 7), S_OK);
    EXPECT_EQ(entry.position, 700u);
    EXPECT_EQ(iff_FindMarker(f.Handle(), &entry, 9), TQ_E_NOTFOUND);

    // A count beyond the chunk stops at its end; an entry cut by the end of the file fails.
    TempFile flood(
        Form("AIFF", IffChunk("MARK", BE16(0xFFFF) + BE16(1) + BE32(5) + Bytes{1, 'x'})));
    EXPECT_EQ(iff_FindMarker(flood.Handle(), &entry, 2), TQ_E_NOTFOUND);
    TempFile cut(
        Cut(Form("AIFF", IffChunk("MARK", BE16(1) + BE16(1) + BE32(5) + Bytes{1, 'x'})), 22));
    EXPECT_EQ(iff_FindMarker(cut.Handle(), &entry, 1), TQ_E_NORIFFHEADER);
    TempFile none(Sample());
    EXPECT_EQ(iff_FindMarker(none.Handle(), &entry, 1), TQ_E_NOTFOUND);
}

TEST(Iff, DeleteMovesTheRestDownAndShrinksTheForm)
{
    TempFile f(Sample());
    DWORD removed = 0;
    ASSERT_EQ(iff_DeleteChunk(f.Handle(), IFF_ID('o', 'd', 'd', ' '), &removed), S_OK);
    EXPECT_EQ(removed, 12u);
    const Bytes expected = Form("AIFF", IffChunk("COMM", CommData(1, 2, 16, 44100)) +
                                            IffChunk("SSND", SsndData(Pattern(4))));
    EXPECT_EQ(f.Read(), expected);
    EXPECT_EQ(f.Pos(), expected.size());

    // The last chunk: nothing moves, the file is cut.
    ASSERT_EQ(iff_DeleteChunk(f.Handle(), IFF_ID_SSND, &removed), S_OK);
    EXPECT_EQ(f.Read(), Form("AIFF", IffChunk("COMM", CommData(1, 2, 16, 44100))));

    // A chunk longer than the file is refused untouched, and so is a file that is not AIFF.
    const Bytes liar = Form("AIFF", IffChunk("COMM", CommData(1, 2, 16, 44100)) + Text("SSND") +
                                        BE32(0x7FFFFFF0) + Pattern(8));
    TempFile g(liar);
    EXPECT_EQ(iff_DeleteChunk(g.Handle(), IFF_ID_SSND, &removed), TQ_E_CORRUPTFILE);
    EXPECT_EQ(removed, 0u);
    EXPECT_EQ(g.Read(), liar);
    TempFile riff(Riff(Chunk("fmt ", Pattern(16))));
    EXPECT_EQ(iff_DeleteChunk(riff.Handle(), IFF_ID_COMM, &removed), TQ_E_CORRUPTFILE);
    EXPECT_EQ(iff_DeleteChunk(f.Handle(), IFF_ID_MARK, &removed), TQ_E_NOTFOUND);
}
