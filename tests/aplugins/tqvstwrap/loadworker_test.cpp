// Timed loads on the load worker: hung plug-ins abandoned in time, plug-ins that end the loading
// thread, the worker rebuilt for the next load, in process and in servers; and the worker's
// message-pumping wait.
#include "support/serverprocess.h"
#include "comptr.h"
#include "loadworker.h"
#include "support/testpaths.h"
#include "uniquehandle.h"
#include "vstclient.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cwchar>
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

// ---- Timed loads, in process and in servers of both bitnesses ------------------------------

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
    switch (location)
    {
    case kTqVstInProcess:
        return "in process";
    case kTqVstServer:
        return "in a server";
    default:
        return "in the 32-bit server";
    }
}

class TimedLoad : public testing::TestWithParam<int>
{
protected:
    void SetUp() override
    {
        if (GetParam() == kTqVstServer32 && !tqtest::Have32BitServer())
            GTEST_SKIP() << "32-bit Wine or the 32-bit build is not available here";
        ASSERT_HRESULT_SUCCEEDED(CoInitialize(nullptr));
        m_initialised = true;
        ASSERT_EQ(GetVstFactory(GetParam(), IID_ITqVstEffectFactory, m_factory.PutVoid(), L"tqvst",
                                L"tests", &m_pid, nullptr),
                  S_OK);
        m_server = std::make_unique<ServerProcess>(m_pid);
    }
    void TearDown() override
    {
        if (m_factory)
        {
            EXPECT_EQ(ReleaseVstFactory(GetParam(), m_factory.Detach()), S_OK);
        }
        // An abandoned load must not keep the server alive.
        if (m_server && GetParam() != kTqVstInProcess)
        {
            EXPECT_TRUE(m_server->EndsWithin(ServerProcess::kExitMs));
        }
        m_server.reset();
        if (m_initialised) CoUninitialize();
    }

    std::wstring Plugin(const wchar_t* file) const
    {
        return GetParam() == kTqVstServer32 ? tqtest::Plugin32Path(file) : PluginPath(file);
    }

    Facts Read(const wchar_t* file, DWORD timeoutMs)
    {
        Facts f;
        WCHAR vendor[64], product[64];
        const DWORD start = GetTickCount();
        f.hr = m_factory->GetEffectInfoForFile(Plugin(file).c_str(), 0, f.name, vendor, product,
                                               &f.info, timeoutMs);
        f.elapsedMs = GetTickCount() - start;
        return f;
    }

    // A load that must be given up: TQVST_E_TIMEOUT, and control back well within a second of
    // the timeout whatever the plug-in does.
    void ExpectAbandoned(const wchar_t* file, const char* what)
    {
        const Facts hung = Read(file, kAbandonMs);
        EXPECT_EQ(hung.hr, TQVST_E_TIMEOUT) << std::hex << hung.hr;
        EXPECT_LT(hung.elapsedMs, kAbandonMs + kAbandonSlackMs);
        std::printf("%s plug-in %s: timeout %lu ms, call returned after %lu ms\n", what,
                    LocationName(GetParam()), kAbandonMs, hung.elapsedMs);
    }

    // The worker built anew after an abandon serves the next file.
    void ExpectNextLoadSucceeds()
    {
        const Facts next = Read(L"tqgain.dll", kGenerousMs);
        EXPECT_EQ(next.hr, S_OK) << std::hex << next.hr;
        EXPECT_STREQ(next.name, L"TqGain");
        EXPECT_EQ(next.info.numInputs, 2u);
    }

    // The process the plug-ins load in.
    DWORD LoadingProcess() const
    {
        return GetParam() == kTqVstInProcess ? GetCurrentProcessId() : m_pid;
    }

    tq::ComPtr<ITqVstEffectFactory> m_factory;
    std::unique_ptr<ServerProcess> m_server;
    DWORD m_pid = 0;
    bool m_initialised = false;
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
    ExpectAbandoned(L"hang_busy.dll", "busy");
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

// A thread inside a system call cannot be pointed elsewhere until the call returns: it is left
// behind, and winds up by itself when its sleep ends.
TEST_P(TimedLoad, SleepingPluginIsAbandonedWithinTheTimeout)
{
    ExpectAbandoned(L"hang_sleep.dll", "sleeping");
    ExpectNextLoadSucceeds();
    Sleep(kEntrySleepMs);
    ExpectNextLoadSucceeds();
}

TEST_P(TimedLoad, BlockedPluginIsAbandonedWithinTheTimeout)
{
    ExpectAbandoned(L"hang_wait.dll", "blocked");
    ExpectNextLoadSucceeds();
    // A second one blocks a second thread; each load still gets a worker of its own.
    ExpectAbandoned(L"hang_wait.dll", "blocked");
    ExpectNextLoadSucceeds();

    // Woken long after they were given up, the abandoned threads touch only what they were left
    // with: the worker serving now goes on undisturbed.
    wchar_t name[64];
    std::swprintf(name, 64, L"hang_wait release %lu", LoadingProcess());
    tq::UniqueHandle release(CreateEventW(nullptr, TRUE, FALSE, name));
    ASSERT_TRUE(release);
    ASSERT_TRUE(SetEvent(release.Get()));
    Sleep(300);
    ExpectNextLoadSucceeds();
    ExpectNextLoadSucceeds();
}

// A VST3 module stuck in its factory is given up as a VST2 entry point is; the worker then
// serves VST3 as before.
TEST_P(TimedLoad, Vst3ModuleSpinningInItsFactoryIsAbandonedWithinTheTimeout)
{
    ExpectAbandoned(L"hang_in_factory.vst3", "VST3 factory-spinning");
    ExpectNextLoadSucceeds();
    const Facts next = Read(L"tqgain3.vst3", kGenerousMs);
    EXPECT_EQ(next.hr, S_OK) << std::hex << next.hr;
    EXPECT_STREQ(next.name, L"TqGain3");
}

// A plug-in that ends the thread loading it fails that load; the worker is rebuilt for the next.
TEST_P(TimedLoad, PluginThatEndsTheLoadingThreadLeavesAWorkerThatIsRebuilt)
{
    for (const wchar_t* file : {L"exit_thread.dll", L"raise_abort.dll"})
    {
        SCOPED_TRACE(testing::Message() << "plug-in " << file);
        for (int round = 0; round < 2; ++round)
        {
            // The request answers as far as it got, which is nothing written; what matters is
            // that the next loads run on a rebuilt worker.
            const Facts ended = Read(file, kGenerousMs);
            EXPECT_EQ(ended.hr, S_OK) << std::hex << ended.hr;
            EXPECT_LT(ended.elapsedMs, kGenerousMs);
            ExpectNextLoadSucceeds();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Locations, TimedLoad,
                         testing::Values(kTqVstInProcess, kTqVstServer, kTqVstServer32),
                         [](const testing::TestParamInfo<int>& info) {
                             switch (info.param)
                             {
                             case kTqVstInProcess:
                                 return std::string("InProcess");
                             case kTqVstServer:
                                 return std::string("Server");
                             default:
                                 return std::string("Server32");
                             }
                         });

} // namespace
