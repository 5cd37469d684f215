// The host's ProcessData with buffers for every audio bus of a component.
#pragma once

#include "pluginterfaces/vst/ivstaudioprocessor.h"

#include <cstddef>
#include <memory>

namespace vst3 {

class HostProcessData : public ProcessData
{
public:
    // More would not fit the 64 silence flags of a bus.
    static constexpr int32 kMaxChannelsPerBus = 64;
    static constexpr int32 kMaxBuses = 1024;

    HostProcessData();
    ~HostProcessData();
    HostProcessData(const HostProcessData&) = delete;
    HostProcessData& operator=(const HostProcessData&) = delete;

    // Gives every audio bus of the component buffers of bufferSamples frames. When buses,
    // channels, size and sample size are those of the last call nothing is allocated: only the
    // silence flags are cleared, so it may run before every block. A size of 0 hands out
    // channel pointers that are all null, for a call that only carries parameters.
    bool prepare(IComponent& component, int32 bufferSamples, int32 symbolicSampleSize);
    void unprepare();

private:
    struct Direction
    {
        int32 busCount = 0;
        std::unique_ptr<AudioBusBuffers[]> buses;
        std::unique_ptr<int32[]> channels;
    };

    bool sameLayout(IComponent& component, BusDirection dir, const Direction& current) const;
    bool build(IComponent& component, BusDirection dir, Direction& direction, int32& channelTotal);
    bool allocate(size_t channelTotal, size_t channelBytes);
    void clearSilence();

    Direction m_in;
    Direction m_out;
    std::unique_ptr<void*[]> m_channelPointers;
    std::unique_ptr<char[]> m_samples;
    int32 m_bufferSamples = -1;
};

} // namespace vst3
