// The part our VST3 editor test plug-ins share: a single-object stereo pass-through whose
// controller makes a view, and the view, which puts a child window into the host's window and
// writes down every call a host makes on it. A plug-in picks the view's size, whether it can
// resize and the smallest width it accepts, and exports only its factory; a host in the same
// process reads the record back.
#pragma once

#include "childview_record.h"
#include "editcontroller.h"
#include "pluginterfaces/gui/iplugview.h"
#include "stereoeffect.h"

#include <windows.h>

#include <cstdlib>
#include <cstring>
#include <new>

namespace childview {

using namespace vst3;

struct ViewShape
{
    ViewRect size;      // what getSize reports, as it is, ordered or not
    bool resizable;     // what canResize answers
    int32 minimumWidth; // checkSizeConstraint widens a narrower rectangle to this
};

inline Record g_record = {0, 0, 0, 0, 0, 0, 0, 0, -1, 0, {}, 0};

class View final : public vst3plugin::Object<IPlugView>
{
public:
    explicit View(const ViewShape& shape) : m_shape(shape)
    {
        ++g_record.views;
        ++g_record.viewsAlive;
    }

    tresult PLUGIN_API isPlatformTypeSupported(FIDString type) override
    {
        return type && std::strcmp(type, kPlatformTypeHWND) == 0 ? kResultOk : kResultFalse;
    }
    tresult PLUGIN_API attached(void* parent, FIDString type) override
    {
        if (isPlatformTypeSupported(type) != kResultOk || !parent) return kResultFalse;
        ++g_record.attaches;
        g_record.parent = reinterpret_cast<intptr_t>(parent);
        const ViewRect& r = m_shape.size;
        // The host's window may belong to another process: no parent notification to wait on it.
        m_child = CreateWindowExW(WS_EX_NOPARENTNOTIFY, L"STATIC", kChildText,
                                  WS_CHILD | WS_VISIBLE | WS_BORDER | SS_CENTER, 0, 0,
                                  std::abs(r.right - r.left), std::abs(r.bottom - r.top),
                                  static_cast<HWND>(parent), nullptr, nullptr, nullptr);
        g_record.child = reinterpret_cast<intptr_t>(m_child);
        // Views ask their frame for a size of their own liking; a host may refuse.
        if (m_frame)
        {
            ViewRect wish = {0, 0, 640, 480};
            g_record.resizeAnswer = m_frame->resizeView(this, &wish);
        }
        return m_child ? kResultOk : kResultFalse;
    }
    tresult PLUGIN_API removed() override
    {
        ++g_record.removes;
        if (m_child) DestroyWindow(m_child);
        m_child = nullptr;
        g_record.child = 0;
        return kResultOk;
    }
    tresult PLUGIN_API onWheel(float) override { return kResultFalse; }
    tresult PLUGIN_API onKeyDown(char16, int16, int16) override { return kResultFalse; }
    tresult PLUGIN_API onKeyUp(char16, int16, int16) override { return kResultFalse; }
    tresult PLUGIN_API getSize(ViewRect* size) override
    {
        if (!size) return kInvalidArgument;
        *size = m_shape.size;
        return kResultOk;
    }
    tresult PLUGIN_API onSize(ViewRect* newSize) override
    {
        if (!newSize) return kInvalidArgument;
        ++g_record.onSizes;
        g_record.lastOnSize = *newSize;
        m_shape.size = *newSize;
        if (m_child) MoveWindow(m_child, 0, 0, newSize->getWidth(), newSize->getHeight(), TRUE);
        return kResultOk;
    }
    tresult PLUGIN_API onFocus(TBool) override { return kResultOk; }
    tresult PLUGIN_API setFrame(IPlugFrame* frame) override
    {
        ++(frame ? g_record.framesSet : g_record.framesCleared);
        m_frame = frame;
        return kResultOk;
    }
    tresult PLUGIN_API canResize() override { return m_shape.resizable ? kResultOk : kResultFalse; }
    tresult PLUGIN_API checkSizeConstraint(ViewRect* rect) override
    {
        if (!rect) return kInvalidArgument;
        ++g_record.constraintCalls;
        if (rect->getWidth() < m_shape.minimumWidth)
            rect->right = rect->left + m_shape.minimumWidth;
        return kResultOk;
    }

private:
    ~View() override
    {
        if (m_child) DestroyWindow(m_child);
        --g_record.viewsAlive;
    }

    ViewShape m_shape;
    IPlugFrame* m_frame = nullptr; // not counted: the host clears it before the view goes
    HWND m_child = nullptr;
};

// Passes audio through unchanged and has no parameters: all it offers a host is its view, of the
// shape Shape.
template <const ViewShape& Shape>
class Effect final : public vst3plugin::StereoEffect<vst3plugin::EditController>
{
public:
    Effect() : vst3plugin::StereoEffect<vst3plugin::EditController>(u"Stereo", u"Stereo") {}

    tresult PLUGIN_API initialize(FUnknown*) override { return kResultOk; }
    tresult PLUGIN_API terminate() override { return kResultOk; }

    tresult PLUGIN_API getControllerClassId(TUID) override { return kNotImplemented; }
    tresult PLUGIN_API setState(IBStream*) override { return kResultOk; }
    tresult PLUGIN_API getState(IBStream*) override { return kResultOk; }
    tresult PLUGIN_API process(ProcessData& data) override
    {
        this->scale(data, 1.0f);
        return kResultOk;
    }

    IPlugView* PLUGIN_API createView(FIDString name) override
    {
        if (!name || std::strcmp(name, "editor") != 0) return nullptr;
        return new (std::nothrow) View(Shape);
    }

private:
    ~Effect() override = default;
};

} // namespace childview

extern "C" __declspec(dllexport) void __cdecl TqChildViewRecord(childview::Record* record)
{
    *record = childview::g_record;
}
