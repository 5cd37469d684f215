// The host context every VST3 class receives in initialize: the host's name and the objects a
// plug-in may ask the host to make.
#pragma once

#include "hosting/objectbase.h"
#include "pluginterfaces/vst/ivsthostapplication.h"

namespace tqvst {

class Vst3Host final : public vst3::IHostApplication
{
public:
    // The one name a plug-in ever sees for its host.
    static constexpr char16_t kName[] = u"Cadmeer";

    Vst3Host() = default;
    Vst3Host(const Vst3Host&) = delete;
    Vst3Host& operator=(const Vst3Host&) = delete;

    vst3::tresult PLUGIN_API queryInterface(const vst3::TUID iid, void** obj) override;
    vst3::uint32 PLUGIN_API addRef() override;
    vst3::uint32 PLUGIN_API release() override;

    vst3::tresult PLUGIN_API getName(vst3::String128 name) override;
    // Makes a message or an attribute list when class and interface both name it; anything else
    // answers kResultFalse with a null object.
    vst3::tresult PLUGIN_API createInstance(vst3::TUID cid, vst3::TUID iid, void** obj) override;

private:
    vst3::RefCount m_refCount;
};

} // namespace tqvst
