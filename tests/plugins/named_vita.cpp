// Calls itself "ViTa" and has no product name, so a host must fall back on the file's name.
#include "testplugin.h"

namespace {

// Mixed case on purpose: the host must compare the name without regard to case.
constexpr testplugin::Names kNames{"ViTa", "tqvst", ""};

intptr_t __cdecl dispatch(vst2::AEffect* effect, int32_t opcode, int32_t, intptr_t, void* ptr,
                          float)
{
    return testplugin::dispatch_plain(effect, opcode, ptr, kNames);
}

} // namespace

vst2::AEffect* VSTPluginMain(vst2::HostCallback)
{
    return new vst2::AEffect(testplugin::make_effect(dispatch, testplugin::fourcc("TqVi")));
}
