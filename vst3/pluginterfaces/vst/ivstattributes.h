// A list of named values of four kinds, carried by messages between component and controller.
#pragma once

#include "pluginterfaces/base/funknown.h"
#include "vsttypes.h"

namespace vst3 {

class IAttributeList : public FUnknown
{
public:
    using AttrID = const char*;

    virtual tresult PLUGIN_API setInt(AttrID id, int64 value) = 0;
    virtual tresult PLUGIN_API getInt(AttrID id, int64& value) = 0;
    virtual tresult PLUGIN_API setFloat(AttrID id, double value) = 0;
    virtual tresult PLUGIN_API getFloat(AttrID id, double& value) = 0;
    virtual tresult PLUGIN_API setString(AttrID id, const TChar* string) = 0;
    // The size is in bytes, not characters.
    virtual tresult PLUGIN_API getString(AttrID id, TChar* string, uint32 sizeInBytes) = 0;
    virtual tresult PLUGIN_API setBinary(AttrID id, const void* data, uint32 sizeInBytes) = 0;
    virtual tresult PLUGIN_API getBinary(AttrID id, const void*& data, uint32& sizeInBytes) = 0;

    static constexpr FUID iid{0x1E5F0AEB, 0xCC7F4533, 0xA2544011, 0x38AD5EE4};
};

} // namespace vst3
