// The part every stereo test effect shares: a reference-counted object with one stereo bus each
// way, 32-bit samples only, no latency and no tail, that answers the interfaces it is made of. A
// plug-in derives from StereoEffect, adds its own interfaces, and writes only what makes it
// different: its state and its process.
#pragma once

#include "pluginterfaces/vst/ivstaudioprocessor.h"
#include "pluginterfaces/vst/vstspeaker.h"
#include "vst3plugin.h"

#include <cmath>
#include <new>

namespace vst3plugin {

// Reference counting for an object made of several interfaces, the first of which also stands for
// FUnknown; the last release deletes it.
template <class... Interfaces>
class Object : public Interfaces...
{
public:
    tresult PLUGIN_API queryInterface(const TUID iid, void** obj) override
    {
        return queryAmong<Interfaces...>(this, iid, obj);
    }
    uint32 PLUGIN_API addRef() override { return ++m_refs; }
    uint32 PLUGIN_API release() override
    {
        const uint32 left = --m_refs;
        if (left == 0) delete this;
        return left;
    }

protected:
    virtual ~Object() = default;

private:
    std::atomic<uint32> m_refs{1};
};

template <class... Extra>
class StereoEffect : public Object<IComponent, IAudioProcessor, Extra...>
{
public:
    StereoEffect(const char16_t* inputName, const char16_t* outputName)
        : m_inputName(inputName), m_outputName(outputName)
    {
    }

    tresult PLUGIN_API setIoMode(IoMode) override { return kResultOk; }
    int32 PLUGIN_API getBusCount(MediaType type, BusDirection) override
    {
        return type == kAudio ? 1 : 0;
    }
    tresult PLUGIN_API getBusInfo(MediaType type, BusDirection dir, int32 index,
                                  BusInfo& bus) override
    {
        if (type != kAudio || index != 0) return kInvalidArgument;
        bus = {};
        bus.mediaType = kAudio;
        bus.direction = dir;
        bus.channelCount = 2;
        putText(bus.name, dir == kInput ? m_inputName : m_outputName);
        bus.busType = kMain;
        bus.flags = BusInfo::kDefaultActive;
        return kResultOk;
    }
    tresult PLUGIN_API getRoutingInfo(RoutingInfo&, RoutingInfo&) override
    {
        return kNotImplemented;
    }
    tresult PLUGIN_API activateBus(MediaType type, BusDirection, int32 index, TBool) override
    {
        return type == kAudio && index == 0 ? kResultOk : kInvalidArgument;
    }
    tresult PLUGIN_API setActive(TBool) override { return kResultOk; }

    tresult PLUGIN_API setBusArrangements(SpeakerArrangement* inputs, int32 numIns,
                                          SpeakerArrangement* outputs, int32 numOuts) override
    {
        return numIns == 1 && numOuts == 1 && inputs[0] == SpeakerArr::kStereo &&
                       outputs[0] == SpeakerArr::kStereo
                   ? kResultOk
                   : kResultFalse;
    }
    tresult PLUGIN_API getBusArrangement(BusDirection, int32 index,
                                         SpeakerArrangement& arr) override
    {
        if (index != 0) return kInvalidArgument;
        arr = SpeakerArr::kStereo;
        return kResultOk;
    }
    tresult PLUGIN_API canProcessSampleSize(int32 size) override
    {
        return size == kSample32 ? kResultOk : kResultFalse;
    }
    uint32 PLUGIN_API getLatencySamples() override { return 0; }
    tresult PLUGIN_API setupProcessing(ProcessSetup&) override { return kResultOk; }
    tresult PLUGIN_API setProcessing(TBool) override { return kResultOk; }
    uint32 PLUGIN_API getTailSamples() override { return kNoTail; }

protected:
    // Scales the first input bus into the first output bus, at most two channels, skipping
    // any channel a host left without a buffer; returns the peak it wrote.
    static float scale(const ProcessData& data, float gain)
    {
        float peak = 0.0f;
        if (data.numInputs < 1 || data.numOutputs < 1) return peak;
        const AudioBusBuffers& in = data.inputs[0];
        const AudioBusBuffers& out = data.outputs[0];
        for (int32 c = 0; c < 2 && c < in.numChannels && c < out.numChannels; ++c)
        {
            const float* source = in.channelBuffers32[c];
            float* target = out.channelBuffers32[c];
            if (!source || !target) continue;
            for (int32 i = 0; i < data.numSamples; ++i)
            {
                target[i] = source[i] * gain;
                peak = std::fmax(peak, std::fabs(target[i]));
            }
        }
        return peak;
    }

private:
    const char16_t* m_inputName;
    const char16_t* m_outputName;
};

// The module's factory over one audio class made by Plugin's default constructor.
template <class Plugin>
IPluginFactory* singleClassFactory(const FUID& cid, const char* name, const char* subCategories)
{
    static const ClassEntry classes[] = {
        {classInfo(cid, kVstAudioEffectClass, name, subCategories, "1.0.0"),
         []() -> FUnknown* { return static_cast<IComponent*>(new (std::nothrow) Plugin()); }},
    };
    return moduleFactory(classes);
}

} // namespace vst3plugin
