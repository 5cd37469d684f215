// Spins for ever inside its entry point, as a plug-in stuck in a loop of its own does.
#include "testplugin.h"

vst2::AEffect* VSTPluginMain(vst2::HostCallback)
{
    // Volatile, so the compiler keeps a loop the host has to break into.
    volatile bool spinning = true;
    while (spinning)
    {
    }
    return nullptr;
}
