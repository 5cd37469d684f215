// Asks the host a fixed set of questions, in its entry point (no record bound yet) and in effOpen
// (bound), and lets a host in the same process read the answers.
#include "host_probe_answers.h"
#include "testplugin.h"

namespace {

using namespace host_probe;

constexpr testplugin::Names kNames{"host_probe", "tqvst", "tqvst test host probe"};
static_assert(kProbeId == testplugin::fourcc("TqHP"));

vst2::HostCallback g_host = nullptr;
intptr_t g_answers[kAnswerCount];
char g_vendor[64] = "untouched";

intptr_t Ask(vst2::AEffect* effect, int32_t opcode, void* ptr = nullptr, intptr_t value = 0)
{
    return g_host(effect, opcode, 0, value, ptr, 0.0f);
}

intptr_t __cdecl dispatch(vst2::AEffect* effect, int32_t opcode, int32_t, intptr_t, void* ptr,
                          float)
{
    if (opcode == vst2::effOpen)
    {
        char sizeWindow[] = "sizeWindow";
        char upperCase[] = "SizeWindow";
        g_answers[kOpenVersion] = Ask(effect, vst2::audioMasterVersion);
        g_answers[kOpenCurrentId] = Ask(effect, vst2::audioMasterCurrentId);
        g_answers[kOpenCanDoSizeWindow] = Ask(effect, vst2::audioMasterCanDo, sizeWindow);
        g_answers[kOpenCanDoUpperCase] = Ask(effect, vst2::audioMasterCanDo, upperCase);
        g_answers[kOpenCanDoNull] = Ask(effect, vst2::audioMasterCanDo);
        g_answers[kOpenVendorString] = Ask(effect, vst2::audioMasterGetVendorString, g_vendor);
        g_answers[kOpenVendorVersion] = Ask(effect, vst2::audioMasterGetVendorVersion);
        g_answers[kOpenUpdateDisplay] = Ask(effect, vst2::audioMasterUpdateDisplay);
        g_answers[kOpenGetTime] = Ask(effect, vst2::audioMasterGetTime, nullptr, 0xFFFF);
        g_answers[kOpenAutomatable] = Ask(effect, vst2::audioMasterGetNumAutomatableParameters);
    }
    return testplugin::dispatch_plain(effect, opcode, ptr, kNames);
}

} // namespace

vst2::AEffect* VSTPluginMain(vst2::HostCallback host)
{
    g_host = host;
    for (intptr_t& answer : g_answers)
        answer = -1;
    g_answers[kEntryVersion] = Ask(nullptr, vst2::audioMasterVersion);
    g_answers[kEntryCurrentId] = Ask(nullptr, vst2::audioMasterCurrentId);
    g_answers[kEntryUpdateDisplay] = Ask(nullptr, vst2::audioMasterUpdateDisplay);
    return new vst2::AEffect(testplugin::make_effect(dispatch, static_cast<int32_t>(kProbeId)));
}

// Copies the answers and the vendor text the host gave; returns how many answers there are.
extern "C" __declspec(dllexport) int __cdecl TqProbeAnswers(intptr_t* answers, int count,
                                                            char* vendor)
{
    for (int i = 0; i < count && i < kAnswerCount; ++i)
        answers[i] = g_answers[i];
    testplugin::get_text(*reinterpret_cast<char(*)[64]>(vendor), g_vendor);
    return kAnswerCount;
}
