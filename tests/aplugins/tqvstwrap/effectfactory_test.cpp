// The class object in process: loading plug-ins, their facts, shells, faults and bad files.
#include "comptr.h"
#include "serverlifetime.h"
#include "support/testpaths.h"
#include "vstclient.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using tqtest::PluginPath;

constexpr UINT32 Id(const char (&c)[5])
{
    return UINT32(uint8_t(c[0])) << 24 | UINT32(uint8_t(c[1])) << 16 | UINT32(uint8_t(c[2])) << 8 |
           UINT32(uint8_t(c[3]));
}

constexpr HRESULT kWrongMachine = static_cast<HRESULT>(0x800700C1);

struct Facts
{
    HRESULT hr = E_FAIL;
    WCHAR name[64] = {};
    WCHAR vendor[64] = {};
    WCHAR product[64] = {};
    TqVstEffectInfo info = {};
};

class InProcessFactory : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_HRESULT_SUCCEEDED(CoInitialize(nullptr));
        DWORD pid = 1, count = 1;
        ASSERT_EQ(GetVstFactory(kTqVstInProcess, IID_ITqVstEffectFactory, m_factory.PutVoid(),
                                L"tqvst", L"tests", &pid, &count),
                  S_OK);
        EXPECT_EQ(pid, 0u);
        EXPECT_EQ(count, 0u);
    }
    void TearDown() override
    {
        EXPECT_EQ(ReleaseVstFactory(kTqVstInProcess, m_factory.Detach()), S_OK);
        CoUninitialize();
    }

    Facts Read(const std::wstring& path, UINT32 id = 0, UINT32 timeoutMs = 0)
    {
        Facts f;
        // Filled with garbage to see that the callee clears what it does not fill.
        memset(&f.info, 0xCD, sizeof(f.info));
        f.hr = m_factory->GetEffectInfoForFile(path.c_str(), id, f.name, f.vendor, f.product,
                                               &f.info, timeoutMs);
        return f;
    }

    tq::ComPtr<ITqVstEffect> Create(const std::wstring& path, UINT32 id, HRESULT* hr)
    {
        tq::ComPtr<ITqVstEffect> effect;
        *hr = m_factory->CreateEffect(path.c_str(), id, IID_ITqVstEffect, effect.PutVoid());
        return effect;
    }

    tq::ComPtr<ITqVstEffectFactory> m_factory;
};

TEST_F(InProcessFactory, ReadsGainFactsAndUnloads)
{
    for (UINT32 timeout : {0u, 0xFFFFFFFFu, 2000u})
    {
        const Facts f = Read(PluginPath(L"tqgain.dll"), 0, timeout);
        ASSERT_EQ(f.hr, S_OK);
        EXPECT_STREQ(f.name, L"TqGain");
        EXPECT_STREQ(f.vendor, L"tqvst");
        EXPECT_STREQ(f.product, L"tqvst test gain");
        EXPECT_EQ(f.info.uniqueId, Id("TqGn"));
        EXPECT_EQ(f.info.version, 1000u);
        EXPECT_EQ(f.info.vendorVersion, 1100u);
        EXPECT_EQ(f.info.numPrograms, 1u);
        EXPECT_EQ(f.info.numParameters, 1u);
        EXPECT_EQ(f.info.numInputs, 2u);
        EXPECT_EQ(f.info.numOutputs, 2u);
        EXPECT_EQ(f.info.initialDelay, 0u);
        EXPECT_EQ(f.info.flags, 0u) << "only the bits 0x309 pass";
        EXPECT_EQ(f.info.state, 1u) << "loadable, VST2";
        EXPECT_EQ(GetModuleHandleW(L"tqgain.dll"), nullptr) << "facts leave nothing loaded";
        EXPECT_EQ(g_objectCount, 0);
    }
}

TEST_F(InProcessFactory, ClassObjectIsItsOwnInstance)
{
    tq::ComPtr<IClassFactory> classFactory;
    ASSERT_EQ(m_factory.As(classFactory), S_OK);
    void* object = reinterpret_cast<void*>(1);
    EXPECT_EQ(classFactory->CreateInstance(classFactory.Get(), IID_ITqVstEffectFactory, &object),
              CLASS_E_NOAGGREGATION);
    tq::ComPtr<ITqVstEffectFactory> same;
    ASSERT_EQ(classFactory->CreateInstance(nullptr, IID_ITqVstEffectFactory, same.PutVoid()), S_OK);
    EXPECT_EQ(same.Get(), m_factory.Get());
    tq::ComPtr<ITqVstEffect> notAnEffect;
    EXPECT_EQ(classFactory->CreateInstance(nullptr, IID_ITqVstEffect, notAnEffect.PutVoid()),
              E_NOINTERFACE);

    EXPECT_EQ(classFactory->LockServer(TRUE), S_OK);
    EXPECT_EQ(g_lockCount, 1);
    EXPECT_EQ(classFactory->LockServer(FALSE), S_OK);
    EXPECT_EQ(g_lockCount, 0);
}

