// The process's one monitored OLE start: repeated calls in the same sense do nothing.
#include "tqoleinit.h"

#include <gtest/gtest.h>

namespace {

bool ComIsStarted()
{
    APTTYPE type;
    APTTYPEQUALIFIER qualifier;
    return SUCCEEDED(CoGetApartmentType(&type, &qualifier));
}

TEST(OleInit, StartsOnceAndEndsOnce)
{
    ASSERT_FALSE(ComIsStarted());
    EXPECT_EQ(TqOleInit(FALSE), S_FALSE);

    EXPECT_EQ(TqOleInit(TRUE), S_OK);
    APTTYPE type;
    APTTYPEQUALIFIER qualifier;
    ASSERT_EQ(CoGetApartmentType(&type, &qualifier), S_OK);
    EXPECT_TRUE(type == APTTYPE_MAINSTA || type == APTTYPE_STA) << type;
    // A second start would need a second end; one end below must leave COM stopped.
    EXPECT_EQ(TqOleInit(TRUE), S_FALSE);

    EXPECT_EQ(TqOleInit(FALSE), S_OK);
    EXPECT_FALSE(ComIsStarted());
    EXPECT_EQ(TqOleInit(FALSE), S_FALSE);

    EXPECT_EQ(TqOleInit(TRUE), S_OK);
    EXPECT_TRUE(ComIsStarted());
    EXPECT_EQ(TqOleInit(FALSE), S_OK);
}

TEST(OleInit, FailedStartIsNotCounted)
{
    ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    EXPECT_EQ(TqOleInit(TRUE), RPC_E_CHANGED_MODE);
    EXPECT_EQ(TqOleInit(FALSE), S_FALSE);
    CoUninitialize();
}

TEST(MonitoredCoInitialize, SpyAnswersItsInterfacesAndPassesResultsOn)
{
    CMonitored_CoInitializeEx monitor;
    void* object = reinterpret_cast<void*>(1);
    EXPECT_EQ(monitor.QueryInterface(IID_IInitializeSpy, &object), S_OK);
    EXPECT_EQ(object, static_cast<IInitializeSpy*>(&monitor));
    EXPECT_EQ(monitor.QueryInterface(IID_IUnknown, &object), S_OK);
    EXPECT_EQ(monitor.QueryInterface(IID_IClassFactory, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(monitor.QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(monitor.PostInitialize(RPC_E_CHANGED_MODE, 0, 0), RPC_E_CHANGED_MODE);
    EXPECT_EQ(monitor.PostInitialize(S_FALSE, 0, 2), S_FALSE);

    // Starting and ending through it leaves the thread as it found it.
    EXPECT_EQ(monitor.CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
    EXPECT_TRUE(ComIsStarted());
    monitor.CoUninitialize();
    EXPECT_FALSE(ComIsStarted());
}

} // namespace
