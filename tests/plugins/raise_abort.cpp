// Raises, inside its entry point, the code a host uses to abandon a hung load, as if the host had
// given up on it.
#include "testplugin.h"

#include <windows.h>

vst2::AEffect* VSTPluginMain(vst2::HostCallback)
{
    RaiseException(0xE0000001, EXCEPTION_NONCONTINUABLE, 0, nullptr);
    return nullptr;
}
