// The VST3 audio path, in process and through servers of both bitnesses: blocks through the gain
// bit-exact in every host sample type, host channel counts that differ from the plug-in's, the
// timing of parameter changes, and the calls that set the processor up.
#include "comptr.h"
#include "support/effectplace.h"
#include "support/sampletypes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

using namespace tqtest::sampletypes;

// tqgain3's normalised 0.25 is a linear gain of one half: exact in single precision.
constexpr float kHalfGain = 0.25f;

using Vst3Processing = tqtest::PlacedTest;

HRESULT Process(ITqVstEffect* effect, std::vector<uint8_t>& input, UINT32 inputChannels,
                std::vector<uint8_t>& output, INT32 outputChannels, UINT32 frames, UINT32 bytes)
{
    return effect->Process(input.data(), inputChannels, output.data(), outputChannels, frames,
                           bytes);
}

// Stereo float takes the de-interleave and interleave routines, every other type the copies.
TEST_P(Vst3Processing, GainIsBitExactInEveryHostType)
{
    auto effect = Create(L"tqgain3.vst3");
    ASSERT_TRUE(effect);
    ASSERT_EQ(effect->SetParameter(0, kHalfGain), S_OK);
    constexpr UINT32 kFrames = 37;
    for (const TypeRow& row : kTypes)
    {
        SCOPED_TRACE(testing::Message() << "sample type " << row.type);
        ASSERT_EQ(effect->SetSampleType(row.type), S_OK);
        std::vector<uint8_t> input = TestSignal(row, kFrames, 2);
        std::vector<uint8_t> output(input.size(), 0xCD);
        ASSERT_EQ(Process(effect.Get(), input, 2, output, 2, kFrames, row.bytes), S_OK);
        EXPECT_EQ(output, Expected(row, input, 0.5f));
    }
}

TEST_P(Vst3Processing, HostChannelsThatDifferFromThePluginsAreFedAndMutedAsTheyFit)
{
    auto effect = Create(L"tqgain3.vst3");
    ASSERT_TRUE(effect);
    ASSERT_EQ(effect->SetParameter(0, kHalfGain), S_OK);
    ASSERT_EQ(effect->SetSampleType(TQSAMPLE_PCM16), S_OK);

    // A mono block feeds the left input alone; the right keeps the stereo block's samples.
    std::vector<uint8_t> stereo = Bytes({1000, -600, 2000, -800}), out(stereo.size());
    ASSERT_EQ(Process(effect.Get(), stereo, 2, out, 2, 2, 2), S_OK);
    std::vector<uint8_t> mono = Bytes({40, -40});
    ASSERT_EQ(Process(effect.Get(), mono, 1, out, 2, 2, 2), S_OK);
    EXPECT_EQ(Pcm16(out), (std::vector<int16_t>{20, -300, -20, -400}));
    std::vector<uint8_t> single(4, 0xCD);
    ASSERT_EQ(Process(effect.Get(), mono, 1, single, 1, 2, 2), S_OK);
    EXPECT_EQ(Pcm16(single), (std::vector<int16_t>{20, -20}));

    // Four host channels: the last two inputs are dropped and the last two outputs silent.
    std::vector<uint8_t> four = Bytes({100, 200, 300, 400, -100, -200, -300, -400});
    std::vector<uint8_t> fourOut(four.size(), 0xCD);
    ASSERT_EQ(Process(effect.Get(), four, 4, fourOut, 4, 2, 2), S_OK);
    EXPECT_EQ(Pcm16(fourOut), (std::vector<int16_t>{50, 100, 0, 0, -50, -100, 0, 0}));
    // Unsigned 8-bit silence is 128.
    ASSERT_EQ(effect->SetSampleType(TQSAMPLE_PCM8), S_OK);
    std::vector<uint8_t> bytes = {0x90, 0x70, 0xFF, 0x00, 0x88, 0x78, 0x10, 0xF0};
    std::vector<uint8_t> bytesOut(bytes.size(), 0xCD);
    ASSERT_EQ(Process(effect.Get(), bytes, 4, bytesOut, 4, 2, 1), S_OK);
    EXPECT_EQ(bytesOut, (std::vector<uint8_t>{0x88, 0x78, 0x80, 0x80, 0x84, 0x7C, 0x80, 0x80}));

    // A class without buses has nothing to give: every host channel is silent.
    auto exempt = Create(L"exempt_class.vst3");
    ASSERT_TRUE(exempt);
    ASSERT_EQ(exempt->SetSampleType(TQSAMPLE_PCM16), S_OK);
    std::vector<uint8_t> exemptOut(stereo.size(), 0xCD);
    ASSERT_EQ(Process(exempt.Get(), stereo, 2, exemptOut, 2, 2, 2), S_OK);
    EXPECT_EQ(Pcm16(exemptOut), (std::vector<int16_t>{0, 0, 0, 0}));
}

