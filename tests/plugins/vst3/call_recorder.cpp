// A gain of one half, with component and controller apart, that writes every call a host makes on
// either into the environment variable TQ_VST3_CALLS, so a test sees the order of set-up and
// teardown after the module is gone. It behaves as real plug-ins do: it calls the host back from
// inside initialize and setActive and asks the host for interfaces it may not have. Its buses make
// the host choose: an auxiliary input before the main one, and outputs of which the first main
// bus is off by default and two more main buses are on. It takes any arrangement and reports its
// buses with as many channels as the arrangement has speakers.
#include "callrecord.h"
#include "editcontroller.h"
#include "pluginterfaces/vst/ivsthostapplication.h"
#include "pluginterfaces/vst/ivstmessage.h"
#include "stereoeffect.h"

#include <cstdio>
#include <new>
#include <string>

using namespace vst3;

namespace {

const FUID kProcessorId(0x1C0A7E55, 0x2B6D4F31, 0x9E84A0C2, 0x57D31F06);
const FUID kControllerId(0x1C0A7E56, 0x2B6D4F31, 0x9E84A0C2, 0x57D31F06);

using vst3plugin::recordCall;

// Asks the host for an object of kind I and says whether it came.
template <class I>
const char* made(IHostApplication* host)
{
    void* object = nullptr;
    TUID iid;
    std::memcpy(iid, I::iid.toTUID(), sizeof iid);
    if (!host || host->createInstance(iid, iid, &object) != kResultOk || !object) return "none";
    static_cast<FUnknown*>(object)->release();
    return "made";
}

IHostApplication* hostOf(FUnknown* context)
{
    void* host = nullptr;
    if (!context || context->queryInterface(IHostApplication::iid, &host) != kResultOk)
        return nullptr;
    return static_cast<IHostApplication*>(host);
}

class Processor final : public vst3plugin::StereoEffect<IConnectionPoint>
{
public:
    Processor() : StereoEffect(u"In", u"Out") {}

    tresult PLUGIN_API initialize(FUnknown* context) override
    {
        m_host = hostOf(context);
        recordCall(std::string("C.init:") + made<IMessage>(m_host));
        return kResultOk;
    }
    tresult PLUGIN_API terminate() override
    {
        recordCall("C.term");
        if (m_host) m_host->release();
        m_host = nullptr;
        return kResultOk;
    }
    tresult PLUGIN_API getControllerClassId(TUID classId) override
    {
        std::memcpy(classId, kControllerId.toTUID(), sizeof(TUID));
        return kResultOk;
    }
    tresult PLUGIN_API setState(IBStream*) override { return kResultOk; }
    tresult PLUGIN_API getState(IBStream*) override
    {
        recordCall("C.getState");
        return kResultOk;
    }

    int32 PLUGIN_API getBusCount(MediaType type, BusDirection dir) override
    {
        return type != kAudio ? 0 : dir == kInput ? 2 : 3;
    }
    tresult PLUGIN_API getBusInfo(MediaType type, BusDirection dir, int32 index,
                                  BusInfo& bus) override
    {
        if (type != kAudio || index < 0 || index >= getBusCount(type, dir)) return kInvalidArgument;
        StereoEffect::getBusInfo(type, dir, 0, bus);
        bus.channelCount = __builtin_popcountll(arrangements(dir)[index]);
        if (dir == kInput && index == 0) bus.busType = kAux;
        if (dir == kOutput && index == 0) bus.flags = 0;
        return kResultOk;
    }
    tresult PLUGIN_API activateBus(MediaType, BusDirection dir, int32 index, TBool state) override
    {
        recordCall("C.bus:" + std::to_string(dir) + ":" + std::to_string(index) + ":" +
                   std::to_string(state));
        return kResultOk;
    }
    tresult PLUGIN_API setBusArrangements(SpeakerArrangement* inputs, int32 numIns,
                                          SpeakerArrangement* outputs, int32 numOuts) override
    {
        if (numIns != 2 || numOuts != 3) return kInvalidArgument;
        std::string call = "C.arrange";
        for (int32 i = 0; i < numIns; ++i)
            call += (i ? "," : ":") + hex(m_inputs[i] = inputs[i]);
        for (int32 i = 0; i < numOuts; ++i)
            call += (i ? "," : ":") + hex(m_outputs[i] = outputs[i]);
        recordCall(call);
        return kResultOk;
    }
    tresult PLUGIN_API getBusArrangement(BusDirection dir, int32 index,
                                         SpeakerArrangement& arr) override
    {
        if (index < 0 || index >= getBusCount(kAudio, dir)) return kInvalidArgument;
        arr = arrangements(dir)[index];
        return kResultOk;
    }
    tresult PLUGIN_API setActive(TBool state) override
    {
        // Hosts' objects are made from inside setActive too.
        recordCall("C.active:" + std::to_string(state) + ":" + made<IAttributeList>(m_host));
        return kResultOk;
    }
    tresult PLUGIN_API setupProcessing(ProcessSetup& setup) override
    {
        recordCall("C.setup:" + std::to_string(setup.maxSamplesPerBlock) + ":" +
                   std::to_string(static_cast<int>(setup.sampleRate)));
        return kResultOk;
    }
    tresult PLUGIN_API setProcessing(TBool state) override
    {
        recordCall("C.processing:" + std::to_string(state));
        return kResultOk;
    }
    // The main buses are the second of each direction; the first two channels are halved.
    tresult PLUGIN_API process(ProcessData& data) override
    {
        const ProcessContext* context = data.processContext;
        recordCall("C.process:" + (context ? std::to_string(context->tempo) + ":" +
                                                 std::to_string(context->projectTimeSamples) + ":" +
                                                 std::to_string(context->state)
                                           : std::string("none")));
        if (data.numInputs < 2 || data.numOutputs < 2) return kResultFalse;
        for (int32 c = 0; c < 2; ++c)
            for (int32 s = 0; s < data.numSamples; ++s)
                data.outputs[1].channelBuffers32[c][s] =
                    data.inputs[1].channelBuffers32[c][s] * 0.5f;
        return kResultOk;
    }

