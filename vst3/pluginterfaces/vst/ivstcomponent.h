// The processing component: buses, activation and state.
#pragma once

#include "pluginterfaces/base/ibstream.h"
#include "pluginterfaces/base/ipluginbase.h"
#include "vsttypes.h"

namespace vst3 {

constexpr const char8* kVstAudioEffectClass = "Audio Module Class";
constexpr const char8* kVstComponentControllerClass = "Component Controller Class";

enum MediaTypes : MediaType
{
    kAudio = 0,
    kEvent,
    kNumMediaTypes,
};

enum BusDirections : BusDirection
{
    kInput = 0,
    kOutput,
};

enum BusTypes : BusType
{
    kMain = 0,
    kAux,
};

enum IoModes : IoMode
{
    kSimple = 0,
    kAdvanced,
    kOfflineProcessing,
};

VST3_PACK_PUSH

struct BusInfo
{
    enum BusFlags : uint32
    {
        kDefaultActive = 1 << 0,
        kIsControlVoltage = 1 << 1,
    };

    MediaType mediaType;
    BusDirection direction;
    int32 channelCount;
    String128 name;
    BusType busType;
    uint32 flags;
};

struct RoutingInfo
{
    MediaType mediaType;
    int32 busIndex;
    int32 channel;
};

VST3_PACK_POP

class IComponent : public IPluginBase
{
public:
    virtual tresult PLUGIN_API getControllerClassId(TUID classId) = 0;
    virtual tresult PLUGIN_API setIoMode(IoMode mode) = 0;
    virtual int32 PLUGIN_API getBusCount(MediaType type, BusDirection dir) = 0;
    virtual tresult PLUGIN_API getBusInfo(MediaType type, BusDirection dir, int32 index,
                                          BusInfo& bus) = 0;
    virtual tresult PLUGIN_API getRoutingInfo(RoutingInfo& inInfo, RoutingInfo& outInfo) = 0;
    virtual tresult PLUGIN_API activateBus(MediaType type, BusDirection dir, int32 index,
                                           TBool state) = 0;
    virtual tresult PLUGIN_API setActive(TBool state) = 0;
    virtual tresult PLUGIN_API setState(IBStream* state) = 0;
    virtual tresult PLUGIN_API getState(IBStream* state) = 0;

    static constexpr FUID iid{0xE831FF31, 0xF2D54301, 0x928EBBEE, 0x25697802};
};

} // namespace vst3
