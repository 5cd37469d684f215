// Window base: binding on WM_NCCREATE, painting, and self-deletion on WM_NCDESTROY.
#include "window.h"

LRESULT Window::HandleMessage(UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message)
    {
    case WM_PAINT:
    {
        PAINTSTRUCT ps;
        HDC dc = BeginPaint(m_window, &ps);
        Paint(dc, ps);
        EndPaint(m_window, &ps);
        return 0;
    }
    case WM_NCDESTROY:
    {
        const LRESULT result = DefWindowProcW(m_window, message, wParam, lParam);
        SetWindowLongPtrW(m_window, GWLP_USERDATA, 0);
        delete this;
        return result;
    }
    default:
        return DefWindowProcW(m_window, message, wParam, lParam);
    }
}

Window::~Window()
{
    if (m_deletedFlag) *m_deletedFlag = true;
}

void Window::Paint(HDC, const PAINTSTRUCT&)
{
}

LRESULT CALLBACK Window::SharedWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_NCCREATE)
    {
        auto* self = static_cast<Window*>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams);
        if (self)
        {
            self->m_window = window;
            SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
        }
    }
    auto* bound = reinterpret_cast<Window*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    return bound ? bound->HandleMessage(message, wParam, lParam)
                 : DefWindowProcW(window, message, wParam, lParam);
}