    tresult PLUGIN_API connect(IConnectionPoint* other) override
    {
        recordCall(other ? "C.connect" : "C.connect:null");
        return kResultOk;
    }
    tresult PLUGIN_API disconnect(IConnectionPoint*) override
    {
        recordCall("C.disconnect");
        return kResultOk;
    }
    tresult PLUGIN_API notify(IMessage*) override { return kResultOk; }

private:
    static std::string hex(SpeakerArrangement arrangement)
    {
        char text[24];
        std::snprintf(text, sizeof text, "%llx", static_cast<unsigned long long>(arrangement));
        return text;
    }
    SpeakerArrangement* arrangements(BusDirection dir)
    {
        return dir == kInput ? m_inputs : m_outputs;
    }

    IHostApplication* m_host = nullptr;
    SpeakerArrangement m_inputs[2] = {SpeakerArr::kStereo, SpeakerArr::kStereo};
    SpeakerArrangement m_outputs[3] = {SpeakerArr::kStereo, SpeakerArr::kStereo,
                                       SpeakerArr::kStereo};
};

class Controller final : public vst3plugin::Object<vst3plugin::EditController, IConnectionPoint>
{
public:
    tresult PLUGIN_API initialize(FUnknown* context) override
    {
        std::string name = "none";
        if (IHostApplication* host = hostOf(context))
        {
            String128 text = {};
            host->getName(text);
            name.clear();
            for (int i = 0; text[i]; ++i)
                name += static_cast<char>(text[i]);
            host->release();
        }
        recordCall("E.init:" + name);
        return kResultOk;
    }
    tresult PLUGIN_API terminate() override
    {
        recordCall("E.term");
        return kResultOk;
    }
    tresult PLUGIN_API setComponentState(IBStream*) override
    {
        recordCall("E.setComponentState");
        return kResultOk;
    }
    tresult PLUGIN_API setState(IBStream*) override { return kResultOk; }
    tresult PLUGIN_API getState(IBStream*) override { return kResultOk; }
    // Asks the handler for its second version, which a host need not have, and for a restart it
    // refuses.
    tresult PLUGIN_API setComponentHandler(IComponentHandler* handler) override
    {
        if (!handler) return kResultOk;
        void* second = nullptr;
        const bool has = handler->queryInterface(IComponentHandler2::iid, &second) == kResultOk;
        if (has) static_cast<FUnknown*>(second)->release();
        recordCall(std::string("E.handler:") + (has ? "v2" : "v1") + ":restart" +
                   std::to_string(handler->restartComponent(kLatencyChanged)));
        return kResultOk;
    }

    tresult PLUGIN_API connect(IConnectionPoint*) override
    {
        recordCall("E.connect");
        return kResultOk;
    }
    tresult PLUGIN_API disconnect(IConnectionPoint*) override
    {
        recordCall("E.disconnect");
        return kResultOk;
    }
    tresult PLUGIN_API notify(IMessage*) override { return kResultOk; }
};

const vst3plugin::ClassEntry kClasses[] = {
    {vst3plugin::classInfo(kProcessorId, kVstAudioEffectClass, "Call Recorder", "Fx", "1.0.0"),
     []() -> FUnknown* { return static_cast<IComponent*>(new (std::nothrow) Processor()); }},
    {vst3plugin::classInfo(kControllerId, kVstComponentControllerClass, "Call Recorder Controller",
                           "", "1.0.0"),
     []() -> FUnknown* { return static_cast<IEditController*>(new (std::nothrow) Controller()); }},
};

} // namespace

IPluginFactory* PLUGIN_API GetPluginFactory()
{
    return vst3plugin::moduleFactory(kClasses);
}
