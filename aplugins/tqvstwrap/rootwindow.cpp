// The hand-started server's window: an empty list box that fills it and holds the server open.
#include "rootwindow.h"

#include "activationcontext.h"
#include "serverlifetime.h"
#include "tqlang.h"

#include <new>

namespace {
constexpr wchar_t kClassName[] = L"TqVstServer";
constexpr DWORD kListBoxStyle =
    WS_CHILD | WS_VISIBLE | WS_VSCROLL | LBS_USETABSTOPS | LBS_NOINTEGRALHEIGHT;
static_assert(kListBoxStyle == 0x50200180);
} // namespace

RootWindow* RootWindow::Create(HINSTANCE instance)
{
    auto* self = new (std::nothrow) RootWindow;
    if (!self) return nullptr;
    WNDCLASSW wc = {};
    wc.hInstance = instance;
    self->DescribeClass(wc);

    tqvst::ScopedActivationContext manifest;
    RegisterClassW(&wc);
    bool deleted = false;
    self->m_deletedFlag = &deleted;
    HWND window = CreateWindowExW(0, kClassName, kClassName, WS_OVERLAPPEDWINDOW, CW_USEDEFAULT,
                                  CW_USEDEFAULT, 200, 100, nullptr, nullptr, instance, self);
    if (!window)
    {
        // A window that got as far as WM_NCCREATE may have deleted its object on WM_NCDESTROY.
        if (!deleted) delete self;
        return nullptr;
    }
    self->m_deletedFlag = nullptr;
    return self;
}

void RootWindow::DescribeClass(WNDCLASSW& wc)
{
    wc.style = 0;
    wc.lpfnWndProc = SharedWindowProc;
    wc.hIcon = nullptr;
    wc.hCursor = TqLoadCursor(nullptr, 32512);
    wc.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1);
    wc.lpszMenuName = nullptr;
    wc.lpszClassName = kClassName;
}

LRESULT RootWindow::HandleMessage(UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message)
    {
    case WM_CREATE:
        m_listBox = CreateWindowExW(0, L"ListBox", nullptr, kListBoxStyle, 0, 0, 0, 0, m_window,
                                    nullptr, nullptr, nullptr);
        if (!m_listBox) return -1;
        SetAnchorWindow(m_window);
        return 0;
    case WM_SIZE:
        SetWindowPos(m_listBox, nullptr, 0, 0, LOWORD(lParam), HIWORD(lParam),
                     SWP_NOZORDER | SWP_NOACTIVATE);
        return 0;
    case WM_SETFOCUS:
        SetFocus(m_listBox);
        return 0;
    case WM_CLOSE:
        SetAnchorWindow(nullptr);
        break;
    case WM_NCDESTROY:
        // Intended: while effects still hold the server, the object is deliberately not deleted
        // and the server lives on without its window until the last effect goes.
        if (IsServerInUse()) return 0;
        PostQuitMessage(0);
        break;
    default:
        break;
    }
    return Window::HandleMessage(message, wParam, lParam);
}
