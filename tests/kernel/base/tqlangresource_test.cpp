// Tests of resources through the language search order: data, menus, accelerators, cursors and
// the languages of the version resource.
#include <gtest/gtest.h>

#include <string>

#include "support/testpaths.h"
#include "tqlang.h"

namespace {

class LangResources : public testing::Test
{
protected:
    void SetUp() override
    {
        m_module = LoadLibraryW((tqtest::ProgramFolder() + L"\\tqlangtestmodule.dll").c_str());
        m_noLngModule = LoadLibraryW((tqtest::ProgramFolder() + L"\\tqlangtestnolng.dll").c_str());
        ASSERT_NE(nullptr, m_module);
        ASSERT_NE(nullptr, m_noLngModule);
        ASSERT_EQ(S_OK, TqLang_Open(&m_german, m_module, 0x407, 0));
        ASSERT_EQ(S_OK, TqLang_Open(&m_english, m_module, 0x409, 0));
        ASSERT_EQ(S_OK, TqLang_Open(&m_germanNoLng, m_noLngModule, 0x407, 0));
    }
    void TearDown() override
    {
        TqLang_Close(m_german);
        TqLang_Close(m_english);
        TqLang_Close(m_germanNoLng);
        if (m_module) FreeLibrary(m_module);
        if (m_noLngModule) FreeLibrary(m_noLngModule);
    }

    static std::string Data(HTQLANG lang, UINT id)
    {
        DWORD size = 0;
        const void* data = TqLoadResourceCustom(lang, MAKEINTRESOURCEW(id), RT_RCDATA, &size);
        return data ? std::string(static_cast<const char*>(data)) : std::string("<none>");
    }

    static std::wstring MenuText(HMENU menu, int position)
    {
        wchar_t text[64] = {};
        GetMenuStringW(menu, position, text, 64, MF_BYPOSITION);
        return text;
    }

