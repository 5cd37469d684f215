// What the state probe plug-in remembers of the host's switching calls, and how tests read it.
#pragma once

#include <cstdint>

namespace state_probe {

constexpr int kMaxEvents = 32;
constexpr int kMaxSpeakers = 12;

// One switching call: the opcode and its value.
struct Event
{
    int32_t opcode;
    intptr_t value;
};

struct Speaker
{
    float azimuth, elevation, radius;
    char name[64];
    int32_t type;
};

struct Record
{
    int eventCount;
    Event events[kMaxEvents];
    // The last speaker arrangement, as it arrived in ptr; sameInBoth when value held the same.
    int32_t arrangementType;
    int32_t numChannels;
    int32_t sameInBoth;
    Speaker speakers[kMaxSpeakers];
};

// Exported as "TqStateProbeRead": copies the record and forgets the events.
using ReadRecord = void(__cdecl*)(Record* record);

} // namespace state_probe
