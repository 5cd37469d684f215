// Tests of the internationals record: locales given explicitly, TqGetInat, the language tag and
// the tokens of formatted printing.
#include <gtest/gtest.h>

#include "tqinat.h"
#include "tqlang.h"
#include "tqprintf.h"

namespace {

TEST(InatFill, GermanLocale)
{
    TQINTERNATIONALS r = {};
    tq::inat::Fill(r, 0x407);
    EXPECT_EQ(sizeof(TQINTERNATIONALS), r.size);
    EXPECT_EQ(0x407u, r.languageId);
    EXPECT_STREQ(L"German", r.englishLanguageName.text);
    EXPECT_EQ(6u, r.englishLanguageName.length);
    EXPECT_EQ(49u, r.countryCode);
    EXPECT_STREQ(L"Germany", r.englishCountryName.text);
    EXPECT_STREQ(L".", r.thousandSeparator.text);
    EXPECT_STREQ(L",", r.decimalSeparator.text);
    EXPECT_EQ(1u, r.decimalSeparator.length);
    EXPECT_STREQ(L";", r.listSeparator.text);
    EXPECT_STREQ(L":", r.timeSeparator.text);
    EXPECT_EQ(3u, r.grouping);
    EXPECT_EQ(2u, r.digits);
    EXPECT_EQ(1u, r.leadingZero);
    EXPECT_EQ(0u, r.measureSystem);
    EXPECT_STREQ(L"-", r.minusSign.text);
    EXPECT_EQ(1u, r.minusSign.length);
}

TEST(InatFill, UsEnglishLocale)
{
    TQINTERNATIONALS r = {};
    tq::inat::Fill(r, 0x409);
    EXPECT_EQ(0x409u, r.languageId);
    EXPECT_EQ(1u, r.countryCode);
    EXPECT_STREQ(L",", r.thousandSeparator.text);
    EXPECT_STREQ(L".", r.decimalSeparator.text);
    EXPECT_STREQ(L",", r.listSeparator.text);
    EXPECT_EQ(1u, r.measureSystem);
}

TEST(InatFill, GroupingTakesTheNumberFormatForm)
{
    const struct
    {
        const wchar_t* text;
        UINT32 expected;
    } cases[] = {{L"3;0", 3}, {L"3;2;0", 32}, {L"3", 30}, {L"3;2", 320}, {L"", 0}, {L"0;0", 0}};
    for (const auto& c : cases)
        EXPECT_EQ(c.expected, tq::inat::GroupingFromLocaleText(c.text)) << c.text;
}

TEST(InatFill, DecimalSeparatorNeverEqualsTheThousandsSeparator)
{
    const struct
    {
        const wchar_t* thousand;
        const wchar_t* decimal;
        const wchar_t* expected;
    } cases[] = {
        {L".", L".", L","},  {L",", L",", L"."}, {L"'", L"'", L"."},
        {L".", L".x", L","}, // equal over the thousands separator's length
        {L" ", L",", L","},  {L"", L",", L","},  {L",", L".", L"."},
    };
    for (const auto& c : cases)
    {
        TQINTERNATIONALS r = {};
        wcscpy(r.thousandSeparator.text, c.thousand);
        r.thousandSeparator.length = static_cast<UINT32>(wcslen(c.thousand));
        wcscpy(r.decimalSeparator.text, c.decimal);
        r.decimalSeparator.length = static_cast<UINT32>(wcslen(c.decimal));
        tq::inat::SeparateDecimalFromThousands(r);
        EXPECT_STREQ(c.expected, r.decimalSeparator.text) << c.thousand << " " << c.decimal;
        EXPECT_EQ(wcslen(c.expected), r.decimalSeparator.length);
    }
}

TEST(InatIds, NumbersTextsAndUnknownIds)
{
    TQINTERNATIONALS r = {};
    ASSERT_EQ(S_OK, TqLang_GetInternationals(&r, sizeof(r)));
    ASSERT_EQ(sizeof(TQINTERNATIONALS), r.size);

    wchar_t text[64] = L"x";
    EXPECT_EQ(static_cast<int>(r.languageId), TqGetInat(TQINAT_LANGUAGEID, text));
    EXPECT_STREQ(L"", text);
    EXPECT_EQ(static_cast<int>(GetSystemDefaultLCID()), TqGetInat(TQINAT_SYSTEMLCID, text));
    EXPECT_EQ(static_cast<int>(r.countryCode), TqGetInat(TQINAT_COUNTRYCODE, text));

    const struct
    {
        int id;
        const wchar_t* expected;
    } texts[] = {
        {TQINAT_DECIMALSEPARATOR, r.decimalSeparator.text},
        {TQINAT_LISTSEPARATOR, r.listSeparator.text},
        {TQINAT_TIMESEPARATOR, r.timeSeparator.text},
        {TQINAT_LANGUAGENAME, r.languageName.text},
        {TQINAT_ENGLANGUAGENAME, r.englishLanguageName.text},
        {TQINAT_SMPTEWHOLE, L":"},
        {TQINAT_SMPTENONDROP, L"."},
        {TQINAT_SMPTEDROP, L","},
        {TQINAT_MEASURESEPARATOR, L"."},
        {TQINAT_BEATSEPARATOR, L"."},
    };
    for (const auto& t : texts)
    {
        EXPECT_EQ(static_cast<int>(wcslen(t.expected)), TqGetInat(t.id, text)) << t.id;
        EXPECT_STREQ(t.expected, text) << t.id;
    }

    for (int unknown : {-1, 5, 23, 103, 122, 1000})
    {
        wcscpy(text, L"x");
        EXPECT_EQ(0, TqGetInat(unknown, text)) << unknown;
        EXPECT_STREQ(L"", text) << unknown;
    }
}

TEST(InatIds, BoundedFormCuts)
{
    TQINTERNATIONALS r = {};
    TqLang_GetInternationals(&r, sizeof(r));
    ASSERT_GE(r.englishLanguageName.length, 3u);
    wchar_t text[3] = L"xx";
    EXPECT_EQ(2, TqGetInatN(TQINAT_ENGLANGUAGENAME, text, 3));
    EXPECT_EQ(0, wcsncmp(r.englishLanguageName.text, text, 2));
    EXPECT_EQ(L'\0', text[2]);
    EXPECT_EQ(0, TqGetInatN(TQINAT_SMPTEWHOLE, text, 1));
    EXPECT_STREQ(L"", text);
}

TEST(InatRecord, CopiesOnlyTheBytesAskedFor)
{
    TQINTERNATIONALS r;
    memset(&r, 0xAB, sizeof(r));
    ASSERT_EQ(S_OK, TqLang_GetInternationals(&r, 8));
    EXPECT_EQ(sizeof(TQINTERNATIONALS), r.size);
    EXPECT_EQ(0xABABABABu, r.languageId);
}

TEST(InatRecord, LanguageTagIsSetAndSurvivesARebuild)
{
    TQINTERNATIONALS r = {};
    ASSERT_EQ(S_OK, TqSetLangID(L"DEUTSCH"));
    TqLang_GetInternationals(&r, sizeof(r));
    EXPECT_STREQ(L"DEU", r.langTag.text);
    EXPECT_EQ(3u, r.langTag.length);

    ASSERT_EQ(S_OK, TqLang_GetInternationals(nullptr, 0));
    TqLang_GetInternationals(&r, sizeof(r));
    EXPECT_STREQ(L"DEU", r.langTag.text);

    for (const wchar_t* none : {static_cast<const wchar_t*>(nullptr), L""})
    {
        TqSetLangID(none);
        TqLang_GetInternationals(&r, sizeof(r));
        EXPECT_STREQ(L"ENU", r.langTag.text);
    }
}

// The token table and the kernel language for the length of a test.
class InatTokens : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(S_OK, TqPrintF_Initialize());
        ASSERT_EQ(S_OK, TqLang_OpenKernelLang(GetModuleHandleW(nullptr)));
        ASSERT_EQ(1, TqLang_UpdateKernelLCID(TqLang_GetKernelLang(), 0x409));
    }
    void TearDown() override
    {
        TqLang_CloseKernelLang();
        TqPrintF_Terminate();
    }
    static std::wstring Print(const wchar_t* format)
    {
        wchar_t out[128] = {};
        EXPECT_EQ(S_OK, TqCchPrintF(out, 128, nullptr, format));
        return out;
    }
};

