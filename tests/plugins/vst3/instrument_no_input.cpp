// An instrument as most are built: a stereo output and no audio input at all, which a host that
// serves only effects with both must refuse to load.
#include "selfcontrolled.h"

using namespace vst3;

namespace {

class Instrument final : public vst3plugin::SelfControlled
{
public:
    int32 PLUGIN_API getBusCount(MediaType type, BusDirection dir) override
    {
        return type == kAudio && dir == kOutput ? 1 : 0;
    }
};

} // namespace

IPluginFactory* PLUGIN_API GetPluginFactory()
{
    return vst3plugin::singleClassFactory<Instrument>(
        FUID(0x6C1F0A21, 0x5D3B4E88, 0x9A0C2F71, 0x3B8E4D10), "No Input Instrument",
        "Instrument|Synth");
}
