// Tests of whole wave files: fresh files, headers over existing samples, recognition and format
// on all framings, rewriting the format, and files read both ways with a widely used audio tool.
#include "wavefile.h"

#include "tqwaveformat.h"

#include "kernel/media/aiffimage.h"
#include "kernel/media/wave64image.h"

#include <gtest/gtest.h>

using namespace tq::test;

namespace {

// A path in the temporary folder, removed at the end of the test.
class TempPath
{
public:
    TempPath()
    {
        TempFile f;
        m_path = f.Path() + L".wav";
    }
    ~TempPath() { DeleteFileW(m_path.c_str()); }
    const wchar_t* c_str() const { return m_path.c_str(); }
    const std::wstring& Path() const { return m_path; }

private:
    std::wstring m_path;
};

Bytes Wav(const WAVEFORMATEX& wfx, DWORD fmtBytes, const Bytes& samples, const Bytes& before = {})
{
    return Riff(Chunk("fmt ", FmtBytes(wfx, fmtBytes)) + before + Chunk("data", samples));
}

Bytes W64(const WAVEFORMATEX& wfx, DWORD fmtBytes, const Bytes& samples)
{
    return W64File(W64Chunk(RIFF64_GUID_FMT, FmtBytes(wfx, fmtBytes)) +
                   W64Chunk(RIFF64_GUID_DATA, samples));
}

// Expected bytes of a WAV header of headerBytes over samples.
Bytes WavHeader(const WAVEFORMATEX& wfx, DWORD riffSize, DWORD fmtBytes, int junk, DWORD data)
{
    Bytes b = Text("RIFF") + U32(riffSize) + Text("WAVE") + Header("fmt ", fmtBytes) +
              FmtBytes(wfx, fmtBytes);
    if (junk >= 0) b = b + Header("JUNK", junk) + Bytes(junk);
    return b + Header("data", data);
}

Bytes W64Header(const WAVEFORMATEX& wfx, ULONGLONG stored, DWORD fmtBytes, long long junk,
                ULONGLONG dataStored)
{
    Bytes b = GuidBytes(RIFF64_GUID_RIFF) + U64(stored) + GuidBytes(RIFF64_GUID_WAVE) +
              GuidBytes(RIFF64_GUID_FMT) + U64(24 + fmtBytes) + FmtBytes(wfx, fmtBytes) +
              Bytes((8 - fmtBytes % 8) % 8);
    if (junk >= 0) b = b + GuidBytes(RIFF64_GUID_JUNK) + U64(24 + junk) + Bytes(junk);
    return b + GuidBytes(RIFF64_GUID_DATA) + U64(dataStored);
}

const WAVEFORMATEX kStereo16 = Pcm(2, 44100, 16);

} // namespace

TEST(WaveFresh, LayoutsOfFreshFiles)
{
    const WAVEFORMATEX wfx = kStereo16;
    TempPath path;
    ASSERT_EQ(TqInitializeWav(path.c_str(), &wfx, CREATE_ALWAYS), S_OK);
    EXPECT_EQ(ReadFileBytes(path.Path()), WavHeader(wfx, 38, 18, -1, 0));

    ASSERT_EQ(TqInitializeWav64(path.c_str(), &wfx, CREATE_ALWAYS), S_OK);
    const Bytes w64 = ReadFileBytes(path.Path());
    EXPECT_EQ(w64.size(), 112u);
    EXPECT_EQ(w64, W64Header(wfx, 130, 18, -1, 24))
        << "the stored file size waits for the writer to finish";

    ASSERT_EQ(TqInitializeWavWithJunk(path.c_str(), &wfx, CREATE_ALWAYS, 61), S_OK);
    EXPECT_EQ(ReadFileBytes(path.Path()), WavHeader(wfx, 52, 18, 6, 0));
    ASSERT_EQ(TqInitializeWavWithJunk(path.c_str(), &wfx, CREATE_ALWAYS, 54), S_OK);
    EXPECT_EQ(ReadFileBytes(path.Path()), WavHeader(wfx, 46, 18, 0, 0));
    EXPECT_EQ(TqInitializeWavWithJunk(path.c_str(), &wfx, CREATE_ALWAYS, 53), E_INVALIDARG);
    EXPECT_TRUE(tqtest::FileExists(path.Path()));
    EXPECT_TRUE(ReadFileBytes(path.Path()).empty()) << "created and left empty";

    ASSERT_EQ(TqInitializeWav64WithJunk(path.c_str(), &wfx, CREATE_ALWAYS, 130), S_OK);
    const Bytes junk = ReadFileBytes(path.Path());
    EXPECT_EQ(junk, W64Header(wfx, 136 + 24, 16, 8, 24)) << "no junk is left empty";
    const Bytes junkIdAsWritten = {0x6A, 0x75, 0x6E, 0x6B, 0xF3, 0xAC, 0x3D, 0x11,
                                   0x8C, 0xD1, 0x00, 0xC0, 0x4F, 0x8E, 0xDB, 0x8A};
    EXPECT_EQ(Bytes(junk.begin() + 80, junk.begin() + 96), junkIdAsWritten);
    ASSERT_EQ(TqInitializeWav64WithJunk(path.c_str(), &wfx, CREATE_ALWAYS, 2000), S_OK);
    EXPECT_EQ(ReadFileBytes(path.Path()), W64Header(wfx, 2000 + 24, 18, 2000 - 136, 24));
    EXPECT_EQ(TqInitializeWav64WithJunk(path.c_str(), &wfx, CREATE_ALWAYS, 128), E_INVALIDARG);

    // The kernel's record writes the same plain header.
    _tqwaveformat record;
    record.Init(44100, TQSAMPLE_PCM16, 2);
    ASSERT_EQ(TqInitializeWav(path.c_str(), record, CREATE_ALWAYS), S_OK);
    EXPECT_EQ(ReadFileBytes(path.Path()), WavHeader(wfx, 38, 18, -1, 0));
}

