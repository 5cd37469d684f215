// The host side an editor talks back to: resizes the host window when the plug-in asks.
#pragma once

#include "tqvst.h"

#include <windows.h>

namespace tqhost {

// Created with a reference count of 1; lives until the last holder, host or server, lets go.
class EditorMaster final : public ITqVstMaster
{
public:
    explicit EditorMaster(HWND window) : m_window(window) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    HRESULT STDMETHODCALLTYPE Automate(UINT32 index, float value) override;
    HRESULT STDMETHODCALLTYPE Idle() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE UpdateDisplay() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE GetTime(TqVstMasterTime*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTempoAt(UINT32, INT32*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SizeWindow(UINT32 width, UINT32 height) override;
    HRESULT STDMETHODCALLTYPE BeginEdit(UINT32) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE EndEdit(UINT32) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE LoadPresetFile(const WCHAR*) override { return E_NOTIMPL; }

    // Sizes the window so its client area is width by height.
    static void FitClientArea(HWND window, UINT32 width, UINT32 height);

private:
    ~EditorMaster() = default;
    LONG m_refCount = 1;
    HWND m_window;
};

} // namespace tqhost
