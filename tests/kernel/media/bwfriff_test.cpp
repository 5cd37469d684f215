// Tests of bext and iXML on RIFF files: the bext layout, reading, updating in place or behind
// the audio, deleting, and files exchanged with ffmpeg.
#include "bwf.h"

#include "kernel/media/riffimage.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

using namespace tq::test;

namespace {

struct Record
{
    _tagTQBWF_Chunk chunk = {};
    ~Record() { FreeBwfChunkGlobal(&chunk); }
};

Bytes Fmt(DWORD rate = 48000, WORD channels = 2, WORD bits = 24)
{
    const WORD align = static_cast<WORD>(channels * bits / 8);
    return Chunk("fmt ", Bytes{1, 0, BYTE(channels), 0} + U32(rate) + U32(rate * align) +
                             Bytes{BYTE(align), 0, BYTE(bits), 0});
}

// A bext chunk's data written by hand, field by field at the offsets of the format.
Bytes HandBext(const char* history, bool terminated)
{
    Bytes b(602);
    auto put = [&](size_t at, const char* s) { std::memcpy(&b[at], s, std::strlen(s)); };
    put(0, "A description");
    put(256, "Originator");
    put(288, "Reference 42");
    put(320, "2026-11-24");
    put(330, "01:02:03");
    const Bytes low = U32(0x89ABCDEF), high = U32(0x12);
    std::copy(low.begin(), low.end(), b.begin() + 338);
    std::copy(high.begin(), high.end(), b.begin() + 342);
    b[346] = 2;
    for (int i = 0; i < 64; ++i)
        b[348 + i] = BYTE(0x80 + i);
    for (int i = 0; i < 10; ++i)
        b[412 + i] = BYTE(0x40 + i);
    for (int i = 0; i < 180; ++i)
        b[422 + i] = BYTE(i);
    Bytes tail = Text(history);
    if (terminated) tail.push_back(0);
    return b + tail;
}

const Bytes kAudio = Pattern(1000, 7);

Bytes Wave(const Bytes& before, const Bytes& after = {})
{
    return Riff(Fmt() + before + Chunk("data", kAudio) + after);
}

std::string Ixml(const char* project, size_t padTo = 0)
{
    std::string x = std::string("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<BWFXML><PROJECT>") +
                    project + "</PROJECT><VENDOR_X>keep</VENDOR_X></BWFXML>";
    if (x.size() < padTo) x.append(padTo - x.size(), ' ');
    return x;
}

Bytes ToBytes(const std::string& s)
{
    return Bytes(s.begin(), s.end());
}

// Where the audio stands, and that it is unchanged.
void ExpectAudioAt(const TempFile& f, ULONGLONG dataOffset)
{
    EXPECT_EQ(f.Read(dataOffset - 8, 4), Text("data"));
    EXPECT_EQ(f.Read(dataOffset, static_cast<DWORD>(kAudio.size())), kAudio);
}

void ExpectRiffSizeHonest(const TempFile& f)
{
    EXPECT_EQ(f.U32At(4), f.Length() - 8);
}

// The data offset of a Wave() image: header, fmt, what stands before the data, data header.
ULONGLONG DataOffset(const Bytes& before)
{
    return 12 + Fmt().size() + before.size() + 8;
}

} // namespace

TEST(BextWrite, LayoutMatchesAHandWrittenImage)
{
    Record r;
    std::strcpy(r.chunk.description, "A description");
    std::strcpy(r.chunk.originator, "Originator");
    std::strcpy(r.chunk.originatorReference, "Reference 42");
    std::strcpy(r.chunk.originationDate, "2026-11-24");
    std::strcpy(r.chunk.originationTime, "01:02:03");
    r.chunk.timeReferenceLow = 0x89ABCDEF;
    r.chunk.timeReferenceHigh = 0x12;
    r.chunk.version = 2;
    for (int i = 0; i < 64; ++i)
        r.chunk.umid[i] = BYTE(0x80 + i);
    for (int i = 0; i < 10; ++i)
        r.chunk.loudness[i] = BYTE(0x40 + i);
    for (int i = 0; i < 180; ++i)
        r.chunk.reserved[i] = BYTE(i);
    ASSERT_EQ(SetIxmlCodingHistoryValueGlobal(&r.chunk, "A=PCM,F=48000,W=24\r\n"), S_OK);

    void* data = nullptr;
    DWORD size = 0;
    ASSERT_EQ(BuildRawBwfIxmlChunkGlobal(&r.chunk, &data, &size, BWF_CHUNK_BEXT, 0, 0), S_OK);
    const Bytes built(static_cast<BYTE*>(data), static_cast<BYTE*>(data) + size);
    FreeBlock(data);
    EXPECT_EQ(built, HandBext("A=PCM,F=48000,W=24\r\n", true));

    ASSERT_EQ(SetIxmlCodingHistoryValueGlobal(&r.chunk, nullptr), S_OK);
    ASSERT_EQ(BuildRawBwfIxmlChunkGlobal(&r.chunk, nullptr, &size, BWF_CHUNK_BEXT, 0, 0), S_OK);
    EXPECT_EQ(size, 602u) << "no history, no terminator";
}

