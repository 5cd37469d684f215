// The editor's host object: window size requests and parameter changes, shown as they arrive.
#include "editormaster.h"

#include <cstdio>

namespace tqhost {

HRESULT EditorMaster::QueryInterface(REFIID riid, void** object)
{
    if (!object) return E_POINTER;
    *object = nullptr;
    if (riid != IID_IUnknown && riid != IID_ITqVstMaster) return E_NOINTERFACE;
    *object = static_cast<ITqVstMaster*>(this);
    AddRef();
    return S_OK;
}

ULONG EditorMaster::AddRef()
{
    return static_cast<ULONG>(InterlockedIncrement(&m_refCount));
}

ULONG EditorMaster::Release()
{
    const LONG count = InterlockedDecrement(&m_refCount);
    if (count == 0) delete this;
    return static_cast<ULONG>(count);
}

HRESULT EditorMaster::Automate(UINT32 index, float value)
{
    wprintf(L"Parameter %u set to %.6f from the editor\n", index, value);
    return S_OK;
}

HRESULT EditorMaster::SizeWindow(UINT32 width, UINT32 height)
{
    wprintf(L"The plug-in asked for %u x %u\n", width, height);
    FitClientArea(m_window, width, height);
    return S_OK;
}

void EditorMaster::FitClientArea(HWND window, UINT32 width, UINT32 height)
{
    RECT frame = {0, 0, static_cast<LONG>(width), static_cast<LONG>(height)};
    AdjustWindowRectEx(&frame, static_cast<DWORD>(GetWindowLongPtrW(window, GWL_STYLE)), FALSE,
                       static_cast<DWORD>(GetWindowLongPtrW(window, GWL_EXSTYLE)));
    SetWindowPos(window, nullptr, 0, 0, frame.right - frame.left, frame.bottom - frame.top,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

} // namespace tqhost
