// The server's watch on the host process that started it: a server whose host is gone ends.
#pragma once

#include <windows.h>

namespace tqvst {

// The host's process id from the readiness event's name, "RkVstServerEvent_<id>"; 0 when the
// name has no such number.
DWORD HostProcessIdFromEventName(const wchar_t* name);

// Starts a thread that waits for the host process to end. Then it posts WM_QUIT to quitThreadId,
// so that the plug-ins get their normal close, and ends the server outright if that has not
// ended it within graceMs, as when a plug-in is stuck in a block. False when the host cannot be
// watched (it is gone already, or the thread cannot be had).
bool WatchHostProcess(DWORD hostProcessId, DWORD quitThreadId, DWORD graceMs);

} // namespace tqvst
