// The host's attribute list: named integers, floats, texts and binary blobs.
#pragma once

#include "objectbase.h"
#include "pluginterfaces/vst/ivstattributes.h"

#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace vst3 {

class HostAttributeList final : public IAttributeList
{
public:
    HostAttributeList() = default;
    HostAttributeList(const HostAttributeList&) = delete;
    HostAttributeList& operator=(const HostAttributeList&) = delete;

    VST3_OBJECT_METHODS(IAttributeList)

    // Setting an id again replaces its value, whatever the kind. Reading an id as another kind
    // than it holds answers kResultFalse.
    tresult PLUGIN_API setInt(AttrID id, int64 value) override;
    tresult PLUGIN_API getInt(AttrID id, int64& value) override;
    tresult PLUGIN_API setFloat(AttrID id, double value) override;
    tresult PLUGIN_API getFloat(AttrID id, double& value) override;
    tresult PLUGIN_API setString(AttrID id, const TChar* string) override;
    // Copies what fits into sizeInBytes, always with a terminator.
    tresult PLUGIN_API getString(AttrID id, TChar* string, uint32 sizeInBytes) override;
    tresult PLUGIN_API setBinary(AttrID id, const void* data, uint32 sizeInBytes) override;
    // The bytes stay the list's, valid until the id is set again or the list goes.
    tresult PLUGIN_API getBinary(AttrID id, const void*& data, uint32& sizeInBytes) override;

private:
    using Value = std::variant<int64, double, std::u16string, std::vector<uint8>>;

    tresult store(AttrID id, Value&& value);
    const Value* find(AttrID id) const;

    std::map<std::string, Value, std::less<>> m_values;
};

} // namespace vst3
