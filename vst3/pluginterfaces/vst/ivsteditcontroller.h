// The edit controller, its parameters, the host's component handler and MIDI mapping.
#pragma once

#include "pluginterfaces/base/ibstream.h"
#include "pluginterfaces/base/ipluginbase.h"
#include "vsttypes.h"

namespace vst3 {

class IPlugView;

namespace ViewType {
constexpr CString kEditor = "editor";
}

VST3_PACK_PUSH

struct ParameterInfo
{
    enum ParameterFlags : int32
    {
        kNoFlags = 0,
        kCanAutomate = 1 << 0,
        kIsReadOnly = 1 << 1,
        kIsWrapAround = 1 << 2,
        kIsList = 1 << 3,
        kIsHidden = 1 << 4,
        kIsProgramChange = 1 << 15,
        kIsBypass = 1 << 16,
    };

    ParamID id;
    String128 title;
    String128 shortTitle;
    String128 units;
    int32 stepCount;
    ParamValue defaultNormalizedValue;
    UnitID unitId;
    int32 flags;
};

VST3_PACK_POP

enum RestartFlags : int32
{
    kReloadComponent = 1 << 0,
    kIoChanged = 1 << 1,
    kParamValuesChanged = 1 << 2,
    kLatencyChanged = 1 << 3,
    kParamTitlesChanged = 1 << 4,
    kMidiCCAssignmentChanged = 1 << 5,
    kNoteExpressionChanged = 1 << 6,
    kIoTitlesChanged = 1 << 7,
    kPrefetchableSupportChanged = 1 << 8,
    kRoutingInfoChanged = 1 << 9,
    kKeyswitchChanged = 1 << 10,
};

class IComponentHandler : public FUnknown
{
public:
    virtual tresult PLUGIN_API beginEdit(ParamID id) = 0;
    virtual tresult PLUGIN_API performEdit(ParamID id, ParamValue valueNormalized) = 0;
    virtual tresult PLUGIN_API endEdit(ParamID id) = 0;
    virtual tresult PLUGIN_API restartComponent(int32 flags) = 0;

    static constexpr FUID iid{0x93A0BEA3, 0x0BD045DB, 0x8E890B0C, 0xC1E46AC6};
};

class IComponentHandler2 : public FUnknown
{
public:
    virtual tresult PLUGIN_API setDirty(TBool state) = 0;
    virtual tresult PLUGIN_API requestOpenEditor(FIDString name) = 0;
    virtual tresult PLUGIN_API startGroupEdit() = 0;
    virtual tresult PLUGIN_API finishGroupEdit() = 0;

    static constexpr FUID iid{0xF040B4B3, 0xA36045EC, 0xABCDC045, 0xB4D5A2CC};
};

class IEditController : public IPluginBase
{
public:
    virtual tresult PLUGIN_API setComponentState(IBStream* state) = 0;
    virtual tresult PLUGIN_API setState(IBStream* state) = 0;
    virtual tresult PLUGIN_API getState(IBStream* state) = 0;
    virtual int32 PLUGIN_API getParameterCount() = 0;
    virtual tresult PLUGIN_API getParameterInfo(int32 paramIndex, ParameterInfo& info) = 0;
    virtual tresult PLUGIN_API getParamStringByValue(ParamID id, ParamValue valueNormalized,
                                                     String128 string) = 0;
    virtual tresult PLUGIN_API getParamValueByString(ParamID id, TChar* string,
                                                     ParamValue& valueNormalized) = 0;
    virtual ParamValue PLUGIN_API normalizedParamToPlain(ParamID id,
                                                         ParamValue valueNormalized) = 0;
    virtual ParamValue PLUGIN_API plainParamToNormalized(ParamID id, ParamValue plainValue) = 0;
    virtual ParamValue PLUGIN_API getParamNormalized(ParamID id) = 0;
    virtual tresult PLUGIN_API setParamNormalized(ParamID id, ParamValue value) = 0;
    virtual tresult PLUGIN_API setComponentHandler(IComponentHandler* handler) = 0;
    virtual IPlugView* PLUGIN_API createView(FIDString name) = 0;

    static constexpr FUID iid{0xDCD7BBE3, 0x7742448D, 0xA874AACC, 0x979C759E};
};

class IMidiMapping : public FUnknown
{
public:
    virtual tresult PLUGIN_API getMidiControllerAssignment(int32 busIndex, int16 channel,
                                                           CtrlNumber midiControllerNumber,
                                                           ParamID& id) = 0;

    static constexpr FUID iid{0xDF0FF9F7, 0x49B74669, 0xB63AB732, 0x7ADBF5E5};
};

} // namespace vst3
