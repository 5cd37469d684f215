// A stereo effect that faults as soon as the host initialises it, before any bus is known.
#include "selfcontrolled.h"

using namespace vst3;

namespace {

class FaultInInitialize final : public vst3plugin::SelfControlled
{
public:
    tresult PLUGIN_API initialize(FUnknown*) override
    {
        *static_cast<volatile int*>(nullptr) = 1;
        return kResultOk;
    }
};

} // namespace

IPluginFactory* PLUGIN_API GetPluginFactory()
{
    return vst3plugin::singleClassFactory<FaultInInitialize>(
        FUID(0x0F1A2B3D, 0x4D5E4F60, 0x8172A3B4, 0xC5D6E7F8), "Fault In Initialize", "Fx");
}
