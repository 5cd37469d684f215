// Channel mixes: the mono average of each type, down-mixes with and without averaging (their
// clipping and rounding), and up-mixes.
#include "tqchannels.h"

#include <gtest/gtest.h>

#include <stdint.h>
#include <string.h>

#include <vector>

namespace {

using Bytes = std::vector<BYTE>;

WAVEFORMATEX Header(TQSAMPLETYPE type, WORD channels)
{
    WAVEFORMATEX wfx = {};
    TqAudio_InitWfx(&wfx, 48000, type, channels);
    return wfx;
}

template <class T>
Bytes BytesOf(std::initializer_list<T> values)
{
    Bytes out(values.size() * sizeof(T));
    memcpy(out.data(), values.begin(), out.size());
    return out;
}

Bytes Le24(std::initializer_list<int32_t> values)
{
    Bytes out;
    for (int32_t v : values)
        out.insert(out.end(), {BYTE(v), BYTE(v >> 8), BYTE(v >> 16)});
    return out;
}

struct MonoCase
{
    const char* what;
    TQSAMPLETYPE type;
    Bytes frame;    // one stereo frame
    Bytes expected; // after the mix, both channels
};

TEST(MonoChannel, AveragesEachTypeByItsOwnArithmetic)
{
    const MonoCase cases[] = {
        {"16-bit truncates", TQSAMPLE_PCM16, BytesOf<int16_t>({1, 2}), BytesOf<int16_t>({1, 1})},
        {"16-bit truncates toward zero", TQSAMPLE_PCM16, BytesOf<int16_t>({-1, -2}),
         BytesOf<int16_t>({-1, -1})},
        {"8-bit averages the stored bytes", TQSAMPLE_PCM8, {0x00, 0xFF}, {0x7F, 0x7F}},
        {"24-bit rounds half to even", TQSAMPLE_PCM24, Le24({1, 2}), Le24({2, 2})},
        {"24-bit rounds half to even below zero", TQSAMPLE_PCM24, Le24({-1, -2}), Le24({-2, -2})},
        {"32-bit sum wraps", TQSAMPLE_PCM32, BytesOf<int32_t>({INT32_MAX, INT32_MAX}),
         BytesOf<int32_t>({-1, -1})},
        {"single", TQSAMPLE_FLOAT32, BytesOf<float>({0.25f, 0.5f}),
         BytesOf<float>({0.375f, 0.375f})},
        {"double", TQSAMPLE_FLOAT64, BytesOf<double>({-1.0, 0.5}), BytesOf<double>({-0.25, -0.25})},
    };
    for (const MonoCase& c : cases)
    {
        SCOPED_TRACE(c.what);
        const WAVEFORMATEX wfx = Header(c.type, 2);
        // Three frames, mixed in place.
        Bytes buffer;
        for (int i = 0; i < 3; ++i)
            buffer.insert(buffer.end(), c.frame.begin(), c.frame.end());
        ASSERT_EQ(S_OK, TqAudio_MonoChannel(buffer.data(), buffer.data(), &wfx, 3));
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(c.expected, Bytes(buffer.begin() + i * c.frame.size(),
                                        buffer.begin() + (i + 1) * c.frame.size()));
    }
}

TEST(MonoChannel, CopiesMonoAndRefusesTypesBeyondDouble)
{
    const int16_t mono[2] = {5, -5};
    int16_t out[2] = {};
    const WAVEFORMATEX wfx = Header(TQSAMPLE_PCM16, 1);
    ASSERT_EQ(S_OK, TqAudio_MonoChannel(out, mono, &wfx, 2));
    EXPECT_EQ(0, memcmp(mono, out, sizeof out));

    BYTE buffer[32] = {};
    for (TQSAMPLETYPE type : {TQSAMPLE_UNPACKED24, TQSAMPLE_SIGNED8, TQSAMPLE_BE16})
    {
        const WAVEFORMATEX stereo = Header(type, 2);
        EXPECT_EQ(E_FAIL, TqAudio_MonoChannel(buffer, buffer, &stereo, 2)) << type;
    }
}

struct DownMixCase
{
    const char* what;
    TQSAMPLETYPE type;
    WORD channels;
    Bytes frame;
    Bytes sum;     // TqAudio_ChannelChange
    Bytes average; // TqAudio_ChannelChangeAvg
};

TEST(DownMix, SumsOrAveragesAtFullScaleAndClampsIntegers)
{
    const DownMixCase cases[] = {
        {"full-scale 16-bit clips when summed", TQSAMPLE_PCM16, 2, BytesOf<int16_t>({32767, 32767}),
         BytesOf<int16_t>({32767}), BytesOf<int16_t>({32767})},
        {"negative full scale clips at the bottom", TQSAMPLE_PCM16, 2,
         BytesOf<int16_t>({-32768, -32768}), BytesOf<int16_t>({-32768}),
         BytesOf<int16_t>({-32768})},
        {"averages round to even", TQSAMPLE_PCM16, 2, BytesOf<int16_t>({1001, 2000}),
         BytesOf<int16_t>({3001}), BytesOf<int16_t>({1500})},
        {"averages round to nearest", TQSAMPLE_PCM16, 2, BytesOf<int16_t>({1003, 2000}),
         BytesOf<int16_t>({3003}), BytesOf<int16_t>({1502})},
        {"three channels", TQSAMPLE_PCM24, 3, Le24({100, 200, 301}), Le24({601}), Le24({200})},
        {"big-endian", TQSAMPLE_BE16, 2, {0x01, 0x00, 0x01, 0x02}, {0x02, 0x02}, {0x01, 0x01}},
        {"unsigned 8-bit", TQSAMPLE_PCM8, 2, {0xE4, 0xE4}, {0xFF}, {0xE4}},
        {"signed 8-bit", TQSAMPLE_SIGNED8, 2, {0x9C, 0x9C}, {0x80}, {0x9C}},
        {"32-bit", TQSAMPLE_PCM32, 2, BytesOf<int32_t>({0x40000000, 0x40000000}),
         BytesOf<int32_t>({INT32_MAX}), BytesOf<int32_t>({0x40000000})},
        {"single is not clamped", TQSAMPLE_FLOAT32, 2, BytesOf<float>({0.75f, 0.75f}),
         BytesOf<float>({1.5f}), BytesOf<float>({0.75f})},
        {"double is not clamped", TQSAMPLE_FLOAT64, 2, BytesOf<double>({-1.0, -0.5}),
         BytesOf<double>({-1.5}), BytesOf<double>({-0.75})},
    };
    for (const DownMixCase& c : cases)
    {
        SCOPED_TRACE(c.what);
        const WAVEFORMATEX wfx = Header(c.type, c.channels);
        Bytes out(c.sum.size(), 0xEE);
        ASSERT_EQ(S_OK, TqAudio_ChannelChange(out.data(), 1, c.frame.data(), &wfx, 1));
        EXPECT_EQ(c.sum, out);
        ASSERT_EQ(S_OK, TqAudio_ChannelChangeAvg(out.data(), 1, c.frame.data(), &wfx, 1));
        EXPECT_EQ(c.average, out);
    }
}

// Unsigned 8-bit averages in 16-bit integers, truncating, before it rounds. 128 channels at +1
// and 127 at 0 average to 0.50196: the truncated 16-bit value is exactly half a step, which
// rounds to the even 0, where a mix in double precision would give 1.
TEST(DownMix, AveragesUnsigned8BitThroughTruncated16BitValues)
{
    const WORD channels = 255;
    Bytes frame(channels, 0x80);
    for (int c = 0; c < 128; ++c)
        frame[c] = 0x81;
    const WAVEFORMATEX wfx = Header(TQSAMPLE_PCM8, channels);
    BYTE out = 0;
    ASSERT_EQ(S_OK, TqAudio_ChannelChangeAvg(&out, 1, frame.data(), &wfx, 1));
    EXPECT_EQ(0x80, out);
}

TEST(DownMix, WorksInPlaceOverManyFrames)
{
    std::vector<int16_t> buffer = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14};
    const WAVEFORMATEX wfx = Header(TQSAMPLE_PCM16, 2);
    ASSERT_EQ(S_OK, TqAudio_ChannelChange(buffer.data(), 1, buffer.data(), &wfx, 7));
    EXPECT_EQ(std::vector<int16_t>({3, 7, 11, 15, 19, 23, 27}),
              std::vector<int16_t>(buffer.begin(), buffer.begin() + 7));
}

