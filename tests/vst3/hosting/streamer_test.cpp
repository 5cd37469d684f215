// The streamer writes little-endian bytes and reads them back, refusing short reads.
#include "hosting/memorystream.h"
#include "hosting/streamer.h"

#include <gtest/gtest.h>

#include <string>

using namespace vst3;

TEST(IBStreamer, NumbersAreLittleEndianBytes)
{
    MemoryStream stream;
    IBStreamer streamer(&stream);
    ASSERT_TRUE(streamer.writeInt16(0x0102));
    ASSERT_TRUE(streamer.writeInt32(-2));
    ASSERT_TRUE(streamer.writeInt64(0x0102030405060708));
    ASSERT_TRUE(streamer.writeFloat(1.0f));
    ASSERT_TRUE(streamer.writeDouble(-2.0));
    const std::string expected("\x02\x01"
                               "\xFE\xFF\xFF\xFF"
                               "\x08\x07\x06\x05\x04\x03\x02\x01"
                               "\x00\x00\x80\x3F"
                               "\x00\x00\x00\x00\x00\x00\x00\xC0",
                               26);
    EXPECT_EQ(expected, std::string(stream.getData(), static_cast<size_t>(stream.getSize())));

    ASSERT_TRUE(streamer.seek(0, IBStream::kIBSeekSet));
    int16 a = 0;
    int32 b = 0;
    int64 c = 0;
    float d = 0;
    double e = 0;
    EXPECT_TRUE(streamer.readInt16(a) && streamer.readInt32(b) && streamer.readInt64(c) &&
                streamer.readFloat(d) && streamer.readDouble(e));
    EXPECT_EQ(0x0102, a);
    EXPECT_EQ(-2, b);
    EXPECT_EQ(0x0102030405060708, c);
    EXPECT_EQ(1.0f, d);
    EXPECT_EQ(-2.0, e);
    EXPECT_EQ(26, streamer.tell());
}

TEST(IBStreamer, ShortReadsFail)
{
    const char bytes[3] = {1, 2, 3};
    MemoryStream view(bytes, sizeof bytes);
    IBStreamer streamer(&view);
    int32 value = 7;
    EXPECT_FALSE(streamer.readInt32(value));
    IBStreamer none(nullptr);
    EXPECT_FALSE(none.readInt32(value));
    EXPECT_FALSE(none.writeInt32(1));
    EXPECT_EQ(-1, none.tell());
}
