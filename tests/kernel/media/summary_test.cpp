// Tests of the summary list: its items in memory, and its "INFO" and "UNFO" forms on file,
// checked against byte images written out by hand.
#include "summary.h"

#include "kernel/media/riffimage.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace tq::test;

namespace {

// Owns a list for the length of a test.
struct Summary
{
    tSUMMARYLIST list = {};
    Summary() = default;
    Summary(std::initializer_list<std::pair<const char*, const wchar_t*>> items)
    {
        for (const auto& [id, text] : items)
            EXPECT_EQ(TqSummary_SetItem(&list, Id4(id), text), S_OK);
    }
    ~Summary() { TqSummary_Free(&list); }
    static DWORD Id4(const char* id)
    {
        DWORD v;
        std::memcpy(&v, id, 4);
        return v;
    }
    std::vector<std::pair<DWORD, std::wstring>> Items() const
    {
        std::vector<std::pair<DWORD, std::wstring>> items;
        for (INT32 i = 0; i < list.count; ++i)
            items.emplace_back(list.items[i].id,
                               list.items[i].text ? list.items[i].text : L"(null)");
        return items;
    }
};

Bytes Wide(const wchar_t* text)
{
    const auto* p = reinterpret_cast<const BYTE*>(text);
    return Bytes(p, p + (wcslen(text) + 1) * sizeof(wchar_t));
}

} // namespace

TEST(SummaryList, SetReplacesAppendsAndRemoves)
{
    Summary l{{"INAM", L"Take 1"}, {"IART", L"Band"}, {"ICMT", L""}};
    EXPECT_EQ(l.list.count, 3);
    EXPECT_EQ(TqSummary_GetItemIndex(&l.list, Id("IART")), 1);
    EXPECT_EQ(TqSummary_GetItemIndex(&l.list, Id("IGNR")), TQ_E_NOTFOUND);
    EXPECT_STREQ(TqSummary_GetItemText(&l.list, Id("ICMT")), L"") << "an empty text is kept";
    EXPECT_EQ(TqSummary_GetItemText(&l.list, Id("IGNR")), nullptr);

    ASSERT_EQ(TqSummary_SetItem(&l.list, Id("INAM"), L"Take 2"), S_OK);
    ASSERT_EQ(TqSummary_SetItem(&l.list, Id("INAM"), nullptr), S_OK);
    using Items = std::vector<std::pair<DWORD, std::wstring>>;
    EXPECT_EQ(l.Items(), (Items{{Id("IART"), L"Band"}, {Id("ICMT"), L""}}))
        << "removal closes the gap, keeping the order";
    EXPECT_EQ(TqSummary_SetItem(&l.list, Id("IGNR"), nullptr), S_OK) << "nothing to remove";
    EXPECT_EQ(TqSummary_SetItem(&l.list, 0, L"x"), E_INVALIDARG);

    ASSERT_EQ(TqSummary_SetItem(&l.list, Id("IART"), nullptr), S_OK);
    ASSERT_EQ(TqSummary_SetItem(&l.list, Id("ICMT"), nullptr), S_OK);
    EXPECT_EQ(l.list.count, 0);
    EXPECT_EQ(l.list.items, nullptr) << "the last removal frees the list";
}

TEST(SummaryList, CompareCopyAndMerge)
{
    Summary a{{"INAM", L"x"}, {"IART", L"y"}};
    Summary same{{"INAM", L"x"}, {"IART", L"y"}};
    Summary swapped{{"IART", L"y"}, {"INAM", L"x"}};
    Summary otherIds{{"ICMT", L"x"}, {"IGNR", L"y"}};
    EXPECT_TRUE(TqSummary_Compare(&a.list, &same.list));
    EXPECT_FALSE(TqSummary_Compare(&a.list, &swapped.list)) << "order matters";
    EXPECT_TRUE(TqSummary_Compare(&a.list, &otherIds.list)) << "ids are not compared";
    EXPECT_FALSE(TqSummary_Compare(&a.list, nullptr));

    Summary copy{{"ISFT", L"old"}};
    ASSERT_EQ(TqSummary_Copy(&copy.list, &a.list), S_OK);
    EXPECT_TRUE(TqSummary_Compare(&copy.list, &a.list));
    EXPECT_NE(copy.list.items[0].text, a.list.items[0].text) << "texts are copied, not shared";

    // The edits from before to after (INAM changed, IART removed, ICOP added) are made on a
    // file's list that has moved on by itself (ISFT added).
    Summary before{{"INAM", L"x"}, {"IART", L"y"}};
    Summary after{{"INAM", L"renamed"}, {"ICOP", L"(c)"}};
    Summary file{{"INAM", L"x"}, {"IART", L"y"}, {"ISFT", L"tool"}};
    Summary merged{{"IGNR", L"replaced"}};
    ASSERT_EQ(TqSummary_Merge(&merged.list, &file.list, &before.list, &after.list), S_OK);
    using Items = std::vector<std::pair<DWORD, std::wstring>>;
    EXPECT_EQ(merged.Items(),
              (Items{{Id("INAM"), L"renamed"}, {Id("ISFT"), L"tool"}, {Id("ICOP"), L"(c)"}}));
}

