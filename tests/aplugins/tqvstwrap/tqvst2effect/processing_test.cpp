// The audio path: blocks through plug-ins bit-exact in every host sample type, in process and in a
// server, channel layouts, buffer reuse, faults, and the switching calls around processing.
#include "plugins/state_probe_record.h"
#include "support/effectplace.h"
#include "support/sampletypes.h"
#include "tqsampletype.h"
#include "uniquehandle.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace {

using tqtest::PluginPath;
using namespace tqtest::sampletypes;

// tqgain's parameter 0.25 is a gain of one half: exact in single precision.
constexpr float kHalfGainParameter = 0.25f;

HRESULT ProcessBlock(ITqVstEffect* effect, std::vector<uint8_t>* input, UINT32 inputChannels,
                     std::vector<uint8_t>& output, INT32 outputChannels, UINT32 frames,
                     UINT32 bytesPerSample)
{
    return effect->Process(input ? input->data() : nullptr, inputChannels, output.data(),
                           outputChannels, frames, bytesPerSample);
}

// Every host type through tqgain at a gain of one half: the samples come back as the copy rule
// computes them, to the bit. Stereo float takes the interleave routines, the rest the copies.
void ExpectGainIsBitExactInEveryType(ITqVstEffect* effect)
{
    ASSERT_EQ(effect->SetParameter(0, kHalfGainParameter), S_OK);
    ASSERT_EQ(effect->Resume(0), S_OK);
    constexpr UINT32 kFrames = 37;
    for (const TypeRow& row : kTypes)
    {
        SCOPED_TRACE(testing::Message() << "sample type " << row.type);
        ASSERT_EQ(effect->SetSampleType(row.type), S_OK);
        std::vector<uint8_t> input = TestSignal(row, kFrames, 2);
        std::vector<uint8_t> output(input.size(), 0xCD);
        ASSERT_EQ(ProcessBlock(effect, &input, 2, output, 2, kFrames, row.bytes), S_OK);
        EXPECT_EQ(output, Expected(row, input, 0.5f));
    }
}

using Processing = tqtest::InProcessTest;

TEST_F(Processing, GainIsBitExactInEveryHostType)
{
    auto effect = Create(L"tqgain.dll");
    ASSERT_TRUE(effect);
    ExpectGainIsBitExactInEveryType(effect.Get());
}

TEST_F(Processing, DefaultTypeNeedsNoSampleTypeCall)
{
    auto effect = Create(L"tqgain.dll");
    ASSERT_TRUE(effect);
    const TypeRow& row = Row(TQSAMPLE_FLOAT32);
    std::vector<uint8_t> input = TestSignal(row, 16, 2), output(input.size());
    ASSERT_EQ(ProcessBlock(effect.Get(), &input, 2, output, 2, 16, 4), S_OK);
    EXPECT_EQ(output, input) << "the default parameter is unity";
}

TEST_F(Processing, MonoHostFeedsTheSecondInputOnlyToMonoCapablePlugins)
{
    const std::vector<int16_t> mono = {1000, -1000, 3, -5, 32767, -32768};
    const UINT32 frames = UINT32(mono.size());
    std::vector<uint8_t> input = Bytes(mono);

    auto capable = Create(L"mono_gain.dll");
    ASSERT_TRUE(capable);
    ASSERT_EQ(capable->SetSampleType(TQSAMPLE_PCM16), S_OK);
    std::vector<uint8_t> stereo(frames * 4);
    ASSERT_EQ(ProcessBlock(capable.Get(), &input, 1, stereo, 2, frames, 2), S_OK);
    EXPECT_EQ(Pcm16(stereo), (std::vector<int16_t>{500, 500, -500, -500, 2, 2, -2, -2, 16384, 16384,
                                                   -16384, -16384}));
    std::vector<uint8_t> single(frames * 2);
    ASSERT_EQ(ProcessBlock(capable.Get(), &input, 1, single, 1, frames, 2), S_OK);
    EXPECT_EQ(Pcm16(single), (std::vector<int16_t>{500, -500, 2, -2, 16384, -16384}));

    auto plain = Create(L"tqgain.dll");
    ASSERT_TRUE(plain);
    ASSERT_EQ(plain->SetSampleType(TQSAMPLE_PCM16), S_OK);
    ASSERT_EQ(ProcessBlock(plain.Get(), &input, 1, stereo, 2, frames, 2), S_OK);
    EXPECT_EQ(Pcm16(stereo),
              (std::vector<int16_t>{1000, 0, -1000, 0, 3, 0, -5, 0, 32767, 0, -32768, 0}))
        << "without the flag the second input is silent";
}

