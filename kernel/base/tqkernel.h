// Kernel start-up and shut-down, and the process-wide values start-up stores.
#pragma once

#include "tqkernelapi.h"

// Bits of the option word of TqKernel_EarlyInitialize that choose the kernel mode.
#define TQKERNEL_OPT_MODE1 0x00000001u
#define TQKERNEL_OPT_MODE2 0x00000020u

// The first kernel call of a process, with the process's module: chooses the timers, detects the
// processor, creates the token table of formatted printing and opens the kernel language. TRUE,
// or FALSE when the kernel language could not be opened; everything else is set up either way.
// A second call keeps what the first made and only stores module and options again.
TQKERNEL_API BOOL TqKernel_EarlyInitialize(HMODULE module, DWORD options);
// The last kernel call: closes the kernel language and destroys the token table. Safe without a
// start-up before it. TRUE.
TQKERNEL_API BOOL TqKernel_LateTerminate(HMODULE module);

// The module given to TqKernel_EarlyInitialize, null before and after.
TQKERNEL_API HMODULE TqKernel_GetAppKernel(void);
// Its file path (the executable's when there is none): the length, or 0 with an empty buffer
// when the path does not fit or there is no buffer.
TQKERNEL_API DWORD TqKernel_GetAppKernelPathName(wchar_t* buffer, DWORD capacity);
TQKERNEL_API void TqKernel_SetSplash(HWND window);
TQKERNEL_API HWND TqKernel_GetSplash(void);
// Tells the kernel about a change of the user's settings: WM_SYSCOLORCHANGE and WM_DISPLAYCHANGE
// make the colour-depth queries measure again; other messages are ignored.
TQKERNEL_API void TqKernel_UserPrefChanges(UINT message);

// The vector-math facade's start-up: that subsystem is not part of this kernel, so it is empty.
TQKERNEL_API void TqPerf_Initialize(void);

#ifdef __cplusplus
namespace tq {

// The kernel mode from the option word: 1 with TQKERNEL_OPT_MODE1, else 2 with
// TQKERNEL_OPT_MODE2, else 0.
int KernelMode();

} // namespace tq
#endif
