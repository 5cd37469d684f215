// Asks the host for the time with a filter mask on each idle tick, and keeps what it got.
#include "testplugin.h"
#include "time_reporter_report.h"

namespace {

using namespace time_reporter;

constexpr testplugin::Names kNames{"time_reporter", "tqvst", "tqvst test time reporter"};

vst2::HostCallback g_host = nullptr;
int32_t g_mask = 0;
Report g_report;

void AskTime(vst2::AEffect* effect)
{
    ++g_report.asks;
    const intptr_t answer = g_host(effect, vst2::audioMasterGetTime, 0, g_mask, nullptr, 0.0f);
    // The host overwrites its record on the next call: copy it at once.
    const auto* time = reinterpret_cast<const vst2::VstTimeInfo*>(answer);
    g_report.gotTime = time ? 1 : 0;
    g_report.time = time ? *time : vst2::VstTimeInfo{};
    g_report.tempo = g_host(effect, vst2::audioMasterTempoAt, 0, kTempoPosition, nullptr, 0.0f);
}

intptr_t __cdecl dispatch(vst2::AEffect* effect, int32_t opcode, int32_t, intptr_t, void* ptr,
                          float)
{
    if (opcode == vst2::effIdle) AskTime(effect);
    return testplugin::dispatch_plain(effect, opcode, ptr, kNames);
}

} // namespace

vst2::AEffect* VSTPluginMain(vst2::HostCallback host)
{
    g_host = host;
    g_report = {};
    return new vst2::AEffect(testplugin::make_effect(dispatch, testplugin::fourcc("TqTR")));
}

extern "C" __declspec(dllexport) void __cdecl TqTimeReporterSetMask(int32_t mask)
{
    g_mask = mask;
}

extern "C" __declspec(dllexport) void __cdecl TqTimeReporterReport(Report* report)
{
    *report = g_report;
}
