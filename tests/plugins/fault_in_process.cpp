// A stereo plug-in that writes through a null pointer every time it is asked to process.
#include "testplugin.h"

namespace {

constexpr testplugin::Names kNames{"FaultInProcess", "tqvst", "tqvst test fault"};

void __cdecl fault(vst2::AEffect*, float**, float**, int32_t)
{
    testplugin::write_null();
}

intptr_t __cdecl dispatch(vst2::AEffect* effect, int32_t opcode, int32_t, intptr_t, void* ptr,
                          float)
{
    return testplugin::dispatch_plain(effect, opcode, ptr, kNames);
}

} // namespace

vst2::AEffect* VSTPluginMain(vst2::HostCallback)
{
    auto* effect = new vst2::AEffect(testplugin::make_effect(dispatch, testplugin::fourcc("TqFp")));
    effect->processReplacing = fault;
    return effect;
}
