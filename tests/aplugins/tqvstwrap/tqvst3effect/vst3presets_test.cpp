// VST3 state as .vstpreset images through the effect interface, in this process and in servers
// of both bitnesses: a saved image restores a fresh instance, is refused by another class without
// harm, must be whole, and is laid out byte for byte as the format says.
#include "comptr.h"
#include "support/effectplace.h"
#include "support/testmaster.h"

#include <shlobj.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

using tqtest::PlacedFactory;

constexpr HRESULT kNotCompatible = static_cast<HRESULT>(0x8004E204);
constexpr HRESULT kCorrupted = static_cast<HRESULT>(0x8004E00B);

// tqgain3's one parameter a host sees; its bypass, meter and program parameters are not listed.
constexpr UINT32 kGain = 0;

std::vector<BYTE> StreamBytes(IStream* stream)
{
    STATSTG stat = {};
    stream->Stat(&stat, STATFLAG_NONAME);
    std::vector<BYTE> bytes(static_cast<size_t>(stat.cbSize.QuadPart));
    stream->Seek({}, STREAM_SEEK_SET, nullptr);
    ULONG read = 0;
    stream->Read(bytes.data(), static_cast<ULONG>(bytes.size()), &read);
    bytes.resize(read);
    return bytes;
}

tq::ComPtr<IStream> StreamOf(const std::vector<BYTE>& bytes)
{
    tq::ComPtr<IStream> stream;
    CreateStreamOnHGlobal(nullptr, TRUE, stream.Put());
    ULONG written = 0;
    stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written);
    stream->Seek({}, STREAM_SEEK_SET, nullptr);
    return stream;
}

// The image SavePreset writes, or empty on failure.
std::vector<BYTE> Save(ITqVstEffect* effect)
{
    tq::ComPtr<IStream> stream;
    CreateStreamOnHGlobal(nullptr, TRUE, stream.Put());
    UINT32 bytes = 0;
    if (effect->SavePreset(stream.Get(), &bytes) != S_OK) return {};
    std::vector<BYTE> image = StreamBytes(stream.Get());
    EXPECT_EQ(image.size(), bytes) << "the size handed out is the size written";
    return image;
}

HRESULT Load(ITqVstEffect* effect, const std::vector<BYTE>& image)
{
    tq::ComPtr<IStream> stream = StreamOf(image);
    return effect->LoadPreset(stream.Get());
}

std::vector<float> Parameters(ITqVstEffect* effect)
{
    TqVstEffectInfo info = {};
    effect->GetEffectInfo(&info);
    std::vector<float> values(info.numParameters, -1.0f);
    for (UINT32 i = 0; i < info.numParameters; ++i)
        effect->GetParameter(i, &values[i]);
    return values;
}

using Vst3Presets = tqtest::PlacedTest;

TEST_P(Vst3Presets, ASavedImageRestoresEveryParameterOfAFreshInstance)
{
    tq::ComPtr<ITqVstEffect> source = Create(L"tqgain3.vst3");
    ASSERT_TRUE(source);
    ASSERT_EQ(source->SetParameter(kGain, 0.25f), S_OK);

    UINT32 size = 0;
    ASSERT_EQ(source->SavePreset(nullptr, &size), S_OK) << "the size alone";
    const std::vector<BYTE> image = Save(source.Get());
    ASSERT_FALSE(image.empty());
    EXPECT_EQ(image.size(), size) << "asking for the size builds the same image";
    EXPECT_EQ(std::memcmp(image.data(), "VST3", 4), 0);

    tq::ComPtr<ITqVstEffect> fresh = Create(L"tqgain3.vst3");
    ASSERT_TRUE(fresh);
    ASSERT_NE(Parameters(fresh.Get()), Parameters(source.Get()));
    ASSERT_EQ(Load(fresh.Get(), image), S_OK);
    EXPECT_EQ(Parameters(fresh.Get()), Parameters(source.Get()));
    float gain = 0;
    fresh->GetParameter(kGain, &gain);
    EXPECT_EQ(gain, 0.25f);

    // The processor took the state too: what it saves now is what it was given.
    EXPECT_EQ(Save(fresh.Get()), image);
}