TEST(BwfRiffLoad, ReadsBextInEitherSpellingWithOrWithoutTerminator)
{
    struct Case
    {
        const char id[5];
        bool terminated;
    };
    for (const Case& c :
         {Case{"bext", true}, Case{"BEXT", true}, Case{"bext", false}, Case{"BEXT", false}})
    {
        SCOPED_TRACE(std::string(c.id) + (c.terminated ? " terminated" : " unterminated"));
        TempFile f(Wave(Chunk(c.id, HandBext("A=PCM,F=48000", c.terminated))));
        Record r;
        BOOL found = FALSE;
        ASSERT_EQ(bwfriff_LoadInfo(f.Handle(), &r.chunk, &found), S_OK);
        EXPECT_TRUE(found);
        EXPECT_EQ(r.chunk.valid, DWORD(TQBWF_VALID_TIMESTAMP | TQBWF_VALID_SAMPLERATE));
        EXPECT_EQ(r.chunk.sampleRate, 48000u);
        EXPECT_STREQ(r.chunk.description, "A description");
        EXPECT_STREQ(r.chunk.originator, "Originator");
        EXPECT_STREQ(r.chunk.originatorReference, "Reference 42");
        EXPECT_STREQ(r.chunk.originationDate, "2026-11-24");
        EXPECT_STREQ(r.chunk.originationTime, "01:02:03");
        EXPECT_EQ(r.chunk.timeReferenceLow, 0x89ABCDEFu);
        EXPECT_EQ(r.chunk.timeReferenceHigh, 0x12u);
        EXPECT_EQ(r.chunk.version, 2);
        EXPECT_EQ(r.chunk.umid[63], 0x80 + 63);
        EXPECT_EQ(r.chunk.loudness[9], 0x49);
        EXPECT_EQ(r.chunk.reserved[179], 179);
        EXPECT_STREQ(GetIxmlCodingHistoryValueGlobal(&r.chunk), "A=PCM,F=48000");
    }
}

TEST(BwfRiffLoad, DamagedChunksLeaveWhatCouldBeRead)
{
    BOOL found = TRUE;
    Record r;
    {
        // A bext too short to be one, and an iXML that is not XML: the file still loads.
        TempFile f(Wave(Chunk("bext", Bytes(7)) + Chunk("iXML", Text("garbage"))));
        ASSERT_EQ(bwfriff_LoadInfo(f.Handle(), &r.chunk, &found), S_OK);
        EXPECT_FALSE(found);
        EXPECT_EQ(r.chunk.valid, DWORD(TQBWF_VALID_SAMPLERATE));
    }
    {
        // A short bext reads its fields as far as they go; a broken iXML keeps bext.
        TempFile f(Wave(Chunk("bext", Cut(HandBext("", false), 334)) +
                        Chunk("iXML", Text("<BWFXML><PROJECT>cut"))));
        ASSERT_EQ(bwfriff_LoadInfo(f.Handle(), &r.chunk, &found), S_OK);
        EXPECT_TRUE(found);
        EXPECT_STREQ(r.chunk.originationDate, "2026-11-24");
        EXPECT_STREQ(r.chunk.originationTime, "01:0");
        EXPECT_EQ(GetIxmlCodingHistoryValueGlobal(&r.chunk), nullptr);
    }
    {
        // An iXML that claims more than the file holds is passed over.
        TempFile f(Wave({}, Header("iXML", 0x7FFFFFF0) + Text("<BWFXML/>")));
        ASSERT_EQ(bwfriff_LoadInfo(f.Handle(), &r.chunk, &found), S_OK);
        EXPECT_FALSE(found);
    }
    TempFile notRiff(Text("not a wave file at all"));
    EXPECT_EQ(bwfriff_LoadInfo(notRiff.Handle(), &r.chunk, &found), TQ_E_NORIFFHEADER);
    EXPECT_EQ(bwfriff_LoadInfo(notRiff.Handle(), nullptr, &found), E_INVALIDARG);
}

