// Tests of the summary and display lists on every framing (RIFF, Wave64, RF64): the bytes each
// writes, what each reads back, damaged lists, lists behind 4 GiB of audio, and files with INFO
// left for a widely used audio tool to read back.
#include "displist.h"
#include "summary.h"

#include "kernel/media/displayholder.h"
#include "kernel/media/wave64image.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace tq::test;

namespace {

using Items = std::vector<std::pair<DWORD, std::wstring>>;

struct Summary
{
    tSUMMARYLIST list = {};
    Summary() = default;
    explicit Summary(const Items& items)
    {
        for (const auto& [id, text] : items)
            EXPECT_EQ(TqSummary_SetItem(&list, id, text.c_str()), S_OK);
    }
    ~Summary() { TqSummary_Free(&list); }
    Items Get() const
    {
        Items items;
        for (INT32 i = 0; i < list.count; ++i)
            items.emplace_back(list.items[i].id, list.items[i].text ? list.items[i].text : L"?");
        return items;
    }
};

Bytes Wide(const wchar_t* text)
{
    const auto* p = reinterpret_cast<const BYTE*>(text);
    return Bytes(p, p + (wcslen(text) + 1) * sizeof(wchar_t));
}

// One framing: its entry points, brought to one shape, and how it frames chunks and lists.
struct Framing
{
    const char* name;
    HRESULT (*load)(HANDLE, tSUMMARYLIST*, ULONGLONG*, bool wide);
    HRESULT (*save)(HANDLE, const tSUMMARYLIST*, ULONGLONG*, bool wide);
    HRESULT (*text)(HANDLE, DWORD, WCHAR*, DWORD, ULONGLONG*);
    HRESULT (*loadDisplay)(HANDLE, tDISPLIST*, ULONGLONG*);
    HRESULT (*saveDisplay)(HANDLE, const tDISPLIST*, ULONGLONG*);
    Bytes (*chunk)(const char (&id)[5], const Bytes& data);
    // A header that claims size bytes of data, whatever follows.
    Bytes (*header)(const char (&id)[5], ULONGLONG size);
    Bytes (*list)(const char (&type)[5], const Bytes& entries);
    ULONGLONG listHeader; // header and type
};

const Framing kRiff = {
    "RIFF",
    [](HANDLE f, tSUMMARYLIST* l, ULONGLONG* size, bool wide) {
        DWORD bound = static_cast<DWORD>(*size);
        return wide ? TqSummary_LoadUNFO(f, l, &bound) : TqSummary_Load(f, l, &bound);
    },
    [](HANDLE f, const tSUMMARYLIST* l, ULONGLONG* written, bool wide) {
        DWORD bytes = 0;
        const HRESULT hr = wide ? TqSummary_SaveUNFO(f, l, &bytes) : TqSummary_Save(f, l, &bytes);
        *written = bytes;
        return hr;
    },
    [](HANDLE f, DWORD id, WCHAR* buffer, DWORD chars, ULONGLONG* remaining) {
        DWORD bound = static_cast<DWORD>(*remaining);
        const HRESULT hr = TqSummary_GetStringFromFile(f, id, buffer, chars, &bound);
        *remaining = bound;
        return hr;
    },
    [](HANDLE f, tDISPLIST* l, ULONGLONG* remaining) {
        DWORD bound = static_cast<DWORD>(*remaining);
        const HRESULT hr = displist_Load(f, l, &bound);
        *remaining = bound;
        return hr;
    },
    [](HANDLE f, const tDISPLIST* l, ULONGLONG* written) {
        DWORD bytes = 0;
        const HRESULT hr = displist_Save(f, l, &bytes);
        *written = bytes;
        return hr;
    },
    Chunk,
    [](const char (&id)[5], ULONGLONG size) { return Header(id, static_cast<DWORD>(size)); },
    List,
    12,
};

const Framing kWave64 = {
    "Wave64",
    [](HANDLE f, tSUMMARYLIST* l, ULONGLONG* size, bool wide) {
        return wide ? TqSummary_LoadUNFO64(f, l, size) : TqSummary_Load64(f, l, size);
    },
    [](HANDLE f, const tSUMMARYLIST* l, ULONGLONG* written, bool wide) {
        return wide ? TqSummary64_SaveUNFO(f, l, written) : TqSummary64_Save(f, l, written);
    },
    TqSummary64_GetStringFromFile,
    displist64_Load,
    displist64_Save,
    [](const char (&id)[5], const Bytes& data) { return W64Chunk(Family(id), data); },
    [](const char (&id)[5], ULONGLONG size) { return GuidBytes(Family(id)) + U64(size + 24); },
    [](const char (&type)[5], const Bytes& entries) { return W64List(Family(type), entries); },
    40,
};

const Framing kRf64 = {
    "RF64",
    [](HANDLE f, tSUMMARYLIST* l, ULONGLONG* size, bool wide) {
        return wide ? TqSummary_LoadUNFORF64(f, l, size) : TqSummary_LoadRF64(f, l, size);
    },
    [](HANDLE f, const tSUMMARYLIST* l, ULONGLONG* written, bool wide) {
        return wide ? TqSummaryRF64_SaveUNFO(f, l, written) : TqSummaryRF64_Save(f, l, written);
    },
    TqSummaryRF64_GetStringFromFile,
    displistRF64_Load,
    displistRF64_Save,
    Chunk,
    [](const char (&id)[5], ULONGLONG size) { return Header(id, static_cast<DWORD>(size)); },
    List,
    12,
};

const Framing* const kFramings[] = {&kRiff, &kWave64, &kRf64};

} // namespace