TEST_P(Vst3Presets, AnotherClassesImageIsRefusedAndChangesNothing)
{
    tq::ComPtr<ITqVstEffect> other = Create(L"single_object.vst3");
    ASSERT_TRUE(other);
    ASSERT_EQ(other->SetParameter(0, 0.75f), S_OK);
    const std::vector<BYTE> foreign = Save(other.Get());
    ASSERT_FALSE(foreign.empty());

    tq::ComPtr<ITqVstEffect> gain = Create(L"tqgain3.vst3");
    ASSERT_TRUE(gain);
    ASSERT_EQ(gain->SetParameter(kGain, 0.4f), S_OK);
    const std::vector<float> before = Parameters(gain.Get());
    const std::vector<BYTE> own = Save(gain.Get());
    EXPECT_EQ(Load(gain.Get(), foreign), kNotCompatible);
    EXPECT_EQ(Parameters(gain.Get()), before);
    EXPECT_EQ(Save(gain.Get()), own) << "the processor kept its state";
}

TEST_P(Vst3Presets, ACutImageIsCorruptAndChangesNothing)
{
    tq::ComPtr<ITqVstEffect> gain = Create(L"tqgain3.vst3");
    ASSERT_TRUE(gain);
    ASSERT_EQ(gain->SetParameter(kGain, 0.1f), S_OK);
    const std::vector<BYTE> image = Save(gain.Get());
    ASSERT_GT(image.size(), 48u);
    ASSERT_EQ(gain->SetParameter(kGain, 0.9f), S_OK);
    const std::vector<float> before = Parameters(gain.Get());

    for (size_t cut : {size_t(1), size_t(20), image.size() - 48, image.size() - 4, image.size()})
    {
        SCOPED_TRACE(testing::Message() << "without the last " << cut << " bytes");
        const std::vector<BYTE> shorter(image.begin(), image.end() - static_cast<ptrdiff_t>(cut));
        EXPECT_EQ(Load(gain.Get(), shorter), kCorrupted);
        EXPECT_EQ(Parameters(gain.Get()), before);
    }
}

// Only what this system writes: header, "Comp", "Cont", list. The gain's component state is the
// normalised gain (double) and the bypass switch (int32); its controller state the program
// parameter (double).
std::vector<BYTE> HandWrittenImage(double gain, int32_t bypass, double program)
{
    std::vector<BYTE> image;
    const auto put = [&](const void* data, size_t size) {
        const BYTE* bytes = static_cast<const BYTE*>(data);
        image.insert(image.end(), bytes, bytes + size);
    };
    const auto put32 = [&](int32_t value) { put(&value, 4); };
    const auto put64 = [&](int64_t value) { put(&value, 8); };
    put("VST3", 4);
    put32(1);
    put("7E5A3B104C1D4E2A9B3F6C710D2E8A41", 32);
    put64(48 + 12 + 8); // the chunk list follows the two chunks
    put(&gain, 8);
    put32(bypass);
    put(&program, 8);
    put("List", 4);
    put32(2);
    put("Comp", 4);
    put64(48);
    put64(12);
    put("Cont", 4);
    put64(60);
    put64(8);
    return image;
}

TEST_P(Vst3Presets, TheWrittenImageIsLaidOutAsTheFormatSays)
{
    tq::ComPtr<ITqVstEffect> gain = Create(L"tqgain3.vst3");
    ASSERT_TRUE(gain);
    ASSERT_EQ(gain->SetParameter(kGain, 0.25f), S_OK);
    EXPECT_EQ(Save(gain.Get()), HandWrittenImage(0.25, 0, 0.0));
}

// A value set after blocks have stopped coming is carried to the processor before the save, by a
// block of silence: the image holds it.
TEST_P(Vst3Presets, AValueSetAfterTheLastBlockIsInTheSavedState)
{
    tq::ComPtr<ITqVstEffect> gain = Create(L"tqgain3.vst3");
    ASSERT_TRUE(gain);
    constexpr UINT32 kFrames = 64;
    ASSERT_HRESULT_SUCCEEDED(gain->SetSampleType(32));
    ASSERT_HRESULT_SUCCEEDED(gain->SetChannelCount(2));
    ASSERT_HRESULT_SUCCEEDED(gain->SetBlockSize(kFrames));
    ASSERT_HRESULT_SUCCEEDED(gain->Resume(0));
    std::vector<float> in(2 * kFrames, 0.5f), out(2 * kFrames);
    ASSERT_EQ(gain->Process(reinterpret_cast<BYTE*>(in.data()), 2,
                            reinterpret_cast<BYTE*>(out.data()), 2, kFrames, 4),
              S_OK);
    ASSERT_EQ(gain->SetParameter(kGain, 0.25f), S_OK);
    Sleep(600); // longer than the wait for a next block
    EXPECT_EQ(Save(gain.Get()), HandWrittenImage(0.25, 0, 0.0));
}