TEST(BwfRiffLoad, QuickLoadTakesTheTimestampAlone)
{
    TempFile f(Wave(Chunk("bext", HandBext("history", true)) + Chunk("iXML", ToBytes(Ixml("P")))));
    f.Close();
    Record r;
    BOOL found = FALSE;
    ASSERT_EQ(bwfriff_LoadTimestampInfoQuick(f.Path().c_str(), &r.chunk, &found), S_OK);
    EXPECT_TRUE(found);
    EXPECT_EQ(r.chunk.timeReferenceLow, 0x89ABCDEFu);
    EXPECT_STREQ(r.chunk.originationDate, "2026-11-24");
    EXPECT_STREQ(r.chunk.description, "");
    EXPECT_FALSE(r.chunk.ixmlRead);
    EXPECT_EQ(bwfriff_LoadTimestampInfoQuick(L"C:\\no\\such\\file.wav", &r.chunk, &found),
              TQ_E_OPENFAILED);

    DWORD rate = 0;
    WORD bits = 0, channels = 0;
    TempFile g(Wave({}));
    ASSERT_EQ(ReadFilePropsFromFormatChunk(g.Handle(), &rate, &bits, &channels), S_OK);
    EXPECT_EQ(rate, 48000u);
    EXPECT_EQ(bits, 24);
    EXPECT_EQ(channels, 2);
}

TEST(BwfRiffUpdate, ALongerChunkLeavesJunkAndGoesBehindTheAudio)
{
    const Bytes oldIxml = ToBytes(Ixml("short"));
    const Bytes before = Chunk("iXML", oldIxml);
    TempFile f(Wave(before));
    const ULONGLONG dataOffset = DataOffset(before);
    const ULONGLONG oldLength = f.Length();

    Record r;
    BOOL found = FALSE;
    ASSERT_EQ(bwfriff_LoadInfo(f.Handle(), &r.chunk, &found), S_OK);
    ASSERT_EQ(SetIxmlValueGlobal(&r.chunk, TQMETA_IXML_PROJECT, L"a much longer project name"),
              S_OK);
    ASSERT_EQ(BuildAndWriteRawIxmlChunk(f.Handle(), &r.chunk, BWF_RIFF), S_OK);

    ExpectAudioAt(f, dataOffset);
    ExpectRiffSizeHonest(f);
    const ULONGLONG oldAt = 12 + Fmt().size();
    EXPECT_EQ(f.Read(oldAt, 8), Text("JUNK") + U32(static_cast<DWORD>(oldIxml.size())))
        << "the old chunk stays as filler of its own size";
    EXPECT_EQ(f.Read(oldAt + 8, static_cast<DWORD>(oldIxml.size())), oldIxml);
    EXPECT_EQ(f.Read(oldLength, 4), Text("iXML")) << "the new one follows the audio";
    EXPECT_EQ(f.U32At(oldLength + 4) % 2, 0u) << "odd sizes are rounded up in the header";

    Record again;
    ASSERT_EQ(bwfriff_LoadInfo(f.Handle(), &again.chunk, &found), S_OK);
    EXPECT_STREQ(GetIxmlValueGlobal(&again.chunk, TQMETA_IXML_PROJECT),
                 L"a much longer project name");
    EXPECT_NE(again.chunk.unknownRoot.child, nullptr);
    EXPECT_STREQ(again.chunk.unknownRoot.child->text, L"keep");
}

