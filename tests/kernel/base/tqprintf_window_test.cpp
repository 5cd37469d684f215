// Tests of the window and dialog text helpers on an edit control in a hidden window.
#include "tqprintf.h"

#include "kernel/text/testlocales.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr int kControlId = 100;

// Counts the texts a control was really sent, to tell a skipped update from a repeated one.
LONG g_setTextCount = 0;
WNDPROC g_editProc = nullptr;

LRESULT CALLBACK CountingProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_SETTEXT) ++g_setTextCount;
    return CallWindowProcW(g_editProc, window, message, wParam, lParam);
}

class WindowText : public testing::Test
{
protected:
    void SetUp() override
    {
        m_parent = CreateWindowExW(0, L"STATIC", L"", WS_OVERLAPPED, 0, 0, 100, 100, nullptr,
                                   nullptr, nullptr, nullptr);
        ASSERT_NE(m_parent, nullptr);
        m_edit = CreateWindowExW(0, L"EDIT", L"", WS_CHILD | ES_MULTILINE, 0, 0, 100, 100, m_parent,
                                 reinterpret_cast<HMENU>(kControlId), GetModuleHandleW(nullptr),
                                 nullptr);
        ASSERT_NE(m_edit, nullptr) << GetLastError();
        g_editProc = reinterpret_cast<WNDPROC>(
            SetWindowLongPtrW(m_edit, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(CountingProc)));
        g_setTextCount = 0;
    }
    // Destroying the parent takes its control with it.
    void TearDown() override { DestroyWindow(m_parent); }

    std::wstring Text() const
    {
        wchar_t buffer[2048];
        GetWindowTextW(m_edit, buffer, 2048);
        return buffer;
    }

    tq::text::ScopedNumberLocale m_locale{tq::test::English()};
    HWND m_parent = nullptr;
    HWND m_edit = nullptr;
};

TEST_F(WindowText, FormattedTextReachesTheControl)
{
    EXPECT_TRUE(TqSetWindowTextF(m_edit, L"%s: $d", L"Samples", 1234567));
    EXPECT_EQ(Text(), L"Samples: 1,234,567");
    EXPECT_TRUE(TqSetDlgItemTextF(m_parent, kControlId, L"%d%%", 50));
    EXPECT_EQ(Text(), L"50%");
    EXPECT_TRUE(TqSetWindowTextNoF(m_edit, L"$d plain"));
    EXPECT_EQ(Text(), L"$d plain");
    EXPECT_TRUE(TqSetDlgItemTextNoF(m_parent, kControlId, L"%s"));
    EXPECT_EQ(Text(), L"%s");
}

TEST_F(WindowText, NoFlashFormsSkipAnUnchangedText)
{
    EXPECT_TRUE(TqSetDlgItemTextNoFlashF(m_parent, kControlId, L"level %d", 3));
    EXPECT_TRUE(TqSetDlgItemTextNoFlashF(m_parent, kControlId, L"level %d", 3));
    EXPECT_EQ(g_setTextCount, 1);
    EXPECT_TRUE(TqSetDlgItemTextNoFlashNoF(m_parent, kControlId, L"level 3"));
    EXPECT_EQ(g_setTextCount, 1);
    EXPECT_TRUE(TqSetDlgItemTextNoFlashNoF(m_parent, kControlId, L"level 4"));
    EXPECT_EQ(g_setTextCount, 2);
    EXPECT_EQ(Text(), L"level 4");
    EXPECT_FALSE(TqSetDlgItemTextNoFlashNoF(m_parent, kControlId + 1, L"x"));
}

TEST_F(WindowText, MultiLineEditGetsCarriageReturns)
{
    EXPECT_TRUE(TqMEditPrintF(m_edit, L"a\nb\r\nc\n"));
    EXPECT_EQ(Text(), L"a\r\nb\r\nc\r\n");
    EXPECT_TRUE(TqMEditPrintF(m_edit, L"\n%d", 7));
    EXPECT_EQ(Text(), L"\r\n7");
}

} // namespace
