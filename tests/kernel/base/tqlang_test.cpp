// Tests of language handles: conditioning, language resolution, switching, names, stored
// language and code pages.
#include <gtest/gtest.h>

#include <objbase.h>

#include <mbctype.h>

#include <string>

#include "tqlang.h"
#include "tqstrings.h"

namespace {

class ScopedLang
{
public:
    explicit ScopedLang(LCID lcid, HMODULE module = nullptr)
    {
        EXPECT_EQ(S_OK, TqLang_Open(&m_lang, module, lcid, 0));
    }
    ~ScopedLang() { TqLang_Close(m_lang); }
    ScopedLang(const ScopedLang&) = delete;
    ScopedLang& operator=(const ScopedLang&) = delete;
    HTQLANG Get() const { return m_lang; }

private:
    HTQLANG m_lang = nullptr;
};

// The kernel language for the length of a test.
class KernelLang
{
public:
    KernelLang() { EXPECT_EQ(S_OK, TqLang_OpenKernelLang(GetModuleHandleW(nullptr))); }
    ~KernelLang() { TqLang_CloseKernelLang(); }
    KernelLang(const KernelLang&) = delete;
    KernelLang& operator=(const KernelLang&) = delete;
};

// A record whose slot i holds "slot i", for telling which slot a handle resolves to.
class NumberedRecord
{
public:
    explicit NumberedRecord(int count = TQLANG_SLOTCOUNT)
    {
        m_record.marker[0] = TQLANG_MARKER;
        m_record.marker[1] = static_cast<wchar_t>(count);
        for (int i = 0; i < TQLANG_SLOTCOUNT; ++i)
        {
            m_texts[i] = L"slot " + std::to_wstring(i + 1);
            m_record.slots[i] = m_texts[i].c_str();
        }
    }
    const wchar_t* Id() const { return m_record.marker; }

private:
    TQLANGRECORD m_record = {};
    std::wstring m_texts[TQLANG_SLOTCOUNT];
};

TEST(TqLangConditioning, NormalisesToTheMainSublanguageButKeepsPortugueseAndChineseScripts)
{
    const struct
    {
        LCID lcid;
        LCID expected;
    } cases[] = {
        {0x409, 0x409},  {0x809, 0x409},   {0xC09, 0x409},
        {0x807, 0x407},  {0x10407, 0x407}, // a sort id is dropped
        {0x416, 0x416},  {0x816, 0x816},   {0x804, 0x804},
        {0x1004, 0x804}, {0x004, 0x804},   {0x404, 0x404},
        {0xC04, 0x404},  {0x1404, 0x404},  {0x42D, 0x42D},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.expected, TqLang_GetConditionedLCID(c.lcid)) << std::hex << c.lcid;
}

TEST(TqLangResolution, PicksTheSlotOfTheConditionedLanguage)
{
    const struct
    {
        LCID lcid;
        const wchar_t* expected;
    } cases[] = {
        {0x409, L"slot 1"},
        {0x809, L"slot 1"},
        {0x411, L"slot 2"},
        {0x807, L"slot 3"},
        {0xC0A, L"slot 4"},
        {0x80C, L"slot 5"},
        {0x804, L"slot 6"},
        {0x1004, L"slot 6"},
        {0x404, L"slot 7"},
        {0xC04, L"slot 7"},
        {0x406, L"slot 8"},
        {0x40B, L"slot 9"},
        {0x810, L"slot 10"},
        {0x412, L"slot 11"},
        {0x813, L"slot 12"},
        {0x414, L"slot 13"},
        {0x416, L"slot 14"},
        {0x816, L"slot 15"},
        {0x419, L"slot 16"},
        {0x81D, L"slot 17"},
        {0x415, L"slot 18"},
        // Outside the table: English.
        {0x42D, L"slot 1"},
        {0x401, L"slot 1"},
        {0x1234, L"slot 1"},
    };
    const NumberedRecord record;
    for (const auto& c : cases)
    {
        ScopedLang lang(c.lcid);
        EXPECT_STREQ(c.expected, TqGetString(lang.Get(), record.Id())) << std::hex << c.lcid;
    }
}

TEST(TqLangResolution, ClampsTheSlotToTheRecordsOwnCount)
{
    const NumberedRecord record(3);
    ScopedLang polish(0x415);
    EXPECT_STREQ(L"slot 3", TqGetString(polish.Get(), record.Id()));
}

TEST(TqLangOpen, ASetHandleVariableIsLeftAloneWithASuccessCode)
{
    ScopedLang lang(0x409);
    HTQLANG again = lang.Get();
    const HRESULT hr = TqLang_Open(&again, nullptr, 0x407, 0);
    EXPECT_EQ(TQ_S_LANGALREADYOPEN, hr);
    EXPECT_TRUE(SUCCEEDED(hr));
    EXPECT_EQ(lang.Get(), again);
    EXPECT_EQ(0x409u, TqLang_GetLCID(again));

    EXPECT_EQ(E_POINTER, TqLang_Open(nullptr, nullptr, 0, 0));
    EXPECT_EQ(S_OK, TqLang_Close(nullptr));
}

TEST(TqLangOpen, WithoutALanguageModuleTheModuleServesForBoth)
{
    // The test program has no ".LNG" beside it.
    ScopedLang german(0x407);
    EXPECT_EQ(GetModuleHandleW(nullptr), TqLang_InstFromLang(german.Get()));
}

TEST(TqLangKernel, OpensOnceAndIsTheDefaultOfNullHandles)
{
    EXPECT_EQ(nullptr, TqLang_GetKernelLang());
    {
        KernelLang kernel;
        HTQLANG opened = TqLang_GetKernelLang();
        ASSERT_NE(nullptr, opened);
        EXPECT_EQ(TQ_S_LANGALREADYOPEN, TqLang_OpenKernelLang(GetModuleHandleW(nullptr)));
        EXPECT_EQ(opened, TqLang_GetKernelLang());
        EXPECT_EQ(0u, TqLang_GetLCID(nullptr));
    }
    EXPECT_EQ(nullptr, TqLang_GetKernelLang());
}

TEST(TqLangSwitch, NeedsBothTheHandleAndTheKernelLanguage)
{
    ScopedLang lang(0x409);
    EXPECT_EQ(0, TqLang_UpdateKernelLCID(lang.Get(), 0x407));
    EXPECT_EQ(0x409u, TqLang_GetLCID(lang.Get()));
    KernelLang kernel;
    EXPECT_EQ(0, TqLang_UpdateKernelLCID(nullptr, 0x407));
}

TEST(TqLangSwitch, MovesTheHandleAndTheKernelLanguageToTheNewLanguage)
{
    KernelLang kernel;
    ScopedLang lang(0x409);
    const NumberedRecord record;
    EXPECT_STREQ(L"slot 1", TqGetString(lang.Get(), record.Id()));

    EXPECT_EQ(1, TqLang_UpdateKernelLCID(lang.Get(), 0x407));
    EXPECT_EQ(0x407u, TqLang_GetLCID(lang.Get()));
    EXPECT_EQ(0x407u, TqLang_GetLCID(nullptr));
    EXPECT_STREQ(L"slot 3", TqGetString(lang.Get(), record.Id()));
    EXPECT_STREQ(L"slot 3", TqGetString(record.Id()));

    // LCID 0 means US English.
    EXPECT_EQ(1, TqLang_UpdateKernelLCID(lang.Get(), 0));
    EXPECT_EQ(0x409u, TqLang_GetLCID(lang.Get()));
    EXPECT_STREQ(L"slot 1", TqGetString(record.Id()));
}

TEST(TqLangSwitch, ShowsTheTranslatedTextsOfTheTables)
{
    KernelLang kernel;
    HTQLANG lang = TqLang_GetKernelLang();
    ASSERT_EQ(1, TqLang_UpdateKernelLCID(lang, 0x409));
    EXPECT_STREQ(L"hours%sminutes%sseconds%sframes", TqGetString(TQS(LangSmpteLabelFull)));
    EXPECT_STREQ(L"An error occurred during the current operation.",
                 TqGetString(TQS(ErrCtxGeneral)));

    ASSERT_EQ(1, TqLang_UpdateKernelLCID(lang, 0x407));
    EXPECT_STREQ(L"Stunden%sMinuten%sSekunden%sFrames", TqGetString(TQS(LangSmpteLabelFull)));
    EXPECT_STREQ(L"Beim aktuellen Vorgang ist ein Fehler aufgetreten.",
                 TqGetString(TQS(ErrCtxGeneral)));
    // A language with no translation of its own shows English.
    ASSERT_EQ(1, TqLang_UpdateKernelLCID(lang, 0x415));
    EXPECT_STREQ(L"An error occurred during the current operation.",
                 TqGetString(TQS(ErrCtxGeneral)));
}

TEST(TqLangSwitch, MirrorsTheProcessLayoutForRightToLeftLanguages)
{
    KernelLang kernel;
    HTQLANG lang = TqLang_GetKernelLang();
    const LCID rtl[] = {0x401, 0x40D, 0x420, 0x429};
    for (LCID lcid : rtl)
    {
        ASSERT_EQ(1, TqLang_UpdateKernelLCID(lang, lcid));
        EXPECT_TRUE(TqLang_UseRTL(lang)) << std::hex << lcid;
        DWORD layout = 0;
        ASSERT_TRUE(GetProcessDefaultLayout(&layout));
        EXPECT_EQ(DWORD(LAYOUT_RTL), layout) << std::hex << lcid;
    }
    ASSERT_EQ(1, TqLang_UpdateKernelLCID(lang, 0x409));
    EXPECT_FALSE(TqLang_UseRTL(lang));
    DWORD layout = LAYOUT_RTL;
    ASSERT_TRUE(GetProcessDefaultLayout(&layout));
    EXPECT_EQ(0u, layout);
}

TEST(TqLangNames, TagsAbbreviationsAndNameOrder)
{
    const struct
    {
        LCID lcid;
        const wchar_t* tag; // null: no tag of its own
        const wchar_t* abbrev;
        const wchar_t* name;
    } cases[] = {
        {0x407, L"de-DE", L"DEU", L"Anna Berg"}, {0x807, L"de-DE", L"DEU", L"Anna Berg"},
        {0x804, L"zh-CN", L"CHS", L"Anna Berg"}, {0x40A, L"es-ES", L"ESP", L"Anna Berg"},
        {0x40C, L"fr-FR", L"FRA", L"Anna Berg"}, {0x411, L"ja-JP", L"JPN", L"Berg Anna"},
        {0x415, L"pl-PL", L"PLK", L"Anna Berg"}, {0x419, L"ru-RU", L"RUS", L"Anna Berg"},
        {0x409, nullptr, L"ENU", L"Anna Berg"},  {0x410, nullptr, L"ITA", L"Anna Berg"},
    };
    for (const auto& c : cases)
    {
        ScopedLang lang(c.lcid);
        wchar_t buffer[32] = L"x";
        EXPECT_EQ(c.tag ? 0 : 1, TqLang_GetLangllCC(lang.Get(), buffer, 32)) << std::hex << c.lcid;
        EXPECT_STREQ(c.tag ? c.tag : L"", buffer);
        EXPECT_STREQ(c.tag ? c.tag : L"en-US", getLanguageString(lang.Get()));
        EXPECT_EQ(3, TqLang_GetLangAbbrev(lang.Get(), buffer, 32));
        EXPECT_STREQ(c.abbrev, buffer);
        EXPECT_EQ(S_OK, TqLang_LocalizeUserName(lang.Get(), L"Anna", L"Berg", buffer, 32));
        EXPECT_STREQ(c.name, buffer);
    }

    ScopedLang german(0x407);
    wchar_t small[5];
    EXPECT_EQ(TQ_E_BUFFERTOOSMALL,
              TqLang_LocalizeUserName(german.Get(), L"Anna", L"Berg", small, 5));
    EXPECT_STREQ(L"Anna", small);
}

// A product key of its own, removed before and after.
class StoredLanguage : public testing::Test
{
protected:
    void SetUp() override { Clean(); }
    void TearDown() override { Clean(); }
    static void Clean()
    {
        RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\Ostrel\\TqLangTestProduct");
        RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\TqLangTestCompany");
        // The company key goes too when the test made it; a key with sub-keys is left standing.
        RegDeleteKeyW(HKEY_CURRENT_USER, L"Software\\Ostrel");
    }
    static bool ValueAt(const wchar_t* path, DWORD* value)
    {
        DWORD size = sizeof(*value);
        return RegGetValueW(HKEY_CURRENT_USER, path, L"ULangID", RRF_RT_REG_DWORD, nullptr, value,
                            &size) == ERROR_SUCCESS;
    }
};

TEST_F(StoredLanguage, KeepsTheLanguagePerProductAndVersion)
{
    const wchar_t* product = L"TqLangTestProduct";
    LCID lcid = 0;
    EXPECT_FALSE(TqLang_LoadUserLCIDMetric(product, 0x01020000, &lcid, FALSE));

    ASSERT_EQ(S_OK, TqLang_SaveUserLCIDMetric(product, 0x01020304, 0x407, FALSE));
    ASSERT_EQ(S_OK, TqLang_SaveUserLCIDMetric(product, 0x01020304, 0x40C, TRUE));
    DWORD stored = 0;
    ASSERT_TRUE(ValueAt(L"Software\\Ostrel\\TqLangTestProduct\\1.2\\Lang", &stored));
    EXPECT_EQ(0x407u, stored);
    ASSERT_TRUE(ValueAt(L"Software\\Ostrel\\TqLangTestProduct\\Lang", &stored));
    EXPECT_EQ(0x40Cu, stored);

    EXPECT_TRUE(TqLang_LoadUserLCIDMetric(product, 0x0102FFFF, &lcid, FALSE));
    EXPECT_EQ(0x407u, lcid);
    EXPECT_TRUE(TqLang_LoadUserLCIDMetric(product, 0x01020304, &lcid, TRUE));
    EXPECT_EQ(0x40Cu, lcid);
    // No major part: the key without a version.
    EXPECT_TRUE(TqLang_LoadUserLCIDMetric(product, 0x00050000, &lcid, FALSE));
    EXPECT_EQ(0x40Cu, lcid);
    EXPECT_FALSE(TqLang_LoadUserLCIDMetric(product, 0x02000000, &lcid, FALSE));
}

TEST_F(StoredLanguage, AppRegFormsTakeTheCompany)
{
    const wchar_t* company = L"TqLangTestCompany";
    ASSERT_EQ(S_OK, TqLang_SaveUserLCIDMetricAppReg(company, L"Tool", 0x03010000, 0x411));
    ASSERT_EQ(S_OK, TqLang_SaveUserLCIDMetricAppReg(company, L"Tool", 0x00FF0000, 0x416));
    DWORD stored = 0;
    ASSERT_TRUE(ValueAt(L"Software\\TqLangTestCompany\\Tool\\3.1\\Lang", &stored));
    EXPECT_EQ(0x411u, stored);
    ASSERT_TRUE(ValueAt(L"Software\\TqLangTestCompany\\Tool\\Lang", &stored));
    EXPECT_EQ(0x416u, stored);

    LCID lcid = 0;
    EXPECT_TRUE(TqLang_LoadUserLCIDMetricAppReg(company, L"Tool", 0x03010000, &lcid));
    EXPECT_EQ(0x411u, lcid);
    EXPECT_FALSE(TqLang_LoadUserLCIDMetricAppReg(company, L"Other", 0x03010000, &lcid));
    EXPECT_EQ(E_INVALIDARG, TqLang_SaveUserLCIDMetricAppReg(nullptr, L"Tool", 0, 0x409));
}

// Restores the C runtime's multi-byte code page.
class MultiByteCodePage
{
public:
    explicit MultiByteCodePage(int codepage) : m_saved(_getmbcp())
    {
        m_set = _setmbcp(codepage) == 0;
    }
    ~MultiByteCodePage() { _setmbcp(m_saved); }
    MultiByteCodePage(const MultiByteCodePage&) = delete;
    MultiByteCodePage& operator=(const MultiByteCodePage&) = delete;
    bool IsSet() const { return m_set; }

private:
    int m_saved;
    bool m_set = false;
};

TEST(TqLangCodePage, FindsLeadAndTrailPairsOnlyUnderAMultiByteCodePage)
{
    const char shiftJis[] = "ab\x82\xA0";
    {
        MultiByteCodePage japanese(932);
        if (!japanese.IsSet()) GTEST_SKIP() << "code page 932 is not available";
        EXPECT_TRUE(TqLang_DetectMultiByteCharacters(shiftJis, 4));
        EXPECT_FALSE(TqLang_DetectMultiByteCharacters(shiftJis, 3)); // the lead byte alone
        EXPECT_FALSE(TqLang_DetectMultiByteCharacters("plain", 5));
        EXPECT_FALSE(TqLang_DetectMultiByteCharacters("\x82", 1));
        EXPECT_FALSE(TqLang_DetectMultiByteCharacters("\x82\x20", 2)); // not a trail byte
    }
    MultiByteCodePage western(1252);
    ASSERT_TRUE(western.IsSet());
    EXPECT_FALSE(TqLang_DetectMultiByteCharacters(shiftJis, 4));
}

TEST(TqLangCodePage, DetectionGivesAPageOnlyWithCertainty)
{
    ASSERT_TRUE(SUCCEEDED(CoInitialize(nullptr)));
    const char text[] = "Plain text that any code page reads the same way.";
    UINT codepage = 12345;
    const HRESULT hr = TqLang_DetectPossibleCodepage(text, sizeof(text) - 1, &codepage);
    if (hr == S_OK)
        EXPECT_NE(0u, codepage);
    else
        EXPECT_EQ(0u, codepage) << std::hex << hr;
    codepage = 12345;
    EXPECT_EQ(TQ_E_NOCODEPAGE, TqLang_DetectPossibleCodepage(text, 0, &codepage));
    EXPECT_EQ(0u, codepage);
    EXPECT_EQ(E_POINTER, TqLang_DetectPossibleCodepage(text, 4, nullptr));
    CoUninitialize();
}

} // namespace
