// Carries one of the ids that get parameter 0 read and written back after a block size change,
// and counts those calls.
#include "testplugin.h"

namespace {

constexpr testplugin::Names kNames{"nudge_probe", "tqvst", "tqvst test nudge probe"};
volatile long g_reads = 0;
volatile long g_writes = 0;
float g_value = 0.75f;

intptr_t __cdecl dispatch(vst2::AEffect* effect, int32_t opcode, int32_t, intptr_t, void* ptr,
                          float)
{
    return testplugin::dispatch_plain(effect, opcode, ptr, kNames);
}

float __cdecl getParameter(vst2::AEffect*, int32_t index)
{
    if (index == 0) g_reads = g_reads + 1;
    return g_value;
}

void __cdecl setParameter(vst2::AEffect*, int32_t index, float value)
{
    if (index == 0) g_writes = g_writes + 1;
    g_value = value;
}

} // namespace

vst2::AEffect* VSTPluginMain(vst2::HostCallback)
{
    auto* effect = new vst2::AEffect(testplugin::make_effect(dispatch, testplugin::fourcc("LF15")));
    effect->numParams = 1;
    effect->getParameter = getParameter;
    effect->setParameter = setParameter;
    return effect;
}

// Reads and writes of parameter 0 so far, and its value.
extern "C" __declspec(dllexport) void __cdecl TqNudgeCounts(long* reads, long* writes, float* value)
{
    *reads = g_reads;
    *writes = g_writes;
    *value = g_value;
}