TEST_F(Processing, ChannelsBeyondThePluginsOutputsAreMuted)
{
    auto effect = Create(L"tqgain.dll");
    ASSERT_TRUE(effect);
    ASSERT_EQ(effect->SetParameter(0, kHalfGainParameter), S_OK);
    ASSERT_EQ(effect->SetSampleType(TQSAMPLE_PCM16), S_OK);
    std::vector<uint8_t> input = Bytes({100, 200, 300, 400, -100, -200, -300, -400});
    std::vector<uint8_t> output(input.size(), 0xCD);
    ASSERT_EQ(ProcessBlock(effect.Get(), &input, 4, output, 4, 2, 2), S_OK);
    EXPECT_EQ(Pcm16(output), (std::vector<int16_t>{50, 100, 0, 0, -50, -100, 0, 0}));

    // Unsigned 8-bit silence is 128, not zero.
    ASSERT_EQ(effect->SetSampleType(TQSAMPLE_PCM8), S_OK);
    std::vector<uint8_t> bytes = {0x90, 0x70, 0xFF, 0x00, 0x88, 0x78, 0x10, 0xF0};
    std::vector<uint8_t> out8(bytes.size(), 0xCD);
    ASSERT_EQ(ProcessBlock(effect.Get(), &bytes, 4, out8, 4, 2, 1), S_OK);
    EXPECT_EQ(out8, (std::vector<uint8_t>{0x88, 0x78, 0x80, 0x80, 0x84, 0x7C, 0x80, 0x80}));
}

TEST_F(Processing, SmallerBlocksReuseTheBuffersAndNullInputLeavesStaleSamples)
{
    auto effect = Create(L"tqgain.dll");
    ASSERT_TRUE(effect);
    ASSERT_EQ(effect->SetParameter(0, kHalfGainParameter), S_OK);
    const TypeRow& row = Row(TQSAMPLE_FLOAT32);
    std::vector<uint8_t> large = TestSignal(row, 256, 2), largeOut(large.size());
    ASSERT_EQ(ProcessBlock(effect.Get(), &large, 2, largeOut, 2, 256, 4), S_OK);
    EXPECT_EQ(largeOut, Expected(row, large, 0.5f));

    std::vector<uint8_t> small = TestSignal(row, 64, 2), smallOut(small.size());
    std::reverse(small.begin(), small.end() - 8 * 10);
    ASSERT_EQ(ProcessBlock(effect.Get(), &small, 2, smallOut, 2, 64, 4), S_OK);
    EXPECT_EQ(smallOut, Expected(row, small, 0.5f));

    // Without input only the cleared span is silent: one channel's capacity times two channels
    // from the first channel's start covers the left plane, and the right plane keeps the
    // previous block's samples.
    std::vector<float> stale(64 * 2);
    ASSERT_EQ(effect->Process(nullptr, 0, reinterpret_cast<BYTE*>(stale.data()), 2, 64, 4), S_OK);
    const auto* previous = reinterpret_cast<const float*>(small.data());
    for (int frame = 0; frame < 64; ++frame)
    {
        ASSERT_EQ(stale[frame * 2], 0.0f) << frame;
        ASSERT_EQ(stale[frame * 2 + 1], previous[frame * 2 + 1] * 0.5f) << frame;
    }
}

// A plug-in that faults, or has no processReplacing at all, leaves the seeded outputs: the host
// hears the dry signal and the effect goes on answering.
TEST_F(Processing, FaultInThePluginGivesTheDrySignal)
{
    for (const wchar_t* file : {L"fault_in_process.dll", L"no_replacing.dll"})
    {
        SCOPED_TRACE(testing::Message() << file);
        auto effect = Create(file);
        ASSERT_TRUE(effect);
        ASSERT_EQ(effect->SetSampleType(TQSAMPLE_PCM16), S_OK);
        std::vector<uint8_t> input = Bytes({1, -2, 300, -400, 32767, -32768});
        std::vector<uint8_t> output(input.size());
        for (int round = 0; round < 3; ++round)
        {
            ASSERT_EQ(ProcessBlock(effect.Get(), &input, 2, output, 2, 3, 2), S_OK);
            EXPECT_EQ(output, input);
        }
        WCHAR name[64];
        EXPECT_EQ(effect->GetEffectName(name, 64), S_OK);
    }
}

TEST_F(Processing, SynthWritesItsToneWithoutInput)
{
    auto effect = Create(L"synth_tone.dll");
    ASSERT_TRUE(effect);
    ASSERT_EQ(effect->SetSampleType(TQSAMPLE_PCM16), S_OK);
    std::vector<uint8_t> output(10 * 4, 0xCD);
    ASSERT_EQ(effect->Process(nullptr, 0, output.data(), 2, 10, 2), S_OK);
    const std::vector<int16_t> samples = Pcm16(output);
    for (int frame = 0; frame < 10; ++frame)
    {
        const int16_t left = (frame / 4) % 2 ? -8192 : 8192;
        EXPECT_EQ(samples[frame * 2], left) << frame;
        EXPECT_EQ(samples[frame * 2 + 1], -left) << frame;
    }
    // A host input is ignored by a plug-in that has none.
    std::vector<uint8_t> input(10 * 4, 0x11);
    ASSERT_EQ(ProcessBlock(effect.Get(), &input, 2, output, 2, 10, 2), S_OK);
    EXPECT_EQ(Pcm16(output)[0], 8192);
}

