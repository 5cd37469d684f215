// Tests of bext and iXML on Wave64 files: reading, updating in place or behind the audio with
// the family's filler GUID, deleting.
#include "bwf.h"

#include "kernel/media/wave64image.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

using namespace tq::test;

namespace {

GUID Wave64Id(const char (&id)[5])
{
    GUID g = RIFF64_GUID_FMT;
    g.Data1 = Id(id);
    return g;
}

struct Record
{
    _tagTQBWF_Chunk chunk = {};
    ~Record() { FreeBwfChunkGlobal(&chunk); }
};

const Bytes kAudio = Pattern(1000, 5);

Bytes Bext(const char* description)
{
    Bytes b(602);
    std::memcpy(b.data(), description, std::strlen(description));
    std::memcpy(&b[320], "2026-11-2401:02:03", 18);
    b[338] = 0x44;
    return b + Text("A=PCM\r\n");
}

Bytes Ixml(const char* project)
{
    return Text("<BWFXML><PROJECT>") + Text(project) + Text("</PROJECT><X_Y>z</X_Y></BWFXML>");
}

Bytes Wave(const Bytes& before)
{
    return W64File(W64Chunk(RIFF64_GUID_FMT, FmtBytes(Pcm(2, 96000, 24), 16)) + before +
                   W64Chunk(RIFF64_GUID_DATA, kAudio));
}

ULONGLONG DataOffset(const Bytes& before)
{
    return 40 + W64Chunk(RIFF64_GUID_FMT, FmtBytes(Pcm(2, 96000, 24), 16)).size() + before.size() +
           24;
}

} // namespace

TEST(BwfWave64, LoadsBextAndIxml)
{
    TempFile f(Wave(W64Chunk(Wave64Id("bext"), Bext("Wave64 take")) +
                    W64Chunk(Wave64Id("iXML"), Ixml("Big"))));
    Record r;
    BOOL found = FALSE;
    ASSERT_EQ(bwfriff64_LoadInfo(f.Handle(), &r.chunk, &found), S_OK);
    EXPECT_TRUE(found);
    EXPECT_EQ(r.chunk.sampleRate, 96000u);
    EXPECT_STREQ(r.chunk.description, "Wave64 take");
    EXPECT_EQ(r.chunk.timeReferenceLow, 0x44u);
    EXPECT_STREQ(GetIxmlCodingHistoryValueGlobal(&r.chunk), "A=PCM\r\n");
    EXPECT_STREQ(GetIxmlValueGlobal(&r.chunk, TQMETA_IXML_PROJECT), L"Big");
    DWORD rate = 0;
    WORD bits = 0, channels = 0;
    ASSERT_EQ(ReadFilePropsFromFormatChunk64(f.Handle(), &rate, &bits, &channels), S_OK);
    EXPECT_EQ(bits, 24);
}

TEST(BwfWave64, LongerGoesBehindTheAudioShorterStaysAndDeleteRemoves)
{
    const Bytes before = W64Chunk(Wave64Id("iXML"), Ixml("p"));
    TempFile f(Wave(before));
    const ULONGLONG dataAt = DataOffset(before), oldLength = f.Length();
    Record r;
    BOOL found = FALSE;
    ASSERT_EQ(bwfriff64_LoadInfo(f.Handle(), &r.chunk, &found), S_OK);
    ASSERT_EQ(SetIxmlValueGlobal(&r.chunk, TQMETA_IXML_PROJECT, L"a longer project name"), S_OK);
    ASSERT_EQ(BuildAndWriteRawIxmlChunk(f.Handle(), &r.chunk, BWF_WAVE64), S_OK);

    EXPECT_EQ(f.Read(dataAt, static_cast<DWORD>(kAudio.size())), kAudio);
    EXPECT_EQ(f.Read(dataAt - 24, 16), GuidBytes(RIFF64_GUID_DATA));
    const ULONGLONG junkAt = 40 + W64Chunk(RIFF64_GUID_FMT, FmtBytes(Pcm(2, 96000, 24), 16)).size();
    EXPECT_EQ(f.Read(junkAt, 16), GuidBytes(RIFF64_GUID_JUNK)) << "filler with the family's GUID";
    EXPECT_EQ(f.Read(oldLength, 16), GuidBytes(Wave64Id("iXML")));
    EXPECT_EQ(f.Length() % 8, 0u);
    EXPECT_EQ(f.Read(16, 8), U64(f.Length())) << "the stored size is the file's length";

    Record again;
    ASSERT_EQ(bwfriff64_LoadInfo(f.Handle(), &again.chunk, &found), S_OK);
    EXPECT_STREQ(GetIxmlValueGlobal(&again.chunk, TQMETA_IXML_PROJECT), L"a longer project name");

    // Shorter: in place, the file keeps its length.
    const ULONGLONG length = f.Length();
    const Bytes small = Ixml("q");
    ULONGLONG written = 1;
    ASSERT_EQ(bwfriff64_UpdateStreamChunk(BWF_CHUNK_IXML, f.Handle(), small.data(),
                                          static_cast<DWORD>(small.size()), &written),
              S_OK);
    EXPECT_EQ(written, 0u);
    EXPECT_EQ(f.Length(), length);

    ULONGLONG removed = 0;
    ASSERT_EQ(bwfriff64_DeleteAllChunks(f.Handle(), &removed), S_OK);
    EXPECT_EQ(f.Length(), length - removed);
    EXPECT_EQ(f.Read(dataAt, static_cast<DWORD>(kAudio.size())), kAudio);
    ASSERT_EQ(bwfriff64_LoadInfo(f.Handle(), &again.chunk, &found), S_OK);
    EXPECT_FALSE(found);
}
