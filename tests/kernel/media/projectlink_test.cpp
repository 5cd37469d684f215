// Tests of project links: the record, its chunks in a wave file and in a side-car file.
#include "projectlink.h"

#include "kernel/media/wave64image.h"

#include <gtest/gtest.h>

#include <string>

using namespace tq::test;

namespace {

const GUID kRenderer = {0x12345678, 0x9ABC, 0xDEF0, {1, 2, 3, 4, 5, 6, 7, 8}};
const Bytes kAudio = Pattern(600, 3);

Bytes Wide(const wchar_t* s, bool terminated = true)
{
    const size_t chars = std::wcslen(s) + (terminated ? 1 : 0);
    const auto* p = reinterpret_cast<const BYTE*>(s);
    return Bytes(p, p + chars * sizeof(wchar_t));
}

Bytes Wave(const Bytes& before, const Bytes& after = {})
{
    return Riff(Chunk("fmt ", Pattern(16)) + before + Chunk("data", kAudio) + after);
}

Bytes Version(DWORD v = TQLINK_VERSION)
{
    return Chunk("splv", U32(v));
}

void Fill(CTqLinkProjectInfo& info)
{
    ASSERT_EQ(info.SetProjectPath(L"C:\\Projects\\Song.prj"), S_OK);
    ASSERT_EQ(info.SetCommandLine(L"/open \"C:\\Projects\\Song.prj\""), S_OK);
    info.SetRendererGuid(kRenderer);
    ASSERT_EQ(info.SetTemplateName(L"44.1 kHz, 24 Bit"), S_OK);
    const Bytes templ = Pattern(33), app = Pattern(5, 0x70), project = Pattern(1001, 9);
    ASSERT_EQ(info.SetTemplateData(templ.data(), 33), S_OK);
    ASSERT_EQ(info.SetAppTemplateData(app.data(), 5), S_OK);
    ASSERT_EQ(info.SetCreatorAppInfo(L"Editor 3.1"), S_OK);
    ASSERT_EQ(info.SetCreatorWndClassName(L"EditorMainWindow"), S_OK);
    ASSERT_EQ(info.SetProjectData(project.data(), 1001), S_OK);
}

Bytes BlockOf(const void* data, DWORD size)
{
    const auto* p = static_cast<const BYTE*>(data);
    return p ? Bytes(p, p + size) : Bytes();
}

void ExpectEqual(const CTqLinkProjectInfo& a, const CTqLinkProjectInfo& b)
{
    EXPECT_EQ(a.GetValid(), b.GetValid());
    EXPECT_STREQ(a.GetProjectPath(), b.GetProjectPath());
    EXPECT_STREQ(a.GetCommandLine(), b.GetCommandLine());
    EXPECT_EQ(a.GetRendererGuid(), b.GetRendererGuid());
    EXPECT_STREQ(a.GetTemplateName(), b.GetTemplateName());
    EXPECT_EQ(BlockOf(a.GetTemplateData(), a.GetTemplateDataSize()),
              BlockOf(b.GetTemplateData(), b.GetTemplateDataSize()));
    EXPECT_EQ(BlockOf(a.GetAppTemplateData(), a.GetAppTemplateDataSize()),
              BlockOf(b.GetAppTemplateData(), b.GetAppTemplateDataSize()));
    EXPECT_STREQ(a.GetCreatorAppInfo(), b.GetCreatorAppInfo());
    EXPECT_STREQ(a.GetCreatorWndClassName(), b.GetCreatorWndClassName());
    EXPECT_EQ(BlockOf(a.GetProjectData(), a.GetProjectDataSize()),
              BlockOf(b.GetProjectData(), b.GetProjectDataSize()));
}

ULONGLONG DataOffset(const TempFile& f)
{
    const Bytes all = f.Read();
    for (size_t at = 12; at + 8 <= all.size();)
    {
        DWORD size = 0;
        std::memcpy(&size, &all[at + 4], 4);
        if (std::memcmp(&all[at], "data", 4) == 0) return at + 8;
        at += 8 + size + (size & 1);
    }
    return 0;
}

} // namespace