TEST_F(InProcessFactory, ShellEnumeratesAndSelectsSubPlugins)
{
    const std::wstring shell = PluginPath(L"tqshell.dll");
    Facts f = Read(shell);
    EXPECT_EQ(f.hr, TQVST_S_SHELL);
    EXPECT_STREQ(f.name, L"");

    HRESULT hr = E_FAIL;
    auto effect = Create(shell, 0, &hr);
    ASSERT_EQ(hr, TQVST_S_SHELL);
    ASSERT_TRUE(effect);
    WCHAR name[64] = L"stale";
    EXPECT_EQ(effect->GetEffectName(name, 64), TQVST_E_NOSELECTION);
    EXPECT_STREQ(name, L"");
    TqVstEffectInfo info;
    EXPECT_EQ(effect->GetEffectInfo(&info), TQVST_E_NOSELECTION);

    // Two full enumerations: the second must start from the beginning again.
    for (int pass = 0; pass < 2; ++pass)
    {
        const UINT32 expectedIds[] = {Id("TqSA"), Id("TqSB"), Id("TqSC")};
        const wchar_t* expectedNames[] = {L"Shell A", L"Shell B", L"Shell C"};
        for (int i = 0; i < 3; ++i)
        {
            UINT32 id = 0;
            ASSERT_EQ(effect->GetNextShellPlugin(&id, name, 64), S_OK) << pass << " " << i;
            EXPECT_EQ(id, expectedIds[i]);
            EXPECT_STREQ(name, expectedNames[i]);
        }
        UINT32 id = 1;
        EXPECT_EQ(effect->GetNextShellPlugin(&id, name, 64), S_FALSE);
        EXPECT_EQ(id, 0u);
    }

    f = Read(shell, Id("TqSB"));
    EXPECT_EQ(f.hr, S_OK);
    EXPECT_STREQ(f.name, L"Shell B");
    EXPECT_EQ(f.info.uniqueId, Id("TqSB"));

    f = Read(shell, Id("Nope"));
    EXPECT_EQ(f.hr, E_UNEXPECTED);

    // A plug-in that is no shell has nothing to enumerate.
    auto gain = Create(PluginPath(L"tqgain.dll"), 0, &hr);
    ASSERT_EQ(hr, S_OK);
    EXPECT_EQ(gain->GetNextShellPlugin(nullptr, name, 64), S_FALSE);
}

TEST_F(InProcessFactory, PlaceholderNameFallsBackToFileName)
{
    const Facts f = Read(PluginPath(L"named_vita (64).dll"));
    ASSERT_EQ(f.hr, S_OK);
    EXPECT_STREQ(f.name, L"named_vita") << "the 64-bit mark is dropped";
    EXPECT_STREQ(f.product, L"named_vita (64)") << "the product keeps the whole base name";
    EXPECT_STREQ(f.vendor, L"tqvst");
}

TEST_F(InProcessFactory, IdleRequestedDuringEntryPointIsKept)
{
    HRESULT hr = E_FAIL;
    auto effect = Create(PluginPath(L"needidle_in_entry.dll"), 0, &hr);
    ASSERT_EQ(hr, S_OK);
    using IdleCalls = long(__cdecl*)();
    auto idleCalls = reinterpret_cast<IdleCalls>(reinterpret_cast<void (*)()>(
        GetProcAddress(GetModuleHandleW(L"needidle_in_entry.dll"), "TqIdleCalls")));
    ASSERT_NE(idleCalls, nullptr);
    const long before = idleCalls();
    // EditorIdle sends effIdle only to plug-ins that asked for idle.
    EXPECT_EQ(effect->EditorIdle(), S_OK);
    EXPECT_EQ(idleCalls(), before + 1);
}

