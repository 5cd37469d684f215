// Platform headers (sample types, compression tests, repair, construction) and the _tqwaveformat
// record read from them, with its equality.
#include "tqwaveformat.h"

#include <gtest/gtest.h>

#include <string.h>

namespace {

constexpr GUID SubformatOfTag(WORD tag)
{
    return GUID{tag, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xaa, 0x00, 0x38, 0x9b, 0x71}};
}

WAVEFORMATEX Plain(WORD tag, WORD channels, WORD bits, WORD blockAlign = 0)
{
    const WORD align = blockAlign ? blockAlign : static_cast<WORD>(bits / 8 * channels);
    return {tag, channels, 48000, align * 48000u, align, bits, 0};
}

WAVEFORMATEXTENSIBLE Extensible(WORD subformatTag, WORD channels, WORD bits, WORD valid, DWORD mask)
{
    WAVEFORMATEXTENSIBLE wfext{};
    wfext.Format = Plain(WAVE_FORMAT_EXTENSIBLE, channels, bits);
    wfext.Format.cbSize = 22;
    wfext.Samples.wValidBitsPerSample = valid;
    wfext.dwChannelMask = mask;
    wfext.SubFormat = SubformatOfTag(subformatTag);
    return wfext;
}

// Room for headers and records with tails, filled so that untouched bytes show.
union Room
{
    WAVEFORMATEX wfx;
    WAVEFORMATEXTENSIBLE wfext;
    _tqwaveformat fmt;
    BYTE bytes[256];
    Room() { memset(bytes, 0xCD, sizeof bytes); }
};

TEST(WaveFormatHeader, SampleTypesOfExtensibleHeaders)
{
    const WAVEFORMATEXTENSIBLE in32 = Extensible(WAVE_FORMAT_PCM, 2, 32, 24, 3);
    EXPECT_EQ(TqAudio_GetSampleType(&in32.Format), TQSAMPLE_UNPACKED24);
    const WAVEFORMATEXTENSIBLE full32 = Extensible(WAVE_FORMAT_PCM, 2, 32, 32, 3);
    EXPECT_EQ(TqAudio_GetSampleType(&full32.Format), TQSAMPLE_PCM32);
    const WAVEFORMATEXTENSIBLE bigEndian = Extensible(WAVE_FORMAT_TQ_PCM_BIGENDIAN, 1, 24, 24, 4);
    EXPECT_EQ(TqAudio_GetSampleType(&bigEndian.Format), TQSAMPLE_BE24);
    WAVEFORMATEXTENSIBLE foreign = Extensible(WAVE_FORMAT_PCM, 2, 16, 16, 3);
    foreign.SubFormat.Data1 = 0x00010001; // not derived from a tag
    EXPECT_EQ(TqAudio_GetSampleType(&foreign.Format), TQSAMPLE_NONE);
    EXPECT_EQ(TqAudio_GetWaveFormatTag(&foreign.Format), 0);
    EXPECT_EQ(TqAudio_GetSampleType(nullptr), TQSAMPLE_NONE);
}

TEST(WaveFormatHeader, TwentyBitPcmIsCompressedUntilRepaired)
{
    WAVEFORMATEX wfx = Plain(WAVE_FORMAT_PCM, 2, 20, 6);
    EXPECT_EQ(TqAudio_GetSampleType(&wfx), TQSAMPLE_PCM24);
    EXPECT_TRUE(TqAudio_IsCompressed(&wfx)); // 2 bytes times 2 channels is not 6
    EXPECT_TRUE(TqAudio_FixBadWfx(&wfx));
    EXPECT_EQ(wfx.wBitsPerSample, 24);
    EXPECT_EQ(wfx.nBlockAlign, 6);
    EXPECT_FALSE(TqAudio_IsCompressed(&wfx));
    EXPECT_FALSE(TqAudio_FixBadWfx(&wfx));
    WAVEFORMATEX notPcm = Plain(WAVE_FORMAT_TQ_PCM_SIGNED, 2, 20, 6);
    EXPECT_FALSE(TqAudio_FixBadWfx(&notPcm));
}

