// Operating system identification: names, the version test, bitness and screen colour depth.
#pragma once

#include "tqkernelapi.h"

// Codes of TqOSVersionOK: the oldest system a caller accepts.
#define TQOS_WIN95 0
#define TQOS_WIN98 1
#define TQOS_WIN98SE 2 // Windows 98 with service pack 1 or later
#define TQOS_WINNT4 4
#define TQOS_WIN2000 5
#define TQOS_WINXP 6
#define TQOS_WINVISTA 7
#define TQOS_WIN7 8
#define TQOS_WIN8 9

// The running system's name, such as "Windows 7 (64-bit)", cut to fit capacity. TRUE when the
// system has a name, FALSE when the "Unknown platform-major.minor" form was used or there is no
// buffer.
TQKERNEL_API BOOL TqGetOS(wchar_t* buffer, int capacity);
// TRUE when the running system has the platform of the code and a version and service pack at
// least those of the code. Unknown codes ask for any Windows 9x.
TQKERNEL_API BOOL TqOSVersionOK(int code, int servicePack);
TQKERNEL_API BOOL TqIsWin95(void);
// TRUE when the system is 64-bit, always so for a 64-bit process.
TQKERNEL_API BOOL TqIsOS64Bit(void);
// TRUE when the screen, or every monitor, shows 16 or more bits per pixel. Both answers are kept
// until TqKernel_UserPrefChanges sees the display change.
TQKERNEL_API BOOL TqIsHighColor(void);
TQKERNEL_API BOOL TqIsAllMonitorsHighColor(void);

#ifdef __cplusplus
namespace tq {

// The name rule and the version test from their inputs: the version record and the native
// processor architecture (PROCESSOR_ARCHITECTURE_*).
BOOL OsName(const OSVERSIONINFOEXW& version, WORD nativeArchitecture, wchar_t* buffer,
            int capacity);
BOOL OsVersionOK(const OSVERSIONINFOEXW& version, int code, int servicePack);

// Forgets the colour-depth answers, so the next query measures again.
void ForgetColorDepth();

} // namespace tq
#endif
