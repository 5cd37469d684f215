// Audio format texts: sample types, depths, channel layouts, codec names with their fallback,
// tag texts, attribute texts and whole format texts with each flag.
#include "support/kernelenvironment.h"
#include "tqformattext.h"

#include <gtest/gtest.h>

#include <stdarg.h>

#include <string>
#include <vector>

#include "tqkernel.h"
#include "tqlang.h"
#include "tqprintf.h"

namespace {

// Numbers and separators follow the locale; these build them the same way.
std::wstring Printed(const wchar_t* format, ...)
{
    wchar_t text[260];
    va_list args;
    va_start(args, format);
    TqNVPrintF(text, 260, nullptr, format, args);
    va_end(args);
    return text;
}

std::wstring Hz(int rate)
{
    return Printed(L"$d Hz", rate);
}

std::wstring Joined(std::initializer_list<std::wstring> parts)
{
    const std::wstring separator = Printed(L"$, ");
    std::wstring text;
    for (const std::wstring& part : parts)
        text += (text.empty() ? L"" : separator) + part;
    return text;
}

template <class Fn>
std::wstring TextOf(Fn fn)
{
    wchar_t text[260] = L"?";
    fn(text, 260);
    return text;
}

struct TypeText
{
    TQSAMPLETYPE type;
    const wchar_t* sampleType;
    const wchar_t* container;
    const wchar_t* significant;
};

TEST(SampleTypeText, NamesEachTypeAndItsDepth)
{
    const TypeText cases[] = {
        {TQSAMPLE_NONE, L"", L"", L""},
        {TQSAMPLE_PCM8, L"8 Bit", L"8 Bit", L"8 Bit"},
        {TQSAMPLE_PCM16, L"16 Bit", L"16 Bit", L"16 Bit"},
        {TQSAMPLE_FLOAT32, L"32 Bit (IEEE Float)", L"32 Bit", L"24 Bit"},
        {TQSAMPLE_FLOAT64, L"64 Bit (IEEE Float)", L"64 Bit", L"53 Bit"},
        {TQSAMPLE_UNPACKED24, L"24 Bit (Unpacked)", L"24 Bit", L"24 Bit"},
        {TQSAMPLE_BE24, L"24 Bit (MAC)", L"24 Bit", L"24 Bit"},
        {TQSAMPLE_RA16, L"16 Bit (RA)", L"32 Bit", L"16 Bit"},
        {TQSAMPLE_RA24, L"24 Bit (RA)", L"32 Bit", L"24 Bit"},
    };
    for (const TypeText& c : cases)
    {
        SCOPED_TRACE(testing::Message() << "type " << c.type);
        EXPECT_EQ(c.sampleType, TextOf([&](wchar_t* t, int n) {
                      EXPECT_EQ(S_OK, TqAudio_GetSampleTypeText(c.type, t, n));
                  }));
        EXPECT_EQ(c.container, TextOf([&](wchar_t* t, int n) {
                      EXPECT_EQ(S_OK, TqAudio_GetBitDepthText(c.type, t, n, FALSE));
                  }));
        EXPECT_EQ(c.significant, TextOf([&](wchar_t* t, int n) {
                      EXPECT_EQ(S_OK, TqAudio_GetBitDepthText(c.type, t, n, TRUE));
                  }));
    }
}

TEST(SampleTypeText, RefusesUnknownCodesAndBadBuffers)
{
    wchar_t text[16] = L"?";
    EXPECT_EQ(E_INVALIDARG, TqAudio_GetSampleTypeText(TQSAMPLETYPE(20), text, 16));
    EXPECT_STREQ(L"", text);
    EXPECT_EQ(E_INVALIDARG, TqAudio_GetSampleTypeText(TQSAMPLE_PCM16, nullptr, 16));
    EXPECT_EQ(E_INVALIDARG, TqAudio_GetSampleTypeText(TQSAMPLE_PCM16, text, 0));
    EXPECT_EQ(TQ_E_BUFFERTOOSMALL, TqAudio_GetSampleTypeText(TQSAMPLE_PCM16, text, 4));
    EXPECT_STREQ(L"16 ", text);
}

struct ChannelsCase
{
    UINT channels;
    DWORD mask;
    const wchar_t* text;
};

TEST(ChannelsText, NamesExactLayoutsAndCountsTheRest)
{
    const ChannelsCase cases[] = {
        {1, 0, L"Mono"},
        {2, 0, L"Stereo"},
        {2, 0x3, L"Stereo"},
        {6, 0x60F, L"5.1"},
        {8, 0xFF, L"7.1"},
        {1, 0x4, L"1/0 (C)"},
        {2, 0xC, L"1/0 (C) + LFE"},
        {3, 0xB, L"2/0 (L, R) + LFE"},
        {4, 0x33, L"2/2 (L, R, Ls, Rs)"},
        {5, 0x37, L"3/2 (L, C, R, Ls, Rs)"},
        {6, 0, L"6 Channel"},    // no mask names only mono and stereo
        {2, 0x6, L"2 Channel"},  // a mask that names no layout
        {5, 0x3F, L"5 Channel"}, // a layout's mask with the wrong count
    };
    for (const ChannelsCase& c : cases)
    {
        SCOPED_TRACE(testing::Message() << c.channels << " channels, mask " << c.mask);
        EXPECT_EQ(c.text, TextOf([&](wchar_t* t, int n) {
                      EXPECT_EQ(S_OK, TqAudio_GetChannelsText(c.channels, c.mask, t, n));
                  }));
    }
}

struct CodecCase
{
    WORD tag;
    BOOL shortOnly;
    const wchar_t* text;
    int result;
};

TEST(CompressionTypeName, NamesCodecsAliasesAndUnknownTags)
{
    const CodecCase cases[] = {
        {0x0055, TRUE, L"MP3", 0},
        {0x0055, FALSE, L"MPEG Layer 3", 0},
        {0x0002, FALSE, L"ADPCM", 0}, // no long name: the short one
        {0x0014, TRUE, L"ADPCM", 0},  // an alias, named by its canonical tag
        {0x674F, TRUE, L"Ogg", 0},
        {0x674F, FALSE, L"Ogg Vorbis 1", 0},
        {0x00FF, FALSE, L"AAC", 0},
        {0xFE03, TRUE, L"PCM", 0},
        {0xFE03, FALSE, L"PCM Right Aligned", 0},
        {0xFFCA, TRUE, L"DV", 0},
        {12345, TRUE, L"0x12345", 1},
        {12345, FALSE, L"'0x12345' Compression", 1},
    };
    for (const CodecCase& c : cases)
    {
        SCOPED_TRACE(testing::Message() << "tag " << c.tag << " short " << c.shortOnly);
        EXPECT_EQ(c.text, TextOf([&](wchar_t* t, int n) {
                      EXPECT_EQ(c.result, TqAudio_GetCompressionTypeName(c.tag, t, n, c.shortOnly));
                  }));
        EXPECT_EQ(c.result, TqAudio_GetCompressionTypeName(c.tag, nullptr, 0, c.shortOnly));
    }
}

TEST(CompressionTypeName, MapsAliasesToCanonicalTags)
{
    EXPECT_EQ(0x0002, TqAudio_ConvertToCanonicalWaveFormatTag(0x0040));
    EXPECT_EQ(0xFFCA, TqAudio_ConvertToCanonicalWaveFormatTag(0x00D8));
    EXPECT_EQ(0xA106, TqAudio_ConvertToCanonicalWaveFormatTag(0x706D));
    EXPECT_EQ(0x6771, TqAudio_ConvertToCanonicalWaveFormatTag(0x6771));
    EXPECT_EQ(0x1234, TqAudio_ConvertToCanonicalWaveFormatTag(0x1234));
}

TEST(TagText, NamesThePcmTagsAndFallsBackToUnknown)
{
    EXPECT_EQ(L"PCM", TextOf([](wchar_t* t, int n) { TqAudio_GetTagText(1, t, n); }));
    EXPECT_EQ(L"PCM (float)", TextOf([](wchar_t* t, int n) { TqAudio_GetTagText(3, t, n); }));
    EXPECT_EQ(L"PCM (big endian)",
              TextOf([](wchar_t* t, int n) { TqAudio_GetTagText(0xFE02, t, n); }));
    EXPECT_EQ(L"Unknown", TextOf([](wchar_t* t, int n) {
                  EXPECT_EQ(E_FAIL, TqAudio_GetTagText(0x1234, t, n));
              }));
}

struct Extensible
{
    WAVEFORMATEXTENSIBLE storage = {};
    const WAVEFORMATEX* wfx() const { return &storage.Format; }
};

Extensible Make(WORD tag, DWORD rate, WORD bits, WORD channels, DWORD mask = 0)
{
    Extensible h;
    TqAudio_InitWfxFlex(&h.storage.Format, tag, rate, bits, channels, mask, sizeof(h.storage));
    return h;
}

std::wstring Attribs(const WAVEFORMATEX* wfx, HRESULT expected = S_OK)
{
    return TextOf(
        [&](wchar_t* t, int n) { EXPECT_EQ(expected, TqAudio_GetAttribsText(wfx, t, n)); });
}

TEST(AttribsText, DescribesUncompressedHeaders)
{
    EXPECT_EQ(Joined({Hz(44100), L"16 Bit", L"Stereo"}),
              Attribs(Make(WAVE_FORMAT_PCM, 44100, 16, 2).wfx()));
    EXPECT_EQ(Joined({Hz(48000), L"32 Bit (IEEE Float)", L"Mono"}),
              Attribs(Make(WAVE_FORMAT_IEEE_FLOAT, 48000, 32, 1).wfx()));
    EXPECT_EQ(Joined({Hz(48000), L"32 Bit (IEEE Float)", L"5.1"}),
              Attribs(Make(WAVE_FORMAT_IEEE_FLOAT, 48000, 32, 6, 0x3F).wfx()));
    EXPECT_EQ(Joined({Hz(48000), L"24 Bit", L"7.1"}),
              Attribs(Make(WAVE_FORMAT_PCM, 48000, 24, 8, 0x63F).wfx()));
    EXPECT_EQ(Joined({Hz(48000), L"16 Bit", L"6 Channel"}),
              Attribs(Make(WAVE_FORMAT_PCM, 48000, 16, 6).wfx()));
    // Only six- and eight-channel headers are asked for a float subformat.
    EXPECT_EQ(Joined({Hz(48000), L"32 Bit", L"Stereo"}),
              Attribs(Make(WAVE_FORMAT_IEEE_FLOAT, 48000, 32, 2, 0x6).wfx()));

    _tqwaveformat fmt;
    fmt.Init(22050, TQSAMPLE_PCM8, 1);
    EXPECT_EQ(Joined({Hz(22050), L"8 Bit", L"Mono"}), TextOf([&](wchar_t* t, int n) {
                  EXPECT_EQ(S_OK, TqAudio_GetAttribsText(fmt, t, n));
              }));
}

// IMA ADPCM is among the codecs the system's compression manager always has.
TEST(AttribsText, AsksTheCompressionManagerForCodecs)
{
    EXPECT_EQ(L"Unknown", Attribs(Make(0x1234, 44100, 4, 2).wfx(), E_FAIL));

    BYTE bytes[20] = {};
    auto* adpcm = reinterpret_cast<WAVEFORMATEX*>(bytes);
    *adpcm = {0x0011, 1, 22050, 11100, 512, 4, 2};
    bytes[18] = 0xF9; // 1017 samples per block
    bytes[19] = 0x03;
    const std::wstring attribs = Attribs(adpcm);
    EXPECT_NE(L"", attribs);
    EXPECT_NE(L"Unknown", attribs);

    const std::wstring tag =
        TextOf([](wchar_t* t, int n) { EXPECT_EQ(S_OK, TqAudio_GetTagText(0x0011, t, n)); });
    EXPECT_NE(L"", tag);
    EXPECT_NE(L"Unknown", tag);
}

_tqwaveformat Pcm(DWORD rate, TQSAMPLETYPE type, WORD channels, DWORD mask = 0)
{
    _tqwaveformat fmt;
    fmt.Init(rate, type, channels, mask);
    return fmt;
}

_tqwaveformat Codec(WORD tag, DWORD rate, WORD bits, WORD channels, DWORD bytesPerSecond)
{
    _tqwaveformat fmt;
    fmt.InitAsWfx(tag, rate, bits, channels);
    fmt.nAvgBytesPerSec = bytesPerSecond;
    return fmt;
}

struct FormatCase
{
    const char* what;
    DWORD flags;
    std::wstring text;
    _tqwaveformat fmt; // last: the record ends in its codec tail
};

TEST(FormatText, JoinsThePartsEachFlagAsks)
{
    const FormatCase cases[] = {
        {"CD audio", 0, Joined({Hz(44100), L"16 Bit", L"Stereo", L"PCM"}),
         Pcm(44100, TQSAMPLE_PCM16, 2)},
        {"long tag", TQFMTTEXT_LONG_TAG,
         Joined({Hz(44100), L"32 Bit (IEEE Float)", L"Stereo", L"IEEE Float"}),
         Pcm(44100, TQSAMPLE_FLOAT32, 2)},
        {"bit depth", TQFMTTEXT_BIT_DEPTH, Joined({Hz(44100), L"24 Bit", L"Stereo"}),
         Pcm(44100, TQSAMPLE_FLOAT32, 2)},
        {"bit depth keeps other tags", TQFMTTEXT_BIT_DEPTH,
         Joined({Hz(48000), L"16 Bit", L"Stereo", L"PCM"}), Pcm(48000, TQSAMPLE_BE16, 2)},
        {"no tag", TQFMTTEXT_NO_TAG, Joined({Hz(48000), L"24 Bit", L"5.1"}),
         Pcm(48000, TQSAMPLE_PCM24, 6, 0x3F)},
        {"unpacked", 0, Joined({Hz(48000), L"24 Bit (Unpacked)", L"Mono", L"PCM"}),
         Pcm(48000, TQSAMPLE_UNPACKED24, 1)},
        {"codec", 0, Joined({Hz(44100), L"Stereo", L"MP3"}), Codec(0x0055, 44100, 0, 2, 16000)},
        {"codec with bit rate", TQFMTTEXT_BITRATE | TQFMTTEXT_LONG_TAG,
         Joined({L"128 kbps", Hz(44100), L"Stereo", L"MPEG Layer 3"}),
         Codec(0x0055, 44100, 0, 2, 16000)},
        {"bit rate in tenths", TQFMTTEXT_BITRATE,
         Joined({Printed(L"%.1z kbps", 7056), Hz(44100), L"Stereo", L"MP3"}),
         Codec(0x0055, 44100, 0, 2, 88200)},
        {"bit rate in megabits", TQFMTTEXT_BITRATE,
         Joined({L"2 Mbps", Hz(96000), L"24 Bit", L"Stereo", L"FLAC"}),
         Codec(0xF1AC, 96000, 24, 2, 250000)},
        {"no bit rate where it is the plain rate", TQFMTTEXT_BITRATE,
         Joined({Hz(44100), L"16 Bit", L"Stereo", L"FLAC"}), Codec(0xF1AC, 44100, 16, 2, 176400)},
        {"codec as PCM", TQFMTTEXT_AS_PCM, Joined({Hz(44100), L"16 Bit", L"Stereo", L"PCM"}),
         Codec(0x0055, 44100, 0, 2, 16000)},
        {"deep codec as PCM", TQFMTTEXT_AS_PCM, Joined({Hz(48000), L"24 Bit", L"Stereo", L"PCM"}),
         Codec(0xF1AC, 48000, 24, 2, 200000)},
        {"unnamed codec", 0, Joined({Hz(44100), L"4 Bit", L"Stereo"}),
         Codec(0x1234, 44100, 4, 2, 44100)},
    };
    for (const FormatCase& c : cases)
    {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(c.text, TextOf([&](wchar_t* t, int n) {
                      EXPECT_EQ(S_OK, TqAudio_GetFormatText(&c.fmt, t, n, c.flags));
                  }));
    }
}

TEST(FormatText, CodecAttribsComeFromTheAttribsText)
{
    const _tqwaveformat unknown = Codec(0x1234, 44100, 4, 2, 44100);
    EXPECT_EQ(L"Unknown", TextOf([&](wchar_t* t, int n) {
                  EXPECT_EQ(E_FAIL, TqAudio_GetFormatText(&unknown, t, n, TQFMTTEXT_CODEC_ATTRIBS));
              }));
    // Uncompressed records ignore the flag.
    const _tqwaveformat cd = Pcm(44100, TQSAMPLE_PCM16, 2);
    EXPECT_EQ(Joined({Hz(44100), L"16 Bit", L"Stereo", L"PCM"}), TextOf([&](wchar_t* t, int n) {
                  TqAudio_GetFormatText(&cd, t, n, TQFMTTEXT_CODEC_ATTRIBS);
              }));
}

TEST(FormatText, CutsToTheBufferAndSaysSo)
{
    const _tqwaveformat cd = Pcm(44100, TQSAMPLE_PCM16, 2);
    const std::wstring full = Joined({Hz(44100), L"16 Bit", L"Stereo", L"PCM"});
    wchar_t text[12];
    EXPECT_EQ(TQ_E_BUFFERTOOSMALL, TqAudio_GetFormatText(&cd, text, 12, 0));
    EXPECT_EQ(full.substr(0, 11), text);
    EXPECT_EQ(E_INVALIDARG, TqAudio_GetFormatText(&cd, nullptr, 12, 0));
    EXPECT_EQ(E_POINTER, TqAudio_GetFormatText(nullptr, text, 12, 0));
}

} // namespace