TEST(SummaryFraming, EachFramingWritesItsFormAndReadsItBack)
{
    const Items items = {{Id("INAM"), L"Dawn chorus"}, {Id("ICMT"), L""}, {Id("IART"), L"Ab"}};
    for (const Framing* fr : kFramings)
        for (const bool wide : {false, true})
        {
            SCOPED_TRACE(std::string(fr->name) + (wide ? " UNFO" : " INFO"));
            Summary l(items);
            TempFile f;
            ULONGLONG written = 0;
            ASSERT_EQ(fr->save(f.Handle(), &l.list, &written, wide), S_OK);
            // Texts keep their terminator; the pad is the framing's (to even, or to 8).
            const auto text = [&](const wchar_t* w, const char* ansi) {
                return wide ? Wide(w) : Text(ansi) + Bytes{0};
            };
            const Bytes image = fr->list(wide ? "UNFO" : "INFO",
                                         fr->chunk("INAM", text(L"Dawn chorus", "Dawn chorus")) +
                                             fr->chunk("ICMT", text(L"", "")) +
                                             fr->chunk("IART", text(L"Ab", "Ab")));
            EXPECT_EQ(f.Read(), image);
            EXPECT_EQ(written, image.size());
            EXPECT_EQ(f.Pos(), image.size()) << "the cursor stays at the end";

            f.Seek(fr->listHeader);
            ULONGLONG size = image.size() - fr->listHeader;
            Summary back{{{Id("ISFT"), L"replaced"}}};
            ASSERT_EQ(fr->load(f.Handle(), &back.list, &size, wide), S_OK);
            EXPECT_EQ(back.Get(), items);
        }
}

TEST(SummaryFraming, DamagedListsAreRefusedWithoutAPartialList)
{
    for (const Framing* fr : kFramings)
    {
        const Bytes good = fr->chunk("INAM", Text("ok") + Bytes{0});
        const struct
        {
            const char* name;
            Bytes entries;
            ULONGLONG slack; // what the list claims beyond the file, as a damaged size does
            HRESULT expected;
        } cases[] = {
            {"an entry larger than the list", good + fr->header("IART", 0x7FFFFFF0) + Text("xy"), 0,
             TQ_E_CORRUPTFILE},
            {"the file ends inside an entry", good + fr->header("IART", 40) + Text("short"), 64,
             TQ_E_READFAILED},
            {"the file ends inside a header", good + Cut(fr->header("IART", 4), 6), 64,
             TQ_E_READFAILED},
        };
        for (const auto& c : cases)
        {
            SCOPED_TRACE(std::string(fr->name) + ": " + c.name);
            TempFile f(c.entries);
            ULONGLONG size = c.entries.size() + c.slack;
            Summary l{{{Id("ISFT"), L"was here"}}};
            EXPECT_EQ(fr->load(f.Handle(), &l.list, &size, false), c.expected);
            EXPECT_EQ(l.list.count, 0);
            EXPECT_EQ(l.list.items, nullptr);
        }
    }

    // A 64-bit size near 2^64 must neither wrap the bound nor cost an allocation.
    const Bytes huge = GuidBytes(Family("INAM")) + U64(~0ull - 3) + Text("abcd");
    TempFile f(huge);
    ULONGLONG size = ~0ull;
    Summary l;
    EXPECT_TRUE(FAILED(TqSummary_Load64(f.Handle(), &l.list, &size)));
    EXPECT_EQ(l.list.items, nullptr);
}

