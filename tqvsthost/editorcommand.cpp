// tqvsthost editor: opens the plug-in's editor in a window of its size, idles it on a timer for
// the given time, then closes it.
#include "editorcommand.h"

#include "comptr.h"
#include "editormaster.h"
#include "hresulttext.h"
#include "pluginsession.h"

#include <cstdio>

namespace tqhost {
namespace {

constexpr UINT_PTR kIdleTimer = 1;
constexpr UINT kIdleIntervalMs = 50;
constexpr wchar_t kWindowClass[] = L"TqVstHostEditor";
constexpr UINT32 kHasEditorFlag = 0x001;

struct EditorWindowState
{
    ITqVstEffect* effect = nullptr;
    unsigned idles = 0;
};

LRESULT CALLBACK EditorWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    auto* state = reinterpret_cast<EditorWindowState*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (message == WM_TIMER && wParam == kIdleTimer && state && state->effect)
    {
        state->effect->EditorIdle();
        ++state->idles;
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

// The host window goes when the command ends, on every path.
struct WindowDeleter
{
    HWND window;
    ~WindowDeleter()
    {
        if (window) DestroyWindow(window);
    }
};

} // namespace

HWND CreateEditorWindow(const wchar_t* title)
{
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = EditorWindowProc;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    // Whatever the editor leaves uncovered is painted in the dialog colour, not left black.
    windowClass.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
    windowClass.lpszClassName = kWindowClass;
    RegisterClassW(&windowClass);
    const DWORD style = WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX;
    return CreateWindowExW(0, kWindowClass, title, style, CW_USEDEFAULT, CW_USEDEFAULT, 200, 100,
                           nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
}

int RunEditor(const Options& options)
{
    if (options.arguments.size() != 1)
    {
        fwprintf(stderr, L"tqvsthost: editor needs exactly one plug-in file (see --help)\n");
        return 1;
    }
    PluginSession session;
    if (!OpenPlugin(options, options.arguments[0], session)) return 1;
    ITqVstEffect* effect = session.effect.Get();
    TqVstEffectInfo info = {};
    HRESULT hr = effect->GetEffectInfo(&info);
    if (FAILED(hr)) return ReportFailure(L"could not read the plug-in's facts", hr);
    if (!(info.flags & kHasEditorFlag))
        return ReportFailure(session.path + L" has no editor", E_NOTIMPL);

    WCHAR name[64] = {};
    effect->GetEffectName(name, 64);
    WindowDeleter host{CreateEditorWindow(name)};
    if (!host.window)
        return ReportFailure(L"could not create the editor's window",
                             HRESULT_FROM_WIN32(GetLastError()));
    EditorWindowState state;
    SetWindowLongPtrW(host.window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&state));

    tq::ComPtr<ITqVstMaster> master =
        tq::ComPtr<ITqVstMaster>::Attach(new EditorMaster(host.window));
    hr = effect->SetMaster(master.Get());
    if (FAILED(hr)) return ReportFailure(L"could not give the plug-in its host object", hr);

    UINT32 rect[4] = {};
    hr = effect->OpenEditor(host.window, rect);
    if (FAILED(hr))
    {
        effect->SetMaster(nullptr);
        return ReportFailure(L"could not open the editor", hr);
    }
    const UINT32 width = rect[2] - rect[0], height = rect[3] - rect[1];
    wprintf(L"Editor of %ls: %u x %u (left %u, top %u, right %u, bottom %u)\n", name, width, height,
            rect[0], rect[1], rect[2], rect[3]);
    if (width && height) EditorMaster::FitClientArea(host.window, width, height);
    ShowWindow(host.window, SW_SHOWNORMAL);
    state.effect = effect;
    SetTimer(host.window, kIdleTimer, kIdleIntervalMs, nullptr);

    const ULONGLONG deadline = GetTickCount64() + static_cast<ULONGLONG>(options.seconds * 1000.0);
    for (ULONGLONG now = GetTickCount64(); now < deadline && IsWindow(host.window);
         now = GetTickCount64())
    {
        MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(deadline - now),
                                  QS_ALLINPUT);
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
        {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
    if (IsWindow(host.window)) KillTimer(host.window, kIdleTimer);
    state.effect = nullptr;
    hr = effect->CloseEditor();
    effect->SetMaster(nullptr);
    if (FAILED(hr)) return ReportFailure(L"could not close the editor", hr);
    wprintf(L"Closed the editor after %u idle calls\n", state.idles);
    return 0;
}

} // namespace tqhost
