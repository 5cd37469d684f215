// A class with no audio buses whose id is the one a host serves all the same: it must load with
// one channel each way and never be asked to switch a bus.
#include "selfcontrolled.h"

using namespace vst3;

namespace {

class Exempt final : public vst3plugin::SelfControlled
{
public:
    int32 PLUGIN_API getBusCount(MediaType, BusDirection) override { return 0; }
    // Bus 0 still answers as a stereo main bus, so a host that fell back on it would come here.
    tresult PLUGIN_API activateBus(MediaType, BusDirection, int32, TBool) override
    {
        return kInternalError;
    }
};

} // namespace

// {32ECDB17-D089-4B22-AF97-59F8F5D58DD4}
IPluginFactory* PLUGIN_API GetPluginFactory()
{
    return vst3plugin::singleClassFactory<Exempt>(
        FUID(0x32ECDB17, 0xD0894B22, 0xAF9759F8, 0xF5D58DD4), "Exempt Class", "Fx");
}
