// Filling buffers: silence by header and by record, silence of one channel, and one frame
// repeated, converted where the types differ.
#include "tqchannels.h"

#include <gtest/gtest.h>

#include <string.h>

#include <vector>

namespace {

using Bytes = std::vector<BYTE>;

// A header with room for the extensible form.
struct Header
{
    WAVEFORMATEXTENSIBLE storage = {};
    const WAVEFORMATEX* wfx() const { return &storage.Format; }
};

// Extensible where the mask is non-zero and not the default one of the channel count.
Header Make(WORD tag, WORD bits, WORD channels, DWORD mask = 0)
{
    Header h;
    TqAudio_InitWfxFlex(&h.storage.Format, tag, 48000, bits, channels, mask, sizeof(h.storage));
    return h;
}

struct FillCase
{
    const char* what;
    Header header;
    HRESULT result;
    int fill; // -1: the buffer stays as it was
};

TEST(FillSilence, FillsTheSilenceOfEachHeader)
{
    const FillCase cases[] = {
        {"8-bit PCM", Make(WAVE_FORMAT_PCM, 8, 2), S_OK, 0x80},
        {"16-bit PCM", Make(WAVE_FORMAT_PCM, 16, 2), S_OK, 0x00},
        {"8-bit big-endian tag", Make(WAVE_FORMAT_TQ_PCM_BIGENDIAN, 8, 2), S_OK, 0x80},
        {"24-bit big-endian", Make(WAVE_FORMAT_TQ_PCM_BIGENDIAN, 24, 2), S_OK, 0x00},
        {"signed 8-bit", Make(WAVE_FORMAT_TQ_PCM_SIGNED, 8, 2), S_OK, 0x00},
        {"unpacked", Make(WAVE_FORMAT_TQ_PCM_UNPACKED, 32, 2), S_OK, 0x00},
        {"float", Make(WAVE_FORMAT_IEEE_FLOAT, 32, 2), S_OK, 0x00},
        {"extensible 8-bit PCM", Make(WAVE_FORMAT_PCM, 8, 2, 0x6), S_OK, 0x80},
        {"extensible float", Make(WAVE_FORMAT_IEEE_FLOAT, 32, 2, 0x6), S_OK, 0x00},
        {"extensible compressed", Make(0x0055, 16, 2, 0x6), S_OK, -1},
        {"compressed", Make(0x0055, 16, 2), E_FAIL, -1},
    };
    for (const FillCase& c : cases)
    {
        SCOPED_TRACE(c.what);
        const WAVEFORMATEX* wfx = c.header.wfx();
        Bytes buffer(wfx->nBlockAlign * 5 + 1, 0x5A);
        EXPECT_EQ(c.result, TqAudio_FillSilence(wfx, buffer.data(), 5));
        Bytes expected(buffer.size(), 0x5A);
        if (c.fill >= 0) memset(expected.data(), c.fill, wfx->nBlockAlign * 5);
        EXPECT_EQ(expected, buffer);
        EXPECT_EQ(S_OK, TqAudio_FillSilence(wfx, nullptr, 0));
    }
}

TEST(FillSilence, TakesARecordByItsSampleType)
{
    _tqwaveformat fmt;
    fmt.Init(48000, TQSAMPLE_PCM8, 2);
    Bytes buffer(8, 0x5A);
    ASSERT_EQ(S_OK, TqAudio_FillSilence(&fmt, buffer.data(), 4));
    EXPECT_EQ(Bytes(8, 0x80), buffer);

    fmt.Init(48000, TQSAMPLE_BE24, 2);
    Bytes wide(12, 0x5A);
    ASSERT_EQ(S_OK, TqAudio_FillSilence(&fmt, wide.data(), 2));
    EXPECT_EQ(Bytes(12, 0x00), wide);

    fmt.InitAsWfx(0x0055, 48000, 16, 2);
    EXPECT_EQ(E_FAIL, TqAudio_FillSilence(&fmt, wide.data(), 2));
}

TEST(FillSilenceChannel, WritesOnlyTheChannel)
{
    Bytes buffer(8, 0x5A);
    const Header pcm8 = Make(WAVE_FORMAT_PCM, 8, 2);
    ASSERT_EQ(S_OK, TqAudio_FillSilenceChannel(pcm8.wfx(), buffer.data(), 1, 4));
    EXPECT_EQ(Bytes({0x5A, 0x80, 0x5A, 0x80, 0x5A, 0x80, 0x5A, 0x80}), buffer);

    const Header signed8 = Make(WAVE_FORMAT_TQ_PCM_SIGNED, 8, 2);
    ASSERT_EQ(S_OK, TqAudio_FillSilenceChannel(signed8.wfx(), buffer.data(), 0, 4));
    EXPECT_EQ(Bytes({0x00, 0x80, 0x00, 0x80, 0x00, 0x80, 0x00, 0x80}), buffer);

    Bytes wide(12, 0x5A);
    const Header pcm24 = Make(WAVE_FORMAT_PCM, 24, 2);
    ASSERT_EQ(S_OK, TqAudio_FillSilenceChannel(pcm24.wfx(), wide.data(), 0, 2));
    EXPECT_EQ(Bytes({0, 0, 0, 0x5A, 0x5A, 0x5A, 0, 0, 0, 0x5A, 0x5A, 0x5A}), wide);
}

TEST(FillSilenceChannel, FillsMonoWholeAndRefusesWhatItCannotName)
{
    Bytes buffer(4, 0x5A);
    const Header mono = Make(WAVE_FORMAT_PCM, 8, 1);
    ASSERT_EQ(S_OK, TqAudio_FillSilenceChannel(mono.wfx(), buffer.data(), 0, 4));
    EXPECT_EQ(Bytes(4, 0x80), buffer);

    Bytes untouched(32, 0x5A);
    const Header stereo = Make(WAVE_FORMAT_PCM, 16, 2);
    EXPECT_EQ(E_FAIL, TqAudio_FillSilenceChannel(stereo.wfx(), untouched.data(), 2, 4));
    const Header extensible = Make(WAVE_FORMAT_PCM, 16, 2, 0x6);
    EXPECT_EQ(E_FAIL, TqAudio_FillSilenceChannel(extensible.wfx(), untouched.data(), 0, 4));
    const Header float16 = Make(WAVE_FORMAT_IEEE_FLOAT, 16, 2);
    EXPECT_EQ(E_FAIL, TqAudio_FillSilenceChannel(float16.wfx(), untouched.data(), 0, 4));
    const Header pcm12 = Make(WAVE_FORMAT_PCM, 12, 2);
    EXPECT_EQ(E_FAIL, TqAudio_FillSilenceChannel(pcm12.wfx(), untouched.data(), 0, 4));
    EXPECT_EQ(Bytes(32, 0x5A), untouched);
}

WAVEFORMATEX Plain(TQSAMPLETYPE type, WORD channels)
{
    WAVEFORMATEX wfx = {};
    TqAudio_InitWfx(&wfx, 48000, type, channels);
    return wfx;
}

TEST(FillWithSample, RepeatsAFrameOfTheSameType)
{
    const WAVEFORMATEX wfx = Plain(TQSAMPLE_PCM16, 2);
    const short frame[2] = {100, -100};
    short buffer[10] = {};
    ASSERT_EQ(S_OK, TqAudio_FillWithSample(&wfx, buffer, &wfx, frame, 5));
    for (int i = 0; i < 5; ++i)
    {
        EXPECT_EQ(100, buffer[2 * i]);
        EXPECT_EQ(-100, buffer[2 * i + 1]);
    }
}

TEST(FillWithSample, ConvertsAStereoFrameIntoTheFirstTwoChannels)
{
    const WAVEFORMATEX dst = Plain(TQSAMPLE_FLOAT32, 3);
    const WAVEFORMATEX src = Plain(TQSAMPLE_PCM16, 2);
    const short frame[2] = {16384, -8192};
    float buffer[9] = {7, 7, 7, 7, 7, 7, 7, 7, 7};
    ASSERT_EQ(S_OK, TqAudio_FillWithSample(&dst, buffer, &src, frame, 3));
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_EQ(0.5f, buffer[3 * i]);
        EXPECT_EQ(-0.25f, buffer[3 * i + 1]);
        EXPECT_EQ(7.0f, buffer[3 * i + 2]);
    }

