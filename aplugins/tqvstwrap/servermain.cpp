// tqvstserver.exe: registers the class object, tells the starter it is ready, and serves host
// calls on its message loop until nothing holds it any more.
#include "effectfactory.h"
#include "hostwatch.h"
#include "interfaceanchor.h"
#include "rootwindow.h"
#include "serverargs.h"
#include "serverlifetime.h"
#include "tqkernel.h"
#include "uniquehandle.h"

#include <objbase.h>

namespace {

// A host that gave up on its server before connecting never comes back, and a server is otherwise
// tested for its end only when a hold changes: one that nobody holds this long after it said it
// was ready ends. Hosts connect at once, and give up within seconds.
constexpr UINT kUnclaimedMs = 10000;
// After its host has gone, the server gives its plug-ins this long to close before it ends
// outright: well inside a second in all.
constexpr DWORD kOrphanGraceMs = 600;

void CALLBACK EndIfUnclaimed(HWND, UINT, UINT_PTR timer, DWORD)
{
    KillTimer(nullptr, timer);
    CheckServerQuit();
}

// Letting go of the last stub of an interface right after a call on it was answered can leave the
// platform's call runtime waiting for ever for a wake-up it has lost; the server's teardown does
// exactly that after its host's last release. Nothing is left to serve by then, so a teardown
// that has not finished in this long ends the process.
constexpr DWORD kTeardownMs = 1000;

DWORD WINAPI EndStuckTeardown(void*)
{
    Sleep(kTeardownMs);
    TerminateProcess(GetCurrentProcess(), 0);
    return 0;
}

} // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, LPWSTR, int showCommand)
{
    HMODULE module = instance;
    TqKernel_EarlyInitialize(module, 0);
    {
        ServerArgs args;
        if (SUCCEEDED(CoInitialize(nullptr)))
        {
            const wchar_t* product = args.GetSwitchValue(L"Product");
            const wchar_t* vendor = args.GetSwitchValue(L"Vendor");
            // A failed registration still lets the server run; the starter sees it as a class
            // object it cannot get.
            RegisterVstClassObject(GetCurrentThreadId(), vendor, product);
            tqvst::AnchorInterfaces();

            const wchar_t* eventName = args.GetSwitchValue(L"Event");
            tq::UniqueHandle ready(OpenEventW(EVENT_MODIFY_STATE, FALSE, eventName));
            if (ready)
            {
                tqvst::WatchHostProcess(tqvst::HostProcessIdFromEventName(eventName),
                                        GetCurrentThreadId(), kOrphanGraceMs);
                SetEvent(ready.Get());
                ready.Reset();
                SetTimer(nullptr, 0, kUnclaimedMs, EndIfUnclaimed);
            }
            else if (RootWindow* window = RootWindow::Create(instance))
            {
                // Started by hand, or the starter has gone: show a sign of life.
                ShowWindow(window->Handle(), showCommand);
            }

            MSG message;
            while (GetMessageW(&message, nullptr, 0, 0) > 0)
            {
                TranslateMessage(&message);
                DispatchMessageW(&message);
            }
            tq::UniqueHandle teardownBound(CreateThread(nullptr, 64 * 1024, EndStuckTeardown,
                                                        nullptr, STACK_SIZE_PARAM_IS_A_RESERVATION,
                                                        nullptr));
            RevokeVstClassObject();
            tqvst::ReleaseInterfaceAnchors();
            CoUninitialize();
        }
    }
    TqKernel_LateTerminate(module);
    return 0;
}
