// The kernel's ordered start and end, and the values start-up stores for everyone to read.
#include "tqkernel.h"

#include "tqcpu.h"
#include "tqlang.h"
#include "tqos.h"
#include "tqprintf.h"
#include "tqtimer.h"

namespace tq {
namespace {

// Written by start-up on the main thread before other threads run; read by everyone.
struct KernelValues
{
    HMODULE appKernel = nullptr;
    DWORD options = 0;
    HWND splash = nullptr;
};
KernelValues g_kernel;

} // namespace

int KernelMode()
{
    if (g_kernel.options & TQKERNEL_OPT_MODE1) return 1;
    if (g_kernel.options & TQKERNEL_OPT_MODE2) return 2;
    return 0;
}

} // namespace tq

using namespace tq;

// Every step that makes something is guarded by its own "done" state, so a second call adds
// nothing and only the stored values are written again. The user-interface kit's colour table,
// GDI object cache and cursor cache are not part of this kernel, so there is nothing of theirs to
// reset here or to free at the end.
TQKERNEL_API BOOL TqKernel_EarlyInitialize(HMODULE module, DWORD options)
{
    // A missing floppy or an unreadable file is the caller's error to report, not a system box.
    SetErrorMode(GetErrorMode() | SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
    SelectTimers();
    TqIsWin95(); // answered once here, on the main thread, before other threads ask
    g_kernel.appKernel = module;
    g_kernel.options = options;
    DetectCpu();
    g_kernel.splash = nullptr;

    BOOL languageOpened = TRUE;
    if (SUCCEEDED(TqPrintF_Initialize()) && !TqLang_GetKernelLang())
    {
        if (SUCCEEDED(TqLang_OpenKernelLang(module)))
            TqLang_GetInternationals(nullptr, 0);
        else
            languageOpened = FALSE;
    }

    TqTimer_LateInitialize();
    TqPerf_Initialize();
    return languageOpened;
}

TQKERNEL_API BOOL TqKernel_LateTerminate(HMODULE)
{
    TqLang_CloseKernelLang();
    TqPrintF_Terminate();
    g_kernel.appKernel = nullptr;
    return TRUE;
}

TQKERNEL_API HMODULE TqKernel_GetAppKernel(void)
{
    return g_kernel.appKernel;
}

TQKERNEL_API DWORD TqKernel_GetAppKernelPathName(wchar_t* buffer, DWORD capacity)
{
    if (!buffer || capacity == 0) return 0;
    const DWORD length = GetModuleFileNameW(g_kernel.appKernel, buffer, capacity);
    // A path that filled the buffer was cut.
    if (length == 0 || length >= capacity)
    {
        buffer[0] = L'\0';
        return 0;
    }
    return length;
}

TQKERNEL_API void TqKernel_SetSplash(HWND window)
{
    g_kernel.splash = window;
}

TQKERNEL_API HWND TqKernel_GetSplash(void)
{
    return g_kernel.splash;
}

TQKERNEL_API void TqKernel_UserPrefChanges(UINT message)
{
    if (message == WM_SYSCOLORCHANGE || message == WM_DISPLAYCHANGE) ForgetColorDepth();
}

TQKERNEL_API void TqPerf_Initialize(void)
{
}
