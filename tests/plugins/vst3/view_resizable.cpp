// Has an editor a host may resize: its view makes a child window in the host's window, accepts
// no width below 200 (it widens a narrower rectangle in checkSizeConstraint) and asks its frame
// for a size of its own while being attached.
#include "childview.h"

using namespace vst3;

namespace {

const FUID kClassId(0x6C1E7A20, 0x5B3D4F81, 0x9A02C4E6, 0x71D8B3F5);

constexpr childview::ViewShape kShape = {{0, 0, 400, 300}, true, 200};

FUnknown* createEffect()
{
    IComponent* effect = new (std::nothrow) childview::Effect(kShape);
    return effect;
}

const vst3plugin::ClassEntry kClasses[] = {
    {vst3plugin::classInfo(kClassId, kVstAudioEffectClass, "View Resizable", "Fx", "1.0.0"),
     createEffect},
};

} // namespace

IPluginFactory* PLUGIN_API GetPluginFactory()
{
    static vst3plugin::Factory factory("tqvst", kClasses, 1);
    factory.addRef();
    return &factory;
}