TEST(ChannelChange, RefusesWhatItCannotMix)
{
    BYTE buffer[64] = {};
    const WAVEFORMATEX unpacked = Header(TQSAMPLE_UNPACKED24, 2);
    EXPECT_EQ(E_FAIL, TqAudio_ChannelChange(buffer, 1, buffer, &unpacked, 2));
    EXPECT_EQ(E_FAIL, TqAudio_ChannelChangeAvg(buffer, 1, buffer, &unpacked, 2));
    const WAVEFORMATEX quad = Header(TQSAMPLE_PCM16, 4);
    EXPECT_EQ(E_FAIL, TqAudio_ChannelChange(buffer, 2, buffer, &quad, 2));
    const WAVEFORMATEX stereo = Header(TQSAMPLE_PCM16, 2);
    EXPECT_EQ(E_FAIL, TqAudio_ChannelChange(buffer, 3, buffer, &stereo, 2));
    EXPECT_EQ(E_INVALIDARG, TqAudio_ChannelChange(buffer, 0, buffer, &stereo, 2));
}

TEST(ChannelChange, UpMixesOneChannelInPlaceAndCopiesEqualCounts)
{
    Bytes buffer = Le24({1, -2, 3});
    buffer.resize(3 * 3 * 3, 0);
    const WAVEFORMATEX mono = Header(TQSAMPLE_PCM24, 1);
    ASSERT_EQ(S_OK, TqAudio_ChannelChange(buffer.data(), 3, buffer.data(), &mono, 3));
    EXPECT_EQ(Le24({1, 1, 1, -2, -2, -2, 3, 3, 3}), buffer);

    const int16_t stereo[4] = {1, 2, 3, 4};
    int16_t out[4] = {};
    const WAVEFORMATEX wfx = Header(TQSAMPLE_PCM16, 2);
    ASSERT_EQ(S_OK, TqAudio_ChannelChangeAvg(out, 2, stereo, &wfx, 2));
    EXPECT_EQ(0, memcmp(stereo, out, sizeof out));
}

} // namespace
