// What plug-ins hear from the host callback, before and after their record is bound to an effect.
#include "comptr.h"
#include "plugins/host_probe_answers.h"
#include "support/testpaths.h"
#include "vstclient.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace {

using namespace host_probe;

struct Probe
{
    intptr_t answers[kAnswerCount];
    char vendor[64];
};

class HostCallback : public testing::Test
{
protected:
    void SetUp() override { ASSERT_HRESULT_SUCCEEDED(CoInitialize(nullptr)); }
    void TearDown() override { CoUninitialize(); }

    // Loads the probe in process with the given host vendor and reads what it was told.
    Probe Run(const wchar_t* vendor, UINT32 id)
    {
        Probe probe = {};
        tq::ComPtr<ITqVstEffectFactory> factory;
        EXPECT_EQ(GetVstFactory(kTqVstInProcess, IID_ITqVstEffectFactory, factory.PutVoid(), vendor,
                                L"tests", nullptr, nullptr),
                  S_OK);
        tq::ComPtr<ITqVstEffect> effect;
        EXPECT_EQ(factory->CreateEffect(tqtest::PluginPath(L"host_probe.dll").c_str(), id,
                                        IID_ITqVstEffect, effect.PutVoid()),
                  S_OK);
        auto read = reinterpret_cast<ReadAnswers>(reinterpret_cast<void (*)()>(
            GetProcAddress(GetModuleHandleW(L"host_probe.dll"), "TqProbeAnswers")));
        EXPECT_NE(read, nullptr);
        if (read)
        {
            EXPECT_EQ(read(probe.answers, kAnswerCount, probe.vendor), kAnswerCount);
        }
        effect.Reset();
        ReleaseVstFactory(kTqVstInProcess, factory.Detach());
        return probe;
    }
};

TEST_F(HostCallback, AnswersWithAndWithoutBoundRecord)
{
    const Probe probe = Run(L"tqvst", 0);
    EXPECT_EQ(probe.answers[kEntryVersion], 2300);
    EXPECT_EQ(probe.answers[kEntryCurrentId], 0) << "nothing requested: a scan";
    EXPECT_EQ(probe.answers[kEntryUpdateDisplay], 0)
        << "nothing to redraw before the record is bound";
    EXPECT_EQ(probe.answers[kOpenVersion], 2300);
    EXPECT_EQ(probe.answers[kOpenCurrentId], kProbeId) << "bound: the record's own id";
    EXPECT_EQ(probe.answers[kOpenCanDoSizeWindow], 1);
    EXPECT_EQ(probe.answers[kOpenCanDoUpperCase], 0) << "the comparison is case-sensitive";
    EXPECT_EQ(probe.answers[kOpenCanDoNull], 0);
    EXPECT_EQ(probe.answers[kOpenVendorString], 1);
    EXPECT_STREQ(probe.vendor, "tqvst");
    EXPECT_EQ(probe.answers[kOpenVendorVersion], 12000);
    EXPECT_EQ(probe.answers[kOpenUpdateDisplay], 1) << "answered even without a master";
    EXPECT_EQ(probe.answers[kOpenGetTime], 0) << "no master, no time";
    EXPECT_EQ(probe.answers[kOpenAutomatable], 1024);
}

TEST_F(HostCallback, EntryPointHearsTheRequestedId)
{
    const Probe probe = Run(L"tqvst", static_cast<UINT32>(kProbeId));
    EXPECT_EQ(probe.answers[kEntryCurrentId], kProbeId);
}

TEST_F(HostCallback, EmptyVendorLeavesThePluginsBufferAlone)
{
    const Probe probe = Run(L"", 0);
    EXPECT_EQ(probe.answers[kOpenVendorString], 0);
    EXPECT_STREQ(probe.vendor, "untouched");
}

} // namespace