TEST_F(InProcessFactory, GainParametersAndProgramsThroughTheEffect)
{
    HRESULT hr = E_FAIL;
    auto effect = Create(PluginPath(L"tqgain.dll"), 0, &hr);
    ASSERT_EQ(hr, S_OK);
    WCHAR text[64];
    EXPECT_EQ(effect->GetParameterName(0, text, 64), S_OK);
    EXPECT_STREQ(text, L"Gain");
    EXPECT_EQ(effect->GetParameterLabel(0, text, 64), S_OK);
    EXPECT_STREQ(text, L"x");
    float value = -1.0f;
    EXPECT_EQ(effect->GetParameter(0, &value), S_OK);
    EXPECT_EQ(value, 0.5f);
    EXPECT_EQ(effect->SetParameter(0, 0.25f), S_OK);
    EXPECT_EQ(effect->GetParameterDisplay(0, text, 64), S_OK);
    EXPECT_STREQ(text, L"0.500");
    // Values outside 0..1 are clamped on the way out.
    EXPECT_EQ(effect->SetParameter(0, 3.0f), S_OK);
    EXPECT_EQ(effect->GetParameter(0, &value), S_OK);
    EXPECT_EQ(value, 1.0f);

    UINT32 yes = 7;
    EXPECT_EQ(effect->CanParameterBeAutomated(0, &yes), S_OK);
    EXPECT_EQ(yes, 1u);
    EXPECT_EQ(effect->GetParameterProperties(0, nullptr), E_NOTIMPL);

    EXPECT_EQ(effect->GetProgramName(-1, text, 64), S_OK);
    EXPECT_STREQ(text, L"Default");
    EXPECT_EQ(effect->GetProgramName(0, text, 64), S_OK);
    EXPECT_STREQ(text, L"Default");
    EXPECT_EQ(effect->GetProgramName(1, text, 64), E_INVALIDARG);
    EXPECT_EQ(effect->SetProgram(0), S_FALSE) << "already the current program";
    EXPECT_EQ(effect->SetProgramName(L"Default"), S_FALSE);
    EXPECT_EQ(effect->SetProgramName(L"Loud"), S_OK);
    EXPECT_EQ(effect->GetProgramName(-1, text, 64), S_OK);
    EXPECT_STREQ(text, L"Loud");

    EXPECT_EQ(effect->SetSampleRate(48000.0), S_OK);
    EXPECT_EQ(effect->SetSampleRate(48000.0), S_FALSE);
    EXPECT_EQ(effect->SetBlockSize(512), S_OK);
    EXPECT_EQ(effect->SetBlockSize(512), S_FALSE);
    UINT32 frames = 9;
    EXPECT_EQ(effect->GetTailSize(&frames), S_OK);
    EXPECT_EQ(frames, 0u);

    // Short buffers get a cut, terminated text.
    WCHAR shortText[4] = {L'x', L'x', L'x', L'x'};
    EXPECT_EQ(effect->GetEffectName(shortText, 4), S_OK);
    EXPECT_STREQ(shortText, L"TqG");
    EXPECT_EQ(effect->GetEffectName(nullptr, 4), E_INVALIDARG);
}

TEST_F(InProcessFactory, BlockSizeChangeNudgesListedPlugins)
{
    HRESULT hr = E_FAIL;
    auto effect = Create(PluginPath(L"nudge_probe.dll"), 0, &hr);
    ASSERT_EQ(hr, S_OK);
    using Counts = void(__cdecl*)(long*, long*, float*);
    auto counts = reinterpret_cast<Counts>(reinterpret_cast<void (*)()>(
        GetProcAddress(GetModuleHandleW(L"nudge_probe.dll"), "TqNudgeCounts")));
    ASSERT_NE(counts, nullptr);
    long reads = 0, writes = 0;
    float value = 0;
    EXPECT_EQ(effect->SetBlockSize(256), S_OK);
    counts(&reads, &writes, &value);
    EXPECT_EQ(reads, 1);
    EXPECT_EQ(writes, 1);
    EXPECT_EQ(value, 0.75f) << "the value read is written back unchanged";
    // An unchanged block size sends nothing and nudges nothing.
    EXPECT_EQ(effect->SetBlockSize(256), S_FALSE);
    counts(&reads, &writes, &value);
    EXPECT_EQ(reads, 1);
    EXPECT_EQ(writes, 1);
}

