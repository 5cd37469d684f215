// The copy engine's self-check over all its nodes, run once.
#include "tqsamplecopy.h"

#include <gtest/gtest.h>

#include "tqerrorhandler.h"

namespace {

TEST(AudioCopySelfCheck, EveryNodeRoundTrips)
{
    TqErrorHandler_DetailsInit();
    EXPECT_EQ(TqAudioCopy_UnitTest(nullptr), S_OK);
    const wchar_t* details = TqErrorHandler_DetailsInfo(nullptr, nullptr, nullptr);
    EXPECT_EQ(details, nullptr) << "details: "
                                << testing::PrintToString(std::wstring(details ? details : L""));
}

} // namespace