TEST_F(InatTokens, RebuildDefinesSeparatorsAndLabels)
{
    ASSERT_EQ(S_OK, TqLang_GetInternationals(nullptr, 0));
    EXPECT_EQ(L": . , . .", Print(L"$(SMPTE.Whole) $(SMPTE.NonDrop) $(SMPTE.Drop) $(m.b) $(b.t)"));
    EXPECT_EQ(L"hr:mn:sc.fr", Print(L"$(SMPTE.Label.NonDrop)"));
    EXPECT_EQ(L"hr:mn:sc,fr", Print(L"$(SMPTE.Label.Drop)"));
    EXPECT_EQ(L"hours:minutes:seconds.frames", Print(L"$(SMPTE.Label.NonDrop.Full)"));
    EXPECT_EQ(L"hours:minutes:seconds,frames", Print(L"$(SMPTE.Label.Drop.Full)"));
    EXPECT_EQ(L"ms.bt.tk", Print(L"$(MusicTime.Label)"));
    EXPECT_EQ(L"measures.beats.ticks", Print(L"$(MusicTime.Label.Full)"));
}

TEST_F(InatTokens, LabelsFollowTheLanguage)
{
    ASSERT_EQ(1, TqLang_UpdateKernelLCID(TqLang_GetKernelLang(), 0x407));
    ASSERT_EQ(S_OK, TqLang_GetInternationals(nullptr, 0));
    EXPECT_EQ(L"Stunden:Minuten:Sekunden.Frames", Print(L"$(SMPTE.Label.NonDrop.Full)"));
    EXPECT_EQ(L"Takte.Schl\u00E4ge.Ticks", Print(L"$(MusicTime.Label.Full)"));
}

} // namespace
