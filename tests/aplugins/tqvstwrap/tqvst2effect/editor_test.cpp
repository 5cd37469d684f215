// A plug-in's editor in a host window, in this process and in a server: the ordered rectangle, the
// child window, editor idle, size requests only while open, closing once.
#include "support/serverprocess.h"
#include "comptr.h"
#include "plugins/editor_child_record.h"
#include "support/testmaster.h"
#include "support/testpaths.h"
#include "uniquehandle.h"
#include "vstclient.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace {

using Calls = std::vector<std::string>;
using Rect = std::array<UINT32, 4>;

constexpr Rect kOrderedRect = {10, 20, 50, 100}; // left, top, right, bottom

// A visible top-level window standing in for the host's editor frame.
class HostWindow
{
public:
    HostWindow()
    {
        WNDCLASSW windowClass = {};
        windowClass.lpfnWndProc = DefWindowProcW;
        windowClass.hInstance = GetModuleHandleW(nullptr);
        windowClass.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
        windowClass.lpszClassName = L"TqEditorTestHost";
        RegisterClassW(&windowClass); // fails harmlessly for every window after the first
        m_window = CreateWindowExW(0, windowClass.lpszClassName, L"tqvst editor host",
                                   WS_OVERLAPPEDWINDOW | WS_VISIBLE, 20, 20, 320, 240, nullptr,
                                   nullptr, windowClass.hInstance, nullptr);
    }
    ~HostWindow()
    {
        if (m_window) DestroyWindow(m_window);
    }
    HostWindow(const HostWindow&) = delete;
    HostWindow& operator=(const HostWindow&) = delete;

    HWND Get() const { return m_window; }
    // The editor's window among ours, whichever process made it.
    HWND EditorChild() const
    {
        return FindWindowExW(m_window, nullptr, L"Static", editor_child::kChildText);
    }

private:
    HWND m_window = nullptr;
};

// A real host keeps its frame's message loop running while an editor is up; this lets both
// windows paint as they would there.
void PumpMessages(DWORD ms)
{
    const DWORD end = GetTickCount() + ms;
    for (DWORD now = GetTickCount(); LONG(end - now) > 0; now = GetTickCount())
    {
        MsgWaitForMultipleObjects(0, nullptr, FALSE, end - now, QS_ALLINPUT);
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
            DispatchMessageW(&message);
    }
}

class EditorTest : public testing::Test
{
protected:
    // One window per suite: without a window manager, showing a window makes the display driver
    // wait two seconds for an answer that never comes.
    static void SetUpTestSuite() { s_window = std::make_unique<HostWindow>(); }
    static void TearDownTestSuite() { s_window.reset(); }

    void SetUp() override
    {
        ASSERT_HRESULT_SUCCEEDED(CoInitialize(nullptr));
        ASSERT_NE(Window(), nullptr) << "no display";
    }
    void TearDown() override
    {
        Unload();
        CoUninitialize();
    }

    // Loads editor_child (the file at plugin) at location with the test master set.
    void Load(int location, const std::wstring& plugin, DWORD* pid = nullptr)
    {
        m_location = location;
        ASSERT_EQ(GetVstFactory(location, IID_ITqVstEffectFactory, m_factory.PutVoid(), L"tqvst",
                                L"tests", pid, nullptr),
                  S_OK);
        ASSERT_EQ(m_factory->CreateEffect(plugin.c_str(), 0, IID_ITqVstEffect, effect.PutVoid()),
                  S_OK);
        ASSERT_EQ(effect->SetMaster(&master), S_OK);
    }

    // Lets go of the effect and the factory; a server ends then.
    void Unload()
    {
        effect.Reset();
        if (m_factory) ReleaseVstFactory(m_location, m_factory.Detach());
    }

    static HWND Window() { return s_window->Get(); }
    static HWND EditorChild() { return s_window->EditorChild(); }

    tqtest::TestMaster master;
    tq::ComPtr<ITqVstEffect> effect;

private:
    static std::unique_ptr<HostWindow> s_window;
    int m_location = kTqVstInProcess;
    tq::ComPtr<ITqVstEffectFactory> m_factory;
};

std::unique_ptr<HostWindow> EditorTest::s_window;

// editor_child in this process, whose record can be read back.
class InProcessEditor : public EditorTest
{
protected:
    void SetUp() override
    {
        ASSERT_NO_FATAL_FAILURE(EditorTest::SetUp());
        ASSERT_NO_FATAL_FAILURE(Load(kTqVstInProcess, tqtest::PluginPath(L"editor_child.dll")));
        m_read = reinterpret_cast<editor_child::ReadRecord>(reinterpret_cast<void (*)()>(
            GetProcAddress(GetModuleHandleW(L"editor_child.dll"), "TqEditorChildRecord")));
        ASSERT_NE(m_read, nullptr);
    }

    editor_child::Record Record() const
    {
        editor_child::Record record = {};
        m_read(&record);
        return record;
    }

private:
    editor_child::ReadRecord m_read = nullptr;
};

