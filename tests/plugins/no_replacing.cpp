// A stereo plug-in that leaves processReplacing null: a host that calls it calls address zero.
#include "testplugin.h"

namespace {

constexpr testplugin::Names kNames{"NoReplacing", "tqvst", "tqvst test no replacing"};

intptr_t __cdecl dispatch(vst2::AEffect* effect, int32_t opcode, int32_t, intptr_t, void* ptr,
                          float)
{
    return testplugin::dispatch_plain(effect, opcode, ptr, kNames);
}

} // namespace

vst2::AEffect* VSTPluginMain(vst2::HostCallback)
{
    auto* effect = new vst2::AEffect(testplugin::make_effect(dispatch, testplugin::fourcc("TqNr")));
    effect->processReplacing = nullptr;
    effect->flags &= ~testplugin::kFlagCanReplacing;
    return effect;
}
