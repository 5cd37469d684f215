// Hosts reach plug-ins in a server process: start, facts, effects through the proxy, faults, and
// the server ending by itself when the host lets go.
#include "support/serverprocess.h"
#include "comptr.h"
#include "support/testpaths.h"
#include "tqsampletype.h"
#include "uniquehandle.h"
#include "vstclient.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using tqtest::PluginPath;

bool IsZero(const CLSID& id)
{
    return id == CLSID{};
}

using tqtest::ServerProcess;

class OutOfProcess : public testing::Test
{
protected:
    void SetUp() override { ASSERT_HRESULT_SUCCEEDED(CoInitialize(nullptr)); }
    void TearDown() override { CoUninitialize(); }

    // A factory with the server's process id; released by the caller through ReleaseVstFactory.
    tq::ComPtr<ITqVstEffectFactory> Factory(int location, DWORD* pid, DWORD* count = nullptr)
    {
        tq::ComPtr<ITqVstEffectFactory> factory;
        const HRESULT hr = GetVstFactory(location, IID_ITqVstEffectFactory, factory.PutVoid(),
                                         L"tqvst", L"tests", pid, count);
        EXPECT_EQ(hr, S_OK) << std::hex << hr;
        return factory;
    }

    static HRESULT Facts(ITqVstEffectFactory* factory, const std::wstring& path, WCHAR (&name)[64],
                         TqVstEffectInfo* info, UINT32 id = 0)
    {
        WCHAR vendor[64], product[64];
        return factory->GetEffectInfoForFile(path.c_str(), id, name, vendor, product, info, 0);
    }
};

TEST_F(OutOfProcess, ServerLoadsPluginAndEndsWhenReleased)
{
    DWORD pid = 0, count = 0;
    auto factory = Factory(kTqVstServer, &pid, &count);
    ASSERT_TRUE(factory);
    ServerProcess server(pid);
    ASSERT_TRUE(server.Opened());
    EXPECT_NE(pid, GetCurrentProcessId());
    EXPECT_EQ(count, 1u);
    EXPECT_FALSE(IsZero(GetVstServerClassId(kTqVstServer)));

    WCHAR name[64];
    TqVstEffectInfo info = {};
    ASSERT_EQ(Facts(factory.Get(), PluginPath(L"tqgain.dll"), name, &info), S_OK);
    EXPECT_STREQ(name, L"TqGain");
    EXPECT_EQ(info.numInputs, 2u);
    EXPECT_EQ(info.state, 1u);

    tq::ComPtr<ITqVstEffect> effect;
    ASSERT_EQ(factory->CreateEffect(PluginPath(L"tqgain.dll").c_str(), 0, IID_ITqVstEffect,
                                    effect.PutVoid()),
              S_OK);
    ASSERT_EQ(effect->GetEffectName(name, 64), S_OK);
    EXPECT_STREQ(name, L"TqGain");
    // The plug-in runs in the server, not here.
    EXPECT_EQ(GetModuleHandleW(L"tqgain.dll"), nullptr);

    // The factory goes first; the effect alone still holds the server.
    EXPECT_EQ(ReleaseVstFactory(kTqVstServer, factory.Detach()), S_OK);
    EXPECT_TRUE(IsZero(GetVstServerClassId(kTqVstServer)));
    EXPECT_FALSE(server.EndsWithin(300));
    ASSERT_EQ(effect->GetEffectName(name, 64), S_OK);
    effect.Reset();
    EXPECT_TRUE(server.EndsWithin(ServerProcess::kExitMs));
}

TEST_F(OutOfProcess, RunningServerIsSharedUntilItsLastFactoryGoes)
{
    DWORD firstPid = 0, secondPid = 0, count = 0;
    auto first = Factory(kTqVstServer, &firstPid, &count);
    ASSERT_TRUE(first);
    ServerProcess server(firstPid);
    EXPECT_EQ(count, 1u);
    const CLSID firstId = GetVstServerClassId(kTqVstServer);

    auto second = Factory(kTqVstServer, &secondPid, &count);
    ASSERT_TRUE(second);
    EXPECT_EQ(secondPid, firstPid) << "no second process";
    EXPECT_EQ(count, 2u);

    EXPECT_EQ(ReleaseVstFactory(kTqVstServer, second.Detach()), S_OK);
    EXPECT_FALSE(IsZero(GetVstServerClassId(kTqVstServer)));
    EXPECT_EQ(ReleaseVstFactory(kTqVstServer, first.Detach()), S_OK);
    EXPECT_TRUE(IsZero(GetVstServerClassId(kTqVstServer)));

    DWORD thirdPid = 0;
    auto third = Factory(kTqVstServer, &thirdPid, &count);
    ASSERT_TRUE(third);
    ServerProcess fresh(thirdPid);
    EXPECT_NE(thirdPid, firstPid);
    EXPECT_EQ(count, 1u);
    EXPECT_FALSE(GetVstServerClassId(kTqVstServer) == firstId);
    EXPECT_EQ(ReleaseVstFactory(kTqVstServer, third.Detach()), S_OK);
}

