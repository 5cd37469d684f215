// The plug provider: component and controller of one class, initialised with the host context,
// with one main bus per direction switched on.
#include "vst3plugprovider.h"

#include "tqvst3effect.h"
#include "vst3host.h"

#include <cstdint>
#include <cstring>

namespace tqvst {

using namespace vst3;

namespace {

// Classes that are served without audio buses of their own: no bus is checked or switched.
// Kept as a table of fixed ids; their main bus indices stay -1.
constexpr uint64_t kExemptClasses[][2] = {{0x4B22D08932ECDB17ull, 0xD48DD5F5F85997AFull}};

bool IsExempt(const TUID cid)
{
    uint64_t words[2];
    std::memcpy(words, cid, sizeof words);
    for (const auto& exempt : kExemptClasses)
        if (words[0] == exempt[0] && words[1] == exempt[1]) return true;
    return false;
}

} // namespace

template <class F>
bool Vst3PlugProvider::Call(F&& body) noexcept
{
    if (CallPlugin(static_cast<F&&>(body))) return true;
    m_faulted = true;
    return false;
}

Vst3PlugProvider::Vst3PlugProvider(IPluginFactory* factory, const PClassInfo2& classInfo,
                                   bool* failed, bool setupAtOnce) noexcept
    : m_factory(factory), m_classInfo(classInfo), m_setupAtOnce(setupAtOnce)
{
    *failed = setupAtOnce && !setupPlugin();
}

Vst3PlugProvider::~Vst3PlugProvider()
{
    terminatePlugin();
}

PluginPtr<IComponent> Vst3PlugProvider::getComponent() noexcept
{
    if (!m_setupAtOnce && !m_component) setupPlugin();
    IComponent* component = m_component.Get();
    if (!component || !Call([&] { component->addRef(); })) return {};
    return PluginPtr<IComponent>(component);
}

PluginPtr<IEditController> Vst3PlugProvider::getController() noexcept
{
    IEditController* controller = m_controller.Get();
    if (!controller || !Call([&] { controller->addRef(); })) return {};
    return PluginPtr<IEditController>(controller);
}

tresult Vst3PlugProvider::releasePlugIn(PluginPtr<IComponent> component,
                                        PluginPtr<IEditController> controller) noexcept
{
    component.Reset();
    controller.Reset();
    if (!m_setupAtOnce) terminatePlugin();
    return kResultOk;
}

// The order is part of the contract: the component is made and initialised before its
// controller, and buses are switched only once both exist.
bool Vst3PlugProvider::setupPlugin() noexcept
{
    if (!m_factory) return false;
    FUnknown* context = static_cast<IHostApplication*>(g_vst3Host);
    tresult result = kResultFalse;
    void* made = nullptr;
    if (!Call([&] { result = m_factory->createInstance(m_classInfo.cid, IComponent::iid, &made); }))
        return false;
    if (result != kResultOk || !made) return false;
    m_component.Reset(static_cast<IComponent*>(made));
    IComponent* component = m_component.Get();
    if (!Call([&] { result = component->initialize(context); }) || result != kResultOk)
        return false;

    // A single object answers for its controller too, and is initialised once only.
    void* single = nullptr;
    if (!Call([&] { result = component->queryInterface(IEditController::iid, &single); }))
        return false;
    if (result == kResultOk && single)
    {
        m_controller.Reset(static_cast<IEditController*>(single));
    }
    else
    {
        TUID controllerId = {};
        if (!Call([&] { result = component->getControllerClassId(controllerId); }) ||
            result != kResultOk)
            return false;
        if (!FUID::fromTUID(controllerId).isValid()) return false;
        made = nullptr;
        if (!Call([&] {
                result = m_factory->createInstance(controllerId, IEditController::iid, &made);
            }))
            return false;
        if (result != kResultOk || !made) return false;
        m_controller.Reset(static_cast<IEditController*>(made));
        IEditController* controller = m_controller.Get();
        if (!Call([&] { result = controller->initialize(context); }) || result != kResultOk)
            return false;
    }

    if (!Call([&] {
            m_layout.inputBusCount = component->getBusCount(kAudio, kInput);
            m_layout.outputBusCount = component->getBusCount(kAudio, kOutput);
        }))
        return false;
    const bool exempt = IsExempt(m_classInfo.cid);
    // A plug-in without audio in or out is not served.
    if (!exempt && (m_layout.inputBusCount == 0 || m_layout.outputBusCount == 0)) return false;
    m_layout.mainInputIndex = -1;
    m_layout.mainOutputIndex = -1;
    if (exempt)
    {
        m_layout.mainInputChannels = 1;
        m_layout.mainOutputChannels = 1;
        return true;
    }
    return activateMainBus(kInput) && activateMainBus(kOutput);
}

// Of several default-active main buses the first is used and the others stay as the plug-in set
// them; every other bus is switched off. Without a candidate, bus 0 is the main bus.
bool Vst3PlugProvider::activateMainBus(BusDirection direction) noexcept
{
    const bool input = direction == kInput;
    const int32 count = input ? m_layout.inputBusCount : m_layout.outputBusCount;
    int32& mainIndex = input ? m_layout.mainInputIndex : m_layout.mainOutputIndex;
    int32& mainChannels = input ? m_layout.mainInputChannels : m_layout.mainOutputChannels;
    IComponent* component = m_component.Get();
    tresult result = kResultFalse;
    for (int32 index = 0; index < count; ++index)
    {
        BusInfo info = {};
        if (!Call([&] { result = component->getBusInfo(kAudio, direction, index, info); }))
            return false;
        if (result != kResultOk) continue;
        const bool candidate = (info.flags & BusInfo::kDefaultActive) && info.busType == kMain;
        if (candidate && mainIndex >= 0) continue;
        if (candidate)
        {
            mainIndex = index;
            mainChannels = info.channelCount;
        }
        if (!Call([&] { result = component->activateBus(kAudio, direction, index, candidate); }) ||
            result != kResultOk)
            return false;
    }
    if (mainIndex >= 0) return true;
    BusInfo info = {};
    if (!Call([&] { result = component->getBusInfo(kAudio, direction, 0, info); })) return false;
    if (result != kResultOk) return true;
    mainIndex = 0;
    mainChannels = info.channelCount;
    return Call([&] { result = component->activateBus(kAudio, direction, 0, true); }) &&
           result == kResultOk;
}

void Vst3PlugProvider::terminatePlugin() noexcept
{
    bool single = false;
    if (IComponent* component = m_component.Get())
    {
        single = static_cast<bool>(QueryPlugin<IEditController>(component));
        Call([&] { component->terminate(); });
    }
    if (IEditController* controller = m_controller.Get(); controller && !single)
        Call([&] { controller->terminate(); });
    m_component.Reset();
    m_controller.Reset();
}

} // namespace tqvst
