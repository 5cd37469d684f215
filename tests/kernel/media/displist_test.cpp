// Tests of display lists: items in memory and "DISP" chunks on file.
#include "displist.h"

#include "kernel/media/displayholder.h"
#include "kernel/media/riffimage.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace tq::test;

namespace {

Bytes Disp(DWORD format, const Bytes& payload)
{
    return Chunk("DISP", U32(format) + payload);
}

} // namespace

TEST(DisplayList, HoldsTextAndPictureOnly)
{
    Display d;
    ASSERT_EQ(d.list.count, 2);
    EXPECT_EQ(d.list.items[0].format, static_cast<DWORD>(CF_TEXT));
    EXPECT_EQ(d.list.items[1].format, static_cast<DWORD>(CF_DIB));

    const Bytes text = Text("title");
    ASSERT_EQ(displist_SetItem(&d.list, CF_TEXT, 5, text.data()), S_OK);
    EXPECT_EQ(d.Payload(CF_TEXT), text);
    EXPECT_EQ(displist_SetItem(&d.list, CF_BITMAP, 5, text.data()), DISPLIST_E_UNKNOWNFORMAT);
    ASSERT_EQ(displist_SetItem(&d.list, CF_TEXT, 0, text.data()), S_OK);
    EXPECT_EQ(displist_GetItem(&d.list, CF_TEXT)->data, nullptr) << "size 0 empties the item";
}

TEST(DisplayList, SavesAndLoadsDispChunks)
{
    Display d;
    const Bytes text = Text("abc"), picture = Pattern(40);
    ASSERT_EQ(displist_SetItem(&d.list, CF_TEXT, 3, text.data()), S_OK);
    ASSERT_EQ(displist_SetItem(&d.list, CF_DIB, 40, picture.data()), S_OK);
    TempFile f;
    DWORD written = 0;
    ASSERT_EQ(displist_Save(f.Handle(), &d.list, &written), S_OK);
    const Bytes image = Disp(CF_TEXT, text) + Disp(CF_DIB, picture);
    EXPECT_EQ(f.Read(), image) << "format id, payload, pad to even";
    EXPECT_EQ(written, image.size());

    // Among other chunks, with a format no list holds, and a chunk of the format alone.
    TempFile g(Chunk("fmt ", Pattern(16)) + Disp(CF_BITMAP, Pattern(8)) + Disp(CF_TEXT, text) +
               Chunk("junk", Pattern(3)) + Disp(CF_DIB, {}));
    Display back;
    ASSERT_EQ(displist_SetItem(&back.list, CF_DIB, 2, "xy"), S_OK);
    DWORD remaining = static_cast<DWORD>(g.Length());
    ASSERT_EQ(displist_Load(g.Handle(), &back.list, &remaining), S_OK);
    EXPECT_EQ(back.Payload(CF_TEXT), text);
    EXPECT_EQ(displist_GetItem(&back.list, CF_DIB)->size, 0u) << "a DISP of size 4 has no data";
    EXPECT_EQ(displist_GetItem(&back.list, CF_BITMAP), nullptr) << "unknown formats are dropped";
    EXPECT_EQ(remaining, 0u);
    EXPECT_EQ(g.Pos(), 0u) << "the walk ends where it began";
}

TEST(DisplayList, DamagedChunksKeepWhatWasLoaded)
{
    const Bytes first = Disp(CF_TEXT, Text("ok"));
    const struct
    {
        const char* name;
        Bytes bytes;
        HRESULT expected;
    } cases[] = {
        {"beyond the bound", first + Header("DISP", 0x7FFFFFF0) + U32(CF_DIB), TQ_E_CORRUPTFILE},
        {"file ends in the payload", first + Header("DISP", 12) + U32(CF_DIB) + Text("ab"),
         TQ_E_READFAILED},
    };
    for (const auto& c : cases)
    {
        TempFile f(c.bytes);
        Display d;
        // The bound claims more than the file holds, as a damaged RIFF size does.
        DWORD remaining = static_cast<DWORD>(c.bytes.size()) + 16;
        EXPECT_EQ(displist_Load(f.Handle(), &d.list, &remaining), c.expected) << c.name;
        EXPECT_EQ(d.Payload(CF_TEXT), Text("ok")) << c.name;
        EXPECT_EQ(displist_GetItem(&d.list, CF_DIB)->data, nullptr) << c.name;
    }
}
