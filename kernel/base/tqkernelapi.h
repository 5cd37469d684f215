// What every kernel header shares: the export marker of public functions and the common codes.
#pragma once

#include <windows.h>

// Kernel functions are plain C functions, exported by the executables that link the kernel so
// that other modules can call them.
#ifdef __cplusplus
#define TQKERNEL_API extern "C" __declspec(dllexport)
#else
#define TQKERNEL_API __declspec(dllexport)
#endif
// The few kernel classes are exported whole, under their C++ names.
#define TQKERNEL_CLASS __declspec(dllexport)

// Codes the whole kernel uses; each has its text in the error handler's table.
#define TQ_E_NOTFOUND ((HRESULT)0x8004E00AL)       // not found
#define TQ_E_CANCELLED ((HRESULT)0x8004E00CL)      // cancelled by the user; never raises a box
#define TQ_E_BUFFERTOOSMALL ((HRESULT)0x8004E03CL) // a buffer that is too small, everywhere