// Wave64 entries named by a GUID of another family carry no id: they are stepped over. A
// stored size that counts the padding reads as well as one that does not.
TEST(SummaryFraming, Wave64StepsOverForeignEntriesAndTakesBothSizings)
{
    const Bytes entries = W64Chunk(kTestGuid, Text("foreign")) +
                          W64Chunk(Family("INAM"), Text("Title") + Bytes{0}, true) +
                          W64Chunk(Family("IART"), Text("Band") + Bytes{0});
    TempFile f(entries);
    ULONGLONG size = entries.size();
    Summary l;
    ASSERT_EQ(TqSummary_Load64(f.Handle(), &l.list, &size), S_OK);
    EXPECT_EQ(l.Get(), (Items{{Id("INAM"), L"Title"}, {Id("IART"), L"Band"}}));
}

TEST(SummaryFraming, OneTextIsFoundOnEachFramingAndTheCursorStays)
{
    for (const Framing* fr : kFramings)
    {
        SCOPED_TRACE(fr->name);
        const Bytes file = fr->chunk("fmt ", Pattern(16)) + fr->chunk("DISP", U32(1) + Text("x")) +
                           fr->list("INFO", fr->chunk("INAM", Text("A long title") + Bytes{0}) +
                                                fr->chunk("IART", Bytes{0}));
        TempFile f(Pattern(5) + file);
        f.Seek(5);
        ULONGLONG remaining = file.size();
        wchar_t text[6];
        ASSERT_EQ(fr->text(f.Handle(), Id("INAM"), text, 6, &remaining), S_OK);
        EXPECT_STREQ(text, L"A lon") << "cut to the buffer";
        EXPECT_EQ(f.Pos(), 5u);
        remaining = file.size();
        ASSERT_EQ(fr->text(f.Handle(), Id("IART"), text, 6, &remaining), S_OK);
        EXPECT_STREQ(text, L"");
        remaining = file.size();
        EXPECT_EQ(fr->text(f.Handle(), Id("IGNR"), text, 6, &remaining), TQ_E_NOTFOUND);
        EXPECT_EQ(f.Pos(), 5u);
    }
}

TEST(DisplayFraming, EachFramingWritesItsFormAndReadsItBack)
{
    for (const Framing* fr : kFramings)
    {
        SCOPED_TRACE(fr->name);
        Display d;
        const Bytes text = Text("abc"), picture = Pattern(40);
        ASSERT_EQ(displist_SetItem(&d.list, CF_TEXT, 3, text.data()), S_OK);
        ASSERT_EQ(displist_SetItem(&d.list, CF_DIB, 40, picture.data()), S_OK);
        TempFile f;
        ULONGLONG written = 0;
        ASSERT_EQ(fr->saveDisplay(f.Handle(), &d.list, &written), S_OK);
        const Bytes image =
            fr->chunk("DISP", U32(CF_TEXT) + text) + fr->chunk("DISP", U32(CF_DIB) + picture);
        EXPECT_EQ(f.Read(), image);
        EXPECT_EQ(written, image.size());

        // Among other chunks, with a format no list holds and a chunk of the format alone.
        const Bytes mixed = fr->chunk("fmt ", Pattern(16)) +
                            fr->chunk("DISP", U32(CF_BITMAP) + Pattern(8)) +
                            fr->chunk("DISP", U32(CF_TEXT) + text) + fr->chunk("junk", Pattern(3)) +
                            fr->chunk("DISP", U32(CF_DIB));
        TempFile g(mixed);
        Display back;
        ASSERT_EQ(displist_SetItem(&back.list, CF_DIB, 2, "xy"), S_OK);
        ULONGLONG remaining = mixed.size();
        ASSERT_EQ(fr->loadDisplay(g.Handle(), &back.list, &remaining), S_OK);
        EXPECT_EQ(back.Payload(CF_TEXT), text);
        EXPECT_EQ(displist_GetItem(&back.list, CF_DIB)->size, 0u) << "a DISP of a format alone";
        EXPECT_EQ(remaining, 0u);
        EXPECT_EQ(g.Pos(), 0u) << "the walk ends where it began";
    }
}

