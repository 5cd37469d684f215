// The base of small test plug-ins whose component is also their controller: one stereo object
// that answers every interface a host asks of it, has no parameters and no view, and keeps no
// state. A plug-in overrides only what makes it different.
#pragma once

#include "pluginterfaces/vst/ivsteditcontroller.h"
#include "stereoeffect.h"

#include <new>

namespace vst3plugin {

class SelfControlled : public StereoEffect<IEditController>
{
public:
    SelfControlled() : StereoEffect(u"Stereo", u"Stereo") {}

    tresult PLUGIN_API queryInterface(const TUID iid, void** obj) override
    {
        if (!obj) return kInvalidArgument;
        *obj = nullptr;
        IComponent* component = this;
        if (answer<FUnknown>(this, iid, obj, component) ||
            answer<IPluginBase>(this, iid, obj, component) ||
            answer<IComponent>(this, iid, obj, component) ||
            answer<IAudioProcessor>(this, iid, obj, this) ||
            answer<IEditController>(this, iid, obj, this))
            return kResultOk;
        return kNoInterface;
    }
    tresult PLUGIN_API initialize(FUnknown*) override { return kResultOk; }
    tresult PLUGIN_API terminate() override { return kResultOk; }

    // IComponent
    tresult PLUGIN_API getControllerClassId(TUID) override { return kNotImplemented; }
    // Serves both interfaces: one object, one (empty) state.
    tresult PLUGIN_API setState(IBStream*) override { return kResultOk; }
    tresult PLUGIN_API getState(IBStream*) override { return kResultOk; }

    // IAudioProcessor: leaves the outputs as the host gave them.
    tresult PLUGIN_API process(ProcessData&) override { return kResultOk; }

    // IEditController
    tresult PLUGIN_API setComponentState(IBStream*) override { return kResultOk; }
    int32 PLUGIN_API getParameterCount() override { return 0; }
    tresult PLUGIN_API getParameterInfo(int32, ParameterInfo&) override { return kInvalidArgument; }
    tresult PLUGIN_API getParamStringByValue(ParamID, ParamValue, String128) override
    {
        return kInvalidArgument;
    }
    tresult PLUGIN_API getParamValueByString(ParamID, TChar*, ParamValue&) override
    {
        return kNotImplemented;
    }
    ParamValue PLUGIN_API normalizedParamToPlain(ParamID, ParamValue value) override
    {
        return value;
    }
    ParamValue PLUGIN_API plainParamToNormalized(ParamID, ParamValue value) override
    {
        return value;
    }
    ParamValue PLUGIN_API getParamNormalized(ParamID) override { return 0.0; }
    tresult PLUGIN_API setParamNormalized(ParamID, ParamValue) override { return kResultFalse; }
    tresult PLUGIN_API setComponentHandler(IComponentHandler*) override { return kResultOk; }
    IPlugView* PLUGIN_API createView(FIDString) override { return nullptr; }

protected:
    ~SelfControlled() override = default;
};

// The module's factory over one class made by Plugin's default constructor.
template <class Plugin>
IPluginFactory* singleClassFactory(const FUID& cid, const char* name, const char* subCategories)
{
    static const ClassEntry classes[] = {
        {classInfo(cid, kVstAudioEffectClass, name, subCategories, "1.0.0"),
         []() -> FUnknown* { return static_cast<IComponent*>(new (std::nothrow) Plugin()); }},
    };
    static Factory factory("tqvst", classes, 1);
    factory.addRef();
    return &factory;
}

} // namespace vst3plugin