TEST(WaveFresh, VettingAndOpeningModes)
{
    TempPath path;
    const Bytes old = Pattern(300);
    ASSERT_TRUE(WriteFileBytes(path.Path(), old));
    WAVEFORMATEX bad = kStereo16;
    bad.cbSize = 2;
    WAVEFORMATEX twenty = Pcm(2, 48000, 24);
    twenty.wBitsPerSample = 20;
    WAVEFORMATEX misaligned = kStereo16;
    misaligned.nBlockAlign = 8;
    for (const WAVEFORMATEX& wfx : {bad, twenty, misaligned})
    {
        EXPECT_EQ(TqInitializeWav(path.c_str(), &wfx, CREATE_ALWAYS), (HRESULT)0x8004E000);
        EXPECT_EQ(TqInitializeWav64WithJunk(path.c_str(), &wfx, CREATE_ALWAYS, 200),
                  (HRESULT)0x8004E000);
        EXPECT_EQ(ReadFileBytes(path.Path()), old) << "not touched";
    }
    WAVEFORMATEX floats = Pcm(2, 48000, 32, WAVE_FORMAT_IEEE_FLOAT);
    floats.nBlockAlign = 3; // only PCM alignment is looked at
    EXPECT_EQ(TqInitializeWav(path.c_str(), &floats, CREATE_ALWAYS), S_OK);

    const WAVEFORMATEX wfx = kStereo16;
    ASSERT_TRUE(WriteFileBytes(path.Path(), old));
    EXPECT_EQ(TqInitializeWav(path.c_str(), &wfx, CREATE_NEW), TQ_E_OPENFAILED);
    EXPECT_EQ(ReadFileBytes(path.Path()), old);
    ASSERT_EQ(TqInitializeWav(path.c_str(), &wfx, OPEN_EXISTING), S_OK);
    EXPECT_EQ(ReadFileBytes(path.Path()).size(), 46u) << "emptied first";
    ASSERT_TRUE(WriteFileBytes(path.Path(), old));
    ASSERT_EQ(TqInitializeWav64(path.c_str(), &wfx, OPEN_ALWAYS), S_OK);
    EXPECT_EQ(ReadFileBytes(path.Path()).size(), 112u);
    DeleteFileW(path.c_str());
    EXPECT_EQ(TqInitializeWav(path.c_str(), &wfx, OPEN_EXISTING), TQ_E_OPENFAILED);
    ASSERT_EQ(TqInitializeWav(path.c_str(), &wfx, OPEN_ALWAYS), S_OK);
}

