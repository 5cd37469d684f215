// The channel copy table, the rows of the right-aligned types as they stand, and
// TqAudio_CopyChannels with its channel map.
#include "tqsamplecopy.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "sampleencodings.h"
#include "tqsamplecodec.h"

namespace {

using namespace tq::audio::test;
using tq::audio::kBlockTypes;

Bytes ConvertChannel(TQSAMPLETYPE dst, TQSAMPLETYPE src, size_t dstSize, const Bytes& in,
                     long frames)
{
    Bytes out(dstSize * frames, 0xCD);
    TqAudio_GetCopyChannelsFunction2(dst, src)(out.data(), 1, 0, in.data(), 1, 0, frames);
    return out;
}

struct RightAlignedRow
{
    const char* what;
    TQSAMPLETYPE dst;
    TQSAMPLETYPE src;
    Bytes in;
    Bytes out;
};

// Each row as it has always behaved, the ones that do not mirror their opposite included. The
// right-aligned side is a little-endian 32-bit word.
const RightAlignedRow kRightAlignedRows[] = {
    {"low 16 bits copied", TQSAMPLE_PCM16, TQSAMPLE_RA16, Le(0x00012345, 4), Le(0x2345, 2)},
    {"24-bit word at 16-bit scale", TQSAMPLE_PCM16, TQSAMPLE_RA24, Le(256, 4), Le(256, 2)},
    {"24-bit half scale clamps", TQSAMPLE_PCM16, TQSAMPLE_RA24, Le(0x400000, 4), Le(32767, 2)},
    {"under a zero low byte", TQSAMPLE_PCM24, TQSAMPLE_RA16, Le(0xABCD, 4), Le(0xABCD00, 3)},
    {"low three bytes", TQSAMPLE_PCM24, TQSAMPLE_RA24, Le(0x12345678, 4), Le(0x345678, 3)},
    {"shifted to the top", TQSAMPLE_PCM32, TQSAMPLE_RA16, Le(0xFFFF8000, 4), Le(0x80000000, 4)},
    {"low 16 bits sign-extended", TQSAMPLE_FLOAT32, TQSAMPLE_RA16, Le(0xC000, 4), Stored(-0.5f)},
    {"high bits ignored", TQSAMPLE_FLOAT64, TQSAMPLE_RA16, Le(0x12344000, 4), Stored(0.5)},
    {"24-bit word to single", TQSAMPLE_FLOAT32, TQSAMPLE_RA24, Le(1, 4), Stored(1.0f / 32768)},
    {"24-bit half scale to single", TQSAMPLE_FLOAT32, TQSAMPLE_RA24, Le(0x400000, 4),
     Stored(128.0f)},
    {"24-bit word to double", TQSAMPLE_FLOAT64, TQSAMPLE_RA24, Le(-1, 4), Stored(-1.0 / 32768)},
    {"16-bit word to unpacked", TQSAMPLE_UNPACKED24, TQSAMPLE_RA16, Le(0x1234, 4), Le(0x123400, 4)},
    {"16-bit into the word", TQSAMPLE_RA16, TQSAMPLE_PCM16, Le(-2, 2), Le(-2, 4)},
    {"24-bit read as a word, held", TQSAMPLE_RA16, TQSAMPLE_PCM24, Le(0x01000000, 4),
     Le(0x7FFF, 4)},
    {"single at 16-bit scale", TQSAMPLE_RA16, TQSAMPLE_FLOAT32, Stored(-2.0f), Le(-32768, 4)},
    {"16-bit into a 24-bit word", TQSAMPLE_RA24, TQSAMPLE_PCM16, Le(-1, 2), Le(-256, 4)},
    {"24-bit into the word", TQSAMPLE_RA24, TQSAMPLE_PCM24, Le(-2, 3), Le(-2, 4)},
    {"single keeps a 16-bit scale", TQSAMPLE_RA24, TQSAMPLE_FLOAT32, Stored(0.5f), Le(16384, 4)},
};

TEST(ChannelCopy, RightAlignedRows)
{
    for (const RightAlignedRow& row : kRightAlignedRows)
    {
        ASSERT_NE(TqAudio_GetCopyChannelsFunction2(row.dst, row.src), nullptr) << row.what;
        EXPECT_EQ(Hex(ConvertChannel(row.dst, row.src, row.out.size(), row.in, 1)), Hex(row.out))
            << row.what;
    }
    // 16 from packed 24 steps through its source in words: with a 3-byte step the second sample
    // would read 0x65432100 and be held to the maximum.
    EXPECT_EQ(Hex(ConvertChannel(TQSAMPLE_RA16, TQSAMPLE_PCM24, 4,
                                 Cat({Le(0x00123456, 4), Le(0x00654321, 4)}), 2)),
              Hex(Cat({Le(0x1234, 4), Le(0x6543, 4)})));
}

TEST(ChannelCopy, TableHasAllBlockPairsAndSixteenRightAlignedRows)
{
    for (TQSAMPLETYPE dst : kBlockTypes)
        for (TQSAMPLETYPE src : kBlockTypes)
            EXPECT_NE(TqAudio_GetCopyChannelsFunction2(dst, src), nullptr) << dst << ", " << src;

    std::vector<std::pair<TQSAMPLETYPE, TQSAMPLETYPE>> listed;
    for (const RightAlignedRow& row : kRightAlignedRows)
        listed.emplace_back(row.dst, row.src);
    std::vector<TQSAMPLETYPE> all(std::begin(kBlockTypes), std::end(kBlockTypes));
    all.insert(all.end(), {TQSAMPLE_RA16, TQSAMPLE_RA24});
    int rows = 0;
    for (TQSAMPLETYPE dst : all)
    {
        for (TQSAMPLETYPE src : all)
        {
            if (dst < TQSAMPLE_RA16 && src < TQSAMPLE_RA16) continue;
            const bool has = TqAudio_GetCopyChannelsFunction2(dst, src) != nullptr;
            EXPECT_EQ(has, std::find(listed.begin(), listed.end(), std::make_pair(dst, src)) !=
                               listed.end())
                << dst << ", " << src;
            rows += has;
        }
    }
    EXPECT_EQ(rows, 16);
    EXPECT_EQ(TqAudio_GetCopyChannelsFunction2(TQSAMPLE_PCM16, static_cast<TQSAMPLETYPE>(130)),
              nullptr);
}

// A channel copy is the block copy at gain 1.0 with strides: channel 1 of three goes to channel 2
// of four, the other channels stay as they were. The functions are the lookup's, processor
// variants included; the pairs without a block function carry exact values.
TEST(ChannelCopy, StridedCopyIsTheBlockRuleAtUnity)
{
    constexpr long kFrames = 23;
    Noise noise;
    for (const ExactValues& from : Encodings())
    {
        for (const ExactValues& to : Encodings())
        {
            const TQSAMPLETYPE dst = to.type, src = from.type;
            const size_t dSize = to.minusHalf.size(), sSize = from.minusHalf.size();
            const Bytes interleaved = noise.Samples(src, 3 * kFrames);
            Bytes out(4 * kFrames * dSize, 0xCD);
            TqAudio_GetCopyChannelsFunction2(dst, src)(out.data(), 4, 2, interleaved.data(), 3, 1,
                                                       kFrames);
            Bytes plane, expected, got;
            for (long i = 0; i < kFrames; ++i)
            {
                const BYTE* s = &interleaved[(3 * i + 1) * sSize];
                plane.insert(plane.end(), s, s + sSize);
                const BYTE* frame = &out[4 * i * dSize];
                got.insert(got.end(), frame, frame + 4 * dSize);
            }
            const TQAUDIO_COPYFUNC block = tq::audio::ScalarCopyFunction(dst, src);
            if (!block)
            {
                EXPECT_EQ(Hex(ConvertChannel(dst, src, dSize, Repeat(from.minusHalf, 5), 5)),
                          Hex(Repeat(to.minusHalf, 5)));
                continue;
            }
            Bytes samples(kFrames * dSize);
            block(samples.data(), plane.data(), kFrames, 1.0f);
            for (long i = 0; i < kFrames; ++i)
            {
                const Bytes untouched(dSize, 0xCD);
                const Bytes sample(&samples[i * dSize], &samples[(i + 1) * dSize]);
                expected = Cat({expected, untouched, untouched, sample, untouched});
            }
            EXPECT_EQ(Hex(got), Hex(expected)) << dst << " from " << src;
        }
    }
}

WAVEFORMATEX Format(TQSAMPLETYPE type, WORD channels)
{
    WAVEFORMATEX wfx;
    return *TqAudio_InitWfx(&wfx, 44100, type, channels);
}

TEST(AudioCopyChannels, MapsSourceChannelsToDestinationChannels)
{
    const WAVEFORMATEX src = Format(TQSAMPLE_PCM16, 2);
    const WAVEFORMATEX dst = Format(TQSAMPLE_FLOAT32, 2);
    const int16_t in[4] = {-32768, 16384, 8192, -8192};
    const int swap[2] = {1, 0};
    float out[4] = {9, 9, 9, 9};
    ASSERT_EQ(TqAudio_CopyChannels(&dst, out, &src, in, 2, swap), S_OK);
    const float swapped[4] = {0.5f, -1.0f, -0.25f, 0.25f};
    EXPECT_EQ(memcmp(out, swapped, sizeof out), 0);

    // -1 skips a source channel, and so does a channel the destination does not have.
    const int second[2] = {-1, 0}, outside[2] = {2, 7};
    float kept[4] = {9, 9, 9, 9};
    ASSERT_EQ(TqAudio_CopyChannels(&dst, kept, &src, in, 2, second), S_OK);
    ASSERT_EQ(TqAudio_CopyChannels(&dst, kept, &src, in, 2, outside), S_OK);
    const float onlyFirst[4] = {0.5f, 9, -0.25f, 9};
    EXPECT_EQ(memcmp(kept, onlyFirst, sizeof kept), 0);

    // No map is a block copy at gain 1.0.
    int16_t back[4] = {};
    ASSERT_EQ(TqAudio_CopyChannels(&src, back, &dst, swapped, 2, nullptr), S_OK);
    const int16_t expected[4] = {16384, -32768, -8192, 8192};
    EXPECT_EQ(memcmp(back, expected, sizeof back), 0);
}

TEST(AudioCopyChannels, RightAlignedHeadersAndRecords)
{
    WAVEFORMATEX rightAligned = Format(TQSAMPLE_PCM16, 2);
    rightAligned.wFormatTag = WAVE_FORMAT_TQ_PCM_RIGHTALIGNED;
    rightAligned.nBlockAlign = 8;
    union
    {
        _tqwaveformat fmt;
        BYTE bytes[64];
    } planes;
    planes.fmt.Init(44100, TQSAMPLE_FLOAT64, 2);
    const int32_t in[4] = {0x4000, -0x8000, 0x7FFF0000, 0x2000};
    const int identity[2] = {0, 1};
    double out[4] = {};
    ASSERT_EQ(TqAudio_CopyChannels(&planes.fmt, out, &rightAligned, in, 2, identity), S_OK);
    const double expected[4] = {0.5, -1.0, 0.0, 0.25};
    EXPECT_EQ(memcmp(out, expected, sizeof out), 0);
    // Without a map it would be a block copy, and the block table has no right-aligned rows.
    EXPECT_EQ(TqAudio_CopyChannels(&planes.fmt, out, &rightAligned, in, 2, nullptr), E_NOTIMPL);

    const WAVEFORMATEX pcm8 = Format(TQSAMPLE_PCM8, 2);
    BYTE bytes[2] = {0x5A, 0x5A};
    EXPECT_EQ(TqAudio_CopyChannels(&pcm8, bytes, &rightAligned, in, 1, identity), E_NOTIMPL);
    EXPECT_EQ(bytes[0], 0x5A);
    EXPECT_EQ(TqAudio_CopyChannels(&pcm8, nullptr, &rightAligned, nullptr, 0, identity), S_OK);
    EXPECT_EQ(TqAudio_CopyChannels(&pcm8, bytes, &pcm8, in, -3, identity), E_INVALIDARG);
    EXPECT_EQ(TqAudio_CopyChannels(&pcm8, nullptr, &pcm8, in, 1, identity), E_POINTER);
}

} // namespace