TEST_F(InProcessFactory, PluginFaultsBecomeResultCodes)
{
    EXPECT_EQ(Read(PluginPath(L"fault_in_entry.dll")).hr, TQVST_E_PLUGINFAULT);
    // The process goes on serving.
    EXPECT_EQ(Read(PluginPath(L"tqgain.dll")).hr, S_OK);

    // A fault in effClose still unloads the module.
    HRESULT hr = E_FAIL;
    auto effect = Create(PluginPath(L"fault_in_close.dll"), 0, &hr);
    ASSERT_EQ(hr, S_OK);
    EXPECT_NE(GetModuleHandleW(L"fault_in_close.dll"), nullptr);
    effect.Reset();
    EXPECT_EQ(GetModuleHandleW(L"fault_in_close.dll"), nullptr);

    EXPECT_EQ(Read(PluginPath(L"wrong_magic.dll")).hr, E_INVALIDARG);
    EXPECT_EQ(GetModuleHandleW(L"wrong_magic.dll"), nullptr);

    // Faults in frames without unwind information are caught too.
    const Facts f = Read(PluginPath(L"fault_nounwind.dll"));
    EXPECT_FALSE(FAILED(f.hr)) << std::hex << f.hr;
    EXPECT_EQ(g_objectCount, 0);
}

TEST_F(InProcessFactory, BadFilesGiveFailureCodes)
{
    tqtest::TempFolder folder;
    const std::wstring empty = folder.File(L"empty.dll");
    const std::wstring text = folder.File(L"text.dll");
    const std::wstring subfolder = folder.File(L"folder.dll");
    CloseHandle(CreateFileW(empty.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
    HANDLE file = CreateFileW(text.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
    const char content[] = "This is a text file, not a plug-in.\r\n";
    DWORD written = 0;
    WriteFile(file, content, sizeof(content) - 1, &written, nullptr);
    CloseHandle(file);
    CreateDirectoryW(subfolder.c_str(), nullptr);

    EXPECT_EQ(Read(folder.File(L"missing.dll")).hr, HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND));
    EXPECT_TRUE(FAILED(Read(subfolder).hr));
    EXPECT_TRUE(FAILED(Read(empty).hr));
    EXPECT_TRUE(FAILED(Read(text).hr));
    EXPECT_EQ(Read(PluginPath(L"no_entry.dll")).hr, HRESULT_FROM_WIN32(ERROR_PROC_NOT_FOUND));
    EXPECT_EQ(m_factory->GetEffectInfoForFile(nullptr, 0, nullptr, nullptr, nullptr, nullptr, 0),
              E_INVALIDARG);
    EXPECT_EQ(g_objectCount, 0);
}

TEST_F(InProcessFactory, ExcludedFileIsNeverLoaded)
{
    tqtest::TempFolder folder;
    // A plug-in that would fault if it were loaded.
    for (const wchar_t* name : {L"WNASPI32.DLL", L"wnaspi32.dll"})
    {
        const std::wstring copy = folder.File(name);
        ASSERT_TRUE(CopyFileW(PluginPath(L"fault_in_entry.dll").c_str(), copy.c_str(), FALSE));
        EXPECT_EQ(Read(copy).hr, E_INVALIDARG);
        DeleteFileW(copy.c_str());
    }
}

TEST_F(InProcessFactory, Vst3FilesGoToTheVst3Class)
{
    tqtest::TempFolder folder;
    // The extension alone decides, in any case.
    for (const wchar_t* name : {L"plugin.vst3", L"PLUGIN.VST3"})
    {
        const std::wstring copy = folder.File(name);
        ASSERT_TRUE(CopyFileW(PluginPath(L"tqgain3.vst3").c_str(), copy.c_str(), FALSE));
        const Facts f = Read(copy);
        EXPECT_EQ(f.hr, S_OK);
        EXPECT_STREQ(f.name, L"TqGain3");
        EXPECT_EQ(f.info.state, 3u);
        DeleteFileW(copy.c_str());
    }
    EXPECT_EQ(g_objectCount, 0);
}

TEST_F(InProcessFactory, PluginOfTheOtherBitnessIsMarkedNotLoadable)
{
#ifdef _WIN64
    const std::wstring other = tqtest::Plugin32Path(L"tqgain.dll");
#else
    const std::wstring other =
        tqtest::ProgramFolder() + L"\\..\\..\\x64\\bin\\testplugins\\tqgain.dll";
#endif
    if (!tqtest::FileExists(other)) GTEST_SKIP() << "no plug-in of the other bitness in this tree";
    const Facts f = Read(other);
    EXPECT_EQ(f.hr, kWrongMachine);
    EXPECT_EQ(f.info.state & 1u, 0u);
}

} // namespace