TEST(WaveHeader, WrittenOverExistingSamples)
{
    const WAVEFORMATEX wfx = kStereo16;
    const Bytes body = Pattern(300, 3);
    const struct
    {
        DWORD headerBytes;
        HRESULT hr;
        DWORD fmtBytes;
        int junk;
    } wav[] = {
        {46, S_OK, 18, -1},
        {44, S_OK, 16, -1},
        {52, S_OK, 16, 0},
        {54, S_OK, 18, 0},
        {80, S_OK, 18, 26},
        {50, TQ_E_BADCHUNKHEADER, 0, 0},
        {48, TQ_E_BADCHUNKHEADER, 0, 0},
        {55, TQ_E_BADCHUNKHEADER, 0, 0},
        {302, TQ_E_BADCHUNKHEADER, 0, 0},
    };
    for (const auto& c : wav)
    {
        TempFile f(body);
        f.Seek(17);
        ASSERT_EQ(TqInsertWavHeader(f.Handle(), &wfx, 300 - c.headerBytes, c.headerBytes), c.hr)
            << c.headerBytes;
        EXPECT_EQ(f.Pos(), 17u);
        if (FAILED(c.hr))
        {
            EXPECT_EQ(f.Read(), body) << c.headerBytes;
            continue;
        }
        const Bytes expected = WavHeader(wfx, 292, c.fmtBytes, c.junk, 300 - c.headerBytes) +
                               Bytes(body.begin() + c.headerBytes, body.end());
        EXPECT_EQ(f.Read(), expected) << c.headerBytes;
    }
    TempFile big(body);
    EXPECT_EQ(TqInsertWavHeader(big.Handle(), &wfx, 0xFFFFFFF0u, 60), TQ_E_SIZELIMIT);
    EXPECT_EQ(big.Read(), body);

    const struct
    {
        ULONGLONG headerBytes;
        HRESULT hr;
        DWORD fmtBytes;
        long long junk;
    } w64[] = {
        {112, S_OK, 18, -1},
        {104, S_OK, 16, -1},
        {128, S_OK, 40, -1},
        {136, S_OK, 16, 8},
        {200, S_OK, 18, 64},
        {120, TQ_E_BADCHUNKHEADER, 0, 0},
        {116, TQ_E_BADCHUNKHEADER, 0, 0},
        {304, TQ_E_BADCHUNKHEADER, 0, 0},
    };
    for (const auto& c : w64)
    {
        TempFile f(body);
        ASSERT_EQ(TqInsertW64Header(f.Handle(), &wfx, 300 - c.headerBytes, c.headerBytes), c.hr)
            << c.headerBytes;
        if (FAILED(c.hr))
        {
            EXPECT_EQ(f.Read(), body) << c.headerBytes;
            continue;
        }
        const Bytes expected = W64Header(wfx, 300, c.fmtBytes, c.junk, 300 - c.headerBytes + 24) +
                               Bytes(body.begin() + static_cast<long>(c.headerBytes), body.end());
        EXPECT_EQ(f.Read(), expected) << c.headerBytes;
    }
}

