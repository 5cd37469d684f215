// Its factory answers only the first version of the factory interface, so a host cannot read
// the class records it needs.
#include "pluginterfaces/vst/ivstcomponent.h"
#include "vst3plugin.h"

using namespace vst3;

namespace {

const FUID kClassId(0x2E91D4A7, 0x6B034F58, 0x8D17C2E9, 0x40A5B6F1);

const vst3plugin::ClassEntry kClasses[] = {
    {vst3plugin::classInfo(kClassId, kVstAudioEffectClass, "First Factory Only", "Fx", "1.0"),
     vst3plugin::createNothing},
};

class FirstVersionFactory final : public vst3plugin::Factory
{
public:
    FirstVersionFactory() : Factory("tqvst", kClasses, 1) {}

    tresult PLUGIN_API queryInterface(const TUID iid, void** obj) override
    {
        if (obj && iidEqual(iid, IPluginFactory2::iid))
        {
            *obj = nullptr;
            return kNoInterface;
        }
        return Factory::queryInterface(iid, obj);
    }
};

} // namespace

IPluginFactory* PLUGIN_API GetPluginFactory()
{
    static FirstVersionFactory factory;
    factory.addRef();
    return &factory;
}
