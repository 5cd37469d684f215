// A stereo gain of one half that declares it can take a mono signal on both inputs.
#include "testplugin.h"

namespace {

constexpr testplugin::Names kNames{"MonoGain", "tqvst", "tqvst test mono gain"};
constexpr float kGain = 0.5f;

void __cdecl halve(vst2::AEffect* effect, float** inputs, float** outputs, int32_t frames)
{
    for (int32_t channel = 0; channel < effect->numOutputs; ++channel)
        for (int32_t frame = 0; frame < frames; ++frame)
            outputs[channel][frame] = inputs[channel][frame] * kGain;
}

intptr_t __cdecl dispatch(vst2::AEffect* effect, int32_t opcode, int32_t, intptr_t, void* ptr,
                          float)
{
    return testplugin::dispatch_plain(effect, opcode, ptr, kNames);
}

} // namespace

vst2::AEffect* VSTPluginMain(vst2::HostCallback)
{
    auto* effect = new vst2::AEffect(testplugin::make_effect(dispatch, testplugin::fourcc("TqMg")));
    effect->processReplacing = halve;
    effect->flags |= vst2::effFlagsCanMono;
    return effect;
}
