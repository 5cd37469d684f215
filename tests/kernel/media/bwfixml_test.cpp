// Tests of the iXML side of the broadcast-wave record: the walk of a document into the record,
// elements it does not know kept where they stood, and the document written back.
#include "bwf.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstring>
#include <string>

namespace {

struct Record
{
    _tagTQBWF_Chunk chunk = {};
    ~Record() { FreeBwfChunkGlobal(&chunk); }
    HRESULT Extract(const std::string& xml)
    {
        return ExtractIxmlContent(xml.data(), static_cast<DWORD>(xml.size()), &chunk);
    }
    // The whole document as UTF-8.
    std::string Build(INT32 first = TQMETA_IXML_BWFXML, INT32 last = TQMETA_IXML_END) const
    {
        void* data = nullptr;
        DWORD size = 0;
        EXPECT_EQ(BuildRawBwfIxmlChunkGlobal(&chunk, &data, &size, BWF_CHUNK_IXML, first, last),
                  S_OK);
        std::string text(static_cast<const char*>(data), size);
        if (data)
        {
            GlobalUnlock(GlobalHandle(data));
            GlobalFree(GlobalHandle(data));
        }
        return text;
    }
    std::wstring Value(INT32 index) const
    {
        const WCHAR* v = GetIxmlValueGlobal(&chunk, index);
        return v ? v : L"<null>";
    }
    std::wstring Entry(INT32 entry, INT32 index) const
    {
        const WCHAR* v = GetIxmlEntryValueGlobal(&chunk, entry, index);
        return v ? v : L"<null>";
    }
};

// A recorder's document with elements of every kind and some of its own.
const std::string kFieldRecording = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"
                                    "<BWFXML>\n"
                                    " <VENDOR_FIRST>v1</VENDOR_FIRST>\n"
                                    " <IXML_VERSION>1.52</IXML_VERSION>\n"
                                    " <PROJECT>Caf\xC3\xA9 &amp; Bar</PROJECT>\n"
                                    " <VENDOR_AFTER_PROJECT a=\"1\" b=\"2\"><DEEP>t</DEEP>"
                                    "<EMPTY/></VENDOR_AFTER_PROJECT>\n"
                                    " <SCENE>12A</SCENE>\n"
                                    " <circled>TRUE</circled>\n"
                                    " <NOTE>top note</NOTE>\n"
                                    " <SPEED><NOTE>speed note</NOTE><TIMECODE_RATE>25/1"
                                    "</TIMECODE_RATE><SPEED_EXTRA>9</SPEED_EXTRA></SPEED>\n"
                                    " <TRACK_LIST>\n"
                                    "  <TRACK_COUNT>2</TRACK_COUNT>\n"
                                    "  <TRACK><CHANNEL_INDEX>1</CHANNEL_INDEX><NAME>Boom</NAME>"
                                    "<TRACK_COLOUR>red</TRACK_COLOUR></TRACK>\n"
                                    "  <TRACK_SEPARATOR/>\n"
                                    "  <TRACK><CHANNEL_INDEX>2</CHANNEL_INDEX><NAME>Lav</NAME>"
                                    "</TRACK>\n"
                                    " </TRACK_LIST>\n"
                                    " <PROJECT>second project</PROJECT>\n"
                                    "</BWFXML>\n";

TEST(IxmlRead, KnownElementsLandInTheirFieldsWhateverTheirCase)
{
    Record r;
    ASSERT_EQ(r.Extract(kFieldRecording), S_OK);
    EXPECT_TRUE(r.chunk.ixmlRead);
    EXPECT_EQ(r.Value(TQMETA_IXML_VERSION), L"1.52");
    EXPECT_EQ(r.Value(TQMETA_IXML_PROJECT), L"Caf\u00e9 & Bar") << "UTF-8 and entities decoded";
    EXPECT_EQ(r.Value(TQMETA_IXML_CIRCLED), L"TRUE") << "\"circled\" in lower case is known";
    EXPECT_TRUE(IsKnownIxmlNodeGlobal(L"circled"));
    EXPECT_FALSE(IsKnownIxmlNodeGlobal(L"TRACK_COLOUR"));
    // NOTE is two elements: one on the first level, one in SPEED.
    EXPECT_EQ(r.Value(TQMETA_IXML_NOTE), L"top note");
    EXPECT_EQ(r.Value(TQMETA_IXML_SPEED_NOTE), L"speed note");
    EXPECT_EQ(r.Value(TQMETA_IXML_TIMECODE_RATE), L"25/1");
    EXPECT_EQ(r.Value(TQMETA_IXML_TRACK_COUNT), L"2");
    ASSERT_EQ(r.chunk.trackCount, 2);
    EXPECT_EQ(r.Entry(0, TQMETA_IXML_NAME), L"Boom");
    EXPECT_EQ(r.Entry(1, TQMETA_IXML_CHANNEL_INDEX), L"2");
    EXPECT_EQ(r.Entry(1, TQMETA_IXML_FUNCTION), L"<null>");
}

TEST(IxmlRead, DocumentsWithoutBwfxmlGiveFail)
{
    for (const std::string& doc : {std::string(""), std::string("not xml at all"),
                                   std::string("<?xml version=\"1.0\"?><OTHER><A>1</A></OTHER>")})
    {
        Record r;
        EXPECT_EQ(r.Extract(doc), E_FAIL) << doc;
        EXPECT_FALSE(r.chunk.ixmlRead);
    }
}

TEST(IxmlRoundTrip, UnknownElementsComeBackWhereTheyStood)
{
    Record r;
    ASSERT_EQ(r.Extract(kFieldRecording), S_OK);
    const std::string first = r.Build();
    // Positions in the written document follow the source document's order.
    auto at = [&](const char* s) { return first.find(s); };
    EXPECT_EQ(first.rfind("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<BWFXML>\r\n", 0), 0u);
    EXPECT_LT(at("<VENDOR_FIRST>v1</VENDOR_FIRST>"), at("<IXML_VERSION>"));
    EXPECT_LT(at("<PROJECT>Caf\xC3\xA9 &amp; Bar</PROJECT>"), at("<VENDOR_AFTER_PROJECT"));
    EXPECT_LT(at("<VENDOR_AFTER_PROJECT a=\"1\" b=\"2\">\r\n\t\t<DEEP>t</DEEP>\r\n"
                 "\t\t<EMPTY/>\r\n\t</VENDOR_AFTER_PROJECT>"),
              at("<SCENE>12A</SCENE>"));
    EXPECT_LT(at("<TIMECODE_RATE>"), at("<SPEED_EXTRA>9</SPEED_EXTRA>"));
    EXPECT_LT(at("<SPEED_EXTRA>"), at("</SPEED>"));
    EXPECT_LT(at("<NAME>Boom</NAME>"), at("<TRACK_COLOUR>red</TRACK_COLOUR>"));
    EXPECT_LT(at("<TRACK_COLOUR>"), at("<TRACK_SEPARATOR/>"));
    EXPECT_LT(at("<TRACK_SEPARATOR/>"), at("<NAME>Lav</NAME>"));
    EXPECT_NE(at("<PROJECT>second project</PROJECT>"), std::string::npos)
        << "a second copy of a field is kept, not dropped";
    EXPECT_NE(at("<CIRCLED>TRUE</CIRCLED>"), std::string::npos);

    // Read again and written again, nothing moves or grows; a second document replaces the
    // first rather than landing beside it.
    Record again;
    ASSERT_EQ(again.Extract(first), S_OK);
    EXPECT_EQ(again.Build(), first);
    ASSERT_EQ(again.Extract(first), S_OK);
    EXPECT_EQ(again.Build(), first);
}

TEST(IxmlRoundTrip, UnknownsWhosePlaceWentAreWrittenLast)
{
    Record r;
    ASSERT_EQ(r.Extract(kFieldRecording), S_OK);
    // A host drops the tracks: what stood in and behind them has no place any more.
    r.chunk.trackCount = 0;
    const std::string doc = r.Build();
    EXPECT_EQ(doc.find("<NAME>"), std::string::npos);
    EXPECT_LT(doc.find("<PROJECT>second project</PROJECT>"), doc.find("<TRACK_COLOUR>red"));
    EXPECT_LT(doc.find("<TRACK_COLOUR>red"), doc.find("<TRACK_SEPARATOR/>"));
    EXPECT_LT(doc.find("<TRACK_SEPARATOR/>"), doc.find("</BWFXML>"));
}

TEST(IxmlRecord, EntriesGrowOneAtATimeAndStartEmpty)
{
    Record r;
    ASSERT_EQ(SetIxmlEntryValueGlobal(&r.chunk, 0, TQMETA_IXML_CHANNEL_INDEX, L"1"), S_OK);
    ASSERT_EQ(SetIxmlEntryValueGlobal(&r.chunk, 1, TQMETA_IXML_CHANNEL_INDEX, L"2"), S_OK);
    EXPECT_EQ(SetIxmlEntryValueGlobal(&r.chunk, 3, TQMETA_IXML_NAME, L"gap"), E_INVALIDARG);
    EXPECT_EQ(SetIxmlValueGlobal(&r.chunk, TQMETA_IXML_TRACK, L"x"), E_INVALIDARG);
    EXPECT_EQ(SetIxmlValueGlobal(&r.chunk, TQMETA_IXML_NAME, L"x"), E_INVALIDARG);
    r.chunk.trackCount = 1;
    ASSERT_EQ(SetIxmlEntryValueGlobal(&r.chunk, 1, TQMETA_IXML_NAME, L"New <mic>"), S_OK);
    EXPECT_EQ(r.Entry(1, TQMETA_IXML_CHANNEL_INDEX), L"<null>") << "the dropped entry's value";
    ASSERT_EQ(SetIxmlValueGlobal(&r.chunk, TQMETA_IXML_TAKE, L"7"), S_OK);
    ASSERT_EQ(SetIxmlEntryValueGlobal(&r.chunk, 0, TQMETA_IXML_SYNC_POINT_LOW, L"48000"), S_OK);

    const std::string doc = r.Build();
    EXPECT_NE(doc.find("<NAME>New &lt;mic&gt;</NAME>"), std::string::npos) << doc;
    EXPECT_EQ(doc.find("SPEED"), std::string::npos) << "empty containers are left out";
    Record again;
    ASSERT_EQ(again.Extract(doc), S_OK);
    EXPECT_EQ(again.Entry(1, TQMETA_IXML_NAME), L"New <mic>");
    EXPECT_EQ(again.Entry(0, TQMETA_IXML_CHANNEL_INDEX), L"1");
    EXPECT_EQ(again.Entry(0, TQMETA_IXML_SYNC_POINT_LOW), L"48000");
    EXPECT_EQ(again.Value(TQMETA_IXML_TAKE), L"7");
    EXPECT_EQ(again.Build(), doc);
}

TEST(IxmlWrite, RangeAndArguments)
{
    Record r;
    ASSERT_EQ(r.Extract(kFieldRecording), S_OK);
    const std::string speedOnly = r.Build(TQMETA_IXML_SPEED, TQMETA_IXML_TIMESTAMP_SAMPLE_RATE);
    EXPECT_NE(speedOnly.find("<TIMECODE_RATE>25/1</TIMECODE_RATE>"), std::string::npos);
    EXPECT_EQ(speedOnly.find("PROJECT"), std::string::npos);
    EXPECT_EQ(speedOnly.find("VENDOR"), std::string::npos) << "unknowns need the whole range";

    void* data = reinterpret_cast<void*>(1);
    DWORD size = 0;
    EXPECT_EQ(BuildRawBwfIxmlChunkGlobal(nullptr, &data, &size, BWF_CHUNK_IXML, 16, 80), S_OK);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(BuildRawBwfIxmlChunkGlobal(&r.chunk, &data, nullptr, BWF_CHUNK_IXML, 16, 80),
              E_INVALIDARG);
    EXPECT_EQ(BuildRawBwfIxmlChunkGlobal(&r.chunk, &data, &size, BWF_CHUNK_IXML, 80, 16),
              E_INVALIDARG);
    EXPECT_EQ(BuildRawBwfIxmlChunkGlobal(&r.chunk, &data, &size, 2, 16, 80), E_INVALIDARG);
    EXPECT_EQ(BuildRawBwfIxmlChunkGlobal(&r.chunk, nullptr, &size, BWF_CHUNK_IXML, 16, 80), S_OK);
    EXPECT_EQ(size, r.Build().size()) << "a null buffer asks for the size";
}

TEST(IxmlTables, RowsAndValueTablesEndAsDescribed)
{
    INT32 rows = 0;
    const _tagIxml_Info* info = GetTblIxmlInfo(&rows);
    ASSERT_EQ(rows, 66);
    for (INT32 i = 0; i + 2 < rows; ++i)
        EXPECT_EQ(info[i].index, 16 + i) << "indices run without a gap";
    EXPECT_EQ(info[rows - 2].name, nullptr);
    EXPECT_EQ(info[TQMETA_IXML_NO_GOOD - 16].since, 0x340001u);

    struct Table
    {
        const _tagIxml_Value* (*get)(INT32*);
        INT32 rows;
        const WCHAR* first;
    };
    for (const Table& t :
         {Table{GetTblIxmlSpeedFPS, 9, L"24000/1001"},
          Table{GetTblIxmlTrackFuncts, 48, L"M-MID_SIDE"},
          Table{GetTblIxmlSyncPtFuncts, 8, L"PRE_RECORD_SAMPLECOUNT"},
          Table{GetTblIxmlSyncPtTypes, 3, L"RELATIVE"}, Table{GetTblIxmlSpeedTimeCode, 3, L"NDF"},
          Table{GetTblIxmlBools, 3, L"FALSE"}})
    {
        INT32 n = 0;
        const _tagIxml_Value* v = t.get(&n);
        ASSERT_EQ(n, t.rows) << t.first;
        EXPECT_STREQ(v[0].value, t.first);
        EXPECT_EQ(v[n - 1].code, -1);
        EXPECT_STREQ(v[n - 1].value, L"Invalid IXML Value");
    }
    INT32 n = 0;
    EXPECT_STREQ(GetTblIxmlSpeedFPS(&n)[0].label, L"23.976 fps = 24000/1001");
    EXPECT_STREQ(GetTblIxmlTrackFuncts(&n)[46].value, L"VIDEO");
}

} // namespace
