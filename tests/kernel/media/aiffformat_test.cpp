// Tests of AIFF recognition, the format of AIFF files and the extended sample rate, on files
// built in code and on files a widely used audio tool wrote.
#include "iff.h"

#include "kernel/media/aiffimage.h"
#include "support/testpaths.h"

#include <gtest/gtest.h>

#include <tuple>

using namespace tq::test;

TEST(AiffRate, RoundTripsAndKnownEncodings)
{
    for (DWORD rate :
         {8000u, 11025u, 22050u, 44100u, 48000u, 88200u, 96000u, 176400u, 192000u, 384000u, 1u, 7u})
    {
        WORD exponent = 0, mantissa[4] = {};
        aiff_CreateRate(rate, &exponent, mantissa);
        EXPECT_EQ(aiff_ConvertRate(exponent, mantissa), rate) << rate;
    }
    // As files carry them.
    WORD exponent = 0, mantissa[4] = {};
    aiff_CreateRate(44100, &exponent, mantissa);
    EXPECT_EQ(exponent, 0x400E);
    EXPECT_EQ(mantissa[0], 0xAC44);
    EXPECT_EQ(mantissa[1] | mantissa[2] | mantissa[3], 0);
    aiff_CreateRate(48000, &exponent, mantissa);
    EXPECT_EQ(exponent, 0x400E);
    EXPECT_EQ(mantissa[0], 0xBB80);

    // A negative rate is read as 44,100; a huge exponent stops one doubling past 384,000.
    const WORD m[4] = {0x8000, 0, 0, 0};
    EXPECT_EQ(aiff_ConvertRate(0xC00E, m), 44100u);
    EXPECT_EQ(aiff_ConvertRate(0x7FFF, m), 524288u);
    EXPECT_EQ(aiff_ConvertRate(0x3FFF, m), 1u);
    EXPECT_EQ(aiff_ConvertRate(0x0000, m), 1u) << "below 1.0 the value is not halved";
}

TEST(AiffFormat, Recognition)
{
    const struct
    {
        const char* name;
        Bytes file;
        BOOL aiff;
        BOOL aifc;
        BOOL littleEndian;
    } cases[] = {
        {"AIFF", Form("AIFF", IffChunk("COMM", CommData(2, 0, 16, 44100))), TRUE, FALSE, FALSE},
        {"AIFF-C NONE", Form("AIFC", IffChunk("COMM", CommData(2, 0, 16, 44100, "NONE"))), TRUE,
         TRUE, FALSE},
        {"AIFF-C sowt", Form("AIFC", IffChunk("COMM", CommData(2, 0, 16, 44100, "sowt"))), TRUE,
         TRUE, TRUE},
        {"AIFF-C fl32", Form("AIFC", IffChunk("COMM", CommData(2, 0, 32, 44100, "fl32"))), FALSE,
         TRUE, FALSE},
        {"AIFF-C without COMM", Form("AIFC", IffChunk("FVER", BE32(0xA2805140))), FALSE, TRUE,
         FALSE},
        {"AIFF-C COMM cut short", Form("AIFC", IffChunk("COMM", CommData(2, 0, 16, 44100))), FALSE,
         TRUE, FALSE},
        {"other form", Form("8SVX", {}), FALSE, FALSE, FALSE},
        {"RIFF", Riff(Chunk("fmt ", Pattern(16))), FALSE, FALSE, FALSE},
        {"cut header", Cut(Form("AIFF", {}), 10), FALSE, FALSE, FALSE},
    };
    for (const auto& c : cases)
    {
        TempFile f(c.file);
        DWORD size = 0xDEAD;
        BOOL aifc = 2, little = 2;
        EXPECT_EQ(iff_IsAIFFFileEx(f.Handle(), &size, &aifc, &little), c.aiff) << c.name;
        EXPECT_EQ(aifc, c.aifc) << c.name;
        EXPECT_EQ(little, c.littleEndian) << c.name;
        if (!c.aiff) continue;
        EXPECT_EQ(size, c.file.size() - 8) << c.name;
        EXPECT_EQ(f.Pos(), 12u) << c.name;
    }
}

