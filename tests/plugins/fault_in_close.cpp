// Behaves until the host closes it, then faults: the host must still unload the module.
#include "testplugin.h"

namespace {

constexpr testplugin::Names kNames{"fault_in_close", "tqvst", "tqvst test fault in close"};

intptr_t __cdecl dispatch(vst2::AEffect* effect, int32_t opcode, int32_t, intptr_t, void* ptr,
                          float)
{
    if (opcode == vst2::effClose)
        testplugin::write_null(); // the record leaks, intended: nothing after the fault runs
    return testplugin::dispatch_plain(effect, opcode, ptr, kNames);
}

} // namespace

vst2::AEffect* VSTPluginMain(vst2::HostCallback)
{
    return new vst2::AEffect(testplugin::make_effect(dispatch, testplugin::fourcc("TqFC")));
}
