// The lifetime rule: WM_QUIT goes to the registered thread once, when the last hold goes.
#include "serverlifetime.h"

#include <gtest/gtest.h>

namespace {

int CountQuitMessages()
{
    int count = 0;
    MSG message;
    while (PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE))
        ++count;
    return count;
}

class ServerLifetime : public testing::Test
{
protected:
    void SetUp() override
    {
        CountQuitMessages();
        g_objectCount = 0;
        g_lockCount = 0;
        g_anchorWindow = nullptr;
        g_quitThreadId = GetCurrentThreadId();
    }
    void TearDown() override { g_quitThreadId = 0; }
};

TEST_F(ServerLifetime, LastObjectPostsQuitOnce)
{
    AdjustObjectCount(true);
    AdjustObjectCount(true);
    AdjustObjectCount(false);
    EXPECT_EQ(CountQuitMessages(), 0);
    AdjustObjectCount(false);
    EXPECT_EQ(CountQuitMessages(), 1);
    EXPECT_EQ(g_quitThreadId, 0u);
    // Later changes post nothing more.
    AdjustObjectCount(true);
    AdjustObjectCount(false);
    EXPECT_EQ(CountQuitMessages(), 0);
}

TEST_F(ServerLifetime, LockAndAnchorWindowHoldTheServer)
{
    g_lockCount = 1;
    AdjustObjectCount(true);
    AdjustObjectCount(false);
    EXPECT_TRUE(IsServerInUse());
    EXPECT_EQ(CountQuitMessages(), 0);

    g_lockCount = 0;
    SetAnchorWindow(reinterpret_cast<HWND>(1));
    CheckServerQuit();
    EXPECT_EQ(CountQuitMessages(), 0);

    SetAnchorWindow(nullptr);
    EXPECT_FALSE(IsServerInUse());
    CheckServerQuit();
    EXPECT_EQ(CountQuitMessages(), 1);
}

TEST_F(ServerLifetime, NoQuitWithoutARegisteredThread)
{
    g_quitThreadId = 0;
    AdjustObjectCount(true);
    AdjustObjectCount(false);
    EXPECT_EQ(CountQuitMessages(), 0);
}

} // namespace
