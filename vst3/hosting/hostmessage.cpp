// The host's message.
#include "hostmessage.h"

#include <new>

namespace vst3 {

HostMessage::~HostMessage()
{
    if (m_attributes) m_attributes->release();
}

FIDString PLUGIN_API HostMessage::getMessageID()
{
    return m_hasId ? m_id.c_str() : nullptr;
}

void PLUGIN_API HostMessage::setMessageID(FIDString id)
{
    // A plug-in gets no result from this call: without memory the message keeps no id.
    try
    {
        m_hasId = id != nullptr;
        m_id = id ? id : "";
    }
    catch (const std::bad_alloc&)
    {
        m_hasId = false;
    }
}

IAttributeList* PLUGIN_API HostMessage::getAttributes()
{
    if (!m_attributes) m_attributes = new (std::nothrow) HostAttributeList();
    return m_attributes;
}

} // namespace vst3
