// A VST3 plug-in's view in a host window, in this process and in servers of both bitnesses: the
// ordered rectangle, the child window, the frame the view gets and the sizes it may not have,
// resizing the host's window and then the view, closing once.
#include "plugins/vst3/childview_record.h"
#include "support/editorhost.h"
#include "support/serverprocess.h"
#include "support/testpaths.h"

#include <array>
#include <string>

namespace {

using tqtest::kHostWindowHeight;
using tqtest::kHostWindowWidth;
using tqtest::PumpMessages;
using Rect = std::array<UINT32, 4>;

constexpr Rect kResizableRect = {0, 0, 400, 300};
constexpr Rect kFixedRect = {10, 20, 50, 100}; // reported as left 50, top 100, right 10, bottom 20
constexpr vst3::tresult kResultFalse = 1;

std::array<LONG, 2> ClientSize(HWND window)
{
    RECT r = {};
    GetClientRect(window, &r);
    return {r.right, r.bottom};
}

class Vst3Editor : public tqtest::EditorFixture
{
protected:
    static HWND ViewChild() { return Child(childview::kChildText); }
};

// A view plug-in in this process, whose record can be read back.
class InProcessView : public Vst3Editor
{
protected:
    void Open(const wchar_t* file)
    {
        ASSERT_NO_FATAL_FAILURE(Load(kTqVstInProcess, tqtest::PluginPath(file)));
        m_read = reinterpret_cast<childview::ReadRecord>(reinterpret_cast<void (*)()>(
            GetProcAddress(GetModuleHandleW(file), "TqChildViewRecord")));
        ASSERT_NE(m_read, nullptr);
    }
    childview::Record Record() const
    {
        childview::Record record = {};
        m_read(&record);
        return record;
    }

private:
    childview::ReadRecord m_read = nullptr;
};

TEST_F(InProcessView, OpenAttachesTheViewToTheHostWindowWithAFrame)
{
    ASSERT_NO_FATAL_FAILURE(Open(L"view_resizable.vst3"));
    const int before = Record().views;
    Rect rect = {};
    ASSERT_EQ(effect->OpenEditor(Window(), rect.data()), S_OK);
    EXPECT_EQ(rect, kResizableRect);
    const childview::Record record = Record();
    EXPECT_EQ(record.views, before + 1);
    EXPECT_EQ(record.attaches, 1);
    EXPECT_EQ(record.parent, reinterpret_cast<intptr_t>(Window()));
    EXPECT_EQ(record.framesSet, 1);
    EXPECT_EQ(record.resizeAnswer, kResultFalse) << "a view's own size wish is refused";
    ASSERT_NE(ViewChild(), nullptr);
    EXPECT_EQ(reinterpret_cast<intptr_t>(ViewChild()), record.child);
    EXPECT_EQ(WindowSize(), (std::array<LONG, 2>{kHostWindowWidth, kHostWindowHeight}));

    // Open again: the size is handed out anew, no second view is made.
    rect = {};
    EXPECT_EQ(effect->OpenEditor(Window(), rect.data()), S_FALSE);
    EXPECT_EQ(rect, kResizableRect);
    EXPECT_EQ(effect->OpenEditor(Window(), nullptr), S_FALSE);
    EXPECT_EQ(Record().views, before + 1);
    EXPECT_EQ(effect->EditorIdle(), S_OK);

    EXPECT_EQ(effect->CloseEditor(), S_OK);
    EXPECT_EQ(effect->CloseEditor(), S_FALSE);
    const childview::Record closed = Record();
    EXPECT_EQ(closed.framesCleared, 1);
    EXPECT_EQ(closed.removes, 1);
    EXPECT_EQ(closed.viewsAlive, 0);
    EXPECT_EQ(ViewChild(), nullptr) << "the view took its window away";
}

TEST_F(InProcessView, ResizingSizesTheHostWindowAsAskedAndTheViewAsItAllows)
{
    ASSERT_NO_FATAL_FAILURE(Open(L"view_resizable.vst3"));
    UINT32 yes = 7;
    EXPECT_EQ(effect->CanResizeEditor(&yes), E_FAIL) << "no view yet";
    EXPECT_EQ(effect->ResizeEditor(300, 250), E_FAIL);
    ASSERT_EQ(effect->OpenEditor(Window(), nullptr), S_OK);
    EXPECT_EQ(effect->CanResizeEditor(&yes), S_OK);
    EXPECT_EQ(yes, 1u);

    EXPECT_EQ(effect->ResizeEditor(-1, 10), E_INVALIDARG);
    EXPECT_EQ(effect->ResizeEditor(10, -1), E_INVALIDARG);
    EXPECT_EQ(Record().onSizes, 0);

    ASSERT_EQ(effect->ResizeEditor(300, 250), S_OK);
    EXPECT_EQ(WindowSize(), (std::array<LONG, 2>{300, 250}));
    childview::Record record = Record();
    EXPECT_EQ(record.onSizes, 1);
    EXPECT_EQ(record.lastOnSize.right - record.lastOnSize.left, 300);
    EXPECT_EQ(record.lastOnSize.bottom - record.lastOnSize.top, 250);
    EXPECT_EQ(ClientSize(ViewChild()), (std::array<LONG, 2>{300 - 2, 250 - 2})) << "inside border";

    // Narrower than the view allows: the window takes the asked size, the view its own.
    ASSERT_EQ(effect->ResizeEditor(120, 90), S_OK);
    EXPECT_EQ(WindowSize(), (std::array<LONG, 2>{120, 90}));
    record = Record();
    EXPECT_EQ(record.onSizes, 2);
    EXPECT_EQ(record.lastOnSize.right - record.lastOnSize.left, 200);
    EXPECT_EQ(record.lastOnSize.bottom - record.lastOnSize.top, 90);
}

TEST_F(InProcessView, AFixedViewIsNeverResizedAndItsRectangleIsOrdered)
{
    ASSERT_NO_FATAL_FAILURE(Open(L"view_fixed.vst3"));
    Rect rect = {};
    ASSERT_EQ(effect->OpenEditor(Window(), rect.data()), S_OK);
    EXPECT_EQ(rect, kFixedRect);
    rect = {};
    EXPECT_EQ(effect->OpenEditor(Window(), rect.data()), S_FALSE);
    EXPECT_EQ(rect, kFixedRect);

    UINT32 yes = 7;
    EXPECT_EQ(effect->CanResizeEditor(&yes), S_OK);
    EXPECT_EQ(yes, 0u);
    EXPECT_EQ(effect->ResizeEditor(300, 250), S_FALSE);
    EXPECT_EQ(effect->ResizeEditor(-1, 10), S_FALSE) << "refused before the sizes are looked at";
    EXPECT_EQ(WindowSize(), (std::array<LONG, 2>{kHostWindowWidth, kHostWindowHeight}));
    EXPECT_EQ(Record().onSizes, 0);
    EXPECT_EQ(Record().constraintCalls, 0);
}

TEST_F(InProcessView, AskingForAnEditorMakesAViewAndLetsItGo)
{
    ASSERT_NO_FATAL_FAILURE(Open(L"view_fixed.vst3"));
    const childview::Record before = Record();
    TqVstEffectInfo info = {};
    ASSERT_EQ(effect->GetEffectInfo(&info), S_OK);
    EXPECT_EQ(info.flags & 1u, 1u) << "has an editor";
    const childview::Record after = Record();
    EXPECT_GT(after.views, before.views);
    EXPECT_EQ(after.viewsAlive, 0);
    EXPECT_EQ(after.attaches, before.attaches) << "never attached";
}

TEST_F(InProcessView, ReleasingTheEffectClosesAnOpenEditor)
{
    ASSERT_NO_FATAL_FAILURE(Open(L"view_resizable.vst3"));
    ASSERT_EQ(effect->OpenEditor(Window(), nullptr), S_OK);
    const childview::ReadRecord read =
        reinterpret_cast<childview::ReadRecord>(reinterpret_cast<void (*)()>(
            GetProcAddress(GetModuleHandleW(L"view_resizable.vst3"), "TqChildViewRecord")));
    childview::Record record = {};
    // Hold the module so its record can be read after the effect has gone.
    HMODULE held = LoadLibraryW(tqtest::PluginPath(L"view_resizable.vst3").c_str());
    effect.Reset();
    read(&record);
    EXPECT_EQ(record.removes, 1);
    EXPECT_EQ(record.framesCleared, 1);
    EXPECT_EQ(record.viewsAlive, 0);
    FreeLibrary(held);
    EXPECT_EQ(ViewChild(), nullptr);
}

using tqtest::ServerProcess;

// The view in a server: the window handle crosses to it, its child window lands in ours, and
// the server resizes our window.
class ServerView : public Vst3Editor
{
protected:
    void Run(int location, const std::wstring& folder)
    {
        DWORD pid = 0;
        ASSERT_NO_FATAL_FAILURE(Load(location, folder + L"view_resizable.vst3", &pid));
        ServerProcess server(pid);

        Rect rect = {};
        ASSERT_EQ(effect->OpenEditor(Window(), rect.data()), S_OK);
        EXPECT_EQ(rect, kResizableRect);
        PumpMessages(300);
        const HWND child = ViewChild();
        ASSERT_NE(child, nullptr) << "the window handle crossed to the server and back";
        DWORD owner = 0;
        GetWindowThreadProcessId(child, &owner);
        EXPECT_EQ(owner, pid);
        EXPECT_EQ(effect->EditorIdle(), S_OK);

        UINT32 yes = 0;
        EXPECT_EQ(effect->CanResizeEditor(&yes), S_OK);
        EXPECT_EQ(yes, 1u);
        ASSERT_EQ(effect->ResizeEditor(300, 250), S_OK);
        PumpMessages(200);
        EXPECT_EQ(WindowSize(), (std::array<LONG, 2>{300, 250}));
        EXPECT_EQ(ClientSize(child), (std::array<LONG, 2>{300 - 2, 250 - 2}));

        EXPECT_EQ(effect->CloseEditor(), S_OK);
        EXPECT_EQ(effect->CloseEditor(), S_FALSE);
        EXPECT_EQ(ViewChild(), nullptr);

        // A fixed view in the same server keeps its size.
        tq::ComPtr<ITqVstEffect> fixed;
        ASSERT_EQ(CreateAnother(folder + L"view_fixed.vst3", fixed), S_OK);
        rect = {};
        ASSERT_EQ(fixed->OpenEditor(Window(), rect.data()), S_OK);
        EXPECT_EQ(rect, kFixedRect);
        EXPECT_EQ(fixed->ResizeEditor(500, 400), S_FALSE);
        EXPECT_EQ(fixed->CloseEditor(), S_OK);
        fixed.Reset();

        Unload();
        EXPECT_TRUE(server.EndsWithin(ServerProcess::kExitMs));
    }
};

TEST_F(ServerView, SameBitness)
{
    Run(kTqVstServer, tqtest::PluginPath(L""));
}

TEST_F(ServerView, ThirtyTwoBitServer)
{
    if (!tqtest::Have32BitServer()) GTEST_SKIP() << "no 32-bit server here";
    Run(kTqVstServer32, tqtest::Plugin32Path(L""));
}

} // namespace
