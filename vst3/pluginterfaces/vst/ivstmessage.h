// Messages and the connection points through which component and controller exchange them.
#pragma once

#include "ivstattributes.h"

namespace vst3 {

class IMessage : public FUnknown
{
public:
    virtual FIDString PLUGIN_API getMessageID() = 0;
    virtual void PLUGIN_API setMessageID(FIDString id) = 0;
    // The list belongs to the message: callers take no reference.
    virtual IAttributeList* PLUGIN_API getAttributes() = 0;

    static constexpr FUID iid{0x936F033B, 0xC6C047DB, 0xBB0882F8, 0x13C1E613};
};

class IConnectionPoint : public FUnknown
{
public:
    virtual tresult PLUGIN_API connect(IConnectionPoint* other) = 0;
    virtual tresult PLUGIN_API disconnect(IConnectionPoint* other) = 0;
    virtual tresult PLUGIN_API notify(IMessage* message) = 0;

    static constexpr FUID iid{0x70A4156F, 0x6E6E4026, 0x989148BF, 0xAA60D8D1};
};

} // namespace vst3
