// The server's lifetime counters and the quit test made whenever one of them changes.
#include "serverlifetime.h"

volatile LONG g_objectCount = 0;
volatile LONG g_lockCount = 0;
HWND g_anchorWindow = nullptr;
DWORD g_quitThreadId = 0;

bool IsServerInUse()
{
    return g_anchorWindow != nullptr || g_lockCount != 0 || g_objectCount != 0;
}

void CheckServerQuit()
{
    if (IsServerInUse() || g_quitThreadId == 0) return;
    PostThreadMessageW(g_quitThreadId, WM_QUIT, 0, 0);
    // Cleared so that WM_QUIT is posted at most once, whatever changes later.
    g_quitThreadId = 0;
}

void AdjustObjectCount(bool up)
{
    if (up)
        InterlockedIncrement(&g_objectCount);
    else
        InterlockedDecrement(&g_objectCount);
    CheckServerQuit();
}

void SetAnchorWindow(HWND window)
{
    g_anchorWindow = window;
}