TEST(AiffFormat, WaveFormat)
{
    const struct
    {
        const char* name;
        Bytes file;
        WORD tag;
        WORD channels;
        WORD bits;
        DWORD rate;
        WORD blockAlign;
        DWORD frames;
        DWORD dataStart;
    } cases[] = {
        {"16-bit stereo",
         Form("AIFF", IffChunk("COMM", CommData(2, 3, 16, 48000)) +
                          IffChunk("SSND", SsndData(Pattern(12)))),
         WAVE_FORMAT_AIFF_BIGENDIAN, 2, 16, 48000, 4, 3, 54},
        {"8-bit is signed",
         Form("AIFF",
              IffChunk("COMM", CommData(1, 5, 8, 8000)) + IffChunk("SSND", SsndData(Pattern(5)))),
         WAVE_FORMAT_AIFF_SIGNED8, 1, 8, 8000, 1, 5, 54},
        {"8-bit sowt is signed too",
         Form("AIFC", IffChunk("COMM", CommData(1, 5, 8, 8000, "sowt")) +
                          IffChunk("SSND", SsndData(Pattern(5)))),
         WAVE_FORMAT_AIFF_SIGNED8, 1, 8, 8000, 1, 5, 58},
        {"16-bit sowt is PCM",
         Form("AIFC", IffChunk("COMM", CommData(2, 1, 16, 44100, "sowt")) +
                          IffChunk("SSND", SsndData(Pattern(4)))),
         WAVE_FORMAT_PCM, 2, 16, 44100, 4, 1, 58},
        {"COMM promises more than SSND holds",
         Form("AIFF", IffChunk("COMM", CommData(2, 1000, 24, 96000)) +
                          IffChunk("SSND", SsndData(Pattern(12)))),
         WAVE_FORMAT_AIFF_BIGENDIAN, 2, 24, 96000, 6, 2, 54},
        {"SSND offset",
         Form("AIFF", IffChunk("COMM", CommData(1, 2, 16, 44100)) +
                          IffChunk("SSND", SsndData(Pattern(4), 6))),
         WAVE_FORMAT_AIFF_BIGENDIAN, 1, 16, 44100, 2, 2, 60},
        {"offset beyond the chunk",
         Form("AIFF",
              IffChunk("COMM", CommData(1, 2, 16, 44100)) + IffChunk("SSND", BE32(100) + BE32(0))),
         WAVE_FORMAT_AIFF_BIGENDIAN, 1, 16, 44100, 2, 0, 154},
        {"a frame of 64 KiB wraps the alignment to 0",
         Form("AIFF", IffChunk("COMM", CommData(0x8000, 2, 16, 44100)) +
                          IffChunk("SSND", SsndData(Pattern(4)))),
         WAVE_FORMAT_AIFF_BIGENDIAN, 0x8000, 16, 44100, 1, 2, 54},
        {"no channels",
         Form("AIFF",
              IffChunk("COMM", CommData(0, 2, 16, 44100)) + IffChunk("SSND", SsndData(Pattern(4)))),
         WAVE_FORMAT_AIFF_BIGENDIAN, 0, 16, 44100, 1, 2, 54},
    };
    for (const auto& c : cases)
    {
        TempFile f(c.file);
        WAVEFORMATEX wfx;
        memset(&wfx, 0xCC, sizeof wfx);
        DWORD frames = 0, dataStart = 0;
        ASSERT_EQ(iff_GetAIFFWfx(f.Handle(), &wfx, &frames, &dataStart), S_OK) << c.name;
        EXPECT_EQ(wfx.wFormatTag, c.tag) << c.name;
        EXPECT_EQ(wfx.nChannels, c.channels) << c.name;
        EXPECT_EQ(wfx.wBitsPerSample, c.bits) << c.name;
        EXPECT_EQ(wfx.nSamplesPerSec, c.rate) << c.name;
        EXPECT_EQ(wfx.nBlockAlign, c.blockAlign) << c.name;
        EXPECT_EQ(wfx.nAvgBytesPerSec, c.rate * (c.bits / 8) * c.channels) << c.name;
        EXPECT_EQ(wfx.cbSize, 0) << c.name;
        EXPECT_EQ(frames, c.frames) << c.name;
        EXPECT_EQ(dataStart, c.dataStart) << c.name;
    }

    WAVEFORMATEX wfx = {};
    DWORD frames = 7;
    TempFile compressed(Form("AIFC", IffChunk("COMM", CommData(2, 0, 32, 44100, "fl32"))));
    EXPECT_EQ(iff_GetAIFFWfx(compressed.Handle(), &wfx, &frames, nullptr), TQ_E_CORRUPTFILE);
    EXPECT_EQ(frames, 0u);
    TempFile shortComm(Form("AIFF", Text("COMM") + BE32(18) + Pattern(10)));
    EXPECT_EQ(iff_GetAIFFWfx(shortComm.Handle(), &wfx, nullptr, nullptr), TQ_E_READFAILED);
    TempFile noSsnd(Form("AIFF", IffChunk("COMM", CommData(1, 0, 16, 44100))));
    EXPECT_EQ(iff_GetAIFFWfx(noSsnd.Handle(), &wfx, nullptr, nullptr), TQ_E_NOTFOUND);
}