TEST(BwfRiffUpdate, AShorterChunkKeepsPlaceAndSizeWithZeroesBehind)
{
    const Bytes oldIxml = ToBytes(Ixml("a long enough project name"));
    const Bytes before = Chunk("bext", HandBext("old history line", true)) + Chunk("iXML", oldIxml);
    TempFile f(Wave(before));
    const Bytes original = f.Read();
    const Bytes newIxml = ToBytes(Ixml("p"));
    DWORD written = 99;
    ASSERT_EQ(bwfriff_UpdateStreamChunk(BWF_CHUNK_IXML, f.Handle(), newIxml.data(),
                                        static_cast<DWORD>(newIxml.size()), &written),
              S_OK);
    EXPECT_EQ(written, 0u);
    ASSERT_EQ(f.Length(), original.size());
    const ULONGLONG at =
        12 + Fmt().size() + Chunk("bext", HandBext("old history line", true)).size();
    EXPECT_EQ(f.Read(at, 8), Text("iXML") + U32(static_cast<DWORD>(oldIxml.size())));
    EXPECT_EQ(f.Read(at + 8, static_cast<DWORD>(oldIxml.size())),
              newIxml + Bytes(oldIxml.size() - newIxml.size()));
    ExpectAudioAt(f, DataOffset(before));

    // bext in capitals is updated in place under its own spelling.
    const Bytes bext = HandBext("new", true);
    TempFile g(Wave(Chunk("BEXT", HandBext("old history line", true))));
    ASSERT_EQ(bwfriff_UpdateStreamChunk(BWF_CHUNK_BEXT, g.Handle(), bext.data(),
                                        static_cast<DWORD>(bext.size()), nullptr),
              S_OK);
    EXPECT_EQ(g.Read(12 + Fmt().size(), 4), Text("BEXT"));
    Record r;
    BOOL found = FALSE;
    ASSERT_EQ(bwfriff_LoadInfo(g.Handle(), &r.chunk, &found), S_OK);
    EXPECT_STREQ(GetIxmlCodingHistoryValueGlobal(&r.chunk), "new");
}

TEST(BwfRiffUpdate, AFailedUpdateLeavesTheFileAsItWas)
{
    const Bytes bext = HandBext("history", true);
    {
        // A handle that cannot write: nothing changes.
        TempFile f(Wave({}));
        const Bytes original = f.Read();
        f.Close();
        HANDLE ro = CreateFileW(f.Path().c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                OPEN_EXISTING, 0, nullptr);
        ASSERT_NE(ro, INVALID_HANDLE_VALUE);
        EXPECT_EQ(bwfriff_UpdateStreamChunk(BWF_CHUNK_BEXT, ro, bext.data(),
                                            static_cast<DWORD>(bext.size()), nullptr),
                  TQ_E_WRITEFAILED);
        CloseHandle(ro);
        TempFile check;
        HANDLE h = CreateFileW(f.Path().c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                               OPEN_EXISTING, 0, nullptr);
        Bytes now(original.size() + 16);
        DWORD got = 0;
        ReadFile(h, now.data(), static_cast<DWORD>(now.size()), &got, nullptr);
        CloseHandle(h);
        now.resize(got);
        EXPECT_EQ(now, original);
    }
    {
        // A file whose writer died claims more than it holds: it wants repair, and nothing is
        // written, neither behind what it claims nor into what it claims.
        for (const Bytes& image : {Riff(Fmt() + Header("data", 0xFFFFFF00) + kAudio),
                                   Riff(Fmt() + Chunk("data", kAudio), "WAVE", 0xFFFFFFF0)})
        {
            TempFile f(image);
            EXPECT_EQ(bwfriff_UpdateStreamChunk(BWF_CHUNK_BEXT, f.Handle(), bext.data(),
                                                static_cast<DWORD>(bext.size()), nullptr),
                      TQ_E_CORRUPTFILE);
            EXPECT_EQ(f.Read(), image);
        }
    }
    {
        // Audio that runs past the RIFF size (its writer died) is not written over.
        const Bytes image = Riff(Fmt() + Chunk("data", kAudio), "WAVE", 4 + 24 + 8 + 100);
        TempFile f(image);
        ASSERT_EQ(bwfriff_UpdateStreamChunk(BWF_CHUNK_BEXT, f.Handle(), bext.data(),
                                            static_cast<DWORD>(bext.size()), nullptr),
                  S_OK);
        ExpectAudioAt(f, DataOffset({}));
        EXPECT_EQ(f.Read(image.size(), 4), Text("bext"));
        ExpectRiffSizeHonest(f);
    }
    TempFile f(Wave({}));
    EXPECT_EQ(bwfriff_UpdateStreamChunk(2, f.Handle(), bext.data(), 10, nullptr), E_INVALIDARG);
    EXPECT_EQ(bwfriff_UpdateStreamChunk(BWF_CHUNK_BEXT, f.Handle(), nullptr, 10, nullptr),
              E_INVALIDARG);
}

