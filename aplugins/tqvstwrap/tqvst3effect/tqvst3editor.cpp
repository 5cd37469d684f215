// VST3 effect: the plug-in's editor view inside the host's window. The host alone decides the
// view's size; a view's own wish to be resized is refused by the handler's frame.
#include "tqvst3effect.h"
#include "vst3componenthandler.h"

#include <utility>

using namespace vst3;
using tqvst::CallPlugin;

namespace {

// Some views mix up the corners; hosts always get an ordered rectangle.
void HandOut(const ViewRect& size, UINT32* rect)
{
    int32 left = size.left, top = size.top, right = size.right, bottom = size.bottom;
    if (right < left) std::swap(left, right);
    if (bottom < top) std::swap(top, bottom);
    rect[0] = static_cast<UINT32>(left);
    rect[1] = static_cast<UINT32>(top);
    rect[2] = static_cast<UINT32>(right);
    rect[3] = static_cast<UINT32>(bottom);
}

// The view's size, or false when it gives none or faults.
bool ViewSize(IPlugView* view, ViewRect& size)
{
    size = {};
    tresult result = kResultFalse;
    return CallPlugin([&] { result = view->getSize(&size); }) && result == kResultOk;
}

} // namespace

HRESULT STDMETHODCALLTYPE CTqVst3Effect::OpenEditor(HWND parent, UINT32* rect)
{
    ViewRect size;
    if (m_flags & kFlagEditorOpen)
    {
        if (!rect) return S_FALSE;
        if (!ViewSize(m_view.Get(), size)) return E_FAIL;
        HandOut(size, rect);
        return S_FALSE;
    }
    if (!m_controller) return E_FAIL;
    IEditController* controller = m_controller.Get();
    IPlugView* made = nullptr;
    CallPlugin([&] { made = controller->createView("editor"); });
    m_view.Reset(made);
    if (!m_view) return E_FAIL;
    m_flags |= kFlagEditorOpen;
    IPlugView* view = m_view.Get();

    if (!ViewSize(view, size))
    {
        m_view.Reset();
        m_flags &= ~kFlagEditorOpen;
        return E_FAIL;
    }
    if (rect) HandOut(size, rect);
    if (m_handler)
    {
        IPlugFrame* frame = m_handler;
        CallPlugin([&] { view->setFrame(frame); });
    }
    tresult supported = kResultFalse;
    if (!CallPlugin([&] { supported = view->isPlatformTypeSupported(kPlatformTypeHWND); }) ||
        supported != kResultOk)
    {
        CloseEditor();
        return E_FAIL;
    }
    // A view that fails to attach still is the view the host asked for; it is closed as usual.
    CallPlugin([&] { view->attached(parent, kPlatformTypeHWND); });
    m_parentWindow = parent;
    return S_OK;
}

// VST3 views draw by themselves; the idle tick only brings the controller up to date.
HRESULT STDMETHODCALLTYPE CTqVst3Effect::EditorIdle()
{
    FlushToController();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVst3Effect::CloseEditor()
{
    if (!(m_flags & kFlagEditorOpen)) return S_FALSE;
    if (IPlugView* view = m_view.Get())
    {
        CallPlugin([&] { view->setFrame(nullptr); });
        CallPlugin([&] { view->removed(); });
    }
    m_view.Reset();
    m_flags &= ~kFlagEditorOpen;
    return S_OK;
}

// The host's window is sized first, to exactly what was asked, and the view second, to what its
// constraint check made of the request: a view that only takes certain sizes stays inside a
// window of the size the host chose.
HRESULT STDMETHODCALLTYPE CTqVst3Effect::ResizeEditor(INT32 width, INT32 height)
{
    IPlugView* view = m_view.Get();
    if (!view) return E_FAIL;
    tresult result = kResultFalse;
    if (!CallPlugin([&] { result = view->canResize(); }) || result != kResultOk) return S_FALSE;
    if (width < 0 || height < 0) return E_INVALIDARG;
    ViewRect size;
    if (!ViewSize(view, size)) return E_FAIL;
    size.right = size.left + width;
    size.bottom = size.top + height;
    if (!CallPlugin([&] { result = view->checkSizeConstraint(&size); }) || result != kResultOk)
        return E_INVALIDARG;

    WINDOWPLACEMENT placement = {};
    placement.length = sizeof(placement);
    if (GetWindowPlacement(m_parentWindow, &placement))
    {
        RECT& normal = placement.rcNormalPosition;
        normal.right = normal.left + width;
        normal.bottom = normal.top + height;
        // Some systems place only windows of the calling process this way; another process's
        // window is then sized directly, without waiting on its thread (which may be the one
        // waiting for this call).
        if (!SetWindowPlacement(m_parentWindow, &placement))
            SetWindowPos(m_parentWindow, nullptr, 0, 0, width, height,
                         SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE | SWP_ASYNCWINDOWPOS);
    }
    if (!CallPlugin([&] { result = view->onSize(&size); }) || result != kResultOk) return E_FAIL;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVst3Effect::CanResizeEditor(UINT32* yes)
{
    IPlugView* view = m_view.Get();
    if (!view) return E_FAIL;
    tresult result = kResultFalse;
    const bool answered = CallPlugin([&] { result = view->canResize(); });
    if (yes) *yes = answered && result == kResultOk ? 1 : 0;
    return S_OK;
}
