// Tests of the repair of WAV and Wave64 files whose writer died: files cut at many points, with
// and without a junk chunk, formats taken from broken headers, samples found by walking, by
// scanning and by the limit, and nothing written when there is nothing to repair.
#include "wavefile.h"

#include "tqwaveformat.h"

#include "kernel/media/wave64image.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace tq::test;

namespace {

const WAVEFORMATEX kStereo16 = Pcm(2, 44100, 16);

// A file as its writer left it: the header complete but for the sizes, which are 0, and the
// samples behind it.
struct Trashed
{
    const char* name;
    Bytes file;
    ULONGLONG header; // where the samples start
};

void Zero(Bytes& b, size_t at, size_t count)
{
    std::memset(b.data() + at, 0, count);
}

Trashed TrashedWav(const char* name, const Bytes& fmt, const Bytes& between, const Bytes& samples)
{
    Bytes b = Riff(Chunk("fmt ", fmt) + between + Chunk("data", samples));
    const size_t header = b.size() - samples.size();
    Zero(b, 4, 4);
    Zero(b, header - 4, 4);
    return {name, b, header};
}

Trashed TrashedW64(const char* name, const Bytes& fmt, const Bytes& between, const Bytes& samples)
{
    Bytes b = W64File(W64Chunk(RIFF64_GUID_FMT, fmt) + between + GuidBytes(RIFF64_GUID_DATA) +
                      U64(24) + samples);
    const size_t header = b.size() - samples.size();
    Zero(b, 16, 8);
    return {name, b, header};
}

Bytes ExtensibleFmt(const WAVEFORMATEX& wfx)
{
    WAVEFORMATEXTENSIBLE ext = {};
    TqAudio_CopyWfx(&ext.Format, sizeof ext, &wfx, TQWFXDEST_EXTENSIBLE);
    const auto* b = reinterpret_cast<const BYTE*>(&ext);
    return Bytes(b, b + 40);
}

DWORD U32Of(const Bytes& b, size_t at)
{
    DWORD v = 0;
    std::memcpy(&v, b.data() + at, 4);
    return v;
}

ULONGLONG U64Of(const Bytes& b, size_t at)
{
    ULONGLONG v = 0;
    std::memcpy(&v, b.data() + at, 8);
    return v;
}

// The repaired file holds the header of headerBytes and the whole frames of what was cut, and
// the samples are where they were.
void ExpectRepaired(const Bytes& repaired, const Bytes& cut, ULONGLONG header, bool wave64,
                    const char* name, size_t at)
{
    const ULONGLONG dataBytes = (cut.size() - header) / 4 * 4;
    ASSERT_EQ(repaired.size(), cut.size()) << name << " cut at " << at;
    EXPECT_TRUE(std::equal(cut.begin() + header, cut.end(), repaired.begin() + header))
        << name << " cut at " << at << ": samples moved";
    if (wave64)
    {
        EXPECT_EQ(U64Of(repaired, 16), header + dataBytes) << name << " cut at " << at;
        EXPECT_EQ(U64Of(repaired, header - 8), dataBytes + 24) << name << " cut at " << at;
    }
    else
    {
        EXPECT_EQ(U32Of(repaired, 4), header - 8 + dataBytes) << name << " cut at " << at;
        EXPECT_EQ(U32Of(repaired, header - 4), dataBytes) << name << " cut at " << at;
    }
    TempFile check(repaired);
    check.Close();
    ULONGLONG frames = 0, dataStart = 0;
    WAVEFORMATEX* wfx = TqGetFileWfx(check.Path().c_str(), &frames, &dataStart);
    ASSERT_NE(wfx, nullptr) << name << " cut at " << at;
    EXPECT_TRUE(TqAudio_IsEqualFormat(wfx, &kStereo16)) << name << " cut at " << at;
    free(wfx);
    EXPECT_EQ(frames, dataBytes / 4) << name << " cut at " << at;
    EXPECT_EQ(dataStart, header) << name << " cut at " << at;
}

void RepairAtManyCuts(const Trashed& t, bool wave64, size_t formatEnd)
{
    const size_t header = static_cast<size_t>(t.header);
    std::vector<size_t> cuts = {0,          10,         formatEnd - 1, formatEnd,
                                header - 6, header - 1, header,        header + 1,
                                header + 3, header + 4, header + 401,  t.file.size()};
    for (const size_t at : cuts)
    {
        const Bytes cut = Cut(t.file, at);
        TempFile f(cut);
        f.Seek(5);
        const HRESULT hr = wave64 ? TqFixTrashedW64(f.Handle(), nullptr, ~0ull)
                                  : TqFixTrashedWav(f.Handle(), nullptr, MAXDWORD);
        EXPECT_EQ(f.Pos(), 5u) << t.name << " cut at " << at;
        if (at < formatEnd)
            EXPECT_EQ(hr, TQ_E_READFAILED) << t.name << " cut at " << at;
        else if (at < header)
            EXPECT_EQ(hr, TQ_E_NOTFOUND) << t.name << " cut at " << at;
        else
            EXPECT_EQ(hr, S_OK) << t.name << " cut at " << at;
        if (FAILED(hr))
            EXPECT_EQ(f.Read(), cut) << t.name << " cut at " << at << ": not touched";
        else
            ExpectRepaired(f.Read(), cut, t.header, wave64, t.name, at);
    }
}

} // namespace