TEST(BwfRiffDelete, RemovesEitherSpellingAndMissingIsNoFailure)
{
    const Bytes bext = Chunk("BEXT", HandBext("h", true)), ixml = Chunk("iXML", ToBytes(Ixml("p")));
    TempFile f(Wave(bext + ixml));
    DWORD bytes = 0;
    ASSERT_EQ(bwfriff_DeleteAllChunks(f.Handle(), &bytes), S_OK);
    EXPECT_EQ(bytes, bext.size() + ixml.size());
    EXPECT_EQ(f.Read(), Wave({}));
    ASSERT_EQ(bwfriff_DeleteChunk(BWF_CHUNK_IXML, f.Handle(), &bytes), S_OK);
    EXPECT_EQ(bytes, 0u);
    EXPECT_EQ(bwfriff_DeleteChunk(5, f.Handle(), &bytes), E_INVALIDARG);
}

#ifdef TQ_BWF_REFERENCE_FILES
namespace {

std::wstring MediaFolder()
{
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring folder(path);
    return folder.substr(0, folder.find_last_of(L'\\')) + L"\\testmedia\\";
}

} // namespace

TEST(BwfInterop, ReadsWhatFfmpegWrites)
{
    const std::wstring path = MediaFolder() + L"bwf_ffmpeg.wav";
    HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                              0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    Record r;
    BOOL found = FALSE;
    EXPECT_EQ(bwfriff_LoadInfo(file, &r.chunk, &found), S_OK);
    CloseHandle(file);
    EXPECT_TRUE(found);
    EXPECT_EQ(r.chunk.sampleRate, 44100u);
    EXPECT_STREQ(r.chunk.description, "Take one");
    EXPECT_STREQ(r.chunk.originator, "Field recorder");
    EXPECT_STREQ(r.chunk.originatorReference, "REF123");
    EXPECT_STREQ(r.chunk.originationDate, "2026-01-02");
    EXPECT_STREQ(r.chunk.originationTime, "10:11:12");
    const ULONGLONG reference =
        (static_cast<ULONGLONG>(r.chunk.timeReferenceHigh) << 32) | r.chunk.timeReferenceLow;
    EXPECT_EQ(reference, 123456789012ull);
    EXPECT_STREQ(GetIxmlCodingHistoryValueGlobal(&r.chunk), "A=PCM,F=44100,W=16,M=mono");
}

// Writes a file for ffprobe, which a test of its own runs behind this one.
TEST(BwfInterop, WritesAFileForFfmpeg)
{
    const std::wstring path = MediaFolder() + L"bwf_ours.wav";
    HANDLE file = CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                              0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    const Bytes image = Riff(Fmt(48000, 1, 16) + Chunk("data", Bytes(9600)));
    DWORD written = 0;
    WriteFile(file, image.data(), static_cast<DWORD>(image.size()), &written, nullptr);

    Record r;
    std::strcpy(r.chunk.description, "Our description");
    std::strcpy(r.chunk.originator, "Our originator");
    std::strcpy(r.chunk.originationDate, "2026-11-24");
    r.chunk.timeReferenceLow = 0xDEADBEEF;
    r.chunk.timeReferenceHigh = 1;
    r.chunk.version = 1;
    ASSERT_EQ(SetIxmlCodingHistoryValueGlobal(&r.chunk, "A=PCM,F=48000,W=16,M=mono"), S_OK);
    ASSERT_EQ(SetIxmlValueGlobal(&r.chunk, TQMETA_IXML_PROJECT, L"Interop"), S_OK);
    void* bext = nullptr;
    DWORD size = 0;
    ASSERT_EQ(BuildRawBwfIxmlChunkGlobal(&r.chunk, &bext, &size, BWF_CHUNK_BEXT, 0, 0), S_OK);
    EXPECT_EQ(bwfriff_UpdateStreamChunk(BWF_CHUNK_BEXT, file, bext, size, nullptr), S_OK);
    FreeBlock(bext);
    EXPECT_EQ(BuildAndWriteRawIxmlChunk(file, &r.chunk, BWF_RIFF), S_OK);
    CloseHandle(file);
}
#endif
