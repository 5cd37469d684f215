// A synth with no inputs: a square wave of a quarter of full scale, period eight frames,
// restarting with every block; the right channel is the left one inverted.
#include "testplugin.h"

namespace {

constexpr testplugin::Names kNames{"SynthTone", "tqvst", "tqvst test synth"};

void __cdecl tone(vst2::AEffect*, float**, float** outputs, int32_t frames)
{
    for (int32_t frame = 0; frame < frames; ++frame)
    {
        const float sample = (frame / 4) % 2 ? -0.25f : 0.25f;
        outputs[0][frame] = sample;
        outputs[1][frame] = -sample;
    }
}

intptr_t __cdecl dispatch(vst2::AEffect* effect, int32_t opcode, int32_t, intptr_t, void* ptr,
                          float)
{
    if (opcode == vst2::effGetPlugCategory) return 2; // a synth
    return testplugin::dispatch_plain(effect, opcode, ptr, kNames);
}

} // namespace

vst2::AEffect* VSTPluginMain(vst2::HostCallback)
{
    auto* effect = new vst2::AEffect(testplugin::make_effect(dispatch, testplugin::fourcc("TqSy")));
    effect->numInputs = 0;
    effect->processReplacing = tone;
    effect->flags |= vst2::effFlagsIsSynth;
    return effect;
}
