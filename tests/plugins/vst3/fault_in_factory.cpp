// Faults inside GetPluginFactory, before a host has a factory to ask.
#include "vst3plugin.h"

vst3::IPluginFactory* PLUGIN_API GetPluginFactory()
{
    volatile int* volatile target = nullptr;
    *target = 1;
    return nullptr;
}
