// Tests of language strings: numeric ids with and without a language module, records with
// numeric slots, the hidden-text marker, the string cache, the temporary ring.
#include <gtest/gtest.h>

#include <string>

#include "support/testpaths.h"
#include "tqlang.h"
#include "tqstrings.h"

namespace {

// The resource-only test module, with its language module beside it, or its copy without one.
class TestModule
{
public:
    explicit TestModule(const wchar_t* file)
        : m_module(LoadLibraryW((tqtest::ProgramFolder() + L"\\" + file).c_str()))
    {
    }
    ~TestModule()
    {
        if (m_module) FreeLibrary(m_module);
    }
    TestModule(const TestModule&) = delete;
    TestModule& operator=(const TestModule&) = delete;
    HMODULE Get() const { return m_module; }

private:
    HMODULE m_module;
};

class ScopedLang
{
public:
    ScopedLang(LCID lcid, HMODULE module, UINT tempChars = 0)
    {
        EXPECT_EQ(S_OK, TqLang_Open(&m_lang, module, lcid, tempChars));
    }
    ~ScopedLang() { TqLang_Close(m_lang); }
    ScopedLang(const ScopedLang&) = delete;
    ScopedLang& operator=(const ScopedLang&) = delete;
    HTQLANG Get() const { return m_lang; }

private:
    HTQLANG m_lang = nullptr;
};

const wchar_t* Id(UINT id)
{
    return MAKEINTRESOURCEW(id);
}

class LangStrings : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_NE(nullptr, m_withLng.Get());
        ASSERT_NE(nullptr, m_withoutLng.Get());
    }
    TestModule m_withLng{L"tqlangtestmodule.dll"};
    TestModule m_withoutLng{L"tqlangtestnolng.dll"};
};

TEST_F(LangStrings, NumericIdsComeFromTheLanguageModuleFirst)
{
    ScopedLang german(0x407, m_withLng.Get());
    EXPECT_NE(m_withLng.Get(), TqLang_InstFromLang(german.Get()));
    EXPECT_STREQ(L"\u00D6ffnen", TqGetString(german.Get(), Id(100)));
    // Missing in the language module: the module's own.
    EXPECT_STREQ(L"Only in the module", TqGetString(german.Get(), Id(102)));

    // English does not search the language module.
    ScopedLang english(0x409, m_withLng.Get());
    EXPECT_EQ(m_withLng.Get(), TqLang_InstFromLang(english.Get()));
    EXPECT_STREQ(L"Open", TqGetString(english.Get(), Id(100)));
}

TEST_F(LangStrings, NumericIdsWithoutALanguageModuleComeFromTheModuleInEnglish)
{
    ScopedLang german(0x407, m_withoutLng.Get());
    EXPECT_EQ(m_withoutLng.Get(), TqLang_InstFromLang(german.Get()));
    EXPECT_STREQ(L"Open", TqGetString(german.Get(), Id(100)));
    EXPECT_STREQ(L"Only in the module", TqGetString(german.Get(), Id(102)));
}

TEST_F(LangStrings, UnknownIdsAreEmptyAndNeverNull)
{
    ScopedLang german(0x407, m_withLng.Get());
    const wchar_t* text = TqGetString(german.Get(), Id(999));
    ASSERT_NE(nullptr, text);
    EXPECT_STREQ(L"", text);
    wchar_t buffer[8] = L"x";
    EXPECT_EQ(0, TqLoadString(german.Get(), Id(999), buffer, 8));
    EXPECT_STREQ(L"", buffer);
}

TEST_F(LangStrings, HiddenMarkerIsDroppedByLoading)
{
    ScopedLang english(0x409, m_withLng.Get());
    ScopedLang german(0x407, m_withLng.Get());
    wchar_t buffer[32];
    EXPECT_EQ(6, TqLoadString(english.Get(), Id(101), buffer, 32));
    EXPECT_STREQ(L"Hidden", buffer);
    EXPECT_EQ(9, TqLoadString(german.Get(), Id(101), buffer, 32));
    EXPECT_STREQ(L"Versteckt", buffer);
    EXPECT_STREQ(L"Hidden", TqGetString(english.Get(), Id(101)));

    TQLANGRECORD record = {{TQLANG_MARKER, TQLANG_SLOTCOUNT}, {L"^*Record"}, nullptr};
    EXPECT_EQ(6, TqLoadString(english.Get(), record.marker, buffer, 32));
    EXPECT_STREQ(L"Record", buffer);
}

