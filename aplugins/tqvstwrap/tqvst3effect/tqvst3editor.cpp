// VST3 effect: the plug-in's editor view inside the host's window. Not served yet.
#include "tqvst3effect.h"

HRESULT STDMETHODCALLTYPE CTqVst3Effect::OpenEditor(HWND, UINT32*)
{
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE CTqVst3Effect::EditorIdle()
{
    FlushToController();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVst3Effect::CloseEditor()
{
    return S_FALSE;
}

HRESULT STDMETHODCALLTYPE CTqVst3Effect::ResizeEditor(INT32, INT32)
{
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE CTqVst3Effect::CanResizeEditor(UINT32*)
{
    return E_NOTIMPL;
}
