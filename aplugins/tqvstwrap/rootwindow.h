// The visible sign of life of a server that was started by hand.
#pragma once

#include "window.h"

class RootWindow : public Window
{
public:
    // Registers the class, creates and returns the window object, or null on failure.
    static RootWindow* Create(HINSTANCE instance);

    void DescribeClass(WNDCLASSW& wc) override;
    LRESULT HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    RootWindow() = default;
    HWND m_listBox = nullptr;
};
