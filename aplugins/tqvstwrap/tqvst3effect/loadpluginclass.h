// The first half of loading a VST3 effect: from a file to the one class it will instantiate.
#pragma once

#include "pluginterfaces/base/ipluginbase.h"
#include "vst3module.h"

#include <windows.h>

#include <memory>

namespace tqvst {

constexpr HRESULT kVst3ClassInfoUnreadable = 0x0004E019;
constexpr HRESULT kVst3ModuleOutOfMemory = 0x0004E01A;
constexpr HRESULT kNoVst3Plugin = 0x0004E01B;

// What the load learns about the effect before any plug-in object exists.
struct Vst3LoadedClass
{
    static constexpr UINT32 kShellFlag = 1u << 2;
    static constexpr int kNameCapacity = 64;

    std::unique_ptr<Vst3Module> module;
    UINT32 flags = 0;
    UINT32 uniqueId = 0;
    UINT32 version = 0;
    WCHAR vendorName[kNameCapacity] = {};
    WCHAR effectName[kNameCapacity] = {};
    vst3::int32 classCount = 0;
    vst3::PClassInfo2 chosenClass = {};
};

// Loads the module of path and picks the class of category "Audio Module Class" whose ShellId
// is requestedId, or with requestedId 0 the only such class. Returns
// - S_OK when a class was chosen: the caller goes on to make the plug-in's objects from
//   module->factory() and chosenClass, and answers kNoVst3Plugin if that fails;
// - TQVST_S_SHELL when the file holds several audio classes and no id was asked for: the
//   module stays loaded, flags has kShellFlag and uniqueId is 0;
// - otherwise the failure: the loader's error, kNoVst3Plugin (no factory),
//   kVst3ClassInfoUnreadable, kVst3ModuleOutOfMemory, kVst3VersionOutOfRange, E_UNEXPECTED
//   (no class matches) or TQVST_E_PLUGINFAULT.
// Whatever the result, loaded keeps what was made so far; destroying it unloads.
HRESULT LoadPluginClass(Vst3LoadedClass& loaded, const wchar_t* path, UINT32 requestedId);

} // namespace tqvst
