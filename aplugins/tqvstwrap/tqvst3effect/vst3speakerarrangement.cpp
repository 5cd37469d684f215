// The one table from a host's channel count to the arrangement of the main buses.
#include "vst3speakerarrangement.h"

#include "pluginterfaces/vst/vstspeaker.h"

namespace tqvst {

using namespace vst3::SpeakerBits;

namespace {

struct Row
{
    int channels;
    vst3::SpeakerArrangement arrangement;
};

// No row carries an LFE up to ten channels (six are 6.0, not 5.1), so the host's channel order is
// the order of the bits and nothing in the copy path reorders channels.
constexpr Row kRows[] = {
    {1, kSpeakerM},
    {2, kSpeakerL | kSpeakerR},
    {3, kSpeakerL | kSpeakerR | kSpeakerC},
    {4, kSpeakerL | kSpeakerR | kSpeakerC | kSpeakerCs},
    {5, kSpeakerL | kSpeakerR | kSpeakerC | kSpeakerLs | kSpeakerRs},
    {6, kSpeakerL | kSpeakerR | kSpeakerC | kSpeakerLs | kSpeakerRs | kSpeakerCs},
    {7, kSpeakerL | kSpeakerR | kSpeakerC | kSpeakerLs | kSpeakerRs | kSpeakerLc | kSpeakerRc},
    {8, kSpeakerL | kSpeakerR | kSpeakerC | kSpeakerLs | kSpeakerRs | kSpeakerLc | kSpeakerRc |
            kSpeakerCs},
    {9, kSpeakerL | kSpeakerR | kSpeakerC | kSpeakerLs | kSpeakerRs | kSpeakerTfl | kSpeakerTfr |
            kSpeakerTrl | kSpeakerTrr},
    {10, kSpeakerL | kSpeakerR | kSpeakerC | kSpeakerLs | kSpeakerRs | kSpeakerTc | kSpeakerTfl |
             kSpeakerTfr | kSpeakerTrl | kSpeakerTrr},
    {11, kSpeakerL | kSpeakerR | kSpeakerC | kSpeakerLfe | kSpeakerLs | kSpeakerRs | kSpeakerTc |
             kSpeakerTfl | kSpeakerTfr | kSpeakerTrl | kSpeakerTrr},
    {12, kSpeakerL | kSpeakerR | kSpeakerC | kSpeakerLfe | kSpeakerLs | kSpeakerRs | kSpeakerTfl |
             kSpeakerTfc | kSpeakerTfr | kSpeakerTrl | kSpeakerTrr | kSpeakerLfe2},
    {13, kSpeakerL | kSpeakerR | kSpeakerC | kSpeakerLs | kSpeakerRs | kSpeakerSl | kSpeakerSr |
             kSpeakerTc | kSpeakerTfl | kSpeakerTfc | kSpeakerTfr | kSpeakerTrl | kSpeakerTrr},
    {14, kSpeakerL | kSpeakerR | kSpeakerLs | kSpeakerRs | kSpeakerSl | kSpeakerSr | kSpeakerTfl |
             kSpeakerTfr | kSpeakerTrl | kSpeakerTrr | kSpeakerBfl | kSpeakerBfr | kSpeakerBrl |
             kSpeakerBrr},
    {24, kSpeakerL | kSpeakerR | kSpeakerC | kSpeakerLfe | kSpeakerLs | kSpeakerRs | kSpeakerLc |
             kSpeakerRc | kSpeakerCs | kSpeakerSl | kSpeakerSr | kSpeakerTc | kSpeakerTfl |
             kSpeakerTfc | kSpeakerTfr | kSpeakerTrl | kSpeakerTrc | kSpeakerTrr | kSpeakerLfe2 |
             kSpeakerTsl | kSpeakerTsr | kSpeakerBfl | kSpeakerBfc | kSpeakerBfr},
};

} // namespace

bool SpeakerArrangementForChannels(int channels, vst3::SpeakerArrangement* arrangement) noexcept
{
    for (const Row& row : kRows)
    {
        if (row.channels != channels) continue;
        *arrangement = row.arrangement;
        return true;
    }
    return false;
}

} // namespace tqvst
