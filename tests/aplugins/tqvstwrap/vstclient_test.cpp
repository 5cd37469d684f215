// Starting servers: many starts back to back all reach their server, and each server ends when
// its host lets go. TQ_SERVER_STARTS sets how many starts a run makes (a soak run uses 1000).
#include "support/serverprocess.h"
#include "comptr.h"
#include "support/testpaths.h"
#include "vstclient.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using tqtest::ServerProcess;

int StartCount()
{
    const char* count = std::getenv("TQ_SERVER_STARTS");
    const int parsed = count ? std::atoi(count) : 0;
    return parsed > 0 ? parsed : 10;
}

class ServerStart : public testing::TestWithParam<int>
{
protected:
    void SetUp() override
    {
        if (GetParam() == kTqVstServer32 && !tqtest::Have32BitServer())
            GTEST_SKIP() << "32-bit Wine or the 32-bit build is not available here";
        ASSERT_HRESULT_SUCCEEDED(CoInitialize(nullptr));
        m_initialised = true;
    }
    void TearDown() override
    {
        if (m_initialised) CoUninitialize();
    }

private:
    bool m_initialised = false;
};

TEST_P(ServerStart, BackToBackStartsAllReachTheirServer)
{
    const int count = StartCount();
    int failures = 0, lingering = 0;
    std::vector<DWORD> startMs;
    for (int i = 0; i < count; ++i)
    {
        tq::ComPtr<ITqVstEffectFactory> factory;
        DWORD pid = 0;
        const DWORD start = GetTickCount();
        const HRESULT hr = GetVstFactory(GetParam(), IID_ITqVstEffectFactory, factory.PutVoid(),
                                         L"tqvst", L"tests", &pid, nullptr);
        const DWORD elapsed = GetTickCount() - start;
        startMs.push_back(elapsed);
        if (FAILED(hr))
        {
            ++failures;
            ADD_FAILURE() << "start " << i << " failed after " << elapsed << " ms: 0x" << std::hex
                          << hr;
            continue;
        }
        ServerProcess server(pid);
        EXPECT_EQ(ReleaseVstFactory(GetParam(), factory.Detach()), S_OK);
        if (!server.EndsWithin(ServerProcess::kExitMs)) ++lingering;
    }
    EXPECT_EQ(lingering, 0) << "servers that outlived their host's factory";
    std::sort(startMs.begin(), startMs.end());
    std::printf("%d starts, %d failed, %d lingered; start time median %lu ms, max %lu ms\n", count,
                failures, lingering, startMs[startMs.size() / 2], startMs.back());
}

INSTANTIATE_TEST_SUITE_P(Locations, ServerStart, testing::Values(kTqVstServer, kTqVstServer32),
                         [](const testing::TestParamInfo<int>& info) {
                             return std::string(info.param == kTqVstServer ? "Server" : "Server32");
                         });

} // namespace
