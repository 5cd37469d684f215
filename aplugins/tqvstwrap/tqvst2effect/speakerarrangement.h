// The speaker arrangement record plug-ins are told the host's channel layout with, and its builder.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace vst2 {

struct VstSpeakerProperties
{
    float azimuth; // radians
    float elevation;
    float radius;
    float reserved;
    char name[64];
    int32_t type;
    char future[28];
};
static_assert(sizeof(VstSpeakerProperties) == 112);

// The record is declared with eight speakers; larger layouts extend the array past its end.
struct VstSpeakerArrangement
{
    int32_t type;
    int32_t numChannels;
    VstSpeakerProperties speakers[8];
};
static_assert(offsetof(VstSpeakerArrangement, speakers) == 8);

struct GlobalBlockDeleter
{
    void operator()(VstSpeakerArrangement* arrangement) const noexcept;
};
using SpeakerArrangementPtr = std::unique_ptr<VstSpeakerArrangement, GlobalBlockDeleter>;

// The arrangement for a host of the given channel count (0 or more): mono, stereo and 5.1 have
// their layouts, any other count unnamed speakers of an undefined type. Null when out of memory.
SpeakerArrangementPtr MakeSpeakerArrangement(int32_t channels);

} // namespace vst2
