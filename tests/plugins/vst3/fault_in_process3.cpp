// A stereo effect that loads cleanly and faults in every process call: a host must give its
// caller a result code and go on serving.
#include "selfcontrolled.h"

using namespace vst3;

namespace {

class FaultInProcess final : public vst3plugin::SelfControlled
{
public:
    tresult PLUGIN_API process(ProcessData&) override
    {
        *static_cast<volatile int*>(nullptr) = 1;
        return kResultOk;
    }
};

} // namespace

IPluginFactory* PLUGIN_API GetPluginFactory()
{
    return vst3plugin::singleClassFactory<FaultInProcess>(
        FUID(0x0F1A2B3C, 0x4D5E4F60, 0x8172A3B4, 0xC5D6E7F8), "Fault In Process", "Fx");
}
