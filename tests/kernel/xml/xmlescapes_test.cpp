// Tests of the three character entities.
#include "xmlescapes.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <string>

TEST(XmlEscapes, HaveAndNeed)
{
    const struct
    {
        const wchar_t* text;
        BOOL have;
        BOOL need;
    } cases[] = {
        {L"plain", FALSE, FALSE},   {L"a &amp; b", TRUE, FALSE},
        {L"&lt;&gt;", TRUE, FALSE}, {L"a & b", FALSE, TRUE},
        {L"&foo;", FALSE, TRUE},    {L"&amp", FALSE, TRUE}, // no semicolon: no entity
        {L"a < b", FALSE, TRUE},    {L"&amp; >", TRUE, TRUE},
        {L"", FALSE, FALSE},
    };
    for (const auto& c : cases)
    {
        EXPECT_EQ(TqXML_DoesStringHaveEscapes(c.text), c.have) << c.text;
        EXPECT_EQ(TqXML_DoesStringNeedEscapes(c.text), c.need) << c.text;
    }
}

TEST(XmlEscapes, RemoveWorksInPlaceInOnePass)
{
    const struct
    {
        const wchar_t* text;
        const wchar_t* expected;
    } cases[] = {
        {L"a&amp;b&foo;", L"a&b&foo;"}, {L"&lt;x&gt;", L"<x>"},
        {L"&amp;lt;", L"&lt;"}, // what an entity gives is not read again
        {L"&&amp", L"&&amp"},           {L"tail&", L"tail&"},
    };
    for (const auto& c : cases)
    {
        std::wstring text = c.text;
        const DWORD length = TqXML_RemoveEscapes(text.data());
        EXPECT_STREQ(text.c_str(), c.expected) << c.text;
        EXPECT_EQ(length, wcslen(c.expected)) << c.text;
    }
}

TEST(XmlEscapes, AddWritesTheFirstEntityOnly)
{
    WCHAR buffer[16];
    EXPECT_EQ(TqXML_AddEscapes(buffer, 16, L"a<b"), S_OK);
    EXPECT_STREQ(buffer, L"a&lt;b");
    EXPECT_EQ(TqXML_AddEscapes(buffer, 16, L"x&amp;y&z"), S_OK);
    EXPECT_STREQ(buffer, L"x&amp;y&amp;z");

    // Behind the first entity the later ones leave what the buffer held.
    wmemset(buffer, L'.', 16);
    EXPECT_EQ(TqXML_AddEscapes(buffer, 16, L"<a>b"), S_OK);
    EXPECT_EQ(std::wstring(buffer, 11), std::wstring(L"&lt;a....b") + L'\0');
    EXPECT_EQ(buffer[11], L'.');
}

TEST(XmlEscapes, AddNeverWritesPastTheCapacity)
{
    WCHAR buffer[8];
    wmemset(buffer, L'#', 8);
    EXPECT_EQ(TqXML_AddEscapes(buffer, 4, L"abcdef"), TQ_E_BUFFERTOOSMALL);
    EXPECT_STREQ(buffer, L"abc");
    EXPECT_EQ(buffer[4], L'#');
    wmemset(buffer, L'#', 8);
    EXPECT_EQ(TqXML_AddEscapes(buffer, 4, L"ab<"), TQ_E_BUFFERTOOSMALL) << "entity does not fit";
    EXPECT_STREQ(buffer, L"ab");
    EXPECT_EQ(TqXML_AddEscapes(buffer, 4, L"abc"), S_OK) << "exactly fits";
    EXPECT_STREQ(buffer, L"abc");
    EXPECT_EQ(TqXML_AddEscapes(buffer, 0, L"a"), E_INVALIDARG);
}