TEST(DisplayFraming, DamagedChunksKeepWhatWasLoaded)
{
    for (const Framing* fr : kFramings)
    {
        const Bytes first = fr->chunk("DISP", U32(CF_TEXT) + Text("ok"));
        const struct
        {
            const char* name;
            Bytes bytes;
            HRESULT expected;
        } cases[] = {
            {"beyond the bound", first + fr->header("DISP", 0x7FFFFFF0) + U32(CF_DIB),
             TQ_E_CORRUPTFILE},
            {"file ends in the payload", first + fr->header("DISP", 12) + U32(CF_DIB) + Text("ab"),
             TQ_E_READFAILED},
        };
        for (const auto& c : cases)
        {
            SCOPED_TRACE(std::string(fr->name) + ": " + c.name);
            TempFile f(c.bytes);
            Display d;
            ULONGLONG remaining = c.bytes.size() + 32;
            EXPECT_EQ(fr->loadDisplay(f.Handle(), &d.list, &remaining), c.expected);
            EXPECT_EQ(d.Payload(CF_TEXT), Text("ok"));
            EXPECT_EQ(displist_GetItem(&d.list, CF_DIB)->data, nullptr);
        }
    }
}

// Behind more than 4 GiB of audio (a sparse file), the lists are written, found and read with
// 64-bit positions and bounds.
TEST(SummaryFraming, ListsBehindFourGigabytesOfAudio)
{
    constexpr ULONGLONG kData = (4ull << 30) + 4096;
    Summary l{{{Id("INAM"), L"Long take"}}};
    Display d;
    ASSERT_EQ(displist_SetItem(&d.list, CF_TEXT, 4, "note"), S_OK);

    {
        SCOPED_TRACE("RF64");
        const Bytes data = Header("data", RF64_SIZE_IN_DS64);
        const Bytes head = Rf64File(data, kData, Rf64File(data, kData).size() - 8 + kData);
        TempFile f;
        if (!MakeSparse(f.Handle(), head.size() + kData)) GTEST_SKIP() << "no sparse files here";
        WriteAt(f.Handle(), 0, head);
        // Chunks behind the audio go where the ds64 size ends.
        ASSERT_EQ(SeekToRF64End(f.Handle()), S_OK);
        ASSERT_EQ(f.Pos(), head.size() + kData);
        ULONGLONG list = 0, disp = 0;
        ASSERT_EQ(TqSummaryRF64_Save(f.Handle(), &l.list, &list), S_OK);
        ASSERT_EQ(displistRF64_Save(f.Handle(), &d.list, &disp), S_OK);
        ASSERT_EQ(RF64_UpdateRIFFSize(f.Handle(), static_cast<LONGLONG>(list + disp)), S_OK);

        // The bound behind the audio: what the ds64 size says lies beyond it.
        f.Seek(head.size() + kData);
        ULONGLONG remaining = list + disp, size = 0;
        ASSERT_EQ(RF64_FindListChunk(f.Handle(), RIFF_ID_INFO, &size, &remaining), S_OK);
        Summary back;
        ASSERT_EQ(TqSummary_LoadRF64(f.Handle(), &back.list, &size), S_OK);
        EXPECT_EQ(back.Get(), l.Get());
        Display backDisplay;
        remaining = disp;
        f.Seek(head.size() + kData + list);
        ASSERT_EQ(displistRF64_Load(f.Handle(), &backDisplay.list, &remaining), S_OK);
        EXPECT_EQ(backDisplay.Payload(CF_TEXT), Text("note"));
    }
    {
        SCOPED_TRACE("Wave64");
        const Bytes head = GuidBytes(RIFF64_GUID_DATA) + U64(kData + 24);
        TempFile f;
        if (!MakeSparse(f.Handle(), 40 + head.size() + kData)) GTEST_SKIP() << "no sparse files";
        f.Seek(40 + head.size() + kData);
        ULONGLONG list = 0, disp = 0;
        ASSERT_EQ(TqSummary64_Save(f.Handle(), &l.list, &list), S_OK);
        ASSERT_EQ(displist64_Save(f.Handle(), &d.list, &disp), S_OK);
        const ULONGLONG length = f.Pos();
        WriteAt(f.Handle(), 0, W64File({}, RIFF64_GUID_WAVE, length) + head);

        wchar_t text[32];
        f.Seek(40);
        ULONGLONG remaining = length - 40;
        ASSERT_EQ(TqSummary64_GetStringFromFile(f.Handle(), Id("INAM"), text, 32, &remaining),
                  S_OK);
        EXPECT_STREQ(text, L"Long take");
        ULONGLONG size = 0;
        f.Seek(40);
        remaining = length - 40;
        const GUID info = Family("INFO");
        ASSERT_EQ(riff64_FindListChunk(f.Handle(), &info, &size, &remaining), S_OK);
        Summary back;
        ASSERT_EQ(TqSummary_Load64(f.Handle(), &back.list, &size), S_OK);
        EXPECT_EQ(back.Get(), l.Get());
        Display backDisplay;
        remaining = disp;
        f.Seek(length - disp);
        ASSERT_EQ(displist64_Load(f.Handle(), &backDisplay.list, &remaining), S_OK);
        EXPECT_EQ(backDisplay.Payload(CF_TEXT), Text("note"));
    }
}

