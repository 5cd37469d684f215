// Ends the thread that loads it, inside its entry point: the loading thread is gone, the process
// goes on.
#include "testplugin.h"

#include <windows.h>

vst2::AEffect* VSTPluginMain(vst2::HostCallback)
{
    ExitThread(5);
}
