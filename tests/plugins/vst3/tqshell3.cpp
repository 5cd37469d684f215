// A module of three audio classes with a controller class among them: a shell to a host, which
// must list the audio classes by ShellId. Its classes cannot be instantiated. ExitDll leaves the
// references the host still held on the factory in the variable TQ_VST3_EXITDLL, so a test can
// see that the host let go of the factory before it said goodbye.
#include "pluginterfaces/vst/ivstcomponent.h"
#include "vst3plugin.h"

#include <windows.h>

#include <string>

using namespace vst3;

namespace {

const FUID kFirstId(0x3A61C0DE, 0x11E24B7A, 0x8C5D0F13, 0x6E9B2A01);
const FUID kControllerId(0x3A61C0DE, 0x11E24B7A, 0x8C5D0F13, 0x6E9B2A02);
const FUID kSecondId(0x3A61C0DE, 0x11E24B7A, 0x8C5D0F13, 0x6E9B2A03);
const FUID kThirdId(0x3A61C0DE, 0x11E24B7A, 0x8C5D0F13, 0x6E9B2A04);

// The second class's version is beyond what a host can number; the first's last field is at
// its widest.
const vst3plugin::ClassEntry kClasses[] = {
    {vst3plugin::classInfo(kFirstId, kVstAudioEffectClass, "Shell First", "Fx", "1.2.3.429"),
     vst3plugin::createNothing},
    {vst3plugin::classInfo(kControllerId, kVstComponentControllerClass, "Shell Controller", "",
                           "1.0.0"),
     vst3plugin::createNothing},
    {vst3plugin::classInfo(kSecondId, kVstAudioEffectClass, "Shell Second", "Fx", "429.0.0.0"),
     vst3plugin::createNothing},
    {vst3plugin::classInfo(kThirdId, kVstAudioEffectClass, "Shell Third", "Instrument|Synth",
                           "2.5"),
     vst3plugin::createNothing},
};

vst3plugin::Factory& factory()
{
    static vst3plugin::Factory instance("tqvst shells", kClasses, 4);
    return instance;
}

} // namespace

IPluginFactory* PLUGIN_API GetPluginFactory()
{
    factory().addRef();
    return &factory();
}

extern "C" __declspec(dllexport) bool InitDll()
{
    return true;
}

extern "C" __declspec(dllexport) bool ExitDll()
{
    // The module's own reference is not the host's.
    const std::wstring held = std::to_wstring(factory().references() - 1);
    SetEnvironmentVariableW(L"TQ_VST3_EXITDLL", held.c_str());
    return true;
}
