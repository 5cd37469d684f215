// Sleeps inside its entry point for longer than a host's scan would wait, then answers normally.
#include "testplugin.h"

#include <windows.h>

namespace {

constexpr DWORD kEntrySleepMs = 3000;
constexpr testplugin::Names kNames{"hang_sleep", "tqvst", "tqvst test slow entry"};

intptr_t __cdecl dispatch(vst2::AEffect* effect, int32_t opcode, int32_t, intptr_t, void* ptr,
                          float)
{
    return testplugin::dispatch_plain(effect, opcode, ptr, kNames);
}

} // namespace

vst2::AEffect* VSTPluginMain(vst2::HostCallback)
{
    Sleep(kEntrySleepMs);
    return new vst2::AEffect(testplugin::make_effect(dispatch, testplugin::fourcc("TqHS")));
}
