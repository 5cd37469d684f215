// The memory stream: growth, positions and the bounds of reads, writes and seeks.
#include "hosting/memorystream.h"
#include "pluginterfaces/vst/ivstmessage.h"

#include <gtest/gtest.h>

#include <string>

using namespace vst3;

namespace {

std::string contents(const MemoryStream& stream)
{
    return std::string(stream.getData(), static_cast<size_t>(stream.getSize()));
}

int32 readAll(IBStream& stream, char* buffer, int32 size)
{
    int32 read = -1;
    EXPECT_EQ(kResultOk, stream.read(buffer, size, &read));
    return read;
}

} // namespace

TEST(MemoryStream, WritesGrowAndReadsComeBackFromThePosition)
{
    MemoryStream stream;
    int32 written = 0;
    std::string text(1000, 'x');
    text += "tail";
    ASSERT_EQ(kResultOk, stream.write(text.data(), static_cast<int32>(text.size()), &written));
    EXPECT_EQ(1004, written);
    EXPECT_EQ(text, contents(stream));

    int64 pos = 0;
    ASSERT_EQ(kResultOk, stream.seek(-4, IBStream::kIBSeekEnd, &pos));
    EXPECT_EQ(1000, pos);
    char buffer[16] = {};
    EXPECT_EQ(4, readAll(stream, buffer, sizeof buffer));
    EXPECT_STREQ("tail", buffer);
    EXPECT_EQ(0, readAll(stream, buffer, sizeof buffer)) << "at the end nothing more comes";
}

TEST(MemoryStream, SeeksAreRelativeToTheirOriginAndNeverBeforeTheStart)
{
    MemoryStream stream;
    stream.write(const_cast<char*>("0123456789"), 10, nullptr);
    int64 pos = -1;
    EXPECT_EQ(kResultOk, stream.seek(3, IBStream::kIBSeekSet, &pos));
    EXPECT_EQ(3, pos);
    EXPECT_EQ(kResultOk, stream.seek(2, IBStream::kIBSeekCur, &pos));
    EXPECT_EQ(5, pos);
    EXPECT_EQ(kInvalidArgument, stream.seek(-6, IBStream::kIBSeekCur, &pos));
    EXPECT_EQ(kInvalidArgument, stream.seek(0, 7, &pos));
    ASSERT_EQ(kResultOk, stream.tell(&pos));
    EXPECT_EQ(5, pos) << "a refused seek leaves the position";
    EXPECT_EQ(kInvalidArgument, stream.tell(nullptr));
}

TEST(MemoryStream, WritingPastTheEndFillsTheGapWithZeros)
{
    MemoryStream stream;
    stream.write(const_cast<char*>("ab"), 2, nullptr);
    stream.seek(10, IBStream::kIBSeekSet, nullptr);
    char buffer[4];
    EXPECT_EQ(0, readAll(stream, buffer, 4)) << "reading past the end gives nothing";
    stream.write(const_cast<char*>("z"), 1, nullptr);
    EXPECT_EQ(std::string("ab\0\0\0\0\0\0\0\0z", 11), contents(stream));
}

TEST(MemoryStream, BadCountsAndBuffersAreRefused)
{
    MemoryStream stream;
    int32 count = 99;
    char buffer[4];
    EXPECT_EQ(kInvalidArgument, stream.read(buffer, -1, &count));
    EXPECT_EQ(0, count);
    EXPECT_EQ(kInvalidArgument, stream.write(nullptr, 4, &count));
    EXPECT_EQ(kInvalidArgument, stream.read(nullptr, 4, &count));
    EXPECT_EQ(kResultOk, stream.write(nullptr, 0, &count));
    EXPECT_EQ(0, stream.getSize());
}

TEST(MemoryStream, AViewReadsTheCallersBytesAndRefusesWrites)
{
    const char bytes[] = {'a', 'b', 'c'};
    MemoryStream view(bytes, sizeof bytes);
    EXPECT_EQ(bytes, view.getData());
    char buffer[8] = {};
    EXPECT_EQ(3, readAll(view, buffer, 8));
    EXPECT_STREQ("abc", buffer);
    int32 written = -1;
    view.seek(0, IBStream::kIBSeekSet, nullptr);
    EXPECT_EQ(kResultFalse, view.write(buffer, 1, &written));
    EXPECT_EQ(0, written);
    EXPECT_EQ('a', bytes[0]);
    EXPECT_EQ(3, view.getSize());
}

TEST(MemoryStream, ResetEmptiesAndRewinds)
{
    MemoryStream stream;
    stream.write(const_cast<char*>("abc"), 3, nullptr);
    stream.reset();
    int64 pos = -1;
    stream.tell(&pos);
    EXPECT_EQ(0, pos);
    EXPECT_EQ(0, stream.getSize());
    stream.write(const_cast<char*>("z"), 1, nullptr);
    EXPECT_EQ("z", contents(stream));
}

TEST(MemoryStream, AnswersOnlyItsOwnInterfaces)
{
    auto* stream = new MemoryStream();
    void* obj = nullptr;
    ASSERT_EQ(kResultOk, stream->queryInterface(IBStream::iid, &obj));
    EXPECT_EQ(static_cast<IBStream*>(stream), obj);
    ASSERT_EQ(kResultOk, stream->queryInterface(FUnknown::iid, &obj));
    obj = stream;
    EXPECT_EQ(kNoInterface, stream->queryInterface(IMessage::iid, &obj));
    EXPECT_EQ(nullptr, obj);
    EXPECT_EQ(2u, stream->release());
    EXPECT_EQ(1u, stream->release());
    EXPECT_EQ(0u, stream->release());
}
