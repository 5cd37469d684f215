// Kernel start-up and shutdown entry points, and the kernel's cursor loader.
#pragma once

#include <windows.h>

extern "C" {

// Called first thing by a process that uses the kernel, with the process's module and flags.
HRESULT TqKernel_EarlyInitialize(HMODULE module, DWORD flags);
// Called last thing, with the same module.
HRESULT TqKernel_LateTerminate(HMODULE module);
HCURSOR TqLoadCursor(HINSTANCE instance, UINT_PTR id);
}