    // A mono sample serves both sides; a double narrows by the rounding rule.
    const WAVEFORMATEX mono = Plain(TQSAMPLE_FLOAT64, 1);
    const WAVEFORMATEX pcm16 = Plain(TQSAMPLE_PCM16, 2);
    const double half = 0.5 + 0.5 / 32768.0; // 16384.5 rounds to the even 16384
    short out[4] = {};
    ASSERT_EQ(S_OK, TqAudio_FillWithSample(&pcm16, out, &mono, &half, 2));
    EXPECT_EQ(0, memcmp(std::vector<short>({16384, 16384, 16384, 16384}).data(), out, sizeof out));
}

TEST(FillWithSample, FillsSilenceForPairsWithoutAConversion)
{
    const WAVEFORMATEX dst = Plain(TQSAMPLE_PCM8, 2);
    const WAVEFORMATEX src = Plain(TQSAMPLE_PCM16, 2);
    const short frame[2] = {1000, 1000};
    Bytes buffer(8, 0x5A);
    ASSERT_EQ(S_OK, TqAudio_FillWithSample(&dst, buffer.data(), &src, frame, 4));
    EXPECT_EQ(Bytes(8, 0x80), buffer);

    const WAVEFORMATEX from32 = Plain(TQSAMPLE_PCM32, 2);
    const WAVEFORMATEX to16 = Plain(TQSAMPLE_PCM16, 2);
    const int words[2] = {0x40000000, 0x40000000};
    short out[4] = {1, 1, 1, 1};
    ASSERT_EQ(S_OK, TqAudio_FillWithSample(&to16, out, &from32, words, 2));
    EXPECT_EQ(0, memcmp(std::vector<short>(4, 0).data(), out, sizeof out));
}

} // namespace
