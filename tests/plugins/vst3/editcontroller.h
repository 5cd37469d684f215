// An edit controller with no parameters and no view, for test plug-ins to derive from and
// override only the parts a host is meant to see. Initialize, terminate and the state calls are
// left to the plug-in: where the component is its own controller they serve both interfaces.
#pragma once

#include "pluginterfaces/vst/ivsteditcontroller.h"
#include "vst3plugin.h"

namespace vst3plugin {

class EditController : public IEditController
{
public:
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
};

} // namespace vst3plugin