TEST(WaveFormat, RecognitionAndFormatOnEveryFraming)
{
    const WAVEFORMATEX stereo = kStereo16;
    WAVEFORMATEX adpcm = Pcm(1, 22050, 4, 2);
    adpcm.nBlockAlign = 256;
    WAVEFORMATEX twenty = Pcm(2, 48000, 24);
    twenty.wBitsPerSample = 20;
    WAVEFORMATEX ext = Pcm(6, 48000, 24);
    WAVEFORMATEXTENSIBLE extensible = {};
    TqAudio_CopyWfx(&extensible.Format, sizeof extensible, &ext, TQWFXDEST_EXTENSIBLE);
    const Bytes extFmt(reinterpret_cast<const BYTE*>(&extensible),
                       reinterpret_cast<const BYTE*>(&extensible) + 40);
    const Bytes aiff = Form("AIFF", IffChunk("COMM", CommData(2, 3, 16, 48000)) +
                                        IffChunk("SSND", SsndData(Pattern(12))));
    const struct
    {
        const char* name;
        Bytes file;
        BOOL wave, waveAny, wave64, isAiff;
        WORD tag, bits, cbSize;
        ULONGLONG frames, dataStart;
    } cases[] = {
        {"WAV", Wav(stereo, 16, Pattern(40)), TRUE, TRUE, FALSE, FALSE, 1, 16, 0, 10, 44},
        {"WAV with its data cut short", Cut(Wav(stereo, 16, Pattern(40)), 70), TRUE, TRUE, FALSE,
         FALSE, 1, 16, 0, 6, 44},
        {"compressed WAV", Wav(adpcm, 18, Pattern(512)), FALSE, TRUE, FALSE, FALSE, 0, 0, 0, 0, 0},
        {"20-bit PCM is read as 24", Wav(twenty, 16, Pattern(24)), FALSE, TRUE, FALSE, FALSE, 1, 24,
         0, 4, 44},
        {"extensible WAV", Riff(Chunk("fmt ", extFmt) + Chunk("data", Pattern(36))), TRUE, TRUE,
         FALSE, FALSE, WAVE_FORMAT_EXTENSIBLE, 24, 22, 2, 68},
        {"RF64", Rf64File(Chunk("data", Pattern(40)), 40), TRUE, TRUE, FALSE, FALSE, 1, 16, 0, 10,
         80},
        {"Wave64", W64(stereo, 18, Pattern(40)), FALSE, FALSE, TRUE, FALSE, 1, 16, 0, 10, 112},
        {"Wave64 with a 16-byte fmt", W64(stereo, 16, Pattern(40)), FALSE, FALSE, TRUE, FALSE, 1,
         16, 0, 10, 104},
        {"AIFF", aiff, FALSE, FALSE, FALSE, TRUE, 0xFE02, 16, 0, 3, 54},
        {"WAVE without fmt", Riff(Chunk("data", Pattern(8))), FALSE, FALSE, FALSE, FALSE, 0, 0, 0,
         0, 0},
        {"other form", Riff(Chunk("fmt ", FmtBytes(stereo, 16)), "AVI "), FALSE, FALSE, FALSE,
         FALSE, 0, 0, 0, 0, 0},
    };
    for (const auto& c : cases)
    {
        TempFile f(c.file);
        f.Close();
        const wchar_t* path = f.Path().c_str();
        EXPECT_EQ(TqFileIsWave(path, FALSE), c.wave) << c.name;
        EXPECT_EQ(TqFileIsWave(path, TRUE), c.waveAny) << c.name;
        EXPECT_EQ(TqFileIsWave64(path, FALSE), c.wave64) << c.name;
        EXPECT_EQ(TqFileIsAiff(path), c.isAiff) << c.name;
        ULONGLONG frames = 77, dataStart = 77;
        WAVEFORMATEX* wfx = TqGetFileWfx(path, &frames, &dataStart);
        EXPECT_EQ(wfx != nullptr, c.tag != 0) << c.name;
        if (!wfx)
        {
            EXPECT_EQ(frames, 77u) << "left alone";
            continue;
        }
        EXPECT_EQ(wfx->wFormatTag, c.tag) << c.name;
        EXPECT_EQ(wfx->wBitsPerSample, c.bits) << c.name;
        EXPECT_EQ(wfx->cbSize, c.cbSize) << c.name;
        EXPECT_EQ(wfx->nBlockAlign, wfx->nChannels * c.bits / 8) << c.name;
        EXPECT_EQ(frames, c.frames) << c.name;
        EXPECT_EQ(dataStart, c.dataStart) << c.name;
        free(wfx);
    }
    const wchar_t* missing = L"C:\\no such folder\\none.wav";
    EXPECT_FALSE(TqFileIsWave(missing, TRUE));
    EXPECT_FALSE(TqFileIsWave64(missing, TRUE));
    EXPECT_FALSE(TqFileIsAiff(missing));
    EXPECT_EQ(TqGetFileWfx(missing, nullptr, nullptr), nullptr);
}

