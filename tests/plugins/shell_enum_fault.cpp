// A shell that faults whenever a host asks for its next sub-plug-in.
#include "testplugin.h"

namespace {

intptr_t __cdecl dispatch(vst2::AEffect* effect, int32_t opcode, int32_t, intptr_t, void* ptr,
                          float)
{
    switch (opcode)
    {
    case vst2::effGetPlugCategory:
        return vst2::kPlugCategoryShell;
    case vst2::effShellGetNextPlugin:
        testplugin::write_null();
        return 0;
    }
    return testplugin::dispatch_plain(effect, opcode, ptr, {"shell_enum_fault", "tqvst", "shell"});
}

} // namespace

vst2::AEffect* VSTPluginMain(vst2::HostCallback)
{
    return new vst2::AEffect(testplugin::make_effect(dispatch, 0));
}
