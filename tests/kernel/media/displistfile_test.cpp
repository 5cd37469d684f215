// Tests of display lists read from a COM stream, and of the picture of a media file's display
// list as a bitmap, on files of every framing built in code.
#include "displist.h"

#include "kernel/media/displayholder.h"
#include "kernel/media/wave64image.h"

#include <gtest/gtest.h>

#include <shlwapi.h>

#include <string>

using namespace tq::test;

namespace {

struct Stream
{
    IStream* s;
    explicit Stream(const Bytes& b) : s(SHCreateMemStream(b.data(), static_cast<UINT>(b.size()))) {}
    ~Stream()
    {
        if (s) s->Release();
    }
    ULONGLONG Pos() const
    {
        ULARGE_INTEGER pos = {};
        s->Seek({}, STREAM_SEEK_CUR, &pos);
        return pos.QuadPart;
    }
};

Bytes Disp(DWORD format, const Bytes& payload)
{
    return Chunk("DISP", U32(format) + payload);
}

// A bottom-up 32-bit picture of 3 by 2 pixels: header and rows.
Bytes Picture(LONG height = 2, DWORD rowsPresent = 2)
{
    BITMAPINFOHEADER header = {sizeof header, 3, height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    const auto* p = reinterpret_cast<const BYTE*>(&header);
    return Bytes(p, p + sizeof header) + Pattern(12 * rowsPresent, 0x40);
}

// A file's path, removed when the object goes.
struct PathFile
{
    std::wstring path;
    explicit PathFile(const Bytes& contents)
    {
        wchar_t folder[MAX_PATH], name[MAX_PATH];
        GetTempPathW(MAX_PATH, folder);
        GetTempFileNameW(folder, L"tqd", 0, name);
        path = name;
        EXPECT_TRUE(WriteFileBytes(path, contents));
    }
    ~PathFile() { DeleteFileW(path.c_str()); }
};

} // namespace

TEST(DisplayStream, LoadsTheChunksOfAStreamAsFromAFile)
{
    Display d;
    const Bytes text = Text("from a stream");
    const Bytes chunks = Chunk("fmt ", Pattern(3)) + Disp(CF_BITMAP, Pattern(4)) +
                         Disp(CF_TEXT, text) + Disp(CF_DIB, Pattern(5));
    Stream s(Pattern(6) + chunks);
    ASSERT_NE(s.s, nullptr);
    LARGE_INTEGER to = {};
    to.QuadPart = 6;
    s.s->Seek(to, STREAM_SEEK_SET, nullptr);
    DWORD remaining = static_cast<DWORD>(chunks.size());
    ASSERT_EQ(displist_LoadFromStream(s.s, &d.list, &remaining), S_OK);
    EXPECT_EQ(d.Payload(CF_TEXT), text);
    EXPECT_EQ(d.Payload(CF_DIB), Pattern(5));
    EXPECT_EQ(remaining, 0u);
    EXPECT_EQ(s.Pos(), 6u) << "the walk ends where it began";

    // A chunk beyond the stream keeps what came before it.
    Display cut;
    const Bytes damaged = Disp(CF_TEXT, text) + Header("DISP", 400) + U32(CF_DIB) + Pattern(3);
    Stream t(damaged);
    remaining = 1000;
    EXPECT_EQ(displist_LoadFromStream(t.s, &cut.list, &remaining), TQ_E_READFAILED);
    EXPECT_EQ(cut.Payload(CF_TEXT), text);
    EXPECT_EQ(displist_GetItem(&cut.list, CF_DIB)->data, nullptr);
    EXPECT_EQ(displist_LoadFromStream(nullptr, &cut.list, &remaining), E_POINTER);
}

TEST(DisplayBitmap, ThePictureOfEveryFramingBecomesABitmap)
{
    const Bytes picture = Picture();
    const Bytes fmt = Chunk("fmt ", FmtBytes(Pcm(1, 8000, 16), 16));
    const Bytes disp = Disp(CF_TEXT, Text("caption")) + Disp(CF_DIB, picture);
    const Bytes audio = Samples(5, 2);
    const Bytes rf64Head = Text("RF64") + U32(0xFFFFFFFF) + Text("WAVE") +
                           Chunk("ds64", U64(0) + U64(audio.size()) + U64(5) + U32(0)) + fmt +
                           Header("data", RF64_SIZE_IN_DS64) + audio;
    Bytes rf64 = rf64Head + disp;
    // The ds64 size of the form, now that the file is whole.
    const Bytes riffSize = U64(rf64.size() - 8);
    std::copy(riffSize.begin(), riffSize.end(), rf64.begin() + 20);
    const struct
    {
        const char* name;
        Bytes file;
    } cases[] = {
        {"RIFF", Riff(fmt + Chunk("data", audio) + disp)},
        // Behind audio whose size only ds64 holds.
        {"RF64", rf64},
        {"Wave64", W64File(W64Chunk(RIFF64_GUID_FMT, FmtBytes(Pcm(1, 8000, 16), 16)) +
                           W64Chunk(RIFF64_GUID_DATA, audio) +
                           W64Chunk(Family("DISP"), U32(CF_TEXT) + Text("caption")) +
                           W64Chunk(Family("DISP"), U32(CF_DIB) + picture))},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.name);
        PathFile f(c.file);
        const HBITMAP bitmap = displist_CreateBitmapFromFile(f.path.c_str());
        ASSERT_NE(bitmap, nullptr);
        DIBSECTION section = {};
        ASSERT_EQ(GetObjectW(bitmap, sizeof section, &section), int(sizeof section));
        EXPECT_EQ(section.dsBm.bmWidth, 3);
        EXPECT_EQ(section.dsBm.bmHeight, 2);
        EXPECT_EQ(section.dsBm.bmBitsPixel, 32);
        const auto* bits = static_cast<const BYTE*>(section.dsBm.bmBits);
        EXPECT_EQ(Bytes(bits, bits + 24), Pattern(24, 0x40)) << "the rows as stored";
        DeleteObject(bitmap);
    }
}

TEST(DisplayBitmap, NoPictureOrABrokenOneGivesNone)
{
    const Bytes fmt = Chunk("fmt ", FmtBytes(Pcm(1, 8000, 16), 16));
    const struct
    {
        const char* name;
        Bytes file;
    } cases[] = {
        {"no display list", Riff(fmt + Disp(CF_TEXT, Text("only text")))},
        {"rows missing", Riff(fmt + Disp(CF_DIB, Picture(2, 1)))},
        {"no height", Riff(fmt + Disp(CF_DIB, Picture(0, 0)))},
        {"a header cut short", Riff(fmt + Disp(CF_DIB, Cut(Picture(), 20)))},
        {"not a media file", Text("just text")},
    };
    for (const auto& c : cases)
    {
        PathFile f(c.file);
        EXPECT_EQ(displist_CreateBitmapFromFile(f.path.c_str()), nullptr) << c.name;
    }
    EXPECT_EQ(displist_CreateBitmapFromFile(L"C:\\no such folder\\x.wav"), nullptr);
}
