// Shared pieces of our VST3 test plug-ins: the module export and a factory over a class table.
#pragma once

#include "pluginterfaces/base/ipluginbase.h"

#include <atomic>
#include <cstring>
#include <type_traits>

extern "C" __declspec(dllexport) vst3::IPluginFactory* PLUGIN_API GetPluginFactory();

namespace vst3plugin {

using namespace vst3;

template <size_t N>
void putText(char (&out)[N], const char* text)
{
    size_t i = 0;
    for (; text[i] && i < N - 1; ++i)
        out[i] = text[i];
    out[i] = 0;
}

// Into a String128, from UTF-16 or from ASCII.
template <class Char>
void putText(TChar* out, const Char* text)
{
    int i = 0;
    for (; text[i] && i < 127; ++i)
        out[i] = static_cast<TChar>(text[i]);
    out[i] = 0;
}

inline PClassInfo2 classInfo(const FUID& cid, const char* category, const char* name,
                             const char* subCategories, const char* version)
{
    PClassInfo2 info{};
    std::memcpy(info.cid, cid.toTUID(), sizeof(TUID));
    info.cardinality = PClassInfo::kManyInstances;
    putText(info.category, category);
    putText(info.name, name);
    putText(info.subCategories, subCategories);
    putText(info.vendor, "tqvst");
    putText(info.version, version);
    putText(info.sdkVersion, "VST 3.7");
    return info;
}

// One step of a queryInterface over several interfaces: hands out `as` if the id is Interface's.
template <class Interface, class Self>
bool answer(Self* self, const TUID iid, void** obj, Interface* as)
{
    if (!iidEqual(iid, Interface::iid)) return false;
    *obj = as;
    self->addRef();
    return true;
}

// The whole queryInterface of an object made of Interfaces: FUnknown (and IPluginBase, if the
// first derives from it) are answered as the first of them.
template <class First, class... Others, class Self>
tresult queryAmong(Self* self, const TUID iid, void** obj)
{
    if (!obj) return kInvalidArgument;
    *obj = nullptr;
    First* first = self;
    bool found = answer<FUnknown>(self, iid, obj, first);
    if constexpr (std::is_base_of_v<IPluginBase, First>)
        found = found || answer<IPluginBase>(self, iid, obj, first);
    found = found || answer<First>(self, iid, obj, first) ||
            (answer<Others>(self, iid, obj, static_cast<Others*>(self)) || ...);
    return found ? kResultOk : kNoInterface;
}

struct ClassEntry
{
    PClassInfo2 info;
    FUnknown* (*create)();
};

// The module's one factory over a fixed table of classes; it lives as long as the module.
class Factory : public IPluginFactory2
{
public:
    Factory(const char* vendor, const ClassEntry* classes, int32 count)
        : m_classes(classes), m_count(count)
    {
        putText(m_info.vendor, vendor);
        putText(m_info.url, "https://tqvst.invalid");
        putText(m_info.email, "test@tqvst.invalid");
        m_info.flags = PFactoryInfo::kUnicode;
    }

    tresult PLUGIN_API queryInterface(const TUID iid, void** obj) override
    {
        if (!obj) return kInvalidArgument;
        *obj = nullptr;
        if (!iidEqual(iid, FUnknown::iid) && !iidEqual(iid, IPluginFactory::iid) &&
            !iidEqual(iid, IPluginFactory2::iid))
            return kNoInterface;
        *obj = this;
        addRef();
        return kResultOk;
    }
    uint32 PLUGIN_API addRef() override { return ++m_refs; }
    uint32 PLUGIN_API release() override { return --m_refs; }
    // What hosts still hold, counting the module's own reference.
    uint32 references() const { return m_refs; }

    tresult PLUGIN_API getFactoryInfo(PFactoryInfo* info) override
    {
        if (!info) return kInvalidArgument;
        *info = m_info;
        return kResultOk;
    }
    int32 PLUGIN_API countClasses() override { return m_count; }
    tresult PLUGIN_API getClassInfo(int32 index, PClassInfo* info) override
    {
        if (!info || index < 0 || index >= m_count) return kInvalidArgument;
        const PClassInfo2& source = m_classes[index].info;
        std::memcpy(info->cid, source.cid, sizeof(TUID));
        info->cardinality = source.cardinality;
        putText(info->category, source.category);
        putText(info->name, source.name);
        return kResultOk;
    }
    tresult PLUGIN_API getClassInfo2(int32 index, PClassInfo2* info) override
    {
        if (!info || index < 0 || index >= m_count) return kInvalidArgument;
        *info = m_classes[index].info;
        return kResultOk;
    }
    tresult PLUGIN_API createInstance(FIDString cid, FIDString iid, void** obj) override
    {
        if (!obj) return kInvalidArgument;
        *obj = nullptr;
        for (int32 i = 0; cid && i < m_count; ++i)
        {
            if (!iidEqual(cid, m_classes[i].info.cid)) continue;
            FUnknown* object = m_classes[i].create();
            if (!object) return kOutOfMemory;
            const tresult result = object->queryInterface(iid, obj);
            object->release();
            return result;
        }
        return kInvalidArgument;
    }

private:
    PFactoryInfo m_info{};
    const ClassEntry* m_classes;
    int32 m_count;
    std::atomic<uint32> m_refs{1};
};

// The maker of a class a host may list but not instantiate.
inline FUnknown* createNothing()
{
    return nullptr;
}

// What GetPluginFactory returns: the module's one factory over its class table, with a reference
// for the caller. A module calls it from GetPluginFactory only, with one table.
template <int32 N>
Factory* moduleFactory(const ClassEntry (&classes)[N], const char* vendor = "tqvst")
{
    static Factory factory(vendor, classes, N);
    factory.addRef();
    return &factory;
}

} // namespace vst3plugin
