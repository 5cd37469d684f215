// A minimal window base class bound to its window through the user-data word.
#pragma once

#include <windows.h>

class Window
{
public:
    virtual void DescribeClass(WNDCLASSW& wc) = 0;
    virtual LRESULT HandleMessage(UINT message, WPARAM wParam, LPARAM lParam);
    virtual void Paint(HDC dc, const PAINTSTRUCT& ps);
    virtual ~Window();

    HWND Handle() const { return m_window; }

    // The window procedure of every class made from a Window.
    static LRESULT CALLBACK SharedWindowProc(HWND window, UINT message, WPARAM wParam,
                                             LPARAM lParam);

protected:
    HWND m_window = nullptr;
    // While a creation call runs, tells its caller whether a failed creation deleted the object.
    bool* m_deletedFlag = nullptr;
};