TEST(WaveFormatHeader, CompressionAndTags)
{
    const WAVEFORMATEX rightAligned = Plain(WAVE_FORMAT_TQ_PCM_RIGHTALIGNED, 2, 16, 8);
    EXPECT_TRUE(TqAudio_IsCompressed(&rightAligned));
    const WAVEFORMATEX signed8 = Plain(WAVE_FORMAT_TQ_PCM_SIGNED, 1, 8);
    EXPECT_FALSE(TqAudio_IsCompressed(&signed8));

    WAVEFORMATEXTENSIBLE ieee = Extensible(WAVE_FORMAT_IEEE_FLOAT, 2, 32, 32, 3);
    WORD tag = 0;
    EXPECT_FALSE(TqAudio_IsCompressed(&ieee.Format));
    EXPECT_TRUE(TqAudio_GetFormatTagExtensible(&ieee, &tag));
    EXPECT_EQ(tag, WAVE_FORMAT_IEEE_FLOAT);
    ieee.Format.cbSize = 21;
    EXPECT_TRUE(TqAudio_IsCompressed(&ieee.Format));
    EXPECT_EQ(TqAudio_GetWaveFormatTag(&ieee.Format), WAVE_FORMAT_EXTENSIBLE);

    // The private tags count as plain sample formats only in plain headers.
    const WAVEFORMATEXTENSIBLE unpacked = Extensible(WAVE_FORMAT_TQ_PCM_UNPACKED, 2, 32, 24, 3);
    EXPECT_TRUE(TqAudio_IsCompressed(&unpacked.Format));
    const WAVEFORMATEXTENSIBLE codec = Extensible(0x0055, 2, 0, 0, 3);
    EXPECT_EQ(TqAudio_GetWaveFormatTag(&codec.Format), 0x0055);
    tag = 0xBEEF;
    EXPECT_FALSE(TqAudio_GetFormatTagExtensible(&codec, &tag));
    EXPECT_EQ(tag, 0xBEEF);
}

TEST(WaveFormatHeader, InitWfxFlexGoesExtensibleForMasks)
{
    Room h;
    TqAudio_InitWfxFlex(&h.wfx, WAVE_FORMAT_PCM, 44100, 16, 2, 3, 40);
    EXPECT_EQ(h.wfx.wFormatTag, WAVE_FORMAT_PCM); // the default stereo mask
    EXPECT_EQ(h.bytes[18], 0xCD);
    TqAudio_InitWfxFlex(&h.wfx, WAVE_FORMAT_PCM, 44100, 16, 2, 6, 39);
    EXPECT_EQ(h.wfx.wFormatTag, WAVE_FORMAT_PCM); // no room
    TqAudio_InitWfxFlex(&h.wfx, WAVE_FORMAT_IEEE_FLOAT, 44100, 32, 6, 0x3F, 40);
    EXPECT_EQ(h.wfx.wFormatTag, WAVE_FORMAT_EXTENSIBLE); // 3 or more channels
    EXPECT_EQ(h.wfx.nBlockAlign, 24);
    EXPECT_TRUE(IsEqualGUID(h.wfext.SubFormat, SubformatOfTag(WAVE_FORMAT_IEEE_FLOAT)));
    // More speakers than channels: the default mask.
    TqAudio_InitWfxFlex(&h.wfx, WAVE_FORMAT_PCM, 44100, 16, 2, 0x7, 40);
    EXPECT_EQ(h.wfx.wFormatTag, WAVE_FORMAT_EXTENSIBLE);
    EXPECT_EQ(h.wfx.cbSize, 22);
    EXPECT_EQ(h.wfext.dwChannelMask, 3u);
    EXPECT_EQ(h.wfext.Samples.wValidBitsPerSample, 16);
}

TEST(WaveFormatRecord, InitFromValues)
{
    Room r;
    r.fmt.InitAsWfx(WAVE_FORMAT_PCM, 44100, 20, 2, 0, 64);
    EXPECT_EQ(r.fmt.Type(), TQSAMPLE_PCM24);
    EXPECT_EQ(r.fmt.nBlockAlign, 6);
    EXPECT_EQ(r.fmt.cbStruct, 32u);
    EXPECT_EQ(r.bytes[63], 0); // cleared to structSize and no further
    EXPECT_EQ(r.bytes[64], 0xCD);

    r.fmt.InitAsWfx(0x0011, 22050, 4, 1);
    EXPECT_TRUE(r.fmt.IsCompressed());
    EXPECT_EQ(r.fmt.FormatTag(), 0x0011);
    EXPECT_EQ(r.fmt.nBlockAlign, 0); // channels times bits over 8, truncated

    // The right-aligned types have no size of their own.
    r.fmt.Init(48000, TQSAMPLE_RA16, 2);
    EXPECT_EQ(r.fmt.BytesPerSample(), 0);
    r.fmt.nBlockAlign = 8;
    EXPECT_EQ(r.fmt.UpdateBlockAlign(), 0);
    EXPECT_EQ(r.fmt.nAvgBytesPerSec, 0u);
}

