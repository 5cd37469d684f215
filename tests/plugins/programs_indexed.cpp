// Three programs of four parameters that answer effGetProgramNameIndexed: hosts read names
// directly.
#include "program_bank.h"

vst2::AEffect* VSTPluginMain(vst2::HostCallback)
{
    return program_bank::make_bank(testplugin::fourcc("TqPI"), true);
}
