// Asks the host for the time and tempo inside every block and writes what it got into its first
// output, then automates two parameters in a gesture, so a host sees what a plug-in learns and
// says while it processes.
#include "testplugin.h"

namespace {

constexpr testplugin::Names kNames{"CallbacksInProcess", "tqvst", "tqvst test callbacks"};
// The position the tempo is asked for.
constexpr intptr_t kTempoPosition = 4800;

vst2::HostCallback g_host = nullptr;

// Channel 0 carries, from its first sample: whether a time record came, its sample position,
// tempo, musical position, flags, and the tempo answer. Channel 1 passes the input through.
void __cdecl process(vst2::AEffect* effect, float** inputs, float** outputs, int32_t frames)
{
    testplugin::pass_through(effect, inputs, outputs, frames);
    const intptr_t answer = g_host(effect, vst2::audioMasterGetTime, 0, 0xFFFF, nullptr, 0.0f);
    const auto* time = reinterpret_cast<const vst2::VstTimeInfo*>(answer);
    const intptr_t tempo =
        g_host(effect, vst2::audioMasterTempoAt, 0, kTempoPosition, nullptr, 0.0f);
    const float report[] = {
        time ? 1.0f : 0.0f,
        time ? static_cast<float>(time->samplePos) : 0.0f,
        time ? static_cast<float>(time->tempo) : 0.0f,
        time ? static_cast<float>(time->ppqPos) : 0.0f,
        time ? static_cast<float>(time->flags) : 0.0f,
        static_cast<float>(tempo),
    };
    for (int32_t i = 0; i < frames && i < int32_t(sizeof(report) / sizeof(report[0])); ++i)
        outputs[0][i] = report[i];

    g_host(effect, vst2::audioMasterBeginEdit, 1, 0, nullptr, 0.0f);
    g_host(effect, vst2::audioMasterAutomate, 1, 0, nullptr, 0.25f);
    g_host(effect, vst2::audioMasterAutomate, 2, 0, nullptr, 0.5f);
    g_host(effect, vst2::audioMasterAutomate, 1, 0, nullptr, 0.75f);
    g_host(effect, vst2::audioMasterEndEdit, 1, 0, nullptr, 0.0f);
    g_host(effect, vst2::audioMasterUpdateDisplay, 0, 0, nullptr, 0.0f);
}

intptr_t __cdecl dispatch(vst2::AEffect* effect, int32_t opcode, int32_t, intptr_t, void* ptr,
                          float)
{
    return testplugin::dispatch_plain(effect, opcode, ptr, kNames);
}

} // namespace

vst2::AEffect* VSTPluginMain(vst2::HostCallback host)
{
    g_host = host;
    vst2::AEffect effect = testplugin::make_effect(dispatch, testplugin::fourcc("TqCb"));
    effect.numParams = 3;
    effect.processReplacing = process;
    return new vst2::AEffect(effect);
}
