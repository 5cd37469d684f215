// Tests of integer output, plain and grouped, and the capacity rule of the N forms.
#include "tqnumtext.h"

#include "testlocales.h"

#include <gtest/gtest.h>

#include <limits.h>
#include <string>

namespace {

using tq::text::ScopedNumberLocale;

class IntegerText : public testing::Test
{
protected:
    ScopedNumberLocale m_locale{tq::test::English()};
    wchar_t m_buffer[64] = {};
};

TEST_F(IntegerText, ExtremesOfEveryWidth)
{
    EXPECT_EQ(TqDWordToText(0, m_buffer, TRUE), 1);
    EXPECT_STREQ(m_buffer, L"0");
    EXPECT_EQ(TqDWordToText(UINT_MAX, m_buffer, TRUE), 13);
    EXPECT_STREQ(m_buffer, L"4,294,967,295");
    EXPECT_EQ(TqLongToText(LONG_MIN, m_buffer, FALSE), 11);
    EXPECT_STREQ(m_buffer, L"-2147483648");
    EXPECT_EQ(TqLongToText(LONG_MIN, m_buffer, TRUE), 14);
    EXPECT_STREQ(m_buffer, L"-2,147,483,648");
    EXPECT_EQ(TqLongLongToText(LLONG_MIN, m_buffer, FALSE), 20);
    EXPECT_STREQ(m_buffer, L"-9223372036854775808");
    EXPECT_EQ(TqDWordLongToText(ULLONG_MAX, m_buffer, TRUE), 26);
    EXPECT_STREQ(m_buffer, L"18,446,744,073,709,551,615");
    EXPECT_EQ(TqLongToText(-7, m_buffer, TRUE), 2);
    EXPECT_STREQ(m_buffer, L"-7");
}

TEST_F(IntegerText, GroupingFollowsTheLocale)
{
    ScopedNumberLocale german(tq::test::German());
    TqLongLongToText(-1234567890123LL, m_buffer, TRUE);
    EXPECT_STREQ(m_buffer, L"-1.234.567.890.123");
    ScopedNumberLocale indian(tq::test::Indian());
    TqDWordToText(1234567, m_buffer, TRUE);
    EXPECT_STREQ(m_buffer, L"12,34,567");
}

TEST_F(IntegerText, BoundedFormsGiveNothingWhenTheTextDoesNotFit)
{
    EXPECT_EQ(TqDWordToTextN(5, m_buffer, 1, FALSE), 0);
    EXPECT_STREQ(m_buffer, L"");
    EXPECT_EQ(TqDWordToTextN(5, m_buffer, 2, FALSE), 1);
    EXPECT_EQ(TqLongToTextN(-12, m_buffer, 3, FALSE), 0);
    EXPECT_EQ(TqLongToTextN(-12, m_buffer, 4, FALSE), 3);
    EXPECT_EQ(TqDWordLongToTextN(1234567, m_buffer, 9, TRUE), 0);
    EXPECT_EQ(TqDWordLongToTextN(1234567, m_buffer, 10, TRUE), 9);
    EXPECT_STREQ(m_buffer, L"1,234,567");
    EXPECT_EQ(TqLongLongToTextN(1, m_buffer, 0, FALSE), 0);
    EXPECT_EQ(TqLongLongToTextN(1, nullptr, 8, FALSE), 0);
}

} // namespace
