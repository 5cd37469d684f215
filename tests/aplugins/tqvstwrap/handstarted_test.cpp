// A server started by hand, or whose starter has gone, shows its window and ends when it closes.
#include "support/testpaths.h"
#include "uniquehandle.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct FoundWindow
{
    DWORD processId;
    HWND window;
};

BOOL CALLBACK FindServerWindow(HWND window, LPARAM context)
{
    auto* found = reinterpret_cast<FoundWindow*>(context);
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    wchar_t className[32] = {};
    GetClassNameW(window, className, 32);
    if (owner == found->processId && lstrcmpW(className, L"TqVstServer") == 0)
    {
        found->window = window;
        return FALSE;
    }
    return TRUE;
}

HWND WaitForServerWindow(DWORD processId, DWORD ms)
{
    for (DWORD waited = 0; waited < ms; waited += 50)
    {
        FoundWindow found{processId, nullptr};
        EnumWindows(FindServerWindow, reinterpret_cast<LPARAM>(&found));
        if (found.window) return found.window;
        Sleep(50);
    }
    return nullptr;
}

class HandStartedServer : public testing::TestWithParam<const wchar_t*>
{
};

TEST_P(HandStartedServer, ShowsWindowAndEndsWhenClosed)
{
    std::wstring line = L"\"" + tqtest::ProgramFolder() + L"\\tqvstserver.exe\"" + GetParam();
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION started = {};
    ASSERT_TRUE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                               &startup, &started));
    tq::UniqueHandle process(started.hProcess);
    tq::UniqueHandle thread(started.hThread);

    HWND window = WaitForServerWindow(started.dwProcessId, 10000);
    if (!window)
    {
        TerminateProcess(process.Get(), 1);
        GTEST_SKIP() << "no server window: no display for top-level windows (run under xvfb-run)";
    }
    PostMessageW(window, WM_CLOSE, 0, 0);
    const bool ended = WaitForSingleObject(process.Get(), 5000) == WAIT_OBJECT_0;
    if (!ended) TerminateProcess(process.Get(), 1);
    EXPECT_TRUE(ended);
}

INSTANTIATE_TEST_SUITE_P(CommandLines, HandStartedServer,
                         testing::Values(L"",
                                         // The starter's event no longer exists.
                                         L" -Event RkVstServerEvent_gone -Vendor tqvst",
                                         // A switch without its value.
                                         L" -Event"));

} // namespace
