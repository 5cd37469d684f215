// Tests of the error box that need no box: a cancelled operation raises none.
#include <gtest/gtest.h>

#include "tqerrorhandler.h"

namespace {

TEST(ErrorBox, CancelledOperationShowsNothingAndKeepsTheDetails)
{
    TqErrorHandler_DetailsInit();
    ASSERT_EQ(S_OK, TqErrorHandler_DetailsAddString(TQ_E_CANCELLED, L"stopped by the user"));
    // A box would not return 1 here: without a display it fails at once, with one it waits.
    EXPECT_EQ(1, TqErrorHandler_MsgBox(nullptr, MB_OK, 0, TQ_E_CANCELLED, L"%s", L"take.wav"));
    int lines = 0;
    EXPECT_NE(nullptr, TqErrorHandler_DetailsInfo(nullptr, &lines, nullptr));
    EXPECT_EQ(1, lines);
    TqErrorHandler_DetailsInit();
}

} // namespace
