// A plug-in whose component is its own controller: one object answers IComponent,
// IAudioProcessor and IEditController, so a host must initialise and terminate it once only.
// It counts those calls and reports them as read-only parameters.
#include "hosting/streamer.h"
#include "editcontroller.h"
#include "moduleentry.h"
#include "stereoeffect.h"

using namespace vst3;

namespace {

const FUID kClassId(0x51A6E0B2, 0x3C7D4F10, 0x8E21A9D4, 0x6B0C5F37);

enum : ParamID
{
    kGainId,
    kInitializeCountId,
    kTerminateCountId,
    kParameterCount
};

class SingleObject final : public vst3plugin::StereoEffect<vst3plugin::EditController>
{
public:
    SingleObject() : StereoEffect(u"Stereo", u"Stereo") {}

    tresult PLUGIN_API initialize(FUnknown*) override
    {
        ++m_initializeCount;
        return kResultOk;
    }
    tresult PLUGIN_API terminate() override
    {
        ++m_terminateCount;
        return kResultOk;
    }

    // IComponent
    tresult PLUGIN_API getControllerClassId(TUID) override { return kNotImplemented; }
    tresult PLUGIN_API setState(IBStream* stream) override
    {
        return IBStreamer(stream).readDouble(m_gain) ? kResultOk : kResultFalse;
    }
    tresult PLUGIN_API getState(IBStream* stream) override
    {
        return IBStreamer(stream).writeDouble(m_gain) ? kResultOk : kResultFalse;
    }

    // IAudioProcessor
    tresult PLUGIN_API process(ProcessData& data) override
    {
        if (IParameterChanges* changes = data.inputParameterChanges)
        {
            for (int32 i = 0; i < changes->getParameterCount(); ++i)
            {
                IParamValueQueue* queue = changes->getParameterData(i);
                int32 offset = 0;
                ParamValue value = 0;
                if (queue && queue->getParameterId() == kGainId &&
                    queue->getPoint(queue->getPointCount() - 1, offset, value) == kResultOk)
                    m_gain = value;
            }
        }
        scale(data, static_cast<float>(2.0 * m_gain));
        return kResultOk;
    }

    // IEditController. setState and getState above serve both interfaces: one object, one state.
    int32 PLUGIN_API getParameterCount() override { return static_cast<int32>(kParameterCount); }
    tresult PLUGIN_API getParameterInfo(int32 index, ParameterInfo& info) override
    {
        if (index < 0 || index >= static_cast<int32>(kParameterCount)) return kInvalidArgument;
        info = {};
        info.id = static_cast<ParamID>(index);
        static const char16_t* const titles[] = {u"Gain", u"Initialized", u"Terminated"};
        vst3plugin::putText(info.title, titles[index]);
        info.flags = index == kGainId ? ParameterInfo::kCanAutomate : ParameterInfo::kIsReadOnly;
        info.stepCount = index == kGainId ? 0 : 10;
        return kResultOk;
    }
    tresult PLUGIN_API getParamStringByValue(ParamID, ParamValue, String128 string) override
    {
        string[0] = 0;
        return kResultOk;
    }
    // The counts read as tenths, so one call is 0.1.
    ParamValue PLUGIN_API getParamNormalized(ParamID id) override
    {
        switch (id)
        {
        case kGainId:
            return m_gain;
        case kInitializeCountId:
            return m_initializeCount / 10.0;
        case kTerminateCountId:
            return m_terminateCount / 10.0;
        }
        return 0.0;
    }
    tresult PLUGIN_API setParamNormalized(ParamID id, ParamValue value) override
    {
        if (id != kGainId) return kResultFalse;
        m_gain = value;
        return kResultOk;
    }

private:
    ~SingleObject() = default;

    double m_gain = 0.5;
    int m_initializeCount = 0;
    int m_terminateCount = 0;
};

} // namespace

IPluginFactory* PLUGIN_API GetPluginFactory()
{
    return vst3plugin::singleClassFactory<SingleObject>(kClassId, "Single Object", "Fx");
}