TEST(SummaryFile, SavesInfoAndUnfoByteForByte)
{
    Summary l{{"INAM", L"Song"}, {"IART", L"Ab"}};
    TempFile f;
    DWORD written = 0;
    ASSERT_EQ(TqSummary_Save(f.Handle(), &l.list, &written), S_OK);
    // Texts keep their terminator; "Song" + 0 is odd and gets a pad.
    const Bytes info =
        List("INFO", Chunk("INAM", Text("Song") + Bytes{0}) + Chunk("IART", Text("Ab") + Bytes{0}));
    EXPECT_EQ(f.Read(), info);
    EXPECT_EQ(written, info.size());
    EXPECT_EQ(f.Pos(), info.size()) << "the cursor stays at the end";

    TempFile g;
    ASSERT_EQ(TqSummary_SaveUNFO(g.Handle(), &l.list, &written), S_OK);
    const Bytes unfo = List("UNFO", Chunk("INAM", Wide(L"Song")) + Chunk("IART", Wide(L"Ab")));
    EXPECT_EQ(g.Read(), unfo);
    EXPECT_EQ(written, unfo.size());

    TempFile empty;
    Summary none;
    ASSERT_EQ(TqSummary_Save(empty.Handle(), &none.list, &written), S_OK);
    EXPECT_EQ(written, 0u);
    EXPECT_EQ(empty.Length(), 0u) << "an empty list writes nothing";
}

TEST(SummaryFile, LoadsWhatItSavedAndWhatOthersWrite)
{
    for (const bool unfo : {false, true})
    {
        Summary l{{"INAM", L"Caf\u00e9"}, {"ICMT", L""}, {"ISFT", L"recorder 2.1"}};
        TempFile f;
        ASSERT_EQ(unfo ? TqSummary_SaveUNFO(f.Handle(), &l.list, nullptr)
                       : TqSummary_Save(f.Handle(), &l.list, nullptr),
                  S_OK);
        f.Seek(12);
        DWORD size = static_cast<DWORD>(f.Length() - 12);
        Summary back;
        ASSERT_EQ(unfo ? TqSummary_LoadUNFO(f.Handle(), &back.list, &size)
                       : TqSummary_Load(f.Handle(), &back.list, &size),
                  S_OK);
        EXPECT_EQ(back.Items(), l.Items()) << (unfo ? "UNFO" : "INFO");
    }

    // Writers that leave out the terminator, and ids not in any table, are read as they are.
    TempFile other(List("INFO", Chunk("INAM", Text("abc")) + Chunk("XYZW", Text("kept"))));
    other.Seek(12);
    DWORD size = static_cast<DWORD>(other.Length() - 12);
    Summary back;
    ASSERT_EQ(TqSummary_Load(other.Handle(), &back.list, &size), S_OK);
    using Items = std::vector<std::pair<DWORD, std::wstring>>;
    EXPECT_EQ(back.Items(), (Items{{Id("INAM"), L"abc"}, {Id("XYZW"), L"kept"}}));

    TempFile none(List("INFO", {}));
    none.Seek(12);
    size = 0;
    EXPECT_EQ(TqSummary_Load(none.Handle(), &back.list, &size), S_OK);
    EXPECT_EQ(back.list.count, 0);
}

TEST(SummaryFile, DamagedListsLeaveNoPartialList)
{
    const Bytes good = Chunk("INAM", Text("ok") + Bytes{0});
    const struct
    {
        const char* name;
        Bytes entries;
        DWORD size;
    } cases[] = {
        // The second entry claims far more than the list holds.
        {"oversized entry", good + Header("IART", 0x7FFFFFF0) + Text("xy"), 0},
        {"file ends inside an entry", good + Header("IART", 40) + Text("short"), 0},
    };
    for (const auto& c : cases)
    {
        TempFile f(c.entries);
        DWORD size = c.size ? c.size : static_cast<DWORD>(c.entries.size());
        Summary l{{"ISFT", L"was here"}};
        EXPECT_TRUE(FAILED(TqSummary_Load(f.Handle(), &l.list, &size))) << c.name;
        EXPECT_EQ(l.list.count, 0) << c.name;
        EXPECT_EQ(l.list.items, nullptr) << c.name;
    }
}

TEST(SummaryFile, OneTextWithoutLoadingTheList)
{
    const Bytes file = Riff(
        Chunk("fmt ", Pattern(16)) +
        List("INFO", Chunk("INAM", Text("A long title") + Bytes{0}) + Chunk("IART", Bytes{0})));
    TempFile f(file);
    f.Seek(12);
    DWORD remaining = static_cast<DWORD>(file.size() - 12);
    wchar_t text[6];
    ASSERT_EQ(TqSummary_GetStringFromFile(f.Handle(), Id("INAM"), text, 6, &remaining), S_OK);
    EXPECT_STREQ(text, L"A lon") << "cut to the buffer";
    EXPECT_EQ(f.Pos(), 12u) << "the cursor is restored";

    remaining = static_cast<DWORD>(file.size() - 12);
    ASSERT_EQ(TqSummary_GetStringFromFile(f.Handle(), Id("IART"), text, 6, &remaining), S_OK);
    EXPECT_STREQ(text, L"");

    remaining = static_cast<DWORD>(file.size() - 12);
    EXPECT_EQ(TqSummary_GetStringFromFile(f.Handle(), Id("IGNR"), text, 6, &remaining),
              TQ_E_NOTFOUND);
    EXPECT_EQ(f.Pos(), 12u);
}
