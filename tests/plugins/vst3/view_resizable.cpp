// Has an editor a host may resize: its view makes a child window in the host's window, accepts
// no width below 200 (it widens a narrower rectangle in checkSizeConstraint) and asks its frame
// for a size of its own while being attached.
#include "childview.h"

namespace {

constexpr childview::ViewShape kShape = {{0, 0, 400, 300}, true, 200};

} // namespace

vst3::IPluginFactory* PLUGIN_API GetPluginFactory()
{
    return vst3plugin::singleClassFactory<childview::Effect<kShape>>(
        vst3::FUID(0x6C1E7A20, 0x5B3D4F81, 0x9A02C4E6, 0x71D8B3F5), "View Resizable", "Fx");
}
