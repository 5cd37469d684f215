// Three programs of four parameters without effGetProgramNameIndexed: hosts must switch to a
// program to read its name.
#include "program_bank.h"

vst2::AEffect* VSTPluginMain(vst2::HostCallback)
{
    return program_bank::make_bank(testplugin::fourcc("TqPP"), false);
}
