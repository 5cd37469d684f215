// Has an editor whose every idle tick is a user's knob turn: it tells the host about the gesture
// and the new value, asks for a redraw and for host idle time while dragging.
#include "testplugin.h"

namespace {

constexpr testplugin::Names kNames{"knob_turner", "tqvst", "tqvst test knob turner"};

// The knob the user turns and where it ends up.
constexpr int32_t kKnob = 3;
constexpr float kKnobValue = 0.25f;

vst2::HostCallback g_host = nullptr;

intptr_t __cdecl dispatch(vst2::AEffect* effect, int32_t opcode, int32_t, intptr_t, void* ptr,
                          float)
{
    if (opcode != vst2::effEditIdle) return testplugin::dispatch_plain(effect, opcode, ptr, kNames);
    g_host(effect, vst2::audioMasterBeginEdit, kKnob, 0, nullptr, 0.0f);
    g_host(effect, vst2::audioMasterAutomate, kKnob, 0, nullptr, kKnobValue);
    g_host(effect, vst2::audioMasterEndEdit, kKnob, 0, nullptr, 0.0f);
    g_host(effect, vst2::audioMasterUpdateDisplay, 0, 0, nullptr, 0.0f);
    g_host(effect, vst2::audioMasterIdle, 0, 0, nullptr, 0.0f);
    return 0;
}

} // namespace

vst2::AEffect* VSTPluginMain(vst2::HostCallback host)
{
    g_host = host;
    vst2::AEffect effect = testplugin::make_effect(dispatch, testplugin::fourcc("TqKT"));
    effect.flags |= vst2::effFlagsHasEditor;
    effect.numParams = 4;
    return new vst2::AEffect(effect);
}
