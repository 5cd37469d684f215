// Spins for ever inside GetPluginFactory, as a module stuck in a loop of its own does before a
// host has any class to look at.
#include "vst3plugin.h"

vst3::IPluginFactory* PLUGIN_API GetPluginFactory()
{
    // Volatile, so the compiler keeps a loop the host has to break into.
    volatile bool spinning = true;
    while (spinning)
    {
    }
    return nullptr;
}
