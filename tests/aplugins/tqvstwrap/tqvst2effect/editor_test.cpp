// A plug-in's editor in a host window, in this process and in a server: the ordered rectangle, the
// child window, editor idle, size requests only while open, closing once.
#include "plugins/editor_child_record.h"
#include "support/editorhost.h"
#include "support/serverprocess.h"
#include "support/testmaster.h"
#include "support/testpaths.h"

#include <array>
#include <string>
#include <vector>

namespace {

using tqtest::PumpMessages;
using Calls = std::vector<std::string>;
using Rect = std::array<UINT32, 4>;

constexpr Rect kOrderedRect = {10, 20, 50, 100}; // left, top, right, bottom

class EditorTest : public tqtest::EditorFixture
{
protected:
    // Loads editor_child (the file at plugin) at location with the test master set.
    void Load(int location, const std::wstring& plugin, DWORD* pid = nullptr)
    {
        ASSERT_NO_FATAL_FAILURE(EditorFixture::Load(location, plugin, pid));
        ASSERT_EQ(effect->SetMaster(&master), S_OK);
    }
    static HWND EditorChild() { return Child(editor_child::kChildText); }

    tqtest::TestMaster master;
};

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
