// Speaker arrangements for the channel counts a host sets: the known layouts are a table.
#include "speakerarrangement.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <iterator>

namespace vst2 {

namespace {

constexpr int32_t kArrangementUserDefined = -1;
constexpr int32_t kSpeakerUndefined = 0x7FFFFFFF;

struct SpeakerRow
{
    const char* name;
    float azimuth;
    float elevation;
    float radius;
    int32_t type;
};

struct LayoutRow
{
    int32_t channels;
    int32_t arrangementType;
    SpeakerRow speakers[6];
};

// The centre speaker of 5.1 carries type 2; plug-ins in the field were tuned against exactly
// these records, so it stays.
constexpr LayoutRow kLayouts[] = {
    {1, 0, {{"M", 1.5707964f, 0.0f, 1.0f, 0}}},
    {2, 1, {{"L", 2.0943954f, 0.0f, 1.0f, 1}, {"R", 1.0471977f, 0.0f, 1.0f, 2}}},
    {6,
     15,
     {{"L", 2.0943954f, 0.0f, 1.1547010f, 1},
      {"R", 1.0471977f, 0.0f, 1.1547010f, 2},
      {"C", 1.5707964f, 0.0f, 1.0f, 2},
      {"Lfe", 10.0f, 10.0f, 0.0f, 4},
      {"Ls", -2.7925272f, 0.0f, 1.0641780f, 5},
      {"Rs", -0.3490659f, 0.0f, 1.0641780f, 6}}},
};

void Fill(VstSpeakerProperties& speaker, const SpeakerRow& row)
{
    speaker.azimuth = row.azimuth;
    speaker.elevation = row.elevation;
    speaker.radius = row.radius;
    std::strncpy(speaker.name, row.name, sizeof(speaker.name) - 1);
    speaker.type = row.type;
}

} // namespace

void GlobalBlockDeleter::operator()(VstSpeakerArrangement* arrangement) const noexcept
{
    ::GlobalFree(arrangement);
}

SpeakerArrangementPtr MakeSpeakerArrangement(int32_t channels)
{
    if (channels < 0) return nullptr;
    const uint64_t bytes = offsetof(VstSpeakerArrangement, speakers) +
                           uint64_t(std::max(channels, 8)) * sizeof(VstSpeakerProperties);
    if (bytes > SIZE_MAX) return nullptr;
    SpeakerArrangementPtr arrangement(
        static_cast<VstSpeakerArrangement*>(GlobalAlloc(GPTR, static_cast<SIZE_T>(bytes))));
    if (!arrangement) return nullptr;
    arrangement->numChannels = channels;
    arrangement->type = kArrangementUserDefined;
    // Speakers past the record's declared eight live in the same block.
    VstSpeakerProperties* speakers = arrangement->speakers;

    const auto layout =
        std::find_if(std::begin(kLayouts), std::end(kLayouts),
                     [&](const LayoutRow& row) { return row.channels == channels; });
    if (layout != std::end(kLayouts))
    {
        arrangement->type = layout->arrangementType;
        for (int32_t i = 0; i < channels; ++i)
            Fill(speakers[i], layout->speakers[i]);
        return arrangement;
    }
    for (int32_t i = 0; i < channels; ++i)
        speakers[i].type = kSpeakerUndefined;
    return arrangement;
}

} // namespace vst2
