// Stops every fault of plug-in code except the worker's abort, and resets the FPU after
// arithmetic and access faults, which leave the control words in whatever state the plug-in set.
#include "pluginexceptionfilter.h"

namespace tqvst {

GuardVerdict PluginExceptionFilter(EXCEPTION_POINTERS* pointers, void*)
{
    const DWORD code = pointers->ExceptionRecord->ExceptionCode;
    if (code == kAbortException) return GuardVerdict::PassOn;
    const bool floatingOrAccess = code == EXCEPTION_ACCESS_VIOLATION ||
                                  (code >= 0xC000008D && code <= 0xC0000093) ||
                                  code == 0xC00002B4 || code == 0xC00002B5;
    if (floatingOrAccess) ResetFloatingPoint();
    return GuardVerdict::Stop;
}

} // namespace tqvst
