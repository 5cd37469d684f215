// Timed loads on the load worker: hung plug-ins abandoned in time, the worker rebuilt for the
// next load, in process and in a server; and the worker's message-pumping wait.
#include "support/serverprocess.h"
#include "comptr.h"
#include "loadworker.h"
#include "support/testpaths.h"
#include "uniquehandle.h"
#include "vstclient.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

namespace {

using tqtest::PluginPath;

constexpr DWORD kAbandonMs = 200;
// How much later than its timeout a call that abandons a plug-in may come back.
constexpr DWORD kAbandonSlackMs = 1000;
constexpr DWORD kGenerousMs = 10000;
// hang_sleep's sleep in its entry point.
constexpr DWORD kEntrySleepMs = 3000;

// ---- The wait -----------------------------------------------------------------------------

tq::UniqueHandle Event(bool signalled)
{
    return tq::UniqueHandle(CreateEventW(nullptr, TRUE, signalled, nullptr));
}

TEST(WorkerWait, ReportsTheSignalledHandleOrTheTimeout)
{
    tqvst::TqWorkerThread worker; // never started: no thread handle joins the wait
    auto off = Event(false), on = Event(true);
    const HANDLE offThenOn[] = {off.Get(), on.Get()};

    EXPECT_EQ(worker.MessageWait(0, nullptr, false, INFINITE, true), 0u);
    EXPECT_EQ(worker.MessageWait(2, offThenOn, false, 0, true), 1u);
    EXPECT_EQ(worker.MessageWait(2, offThenOn, true, 0, true), DWORD(WAIT_TIMEOUT));

    const DWORD start = GetTickCount();
    EXPECT_EQ(worker.MessageWait(1, offThenOn, false, 100, true), DWORD(WAIT_TIMEOUT));
    const DWORD elapsed = GetTickCount() - start;
    EXPECT_GE(elapsed, 90u);
    EXPECT_LT(elapsed, 1000u);
}

// Counts the messages that reach it.
LRESULT CALLBACK CountingProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_APP)
    {
        ++*reinterpret_cast<int*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

class CountingWindow
{
public:
    CountingWindow()
    {
        WNDCLASSW windowClass = {};
        windowClass.lpfnWndProc = CountingProc;
        windowClass.hInstance = GetModuleHandleW(nullptr);
        windowClass.lpszClassName = L"TqLoadWorkerTestWindow";
        RegisterClassW(&windowClass);
        m_window = CreateWindowExW(0, windowClass.lpszClassName, L"", 0, 0, 0, 0, 0, HWND_MESSAGE,
                                   nullptr, windowClass.hInstance, nullptr);
        SetWindowLongPtrW(m_window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&count));
    }
    ~CountingWindow() { DestroyWindow(m_window); }
    CountingWindow(const CountingWindow&) = delete;
    CountingWindow& operator=(const CountingWindow&) = delete;

    HWND Get() const { return m_window; }
    int count = 0;

private:
    HWND m_window;
};

TEST(WorkerWait, DispatchesPostedMessagesOnlyWhenPumpingAll)
{
    tqvst::TqWorkerThread worker;
    CountingWindow window;
    ASSERT_NE(window.Get(), nullptr);
    auto off = Event(false);
    const HANDLE handle = off.Get();

    ASSERT_TRUE(PostMessageW(window.Get(), WM_APP, 0, 0));
    EXPECT_EQ(worker.MessageWait(1, &handle, false, 50, false), DWORD(WAIT_TIMEOUT));
    EXPECT_EQ(window.count, 0) << "a posted message waits without pump-all";

    EXPECT_EQ(worker.MessageWait(1, &handle, false, 50, true), DWORD(WAIT_TIMEOUT));
    EXPECT_EQ(window.count, 1);
}

TEST(WorkerWait, LeavesAQuitMessageForTheCallersLoop)
{
    tqvst::TqWorkerThread worker;
    auto off = Event(false);
    const HANDLE handle = off.Get();
    PostQuitMessage(7);
    const DWORD start = GetTickCount();
    EXPECT_EQ(worker.MessageWait(1, &handle, false, 100, true), DWORD(WAIT_TIMEOUT));
    EXPECT_GE(GetTickCount() - start, 90u) << "a quit does not end the wait";
    MSG message;
    ASSERT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(message.message, UINT(WM_QUIT));
    EXPECT_EQ(message.wParam, 7u);
}

TEST(WorkerThread, StartsOnceAndAnewAfterShutdown)
{
    tqvst::TqWorkerThread worker;
    EXPECT_EQ(worker.StopThread(0), S_FALSE);
    tqvst::EffectLoadRequest request = {};
    EXPECT_EQ(worker.Submit(tqvst::TqWorkerThread::kReadEffectFacts, &request, 100), nullptr)
        << "no records before Start";
    ASSERT_EQ(worker.Start(), S_OK);
    EXPECT_TRUE(worker.Started());
    EXPECT_EQ(worker.Start(), S_FALSE);
    // An idle worker leaves when asked, without being forced.
    const DWORD start = GetTickCount();
    worker.Shutdown(true);
    EXPECT_LT(GetTickCount() - start, 500u);
    EXPECT_FALSE(worker.Started());
    EXPECT_EQ(worker.StopThread(0), S_FALSE);
    ASSERT_EQ(worker.Start(), S_OK);
}

// ---- Timed loads, in process and in a server -----------------------------------------------

using tqtest::ServerProcess;

