// What every hosting object shares: an atomic reference count and a query that answers exactly
// one interface and FUnknown.
#pragma once

#include "pluginterfaces/base/funknown.h"

#include <atomic>

namespace vst3 {

// Objects start with one reference, the creator's. An object embedded in another keeps that
// reference for its owner, so a plug-in's addRef/release pairs never destroy it.
class RefCount
{
public:
    uint32 add() noexcept { return ++m_count; }
    uint32 drop() noexcept { return --m_count; }

private:
    std::atomic<uint32> m_count{1};
};

template <class Interface, class Self>
tresult queryOneInterface(Self* self, const TUID iid, void** obj)
{
    if (!obj) return kInvalidArgument;
    *obj = nullptr;
    if (!iid) return kInvalidArgument;
    if (!iidEqual(iid, FUnknown::iid) && !iidEqual(iid, Interface::iid)) return kNoInterface;
    *obj = static_cast<Interface*>(self);
    self->addRef();
    return kResultOk;
}

} // namespace vst3

// The three FUnknown methods of a hosting class that implements the one interface I.
#define VST3_OBJECT_METHODS(I)                                                                     \
    tresult PLUGIN_API queryInterface(const TUID iid, void** obj) override                         \
    {                                                                                              \
        return queryOneInterface<I>(this, iid, obj);                                               \
    }                                                                                              \
    uint32 PLUGIN_API addRef() override                                                            \
    {                                                                                              \
        return m_refCount.add();                                                                   \
    }                                                                                              \
    uint32 PLUGIN_API release() override                                                           \
    {                                                                                              \
        const uint32 left = m_refCount.drop();                                                     \
        if (left == 0) delete this;                                                                \
        return left;                                                                               \
    }                                                                                              \
                                                                                                   \
private:                                                                                           \
    RefCount m_refCount;                                                                           \
                                                                                                   \
public:
