// A well-behaved stereo gain, one parameter and one program: the plug-in hosts drive end to end.
#include "testplugin.h"

#include <cstdio>

namespace {

constexpr testplugin::Names kNames{"TqGain", "tqvst", "tqvst test gain"};

struct Gain
{
    vst2::AEffect effect; // first, so the record's address is the object's
    // Normalised; the linear gain is twice this, so the default is unity. Kept as set, unclamped,
    // so a host's own clamping of read values stays visible.
    float value = 0.5f;
    char programName[testplugin::kTextCapacity] = "Default";
};

Gain& gain_of(vst2::AEffect* effect)
{
    return *reinterpret_cast<Gain*>(effect);
}

void __cdecl set_parameter(vst2::AEffect* effect, int32_t index, float value)
{
    if (index == 0) gain_of(effect).value = value;
}

float __cdecl get_parameter(vst2::AEffect* effect, int32_t index)
{
    return index == 0 ? gain_of(effect).value : 0.0f;
}

// Sample by sample, so the same buffer may serve as input and output.
void __cdecl process_replacing(vst2::AEffect* effect, float** inputs, float** outputs,
                               int32_t frames)
{
    const float gain = 2.0f * gain_of(effect).value;
    for (int channel = 0; channel < 2; ++channel)
        for (int32_t frame = 0; frame < frames; ++frame)
            outputs[channel][frame] = inputs[channel][frame] * gain;
}

// The single program is always current, so effGetProgram and effSetProgram need no case; tail
// size and parameter properties answer 0 (none, not supported) through the default.
intptr_t __cdecl dispatch(vst2::AEffect* effect, int32_t opcode, int32_t index, intptr_t, void* ptr,
                          float)
{
    Gain& gain = gain_of(effect);
    switch (opcode)
    {
    case vst2::effClose:
        delete &gain;
        return 0;
    case vst2::effGetParamName:
        return index == 0 ? testplugin::put_text(ptr, "Gain") : 0;
    case vst2::effGetParamLabel:
        return index == 0 ? testplugin::put_text(ptr, "x") : 0;
    case vst2::effGetParamDisplay:
    {
        if (index != 0) return 0;
        char text[32];
        std::snprintf(text, sizeof text, "%.3f", 2.0 * gain.value);
        return testplugin::put_text(ptr, text);
    }
    case vst2::effCanBeAutomated:
        return index == 0;
    case vst2::effGetProgramName:
        return testplugin::put_text(ptr, gain.programName);
    case vst2::effSetProgramName:
        testplugin::get_text(gain.programName, ptr);
        return 1;
    case vst2::effGetProgramNameIndexed:
        return index == 0 ? testplugin::put_text(ptr, gain.programName) : 0;
    case vst2::effGetPlugCategory:
        return 1; // an effect
    case vst2::effGetVendorVersion:
        return 1100;
    }
    if (const char* text = testplugin::name_for(opcode, kNames))
        return testplugin::put_text(ptr, text);
    return 0;
}

} // namespace

vst2::AEffect* VSTPluginMain(vst2::HostCallback)
{
    auto* gain = new Gain{testplugin::make_effect(dispatch, testplugin::fourcc("TqGn"))};
    gain->effect.setParameter = set_parameter;
    gain->effect.getParameter = get_parameter;
    gain->effect.processReplacing = process_replacing;
    gain->effect.numParams = 1;
    gain->effect.numPrograms = 1;
    gain->effect.version = 1000;
    return &gain->effect;
}
