// Loading and unloading .vst3 modules: the optional exports, the order at unload, loader errors
// and reading class records.
#include "support/testpaths.h"
#include "tqvst.h"
#include "vst3module.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

using tqtest::PluginPath;
using tqvst::Vst3Module;

namespace {

std::wstring Variable(const wchar_t* name)
{
    wchar_t value[64] = {};
    if (GetEnvironmentVariableW(name, value, 64) == 0) return L"(unset)";
    return value;
}

bool IsLoaded(const std::wstring& path)
{
    return GetModuleHandleW(path.c_str()) != nullptr;
}

TEST(Vst3Module, ReleasesTheFactoryBeforeExitDllAndUnloadsLast)
{
    const std::wstring path = PluginPath(L"tqshell3.vst3");
    SetEnvironmentVariableW(L"TQ_VST3_EXITDLL", nullptr);
    {
        Vst3Module module(path.c_str());
        ASSERT_NE(nullptr, module.module());
        ASSERT_NE(nullptr, module.factory());
        EXPECT_EQ(0, module.loadError());
        EXPECT_EQ(L"(unset)", Variable(L"TQ_VST3_EXITDLL"));
        EXPECT_TRUE(IsLoaded(path));
    }
    EXPECT_EQ(L"0", Variable(L"TQ_VST3_EXITDLL")) << "references held when ExitDll ran";
    EXPECT_FALSE(IsLoaded(path));
}

TEST(Vst3Module, InitDllFalseUnloadsWithoutFactoryOrExitDll)
{
    const std::wstring path = PluginPath(L"initdll_refuses.vst3");
    SetEnvironmentVariableW(L"TQ_VST3_CALLED", nullptr);
    {
        Vst3Module module(path.c_str());
        EXPECT_EQ(nullptr, module.module());
        EXPECT_EQ(nullptr, module.factory());
        EXPECT_EQ(0, module.loadError());
        EXPECT_FALSE(IsLoaded(path));
    }
    EXPECT_EQ(L"(unset)", Variable(L"TQ_VST3_CALLED"));
}

TEST(Vst3Module, LoadsAndUnloadsWithoutInitDllAndExitDll)
{
    const std::wstring path = PluginPath(L"no_module_entry.vst3");
    {
        Vst3Module module(path.c_str());
        EXPECT_NE(nullptr, module.module());
        EXPECT_NE(nullptr, module.factory());
        EXPECT_EQ(1, module.CountClasses());
    }
    EXPECT_FALSE(IsLoaded(path));
}

TEST(Vst3Module, LoaderErrorBecomesAnHresultAndStaysTheLastError)
{
    const std::wstring path = PluginPath(L"there_is_no_such_plugin.vst3");
    auto module = std::make_unique<Vst3Module>(path.c_str());
    EXPECT_EQ(ERROR_MOD_NOT_FOUND, GetLastError());
    EXPECT_EQ(static_cast<HRESULT>(0x8007007E), module->loadError());
    EXPECT_EQ(nullptr, module->module());
    EXPECT_EQ(0, module->CountClasses());
    vst3::PClassInfo2 info{};
    vst3::uint8 cid[16];
    EXPECT_FALSE(module->GetClassInfoAt(0, &info, cid));
}

TEST(Vst3Module, ClassRecordsCarryTheirIdAndNeedAnIndexInRange)
{
    vst3::PClassInfo2 info{};
    vst3::uint8 cid[16] = {};
    Vst3Module module(PluginPath(L"tqshell3.vst3").c_str());
    ASSERT_EQ(4, module.CountClasses());
    ASSERT_TRUE(module.GetClassInfoAt(3, &info, cid));
    EXPECT_STREQ("Shell Third", info.name);
    EXPECT_EQ(0, memcmp(cid, info.cid, 16));
    EXPECT_FALSE(module.GetClassInfoAt(4, &info, cid));
    EXPECT_FALSE(module.GetClassInfoAt(-1, &info, cid));
    EXPECT_FALSE(module.faulted());
}

} // namespace
