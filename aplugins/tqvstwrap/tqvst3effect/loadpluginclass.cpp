// LoadPluginClass: the class walk that turns a .vst3 file into one chosen class, or a shell.
#include "loadpluginclass.h"

#include "pluginterfaces/vst/ivstcomponent.h"
#include "shellid.h"
#include "tqvst.h"
#include "vst3version.h"

#include <cstring>
#include <new>

namespace tqvst {
namespace {

// Plug-in texts are ANSI and need not be terminated within their field.
template <size_t N>
void WidenName(const char (&text)[N], WCHAR (&out)[Vst3LoadedClass::kNameCapacity])
{
    out[0] = 0;
    const int length = static_cast<int>(strnlen(text, N));
    if (length == 0) return;
    WCHAR wide[N + 1];
    const int made = MultiByteToWideChar(CP_ACP, MB_PRECOMPOSED, text, length, wide, N);
    const int kept =
        made < Vst3LoadedClass::kNameCapacity ? made : Vst3LoadedClass::kNameCapacity - 1;
    std::memcpy(out, wide, kept * sizeof(WCHAR));
    out[kept] = 0;
}

bool IsAudioClass(const vst3::PClassInfo2& info)
{
    return strncmp(info.category, vst3::kVstAudioEffectClass, sizeof(info.category)) == 0;
}

} // namespace

HRESULT LoadPluginClass(Vst3LoadedClass& loaded, const wchar_t* path, UINT32 requestedId)
{
    loaded.module.reset(new (std::nothrow) Vst3Module(path));
    Vst3Module* module = loaded.module.get();
    if (!module) return kVst3ModuleOutOfMemory;
    if (!module->module() || !module->factory())
        return module->loadError() < 0 ? module->loadError() : kNoVst3Plugin;

    vst3::PFactoryInfo factoryInfo{};
    module->GetFactoryInfo(&factoryInfo);
    if (module->faulted()) return TQVST_E_PLUGINFAULT;
    WidenName(factoryInfo.vendor, loaded.vendorName);

    loaded.classCount = module->CountClasses();
    if (module->faulted()) return TQVST_E_PLUGINFAULT;

    int matches = 0;
    for (vst3::int32 index = 0; index < loaded.classCount; ++index)
    {
        vst3::PClassInfo2 info{};
        vst3::uint8 cid[16];
        if (!module->GetClassInfoAt(index, &info, cid))
            return module->faulted() ? TQVST_E_PLUGINFAULT : kVst3ClassInfoUnreadable;
        const UINT32 id = ShellId(cid);
        if (!IsAudioClass(info) || (requestedId != 0 && id != requestedId)) continue;
        if (++matches == 1)
        {
            loaded.chosenClass = info;
            loaded.uniqueId = id;
        }
        // The first class with the asked-for id wins; a later one with the same CRC is not seen.
        if (requestedId != 0) break;
        if (matches == 2)
        {
            loaded.flags |= Vst3LoadedClass::kShellFlag;
            loaded.uniqueId = 0;
            return TQVST_S_SHELL;
        }
    }
    if (matches == 0) return E_UNEXPECTED;

    const std::string_view version(
        loaded.chosenClass.version,
        strnlen(loaded.chosenClass.version, sizeof(loaded.chosenClass.version)));
    const HRESULT parsed = ParseVersionString(version, &loaded.version);
    if (parsed != S_OK) return parsed;
    WidenName(loaded.chosenClass.name, loaded.effectName);
    return S_OK;
}

} // namespace tqvst
