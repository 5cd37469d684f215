// Asks for idle time inside its entry point, before the host has bound a record to it.
#include "testplugin.h"

namespace {

constexpr testplugin::Names kNames{"needidle_in_entry", "tqvst", "tqvst test need idle"};
volatile long g_idleCalls = 0;

intptr_t __cdecl dispatch(vst2::AEffect* effect, int32_t opcode, int32_t, intptr_t, void* ptr,
                          float)
{
    if (opcode == vst2::effIdle) g_idleCalls = g_idleCalls + 1;
    return testplugin::dispatch_plain(effect, opcode, ptr, kNames);
}

} // namespace

// Lets a host in the same process see that its idle ticks arrive.
extern "C" __declspec(dllexport) long __cdecl TqIdleCalls()
{
    return g_idleCalls;
}

vst2::AEffect* VSTPluginMain(vst2::HostCallback host)
{
    host(nullptr, vst2::audioMasterNeedIdle, 0, 0, nullptr, 0.0f);
    return new vst2::AEffect(testplugin::make_effect(dispatch, testplugin::fourcc("TqNI")));
}
