// A stereo gain built as most VST3 plug-ins are: processor and controller as separate classes,
// joined through connection points, with a bypass, a read-only peak meter, and a program-change
// parameter on the root unit backed by a unit program list.
#include "hosting/streamer.h"
#include "editcontroller.h"
#include "moduleentry.h"
#include "pluginterfaces/vst/ivsthostapplication.h"
#include "pluginterfaces/vst/ivstunits.h"
#include "stereoeffect.h"

#include <cmath>
#include <cstdio>
#include <new>

using namespace vst3;

namespace {

const FUID kProcessorId(0x7E5A3B10, 0x4C1D4E2A, 0x9B3F6C71, 0x0D2E8A41);
const FUID kControllerId(0x7E5A3B11, 0x4C1D4E2A, 0x9B3F6C71, 0x0D2E8A41);

enum : ParamID
{
    kGainId,
    kBypassId,
    kPeakId,
    kProgramId,
    kParameterCount
};

constexpr ProgramListID kProgramListId = 1;

struct Program
{
    const char16_t* name;
    double gain;
};
constexpr Program kPrograms[] = {{u"Unity", 0.5}, {u"Half", 0.25}, {u"Silence", 0.0}};
constexpr int32 kProgramCount = 3;

// The program a normalised value of the program-change parameter selects.
int32 programOf(ParamValue value)
{
    const long index = std::lround(value * (kProgramCount - 1));
    return index < 0 ? 0 : index >= kProgramCount ? kProgramCount - 1 : static_cast<int32>(index);
}

// What the processor keeps and both sides exchange: normalised gain (linear gain is twice it)
// and the bypass switch.
struct GainState
{
    double gain = 0.5;
    int32 bypass = 0;

    bool read(IBStream* stream)
    {
        IBStreamer streamer(stream);
        GainState read;
        if (!streamer.readDouble(read.gain) || !streamer.readInt32(read.bypass)) return false;
        *this = read;
        return true;
    }
    bool write(IBStream* stream) const
    {
        IBStreamer streamer(stream);
        return streamer.writeDouble(gain) && streamer.writeInt32(bypass);
    }
};

class Processor final : public vst3plugin::StereoEffect<IConnectionPoint>
{
public:
    Processor() : StereoEffect(u"Stereo In", u"Stereo Out") {}

    tresult PLUGIN_API initialize(FUnknown* context) override
    {
        if (context)
            context->queryInterface(IHostApplication::iid, reinterpret_cast<void**>(&m_host));
        return kResultOk;
    }
    tresult PLUGIN_API terminate() override
    {
        if (m_host) m_host->release();
        m_host = nullptr;
        return kResultOk;
    }

    tresult PLUGIN_API getControllerClassId(TUID classId) override
    {
        std::memcpy(classId, kControllerId.toTUID(), sizeof(TUID));
        return kResultOk;
    }
    tresult PLUGIN_API setState(IBStream* stream) override
    {
        return m_state.read(stream) ? kResultOk : kResultFalse;
    }
    tresult PLUGIN_API getState(IBStream* stream) override
    {
        return m_state.write(stream) ? kResultOk : kResultFalse;
    }

    tresult PLUGIN_API process(ProcessData& data) override
    {
        applyChanges(data.inputParameterChanges);
        if (data.numInputs < 1 || data.numOutputs < 1 || data.numSamples <= 0) return kResultOk;
        const float peak =
            scale(data, m_state.bypass ? 1.0f : static_cast<float>(2.0 * m_state.gain));
        if (data.outputParameterChanges)
        {
            int32 index = 0;
            if (IParamValueQueue* queue =
                    data.outputParameterChanges->addParameterData(kPeakId, index))
                queue->addPoint(0, peak > 1.0f ? 1.0 : peak, index);
        }
        return kResultOk;
    }

    // On connecting, the processor tells the controller its state as a binary attribute.
    tresult PLUGIN_API connect(IConnectionPoint* other) override
    {
        if (!other || m_peer) return kResultFalse;
        m_peer = other;
        m_peer->addRef();
        if (!m_host) return kResultOk;
        IMessage* message = nullptr;
        TUID iid;
        std::memcpy(iid, IMessage::iid.toTUID(), sizeof iid);
        if (m_host->createInstance(iid, iid, reinterpret_cast<void**>(&message)) != kResultOk ||
            !message)
            return kResultOk;
        message->setMessageID("GainState");
        if (IAttributeList* attributes = message->getAttributes())
        {
            attributes->setBinary("state", &m_state, sizeof m_state);
            attributes->setInt("programs", kProgramCount);
        }
        m_peer->notify(message);
        message->release();
        return kResultOk;
    }
    tresult PLUGIN_API disconnect(IConnectionPoint* other) override
    {
        if (!m_peer || other != m_peer) return kResultFalse;
        m_peer->release();
        m_peer = nullptr;
        return kResultOk;
    }
    tresult PLUGIN_API notify(IMessage*) override { return kResultOk; }

private:
    ~Processor() { terminate(); }

