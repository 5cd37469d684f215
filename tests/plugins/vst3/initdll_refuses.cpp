// InitDll answers false, so a host must unload the module without asking for its factory and
// without calling ExitDll. Each of those two, if called, leaves its name in TQ_VST3_CALLED.
// The answer carries garbage above its low byte, which is the only part that counts.
#include "pluginterfaces/vst/ivstcomponent.h"
#include "vst3plugin.h"

#include <windows.h>

using namespace vst3;

namespace {

const FUID kClassId(0x5B0E7711, 0x2F4C4D19, 0xA6E03B58, 0x91C2D4E7);

const vst3plugin::ClassEntry kClasses[] = {
    {vst3plugin::classInfo(kClassId, kVstAudioEffectClass, "Refused", "Fx", "1.0"),
     vst3plugin::createNothing},
};

void noteCall(const wchar_t* name)
{
    SetEnvironmentVariableW(L"TQ_VST3_CALLED", name);
}

} // namespace

IPluginFactory* PLUGIN_API GetPluginFactory()
{
    noteCall(L"GetPluginFactory");
    return vst3plugin::moduleFactory(kClasses);
}

// Declared as returning a wider type so that the bits above the low byte are set.
extern "C" __declspec(dllexport) uintptr_t InitDll()
{
    return ~static_cast<uintptr_t>(0xFF);
}

extern "C" __declspec(dllexport) bool ExitDll()
{
    noteCall(L"ExitDll");
    return true;
}
