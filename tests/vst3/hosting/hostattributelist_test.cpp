// The attribute list keeps four kinds of values apart and copies texts and blobs safely.
#include "hosting/hostattributelist.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>

using namespace vst3;

TEST(HostAttributeList, EachKindComesBackAsItWasSet)
{
    HostAttributeList list;
    ASSERT_EQ(kResultOk, list.setInt("i", -5000000000));
    ASSERT_EQ(kResultOk, list.setFloat("f", 0.25));
    ASSERT_EQ(kResultOk, list.setString("s", u"Gain"));
    int64 i = 0;
    double f = 0;
    TChar s[16] = {};
    EXPECT_EQ(kResultOk, list.getInt("i", i));
    EXPECT_EQ(-5000000000, i);
    EXPECT_EQ(kResultOk, list.getFloat("f", f));
    EXPECT_EQ(0.25, f);
    EXPECT_EQ(kResultOk, list.getString("s", s, sizeof s));
    EXPECT_EQ(std::u16string(u"Gain"), s);
}

TEST(HostAttributeList, AnotherKindOrAnUnknownIdIsRefused)
{
    HostAttributeList list;
    list.setInt("x", 1);
    double f = 7;
    const void* data = nullptr;
    uint32 size = 0;
    EXPECT_EQ(kResultFalse, list.getFloat("x", f));
    EXPECT_EQ(kResultFalse, list.getBinary("x", data, size));
    EXPECT_EQ(kResultFalse, list.getFloat("missing", f));
    EXPECT_EQ(7, f);
    EXPECT_EQ(kInvalidArgument, list.setInt(nullptr, 1));
    EXPECT_EQ(kInvalidArgument, list.setString("s", nullptr));

    list.setFloat("x", 2.5); // a value of another kind replaces the old
    EXPECT_EQ(kResultOk, list.getFloat("x", f));
    EXPECT_EQ(2.5, f);
}

TEST(HostAttributeList, TextsAreCutToTheBufferInBytesWithATerminator)
{
    HostAttributeList list;
    list.setString("s", u"abcdef");
    TChar s[8];
    std::fill(std::begin(s), std::end(s), u'#');
    ASSERT_EQ(kResultOk, list.getString("s", s, 4 * sizeof(TChar)));
    EXPECT_EQ(std::u16string(u"abc"), s);
    EXPECT_EQ(u'#', s[4]) << "nothing written past the given size";
    ASSERT_EQ(kResultOk, list.getString("s", s, 7)); // an odd byte count rounds down
    EXPECT_EQ(std::u16string(u"ab"), s);
    EXPECT_EQ(kInvalidArgument, list.getString("s", s, 1));
}

TEST(HostAttributeList, BinaryBlobsAreCopiedWithEmbeddedZeros)
{
    HostAttributeList list;
    unsigned char blob[300];
    for (int i = 0; i < 300; ++i)
        blob[i] = static_cast<unsigned char>(i % 7 == 0 ? 0 : i);
    ASSERT_EQ(kResultOk, list.setBinary("b", blob, sizeof blob));
    blob[1] = 0xEE; // the list keeps its own copy
    const void* data = nullptr;
    uint32 size = 0;
    ASSERT_EQ(kResultOk, list.getBinary("b", data, size));
    ASSERT_EQ(300u, size);
    const auto* bytes = static_cast<const unsigned char*>(data);
    EXPECT_EQ(1, bytes[1]);
    EXPECT_EQ(0, bytes[7]);
    EXPECT_EQ(299 % 256, bytes[299]);

    EXPECT_EQ(kResultOk, list.setBinary("empty", nullptr, 0));
    EXPECT_EQ(kResultOk, list.getBinary("empty", data, size));
    EXPECT_EQ(0u, size);
    EXPECT_EQ(kInvalidArgument, list.setBinary("bad", nullptr, 4));
}
