// VST2 effect: the plug-in's editor in a host window, and the idle ticks with re-entrance guards.
#include "tqvst2effect.h"

#include <utility>

HRESULT STDMETHODCALLTYPE CTqVstEffect::OpenEditor(HWND parent, UINT32* rect)
{
    HRESULT hr = S_FALSE;
    if (!(m_state & kStateEditorOpen))
    {
        Dispatch(vst2::effEditOpen, 0, 0, parent, 0.0f);
        // Set only after effEditOpen returns: size requests made while opening are dropped.
        m_state |= kStateEditorOpen;
        Dispatch(vst2::effSetEditKnobMode, 0, 2, nullptr, 0.0f);
        hr = S_OK;
    }
    if (!rect) return hr;
    vst2::ERect* area = nullptr;
    Dispatch(vst2::effEditGetRect, 0, 0, &area, 0.0f);
    if (!area) return hr;
    int32_t left = area->left, top = area->top, right = area->right, bottom = area->bottom;
    // Some plug-ins mix up the corners; hosts always get an ordered rectangle.
    if (right < left) std::swap(left, right);
    if (bottom < top) std::swap(top, bottom);
    rect[0] = static_cast<UINT32>(left);
    rect[1] = static_cast<UINT32>(top);
    rect[2] = static_cast<UINT32>(right);
    rect[3] = static_cast<UINT32>(bottom);
    return hr;
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::EditorIdle()
{
    if ((m_state & kStateEditorOpen) && !m_inEditorIdle)
    {
        InterlockedExchange(&m_inEditorIdle, 1);
        Dispatch(vst2::effEditIdle, 0, 0, nullptr, 0.0f);
        InterlockedExchange(&m_inEditorIdle, 0);
    }
    if ((m_state & kStateNeedsIdle) && !m_inIdle)
    {
        InterlockedExchange(&m_inIdle, 1);
        Dispatch(vst2::effIdle, 0, 0, nullptr, 0.0f);
        InterlockedExchange(&m_inIdle, 0);
    }
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::Idle()
{
    // A plug-in that asks for host idle from inside effIdle gets no nested effIdle.
    if (m_inIdle) return S_OK;
    InterlockedExchange(&m_inIdle, 1);
    Dispatch(vst2::effIdle, 0, 0, nullptr, 0.0f);
    InterlockedExchange(&m_inIdle, 0);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::CloseEditor()
{
    if (!(m_state & kStateEditorOpen)) return S_FALSE;
    Dispatch(vst2::effEditClose, 0, 0, nullptr, 0.0f);
    m_state &= ~kStateEditorOpen;
    return S_OK;
}

// The host does not drive the size of a VST2 editor; the plug-in asks for sizes itself.
HRESULT STDMETHODCALLTYPE CTqVstEffect::ResizeEditor(INT32, INT32)
{
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::CanResizeEditor(UINT32* yes)
{
    if (yes) *yes = 0;
    return S_OK;
}