    void applyChanges(IParameterChanges* changes)
    {
        if (!changes) return;
        for (int32 i = 0; i < changes->getParameterCount(); ++i)
        {
            IParamValueQueue* queue = changes->getParameterData(i);
            int32 offset = 0;
            ParamValue value = 0;
            if (!queue || queue->getPoint(queue->getPointCount() - 1, offset, value) != kResultOk)
                continue;
            switch (queue->getParameterId())
            {
            case kGainId:
                m_state.gain = value;
                break;
            case kBypassId:
                m_state.bypass = value >= 0.5 ? 1 : 0;
                break;
            case kProgramId:
                m_state.gain = kPrograms[programOf(value)].gain;
                break;
            }
        }
    }

    IHostApplication* m_host = nullptr;
    IConnectionPoint* m_peer = nullptr;
    GainState m_state;
};

class Controller final
    : public vst3plugin::Object<vst3plugin::EditController, IConnectionPoint, IUnitInfo>
{
public:
    tresult PLUGIN_API initialize(FUnknown*) override { return kResultOk; }
    tresult PLUGIN_API terminate() override
    {
        setComponentHandler(nullptr);
        return kResultOk;
    }

    tresult PLUGIN_API setComponentState(IBStream* stream) override
    {
        GainState state;
        if (!state.read(stream)) return kResultFalse;
        m_values[kGainId] = state.gain;
        m_values[kBypassId] = state.bypass;
        return kResultOk;
    }
    // The controller's own state is the selected program.
    tresult PLUGIN_API setState(IBStream* stream) override
    {
        double program = 0;
        if (!IBStreamer(stream).readDouble(program)) return kResultFalse;
        m_values[kProgramId] = program;
        return kResultOk;
    }
    tresult PLUGIN_API getState(IBStream* stream) override
    {
        return IBStreamer(stream).writeDouble(m_values[kProgramId]) ? kResultOk : kResultFalse;
    }

    int32 PLUGIN_API getParameterCount() override { return static_cast<int32>(kParameterCount); }
    tresult PLUGIN_API getParameterInfo(int32 index, ParameterInfo& info) override
    {
        if (index < 0 || index >= static_cast<int32>(kParameterCount)) return kInvalidArgument;
        info = {};
        info.id = static_cast<ParamID>(index);
        info.unitId = kRootUnitId;
        switch (info.id)
        {
        case kGainId:
            vst3plugin::putText(info.title, u"Gain");
            vst3plugin::putText(info.shortTitle, u"Gain");
            vst3plugin::putText(info.units, u"x");
            info.defaultNormalizedValue = 0.5;
            info.flags = ParameterInfo::kCanAutomate;
            break;
        case kBypassId:
            vst3plugin::putText(info.title, u"Bypass");
            info.stepCount = 1;
            info.flags = ParameterInfo::kCanAutomate | ParameterInfo::kIsBypass;
            break;
        case kPeakId:
            vst3plugin::putText(info.title, u"Peak");
            info.flags = ParameterInfo::kIsReadOnly;
            break;
        case kProgramId:
            vst3plugin::putText(info.title, u"Program");
            info.stepCount = kProgramCount - 1;
            info.flags = ParameterInfo::kIsProgramChange | ParameterInfo::kIsList;
            break;
        }
        return kResultOk;
    }
    tresult PLUGIN_API getParamStringByValue(ParamID id, ParamValue value,
                                             String128 string) override
    {
        char text[32];
        switch (id)
        {
        case kGainId:
            std::snprintf(text, sizeof text, "%.3f", 2.0 * value);
            break;
        case kBypassId:
            std::snprintf(text, sizeof text, "%s", value >= 0.5 ? "On" : "Off");
            break;
        case kPeakId:
            std::snprintf(text, sizeof text, "%.3f", value);
            break;
        case kProgramId:
            vst3plugin::putText(string, kPrograms[programOf(value)].name);
            return kResultOk;
        default:
            return kInvalidArgument;
        }
        vst3plugin::putText(string, text);
        return kResultOk;
    }
    ParamValue PLUGIN_API getParamNormalized(ParamID id) override
    {
        return id < kParameterCount ? m_values[id] : 0.0;
    }
    tresult PLUGIN_API setParamNormalized(ParamID id, ParamValue value) override
    {
        if (id >= kParameterCount) return kInvalidArgument;
        m_values[id] = value;
        return kResultOk;
    }
    tresult PLUGIN_API setComponentHandler(IComponentHandler* handler) override
    {
        if (handler) handler->addRef();
        if (m_handler) m_handler->release();
        m_handler = handler;
        return kResultOk;
    }

    tresult PLUGIN_API connect(IConnectionPoint* other) override
    {
        return other ? kResultOk : kInvalidArgument;
    }
    tresult PLUGIN_API disconnect(IConnectionPoint*) override { return kResultOk; }
    // The processor's greeting carries its state; the controller takes the values from it.
    tresult PLUGIN_API notify(IMessage* message) override
    {
        if (!message || !message->getMessageID() ||
            std::strcmp(message->getMessageID(), "GainState") != 0)
            return kResultFalse;
        const void* data = nullptr;
        uint32 size = 0;
        IAttributeList* attributes = message->getAttributes();
        if (!attributes || attributes->getBinary("state", data, size) != kResultOk ||
            size != sizeof(GainState))
            return kResultFalse;
        GainState state;
        std::memcpy(&state, data, sizeof state);
        m_values[kGainId] = state.gain;
        m_values[kBypassId] = state.bypass;
        return kResultOk;
    }

    int32 PLUGIN_API getUnitCount() override { return 1; }
    tresult PLUGIN_API getUnitInfo(int32 index, UnitInfo& info) override
    {
        if (index != 0) return kInvalidArgument;
        info = {};
        info.id = kRootUnitId;
        info.parentUnitId = kNoParentUnitId;
        vst3plugin::putText(info.name, u"Root");
        info.programListId = kProgramListId;
        return kResultOk;
    }
    int32 PLUGIN_API getProgramListCount() override { return 1; }
    tresult PLUGIN_API getProgramListInfo(int32 index, ProgramListInfo& info) override
    {
        if (index != 0) return kInvalidArgument;
        info = {};
        info.id = kProgramListId;
        vst3plugin::putText(info.name, u"Programs");
        info.programCount = kProgramCount;
        return kResultOk;
    }
    tresult PLUGIN_API getProgramName(ProgramListID listId, int32 index, String128 name) override
    {
        if (listId != kProgramListId || index < 0 || index >= kProgramCount)
            return kInvalidArgument;
        vst3plugin::putText(name, kPrograms[index].name);
        return kResultOk;
    }
    tresult PLUGIN_API getProgramInfo(ProgramListID, int32, CString, String128) override
    {
        return kNotImplemented;
    }
    tresult PLUGIN_API hasProgramPitchNames(ProgramListID, int32) override { return kResultFalse; }
    tresult PLUGIN_API getProgramPitchName(ProgramListID, int32, int16, String128) override
    {
        return kResultFalse;
    }
    UnitID PLUGIN_API getSelectedUnit() override { return kRootUnitId; }
    tresult PLUGIN_API selectUnit(UnitID) override { return kResultOk; }
    tresult PLUGIN_API getUnitByBus(MediaType, BusDirection, int32, int32, UnitID&) override
    {
        return kResultFalse;
    }
    tresult PLUGIN_API setUnitProgramData(int32, int32, IBStream*) override
    {
        return kNotImplemented;
    }

private:
    ~Controller() { setComponentHandler(nullptr); }

    IComponentHandler* m_handler = nullptr;
    double m_values[kParameterCount] = {0.5, 0.0, 0.0, 0.0};
};

const vst3plugin::ClassEntry kClasses[] = {
    {vst3plugin::classInfo(kProcessorId, kVstAudioEffectClass, "TqGain3", "Fx", "1.2.3.4"),
     []() -> FUnknown* { return static_cast<IComponent*>(new (std::nothrow) Processor()); }},
    {vst3plugin::classInfo(kControllerId, kVstComponentControllerClass, "TqGain3 Controller", "",
                           "1.2.3.4"),
     []() -> FUnknown* { return static_cast<IEditController*>(new (std::nothrow) Controller()); }},
};

} // namespace

IPluginFactory* PLUGIN_API GetPluginFactory()
{
    return vst3plugin::moduleFactory(kClasses);
}
