// A shell of three sub-plug-ins: listed during a scan, made when the host asks for one by id.
#include "testplugin.h"

#include <cstdio>
#include <iterator>

namespace {

struct SubPlugin
{
    int32_t id;
    const char* name;
};

constexpr SubPlugin kSubPlugins[] = {
    {testplugin::fourcc("TqSA"), "Shell A"},
    {testplugin::fourcc("TqSB"), "Shell B"},
    {testplugin::fourcc("TqSC"), "Shell C"},
};

constexpr const char* kVendor = "tqvst";
constexpr const char* kProduct = "tqvst test shell";

// The shell's own record, id 0. The cursor lives with the record so two shells never share a scan.
struct Shell
{
    vst2::AEffect effect;
    std::size_t next = 0;
};

// A sub-plug-in: stereo pass-through with one parameter that is only stored.
struct Sub
{
    vst2::AEffect effect;
    const SubPlugin* identity;
    float value = 0.5f;
};

Shell& shell_of(vst2::AEffect* effect)
{
    return *reinterpret_cast<Shell*>(effect);
}

Sub& sub_of(vst2::AEffect* effect)
{
    return *reinterpret_cast<Sub*>(effect);
}

intptr_t __cdecl dispatch_shell(vst2::AEffect* effect, int32_t opcode, int32_t index,
                                intptr_t value, void* ptr, float)
{
    Shell& shell = shell_of(effect);
    switch (opcode)
    {
    case vst2::effClose:
        delete &shell;
        return 0;
    case vst2::effGetPlugCategory:
        return vst2::kPlugCategoryShell;
    case vst2::effVendorSpecific:
        // Only the scan start rewinds, so a host that forgets to open a second scan sees an
        // empty shell instead of a list that happens to work.
        if (index == vst2::kShellScanIndex && value == vst2::kShellScanStart) shell.next = 0;
        return 0;
    case vst2::effShellGetNextPlugin:
    {
        if (shell.next == std::size(kSubPlugins)) return 0;
        const SubPlugin& sub = kSubPlugins[shell.next++];
        testplugin::put_text(ptr, sub.name);
        return sub.id;
    }
    }
    const testplugin::Names names{"tqshell", kVendor, kProduct};
    if (const char* text = testplugin::name_for(opcode, names))
        return testplugin::put_text(ptr, text);
    return 0;
}

void __cdecl set_sub_parameter(vst2::AEffect* effect, int32_t index, float value)
{
    if (index == 0) sub_of(effect).value = value;
}

float __cdecl get_sub_parameter(vst2::AEffect* effect, int32_t index)
{
    return index == 0 ? sub_of(effect).value : 0.0f;
}

intptr_t __cdecl dispatch_sub(vst2::AEffect* effect, int32_t opcode, int32_t index, intptr_t,
                              void* ptr, float)
{
    Sub& sub = sub_of(effect);
    switch (opcode)
    {
    case vst2::effClose:
        delete &sub;
        return 0;
    case vst2::effGetPlugCategory:
        // A sub-plug-in still calls itself a shell; the host must accept that once it chose one.
        return vst2::kPlugCategoryShell;
    case vst2::effGetParamName:
        return index == 0 ? testplugin::put_text(ptr, "Knob") : 0;
    case vst2::effGetParamDisplay:
    {
        if (index != 0) return 0;
        char text[32];
        std::snprintf(text, sizeof text, "%.3f", double(sub.value));
        return testplugin::put_text(ptr, text);
    }
    case vst2::effCanBeAutomated:
        return index == 0;
    case vst2::effGetProgramName:
        return testplugin::put_text(ptr, "Default");
    case vst2::effGetProgramNameIndexed:
        return index == 0 ? testplugin::put_text(ptr, "Default") : 0;
    }
    const testplugin::Names names{sub.identity->name, kVendor, kProduct};
    if (const char* text = testplugin::name_for(opcode, names))
        return testplugin::put_text(ptr, text);
    return 0;
}

vst2::AEffect* make_sub(const SubPlugin& identity)
{
    auto* sub = new Sub{testplugin::make_effect(dispatch_sub, identity.id), &identity};
    sub->effect.setParameter = set_sub_parameter;
    sub->effect.getParameter = get_sub_parameter;
    sub->effect.numParams = 1;
    sub->effect.numPrograms = 1;
    return &sub->effect;
}

} // namespace

// An id that is not ours, as well as 0, gives the shell itself, which a host asking for a
// sub-plug-in must then reject by its uniqueID of 0.
vst2::AEffect* VSTPluginMain(vst2::HostCallback host)
{
    // Cut to 32 bits: a 64-bit host may hand the id back zero-extended.
    const auto wanted =
        static_cast<int32_t>(host(nullptr, vst2::audioMasterCurrentId, 0, 0, nullptr, 0.0f));
    for (const SubPlugin& identity : kSubPlugins)
        if (wanted == identity.id) return make_sub(identity);
    return &(new Shell{testplugin::make_effect(dispatch_shell, 0)})->effect;
}