// Float AIFF-C through the float-aware reader only: IEEE float of the size the compression
// names, whatever bit count "COMM" holds, with the samples marked as big-endian.
TEST(AiffFormat, FloatAifcIsReadOnlyByTheFloatAwareForm)
{
    const struct
    {
        const char* compression;
        WORD commBits;
        WORD bits;
    } cases[] = {{"fl32", 32, 32}, {"FL32", 0, 32}, {"fl64", 64, 64}, {"FL64", 32, 64}};
    for (const auto& c : cases)
    {
        TempFile f(
            Form("AIFC", IffChunk("FVER", BE32(0xA2805140)) +
                             IffChunk("COMM", CommData(2, 3, c.commBits, 48000, c.compression) +
                                                  Bytes{4, 'f', 'l', 'o', 't', 0}) +
                             IffChunk("SSND", SsndData(Pattern(2 * 3 * c.bits / 8)))));
        WAVEFORMATEX wfx;
        memset(&wfx, 0xCC, sizeof wfx);
        DWORD frames = 0, dataStart = 0;
        BOOL bigEndian = FALSE;
        ASSERT_EQ(iff_GetAIFFWfxEx(f.Handle(), &wfx, &frames, &dataStart, &bigEndian), S_OK)
            << c.compression;
        EXPECT_EQ(wfx.wFormatTag, WAVE_FORMAT_IEEE_FLOAT) << c.compression;
        EXPECT_EQ(wfx.wBitsPerSample, c.bits) << c.compression;
        EXPECT_EQ(wfx.nBlockAlign, 2 * c.bits / 8) << c.compression;
        EXPECT_EQ(wfx.nAvgBytesPerSec, 48000u * 2 * c.bits / 8) << c.compression;
        EXPECT_EQ(frames, 3u) << c.compression;
        EXPECT_EQ(dataStart, 12u + 12 + 8 + 28 + 16) << c.compression;
        EXPECT_TRUE(bigEndian) << c.compression;
        bigEndian = 2;
        EXPECT_EQ(iff_GetAIFFWfx(f.Handle(), &wfx, &frames, nullptr), TQ_E_CORRUPTFILE)
            << "the plain form never hands out big-endian floats";
        EXPECT_FALSE(iff_IsAIFFFile(f.Handle(), nullptr)) << c.compression;
    }

    // Integer files read alike by both forms; a compressed one by neither.
    TempFile sowt(Form("AIFC", IffChunk("COMM", CommData(2, 1, 16, 44100, "sowt")) +
                                   IffChunk("SSND", SsndData(Pattern(4)))));
    WAVEFORMATEX plain = {}, ex = {};
    BOOL bigEndian = 2;
    ASSERT_EQ(iff_GetAIFFWfx(sowt.Handle(), &plain, nullptr, nullptr), S_OK);
    ASSERT_EQ(iff_GetAIFFWfxEx(sowt.Handle(), &ex, nullptr, nullptr, &bigEndian), S_OK);
    EXPECT_EQ(memcmp(&plain, &ex, sizeof ex), 0);
    EXPECT_FALSE(bigEndian);
    TempFile ulaw(Form("AIFC", IffChunk("COMM", CommData(1, 1, 16, 8000, "ulaw")) +
                                   IffChunk("SSND", SsndData(Pattern(2)))));
    EXPECT_EQ(iff_GetAIFFWfxEx(ulaw.Handle(), &ex, nullptr, nullptr, &bigEndian), TQ_E_CORRUPTFILE);
}