// A WAV and an RF64 file whose INFO these functions wrote, left for the tool to read back after
// the test (see summary.cmake).
TEST(SummaryFraming, FilesWithInfoForTheToolToRead)
{
    Summary l{{{Id("INAM"), L"Our title"}, {Id("IART"), L"Our artist"}, {Id("ICMT"), L"Ours"}}};
    const WAVEFORMATEX wfx = Pcm(1, 8000, 16);
    const Bytes samples = Samples(800, wfx.nBlockAlign);
    const std::wstring folder = MediaFolder();
    CreateDirectoryW(folder.c_str(), nullptr);
    {
        TempFile f(Riff(Chunk("fmt ", FmtBytes(wfx, 16)) + Chunk("data", samples)));
        f.Seek(f.Length());
        DWORD written = 0;
        ASSERT_EQ(TqSummary_Save(f.Handle(), &l.list, &written), S_OK);
        ASSERT_EQ(riff_UpdateRIFFSize(f.Handle(), static_cast<LONG>(written)), S_OK);
        ASSERT_TRUE(WriteFileBytes(folder + L"summary_ours.wav", f.Read()));
    }
    {
        const Bytes head = Text("RF64") + U32(0xFFFFFFFF) + Text("WAVE") +
                           Chunk("ds64", U64(0) + U64(samples.size()) + U64(800) + U32(0)) +
                           Chunk("fmt ", FmtBytes(wfx, 16)) + Header("data", RF64_SIZE_IN_DS64);
        TempFile f(head + samples);
        f.Seek(f.Length());
        ULONGLONG written = 0;
        ASSERT_EQ(TqSummaryRF64_Save(f.Handle(), &l.list, &written), S_OK);
        ASSERT_EQ(RF64_UpdateRIFFSize(f.Handle(), static_cast<LONGLONG>(f.Pos() - 8)), S_OK);
        ASSERT_TRUE(WriteFileBytes(folder + L"summary_ours_rf64.wav", f.Read()));
    }
}
