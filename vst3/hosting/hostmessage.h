// The host's message: an id and an attribute list, for component and controller to exchange.
#pragma once

#include "hostattributelist.h"
#include "objectbase.h"
#include "pluginterfaces/vst/ivstmessage.h"

#include <string>

namespace vst3 {

class HostMessage final : public IMessage
{
public:
    HostMessage() = default;
    ~HostMessage();
    HostMessage(const HostMessage&) = delete;
    HostMessage& operator=(const HostMessage&) = delete;

    VST3_OBJECT_METHODS(IMessage)

    // Null until an id is set.
    FIDString PLUGIN_API getMessageID() override;
    void PLUGIN_API setMessageID(FIDString id) override;
    // Made on first use; null only when memory ran out.
    IAttributeList* PLUGIN_API getAttributes() override;

private:
    std::string m_id;
    bool m_hasId = false;
    HostAttributeList* m_attributes = nullptr;
};

} // namespace vst3
