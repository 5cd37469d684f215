// What the editor tests share: a visible top-level window standing in for the host's editor
// frame, the message loop a host keeps running while an editor is up, and a fixture that holds
// one such window for a whole suite and loads an effect into it at any location.
#pragma once

#include "comptr.h"
#include "vstclient.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <memory>
#include <string>

namespace tqtest {

constexpr int kHostWindowWidth = 320, kHostWindowHeight = 240;

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
        m_window =
            CreateWindowExW(0, windowClass.lpszClassName, L"tqvst editor host",
                            WS_OVERLAPPEDWINDOW | WS_VISIBLE, 20, 20, kHostWindowWidth,
                            kHostWindowHeight, nullptr, nullptr, windowClass.hInstance, nullptr);
    }
    ~HostWindow()
    {
        if (m_window) DestroyWindow(m_window);
    }
    HostWindow(const HostWindow&) = delete;
    HostWindow& operator=(const HostWindow&) = delete;

    HWND Get() const { return m_window; }
    // A plug-in's window among ours, by its text, whichever process made it.
    HWND Child(const wchar_t* text) const
    {
        return FindWindowExW(m_window, nullptr, L"Static", text);
    }
    // The window's size as its normal placement gives it.
    std::array<LONG, 2> Size() const
    {
        WINDOWPLACEMENT placement = {};
        placement.length = sizeof(placement);
        GetWindowPlacement(m_window, &placement);
        const RECT& r = placement.rcNormalPosition;
        return {r.right - r.left, r.bottom - r.top};
    }
    void Restore() const
    {
        SetWindowPos(m_window, nullptr, 20, 20, kHostWindowWidth, kHostWindowHeight,
                     SWP_NOZORDER | SWP_NOACTIVATE);
    }

private:
    HWND m_window = nullptr;
};

// Lets both windows paint as they would in a host.
inline void PumpMessages(DWORD ms)
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

class EditorFixture : public testing::Test
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
        s_window->Restore();
    }
    void TearDown() override
    {
        Unload();
        CoUninitialize();
    }

    void Load(int location, const std::wstring& plugin, DWORD* pid = nullptr)
    {
        m_location = location;
        ASSERT_EQ(GetVstFactory(location, IID_ITqVstEffectFactory, m_factory.PutVoid(), L"tqvst",
                                L"tests", pid, nullptr),
                  S_OK);
        ASSERT_EQ(CreateAnother(plugin, effect), S_OK);
    }
    // An effect from the same factory, so from the same server.
    HRESULT CreateAnother(const std::wstring& plugin, tq::ComPtr<ITqVstEffect>& other)
    {
        return m_factory->CreateEffect(plugin.c_str(), 0, IID_ITqVstEffect, other.PutVoid());
    }
    // Lets go of the effect and the factory; a server ends then.
    void Unload()
    {
        effect.Reset();
        if (m_factory) ReleaseVstFactory(m_location, m_factory.Detach());
    }

    static HWND Window() { return s_window->Get(); }
    static HWND Child(const wchar_t* text) { return s_window->Child(text); }
    static std::array<LONG, 2> WindowSize() { return s_window->Size(); }

    tq::ComPtr<ITqVstEffect> effect;

private:
    inline static std::unique_ptr<HostWindow> s_window;
    int m_location = kTqVstInProcess;
    tq::ComPtr<ITqVstEffectFactory> m_factory;
};

} // namespace tqtest