TEST_F(OutOfProcess, FaultsAndBadFilesLeaveTheServerServing)
{
    DWORD pid = 0;
    auto factory = Factory(kTqVstServer, &pid);
    ASSERT_TRUE(factory);
    ServerProcess server(pid);
    tqtest::TempFolder folder;
    const std::wstring empty = folder.File(L"empty.dll");
    CloseHandle(CreateFileW(empty.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));

    WCHAR name[64];
    TqVstEffectInfo info;
    EXPECT_EQ(Facts(factory.Get(), PluginPath(L"fault_in_entry.dll"), name, &info),
              TQVST_E_PLUGINFAULT);
    EXPECT_EQ(Facts(factory.Get(), PluginPath(L"wrong_magic.dll"), name, &info), E_INVALIDARG);
    EXPECT_EQ(Facts(factory.Get(), PluginPath(L"no_entry.dll"), name, &info),
              HRESULT_FROM_WIN32(ERROR_PROC_NOT_FOUND));
    EXPECT_EQ(Facts(factory.Get(), folder.File(L"missing.dll"), name, &info),
              HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND));
    EXPECT_TRUE(FAILED(Facts(factory.Get(), empty, name, &info)));
    EXPECT_TRUE(FAILED(Facts(factory.Get(), folder.Path(), name, &info)));
    EXPECT_EQ(Facts(factory.Get(), PluginPath(L"tqshell.dll"), name, &info, 0x12345678),
              E_UNEXPECTED);

    ASSERT_EQ(Facts(factory.Get(), PluginPath(L"tqgain.dll"), name, &info), S_OK);
    EXPECT_STREQ(name, L"TqGain");
    EXPECT_FALSE(server.EndsWithin(0));
    EXPECT_EQ(ReleaseVstFactory(kTqVstServer, factory.Detach()), S_OK);
}

TEST_F(OutOfProcess, ThirtyTwoBitServerServesThirtyTwoBitPlugins)
{
    if (!tqtest::Have32BitServer())
        GTEST_SKIP() << "32-bit Wine or the 32-bit build is not available here";
    DWORD pid = 0;
    auto factory = Factory(kTqVstServer32, &pid);
    ASSERT_TRUE(factory);
    ServerProcess server(pid);
    WCHAR name[64];
    TqVstEffectInfo info = {};
    ASSERT_EQ(Facts(factory.Get(), tqtest::Plugin32Path(L"tqgain.dll"), name, &info), S_OK);
    EXPECT_STREQ(name, L"TqGain");
    EXPECT_EQ(info.state, 1u);
    // And a 64-bit plug-in is of the wrong machine type there.
    EXPECT_EQ(Facts(factory.Get(), PluginPath(L"tqgain.dll"), name, &info),
              static_cast<HRESULT>(0x800700C1));
    EXPECT_EQ(info.state & 1u, 0u);
    EXPECT_EQ(ReleaseVstFactory(kTqVstServer32, factory.Detach()), S_OK);
    EXPECT_TRUE(server.EndsWithin(ServerProcess::kExitMs));
}

TEST_F(OutOfProcess, EffectForFileGoesWhereTheMachineTypeFits)
{
    tq::ComPtr<ITqVstEffect> effect;
    WCHAR name[64];
    ASSERT_EQ(CreateEffectForFile(PluginPath(L"tqgain.dll").c_str(), 0, IID_ITqVstEffect,
                                  effect.PutVoid()),
              S_OK);
    EXPECT_NE(GetModuleHandleW(L"tqgain.dll"), nullptr) << "a plug-in of our bitness loads here";
    ASSERT_EQ(effect->GetEffectName(name, 64), S_OK);
    EXPECT_STREQ(name, L"TqGain");
    effect.Reset();
    EXPECT_EQ(GetModuleHandleW(L"tqgain.dll"), nullptr);

#ifndef _WIN64
    GTEST_SKIP() << "a 32-bit host has no server for other machine types";
#endif
    if (!tqtest::Have32BitServer())
        GTEST_SKIP() << "32-bit Wine or the 32-bit build is not available here";
    ASSERT_EQ(CreateEffectForFile(tqtest::Plugin32Path(L"tqgain.dll").c_str(), 0, IID_ITqVstEffect,
                                  effect.PutVoid()),
              S_OK);
    EXPECT_EQ(GetModuleHandleW(L"tqgain.dll"), nullptr);
    ASSERT_EQ(effect->GetEffectName(name, 64), S_OK);
    EXPECT_STREQ(name, L"TqGain");
    EXPECT_TRUE(IsZero(GetVstServerClassId(kTqVstServer32)));
    // The server's effect comes as the host's own object, whose blocks take shared memory.
    tq::ComPtr<IClientSecurity> security;
    EXPECT_EQ(effect->QueryInterface(IID_IClientSecurity, security.PutVoid()), E_NOINTERFACE);
    ASSERT_EQ(effect->SetSampleType(TQSAMPLE_FLOAT32), S_OK);
    float block[2 * 64] = {};
    EXPECT_EQ(effect->Process(reinterpret_cast<BYTE*>(block), 2, reinterpret_cast<BYTE*>(block), 2,
                              64, sizeof(float)),
              S_OK);
    effect.Reset();
}

} // namespace