// Rewriting the format stays inside the format chunk, whatever its size.
TEST(WaveFormat, SetFileWfxWritesOnlyTheFormatChunk)
{
    const WAVEFORMATEX mono = Pcm(1, 96000, 24);
    const struct
    {
        const char* name;
        DWORD fmtBytes;
    } sizes[] = {{"16 bytes", 16}, {"18 bytes", 18}, {"40 bytes", 40}};
    for (const auto& s : sizes)
    {
        const Bytes file = Wav(kStereo16, s.fmtBytes, Pattern(48), Chunk("bext", Pattern(6)));
        TempFile f(file);
        f.Close();
        ASSERT_EQ(TqSetFileWfx(f.Path().c_str(), &mono), S_OK) << s.name;
        const Bytes expected = Wav(mono, s.fmtBytes, Pattern(48), Chunk("bext", Pattern(6)));
        EXPECT_EQ(ReadFileBytes(f.Path()), expected) << s.name;
    }

    WAVEFORMATEX withTail = mono;
    withTail.cbSize = 2;
    TempFile wav(Wav(kStereo16, 16, Pattern(8)));
    wav.Close();
    EXPECT_EQ(TqSetFileWfx(wav.Path().c_str(), &withTail), (HRESULT)0x8004E000);
    EXPECT_EQ(ReadFileBytes(wav.Path()), Wav(kStereo16, 16, Pattern(8)));
    TempFile w64(W64(kStereo16, 18, Pattern(8)));
    w64.Close();
    EXPECT_EQ(TqSetFileWfx(w64.Path().c_str(), &mono), TQ_E_CORRUPTFILE);
    EXPECT_EQ(ReadFileBytes(w64.Path()), W64(kStereo16, 18, Pattern(8)));

    // AIFF: channels, bits and rate in "COMM", the frame count kept.
    const Bytes aiff = Form("AIFF", IffChunk("COMM", CommData(2, 3, 16, 44100)) +
                                        IffChunk("SSND", SsndData(Pattern(12))));
    TempFile a(aiff);
    a.Close();
    const WAVEFORMATEX quad = Pcm(1, 48000, 16);
    ASSERT_EQ(TqSetFileWfx(a.Path().c_str(), &quad), S_OK);
    EXPECT_EQ(ReadFileBytes(a.Path()), Form("AIFF", IffChunk("COMM", CommData(1, 3, 16, 48000)) +
                                                        IffChunk("SSND", SsndData(Pattern(12)))));
    const WAVEFORMATEX floats = Pcm(2, 48000, 32, WAVE_FORMAT_IEEE_FLOAT);
    EXPECT_EQ(TqSetFileWfx(a.Path().c_str(), &floats), (HRESULT)0x8004E016);
}

#ifdef TQ_WAVE_REFERENCE_FILES
// The tool wrote each file in three framings, and decoded each to raw samples.
TEST(WaveFormat, ReadsWhatTheToolWrote)
{
    const struct
    {
        const wchar_t* name;
        WORD tag;
        WORD channels;
        WORD bits;
        DWORD rate;
    } cases[] = {
        {L"s16le_44100_1", WAVE_FORMAT_PCM, 1, 16, 44100},
        {L"s24le_48000_2", WAVE_FORMAT_PCM, 2, 24, 48000},
        {L"s32le_96000_6", WAVE_FORMAT_PCM, 6, 32, 96000},
        {L"f32le_48000_2", WAVE_FORMAT_IEEE_FLOAT, 2, 32, 48000},
        {L"f64le_44100_1", WAVE_FORMAT_IEEE_FLOAT, 1, 64, 44100},
        {L"u8_22050_2", WAVE_FORMAT_PCM, 2, 8, 22050},
        {L"s16le_8000_8", WAVE_FORMAT_PCM, 8, 16, 8000},
    };
    for (const auto& c : cases)
    {
        for (const std::wstring ext : {L".wav", L".w64", L".rf64.wav"})
        {
            const std::wstring path = MediaFolder() + c.name + ext;
            const std::string what(path.begin() + static_cast<long>(MediaFolder().size()),
                                   path.end());
            const Bytes raw = ReadFileBytes(path + L".raw");
            ASSERT_FALSE(raw.empty()) << what;
            EXPECT_EQ(TqFileIsWave(path.c_str(), FALSE), ext != L".w64") << what;
            EXPECT_EQ(TqFileIsWave64(path.c_str(), FALSE), ext == L".w64") << what;
            ULONGLONG frames = 0, dataStart = 0;
            WAVEFORMATEX* wfx = TqGetFileWfx(path.c_str(), &frames, &dataStart);
            ASSERT_NE(wfx, nullptr) << what;
            EXPECT_EQ(TqAudio_GetWaveFormatTag(wfx), c.tag) << what;
            EXPECT_EQ(wfx->nChannels, c.channels) << what;
            EXPECT_EQ(wfx->wBitsPerSample, c.bits) << what;
            EXPECT_EQ(wfx->nSamplesPerSec, c.rate) << what;
            const ULONGLONG bytes = frames * wfx->nBlockAlign;
            free(wfx);
            ASSERT_EQ(bytes, raw.size()) << what;
            const Bytes file = ReadFileBytes(path);
            ASSERT_LE(dataStart + raw.size(), file.size()) << what;
            EXPECT_TRUE(std::equal(raw.begin(), raw.end(), file.begin() + dataStart)) << what;
        }
    }
}
#endif