// The plug-in applies a change from the sample offset it arrives at: a change the host makes
// between blocks must cover the whole next block.
TEST_P(Vst3Processing, ParameterChangeArrivesInTheNextBlockAtItsStart)
{
    auto effect = Create(L"sparse_param_ids.vst3");
    ASSERT_TRUE(effect);
    const std::vector<float> samples = {0.5f, -0.25f, 1.0f, 0.75f, -1.0f, 0.125f, 0.5f, 0.5f};
    std::vector<uint8_t> input(samples.size() * sizeof(float)), output(input.size());
    std::memcpy(input.data(), samples.data(), input.size());
    auto block = [&] {
        EXPECT_EQ(Process(effect.Get(), input, 2, output, 2, 4, 4), S_OK);
        std::vector<float> result(samples.size());
        std::memcpy(result.data(), output.data(), output.size());
        return result;
    };
    EXPECT_EQ(block(), samples) << "unity before any change";
    // The gain's id, 1000, lies beyond the parameter count: only the ring carries it.
    for (float gain : {0.25f, 1.0f, 0.25f})
    {
        ASSERT_EQ(effect->SetParameter(0, gain), S_OK);
        std::vector<float> expected = samples;
        for (float& s : expected)
            s *= 2.0f * gain;
        EXPECT_EQ(block(), expected) << gain;
        EXPECT_EQ(block(), expected) << gain << ", a block later";
    }
}

TEST_P(Vst3Processing, SetupCallsAnswerWhetherTheyChangedAnything)
{
    auto effect = Create(L"tqgain3.vst3");
    ASSERT_TRUE(effect);
    EXPECT_EQ(effect->SetSampleRate(44100.0), S_FALSE);
    EXPECT_EQ(effect->SetSampleRate(48000.0), S_OK);
    EXPECT_EQ(effect->SetBlockSize(1000), S_FALSE);
    EXPECT_EQ(effect->SetBlockSize(64), S_OK);
    EXPECT_EQ(effect->SetChannelCount(2), S_OK) << "already stereo";
    EXPECT_EQ(effect->SetChannelCount(15), S_FALSE) << "no arrangement for 15";
    EXPECT_EQ(effect->SetChannelCount(1), S_FALSE) << "the gain refuses anything but stereo";
    EXPECT_EQ(effect->ProcessReplace(), E_NOTIMPL);

    // Once running, changes restart the processor and blocks go on.
    const TypeRow& row = Row(TQSAMPLE_FLOAT32);
    std::vector<uint8_t> input = TestSignal(row, 64, 2), output(input.size());
    ASSERT_EQ(Process(effect.Get(), input, 2, output, 2, 64, 4), S_OK);
    EXPECT_EQ(output, input);
    EXPECT_EQ(effect->SetSampleRate(96000.0), S_OK);
    EXPECT_EQ(effect->SetBlockSize(16), S_OK);
    std::vector<uint8_t> small = TestSignal(row, 16, 2), smallOut(small.size());
    ASSERT_EQ(Process(effect.Get(), small, 2, smallOut, 2, 16, 4), S_OK);
    EXPECT_EQ(smallOut, small);
    // A block longer than announced grows the buffers instead of overrunning them.
    ASSERT_EQ(Process(effect.Get(), input, 2, output, 2, 64, 4), S_OK);
    EXPECT_EQ(output, input);

    // The wrong sample width reaches no plug-in code: a faulting processor is never entered.
    auto faulting = Create(L"fault_in_process3.vst3");
    ASSERT_TRUE(faulting);
    EXPECT_EQ(Process(faulting.Get(), input, 2, output, 2, 8, 2), E_INVALIDARG);
    EXPECT_EQ(Process(faulting.Get(), input, 2, output, 2, 8, 4), TQVST_E_PLUGINFAULT);
}

INSTANTIATE_TEST_SUITE_P(Places, Vst3Processing, testing::ValuesIn(tqtest::kPlaces),
                         tqtest::PlaceName);

} // namespace