TEST(ProjectLinkRiff, WrittenLinkReadsBackAndAudioStays)
{
    TempFile f(Wave({}));
    const ULONGLONG dataAt = DataOffset(f);
    CTqLinkProjectInfo info;
    Fill(info);
    DWORD written = 0;
    ASSERT_EQ(ProjectLinkRiff_WriteInfo(f.Handle(), &info, &written), S_OK);
    EXPECT_EQ(written, f.Length() - Wave({}).size());
    EXPECT_EQ(f.U32At(4), f.Length() - 8);
    EXPECT_EQ(DataOffset(f), dataAt);
    EXPECT_EQ(f.Read(dataAt, static_cast<DWORD>(kAudio.size())), kAudio);

    CTqLinkProjectInfo loaded;
    BOOL found = FALSE;
    ASSERT_EQ(ProjectLinkRiff_LoadInfo(f.Handle(), &loaded, &found), S_OK);
    EXPECT_TRUE(found);
    EXPECT_EQ(loaded.GetVersion(), TQLINK_VERSION);
    EXPECT_EQ(loaded.GetValid(), 0x1FFu);
    ExpectEqual(loaded, info);

    // A smaller block keeps its place and its exact size; filler takes the rest of its room.
    const ULONGLONG length = f.Length();
    ASSERT_EQ(info.SetProjectData(kAudio.data(), 10), S_OK);
    ASSERT_EQ(info.SetTemplateData(kAudio.data(), 24), S_OK);
    ASSERT_EQ(ProjectLinkRiff_WriteInfo(f.Handle(), &info, &written), S_OK);
    EXPECT_EQ(f.Length(), length);
    EXPECT_EQ(written, 0u);
    ASSERT_EQ(ProjectLinkRiff_LoadInfo(f.Handle(), &loaded, &found), S_OK);
    ExpectEqual(loaded, info);

    // Fewer and longer fields: the dropped ones become filler, the grown one moves behind.
    CTqLinkProjectInfo second;
    ASSERT_EQ(second.SetProjectPath(L"D:\\A much longer path to the project\\Song.prj"), S_OK);
    const ULONGLONG before = f.Length();
    ASSERT_EQ(ProjectLinkRiff_WriteInfo(f.Handle(), &second, &written), S_OK);
    EXPECT_EQ(DataOffset(f), dataAt);
    EXPECT_EQ(f.Read(dataAt, static_cast<DWORD>(kAudio.size())), kAudio);
    EXPECT_GT(f.Length(), before);
    ASSERT_EQ(ProjectLinkRiff_LoadInfo(f.Handle(), &loaded, &found), S_OK);
    EXPECT_EQ(loaded.GetValid(), DWORD(TQLINK_PROJECTPATH));
    EXPECT_STREQ(loaded.GetProjectPath(), L"D:\\A much longer path to the project\\Song.prj");

    DWORD removed = 0;
    ASSERT_EQ(ProjectLinkRiff_DeleteInfo(f.Handle(), &removed), S_OK);
    EXPECT_GT(removed, 0u);
    EXPECT_EQ(ProjectLinkRiff_LoadInfo(f.Handle(), &loaded, &found), TQ_E_CORRUPTFILE);
}

TEST(ProjectLinkRiff, LimitsOfEachChunk)
{
    struct Case
    {
        const char* what;
        Bytes chunks;
        HRESULT hr;
        BOOL found;
        DWORD valid;
    };
    const Case cases[] = {
        {"only a version", Version(), S_OK, FALSE, 0},
        {"no version", Chunk("splp", Wide(L"C:\\a")), TQ_E_CORRUPTFILE, FALSE, 0},
        {"version of 3 bytes", Chunk("splv", Bytes(3)), TQ_E_CORRUPTFILE, FALSE, 0},
        {"newer major version", Version(0x02000000), TQ_E_NEWERVERSION, FALSE, 0},
        {"newer minor version", Version(0x01FFFFFF) + Chunk("spcl", Wide(L"x")), S_OK, TRUE,
         TQLINK_COMMANDLINE},
        {"path of 2 bytes passed, command line of 2 taken",
         Version() + Chunk("splp", Wide(L"")) + Chunk("spcl", Wide(L"")), S_OK, TRUE,
         TQLINK_COMMANDLINE},
        {"application data without template data", Version() + Chunk("srat", Bytes{1, 2, 3}), S_OK,
         FALSE, 0},
        {"application data behind template data",
         Version() + Chunk("srat", Bytes{1, 2, 3}) + Chunk("srtd", Bytes{4}), S_OK, TRUE,
         TQLINK_TEMPLATEDATA | TQLINK_APPTEMPLATEDATA},
        {"renderer of 15 bytes", Version() + Chunk("sprg", Bytes(15)), S_OK, FALSE, 0},
        {"empty template name", Version() + Chunk("srtn", {}), S_OK, FALSE, 0},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.what);
        TempFile f(Wave(c.chunks));
        CTqLinkProjectInfo info;
        BOOL found = 2;
        EXPECT_EQ(ProjectLinkRiff_LoadInfo(f.Handle(), &info, &found), c.hr);
        EXPECT_EQ(found, c.found);
        EXPECT_EQ(info.GetValid(), c.valid);
    }
}

TEST(ProjectLinkRiff, AFailedReadLeavesAnEmptyRecord)
{
    // A project that claims more than the file holds, behind a path that was read.
    TempFile f(Wave(Version() + Chunk("splp", Wide(L"C:\\a")), Header("spem", 100000) + Bytes(8)));
    CTqLinkProjectInfo info;
    BOOL found = TRUE;
    EXPECT_EQ(ProjectLinkRiff_LoadInfo(f.Handle(), &info, &found), TQ_E_READFAILED);
    EXPECT_FALSE(found);
    EXPECT_EQ(info.GetValid(), 0u);
    EXPECT_EQ(info.GetProjectPath(), nullptr);
    EXPECT_EQ(ProjectLinkRiff_LoadInfo(f.Handle(), nullptr, &found), E_INVALIDARG);
}

