// Has an editor: a child window in the host's window, a mixed-up rectangle, and size requests at
// moments a host must tell apart (while opening, during editor idle, during plain idle).
#include "editor_child_record.h"
#include "testplugin.h"

#include <windows.h>

namespace {

using namespace editor_child;

constexpr testplugin::Names kNames{"editor_child", "tqvst", "tqvst test editor child"};

vst2::HostCallback g_host = nullptr;
Record g_record;
vst2::ERect g_rect;

void AskSize(vst2::AEffect* effect, uint32_t width, uint32_t height)
{
    g_host(effect, vst2::audioMasterSizeWindow, int32_t(width), intptr_t(height), nullptr, 0.0f);
}

intptr_t OpenChild(vst2::AEffect* effect, void* parent)
{
    ++g_record.opens;
    g_record.parent = reinterpret_cast<intptr_t>(parent);
    // The host's window may belong to another process: no parent notification to wait on it.
    HWND child = CreateWindowExW(
        WS_EX_NOPARENTNOTIFY, L"STATIC", kChildText, WS_CHILD | WS_VISIBLE | WS_BORDER | SS_CENTER,
        0, 0, kLeft - kRight, kTop - kBottom, static_cast<HWND>(parent), nullptr, nullptr, nullptr);
    g_record.child = reinterpret_cast<intptr_t>(child);
    AskSize(effect, kOpenWidth, kOpenHeight);
    return child ? 1 : 0;
}

intptr_t __cdecl dispatch(vst2::AEffect* effect, int32_t opcode, int32_t, intptr_t value, void* ptr,
                          float)
{
    switch (opcode)
    {
    case vst2::effEditOpen:
        return OpenChild(effect, ptr);
    case vst2::effEditGetRect:
        g_rect = {kTop, kLeft, kBottom, kRight};
        *static_cast<vst2::ERect**>(ptr) = &g_rect;
        return 1;
    case vst2::effSetEditKnobMode:
        g_record.knobMode = static_cast<int32_t>(value);
        return 1;
    case vst2::effEditIdle:
        if (++g_record.editIdles == kEditIdleAfter)
            AskSize(effect, kEditIdleWidth, kEditIdleHeight);
        return 0;
    case vst2::effIdle:
        AskSize(effect, kIdleWidth, kIdleHeight);
        return 0;
    case vst2::effEditClose:
        ++g_record.closes;
        DestroyWindow(reinterpret_cast<HWND>(g_record.child));
        g_record.child = 0;
        return 0;
    default:
        return testplugin::dispatch_plain(effect, opcode, ptr, kNames);
    }
}

} // namespace

vst2::AEffect* VSTPluginMain(vst2::HostCallback host)
{
    g_host = host;
    g_record = {};
    g_record.knobMode = -1;
    vst2::AEffect effect = testplugin::make_effect(dispatch, testplugin::fourcc("TqEC"));
    effect.flags |= vst2::effFlagsHasEditor;
    return new vst2::AEffect(effect);
}

extern "C" __declspec(dllexport) void __cdecl TqEditorChildRecord(Record* record)
{
    *record = g_record;
}
