// Process data sizes its buses once and then only clears silence flags.
#include "hosting/processdata.h"
#include "stubplugin.h"

#include <gtest/gtest.h>

#include <cstring>
#include <algorithm>
#include <vector>

using namespace vst3;

namespace {

class BusComponent : public vst3test::StubComponent
{
public:
    int32 PLUGIN_API getBusCount(MediaType type, BusDirection dir) override
    {
        if (type != kAudio) return 0;
        return static_cast<int32>(dir == kInput ? inputs.size() : outputs.size());
    }
    tresult PLUGIN_API getBusInfo(MediaType type, BusDirection dir, int32 index,
                                  BusInfo& bus) override
    {
        const std::vector<int32>& channels = dir == kInput ? inputs : outputs;
        if (type != kAudio || index < 0 || index >= static_cast<int32>(channels.size()))
            return kInvalidArgument;
        if (channels[index] == kFails) return kResultFalse;
        bus = {};
        bus.channelCount = channels[index];
        return kResultOk;
    }

    static constexpr int32 kFails = -12345;
    std::vector<int32> inputs{2, 1};
    std::vector<int32> outputs{2};
};

} // namespace

TEST(HostProcessData, EveryBusGetsWritableBuffersOfItsChannels)
{
    BusComponent component;
    HostProcessData data;
    ASSERT_TRUE(data.prepare(component, 256, kSample32));
    ASSERT_EQ(2, data.numInputs);
    ASSERT_EQ(1, data.numOutputs);
    EXPECT_EQ(2, data.inputs[0].numChannels);
    EXPECT_EQ(1, data.inputs[1].numChannels);
    EXPECT_EQ(2, data.outputs[0].numChannels);
    std::vector<float*> all = {
        data.inputs[0].channelBuffers32[0], data.inputs[0].channelBuffers32[1],
        data.inputs[1].channelBuffers32[0], data.outputs[0].channelBuffers32[0],
        data.outputs[0].channelBuffers32[1]};
    for (size_t i = 0; i < all.size(); ++i)
    {
        ASSERT_NE(nullptr, all[i]);
        EXPECT_EQ(0.0f, all[i][255]);
        std::fill(all[i], all[i] + 256, static_cast<float>(i));
    }
    for (size_t i = 0; i < all.size(); ++i)
        EXPECT_EQ(static_cast<float>(i), all[i][0]) << "buffers do not overlap";
}

TEST(HostProcessData, TheSameLayoutKeepsItsBuffersAndClearsSilence)
{
    BusComponent component;
    HostProcessData data;
    ASSERT_TRUE(data.prepare(component, 64, kSample32));
    float* before = data.outputs[0].channelBuffers32[1];
    data.outputs[0].silenceFlags = 3;
    ASSERT_TRUE(data.prepare(component, 64, kSample32));
    EXPECT_EQ(before, data.outputs[0].channelBuffers32[1]);
    EXPECT_EQ(0u, data.outputs[0].silenceFlags);

    component.outputs = {2, 2};
    ASSERT_TRUE(data.prepare(component, 64, kSample32));
    EXPECT_EQ(2, data.numOutputs);
    ASSERT_TRUE(data.prepare(component, 128, kSample64));
    data.outputs[1].channelBuffers64[1][127] = 1.0;
}

TEST(HostProcessData, ZeroFramesGiveNullChannelsAndOddBusesAreTamed)
{
    BusComponent component;
    component.inputs = {BusComponent::kFails, -3, 1000};
    HostProcessData data;
    ASSERT_TRUE(data.prepare(component, 0, kSample32));
    EXPECT_EQ(0, data.inputs[0].numChannels);
    EXPECT_EQ(0, data.inputs[1].numChannels);
    EXPECT_EQ(HostProcessData::kMaxChannelsPerBus, data.inputs[2].numChannels);
    EXPECT_EQ(nullptr, data.inputs[2].channelBuffers32[63]);

    EXPECT_FALSE(data.prepare(component, 64, 7));
    data.unprepare();
    EXPECT_EQ(0, data.numInputs);
    EXPECT_EQ(nullptr, data.inputs);
}
