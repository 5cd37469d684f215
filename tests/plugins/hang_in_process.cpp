// Processes once, then spins for ever in every later block, as a plug-in stuck in its audio code.
#include "testplugin.h"

namespace {

constexpr testplugin::Names kNames{"HangInProcess", "tqvst", "tqvst test hang in process"};

// The first block passes, so a host sees the effect work before it hangs.
int g_blocks = 0;

void __cdecl hang(vst2::AEffect* effect, float** inputs, float** outputs, int32_t frames)
{
    if (g_blocks++ == 0) return testplugin::pass_through(effect, inputs, outputs, frames);
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
    g_blocks = 0;
    auto* effect = new vst2::AEffect(testplugin::make_effect(dispatch, testplugin::fourcc("TqHp")));
    effect->processReplacing = hang;
    return effect;
}