TEST_F(Processing, BadArgumentsAreRefusedWithoutWriting)
{
    auto effect = Create(L"tqgain.dll");
    ASSERT_TRUE(effect);
    std::vector<uint8_t> input(64, 0), output(64, 0xCD);
    EXPECT_EQ(ProcessBlock(effect.Get(), &input, 2, output, 2, 8, 2), E_INVALIDARG)
        << "float is 4 bytes";
    ASSERT_EQ(effect->SetSampleType(TQSAMPLE_PCM24), S_OK);
    EXPECT_EQ(ProcessBlock(effect.Get(), &input, 2, output, 2, 8, 4), E_INVALIDARG);
    EXPECT_EQ(output, std::vector<uint8_t>(64, 0xCD));
    EXPECT_EQ(ProcessBlock(effect.Get(), &input, 2, output, 2, 8, 3), S_OK);

    // A type the copy tables do not know has no size and no routines.
    ASSERT_EQ(effect->SetSampleType(7), S_OK);
    EXPECT_EQ(ProcessBlock(effect.Get(), &input, 2, output, 2, 8, 0), E_INVALIDARG);
    EXPECT_EQ(effect->SetChannelCount(-1), E_INVALIDARG);
}

class SwitchingCalls : public Processing
{
protected:
    void SetUp() override
    {
        Processing::SetUp();
        m_effect = Create(L"state_probe.dll");
        ASSERT_TRUE(m_effect);
        m_read = reinterpret_cast<state_probe::ReadRecord>(reinterpret_cast<void (*)()>(
            GetProcAddress(GetModuleHandleW(L"state_probe.dll"), "TqStateProbeRead")));
        ASSERT_NE(m_read, nullptr);
        Read();
    }

    state_probe::Record Read()
    {
        state_probe::Record record = {};
        m_read(&record);
        return record;
    }

    // The opcodes and values the plug-in heard since the last read, as "opcode:value" words.
    std::string Heard()
    {
        const state_probe::Record record = Read();
        std::string text;
        for (int i = 0; i < record.eventCount; ++i)
        {
            if (!text.empty()) text += ' ';
            text += std::to_string(record.events[i].opcode);
            if (record.events[i].opcode == 12) text += ':' + std::to_string(record.events[i].value);
        }
        return text;
    }

    tq::ComPtr<ITqVstEffect> m_effect;
    state_probe::ReadRecord m_read = nullptr;
};

// effMainsChanged 12 with its value, effSetSpeakerArrangement 42, effStartProcess 71,
// effStopProcess 72.
TEST_F(SwitchingCalls, ResumeAndSuspendFollowTheStateFlags)
{
    EXPECT_EQ(m_effect->Suspend(1), S_FALSE);
    EXPECT_EQ(Heard(), "");
    EXPECT_EQ(m_effect->Resume(0), S_OK);
    EXPECT_EQ(Heard(), "12:1 71");
    EXPECT_EQ(m_effect->Resume(0), S_FALSE);
    EXPECT_EQ(Heard(), "");
    EXPECT_EQ(m_effect->Resume(1), S_OK);
    EXPECT_EQ(Heard(), "12:1") << "processing already runs";

    EXPECT_EQ(m_effect->Suspend(0), S_OK);
    EXPECT_EQ(Heard(), "72");
    EXPECT_EQ(m_effect->Suspend(0), S_FALSE);
    // Mains still on: a plain resume starts processing again without switching on.
    EXPECT_EQ(m_effect->Resume(0), S_OK);
    EXPECT_EQ(Heard(), "71");
    EXPECT_EQ(m_effect->Suspend(1), S_OK);
    EXPECT_EQ(Heard(), "72 12:0");
    EXPECT_EQ(m_effect->Suspend(1), S_FALSE);
    EXPECT_EQ(Heard(), "");
}

