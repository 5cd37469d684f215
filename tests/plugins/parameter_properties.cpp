// Describes each of its parameters: properties with a label, automatable or not by index.
#include "testplugin.h"

namespace {

constexpr testplugin::Names kNames{"parameter_properties", "tqvst", "tqvst test properties"};

intptr_t __cdecl dispatch(vst2::AEffect* effect, int32_t opcode, int32_t index, intptr_t, void* ptr,
                          float)
{
    switch (opcode)
    {
    case vst2::effGetParameterProperties:
    {
        auto* props = static_cast<vst2::VstParameterProperties*>(ptr);
        if (!props || index < 0 || index >= effect->numParams) return 0;
        testplugin::put_text(props->label, "Gain");
        props->maxInteger = 10;
        return 1;
    }
    case vst2::effCanBeAutomated:
        return index % 2 == 0;
    case vst2::effGetParamName:
        return testplugin::put_text(ptr, "Gain");
    default:
        return testplugin::dispatch_plain(effect, opcode, ptr, kNames);
    }
}

} // namespace

vst2::AEffect* VSTPluginMain(vst2::HostCallback)
{
    vst2::AEffect effect = testplugin::make_effect(dispatch, testplugin::fourcc("TqPr"));
    effect.numParams = 2;
    return new vst2::AEffect(effect);
}