TEST_P(Vst3Presets, AnImageWithoutControllerStateLoads)
{
    // Header, "Comp" and a list of one: the controller learns the state from the component's.
    std::vector<BYTE> image = HandWrittenImage(0.125, 0, 0.0);
    image.erase(image.begin() + 60, image.begin() + 68); // the "Cont" chunk
    image.resize(image.size() - 20);                     // and its list entry
    const int64_t listAt = 60;
    std::memcpy(image.data() + 40, &listAt, 8);
    const int32_t entries = 1;
    std::memcpy(image.data() + 64, &entries, 4);

    tq::ComPtr<ITqVstEffect> gain = Create(L"tqgain3.vst3");
    ASSERT_TRUE(gain);
    ASSERT_EQ(Load(gain.Get(), image), S_OK);
    float value = 0;
    gain->GetParameter(kGain, &value);
    EXPECT_EQ(value, 0.125f);
}

TEST_P(Vst3Presets, ThereAreNoBanks)
{
    tq::ComPtr<ITqVstEffect> gain = Create(L"tqgain3.vst3");
    ASSERT_TRUE(gain);
    UINT32 bytes = 0;
    EXPECT_EQ(gain->SaveBank(nullptr, &bytes), E_NOTIMPL);
    tq::ComPtr<IStream> stream = StreamOf({});
    EXPECT_EQ(gain->LoadBank(stream.Get(), 0), E_NOTIMPL);
}

// A plug-in without a program list of its own gets the user's preset files as its programs:
// those of its folder first, then those of its subfolders, none from a folder whose name starts
// with a dot, each named without its extension.
TEST(Vst3PresetFolders, UserPresetFilesBecomeThePrograms)
{
    ASSERT_HRESULT_SUCCEEDED(CoInitialize(nullptr));
    wchar_t appData[MAX_PATH] = {};
    ASSERT_HRESULT_SUCCEEDED(
        SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, appData));
    const std::wstring presets = std::wstring(appData) + L"\\VST3 Presets";
    const std::wstring vendor = presets + L"\\tqvst";
    const std::wstring folder = vendor + L"\\Single Object";
    const std::vector<std::wstring> folders = {presets,
                                               vendor,
                                               folder,
                                               folder + L"\\Deeper",
                                               folder + L"\\.hidden",
                                               folder + L"\\x.vstpreset"};
    const std::vector<std::wstring> files = {
        folder + L"\\Warm.Pad.vstpreset", folder + L"\\Deeper\\Bright.vstpreset",
        folder + L"\\.hidden\\Secret.vstpreset", folder + L"\\notes.txt"};
    for (const std::wstring& made : folders)
        CreateDirectoryW(made.c_str(), nullptr);
    for (const std::wstring& made : files)
        CloseHandle(CreateFileW(made.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
    {
        PlacedFactory factory(tqtest::kPlaces[0]);
        tq::ComPtr<ITqVstEffect> effect = factory.Create(L"single_object.vst3");
        ASSERT_TRUE(effect);
        TqVstEffectInfo info = {};
        ASSERT_EQ(effect->GetEffectInfo(&info), S_OK);
        EXPECT_EQ(info.numPrograms, 2u);
        WCHAR name[64] = {};
        EXPECT_EQ(effect->GetProgramName(0, name, 64), S_OK);
        EXPECT_STREQ(name, L"Warm.Pad");
        EXPECT_EQ(effect->GetProgramName(1, name, 64), S_OK);
        EXPECT_STREQ(name, L"Bright");

        // Choosing one hands its path to the host, which opens it.
        tqtest::TestMaster master;
        ASSERT_EQ(effect->SetMaster(&master), S_OK);
        EXPECT_EQ(effect->SetProgram(1), S_OK);
        EXPECT_EQ(master.Calls(), std::vector<std::string>{"LoadPresetFile"});
        effect->SetMaster(nullptr);
    }
    for (auto it = files.rbegin(); it != files.rend(); ++it)
        DeleteFileW(it->c_str());
    for (auto it = folders.rbegin(); it != folders.rend(); ++it)
        RemoveDirectoryW(it->c_str());
    CoUninitialize();
}

INSTANTIATE_TEST_SUITE_P(Places, Vst3Presets, testing::ValuesIn(tqtest::kPlaces),
                         tqtest::PlaceName);

} // namespace
