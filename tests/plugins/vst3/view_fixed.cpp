// Has an editor of a fixed size, reported as a mixed-up rectangle: getSize gives right below
// left and bottom below top (left 50, top 100, right 10, bottom 20), and canResize says no.
#include "childview.h"

namespace {

constexpr childview::ViewShape kShape = {{50, 100, 10, 20}, false, 0};

} // namespace

vst3::IPluginFactory* PLUGIN_API GetPluginFactory()
{
    return vst3plugin::singleClassFactory<childview::Effect<kShape>>(
        vst3::FUID(0x6C1E7A21, 0x5B3D4F81, 0x9A02C4E6, 0x71D8B3F5), "View Fixed", "Fx");
}
