// Parameter changes of one processing block: one queue of points per changed parameter.
#pragma once

#include "pluginterfaces/base/funknown.h"
#include "vsttypes.h"

namespace vst3 {

class IParamValueQueue : public FUnknown
{
public:
    virtual ParamID PLUGIN_API getParameterId() = 0;
    virtual int32 PLUGIN_API getPointCount() = 0;
    virtual tresult PLUGIN_API getPoint(int32 index, int32& sampleOffset, ParamValue& value) = 0;
    virtual tresult PLUGIN_API addPoint(int32 sampleOffset, ParamValue value, int32& index) = 0;

    static constexpr FUID iid{0x01263A18, 0xED074F6F, 0x98C9D356, 0x4686F9BA};
};

class IParameterChanges : public FUnknown
{
public:
    virtual int32 PLUGIN_API getParameterCount() = 0;
    virtual IParamValueQueue* PLUGIN_API getParameterData(int32 index) = 0;
    virtual IParamValueQueue* PLUGIN_API addParameterData(const ParamID& id, int32& index) = 0;

    static constexpr FUID iid{0xA4779663, 0x0BB64A56, 0xB44384A8, 0x466FEB9D};
};

} // namespace vst3
