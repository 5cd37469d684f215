// Spins for ever when a host sets a parameter, as a plug-in stuck on its message thread.
#include "testplugin.h"

namespace {

constexpr testplugin::Names kNames{"HangInSetParameter", "tqvst", "tqvst test hang in setter"};

void __cdecl hang(vst2::AEffect*, int32_t, float)
{
    // Volatile, so the compiler keeps a loop the host has to give up on.
    volatile bool spinning = true;
    while (spinning)
    {
    }
}

intptr_t __cdecl dispatch(vst2::AEffect* effect, int32_t opcode, int32_t, intptr_t, void* ptr,
                          float)
{
    return testplugin::dispatch_plain(effect, opcode, ptr, kNames);
}

} // namespace

vst2::AEffect* VSTPluginMain(vst2::HostCallback)
{
    vst2::AEffect effect = testplugin::make_effect(dispatch, testplugin::fourcc("TqHs"));
    effect.numParams = 1;
    effect.setParameter = hang;
    return new vst2::AEffect(effect);
}
