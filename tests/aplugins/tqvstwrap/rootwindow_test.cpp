// The hand-started server's window: it holds the server while shown, and closing it ends the
// server only when nothing else holds it.
#include "rootwindow.h"
#include "serverlifetime.h"

#include <gtest/gtest.h>

namespace {

int PumpUntilQuit(DWORD ms)
{
    const DWORD until = GetTickCount() + ms;
    MSG message;
    while (static_cast<LONG>(until - GetTickCount()) > 0)
    {
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
        {
            if (message.message == WM_QUIT) return 1;
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        Sleep(5);
    }
    return 0;
}

class RootWindowTest : public testing::Test
{
protected:
    void SetUp() override
    {
        g_objectCount = 0;
        g_lockCount = 0;
        g_anchorWindow = nullptr;
        g_quitThreadId = GetCurrentThreadId();
        m_window = RootWindow::Create(GetModuleHandleW(nullptr));
        if (!m_window) GTEST_SKIP() << "no display for top-level windows (run under xvfb-run)";
    }
    void TearDown() override { g_quitThreadId = 0; }

    RootWindow* m_window = nullptr;
};

TEST_F(RootWindowTest, AnchorsTheServerAndQuitsWhenClosed)
{
    HWND handle = m_window->Handle();
    EXPECT_EQ(g_anchorWindow, handle);
    EXPECT_TRUE(IsServerInUse());
    wchar_t className[32] = {};
    GetClassNameW(handle, className, 32);
    EXPECT_STREQ(className, L"TqVstServer");
    HWND listBox = GetWindow(handle, GW_CHILD);
    ASSERT_NE(listBox, nullptr);
    // The scroll bar style is dropped by the system while the list is empty.
    const DWORD listStyle = WS_CHILD | WS_VISIBLE | LBS_USETABSTOPS | LBS_NOINTEGRALHEIGHT;
    EXPECT_EQ(static_cast<DWORD>(GetWindowLongW(listBox, GWL_STYLE)) & listStyle, listStyle);

    SendMessageW(handle, WM_CLOSE, 0, 0);
    EXPECT_FALSE(IsWindow(handle));
    EXPECT_EQ(g_anchorWindow, nullptr);
    EXPECT_EQ(PumpUntilQuit(500), 1);
}

TEST_F(RootWindowTest, ClosingWhileEffectsLiveKeepsTheServerRunning)
{
    AdjustObjectCount(true);
    SendMessageW(m_window->Handle(), WM_CLOSE, 0, 0);
    EXPECT_EQ(PumpUntilQuit(200), 0) << "an effect still holds the server";
    AdjustObjectCount(false);
    EXPECT_EQ(PumpUntilQuit(500), 1);
}

} // namespace
