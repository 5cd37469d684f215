// Has an editor of a fixed size, reported as a mixed-up rectangle: getSize gives right below
// left and bottom below top (left 50, top 100, right 10, bottom 20), and canResize says no.
#include "childview.h"

using namespace vst3;

namespace {

const FUID kClassId(0x6C1E7A21, 0x5B3D4F81, 0x9A02C4E6, 0x71D8B3F5);

constexpr childview::ViewShape kShape = {{50, 100, 10, 20}, false, 0};

FUnknown* createEffect()
{
    IComponent* effect = new (std::nothrow) childview::Effect(kShape);
    return effect;
}

const vst3plugin::ClassEntry kClasses[] = {
    {vst3plugin::classInfo(kClassId, kVstAudioEffectClass, "View Fixed", "Fx", "1.0.0"),
     createEffect},
};

} // namespace

IPluginFactory* PLUGIN_API GetPluginFactory()
{
    static vst3plugin::Factory factory("tqvst", kClasses, 1);
    factory.addRef();
    return &factory;
}