TEST_F(LangStrings, LoadingCutsToTheCapacity)
{
    ScopedLang english(0x409, m_withLng.Get());
    wchar_t buffer[3];
    EXPECT_EQ(2, TqLoadString(english.Get(), Id(100), buffer, 3));
    EXPECT_STREQ(L"Op", buffer);
    EXPECT_EQ(0, TqLoadString(english.Get(), Id(100), buffer, 0));
}

TEST_F(LangStrings, CachedTextsStayUntilTheLanguageChanges)
{
    ASSERT_EQ(S_OK, TqLang_OpenKernelLang(GetModuleHandleW(nullptr)));
    ScopedLang lang(0x409, m_withLng.Get());
    const wchar_t* first = TqGetString(lang.Get(), Id(100));
    EXPECT_STREQ(L"Open", first);
    EXPECT_EQ(first, TqGetString(lang.Get(), Id(100)));
    EXPECT_STREQ(L"Only in the module", TqGetString(lang.Get(), Id(102)));
    EXPECT_EQ(first, TqGetString(lang.Get(), Id(100)));

    ASSERT_EQ(1, TqLang_UpdateKernelLCID(lang.Get(), 0x407));
    EXPECT_STREQ(L"\u00D6ffnen", TqGetString(lang.Get(), Id(100)));
    TqLang_CloseKernelLang();
}

// A record whose German slot names a string resource.
TQLANGRECORD GermanFromResource(UINT id)
{
    TQLANGRECORD record = {{TQLANG_MARKER, TQLANG_SLOTCOUNT}, {L"English"}, nullptr};
    for (int i = 1; i < TQLANG_SLOTCOUNT; ++i)
        record.slots[i] = L"other";
    record.slots[2] = Id(id);
    return record;
}

TEST_F(LangStrings, NumericRecordSlotsResolveOnceInTheLanguageModule)
{
    ScopedLang german(0x407, m_withLng.Get());
    // The table entry behind German's is Spanish, and the module's Spanish text is found.
    TQLANGRECORD record = GermanFromResource(200);
    const wchar_t* text = TqGetString(german.Get(), record.marker);
    EXPECT_STREQ(L"Texto en espa\u00F1ol", text);
    EXPECT_EQ(text, record.slots[2]);
    EXPECT_EQ(text, TqGetString(german.Get(), record.marker));
}

TEST_F(LangStrings, NumericRecordSlotsFallBackToEnglish)
{
    ScopedLang german(0x407, m_withLng.Get());
    // 210 has no terminator behind its text, so it cannot be used in place.
    TQLANGRECORD unterminated = GermanFromResource(210);
    EXPECT_STREQ(L"English", TqGetString(german.Get(), unterminated.marker));
    EXPECT_EQ(unterminated.slots[0], unterminated.slots[2]);

    ScopedLang withoutLng(0x407, m_withoutLng.Get());
    TQLANGRECORD missing = GermanFromResource(200);
    EXPECT_STREQ(L"English", TqGetString(withoutLng.Get(), missing.marker));
    EXPECT_EQ(missing.slots[0], missing.slots[2]);
}

TEST(LangStringIds, SmartTellsRecordsNumbersAndPlainText)
{
    HTQLANG lang = nullptr;
    ASSERT_EQ(S_OK, TqLang_Open(&lang, nullptr, 0x409, 0));
    const wchar_t* plain = L"plain text";
    EXPECT_EQ(plain, TqGetStringSmart(lang, plain));
    EXPECT_EQ(nullptr, TqGetStringSmart(lang, nullptr));
    EXPECT_STREQ(L"hr%smn%ssc%sfr", TqGetStringSmart(lang, TQS(LangSmpteLabel)));
    EXPECT_TRUE(IsTQLANGSTRINGID(lang, TQS(LangSmpteLabel)));
    EXPECT_FALSE(IsTQLANGSTRINGID(lang, plain));
    EXPECT_FALSE(IsTQLANGSTRINGID(lang, Id(100)));

    // The marker at an address that is not 4-aligned is text, whatever follows it.
    alignas(8) BYTE bytes[8] = {0, 0xFE, 0xFF, 0x41, 0, 0, 0, 0};
    const auto* odd = reinterpret_cast<const wchar_t*>(bytes + 1);
    alignas(8) wchar_t words[4] = {L'x', TQLANG_MARKER, L'A', 0};
    const wchar_t* twoAligned = words + 1;
    ASSERT_EQ(TQLANG_MARKER, odd[0]);
    EXPECT_FALSE(IsTQLANGSTRINGID(lang, odd));
    EXPECT_EQ(odd, TqGetStringSmart(lang, odd));
    EXPECT_FALSE(IsTQLANGSTRINGID(lang, twoAligned));
    EXPECT_EQ(twoAligned, TqGetStringSmart(lang, twoAligned));
    TqLang_Close(lang);
}

