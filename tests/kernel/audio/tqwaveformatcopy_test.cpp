// Writing records out: the header kind each destination rule gives, codec tails, record copies
// and the allocating copies.
#include "tqwaveformat.h"

#include <gtest/gtest.h>

#include <string.h>

namespace {

union Room
{
    WAVEFORMATEX wfx;
    WAVEFORMATEXTENSIBLE wfext;
    _tqwaveformat fmt;
    BYTE bytes[256];
    Room() { memset(bytes, 0xCD, sizeof bytes); }
};

Room SampleRecord(WORD channels, DWORD mask, DWORD flags = 0)
{
    Room r;
    r.fmt.Init(48000, TQSAMPLE_PCM16, channels, mask);
    r.fmt.dwFlags = flags;
    return r;
}

// A compressed record with tail bytes 1, 2, 3 ...
Room CodecRecord(UINT16 tail, DWORD mask = 0)
{
    Room r;
    r.fmt.InitAsWfx(0x0002, 22050, 4, 2, mask, sizeof r);
    r.fmt.nBlockAlign = 1024;
    r.fmt.cbExtra = tail;
    r.fmt.cbStruct = TQWAVEFORMAT_FIXED_SIZE + tail;
    for (UINT16 i = 0; i < tail; ++i)
        r.fmt.abExtra[i] = static_cast<BYTE>(i + 1);
    return r;
}

// Frees a block from the allocating copies the way a caller must.
struct GlobalCopy
{
    WAVEFORMATEX* wfx;
    ~GlobalCopy()
    {
        if (!wfx) return;
        HGLOBAL handle = GlobalHandle(wfx);
        GlobalUnlock(handle);
        GlobalFree(handle);
    }
};

struct DestCase
{
    const char* what;
    WORD channels;
    DWORD mask;
    DWORD flags;
    TQWAVEFORMAT_COPY_DEST dest;
    UINT dstSize;
    DWORD expectedMask; // 0: a plain header
};

const DestCase kDestCases[] = {
    {"stereo, default mask", 2, 3, 0, TQWFXDEST_AUTO, 40, 0},
    {"stereo, side speakers", 2, 6, 0, TQWFXDEST_AUTO, 40, 6},
    {"stereo, side speakers, no room", 2, 6, 0, TQWFXDEST_AUTO, 18, 0},
    {"read from an extensible header", 2, 0, TQWAVEFORMAT_FLAG_EXTENSIBLE, TQWFXDEST_AUTO, 40, 3},
    {"six channels, default mask", 6, 0x3F, 0, TQWFXDEST_AUTO, 40, 0x3F},
    {"plain if default, side speakers", 2, 6, 0, TQWFXDEST_PLAIN_IF_DEFAULT, 40, 6},
    {"plain if default, default mask", 2, 3, TQWAVEFORMAT_FLAG_EXTENSIBLE,
     TQWFXDEST_PLAIN_IF_DEFAULT, 40, 0},
    {"plain drops the mask", 6, 0x60F, TQWAVEFORMAT_FLAG_EXTENSIBLE, TQWFXDEST_PLAIN, 40, 0},
    {"multichannel, stereo", 2, 3, 0, TQWFXDEST_EXTENSIBLE_MULTICHANNEL, 40, 0},
    // Not for its channels but for its mask, as the automatic kind would.
    {"multichannel, stereo sides", 2, 6, 0, TQWFXDEST_EXTENSIBLE_MULTICHANNEL, 40, 6},
    {"multichannel, six", 6, 0, 0, TQWFXDEST_EXTENSIBLE_MULTICHANNEL, 40, 0x3F},
    {"always, mono", 1, 0, 0, TQWFXDEST_EXTENSIBLE, 40, 1},
};

TEST(WaveFormatWrite, DestinationRules)
{
    for (const DestCase& c : kDestCases)
    {
        Room r = SampleRecord(c.channels, c.mask, c.flags);
        Room h;
        ASSERT_EQ(TqAudio_GeneralCopyWfx(&h.wfx, c.dstSize, &r.fmt, c.dest), S_OK) << c.what;
        EXPECT_EQ(TqAudio_GetSampleType(&h.wfx), TQSAMPLE_PCM16) << c.what;
        EXPECT_EQ(h.wfx.nBlockAlign, 2 * c.channels) << c.what;
        const bool extensible = c.expectedMask != 0;
        EXPECT_EQ(h.wfx.wFormatTag, extensible ? WAVE_FORMAT_EXTENSIBLE : WAVE_FORMAT_PCM)
            << c.what;
        EXPECT_EQ(h.wfx.cbSize, extensible ? 22 : 0) << c.what;
        EXPECT_EQ(h.bytes[extensible ? 40 : 18], 0xCD) << c.what;
        EXPECT_EQ(extensible ? h.wfext.dwChannelMask : 0u, c.expectedMask) << c.what;
    }
}

TEST(WaveFormatWrite, RefusesWhatDoesNotFit)
{
    Room r = SampleRecord(2, 0);
    Room h;
    EXPECT_EQ(TqAudio_GeneralCopyWfx(&h.wfx, 39, &r.fmt, TQWFXDEST_EXTENSIBLE),
              TQ_E_BUFFERTOOSMALL);
    EXPECT_EQ(TqAudio_GeneralCopyWfx(&h.wfx, 17, &r.fmt, TQWFXDEST_AUTO), TQ_E_BUFFERTOOSMALL);
    EXPECT_EQ(h.bytes[0], 0xCD);
    EXPECT_EQ(TqAudio_GeneralCopyWfx(&h.wfx, 40, &r.fmt, static_cast<TQWAVEFORMAT_COPY_DEST>(5)),
              E_INVALIDARG);
}

TEST(WaveFormatWrite, CodecTailsAsFarAsTheyFit)
{
    Room codec = CodecRecord(32);
    Room h;
    ASSERT_EQ(TqAudio_GeneralCopyWfx(&h.wfx, 30, &codec.fmt, TQWFXDEST_AUTO), S_OK);
    EXPECT_EQ(h.wfx.wFormatTag, 0x0002);
    EXPECT_EQ(h.wfx.nBlockAlign, 1024);
    EXPECT_EQ(h.wfx.cbSize, 12);
    EXPECT_EQ(memcmp(h.bytes + 18, codec.fmt.abExtra, 12), 0);
    EXPECT_EQ(h.bytes[30], 0xCD);

    // A non-default mask makes it extensible when the whole tail still fits behind 40 bytes.
    Room masked = CodecRecord(8, 0x30);
    ASSERT_EQ(TqAudio_GeneralCopyWfx(&h.wfx, 48, &masked.fmt, TQWFXDEST_PLAIN), S_OK);
    EXPECT_EQ(h.wfx.wFormatTag, WAVE_FORMAT_EXTENSIBLE);
    EXPECT_EQ(h.wfx.cbSize, 22 + 8);
    EXPECT_EQ(TqAudio_GetWaveFormatTag(&h.wfx), 0x0002);
    EXPECT_EQ(memcmp(h.bytes + 40, masked.fmt.abExtra, 8), 0);
    ASSERT_EQ(TqAudio_GeneralCopyWfx(&h.wfx, 47, &masked.fmt, TQWFXDEST_PLAIN), S_OK);
    EXPECT_EQ(h.wfx.wFormatTag, 0x0002);

    // The 40-byte helper keeps what fits of the tail; the 18-byte one none of it.
    const _tqwaveformat_wfxecopyhelper wide(codec.fmt);
    EXPECT_EQ(wide.wfx.cbSize, 22);
    const _tqwaveformat_wfxcopyhelper bare(codec.fmt);
    EXPECT_EQ(bare.wfx.cbSize, 0);
}

TEST(WaveFormatWrite, HeadersSurviveTheTripThroughARecord)
{
    Room plain, surround, codec;
    TqAudio_InitWfx(&plain.wfx, 44100, TQSAMPLE_PCM16, 2);
    TqAudio_InitWfxFlex(&surround.wfx, WAVE_FORMAT_IEEE_FLOAT, 48000, 32, 6, 0x60F, 40);
    codec.wfx = {0x0002, 2, 22050, 22311, 1024, 4, 32};
    for (const Room* original : {&plain, &surround, &codec})
    {
        Room copy;
        ASSERT_EQ(TqAudio_CopyWfx(&copy.wfx, sizeof copy, &original->wfx, TQWFXDEST_AUTO), S_OK);
        EXPECT_EQ(memcmp(copy.bytes, original->bytes, 18 + original->wfx.cbSize), 0)
            << original->wfx.wFormatTag;
    }
    // Asked for, a plain header becomes extensible and back.
    _tqwaveformat_wfxplus plus;
    ASSERT_EQ(plus.Init(&plain.wfx, TQWFXDEST_EXTENSIBLE), S_OK);
    EXPECT_EQ(plus.wfx.wFormatTag, WAVE_FORMAT_EXTENSIBLE);
    Room back;
    ASSERT_EQ(TqAudio_CopyWfx(&back.wfx, sizeof back, plus, TQWFXDEST_PLAIN), S_OK);
    EXPECT_EQ(memcmp(back.bytes, plain.bytes, 18), 0);
}

TEST(WaveFormatWrite, AllocatedCopies)
{
    Room stereo = SampleRecord(2, 3), sides = SampleRecord(2, 6), codec = CodecRecord(20);
    const GlobalCopy plain{TqAudio_AllocAndCopyWfx(stereo.fmt, TQWFXDEST_AUTO)};
    ASSERT_NE(plain.wfx, nullptr);
    EXPECT_EQ(plain.wfx->wFormatTag, WAVE_FORMAT_PCM);
    const GlobalCopy wide{TqAudio_AllocAndCopyWfx(&sides.fmt, TQWFXDEST_AUTO)};
    ASSERT_NE(wide.wfx, nullptr);
    EXPECT_GE(GlobalSize(GlobalHandle(wide.wfx)), 40u);
    EXPECT_EQ(wide.wfx->wFormatTag, WAVE_FORMAT_EXTENSIBLE);
    const GlobalCopy tail{TqAudio_AllocAndCopyWfx(&codec.fmt, TQWFXDEST_PLAIN)};
    ASSERT_NE(tail.wfx, nullptr);
    EXPECT_EQ(tail.wfx->cbSize, 20);
    EXPECT_EQ(memcmp(tail.wfx + 1, codec.fmt.abExtra, 20), 0);

    // From a header: verbatim when it is the kind asked for, rewritten otherwise.
    Room header;
    header.wfx = {0x0002, 2, 22050, 22311, 1024, 4, 32};
    const GlobalCopy verbatim{TqAudio_AllocAndCopyWfx(&header.wfx, TQWFXDEST_AUTO)};
    ASSERT_NE(verbatim.wfx, nullptr);
    EXPECT_EQ(memcmp(verbatim.wfx, header.bytes, 50), 0);
    TqAudio_InitWfx(&header.wfx, 48000, TQSAMPLE_PCM16, 2);
    const GlobalCopy widened{TqAudio_AllocAndCopyWfx(&header.wfx, TQWFXDEST_EXTENSIBLE)};
    ASSERT_NE(widened.wfx, nullptr);
    EXPECT_EQ(widened.wfx->wFormatTag, WAVE_FORMAT_EXTENSIBLE);
    EXPECT_EQ(TqAudio_GetSampleType(widened.wfx), TQSAMPLE_PCM16);
}

TEST(WaveFormatWrite, RecordCopies)
{
    Room codec = CodecRecord(10);
    Room copy;
    ASSERT_EQ(TqAudio_GeneralCopyTqWaveFormat(&copy.fmt, 64, codec.fmt, TQWFXDEST_AUTO), S_OK);
    EXPECT_TRUE(copy.fmt == codec.fmt);
    EXPECT_EQ(copy.fmt.cbStruct, 42u);
    EXPECT_EQ(copy.bytes[63], 0); // the rest is zero-filled up to the size given
    EXPECT_EQ(copy.bytes[64], 0xCD);

    Room cut;
    ASSERT_EQ(TqAudio_GeneralCopyTqWaveFormat(&cut.fmt, 43, &codec.fmt, TQWFXDEST_AUTO), S_OK);
    EXPECT_EQ(cut.fmt.cbExtra, 0); // a tail that does not fit whole is dropped
    EXPECT_EQ(cut.fmt.cbStruct, 32u);
    Room fixed;
    ASSERT_EQ(TqAudio_GeneralCopyTqWaveFormat(&fixed.fmt, 0, &codec.fmt, TQWFXDEST_AUTO), S_OK);
    EXPECT_EQ(fixed.fmt.cbStruct, 32u);
    EXPECT_EQ(fixed.bytes[32], 0xCD);
}

} // namespace