#ifdef TQ_WRITE_FOR_TOOL
// Files these layers write, checked here through the layers and left for the tool, which reads
// them back once this program has ended (wavefile_toolreadback).
TEST(WaveRoundTrip, FilesForTheToolToReadBack)
{
    const struct
    {
        const wchar_t* name;
        WAVEFORMATEX wfx;
        bool wave64;
        DWORD junkHeader; // 0: the bare header
    } cases[] = {
        {L"ours_s16_stereo.wav", Pcm(2, 44100, 16), false, 0},
        {L"ours_s24_mono_junk.wav", Pcm(1, 96000, 24), false, 100},
        {L"ours_f32_stereo.wav", Pcm(2, 48000, 32, WAVE_FORMAT_IEEE_FLOAT), false, 0},
        {L"ours_u8_mono.wav", Pcm(1, 22050, 8), false, 0},
        {L"ours_s16_stereo.w64", Pcm(2, 44100, 16), true, 0},
        {L"ours_s32_stereo_junk.w64", Pcm(2, 96000, 32), true, 200},
        {L"ours_f64_mono.w64", Pcm(1, 44100, 64, WAVE_FORMAT_IEEE_FLOAT), true, 0},
    };
    for (const auto& c : cases)
    {
        TempPath path;
        const WAVEFORMATEX& wfx = c.wfx;
        HRESULT hr =
            c.wave64
                ? (c.junkHeader
                       ? TqInitializeWav64WithJunk(path.c_str(), &wfx, CREATE_ALWAYS, c.junkHeader)
                       : TqInitializeWav64(path.c_str(), &wfx, CREATE_ALWAYS))
                : (c.junkHeader
                       ? TqInitializeWavWithJunk(path.c_str(), &wfx, CREATE_ALWAYS, c.junkHeader)
                       : TqInitializeWav(path.c_str(), &wfx, CREATE_ALWAYS));
        ASSERT_EQ(hr, S_OK) << c.name;
        // A float signal has to be one: the ramp makes a tone of in-range values.
        Bytes samples = Samples(1001, wfx.nBlockAlign);
        if (wfx.wFormatTag == WAVE_FORMAT_IEEE_FLOAT)
            for (size_t i = 0; i < samples.size(); i += wfx.wBitsPerSample / 8)
                samples[i + wfx.wBitsPerSample / 8 - 1] = 0x3E;
        HANDLE h = CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                               OPEN_EXISTING, 0, nullptr);
        ASSERT_NE(h, INVALID_HANDLE_VALUE);
        LARGE_INTEGER length = {};
        GetFileSizeEx(h, &length);
        const auto header = static_cast<DWORD>(length.QuadPart);
        WriteAt(h, header, samples);
        hr = c.wave64 ? TqInsertW64Header(h, &wfx, samples.size(), header)
                      : TqInsertWavHeader(h, &wfx, static_cast<DWORD>(samples.size()), header);
        CloseHandle(h);
        ASSERT_EQ(hr, S_OK) << c.name;

        ULONGLONG frames = 0, dataStart = 0;
        WAVEFORMATEX* got = TqGetFileWfx(path.c_str(), &frames, &dataStart);
        ASSERT_NE(got, nullptr) << c.name;
        EXPECT_TRUE(TqAudio_IsEqualFormat(got, &wfx)) << c.name;
        free(got);
        EXPECT_EQ(frames, 1001u) << c.name;
        EXPECT_EQ(dataStart, header) << c.name;
        KeepForTool(L"wavefile_test", c.name, ReadFileBytes(path.Path()), samples, wfx);
    }

    // The tool's own RF64 file with its list of tags taken out by this layer.
    const Bytes raw = ReadFileBytes(MediaFolder() + L"s24le_48000_2.rf64.wav.raw");
    TempFile f(ReadFileBytes(MediaFolder() + L"s24le_48000_2.rf64.wav"));
    ULONGLONG removed = 0;
    ASSERT_EQ(RF64_DeleteChunk(f.Handle(), RIFF_ID_LIST, &removed, FALSE), S_OK);
    EXPECT_GT(removed, 0u);
    KeepForTool(L"wavefile_test", L"ours_s24_rf64_without_list.wav", f.Read(), raw,
                Pcm(2, 48000, 24));
}
#endif
