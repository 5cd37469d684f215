// A component and a controller that do nothing, for tests to override what they look at.
// They live on the stack: reference counting is a no-op.
#pragma once

#include "pluginterfaces/vst/ivstcomponent.h"
#include "pluginterfaces/vst/ivsteditcontroller.h"

namespace vst3test {

using namespace vst3;

// What both stubs answer as an object: no other interface, and a start and end that succeed.
template <class Interface>
class Stub : public Interface
{
public:
    tresult PLUGIN_API queryInterface(const TUID, void** obj) override
    {
        *obj = nullptr;
        return kNoInterface;
    }
    uint32 PLUGIN_API addRef() override { return 1; }
    uint32 PLUGIN_API release() override { return 1; }
    tresult PLUGIN_API initialize(FUnknown*) override { return kResultOk; }
    tresult PLUGIN_API terminate() override { return kResultOk; }
};

class StubComponent : public Stub<IComponent>
{
public:
    tresult PLUGIN_API getControllerClassId(TUID) override { return kNotImplemented; }
    tresult PLUGIN_API setIoMode(IoMode) override { return kNotImplemented; }
    int32 PLUGIN_API getBusCount(MediaType, BusDirection) override { return 0; }
    tresult PLUGIN_API getBusInfo(MediaType, BusDirection, int32, BusInfo&) override
    {
        return kInvalidArgument;
    }
    tresult PLUGIN_API getRoutingInfo(RoutingInfo&, RoutingInfo&) override
    {
        return kNotImplemented;
    }
    tresult PLUGIN_API activateBus(MediaType, BusDirection, int32, TBool) override
    {
        return kResultOk;
    }
    tresult PLUGIN_API setActive(TBool) override { return kResultOk; }
    tresult PLUGIN_API setState(IBStream*) override { return kNotImplemented; }
    tresult PLUGIN_API getState(IBStream*) override { return kNotImplemented; }
};

class StubController : public Stub<IEditController>
{
public:
    tresult PLUGIN_API setComponentState(IBStream*) override { return kNotImplemented; }
    tresult PLUGIN_API setState(IBStream*) override { return kNotImplemented; }
    tresult PLUGIN_API getState(IBStream*) override { return kNotImplemented; }
    int32 PLUGIN_API getParameterCount() override { return 0; }
    tresult PLUGIN_API getParameterInfo(int32, ParameterInfo&) override { return kResultFalse; }
    tresult PLUGIN_API getParamStringByValue(ParamID, ParamValue, String128) override
    {
        return kResultFalse;
    }
    tresult PLUGIN_API getParamValueByString(ParamID, TChar*, ParamValue&) override
    {
        return kResultFalse;
    }
    ParamValue PLUGIN_API normalizedParamToPlain(ParamID, ParamValue value) override
    {
        return value;
    }
    ParamValue PLUGIN_API plainParamToNormalized(ParamID, ParamValue value) override
    {
        return value;
    }
    ParamValue PLUGIN_API getParamNormalized(ParamID) override { return 0; }
    tresult PLUGIN_API setParamNormalized(ParamID, ParamValue) override { return kResultOk; }
    tresult PLUGIN_API setComponentHandler(IComponentHandler*) override { return kResultOk; }
    IPlugView* PLUGIN_API createView(FIDString) override { return nullptr; }
};

} // namespace vst3test
