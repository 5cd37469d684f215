// Handles passed between this process and a peer process by process id.
#include "memorytokenpeer.h"

#include <gtest/gtest.h>

namespace {

bool IsSignalled(HANDLE event)
{
    return WaitForSingleObject(event, 0) == WAIT_OBJECT_0;
}

TEST(DuplicateHandle, PeerTakesAnEventFromThisProcess)
{
    tq::UniqueHandle event(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    ASSERT_TRUE(event);
    const std::wstring arguments = L"signal " + std::to_wstring(GetCurrentProcessId()) + L" " +
                                   std::to_wstring(reinterpret_cast<ULONG_PTR>(event.Get()));
    ASSERT_EQ(tqtest::RunPeer(arguments), tqtest::kPeerOk);
    EXPECT_TRUE(IsSignalled(event.Get()));
}

// A handle given to the peer is the same object there: taken back, it sets this event.
TEST(DuplicateHandle, HandleGivenToPeerIsTheSameObject)
{
    tq::UniqueHandle event(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    ASSERT_TRUE(event);
    tqtest::Peer peer(L"idle");
    ASSERT_TRUE(peer.Started());
    HANDLE inPeer = nullptr;
    ASSERT_EQ(DuplicateHandleToProcessId(event.Get(), peer.Id(), &inPeer), S_OK);
    ASSERT_NE(inPeer, nullptr);
    HANDLE back = nullptr;
    ASSERT_EQ(DuplicateHandleFromProcessId(inPeer, peer.Id(), &back), S_OK);
    tq::UniqueHandle returned(back);
    EXPECT_FALSE(IsSignalled(event.Get()));
    ASSERT_TRUE(SetEvent(returned.Get()));
    EXPECT_TRUE(IsSignalled(event.Get()));
}

TEST(DuplicateHandle, FailuresAreWin32Codes)
{
    tq::UniqueHandle event(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    ASSERT_TRUE(event);
    HANDLE out = event.Get();
    HRESULT hr = DuplicateHandleFromProcessId(event.Get(), 0xFFFFFFF0u, &out);
    EXPECT_EQ(HRESULT_FACILITY(hr), FACILITY_WIN32) << std::hex << hr;
    EXPECT_TRUE(FAILED(hr));
    EXPECT_EQ(out, nullptr);
    out = event.Get();
    hr = DuplicateHandleToProcessId(event.Get(), 0xFFFFFFF0u, &out);
    EXPECT_EQ(HRESULT_FACILITY(hr), FACILITY_WIN32) << std::hex << hr;
    EXPECT_EQ(out, nullptr);
    // A process that exists but has no such handle.
    out = event.Get();
    hr =
        DuplicateHandleFromProcessId(reinterpret_cast<HANDLE>(0x7FF0), GetCurrentProcessId(), &out);
    EXPECT_EQ(hr, HRESULT_FROM_WIN32(ERROR_INVALID_HANDLE));
    EXPECT_EQ(out, nullptr);
}

} // namespace
