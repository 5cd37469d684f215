// Choosing the class of a .vst3 file: the shell rule, ShellIds, versions, names, and every way
// the walk can fail.
#include "loadpluginclass.h"
#include "shellid.h"
#include "support/testpaths.h"
#include "tqvst.h"
#include "vst3version.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using tqtest::PluginPath;
using tqvst::LoadPluginClass;
using tqvst::Vst3LoadedClass;

namespace {

// The ShellIds of a module's classes, read without the code under test's walk.
std::vector<UINT32> ShellIdsOf(const std::wstring& path)
{
    std::vector<UINT32> ids;
    tqvst::Vst3Module module(path.c_str());
    for (vst3::int32 i = 0; i < module.CountClasses(); ++i)
    {
        vst3::PClassInfo2 info{};
        vst3::uint8 cid[16];
        if (module.GetClassInfoAt(i, &info, cid)) ids.push_back(tqvst::ShellId(cid));
    }
    return ids;
}

TEST(LoadPluginClass, OneAudioClassBesideAControllerIsNoShell)
{
    Vst3LoadedClass loaded;
    ASSERT_EQ(S_OK, LoadPluginClass(loaded, PluginPath(L"tqgain3.vst3").c_str(), 0));
    EXPECT_EQ(0u, loaded.flags);
    EXPECT_EQ(2, loaded.classCount);
    EXPECT_EQ(ShellIdsOf(PluginPath(L"tqgain3.vst3")).at(0), loaded.uniqueId);
    EXPECT_EQ(10203004u, loaded.version);
    EXPECT_STREQ(L"TqGain3", loaded.effectName);
    EXPECT_STREQ(L"tqvst", loaded.vendorName);
    EXPECT_STREQ("Audio Module Class", loaded.chosenClass.category);
    ASSERT_NE(nullptr, loaded.module);
    EXPECT_NE(nullptr, loaded.module->factory());
}

TEST(LoadPluginClass, SeveralAudioClassesWithoutAnIdMakeAShell)
{
    Vst3LoadedClass loaded;
    EXPECT_EQ(TQVST_S_SHELL, LoadPluginClass(loaded, PluginPath(L"tqshell3.vst3").c_str(), 0));
    EXPECT_EQ(Vst3LoadedClass::kShellFlag, loaded.flags);
    EXPECT_EQ(0u, loaded.uniqueId);
    EXPECT_EQ(4, loaded.classCount);
    EXPECT_STREQ(L"tqvst shells", loaded.vendorName);
    // The host walks the shell's classes next, so the module stays loaded.
    ASSERT_NE(nullptr, loaded.module);
    EXPECT_NE(nullptr, loaded.module->factory());
}

TEST(LoadPluginClass, AShellIdPicksItsClassAndIsStableAcrossLoads)
{
    const std::wstring path = PluginPath(L"tqshell3.vst3");
    const std::vector<UINT32> ids = ShellIdsOf(path);
    ASSERT_EQ(4u, ids.size());
    EXPECT_EQ(ids, ShellIdsOf(path));

    struct Pick
    {
        size_t index;
        const wchar_t* name;
        UINT32 version;
    };
    // The third class is an instrument: it is chosen like any effect.
    const Pick picks[] = {{0, L"Shell First", 10203429}, {3, L"Shell Third", 2005}};
    for (const Pick& pick : picks)
    {
        Vst3LoadedClass loaded;
        EXPECT_EQ(S_OK, LoadPluginClass(loaded, path.c_str(), ids[pick.index])) << pick.name;
        EXPECT_EQ(ids[pick.index], loaded.uniqueId);
        EXPECT_EQ(0u, loaded.flags);
        EXPECT_STREQ(pick.name, loaded.effectName);
        EXPECT_EQ(pick.version, loaded.version);
    }
}

TEST(LoadPluginClass, RefusesWhatCannotBeChosen)
{
    const std::vector<UINT32> shellIds = ShellIdsOf(PluginPath(L"tqshell3.vst3"));
    ASSERT_EQ(4u, shellIds.size());
    struct Case
    {
        const wchar_t* file;
        UINT32 id;
        HRESULT result;
    };
    const Case cases[] = {
        // The second audio class's version has an a of 429.
        {L"tqshell3.vst3", shellIds[2], tqvst::kVst3VersionOutOfRange},
        // The controller class has a ShellId too, but it is not an audio class.
        {L"tqshell3.vst3", shellIds[1], E_UNEXPECTED},
        {L"tqshell3.vst3", shellIds[0] ^ 1, E_UNEXPECTED},
        {L"initdll_refuses.vst3", 0, tqvst::kNoVst3Plugin},
        {L"there_is_no_such_plugin.vst3", 0, static_cast<HRESULT>(0x8007007E)},
        {L"factory1_only.vst3", 0, tqvst::kVst3ClassInfoUnreadable},
        {L"fault_in_factory.vst3", 0, TQVST_E_PLUGINFAULT},
        {L"fault_in_classinfo.vst3", 0, TQVST_E_PLUGINFAULT},
    };
    for (const Case& c : cases)
    {
        Vst3LoadedClass loaded;
        EXPECT_EQ(c.result, LoadPluginClass(loaded, PluginPath(c.file).c_str(), c.id)) << c.file;
        EXPECT_EQ(0u, loaded.flags) << c.file;
        EXPECT_EQ(0u, loaded.version) << c.file;
        EXPECT_EQ(0, loaded.effectName[0]) << c.file;
    }
}

TEST(LoadPluginClass, AFileThatIsNoExecutableIsABadFormat)
{
    wchar_t folder[MAX_PATH];
    ASSERT_NE(0u, GetTempPathW(MAX_PATH, folder));
    const std::wstring path = std::wstring(folder) + L"tq_not_a_module.vst3";
    const char text[] = "This is a text file that only looks like a plug-in by its name.";
    HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, file);
    DWORD written = 0;
    WriteFile(file, text, sizeof(text), &written, nullptr);
    CloseHandle(file);
    Vst3LoadedClass loaded;
    EXPECT_EQ(static_cast<HRESULT>(0x800700C1), LoadPluginClass(loaded, path.c_str(), 0));
    DeleteFileW(path.c_str());
}

} // namespace
