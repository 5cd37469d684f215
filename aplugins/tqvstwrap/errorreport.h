// Hooks of the crash reporter that watches server processes and plug-in loads.
#pragma once

#include <windows.h>

// This platform has no crash reporter: every hook does nothing and reports success.
HRESULT ErrorReport_StartMonitoringProcess(DWORD processId, HMODULE clientModule);
HRESULT ErrorReport_StopMonitoringProcess(DWORD processId);
void ErrorReport_StartTrapBypass();
void ErrorReport_EndTrapBypass();
