// Asks the host for idle time from inside its own idle tick, as plug-ins that pump their GUI do,
// and counts how often and how deeply the host lets effIdle in.
#include "testplugin.h"

namespace {

constexpr testplugin::Names kNames{"idle_recursion", "tqvst", "tqvst test idle recursion"};

vst2::HostCallback g_host = nullptr;
int32_t g_entries = 0;
int32_t g_depth = 0;
int32_t g_deepest = 0;

intptr_t __cdecl dispatch(vst2::AEffect* effect, int32_t opcode, int32_t, intptr_t, void* ptr,
                          float)
{
    if (opcode == vst2::effOpen) g_host(effect, vst2::audioMasterNeedIdle, 0, 0, nullptr, 0.0f);
    if (opcode != vst2::effIdle) return testplugin::dispatch_plain(effect, opcode, ptr, kNames);
    ++g_entries;
    g_deepest = std::max(g_deepest, ++g_depth);
    g_host(effect, vst2::audioMasterIdle, 0, 0, nullptr, 0.0f);
    --g_depth;
    return 1;
}

} // namespace

vst2::AEffect* VSTPluginMain(vst2::HostCallback host)
{
    g_host = host;
    g_entries = g_depth = g_deepest = 0;
    return new vst2::AEffect(testplugin::make_effect(dispatch, testplugin::fourcc("TqIR")));
}

// effIdle entries so far and the deepest nesting of effIdle seen.
extern "C" __declspec(dllexport) void __cdecl TqIdleRecursionCounts(int32_t* entries,
                                                                    int32_t* deepest)
{
    *entries = g_entries;
    *deepest = g_deepest;
}