    HMODULE m_module = nullptr;
    HMODULE m_noLngModule = nullptr;
    HTQLANG m_german = nullptr;
    HTQLANG m_english = nullptr;
    HTQLANG m_germanNoLng = nullptr;
};

TEST_F(LangResources, SearchTheLanguageModuleThenTheModule)
{
    EXPECT_EQ("Sprachmodul", Data(m_german, 2));
    EXPECT_EQ("third", Data(m_german, 3)); // only in the module
    EXPECT_EQ("module", Data(m_english, 2));
    EXPECT_EQ("module", Data(m_germanNoLng, 2));
    EXPECT_EQ("<none>", Data(m_german, 4));

    HINSTANCE lng = TqFindResInstance(m_german, MAKEINTRESOURCEW(2), RT_RCDATA);
    ASSERT_NE(nullptr, lng);
    EXPECT_NE(m_module, lng);
    EXPECT_EQ(m_module, TqFindResInstance(m_german, MAKEINTRESOURCEW(3), RT_RCDATA));
    EXPECT_EQ(nullptr, TqFindResInstance(m_german, MAKEINTRESOURCEW(4), RT_RCDATA));
}

TEST_F(LangResources, FoundResourcesLoadFromTheModuleThatHoldsThem)
{
    const struct
    {
        HTQLANG lang;
        UINT id;
        const char* text;
    } cases[] = {{m_german, 2, "Sprachmodul"}, {m_german, 3, "third"}, {m_english, 2, "module"}};
    for (const auto& c : cases)
    {
        HRSRC found = TqFindResource(c.lang, MAKEINTRESOURCEW(c.id), RT_RCDATA);
        ASSERT_NE(nullptr, found) << c.text;
        EXPECT_EQ(strlen(c.text) + 1, TqSizeofResource(c.lang, found));
        HGLOBAL loaded = TqLoadResource(c.lang, found);
        ASSERT_NE(nullptr, loaded);
        EXPECT_STREQ(c.text, static_cast<const char*>(LockResource(loaded)));
    }
    EXPECT_EQ(nullptr, TqLoadResource(m_german, nullptr));
}

TEST_F(LangResources, MultiTriesAllNamesOnTheLanguageModuleFirst)
{
    const wchar_t* names[] = {MAKEINTRESOURCEW(5), MAKEINTRESOURCEW(3), MAKEINTRESOURCEW(2)};
    int hit = -2;
    HRSRC found = TqFindResourceMulti(m_german, names, 3, RT_RCDATA, &hit);
    EXPECT_EQ(2, hit);
    EXPECT_EQ(std::string("Sprachmodul"),
              static_cast<const char*>(LockResource(TqLoadResource(m_german, found))));

    found = TqFindResourceMulti(m_english, names, 3, RT_RCDATA, &hit);
    EXPECT_EQ(1, hit);
    EXPECT_EQ(std::string("third"),
              static_cast<const char*>(LockResource(TqLoadResource(m_english, found))));

    EXPECT_EQ(nullptr, TqFindResourceMulti(m_german, names, 1, RT_RCDATA, &hit));
    EXPECT_EQ(-1, hit);
}

TEST_F(LangResources, MenusComeTranslatedWithoutHiddenMarkers)
{
    HMENU german = TqLoadMenu(m_german, MAKEINTRESOURCEW(1));
    ASSERT_NE(nullptr, german);
    EXPECT_EQ(L"&Datei", MenuText(german, 0));
    HMENU file = GetSubMenu(german, 0);
    EXPECT_EQ(L"\u00D6&ffnen", MenuText(file, 0));
    EXPECT_EQ(L"Geheim", MenuText(file, 1));
    DestroyMenu(german);

    HMENU english = TqLoadMenu(m_english, MAKEINTRESOURCEW(1));
    ASSERT_NE(nullptr, english);
    EXPECT_EQ(L"&File", MenuText(english, 0));
    EXPECT_EQ(L"Secret", MenuText(GetSubMenu(english, 0), 1));
    DestroyMenu(english);

    EXPECT_EQ(nullptr, TqLoadMenu(m_german, MAKEINTRESOURCEW(9)));
}

TEST_F(LangResources, AcceleratorsKeepKeysFlagsAndCommands)
{
    // The language module has none: the module's table.
    HACCEL table = TqLoadAccelerators(m_german, MAKEINTRESOURCEW(1));
    ASSERT_NE(nullptr, table);
    ACCEL entries[4] = {};
    ASSERT_EQ(2, CopyAcceleratorTableW(table, entries, 4));
    EXPECT_EQ(FVIRTKEY | FCONTROL, entries[0].fVirt);
    EXPECT_EQ('O', entries[0].key);
    EXPECT_EQ(100, entries[0].cmd);
    EXPECT_EQ(FVIRTKEY | FCONTROL | FSHIFT, entries[1].fVirt);
    EXPECT_EQ('S', entries[1].key);
    EXPECT_EQ(101, entries[1].cmd);
    DestroyAcceleratorTable(table);
    EXPECT_EQ(nullptr, TqLoadAccelerators(m_german, MAKEINTRESOURCEW(9)));
}

TEST_F(LangResources, VersionLanguagesOfTheLanguageModule)
{
    wchar_t buffer[32] = L"x";
    EXPECT_EQ(S_OK, TqEnumResourceLanguages(m_german, 1, buffer, 32));
    EXPECT_STREQ(L"DEU,FRA", buffer);
    EXPECT_EQ(TQ_E_BUFFERTOOSMALL, TqEnumResourceLanguages(m_german, 1, buffer, 6));
    EXPECT_EQ(TQ_E_NOTFOUND, TqEnumResourceLanguages(m_germanNoLng, 1, buffer, 32));
    EXPECT_STREQ(L"", buffer);
    EXPECT_EQ(E_INVALIDARG, TqEnumResourceLanguages(m_german, 1, nullptr, 32));
}

TEST(LangSystemResources, NullHandleLoadsTheSystemCursor)
{
    HCURSOR arrow = TqLoadCursor(nullptr, 32512);
    ASSERT_NE(nullptr, arrow);
    EXPECT_EQ(LoadCursorW(nullptr, IDC_ARROW), arrow);
}

} // namespace