#ifdef TQ_AIFF_REFERENCE_FILES
namespace {

Bytes ReadAll(const std::wstring& path)
{
    TempFile copy;
    copy.Close();
    if (!CopyFileW(path.c_str(), copy.Path().c_str(), FALSE)) return {};
    HANDLE f =
        CreateFileW(copy.Path().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    LARGE_INTEGER size = {};
    GetFileSizeEx(f, &size);
    Bytes b(static_cast<size_t>(size.QuadPart));
    DWORD got = 0;
    if (!b.empty()) ::ReadFile(f, b.data(), static_cast<DWORD>(b.size()), &got, nullptr);
    CloseHandle(f);
    b.resize(got);
    return b;
}

} // namespace

// The tool wrote each file and, from the same signal, its samples as raw bytes in the file's
// own sample order.
TEST(AiffFormat, ReadsWhatTheToolWrote)
{
    const struct
    {
        const wchar_t* name;
        WORD tag;
        WORD channels;
        WORD bits;
        DWORD rate;
    } cases[] = {
        {L"s16be_44100_1", WAVE_FORMAT_AIFF_BIGENDIAN, 1, 16, 44100},
        {L"s24be_48000_2", WAVE_FORMAT_AIFF_BIGENDIAN, 2, 24, 48000},
        {L"s32be_96000_6", WAVE_FORMAT_AIFF_BIGENDIAN, 6, 32, 96000},
        {L"s8_22050_2", WAVE_FORMAT_AIFF_SIGNED8, 2, 8, 22050},
        {L"s16le_48000_2", WAVE_FORMAT_PCM, 2, 16, 48000},
        {L"s16be_8000_8", WAVE_FORMAT_AIFF_BIGENDIAN, 8, 16, 8000},
    };
    const std::wstring folder = tqtest::ProgramFolder() + L"\\testmedia\\";
    for (const auto& c : cases)
    {
        const Bytes file = ReadAll(folder + c.name + L".aif");
        const Bytes raw = ReadAll(folder + c.name + L".raw");
        ASSERT_FALSE(file.empty()) << c.name;
        ASSERT_FALSE(raw.empty()) << c.name;
        TempFile f(file);
        WAVEFORMATEX wfx = {};
        DWORD frames = 0, dataStart = 0;
        ASSERT_EQ(iff_GetAIFFWfx(f.Handle(), &wfx, &frames, &dataStart), S_OK) << c.name;
        EXPECT_EQ(wfx.wFormatTag, c.tag) << c.name;
        EXPECT_EQ(wfx.nChannels, c.channels) << c.name;
        EXPECT_EQ(wfx.wBitsPerSample, c.bits) << c.name;
        EXPECT_EQ(wfx.nSamplesPerSec, c.rate) << c.name;
        ASSERT_EQ(static_cast<size_t>(frames) * wfx.nBlockAlign, raw.size()) << c.name;
        EXPECT_EQ(f.Read(dataStart, static_cast<DWORD>(raw.size())), raw) << c.name;
    }
    // Float AIFF-C, by the float-aware form, bit for bit in the file's byte order.
    for (const auto& [name, channels, bits, rate] :
         {std::tuple{L"f32be_48000_2", 2, 32, 48000u}, std::tuple{L"f64be_44100_1", 1, 64, 44100u}})
    {
        const Bytes file = ReadAll(folder + name + L".aif");
        const Bytes raw = ReadAll(folder + name + L".raw");
        ASSERT_FALSE(raw.empty()) << name;
        TempFile f(file);
        EXPECT_FALSE(iff_IsAIFFFile(f.Handle(), nullptr)) << name;
        WAVEFORMATEX wfx = {};
        DWORD frames = 0, dataStart = 0;
        BOOL bigEndian = FALSE;
        ASSERT_EQ(iff_GetAIFFWfxEx(f.Handle(), &wfx, &frames, &dataStart, &bigEndian), S_OK)
            << name;
        EXPECT_EQ(wfx.wFormatTag, WAVE_FORMAT_IEEE_FLOAT) << name;
        EXPECT_EQ(wfx.nChannels, channels) << name;
        EXPECT_EQ(wfx.wBitsPerSample, bits) << name;
        EXPECT_EQ(wfx.nSamplesPerSec, rate) << name;
        EXPECT_TRUE(bigEndian) << name;
        ASSERT_EQ(static_cast<size_t>(frames) * wfx.nBlockAlign, raw.size()) << name;
        EXPECT_EQ(f.Read(dataStart, static_cast<DWORD>(raw.size())), raw) << name;
    }
}
#endif
