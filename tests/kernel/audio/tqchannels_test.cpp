// Single-channel moves: extract and insert, channel pairs, muting, copies within a buffer,
// spreading one channel to all, and stereo swaps.
#include "tqchannels.h"

#include <gtest/gtest.h>

#include <string.h>

#include <vector>

#include "sampleencodings.h"

namespace {

using tq::audio::test::Noise;
using Bytes = std::vector<BYTE>;

constexpr TQSAMPLETYPE kBlockTypes[] = {TQSAMPLE_PCM8,       TQSAMPLE_PCM16,   TQSAMPLE_PCM24,
                                        TQSAMPLE_PCM32,      TQSAMPLE_FLOAT32, TQSAMPLE_FLOAT64,
                                        TQSAMPLE_UNPACKED24, TQSAMPLE_SIGNED8, TQSAMPLE_BE16,
                                        TQSAMPLE_BE24,       TQSAMPLE_BE32};

WAVEFORMATEX Header(TQSAMPLETYPE type, WORD channels)
{
    WAVEFORMATEX wfx = {};
    TqAudio_InitWfx(&wfx, 48000, type, channels);
    return wfx;
}

// Bytes of one sample of every frame: the channel of an interleaved buffer.
Bytes ChannelOf(const Bytes& buffer, size_t size, size_t channels, size_t channel)
{
    Bytes out;
    for (size_t at = channel * size; at < buffer.size(); at += channels * size)
        out.insert(out.end(), buffer.begin() + at, buffer.begin() + at + size);
    return out;
}

TEST(SingleChannel, ExtractAndInsertMoveOneChannelOfEachType)
{
    Noise noise;
    const long frames = 5;
    for (TQSAMPLETYPE type : kBlockTypes)
    {
        SCOPED_TRACE(testing::Message() << "type " << type);
        const size_t size = TqAudio_BytesFromSampleType(type);
        const WAVEFORMATEX wfx = Header(type, 3);
        const Bytes source = noise.Bytes(frames * 3 * size);
        Bytes plane(frames * size);
        ASSERT_EQ(S_OK, TqAudio_ExtractChannel(plane.data(), 1, source.data(), &wfx, frames));
        EXPECT_EQ(ChannelOf(source, size, 3, 1), plane);

        Bytes target = noise.Bytes(source.size());
        const Bytes before = target;
        ASSERT_EQ(S_OK, TqAudio_InsertChannel(target.data(), type, 3, 2, plane.data(), frames));
        EXPECT_EQ(plane, ChannelOf(target, size, 3, 2));
        EXPECT_EQ(ChannelOf(before, size, 3, 0), ChannelOf(target, size, 3, 0));
        EXPECT_EQ(ChannelOf(before, size, 3, 1), ChannelOf(target, size, 3, 1));
    }
}

TEST(SingleChannel, OneChannelIsAPlainCopy)
{
    const short mono[3] = {1, -2, 3};
    short out[3] = {};
    ASSERT_EQ(S_OK, TqAudio_ExtractChannel(out, 0, mono, TQSAMPLE_PCM16, 1, 3));
    EXPECT_EQ(0, memcmp(mono, out, sizeof out));
    short in[3] = {};
    ASSERT_EQ(S_OK, TqAudio_InsertChannel(in, TQSAMPLE_PCM16, 1, 0, mono, 3));
    EXPECT_EQ(0, memcmp(mono, in, sizeof in));
}

TEST(SingleChannel, RefusesTypesChannelsAndHeadersItCannotMove)
{
    BYTE buffer[64] = {};
    EXPECT_EQ(E_NOTIMPL, TqAudio_ExtractChannel(buffer, 0, buffer, TQSAMPLE_RA16, 1, 2));
    EXPECT_EQ(E_FAIL, TqAudio_ExtractChannel(buffer, 0, buffer, TQSAMPLE_RA16, 2, 2));
    EXPECT_EQ(E_FAIL, TqAudio_InsertChannel(buffer, TQSAMPLE_RA24, 1, 0, buffer, 2));
    EXPECT_EQ(E_INVALIDARG, TqAudio_ExtractChannel(buffer, 3, buffer, TQSAMPLE_PCM16, 3, 2));
    EXPECT_EQ(E_INVALIDARG, TqAudio_InsertChannel(buffer, TQSAMPLE_PCM16, 2, 2, buffer, 2));

    WAVEFORMATEX odd = Header(TQSAMPLE_PCM16, 2);
    odd.nBlockAlign = 6; // not 2 channels of 2 bytes
    EXPECT_EQ(E_INVALIDARG, TqAudio_ExtractChannel(buffer, 0, buffer, &odd, 2));
    EXPECT_EQ(E_POINTER, TqAudio_ExtractChannel(buffer, 0, buffer, nullptr, 2));
    const WAVEFORMATEX stereo = Header(TQSAMPLE_PCM16, 2);
    EXPECT_EQ(E_POINTER, TqAudio_ExtractChannel(nullptr, 0, buffer, &stereo, 2));
    EXPECT_EQ(S_OK, TqAudio_ExtractChannel(nullptr, 0, nullptr, &stereo, 0));
}

TEST(ChannelPair, TakesTwoAdjacentChannels)
{
    Noise noise;
    const long frames = 6;
    for (TQSAMPLETYPE type : {TQSAMPLE_PCM8, TQSAMPLE_PCM24, TQSAMPLE_FLOAT64})
    {
        SCOPED_TRACE(testing::Message() << "type " << type);
        const size_t size = TqAudio_BytesFromSampleType(type);
        const WAVEFORMATEX wfx = Header(type, 4);
        const Bytes source = noise.Bytes(frames * 4 * size);
        Bytes pair(frames * 2 * size);
        ASSERT_EQ(S_OK, TqAudio_ExtractChannelPair(pair.data(), 1, source.data(), &wfx, frames));
        EXPECT_EQ(ChannelOf(source, size, 4, 1), ChannelOf(pair, size, 2, 0));
        EXPECT_EQ(ChannelOf(source, size, 4, 2), ChannelOf(pair, size, 2, 1));
    }
}

TEST(ChannelPair, CopiesAStereoSourceAndRefusesWhatHasNoPair)
{
    const short stereo[4] = {1, 2, 3, 4};
    short out[4] = {};
    const WAVEFORMATEX wfx = Header(TQSAMPLE_PCM16, 2);
    ASSERT_EQ(S_OK, TqAudio_ExtractChannelPair(out, 0, stereo, &wfx, 2));
    EXPECT_EQ(0, memcmp(stereo, out, sizeof out));

    BYTE buffer[64] = {};
    const WAVEFORMATEX bigEndian = Header(TQSAMPLE_BE16, 4);
    EXPECT_EQ(E_FAIL, TqAudio_ExtractChannelPair(buffer, 0, buffer, &bigEndian, 2));
    const WAVEFORMATEX four = Header(TQSAMPLE_PCM16, 4);
    EXPECT_EQ(E_INVALIDARG, TqAudio_ExtractChannelPair(buffer, 3, buffer, &four, 2));
    const WAVEFORMATEX mono = Header(TQSAMPLE_PCM16, 1);
    EXPECT_EQ(E_INVALIDARG, TqAudio_ExtractChannelPair(buffer, 0, buffer, &mono, 2));
}

struct SilenceCase
{
    TQSAMPLETYPE type;
    Bytes silence;
};

TEST(MuteChannel, WritesTheSilenceOfEachTypeIntoOneChannel)
{
    const SilenceCase cases[] = {
        {TQSAMPLE_PCM8, {0x80}},
        {TQSAMPLE_SIGNED8, {0x00}},
        {TQSAMPLE_PCM16, {0x00, 0x00}},
        {TQSAMPLE_PCM24, {0x00, 0x00, 0x00}},
        {TQSAMPLE_BE24, {0x00, 0x00, 0x00}},
        {TQSAMPLE_UNPACKED24, {0x00, 0x00, 0x00, 0x00}},
        {TQSAMPLE_FLOAT64, Bytes(8, 0x00)},
    };
    const long frames = 5;
    for (const SilenceCase& c : cases)
    {
        SCOPED_TRACE(testing::Message() << "type " << c.type);
        const size_t size = c.silence.size();
        Bytes buffer(frames * 3 * size, 0x5A);
        ASSERT_EQ(S_OK, TqAudio_MuteChannel(buffer.data(), c.type, 3, 1, frames));
        EXPECT_EQ(tq::audio::test::Repeat(c.silence, frames), ChannelOf(buffer, size, 3, 1));
        EXPECT_EQ(Bytes(frames * size, 0x5A), ChannelOf(buffer, size, 3, 0));
        EXPECT_EQ(Bytes(frames * size, 0x5A), ChannelOf(buffer, size, 3, 2));
    }
}

TEST(MuteChannel, TakesAHeaderOrARecord)
{
    Bytes buffer(8, 0x5A);
    const WAVEFORMATEX wfx = Header(TQSAMPLE_PCM8, 2);
    ASSERT_EQ(S_OK, TqAudio_MuteChannel(buffer.data(), &wfx, 0, 4));
    EXPECT_EQ(Bytes({0x80, 0x5A, 0x80, 0x5A, 0x80, 0x5A, 0x80, 0x5A}), buffer);

    _tqwaveformat fmt;
    fmt.Init(48000, TQSAMPLE_PCM8, 2);
    ASSERT_EQ(S_OK, TqAudio_MuteChannel(buffer.data(), &fmt, 1, 4));
    EXPECT_EQ(Bytes(8, 0x80), buffer);
}

TEST(MuteChannel, RefusesTypesWithoutSilenceAndIgnoresEmptyRuns)
{
    Bytes buffer(16, 0x5A);
    EXPECT_EQ(E_FAIL, TqAudio_MuteChannel(buffer.data(), TQSAMPLE_RA16, 2, 0, 2));
    EXPECT_EQ(E_FAIL, TqAudio_MuteChannel(buffer.data(), TQSAMPLE_NONE, 2, 0, 2));
    EXPECT_EQ(S_OK, TqAudio_MuteChannel(buffer.data(), TQSAMPLE_PCM16, 2, 0, 0));
    EXPECT_EQ(S_OK, TqAudio_MuteChannel(buffer.data(), TQSAMPLE_PCM16, 2, 0, -3));
    EXPECT_EQ(E_INVALIDARG, TqAudio_MuteChannel(buffer.data(), TQSAMPLE_PCM16, 2, 2, 2));
    EXPECT_EQ(Bytes(16, 0x5A), buffer);
}

TEST(ChannelToChannel, OverwritesOnlyTheTargetChannel)
{
    Noise noise;
    const WAVEFORMATEX wfx = Header(TQSAMPLE_PCM24, 3);
    Bytes buffer = noise.Bytes(4 * 9);
    const Bytes before = buffer;
    ASSERT_EQ(S_OK, TqAudio_CopyChannelToChannel(buffer.data(), &wfx, 0, 2, 4));
    EXPECT_EQ(ChannelOf(before, 3, 3, 0), ChannelOf(buffer, 3, 3, 2));
    EXPECT_EQ(ChannelOf(before, 3, 3, 0), ChannelOf(buffer, 3, 3, 0));
    EXPECT_EQ(ChannelOf(before, 3, 3, 1), ChannelOf(buffer, 3, 3, 1));

    const WAVEFORMATEX mono = Header(TQSAMPLE_BE16, 1);
    EXPECT_EQ(S_OK, TqAudio_CopyChannelToChannel(buffer.data(), &mono, 0, 0, 4));
    const WAVEFORMATEX bigEndian = Header(TQSAMPLE_BE16, 2);
    EXPECT_EQ(E_FAIL, TqAudio_CopyChannelToChannel(buffer.data(), &bigEndian, 0, 1, 4));
}

TEST(ChannelToAll, FillsEveryChannelFromOneSourceChannel)
{
    const short stereo[6] = {1, 2, 3, 4, 5, 6};
    const WAVEFORMATEX src = Header(TQSAMPLE_PCM16, 2);
    const WAVEFORMATEX quad = Header(TQSAMPLE_PCM16, 4);
    short out[12] = {};
    ASSERT_EQ(S_OK, TqAudio_CopyChannelToAll(out, stereo, &src, &quad, 1, 3));
    const short expected[12] = {2, 2, 2, 2, 4, 4, 4, 4, 6, 6, 6, 6};
    EXPECT_EQ(0, memcmp(expected, out, sizeof out));

    const WAVEFORMATEX mono = Header(TQSAMPLE_PCM16, 1);
    short plane[3] = {};
    ASSERT_EQ(S_OK, TqAudio_CopyChannelToAll(plane, stereo, &src, &mono, 0, 3));
    EXPECT_EQ(0, memcmp(std::vector<short>({1, 3, 5}).data(), plane, sizeof plane));

    const WAVEFORMATEX floats = Header(TQSAMPLE_FLOAT32, 4);
    EXPECT_EQ(E_NOTIMPL, TqAudio_CopyChannelToAll(out, stereo, &src, &floats, 0, 3));
    EXPECT_EQ(E_INVALIDARG, TqAudio_CopyChannelToMultiMono(out, &floats, stereo, &src, 0, 3));
}

// In place, more channels must be written from the last frame back and fewer from the first
// frame on, or frames not yet read are overwritten.
TEST(ChannelToAll, SpreadsInPlaceInBothDirections)
{
    std::vector<short> buffer = {1, 2, 3, 4, 5, 6, 0, 0, 0, 0, 0, 0};
    ASSERT_EQ(S_OK, TqAudio_CopyChannelToMultiMono2(buffer.data(), 4, buffer.data(), 2, 0, 3,
                                                    TQSAMPLE_PCM16));
    EXPECT_EQ(std::vector<short>({1, 1, 1, 1, 3, 3, 3, 3, 5, 5, 5, 5}), buffer);

    std::vector<short> wide = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    const WAVEFORMATEX quad = Header(TQSAMPLE_PCM16, 4);
    const WAVEFORMATEX stereo = Header(TQSAMPLE_PCM16, 2);
    ASSERT_EQ(S_OK, TqAudio_CopyChannelToMultiMono(wide.data(), &stereo, wide.data(), &quad, 3, 3));
    EXPECT_EQ(std::vector<short>({4, 4, 8, 8, 12, 12, 7, 8, 9, 10, 11, 12}), wide);

    EXPECT_EQ(E_INVALIDARG, TqAudio_CopyChannelToMultiMono2(buffer.data(), 2, buffer.data(), 2, 0,
                                                            3, TQSAMPLE_RA16));
}

TEST(StereoSwap, ExchangesTheFirstTwoChannelsOnly)
{
    Noise noise;
    const WAVEFORMATEX wfx = Header(TQSAMPLE_PCM24, 3);
    const Bytes source = noise.Bytes(5 * 9);
    Bytes buffer = source;
    ASSERT_EQ(S_OK, TqAudio_SwapStereoChannels(buffer.data(), &wfx, 5));
    EXPECT_EQ(ChannelOf(source, 3, 3, 1), ChannelOf(buffer, 3, 3, 0));
    EXPECT_EQ(ChannelOf(source, 3, 3, 0), ChannelOf(buffer, 3, 3, 1));
    EXPECT_EQ(ChannelOf(source, 3, 3, 2), ChannelOf(buffer, 3, 3, 2));

    Bytes copy(source.size(), 0xEE);
    ASSERT_EQ(S_OK, TqAudio_CopySwapStereoChannels(copy.data(), source.data(), &wfx, 5));
    EXPECT_EQ(ChannelOf(source, 3, 3, 1), ChannelOf(copy, 3, 3, 0));
    EXPECT_EQ(ChannelOf(source, 3, 3, 0), ChannelOf(copy, 3, 3, 1));
    EXPECT_EQ(Bytes(15, 0xEE), ChannelOf(copy, 3, 3, 2));
}

TEST(StereoSwap, LeavesMonoAloneAndRefusesOtherTypes)
{
    const WAVEFORMATEX mono = Header(TQSAMPLE_PCM16, 1);
    const short source[2] = {1, 2};
    short copy[2] = {7, 7};
    EXPECT_EQ(S_OK, TqAudio_CopySwapStereoChannels(copy, source, &mono, 2));
    EXPECT_EQ(7, copy[0]);
    EXPECT_EQ(7, copy[1]);

    BYTE buffer[16] = {};
    const WAVEFORMATEX unpacked = Header(TQSAMPLE_UNPACKED24, 2);
    EXPECT_EQ(E_FAIL, TqAudio_SwapStereoChannels(buffer, &unpacked, 2));
}

} // namespace
