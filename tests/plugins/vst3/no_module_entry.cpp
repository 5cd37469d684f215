// One audio class and neither InitDll nor ExitDll: both are optional, so a host loads and
// unloads it like any other.
#include "pluginterfaces/vst/ivstcomponent.h"
#include "vst3plugin.h"

using namespace vst3;

namespace {

const FUID kClassId(0x0C4F9A62, 0x7D3B4E85, 0xB1A9E2C0, 0x5F68D317);

const vst3plugin::ClassEntry kClasses[] = {
    {vst3plugin::classInfo(kClassId, kVstAudioEffectClass, "No Module Entry", "Fx", "3.1.4"),
     vst3plugin::createNothing},
};

} // namespace

IPluginFactory* PLUGIN_API GetPluginFactory()
{
    return vst3plugin::moduleFactory(kClasses);
}
