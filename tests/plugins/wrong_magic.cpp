// Returns a record with the wrong magic; otherwise valid, since a host may still close it.
#include "testplugin.h"

namespace {

constexpr testplugin::Names kNames{"wrong_magic", "tqvst", "tqvst test wrong magic"};

intptr_t __cdecl dispatch(vst2::AEffect* effect, int32_t opcode, int32_t, intptr_t, void* ptr,
                          float)
{
    return testplugin::dispatch_plain(effect, opcode, ptr, kNames);
}

} // namespace

vst2::AEffect* VSTPluginMain(vst2::HostCallback)
{
    auto* effect = new vst2::AEffect(testplugin::make_effect(dispatch, testplugin::fourcc("TqWM")));
    effect->magic = 0x12345678;
    return effect;
}
