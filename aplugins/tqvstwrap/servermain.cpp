// tqvstserver.exe: registers the class object, tells the starter it is ready, and serves host
// calls on its message loop until nothing holds it any more.
#include "effectfactory.h"
#include "rootwindow.h"
#include "serverargs.h"
#include "serverlifetime.h"
#include "tqkernel.h"
#include "uniquehandle.h"

#include <objbase.h>

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

            tq::UniqueHandle ready(
                OpenEventW(EVENT_MODIFY_STATE, FALSE, args.GetSwitchValue(L"Event")));
            if (ready)
            {
                SetEvent(ready.Get());
                ready.Reset();
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
            RevokeVstClassObject();
            CoUninitialize();
        }
    }
    TqKernel_LateTerminate(module);
    return 0;
}