TEST(WaveRepair, WavCutAtManyPoints)
{
    const Bytes samples = Samples(500, 4);
    const Trashed files[] = {
        TrashedWav("as written fresh", FmtBytes(kStereo16, 18), {}, samples),
        TrashedWav("with JUNK", FmtBytes(kStereo16, 18), Chunk("JUNK", Bytes(40)), samples),
        TrashedWav("16-byte fmt", FmtBytes(kStereo16, 16), {}, samples),
        TrashedWav("16-byte fmt and a list", FmtBytes(kStereo16, 16),
                   List("INFO", Chunk("ISFT", Text("writer"))), samples),
        TrashedWav("extensible fmt", ExtensibleFmt(kStereo16), {}, samples),
    };
    for (const Trashed& t : files)
        RepairAtManyCuts(t, false, 38);
}

TEST(WaveRepair, W64CutAtManyPoints)
{
    const Bytes samples = Samples(500, 4);
    const Trashed files[] = {
        TrashedW64("as written fresh", FmtBytes(kStereo16, 18), {}, samples),
        TrashedW64("with junk", FmtBytes(kStereo16, 18), W64Chunk(RIFF64_GUID_JUNK, Bytes(48)),
                   samples),
        TrashedW64("16-byte fmt", FmtBytes(kStereo16, 16), {}, samples),
        TrashedW64("extensible fmt", ExtensibleFmt(kStereo16), {}, samples),
    };
    for (const Trashed& t : files)
        RepairAtManyCuts(t, true, 82);
}

TEST(WaveRepair, FormatFromTheBrokenHeader)
{
    WAVEFORMATEX threeChannels = Pcm(3, 48000, 24);
    WAVEFORMATEX slow = Pcm(1, 1000, 16);
    WAVEFORMATEX adpcm = Pcm(2, 22050, 16, 2);
    WAVEFORMATEX oddFloat = Pcm(2, 96000, 48, WAVE_FORMAT_IEEE_FLOAT);
    WAVEFORMATEX twelveBits = Pcm(2, 44100, 16);
    twelveBits.wBitsPerSample = 12;
    const WAVEFORMATEX mono24 = Pcm(1, 32000, 24);
    const WAVEFORMATEX float64 = Pcm(1, 32000, 64, WAVE_FORMAT_IEEE_FLOAT);
    const struct
    {
        const char* name;
        WAVEFORMATEX broken;
        const WAVEFORMATEX* given;
        WAVEFORMATEX expected;
    } cases[] = {
        {"three channels become stereo", threeChannels, nullptr, Pcm(2, 48000, 24)},
        {"three channels take the given count", threeChannels, &mono24, Pcm(1, 48000, 24)},
        {"a rate below 2,000", slow, nullptr, Pcm(1, 44100, 16)},
        {"a rate below 2,000 takes the given one", slow, &mono24, Pcm(1, 32000, 16)},
        {"a compressed tag", adpcm, nullptr, Pcm(2, 22050, 16)},
        {"float of 48 bits", oddFloat, nullptr, Pcm(2, 96000, 32, WAVE_FORMAT_IEEE_FLOAT)},
        {"float of 48 bits with a 64-bit default", oddFloat, &float64,
         Pcm(2, 96000, 64, WAVE_FORMAT_IEEE_FLOAT)},
        {"12-bit PCM", twelveBits, nullptr, Pcm(2, 44100, 16)},
        {"12-bit PCM with a 24-bit default", twelveBits, &mono24, Pcm(2, 44100, 24)},
        {"64-bit default for PCM is held to 32", twelveBits, &float64, Pcm(2, 44100, 32)},
    };
    for (const auto& c : cases)
    {
        const Trashed t = TrashedWav(c.name, FmtBytes(c.broken, 18), {}, Samples(48, 8));
        TempFile f(t.file);
        ASSERT_EQ(TqFixTrashedWav(f.Handle(), c.given, MAXDWORD), S_OK) << c.name;
        EXPECT_EQ(f.Read(20, 18), FmtBytes(c.expected, 18)) << c.name;
        const DWORD data =
            static_cast<DWORD>(384 / c.expected.nBlockAlign * c.expected.nBlockAlign);
        EXPECT_EQ(f.U32At(42), data) << c.name;
    }

    // The kernel's record gives the defaults as well.
    _tqwaveformat record;
    record.Init(32000, TQSAMPLE_PCM24, 1);
    const Trashed t = TrashedWav("record", FmtBytes(threeChannels, 18), {}, Samples(48, 8));
    TempFile f(t.file);
    ASSERT_EQ(TqFixTrashedWav(f.Handle(), record, MAXDWORD), S_OK);
    EXPECT_EQ(f.Read(20, 18), FmtBytes(Pcm(1, 48000, 24), 18));
}