struct Facts
{
    HRESULT hr = E_FAIL;
    DWORD elapsedMs = 0;
    WCHAR name[64] = {};
    TqVstEffectInfo info = {};
};

const char* LocationName(int location)
{
    return location == kTqVstInProcess ? "in process" : "in a server";
}

class TimedLoad : public testing::TestWithParam<int>
{
protected:
    void SetUp() override
    {
        ASSERT_HRESULT_SUCCEEDED(CoInitialize(nullptr));
        DWORD pid = 0;
        ASSERT_EQ(GetVstFactory(GetParam(), IID_ITqVstEffectFactory, m_factory.PutVoid(), L"tqvst",
                                L"tests", &pid, nullptr),
                  S_OK);
        m_server = std::make_unique<ServerProcess>(pid);
    }
    void TearDown() override
    {
        EXPECT_EQ(ReleaseVstFactory(GetParam(), m_factory.Detach()), S_OK);
        // An abandoned load must not keep the server alive.
        if (GetParam() != kTqVstInProcess)
        {
            EXPECT_TRUE(m_server->EndsWithin(ServerProcess::kExitMs));
        }
        m_server.reset();
        CoUninitialize();
    }

    Facts Read(const wchar_t* file, DWORD timeoutMs)
    {
        Facts f;
        WCHAR vendor[64], product[64];
        const DWORD start = GetTickCount();
        f.hr = m_factory->GetEffectInfoForFile(PluginPath(file).c_str(), 0, f.name, vendor, product,
                                               &f.info, timeoutMs);
        f.elapsedMs = GetTickCount() - start;
        return f;
    }

    // The worker built anew after an abandon serves the next file.
    void ExpectNextLoadSucceeds()
    {
        const Facts next = Read(L"tqgain.dll", kGenerousMs);
        EXPECT_EQ(next.hr, S_OK) << std::hex << next.hr;
        EXPECT_STREQ(next.name, L"TqGain");
        EXPECT_EQ(next.info.numInputs, 2u);
    }

    tq::ComPtr<ITqVstEffectFactory> m_factory;
    std::unique_ptr<ServerProcess> m_server;
};

TEST_P(TimedLoad, NormalPluginLoadsAsUntimed)
{
    const Facts timed = Read(L"tqgain.dll", kGenerousMs);
    const Facts untimed = Read(L"tqgain.dll", 0);
    ASSERT_EQ(timed.hr, S_OK) << std::hex << timed.hr;
    EXPECT_STREQ(timed.name, L"TqGain");
    EXPECT_EQ(memcmp(&timed.info, &untimed.info, sizeof(timed.info)), 0);
    // A second timed call reuses the running worker.
    EXPECT_EQ(Read(L"tqgain.dll", kGenerousMs).hr, S_OK);
}

TEST_P(TimedLoad, FaultOnTheWorkerIsReportedAndTheWorkerServesOn)
{
    EXPECT_EQ(Read(L"fault_in_entry.dll", kGenerousMs).hr, TQVST_E_PLUGINFAULT);
    ExpectNextLoadSucceeds();
}

TEST_P(TimedLoad, BusyPluginIsAbandonedWithinTheTimeout)
{
    const Facts hung = Read(L"hang_busy.dll", kAbandonMs);
    EXPECT_EQ(hung.hr, TQVST_E_TIMEOUT) << std::hex << hung.hr;
    EXPECT_LT(hung.elapsedMs, kAbandonMs + kAbandonSlackMs);
    std::printf("busy plug-in %s: timeout %lu ms, call returned after %lu ms\n",
                LocationName(GetParam()), kAbandonMs, hung.elapsedMs);
    if (GetParam() == kTqVstInProcess)
    {
        // The spinning thread is really gone: the process is idle again.
        FILETIME created, exited, kernelBefore, userBefore, kernelAfter, userAfter;
        GetProcessTimes(GetCurrentProcess(), &created, &exited, &kernelBefore, &userBefore);
        Sleep(300);
        GetProcessTimes(GetCurrentProcess(), &created, &exited, &kernelAfter, &userAfter);
        const auto ticks = [](const FILETIME& t) {
            return ULARGE_INTEGER{{t.dwLowDateTime, t.dwHighDateTime}}.QuadPart;
        };
        EXPECT_LT(ticks(userAfter) - ticks(userBefore), 1000000u) << "100 ms of user time";
    }
    ExpectNextLoadSucceeds();
}

TEST_P(TimedLoad, SleepingPluginIsAbandonedWhenItsSleepEnds)
{
    const Facts hung = Read(L"hang_sleep.dll", kAbandonMs);
    EXPECT_EQ(hung.hr, TQVST_E_TIMEOUT) << std::hex << hung.hr;
    // A thread inside a system call takes its new course only when the call returns.
    EXPECT_GE(hung.elapsedMs, kEntrySleepMs - 500);
    EXPECT_LT(hung.elapsedMs, kEntrySleepMs + kAbandonSlackMs);
    std::printf("sleeping plug-in %s: timeout %lu ms, call returned after %lu ms\n",
                LocationName(GetParam()), kAbandonMs, hung.elapsedMs);
    ExpectNextLoadSucceeds();
}

INSTANTIATE_TEST_SUITE_P(Locations, TimedLoad, testing::Values(kTqVstInProcess, kTqVstServer),
                         [](const testing::TestParamInfo<int>& info) {
                             return std::string(info.param == kTqVstInProcess ? "InProcess"
                                                                              : "Server");
                         });

} // namespace
