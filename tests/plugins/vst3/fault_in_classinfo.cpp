// Its factory counts one audio class and faults when a host reads that class's record.
#include "pluginterfaces/vst/ivstcomponent.h"
#include "vst3plugin.h"

using namespace vst3;

namespace {

const FUID kClassId(0x6D2A0B93, 0x4E7F4C21, 0x9A35B0E8, 0x17C4F6D2);

const vst3plugin::ClassEntry kClasses[] = {
    {vst3plugin::classInfo(kClassId, kVstAudioEffectClass, "Fault In Class Info", "Fx", "1.0"),
     vst3plugin::createNothing},
};

class FaultingFactory final : public vst3plugin::Factory
{
public:
    FaultingFactory() : Factory("tqvst", kClasses, 1) {}

    tresult PLUGIN_API getClassInfo2(int32, PClassInfo2*) override
    {
        volatile int* volatile target = nullptr;
        *target = 1;
        return kResultOk;
    }
};

} // namespace

IPluginFactory* PLUGIN_API GetPluginFactory()
{
    static FaultingFactory factory;
    factory.addRef();
    return &factory;
}