TEST(LangStringIds, WithoutAnyHandleRecordsStillResolve)
{
    ASSERT_EQ(nullptr, TqLang_GetKernelLang());
    if (PRIMARYLANGID(GetUserDefaultUILanguage()) != LANG_ENGLISH)
        GTEST_SKIP() << "the user interface language is not English";
    EXPECT_STREQ(L"ms%sbt%stk", TqGetString(TQS(LangMusicTimeLabel)));
    EXPECT_STREQ(L"", TqGetString(nullptr, Id(100)));
    EXPECT_EQ(nullptr, TqGetTempStringBuffer(nullptr, 4));
    EXPECT_STREQ(L"", TqGetPrintFromWideString(nullptr, L"text"));
}

TEST(LangStringTables, EveryEntryHasTextInEverySlot)
{
    for (int i = 0; i < TQS_COUNT; ++i)
    {
        const TQLANGRECORD& record = g_tqLangRecords[i];
        EXPECT_EQ(TQLANG_MARKER, record.marker[0]) << i;
        EXPECT_EQ(TQLANG_SLOTCOUNT, record.marker[1]) << i;
        EXPECT_EQ(0, reinterpret_cast<UINT_PTR>(record.marker) & 3) << i;
        for (const wchar_t* slot : record.slots)
            EXPECT_GT(reinterpret_cast<UINT_PTR>(slot), 0xFFFFu) << i;
    }
}

TEST(LangTempRing, HandsOutBlocksAndWrapsBeforeTheReserve)
{
    HTQLANG lang = nullptr;
    ASSERT_EQ(S_OK, TqLang_Open(&lang, nullptr, 0x409, 100)); // raised to 2048
    wchar_t* base = TqGetTempStringBuffer(lang, 600);
    ASSERT_NE(nullptr, base);
    EXPECT_EQ(base + 602, TqGetTempStringBuffer(lang, 600));
    // The position 1204 has passed 2048 - 1024: back to the start.
    EXPECT_EQ(base, TqGetTempStringBuffer(lang, 0));
    EXPECT_EQ(L'\0', base[0]);
    EXPECT_EQ(base + 2, TqGetTempStringBuffer(lang, 3));
    EXPECT_EQ(base + 6, TqGetTempStringBuffer(lang, 5)); // 6 + 5 + 2 rounds down to 12
    EXPECT_EQ(base + 12, TqGetTempStringBuffer(lang, 1));
    // A block that would run past the end starts over as well.
    EXPECT_EQ(base, TqGetTempStringBuffer(lang, 2047));
    EXPECT_EQ(nullptr, TqGetTempStringBuffer(lang, 2048));
    TqLang_Close(lang);

    lang = nullptr;
    ASSERT_EQ(S_OK, TqLang_Open(&lang, nullptr, 0x409, 0)); // 8192
    EXPECT_NE(nullptr, TqGetTempStringBuffer(lang, 8191));
    EXPECT_EQ(nullptr, TqGetTempStringBuffer(lang, 8192));
    TqLang_Close(lang);
}

TEST(LangTempRing, PrintStringsConvertThroughTheRing)
{
    HTQLANG lang = nullptr;
    ASSERT_EQ(S_OK, TqLang_Open(&lang, nullptr, 0x409, 0));
    const wchar_t* wide = L"caf\u00E9";
    EXPECT_EQ(wide, TqGetPrintFromWideString(lang, wide));
    EXPECT_EQ(wide, TqGetWideFromPrintString(lang, wide));
    const char* narrow = TqGetMultiByteFromPrintString(lang, L"plain");
    EXPECT_STREQ("plain", narrow);
    EXPECT_STREQ(L"plain", TqGetPrintFromMultiByteString(lang, narrow));
    EXPECT_STREQ("", TqGetMultiByteFromPrintString(lang, nullptr));
    TqLang_Close(lang);
}

} // namespace
