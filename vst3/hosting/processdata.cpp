// The host's ProcessData with bus buffers.
#include "processdata.h"

#include <cstdint>
#include <cstring>
#include <new>

namespace vst3 {

namespace {

int32 busChannels(IComponent& component, BusDirection dir, int32 index)
{
    BusInfo info{};
    if (component.getBusInfo(kAudio, dir, index, info) != kResultOk) return 0;
    if (info.channelCount < 0) return 0;
    return info.channelCount > HostProcessData::kMaxChannelsPerBus
               ? HostProcessData::kMaxChannelsPerBus
               : info.channelCount;
}

int32 busCount(IComponent& component, BusDirection dir)
{
    const int32 count = component.getBusCount(kAudio, dir);
    return count < 0 ? 0 : count;
}

} // namespace

HostProcessData::HostProcessData() : ProcessData{}
{
    processMode = kRealtime;
    symbolicSampleSize = kSample32;
}

HostProcessData::~HostProcessData() = default;

void HostProcessData::unprepare()
{
    m_in = {};
    m_out = {};
    m_channelPointers.reset();
    m_samples.reset();
    m_bufferSamples = -1;
    numInputs = numOutputs = 0;
    inputs = outputs = nullptr;
}

bool HostProcessData::sameLayout(IComponent& component, BusDirection dir,
                                 const Direction& current) const
{
    if (busCount(component, dir) != current.busCount) return false;
    for (int32 i = 0; i < current.busCount; ++i)
        if (busChannels(component, dir, i) != current.channels[i]) return false;
    return true;
}

bool HostProcessData::build(IComponent& component, BusDirection dir, Direction& direction,
                            int32& channelTotal)
{
    direction = {};
    const int32 count = busCount(component, dir);
    if (count > kMaxBuses) return false;
    if (count == 0) return true;
    direction.buses.reset(new (std::nothrow) AudioBusBuffers[count]);
    direction.channels.reset(new (std::nothrow) int32[count]);
    if (!direction.buses || !direction.channels) return false;
    direction.busCount = count;
    for (int32 i = 0; i < count; ++i)
    {
        direction.channels[i] = busChannels(component, dir, i);
        direction.buses[i] = {};
        direction.buses[i].numChannels = direction.channels[i];
        channelTotal += direction.channels[i];
    }
    return true;
}

bool HostProcessData::prepare(IComponent& component, int32 bufferSamples, int32 symbolicSampleSize)
{
    if (bufferSamples < 0) return false;
    if (symbolicSampleSize != kSample32 && symbolicSampleSize != kSample64) return false;
    if (bufferSamples == m_bufferSamples && symbolicSampleSize == this->symbolicSampleSize &&
        sameLayout(component, kInput, m_in) && sameLayout(component, kOutput, m_out))
    {
        clearSilence();
        return true;
    }

    unprepare();
    int32 channelTotal = 0;
    if (!build(component, kInput, m_in, channelTotal) ||
        !build(component, kOutput, m_out, channelTotal))
    {
        unprepare();
        return false;
    }

    const size_t sampleBytes =
        symbolicSampleSize == kSample64 ? sizeof(Sample64) : sizeof(Sample32);
    const size_t channelBytes = sampleBytes * static_cast<size_t>(bufferSamples);
    if (channelTotal > 0 && !allocate(static_cast<size_t>(channelTotal), channelBytes))
    {
        unprepare();
        return false;
    }

    int32 next = 0;
    for (Direction* direction : {&m_in, &m_out})
    {
        for (int32 i = 0; i < direction->busCount; ++i)
        {
            AudioBusBuffers& bus = direction->buses[i];
            bus.channelBuffers32 = reinterpret_cast<Sample32**>(m_channelPointers.get() + next);
            for (int32 c = 0; c < bus.numChannels; ++c, ++next)
                m_channelPointers[next] =
                    channelBytes > 0 ? m_samples.get() + channelBytes * next : nullptr;
        }
    }

    m_bufferSamples = bufferSamples;
    this->symbolicSampleSize = symbolicSampleSize;
    numInputs = m_in.busCount;
    numOutputs = m_out.busCount;
    inputs = m_in.buses.get();
    outputs = m_out.buses.get();
    return true;
}

bool HostProcessData::allocate(size_t channelTotal, size_t channelBytes)
{
    m_channelPointers.reset(new (std::nothrow) void*[channelTotal]);
    if (!m_channelPointers) return false;
    if (channelBytes == 0) return true;
    if (channelBytes > SIZE_MAX / channelTotal) return false;
    m_samples.reset(new (std::nothrow) char[channelBytes * channelTotal]);
    if (!m_samples) return false;
    std::memset(m_samples.get(), 0, channelBytes * channelTotal);
    return true;
}

void HostProcessData::clearSilence()
{
    for (int32 i = 0; i < m_in.busCount; ++i)
        m_in.buses[i].silenceFlags = 0;
    for (int32 i = 0; i < m_out.busCount; ++i)
        m_out.buses[i].silenceFlags = 0;
}

} // namespace vst3
