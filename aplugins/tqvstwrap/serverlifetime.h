// The server's lifetime rule: it ends when no effect, no lock and no anchor window holds it.
#pragma once

#include <windows.h>

extern volatile LONG g_objectCount;
extern volatile LONG g_lockCount;
extern HWND g_anchorWindow;
extern DWORD g_quitThreadId;

bool IsServerInUse();
// Posts WM_QUIT to g_quitThreadId once, when nothing holds the server any more.
void CheckServerQuit();
void AdjustObjectCount(bool up);
void SetAnchorWindow(HWND window);
