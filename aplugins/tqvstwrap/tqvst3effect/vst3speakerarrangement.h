// The speaker arrangement a host's channel count asks for on the main buses.
#pragma once

#include "pluginterfaces/vst/vsttypes.h"

namespace tqvst {

// The arrangement of channels, or false when the count has none (0, negatives, 15 to 23 and
// anything above 24).
bool SpeakerArrangementForChannels(int channels, vst3::SpeakerArrangement* arrangement) noexcept;

} // namespace tqvst
