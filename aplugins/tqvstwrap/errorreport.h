// Hooks of the crash reporter that watches server processes and plug-in loads.
#pragma once

#include <windows.h>

// This platform has no crash reporter: every hook does nothing and reports success.
HRESULT ErrorReport_StartMonitoringProcess(DWORD processId, HMODULE clientModule);
HRESULT ErrorReport_StopMonitoringProcess(DWORD processId);
void ErrorReport_StartTrapBypass();
void ErrorReport_EndTrapBypass();

// Hands an exception that the kernel's last-resort filter caught to the reporter. Inline, because
// the kernel calls it and links nothing that sits above it.
inline void ErrorReport_UnmanagedException(EXCEPTION_POINTERS*)
{
}
