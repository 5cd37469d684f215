// Faults inside its entry point, before the host has any record to look at.
#include "testplugin.h"

vst2::AEffect* VSTPluginMain(vst2::HostCallback)
{
    testplugin::write_null();
    return nullptr;
}