TEST_F(InProcessEditor, OpenPutsTheEditorInTheHostWindowAndOrdersTheRectangle)
{
    Rect rect = {};
    ASSERT_EQ(effect->OpenEditor(Window(), rect.data()), S_OK);
    EXPECT_EQ(rect, kOrderedRect);
    PumpMessages(300);
    const editor_child::Record record = Record();
    EXPECT_EQ(record.parent, reinterpret_cast<intptr_t>(Window()));
    EXPECT_EQ(record.opens, 1);
    EXPECT_EQ(record.knobMode, 2);
    ASSERT_NE(EditorChild(), nullptr);
    EXPECT_EQ(reinterpret_cast<intptr_t>(EditorChild()), record.child);

    // Open again: the rectangle is read anew, the plug-in is not opened twice.
    rect = {};
    EXPECT_EQ(effect->OpenEditor(Window(), rect.data()), S_FALSE);
    EXPECT_EQ(rect, kOrderedRect);
    EXPECT_EQ(Record().opens, 1);
}

TEST_F(InProcessEditor, OpenWithoutRectangleStillOpens)
{
    EXPECT_EQ(effect->OpenEditor(Window(), nullptr), S_OK);
    EXPECT_EQ(Record().opens, 1);
    EXPECT_NE(EditorChild(), nullptr);
}

TEST_F(InProcessEditor, SizeRequestsReachTheHostOnlyWhileOpen)
{
    EXPECT_EQ(effect->Idle(), S_OK);
    EXPECT_EQ(effect->EditorIdle(), S_OK);
    EXPECT_EQ(Record().editIdles, 0) << "no editor idle while closed";
    EXPECT_EQ(master.Calls(), Calls{}) << "closed: plain idle's request dropped";

    ASSERT_EQ(effect->OpenEditor(Window(), nullptr), S_OK);
    EXPECT_EQ(master.Calls(), Calls{}) << "asked before effEditOpen returned: dropped";
    for (uint32_t tick = 1; tick <= editor_child::kEditIdleAfter; ++tick)
        EXPECT_EQ(effect->EditorIdle(), S_OK);
    EXPECT_EQ(Record().editIdles, 3);
    EXPECT_EQ(effect->Idle(), S_OK);
    EXPECT_EQ(master.Calls(), (Calls{"SizeWindow 200 120", "SizeWindow 300 150"}));

    ASSERT_EQ(effect->CloseEditor(), S_OK);
    EXPECT_EQ(effect->Idle(), S_OK);
    EXPECT_EQ(master.Calls().size(), 2u) << "closed again: dropped";
}

TEST_F(InProcessEditor, SecondCloseDoesNotReachThePlugin)
{
    EXPECT_EQ(effect->CloseEditor(), S_FALSE) << "never opened";
    ASSERT_EQ(effect->OpenEditor(Window(), nullptr), S_OK);
    EXPECT_EQ(effect->CloseEditor(), S_OK);
    EXPECT_EQ(effect->CloseEditor(), S_FALSE);
    EXPECT_EQ(Record().closes, 1);
    EXPECT_EQ(EditorChild(), nullptr) << "the plug-in took its window away";
}

TEST_F(InProcessEditor, HostDoesNotSizeTheEditor)
{
    EXPECT_EQ(effect->ResizeEditor(640, 480), E_NOTIMPL);
    UINT32 yes = 7;
    EXPECT_EQ(effect->CanResizeEditor(&yes), S_OK);
    EXPECT_EQ(yes, 0u);
}

using tqtest::ServerProcess;

class ServerEditor : public EditorTest
{
protected:
    // The editor in a server at location: the window handle crosses to it, its child window lands
    // in ours, and its size request crosses back to our master.
    void Run(int location, const std::wstring& plugin)
    {
        DWORD pid = 0;
        ASSERT_NO_FATAL_FAILURE(Load(location, plugin, &pid));
        ServerProcess server(pid);

        Rect rect = {};
        ASSERT_EQ(effect->OpenEditor(Window(), rect.data()), S_OK);
        EXPECT_EQ(rect, kOrderedRect);
        PumpMessages(300);
        const HWND child = EditorChild();
        ASSERT_NE(child, nullptr) << "the window handle crossed to the server and back";
        DWORD owner = 0;
        GetWindowThreadProcessId(child, &owner);
        EXPECT_EQ(owner, pid);

        for (uint32_t tick = 1; tick <= editor_child::kEditIdleAfter; ++tick)
            EXPECT_EQ(effect->EditorIdle(), S_OK);
        EXPECT_EQ(master.Calls(), Calls{"SizeWindow 200 120"});

        EXPECT_EQ(effect->CloseEditor(), S_OK);
        EXPECT_EQ(effect->CloseEditor(), S_FALSE);
        EXPECT_EQ(EditorChild(), nullptr);
        EXPECT_EQ(effect->Idle(), S_OK);
        EXPECT_EQ(master.Calls().size(), 1u) << "closed: the request is dropped in the server";
        Unload();
        EXPECT_TRUE(server.EndsWithin(ServerProcess::kExitMs));
        EXPECT_EQ(master.References(), 0) << "the server gave the master back";
    }
};

TEST_F(ServerEditor, SameBitness)
{
    Run(kTqVstServer, tqtest::PluginPath(L"editor_child.dll"));
}

TEST_F(ServerEditor, ThirtyTwoBitServer)
{
    if (!tqtest::Have32BitServer()) GTEST_SKIP() << "no 32-bit server here";
    Run(kTqVstServer32, tqtest::Plugin32Path(L"editor_child.dll"));
}

} // namespace
