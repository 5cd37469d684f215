// Tests of level texts: fixed and float values, labels, the unit and the word for silence.
#include "tqnumtext.h"

#include "testlocales.h"
#include "tqlang.h"

#include <gtest/gtest.h>

#include <string>

namespace {

class LevelText : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        // The texts come from the kernel language's ring, and the words are its English ones.
        ASSERT_TRUE(SUCCEEDED(TqLang_OpenKernelLang(GetModuleHandleW(nullptr))));
        TqLang_UpdateKernelLCID(TqLang_GetKernelLang(), 0x409);
    }
    static void TearDownTestSuite() { TqLang_CloseKernelLang(); }

    tq::text::ScopedNumberLocale m_locale{tq::test::English()};
};

TEST_F(LevelText, FixedValuesAreScaledByTheirDecimals)
{
    EXPECT_STREQ(TqGetdBStringFixed(-60, 1, 0, TRUE), L"-6.0 dB");
    EXPECT_STREQ(TqGetdBStringFixed(-60, 1, 0, FALSE), L"-6.0");
    EXPECT_STREQ(TqGetdBStringFixed(123456, 2, 0, FALSE), L"1,234.56");
    EXPECT_STREQ(TqGetdBStringFixed(-60, 0, 0, TRUE), L"-60 dB");
    EXPECT_STREQ(TqGetdBStringFixed(12345, -1, 0, FALSE), L"12,345");
    EXPECT_STREQ(TqGetdBStringFixed(1, 12, 0, FALSE), L"0.000000001");
}

TEST_F(LevelText, FloatValuesTruncateWithoutDecimals)
{
    EXPECT_STREQ(TqGetdBStringFloat(-6.02, 1, -96.0, TRUE), L"-6.0 dB");
    EXPECT_STREQ(TqGetdBStringFloat(-6.9, 0, -96.0, TRUE), L"-6 dB");
    EXPECT_STREQ(TqGetdBStringFloat(1234.5, 2, 0.0, FALSE), L"1,234.50");
}

TEST_F(LevelText, AtOrBelowANonZeroFloorIsSilence)
{
    EXPECT_STREQ(TqGetdBStringFixed(-960, 1, -960, TRUE), L"-Inf");
    EXPECT_STREQ(TqGetdBStringFloat(-120.0, 1, -96.0, TRUE), L"-Inf");
    EXPECT_STREQ(TqGetdBStringFixed(-959, 1, -960, TRUE), L"-95.9 dB");
    // A floor of 0 means there is none.
    EXPECT_STREQ(TqGetdBStringFixed(-10000, 1, 0, FALSE), L"-1,000.0");
}

TEST_F(LevelText, LabelsFollowTheNumberWithinTwentyFourCharacters)
{
    EXPECT_STREQ(TqGetLabeledStringFixed(440, 0, 0, L" Hz"), L"440 Hz");
    EXPECT_STREQ(TqGetLabeledStringFloat(0.5, 1, 0.0, L"%"), L"0.5%");
    EXPECT_STREQ(TqGetLabeledStringFixed(1, 0, 0, nullptr), L"1");
    const std::wstring label(40, L'x');
    EXPECT_EQ(std::wstring(TqGetLabeledStringFixed(1, 0, 0, label.c_str())),
              L"1" + std::wstring(22, L'x'));
}

} // namespace
