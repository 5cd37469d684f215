// The events of one block, in a list whose memory is taken at setup.
#pragma once

#include "objectbase.h"
#include "pluginterfaces/vst/ivstevents.h"

#include <memory>

namespace vst3 {

class EventList final : public IEventList
{
public:
    explicit EventList(int32 maxSize = 50);
    EventList(const EventList&) = delete;
    EventList& operator=(const EventList&) = delete;

    VST3_OBJECT_METHODS(IEventList)

    int32 PLUGIN_API getEventCount() override { return m_count; }
    tresult PLUGIN_API getEvent(int32 index, Event& e) override;
    // A full list refuses the event with kResultFalse.
    tresult PLUGIN_API addEvent(Event& e) override;

    // Allocates and empties the list: call it at setup, never while processing.
    void setMaxSize(int32 maxSize);
    int32 getMaxSize() const { return m_capacity; }
    void clear() { m_count = 0; }

private:
    std::unique_ptr<Event[]> m_events;
    int32 m_count = 0;
    int32 m_capacity = 0;
};

} // namespace vst3
