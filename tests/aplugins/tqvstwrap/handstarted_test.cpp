// A server started by hand, or whose starter has gone, shows its window and ends when it closes;
// one whose starter signalled it but never connected ends by itself.
#include "support/testpaths.h"
#include "uniquehandle.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

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

// The host gave up on it (it could not reach the class object in time) and will not come back.
// Both bitnesses at once, since each waits out the whole bound.
TEST(UnclaimedServer, EndsByItself)
{
    std::vector<std::wstring> folders = {tqtest::ProgramFolder()};
    if (tqtest::Have32BitServer()) folders.push_back(tqtest::ProgramFolder() + L"\\x86");
    std::vector<tq::UniqueHandle> processes;
    const DWORD start = GetTickCount();
    for (const std::wstring& folder : folders)
    {
        wchar_t name[64];
        std::swprintf(name, 64, L"TqUnclaimedServer_%lu_%zu", GetCurrentProcessId(),
                      processes.size());
        tq::UniqueHandle ready(CreateEventW(nullptr, FALSE, FALSE, name));
        ASSERT_TRUE(ready);
        std::wstring line = L"\"" + folder + L"\\tqvstserver.exe\" -Event " + name;
        STARTUPINFOW startup = {};
        startup.cb = sizeof(startup);
        PROCESS_INFORMATION started = {};
        ASSERT_TRUE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr,
                                   nullptr, &startup, &started));
        CloseHandle(started.hThread);
        processes.emplace_back(started.hProcess);
        EXPECT_EQ(WaitForSingleObject(ready.Get(), 10000), WAIT_OBJECT_0);
    }
    for (const tq::UniqueHandle& process : processes)
    {
        const bool ended = WaitForSingleObject(process.Get(), 60000) == WAIT_OBJECT_0;
        if (!ended) TerminateProcess(process.Get(), 1);
        EXPECT_TRUE(ended) << "a server is still running a minute after it was ready";
    }
    std::printf("unclaimed servers ended %lu ms after their start\n", GetTickCount() - start);
}

} // namespace
