// Tests of bext and iXML on RF64 files: reading, an update that goes behind the audio and grows
// the ds64 size, and plain RIFF files given to the RF64 forms.
#include "bwf.h"

#include "kernel/media/wave64image.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace tq::test;

namespace {

struct Record
{
    _tagTQBWF_Chunk chunk = {};
    ~Record() { FreeBwfChunkGlobal(&chunk); }
};

const Bytes kAudio = Pattern(800, 9);

Bytes Bext(const char* description, const char* history)
{
    Bytes b(602);
    std::memcpy(b.data(), description, std::strlen(description));
    return b + Text(history);
}

ULONGLONG Ds64RiffSize(const TempFile& f)
{
    const Bytes b = f.Read(20, 8);
    ULONGLONG v = 0;
    std::memcpy(&v, b.data(), 8);
    return v;
}

} // namespace

TEST(BwfRf64, UpdatesBehindTheAudioAndGrowsTheDs64Size)
{
    // An odd coding history: its own size, not the walk's even one, is read.
    const Bytes bext = Chunk("bext", Bext("RF64 take", "odd"));
    const Bytes data = Header("data", 0xFFFFFFFF) + kAudio;
    TempFile f(Rf64File(bext + data, kAudio.size()));
    Record r;
    BOOL found = FALSE;
    ASSERT_EQ(bwfriffRF64_LoadInfo(f.Handle(), &r.chunk, &found), S_OK);
    EXPECT_TRUE(found);
    EXPECT_STREQ(r.chunk.description, "RF64 take");
    EXPECT_STREQ(GetIxmlCodingHistoryValueGlobal(&r.chunk), "odd");
    EXPECT_EQ(r.chunk.sampleRate, 48000u);

    const ULONGLONG dataAt = f.Length() - kAudio.size(), oldLength = f.Length();
    ASSERT_EQ(SetIxmlCodingHistoryValueGlobal(&r.chunk, "a much longer coding history line"), S_OK);
    void* built = nullptr;
    DWORD size = 0;
    ASSERT_EQ(BuildRawBwfIxmlChunkGlobal(&r.chunk, &built, &size, BWF_CHUNK_BEXT, 0, 0), S_OK);
    ULONGLONG written = 0;
    ASSERT_EQ(bwfRF64_UpdateStreamChunk(BWF_CHUNK_BEXT, f.Handle(), built, size, &written), S_OK);
    FreeBlock(built);
    EXPECT_EQ(f.Read(dataAt, static_cast<DWORD>(kAudio.size())), kAudio);
    EXPECT_EQ(f.Read(dataAt - 8, 8), Text("data") + U32(0xFFFFFFFF));
    EXPECT_EQ(f.Read(oldLength, 4), Text("bext"));
    EXPECT_EQ(written, f.Length() - oldLength);
    EXPECT_EQ(Ds64RiffSize(f), f.Length() - 8);
    EXPECT_EQ(f.U32At(4), 0xFFFFFFFFu) << "the 32-bit size stays the RF64 marker";

    Record again;
    ASSERT_EQ(bwfriffRF64_LoadInfo(f.Handle(), &again.chunk, &found), S_OK);
    EXPECT_STREQ(GetIxmlCodingHistoryValueGlobal(&again.chunk),
                 "a much longer coding history line");
    ULONGLONG removed = 0;
    ASSERT_EQ(bwfRF64_DeleteChunk(BWF_CHUNK_BEXT, f.Handle(), &removed), S_OK);
    EXPECT_EQ(Ds64RiffSize(f), f.Length() - 8);
    EXPECT_EQ(f.Read(f.Length() - kAudio.size(), static_cast<DWORD>(kAudio.size())), kAudio);
}

TEST(BwfRf64, PlainRiffFilesTakeTheRiffRules)
{
    TempFile f(Riff(Chunk("fmt ", FmtBytes(Pcm(1, 44100, 16), 16)) + Chunk("data", kAudio)));
    const Bytes ixml = Text("<BWFXML><TAKE>3</TAKE></BWFXML>");
    ASSERT_EQ(bwfRF64_UpdateStreamChunk(BWF_CHUNK_IXML, f.Handle(), ixml.data(),
                                        static_cast<DWORD>(ixml.size()), nullptr),
              S_OK);
    EXPECT_EQ(f.U32At(4), f.Length() - 8);
    Record r;
    BOOL found = FALSE;
    ASSERT_EQ(bwfriffRF64_LoadInfo(f.Handle(), &r.chunk, &found), S_OK);
    EXPECT_STREQ(GetIxmlValueGlobal(&r.chunk, TQMETA_IXML_TAKE), L"3");
}
