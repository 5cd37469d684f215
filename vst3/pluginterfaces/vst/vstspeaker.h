// Speaker bits and the arrangements a host asks for on its main buses.
#pragma once

#include "vsttypes.h"

namespace vst3 {

namespace SpeakerBits {
constexpr Speaker kSpeakerL = 1ull << 0;
constexpr Speaker kSpeakerR = 1ull << 1;
constexpr Speaker kSpeakerC = 1ull << 2;
constexpr Speaker kSpeakerLfe = 1ull << 3;
constexpr Speaker kSpeakerLs = 1ull << 4;
constexpr Speaker kSpeakerRs = 1ull << 5;
constexpr Speaker kSpeakerLc = 1ull << 6;
constexpr Speaker kSpeakerRc = 1ull << 7;
constexpr Speaker kSpeakerCs = 1ull << 8;
constexpr Speaker kSpeakerSl = 1ull << 9;
constexpr Speaker kSpeakerSr = 1ull << 10;
constexpr Speaker kSpeakerTc = 1ull << 11;
constexpr Speaker kSpeakerTfl = 1ull << 12;
constexpr Speaker kSpeakerTfc = 1ull << 13;
constexpr Speaker kSpeakerTfr = 1ull << 14;
constexpr Speaker kSpeakerTrl = 1ull << 15;
constexpr Speaker kSpeakerTrc = 1ull << 16;
constexpr Speaker kSpeakerTrr = 1ull << 17;
constexpr Speaker kSpeakerLfe2 = 1ull << 18;
constexpr Speaker kSpeakerM = 1ull << 19;
constexpr Speaker kSpeakerTsl = 1ull << 24;
constexpr Speaker kSpeakerTsr = 1ull << 25;
constexpr Speaker kSpeakerBfl = 1ull << 28;
constexpr Speaker kSpeakerBfc = 1ull << 29;
constexpr Speaker kSpeakerBfr = 1ull << 30;
constexpr Speaker kSpeakerBrl = 1ull << 35;
constexpr Speaker kSpeakerBrr = 1ull << 37;
} // namespace SpeakerBits

namespace SpeakerArr {
using namespace SpeakerBits;
constexpr SpeakerArrangement kEmpty = 0;
constexpr SpeakerArrangement kMono = kSpeakerM;
constexpr SpeakerArrangement kStereo = kSpeakerL | kSpeakerR;
constexpr SpeakerArrangement k30Cine = kSpeakerL | kSpeakerR | kSpeakerC;
constexpr SpeakerArrangement k40Cine = k30Cine | kSpeakerCs;
constexpr SpeakerArrangement k50 = k30Cine | kSpeakerLs | kSpeakerRs;
constexpr SpeakerArrangement k60Cine = k50 | kSpeakerCs;
constexpr SpeakerArrangement k70Cine = k50 | kSpeakerLc | kSpeakerRc;
constexpr SpeakerArrangement k80Cine = k70Cine | kSpeakerCs;
constexpr SpeakerArrangement k50_4 = k50 | kSpeakerTfl | kSpeakerTfr | kSpeakerTrl | kSpeakerTrr;
constexpr SpeakerArrangement k100Cine = k50_4 | kSpeakerTc;
constexpr SpeakerArrangement k101Cine = k100Cine | kSpeakerLfe;
constexpr SpeakerArrangement k102 = k50_4 | kSpeakerLfe | kSpeakerTfc | kSpeakerLfe2;
constexpr SpeakerArrangement k130 = k100Cine | kSpeakerSl | kSpeakerSr | kSpeakerTfc;
constexpr SpeakerArrangement k140 =
    kSpeakerL | kSpeakerR | kSpeakerLs | kSpeakerRs | kSpeakerSl | kSpeakerSr | kSpeakerTfl |
    kSpeakerTfr | kSpeakerTrl | kSpeakerTrr | kSpeakerBfl | kSpeakerBfr | kSpeakerBrl | kSpeakerBrr;
constexpr SpeakerArrangement k222 = k80Cine | kSpeakerLfe | kSpeakerSl | kSpeakerSr | kSpeakerTc |
                                    kSpeakerTfl | kSpeakerTfc | kSpeakerTfr | kSpeakerTrl |
                                    kSpeakerTrc | kSpeakerTrr | kSpeakerLfe2 | kSpeakerTsl |
                                    kSpeakerTsr | kSpeakerBfl | kSpeakerBfc | kSpeakerBfr;
} // namespace SpeakerArr

constexpr int32 getChannelCount(SpeakerArrangement arr)
{
    int32 count = 0;
    for (; arr; arr &= arr - 1)
        ++count;
    return count;
}

} // namespace vst3
