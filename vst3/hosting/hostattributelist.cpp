// The host's attribute list.
#include "hostattributelist.h"

#include <cstring>
#include <new>

namespace vst3 {

// Plug-ins call these from their own code: an allocation failure must become a result code,
// never an exception thrown into the caller.
tresult HostAttributeList::store(AttrID id, Value&& value)
{
    try
    {
        m_values.insert_or_assign(std::string(id), std::move(value));
        return kResultOk;
    }
    catch (const std::bad_alloc&)
    {
        return kOutOfMemory;
    }
}

const HostAttributeList::Value* HostAttributeList::find(AttrID id) const
{
    const auto it = m_values.find(std::string_view(id));
    return it == m_values.end() ? nullptr : &it->second;
}

tresult PLUGIN_API HostAttributeList::setInt(AttrID id, int64 value)
{
    if (!id) return kInvalidArgument;
    return store(id, value);
}

tresult PLUGIN_API HostAttributeList::getInt(AttrID id, int64& value)
{
    if (!id) return kInvalidArgument;
    const Value* found = find(id);
    if (!found || !std::holds_alternative<int64>(*found)) return kResultFalse;
    value = std::get<int64>(*found);
    return kResultOk;
}

tresult PLUGIN_API HostAttributeList::setFloat(AttrID id, double value)
{
    if (!id) return kInvalidArgument;
    return store(id, value);
}

tresult PLUGIN_API HostAttributeList::getFloat(AttrID id, double& value)
{
    if (!id) return kInvalidArgument;
    const Value* found = find(id);
    if (!found || !std::holds_alternative<double>(*found)) return kResultFalse;
    value = std::get<double>(*found);
    return kResultOk;
}

tresult PLUGIN_API HostAttributeList::setString(AttrID id, const TChar* string)
{
    if (!id || !string) return kInvalidArgument;
    try
    {
        return store(id, std::u16string(string));
    }
    catch (const std::bad_alloc&)
    {
        return kOutOfMemory;
    }
}

tresult PLUGIN_API HostAttributeList::getString(AttrID id, TChar* string, uint32 sizeInBytes)
{
    if (!id || !string || sizeInBytes < sizeof(TChar)) return kInvalidArgument;
    const Value* found = find(id);
    if (!found || !std::holds_alternative<std::u16string>(*found)) return kResultFalse;
    const std::u16string& text = std::get<std::u16string>(*found);
    const size_t room = sizeInBytes / sizeof(TChar) - 1;
    const size_t count = text.size() < room ? text.size() : room;
    std::memcpy(string, text.data(), count * sizeof(TChar));
    string[count] = 0;
    return kResultOk;
}

tresult PLUGIN_API HostAttributeList::setBinary(AttrID id, const void* data, uint32 sizeInBytes)
{
    if (!id || (!data && sizeInBytes > 0)) return kInvalidArgument;
    try
    {
        const auto* bytes = static_cast<const uint8*>(data);
        return store(id, std::vector<uint8>(bytes, bytes + sizeInBytes));
    }
    catch (const std::bad_alloc&)
    {
        return kOutOfMemory;
    }
}

tresult PLUGIN_API HostAttributeList::getBinary(AttrID id, const void*& data, uint32& sizeInBytes)
{
    if (!id) return kInvalidArgument;
    const Value* found = find(id);
    if (!found || !std::holds_alternative<std::vector<uint8>>(*found)) return kResultFalse;
    const std::vector<uint8>& bytes = std::get<std::vector<uint8>>(*found);
    data = bytes.data();
    sizeInBytes = static_cast<uint32>(bytes.size());
    return kResultOk;
}

} // namespace vst3
