// An owned reference to an object of plug-in code, released inside the plug-in guard.
#pragma once

#include "pluginexceptionfilter.h"
#include "pluginterfaces/base/funknown.h"

#include <utility>

namespace tqvst {

template <class I>
class PluginPtr
{
public:
    PluginPtr() noexcept = default;
    // Takes over a reference the caller already holds.
    explicit PluginPtr(I* object) noexcept : m_object(object) {}
    ~PluginPtr() { Reset(); }
    PluginPtr(const PluginPtr&) = delete;
    PluginPtr& operator=(const PluginPtr&) = delete;
    PluginPtr(PluginPtr&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    PluginPtr& operator=(PluginPtr&& other) noexcept
    {
        if (this != &other) Reset(std::exchange(other.m_object, nullptr));
        return *this;
    }

    // The pointer is cleared before the release runs, so a plug-in that calls back from its
    // release never meets a half-released object here.
    void Reset(I* object = nullptr) noexcept
    {
        I* old = std::exchange(m_object, object);
        if (old) CallPlugin([old] { old->release(); });
    }

    I* Get() const noexcept { return m_object; }
    I* operator->() const noexcept { return m_object; }
    explicit operator bool() const noexcept { return m_object != nullptr; }
    void** PutVoid() noexcept
    {
        Reset();
        return reinterpret_cast<void**>(&m_object);
    }

private:
    I* m_object = nullptr;
};

// Asks object for interface Q inside the guard; empty when it does not answer or faults.
template <class Q>
PluginPtr<Q> QueryPlugin(vst3::FUnknown* object) noexcept
{
    PluginPtr<Q> result;
    if (!object) return result;
    void* answer = nullptr;
    vst3::tresult code = vst3::kNoInterface;
    if (CallPlugin([&] { code = object->queryInterface(Q::iid, &answer); }) &&
        code == vst3::kResultOk)
        result.Reset(static_cast<Q*>(answer));
    return result;
}

} // namespace tqvst
