// Claims 0x40000000 parameters in two programs: four bytes each overflow a 32-bit preset size.
// TqSetParameterCount changes the count of the record made last.
#include "testplugin.h"

namespace {

vst2::AEffect* g_last = nullptr;

intptr_t __cdecl dispatch(vst2::AEffect* effect, int32_t opcode, int32_t, intptr_t, void* ptr,
                          float)
{
    if (opcode == vst2::effGetProgramName) return testplugin::put_text(ptr, "Huge");
    if (opcode == vst2::effClose && effect == g_last) g_last = nullptr;
    return testplugin::dispatch_plain(effect, opcode, ptr, {"huge_param_count", "tqvst", "huge"});
}

float __cdecl quarter(vst2::AEffect*, int32_t)
{
    return 0.25f;
}

} // namespace

extern "C" __declspec(dllexport) void __cdecl TqSetParameterCount(int32_t count)
{
    if (g_last) g_last->numParams = count;
}

vst2::AEffect* VSTPluginMain(vst2::HostCallback)
{
    g_last = new vst2::AEffect(testplugin::make_effect(dispatch, testplugin::fourcc("TqHP")));
    g_last->getParameter = quarter;
    g_last->numParams = 0x40000000;
    g_last->numPrograms = 2;
    return g_last;
}
