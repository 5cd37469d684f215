// The plug-in's editor view and the host frame around it.
#pragma once

#include "pluginterfaces/base/funknown.h"

namespace vst3 {

class IPlugFrame;

constexpr FIDString kPlatformTypeHWND = "HWND";

VST3_PACK_PUSH

struct ViewRect
{
    int32 left;
    int32 top;
    int32 right;
    int32 bottom;

    int32 getWidth() const { return right - left; }
    int32 getHeight() const { return bottom - top; }
};

VST3_PACK_POP

class IPlugView : public FUnknown
{
public:
    virtual tresult PLUGIN_API isPlatformTypeSupported(FIDString type) = 0;
    virtual tresult PLUGIN_API attached(void* parent, FIDString type) = 0;
    virtual tresult PLUGIN_API removed() = 0;
    virtual tresult PLUGIN_API onWheel(float distance) = 0;
    virtual tresult PLUGIN_API onKeyDown(char16 key, int16 keyCode, int16 modifiers) = 0;
    virtual tresult PLUGIN_API onKeyUp(char16 key, int16 keyCode, int16 modifiers) = 0;
    virtual tresult PLUGIN_API getSize(ViewRect* size) = 0;
    virtual tresult PLUGIN_API onSize(ViewRect* newSize) = 0;
    virtual tresult PLUGIN_API onFocus(TBool state) = 0;
    virtual tresult PLUGIN_API setFrame(IPlugFrame* frame) = 0;
    virtual tresult PLUGIN_API canResize() = 0;
    virtual tresult PLUGIN_API checkSizeConstraint(ViewRect* rect) = 0;

    static constexpr FUID iid{0x5BC32507, 0xD06049EA, 0xA6151B52, 0x2B755B29};
};

class IPlugFrame : public FUnknown
{
public:
    virtual tresult PLUGIN_API resizeView(IPlugView* view, ViewRect* newSize) = 0;

    static constexpr FUID iid{0x367FAF01, 0xAFA94693, 0x8D4DA2A0, 0xED0882A3};
};

} // namespace vst3