TEST_F(SwitchingCalls, ChannelCountSendsItsArrangementBetweenMainsCalls)
{
    struct Named
    {
        const char* name;
        float azimuth, elevation, radius;
        int32_t type;
    };
    struct Case
    {
        int32_t channels;
        int32_t arrangementType;
        std::vector<Named> speakers;
    };
    const Case cases[] = {
        {1, 0, {{"M", 1.5707964f, 0, 1.0f, 0}}},
        {2, 1, {{"L", 2.0943954f, 0, 1.0f, 1}, {"R", 1.0471977f, 0, 1.0f, 2}}},
        {6,
         15,
         {{"L", 2.0943954f, 0, 1.1547010f, 1},
          {"R", 1.0471977f, 0, 1.1547010f, 2},
          {"C", 1.5707964f, 0, 1.0f, 2},
          {"Lfe", 10.0f, 10.0f, 0, 4},
          {"Ls", -2.7925272f, 0, 1.0641780f, 5},
          {"Rs", -0.3490659f, 0, 1.0641780f, 6}}},
        {3, -1, std::vector<Named>(3, {"", 0, 0, 0, 0x7FFFFFFF})},
        {10, -1, std::vector<Named>(10, {"", 0, 0, 0, 0x7FFFFFFF})},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.channels);
        ASSERT_EQ(m_effect->SetChannelCount(c.channels), S_OK);
        const state_probe::Record record = Read();
        ASSERT_EQ(record.eventCount, 3);
        EXPECT_EQ(record.events[0].opcode, 12);
        EXPECT_EQ(record.events[0].value, 0);
        EXPECT_EQ(record.events[1].opcode, 42);
        EXPECT_EQ(record.events[2].opcode, 12);
        EXPECT_EQ(record.events[2].value, 1);
        EXPECT_EQ(record.sameInBoth, 1);
        EXPECT_EQ(record.arrangementType, c.arrangementType);
        EXPECT_EQ(record.numChannels, c.channels);
        for (size_t i = 0; i < c.speakers.size(); ++i)
        {
            const state_probe::Speaker& got = record.speakers[i];
            EXPECT_STREQ(got.name, c.speakers[i].name) << i;
            EXPECT_EQ(got.azimuth, c.speakers[i].azimuth) << i;
            EXPECT_EQ(got.elevation, c.speakers[i].elevation) << i;
            EXPECT_EQ(got.radius, c.speakers[i].radius) << i;
            EXPECT_EQ(got.type, c.speakers[i].type) << i;
        }
    }
    // The mains pair leaves the flags alone: the first Resume still switches on.
    EXPECT_EQ(m_effect->Resume(0), S_OK);
    EXPECT_EQ(Heard(), "12:1 71");
}

using tqtest::ServerProcess;

TEST(ProcessingOutOfProcess, GainIsBitExactThroughTheServer)
{
    ASSERT_HRESULT_SUCCEEDED(CoInitialize(nullptr));
    DWORD pid = 0;
    tq::ComPtr<ITqVstEffectFactory> factory;
    ASSERT_EQ(GetVstFactory(kTqVstServer, IID_ITqVstEffectFactory, factory.PutVoid(), L"tqvst",
                            L"tests", &pid, nullptr),
              S_OK);
    {
        ServerProcess server(pid);
        tq::ComPtr<ITqVstEffect> effect;
        ASSERT_EQ(factory->CreateEffect(PluginPath(L"tqgain.dll").c_str(), 0, IID_ITqVstEffect,
                                        effect.PutVoid()),
                  S_OK);
        ExpectGainIsBitExactInEveryType(effect.Get());
        // A faulting plug-in in the server answers with the dry signal too.
        tq::ComPtr<ITqVstEffect> faulting;
        ASSERT_EQ(factory->CreateEffect(PluginPath(L"fault_in_process.dll").c_str(), 0,
                                        IID_ITqVstEffect, faulting.PutVoid()),
                  S_OK);
        std::vector<uint8_t> input = Bytes({7, -7, 1000, -1000}), output(input.size());
        ASSERT_EQ(faulting->SetSampleType(TQSAMPLE_PCM16), S_OK);
        ASSERT_EQ(ProcessBlock(faulting.Get(), &input, 2, output, 2, 2, 2), S_OK);
        EXPECT_EQ(output, input);
        // The output comes back whole whatever the input: none here.
        tq::ComPtr<ITqVstEffect> synth;
        ASSERT_EQ(factory->CreateEffect(PluginPath(L"synth_tone.dll").c_str(), 0, IID_ITqVstEffect,
                                        synth.PutVoid()),
                  S_OK);
        ASSERT_EQ(synth->SetSampleType(TQSAMPLE_PCM16), S_OK);
        std::vector<uint8_t> tone(4 * 4, 0xCD);
        ASSERT_EQ(synth->Process(nullptr, 0, tone.data(), 2, 4, 2), S_OK);
        EXPECT_EQ(Pcm16(tone),
                  (std::vector<int16_t>{8192, -8192, 8192, -8192, 8192, -8192, 8192, -8192}));
        synth.Reset();
        effect.Reset();
        faulting.Reset();
        EXPECT_EQ(ReleaseVstFactory(kTqVstServer, factory.Detach()), S_OK);
    }
    CoUninitialize();
}

} // namespace
