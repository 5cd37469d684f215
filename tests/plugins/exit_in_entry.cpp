// Ends the process that loads it, inside its entry point: what a host sees of a crash that no
// guard can catch, since the server is simply gone.
#include "testplugin.h"

#include <windows.h>

vst2::AEffect* VSTPluginMain(vst2::HostCallback)
{
    TerminateProcess(GetCurrentProcess(), 3);
    return nullptr;
}
