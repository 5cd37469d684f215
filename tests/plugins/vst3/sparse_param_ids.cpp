// A gain whose parameter ids are not their indices: 1000 for the gain, which lies beyond the
// parameter count, then 2 and 77. The gain takes effect from the sample offset at which a change
// arrives, so a host's timing of changes shows in the audio.
#include "selfcontrolled.h"

#include <cstdio>

using namespace vst3;

namespace {

constexpr ParamID kGainId = 1000;
constexpr ParamID kIds[] = {kGainId, 2, 77};
constexpr const char16_t* kTitles[] = {u"Gain", u"Pan", u"Mix"};
constexpr int32 kCount = 3;

int32 slotOf(ParamID id)
{
    for (int32 i = 0; i < kCount; ++i)
        if (kIds[i] == id) return i;
    return -1;
}

class SparseIds final : public vst3plugin::SelfControlled
{
public:
    tresult PLUGIN_API process(ProcessData& data) override
    {
        // The gain in force before this block, then each point from its offset on.
        int32 changeAt = data.numSamples;
        double next = m_gain;
        if (IParameterChanges* changes = data.inputParameterChanges)
        {
            for (int32 i = 0; i < changes->getParameterCount(); ++i)
            {
                IParamValueQueue* queue = changes->getParameterData(i);
                if (!queue || queue->getParameterId() != kGainId || queue->getPointCount() < 1)
                    continue;
                queue->getPoint(0, changeAt, next);
            }
        }
        if (data.numInputs < 1 || data.numOutputs < 1) return kResultOk;
        for (int32 c = 0; c < 2; ++c)
        {
            const float* in = data.inputs[0].channelBuffers32[c];
            float* out = data.outputs[0].channelBuffers32[c];
            for (int32 s = 0; s < data.numSamples; ++s)
                out[s] = in[s] * static_cast<float>(2.0 * (s < changeAt ? m_gain : next));
        }
        m_gain = next;
        return kResultOk;
    }

    int32 PLUGIN_API getParameterCount() override { return kCount; }
    tresult PLUGIN_API getParameterInfo(int32 index, ParameterInfo& info) override
    {
        if (index < 0 || index >= kCount) return kInvalidArgument;
        info = {};
        info.id = kIds[index];
        vst3plugin::putText(info.title, kTitles[index]);
        info.flags = ParameterInfo::kCanAutomate;
        return kResultOk;
    }
    tresult PLUGIN_API getParamStringByValue(ParamID id, ParamValue value,
                                             String128 string) override
    {
        if (slotOf(id) < 0) return kInvalidArgument;
        char text[32];
        std::snprintf(text, sizeof text, "%u:%.2f", id, value);
        vst3plugin::putText(string, text);
        return kResultOk;
    }
    ParamValue PLUGIN_API getParamNormalized(ParamID id) override
    {
        const int32 slot = slotOf(id);
        return slot < 0 ? 0.0 : m_values[slot];
    }
    tresult PLUGIN_API setParamNormalized(ParamID id, ParamValue value) override
    {
        const int32 slot = slotOf(id);
        if (slot < 0) return kInvalidArgument;
        m_values[slot] = value;
        return kResultOk;
    }

private:
    double m_gain = 0.5;
    double m_values[kCount] = {0.5, 0.5, 0.5};
};

} // namespace

IPluginFactory* PLUGIN_API GetPluginFactory()
{
    return vst3plugin::singleClassFactory<SparseIds>(
        FUID(0x5A11D0E5, 0x7B2C4A9E, 0x86D3F041, 0x2C9B7E63), "Sparse Ids", "Fx");
}