TEST(WaveRepair, SamplesFoundByScanOrByTheLimit)
{
    const Bytes samples = Samples(100, 4);
    {
        // A JUNK chunk whose size was never written sends the walk astray; the scan finds "data".
        Trashed t = TrashedWav("scan", FmtBytes(kStereo16, 18), Chunk("JUNK", Bytes(16)), samples);
        t.file[42] = 0xFF;
        TempFile f(t.file);
        ASSERT_EQ(TqFixTrashedWav(f.Handle(), nullptr, MAXDWORD), S_OK);
        EXPECT_EQ(f.U32At(t.header - 4), 400u);
        EXPECT_EQ(f.Read(t.header), samples);
    }
    {
        // No header at all before the samples: they start at the limit the caller gives.
        const Bytes noData = Riff(Chunk("fmt ", FmtBytes(kStereo16, 18))) + Pattern(300);
        TempFile f(noData);
        ASSERT_EQ(TqFixTrashedWav(f.Handle(), nullptr, 100), S_OK);
        EXPECT_EQ(f.U32At(4), 92u + 236);
        EXPECT_EQ(f.U32At(96), 236u) << "whole frames of the 238 bytes behind the limit";
        EXPECT_EQ(f.Read(100), Bytes(noData.begin() + 100, noData.end()));
        TempFile g(noData);
        EXPECT_EQ(TqFixTrashedWav(g.Handle(), nullptr, 400), TQ_E_NOTFOUND) << "the end came first";
        EXPECT_EQ(g.Read(), noData);
        TempFile odd(noData);
        EXPECT_EQ(TqFixTrashedWav(odd.Handle(), nullptr, 101), TQ_E_BADCHUNKHEADER)
            << "an odd start leaves no room for a header";
        EXPECT_EQ(odd.Read(), noData);
    }
    {
        Trashed t = TrashedW64("scan", FmtBytes(kStereo16, 18),
                               W64Chunk(RIFF64_GUID_JUNK, Bytes(16)), samples);
        t.file[88 + 16 + 7] = 0x40; // the junk's size
        TempFile f(t.file);
        ASSERT_EQ(TqFixTrashedW64(f.Handle(), nullptr, ~0ull), S_OK);
        EXPECT_EQ(f.Read(t.header - 8, 8), U64(400 + 24));
        const Bytes noData =
            W64File(W64Chunk(RIFF64_GUID_FMT, FmtBytes(kStereo16, 18))) + Pattern(300);
        TempFile g(noData);
        ASSERT_EQ(TqFixTrashedW64(g.Handle(), nullptr, 205), S_OK) << "the limit rounds down";
        EXPECT_EQ(g.Read(16, 8), U64(200 + 188 / 4 * 4));
        EXPECT_EQ(g.Read(200), Bytes(noData.begin() + 200, noData.end()));
    }
}

#ifdef TQ_WRITE_FOR_TOOL
// Repaired files for the tool to read back once this program has ended.
TEST(WaveRepair, RepairedFilesForTheTool)
{
    const Bytes samples = Samples(2000, 4);
    const struct
    {
        const wchar_t* name;
        Trashed t;
        bool wave64;
    } cases[] = {
        {L"repaired_junk.wav",
         TrashedWav("", FmtBytes(kStereo16, 18), Chunk("JUNK", Bytes(30)), samples), false},
        {L"repaired_16byte_fmt.wav", TrashedWav("", FmtBytes(kStereo16, 16), {}, samples), false},
        {L"repaired.w64", TrashedW64("", FmtBytes(kStereo16, 18), {}, samples), true},
        {L"repaired_extensible.w64", TrashedW64("", ExtensibleFmt(kStereo16), {}, samples), true},
    };
    for (const auto& c : cases)
    {
        // Cut in the middle of a frame, as a writer dies.
        const Bytes cut = Cut(c.t.file, c.t.file.size() - 1001);
        TempFile f(cut);
        ASSERT_EQ(c.wave64 ? TqFixTrashedW64(f.Handle(), nullptr, ~0ull)
                           : TqFixTrashedWav(f.Handle(), nullptr, MAXDWORD),
                  S_OK);
        const size_t whole = (cut.size() - c.t.header) / 4 * 4;
        const Bytes expected(samples.begin(), samples.begin() + whole);
        KeepForTool(L"wavefilerepair_test", c.name, f.Read(), expected, kStereo16);
    }
}
#endif
