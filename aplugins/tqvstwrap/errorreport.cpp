// Crash-reporter hooks; there is no crash reporter on this platform, so they do nothing.
#include "errorreport.h"

HRESULT ErrorReport_StartMonitoringProcess(DWORD, HMODULE)
{
    return S_OK;
}
HRESULT ErrorReport_StopMonitoringProcess(DWORD)
{
    return S_OK;
}
void ErrorReport_StartTrapBypass()
{
}
void ErrorReport_EndTrapBypass()
{
}