TEST(WaveFormatRecord, ReadsHeaders)
{
    Room r;
    ASSERT_EQ(r.fmt.Init(32, Plain(WAVE_FORMAT_PCM, 2, 20, 4)), S_OK);
    EXPECT_EQ(r.fmt.Type(), TQSAMPLE_PCM24);
    EXPECT_EQ(r.fmt.nBlockAlign, 6); // repaired
    EXPECT_EQ(r.fmt.dwFlags, 0u);

    r.fmt.Init(32, Extensible(WAVE_FORMAT_PCM, 2, 32, 24, 6).Format);
    EXPECT_EQ(r.fmt.Type(), TQSAMPLE_UNPACKED24);
    EXPECT_EQ(r.fmt.dwChannelMask, 6u);
    EXPECT_EQ(r.fmt.dwFlags, TQWAVEFORMAT_FLAG_EXTENSIBLE);

    // A lost subformat is recovered when the sizes agree, multiplying channels by bits.
    WAVEFORMATEXTENSIBLE lost = Extensible(0, 1, 32, 32, 4);
    lost.SubFormat = GUID{};
    lost.Format.nBlockAlign = 32;
    lost.Format.nAvgBytesPerSec = 48000 * 32;
    r.fmt.Init(32, lost.Format);
    EXPECT_EQ(r.fmt.Type(), TQSAMPLE_FLOAT32);
    lost.Format.nAvgBytesPerSec = 4;
    r.fmt.Init(32, lost.Format);
    EXPECT_TRUE(r.fmt.IsCompressed());
    EXPECT_EQ(TqWaveFormat_InitFromWfx(&r.fmt, 32, nullptr), E_POINTER);
}

TEST(WaveFormatRecord, KeepsCodecTailsAsFarAsTheStructureAllows)
{
    Room h;
    h.wfx = Plain(0x0002, 2, 4, 1024);
    h.wfx.cbSize = 12;
    Room r;
    r.fmt.Init(128, h.wfx);
    EXPECT_TRUE(r.fmt.IsCompressed());
    EXPECT_EQ(r.fmt.cbExtra, 12);
    EXPECT_EQ(r.fmt.cbStruct, 44u);
    EXPECT_EQ(memcmp(r.fmt.abExtra, h.bytes + 18, 12), 0);
    r.fmt.Init(40, h.wfx); // room for 6
    EXPECT_EQ(r.fmt.cbExtra, 6);
    EXPECT_EQ(r.fmt.cbStruct, 38u);
    Room small;
    small.fmt.Init(33, h.wfx); // no room for cbExtra itself
    EXPECT_EQ(small.fmt.cbStruct, 32u);
    EXPECT_EQ(small.bytes[33], 0xCD);

    // An extensible header's tail starts after its 40 bytes.
    Room e;
    e.wfext = Extensible(0x0161, 2, 16, 16, 3);
    e.wfx.cbSize = 22 + 4;
    r.fmt.Init(128, e.wfx);
    EXPECT_EQ(r.fmt.FormatTag(), 0x0161);
    EXPECT_EQ(r.fmt.cbExtra, 4);
    EXPECT_EQ(memcmp(r.fmt.abExtra, e.bytes + 40, 4), 0);
}

TEST(WaveFormatRecord, Equality)
{
    Room a, b;
    a.fmt.Init(48000, TQSAMPLE_FLOAT32, 2, 0);
    b.fmt.Init(48000, TQSAMPLE_FLOAT32, 2, 3); // the default mask of two channels
    EXPECT_TRUE(a.fmt == b.fmt);
    b.fmt.dwChannelMask = 6;
    EXPECT_FALSE(a.fmt == b.fmt);
    EXPECT_TRUE(a.fmt == Plain(WAVE_FORMAT_IEEE_FLOAT, 2, 32));
    EXPECT_TRUE(a.fmt == Extensible(WAVE_FORMAT_IEEE_FLOAT, 2, 32, 32, 3).Format);
    EXPECT_FALSE(a.fmt == Extensible(WAVE_FORMAT_IEEE_FLOAT, 2, 32, 32, 0x600).Format);

    // Compressed records compare their tails too.
    Room h;
    h.wfx = Plain(0x0002, 2, 4, 1024);
    h.wfx.cbSize = 4;
    a.fmt.Init(128, h.wfx);
    b.fmt.Init(128, h.wfx);
    EXPECT_TRUE(a.fmt == b.fmt);
    EXPECT_TRUE(a.fmt == h.wfx);
    b.fmt.abExtra[3] = 9;
    EXPECT_FALSE(a.fmt == b.fmt);
    h.bytes[21] = 9;
    EXPECT_TRUE(b.fmt == h.wfx);
    b.fmt.Init(32, h.wfx); // too small for the tail
    EXPECT_FALSE(a.fmt == b.fmt);
}

} // namespace