TEST(ProjectLinkRiff, SideCarIsMadeAsATqplForm)
{
    TempFile f;
    f.Close();
    DeleteFileW(f.Path().c_str());
    CTqLinkProjectInfo info;
    Fill(info);
    ASSERT_EQ(ProjectLinkRiff_WriteSideCar(f.Path().c_str(), &info), S_OK);
    ASSERT_EQ(ProjectLinkRiff_WriteSideCar(f.Path().c_str(), &info), S_OK) << "and updated";
    HANDLE h = CreateFileW(f.Path().c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                           0, nullptr);
    ASSERT_NE(h, INVALID_HANDLE_VALUE);
    DWORD header[3] = {};
    DWORD got = 0;
    ReadFile(h, header, sizeof header, &got, nullptr);
    EXPECT_EQ(header[0], Id("RIFF"));
    EXPECT_EQ(header[2], Id("TQPL"));
    EXPECT_EQ(header[1], GetFileSize(h, nullptr) - 8);
    CTqLinkProjectInfo loaded;
    BOOL found = FALSE;
    ASSERT_EQ(ProjectLinkRiff_LoadInfo(h, &loaded, &found), S_OK);
    CloseHandle(h);
    ExpectEqual(loaded, info);
}

TEST(ProjectLinkInfo, TextsAreTerminatedAndCopiesCut)
{
    CTqLinkProjectInfo info;
    // Bytes as a chunk may hold them: odd and without a terminator.
    const Bytes odd = Cut(Wide(L"abc", false), 5);
    ASSERT_EQ(info.SetProjectPathToBuffer(odd.data(), 5), S_OK);
    EXPECT_STREQ(info.GetProjectPath(), L"ab\x0063");
    ASSERT_EQ(info.SetProjectPath(L"C:\\Projects"), S_OK);
    EXPECT_EQ(info.GetProjectPathSize(), 12u * sizeof(WCHAR));
    WCHAR buffer[5];
    EXPECT_EQ(info.GetProjectPath(buffer, 5), TQ_E_BUFFERTOOSMALL);
    EXPECT_STREQ(buffer, L"C:\\P");
    EXPECT_EQ(info.GetCommandLine(buffer, 5), TQ_E_NOTFOUND);
    EXPECT_EQ(info.GetValid(), DWORD(TQLINK_PROJECTPATH));
    info.Init();
    EXPECT_EQ(info.GetValid(), 0u);
    EXPECT_EQ(info.GetProjectPath(), nullptr);
}

TEST(ProjectLinkRiff, WideFramingsKeepTheirAudioAndSizes)
{
    struct Framing
    {
        const char* name;
        Bytes image;
        HRESULT (*write)(HANDLE, const CTqLinkProjectInfo*, ULONGLONG*);
        HRESULT (*load)(HANDLE, CTqLinkProjectInfo*, BOOL*);
        ULONGLONG sizeAt; // where the 64-bit size of the file stands
        ULONGLONG sizeBias;
    };
    const Framing framings[] = {
        {"Wave64",
         W64File(W64Chunk(RIFF64_GUID_FMT, Pattern(16)) + W64Chunk(RIFF64_GUID_DATA, kAudio)),
         ProjectLinkRiff64_WriteInfo, ProjectLinkRiff64_LoadInfo, 16, 0},
        {"RF64", Rf64File(Header("data", 0xFFFFFFFF) + kAudio, kAudio.size()),
         ProjectLinkRF64_WriteInfo, ProjectLinkRiffRF64_LoadInfo, 20, 8},
    };
    for (const Framing& fr : framings)
    {
        SCOPED_TRACE(fr.name);
        TempFile f(fr.image);
        const ULONGLONG audioAt = fr.image.size() - kAudio.size();
        CTqLinkProjectInfo info;
        Fill(info);
        ULONGLONG written = 0;
        ASSERT_EQ(fr.write(f.Handle(), &info, &written), S_OK);
        EXPECT_EQ(written, f.Length() - fr.image.size());
        EXPECT_EQ(f.Read(audioAt, static_cast<DWORD>(kAudio.size())), kAudio);
        EXPECT_EQ(f.Read(fr.sizeAt, 8), U64(f.Length() - fr.sizeBias));
        CTqLinkProjectInfo loaded;
        BOOL found = FALSE;
        ASSERT_EQ(fr.load(f.Handle(), &loaded, &found), S_OK);
        EXPECT_TRUE(found);
        ExpectEqual(loaded, info);
    }
}
