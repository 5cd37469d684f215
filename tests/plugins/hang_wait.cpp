// Blocks in its entry point on an event nobody sets, as a plug-in stuck on a lock does. A test may
// set it ("hang_wait release <process id>") to see what the abandoned thread does when it wakes.
#include "testplugin.h"

#include <windows.h>

#include <cstdio>

namespace {

constexpr testplugin::Names kNames{"hang_wait", "tqvst", "tqvst test blocked entry"};

intptr_t __cdecl dispatch(vst2::AEffect* effect, int32_t opcode, int32_t, intptr_t, void* ptr,
                          float)
{
    return testplugin::dispatch_plain(effect, opcode, ptr, kNames);
}

} // namespace

vst2::AEffect* VSTPluginMain(vst2::HostCallback)
{
    wchar_t name[64];
    std::swprintf(name, 64, L"hang_wait release %lu", GetCurrentProcessId());
    // Manual reset, so that one release wakes every load still waiting.
    HANDLE release = CreateEventW(nullptr, TRUE, FALSE, name);
    WaitForSingleObject(release, INFINITE);
    CloseHandle(release);
    return new vst2::AEffect(testplugin::make_effect(dispatch, testplugin::fourcc("TqHW")));
}
