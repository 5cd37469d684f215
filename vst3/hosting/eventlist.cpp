// The events of one block.
#include "eventlist.h"

#include <new>

namespace vst3 {

EventList::EventList(int32 maxSize)
{
    setMaxSize(maxSize);
}

void EventList::setMaxSize(int32 maxSize)
{
    m_count = 0;
    m_capacity = 0;
    m_events.reset();
    if (maxSize <= 0) return;
    m_events.reset(new (std::nothrow) Event[maxSize]);
    if (m_events) m_capacity = maxSize;
}

tresult PLUGIN_API EventList::getEvent(int32 index, Event& e)
{
    if (index < 0 || index >= m_count) return kInvalidArgument;
    e = m_events[index];
    return kResultOk;
}

tresult PLUGIN_API EventList::addEvent(Event& e)
{
    if (m_count >= m_capacity) return kResultFalse;
    m_events[m_count++] = e;
    return kResultOk;
}

} // namespace vst3
