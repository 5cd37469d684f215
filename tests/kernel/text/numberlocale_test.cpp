// Tests of where the formatters' locale values come from.
#include "numberlocale.h"

#include "testlocales.h"
#include "tqnumtext.h"

#include <gtest/gtest.h>

namespace {

using tq::text::LocaleItem;

TEST(NumberLocale, ReadsTheSeparatorsOfAGivenLocale)
{
    const tq::text::NumberLocale german = tq::text::NumberLocaleFromLcid(0x407);
    EXPECT_STREQ(german.Get(LocaleItem::Thousand).text, L".");
    EXPECT_STREQ(german.Get(LocaleItem::Decimal).text, L",");
    EXPECT_EQ(german.grouping, 3u);
    EXPECT_EQ(german.leadingZero, 1u);
    EXPECT_EQ(german.Get(LocaleItem::Decimal).length, 1);
    // The timecode and music separators are the system's own, not the locale's.
    EXPECT_STREQ(german.Get(LocaleItem::SmpteWhole).text, L":");
    EXPECT_STREQ(german.Get(LocaleItem::SmpteDrop).text, L",");
    EXPECT_STREQ(german.Get(LocaleItem::Beat).text, L".");
}

TEST(NumberLocale, GermanLocaleDataFormatsAndParses)
{
    tq::text::ScopedNumberLocale german(tq::text::NumberLocaleFromLcid(0x407));
    wchar_t buffer[32];
    TqDoubleToText(buffer, -1234567.891, 2, TRUE);
    EXPECT_STREQ(buffer, L"-1.234.567,89");
    const wchar_t* end = nullptr;
    EXPECT_DOUBLE_EQ(TqTextToDoubleToken(buffer, &end, TRUE), -1234567.89);
    EXPECT_EQ(*end, L'\0');
}

TEST(NumberLocale, OverridesNestAndEndWithTheirScope)
{
    wchar_t buffer[32];
    {
        tq::text::ScopedNumberLocale outer(tq::test::German());
        {
            tq::text::ScopedNumberLocale inner(tq::test::English());
            TqDWordToText(1234, buffer, TRUE);
            EXPECT_STREQ(buffer, L"1,234");
        }
        TqDWordToText(1234, buffer, TRUE);
        EXPECT_STREQ(buffer, L"1.234");
    }
    EXPECT_STREQ(tq::text::CurrentNumberLocale().Get(LocaleItem::SmpteWhole).text, L":");
}

} // namespace
