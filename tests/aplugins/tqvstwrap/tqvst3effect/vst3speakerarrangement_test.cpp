// The arrangement each host channel count asks for: the speakers of the masks, written out here
// bit by bit, and the counts that have none.
#include "vst3speakerarrangement.h"

#include <gtest/gtest.h>

namespace {

TEST(Vst3SpeakerArrangement, ChannelCountsGiveTheirRowOrNone)
{
    struct Case
    {
        int channels;
        bool found;
        vst3::SpeakerArrangement arrangement;
    };
    const Case cases[] = {
        {1, true, 1ull << 19},           // M alone, not L
        {2, true, 0x3},                  // L R
        {4, true, 0x7 | 1ull << 8},      // L R C Cs
        {6, true, 0x37 | 1ull << 8},     // 6.0: Cs, no LFE
        {8, true, 0xF7 | 1ull << 8},     // 8.0
        {11, true, 0x2D837 | 1ull << 3}, // the first row with an LFE
        {14, true, 0x2D633 | 1ull << 28 | 1ull << 30 | 1ull << 35 | 1ull << 37},
        {24, true, 0x7307FFFF}, // 22.2
        {0, false, 0},
        {-2, false, 0},
        {15, false, 0},
        {23, false, 0},
        {25, false, 0},
    };
    for (const Case& c : cases)
    {
        vst3::SpeakerArrangement arrangement = 0xDEAD;
        EXPECT_EQ(tqvst::SpeakerArrangementForChannels(c.channels, &arrangement), c.found)
            << c.channels;
        EXPECT_EQ(arrangement, c.found ? c.arrangement : 0xDEAD) << c.channels;
    }
}

} // namespace
