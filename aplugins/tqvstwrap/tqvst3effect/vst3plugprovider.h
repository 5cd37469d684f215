// Turns one class of a plug-in factory into an initialised component and controller, with its
// main audio buses chosen and switched on.
#pragma once

#include "pluginptr.h"
#include "pluginterfaces/base/ipluginbase.h"
#include "pluginterfaces/vst/ivstcomponent.h"
#include "pluginterfaces/vst/ivsteditcontroller.h"

namespace tqvst {

// The audio buses the effect works with: counts, the main bus of each direction (-1 for none)
// and the main buses' channel counts.
struct BusLayout
{
    vst3::int32 inputBusCount = 0;
    vst3::int32 outputBusCount = 0;
    vst3::int32 mainInputIndex = -1;
    vst3::int32 mainOutputIndex = -1;
    vst3::int32 mainInputChannels = 0;
    vst3::int32 mainOutputChannels = 0;
};

class Vst3PlugProvider
{
public:
    // Borrows factory, which must outlive the provider, and copies classInfo. With setupAtOnce
    // the pair is made here and *failed tells whether that worked.
    Vst3PlugProvider(vst3::IPluginFactory* factory, const vst3::PClassInfo2& classInfo,
                     bool* failed, bool setupAtOnce) noexcept;
    // Terminates what setup made, component first.
    ~Vst3PlugProvider();
    Vst3PlugProvider(const Vst3PlugProvider&) = delete;
    Vst3PlugProvider& operator=(const Vst3PlugProvider&) = delete;

    // Each gives a reference of its own, or null.
    PluginPtr<vst3::IComponent> getComponent() noexcept;
    PluginPtr<vst3::IEditController> getController() noexcept;
    // Lets go of the references handed out; without setup at once this also ends the pair.
    vst3::tresult releasePlugIn(PluginPtr<vst3::IComponent> component,
                                PluginPtr<vst3::IEditController> controller) noexcept;
    const char* getSubCategories() const noexcept { return m_classInfo.subCategories; }

    const vst3::PClassInfo2& ClassInfo() const noexcept { return m_classInfo; }
    const BusLayout& Layout() const noexcept { return m_layout; }
    // Whether plug-in code faulted during setup, as opposed to refusing it.
    bool Faulted() const noexcept { return m_faulted; }

private:
    bool setupPlugin() noexcept;
    bool activateMainBus(vst3::BusDirection direction) noexcept;
    void terminatePlugin() noexcept;
    template <class F>
    bool Call(F&& body) noexcept;

    PluginPtr<vst3::IComponent> m_component;
    PluginPtr<vst3::IEditController> m_controller;
    vst3::IPluginFactory* m_factory;
    vst3::PClassInfo2 m_classInfo;
    bool m_setupAtOnce;
    bool m_faulted = false;
    BusLayout m_layout;
};

} // namespace tqvst
