// Version strings of this test program's own record, read under its first translation.
#include "tqversion.h"

#include <gtest/gtest.h>

namespace {

class VersionString : public testing::Test
{
protected:
    void SetUp() override { GetModuleFileNameW(nullptr, m_self, MAX_PATH); }
    wchar_t m_self[MAX_PATH] = {};
};

TEST_F(VersionString, ReadsTheFirstTranslation)
{
    wchar_t text[64];
    EXPECT_EQ(TqVersion_GetString(m_self, L"ProductName", text, 64), S_OK);
    EXPECT_STREQ(text, L"Versionstest");
    EXPECT_EQ(TqVersion_GetString(m_self, L"FileVersion", text, 64), S_OK);
    EXPECT_STREQ(text, L"2.3.4.5");
}

TEST_F(VersionString, MissingFileRecordOrKeyIsNotFound)
{
    wchar_t text[64] = L"x";
    EXPECT_EQ(TqVersion_GetString(m_self, L"CompanyName", text, 64), TQ_E_NOTFOUND);
    EXPECT_STREQ(text, L"");
    EXPECT_EQ(TqVersion_GetString(L"C:\\no such folder\\none.exe", L"ProductName", text, 64),
              TQ_E_NOTFOUND);
    // A file with no version record: the C runtime in the system folder has one, so use a text.
    wchar_t ini[MAX_PATH];
    GetWindowsDirectoryW(ini, MAX_PATH);
    wcscat(ini, L"\\win.ini");
    EXPECT_EQ(TqVersion_GetString(ini, L"ProductName", text, 64), TQ_E_NOTFOUND);
}

TEST_F(VersionString, BufferMustHoldTextAndTerminator)
{
    wchar_t text[16];
    EXPECT_EQ(TqVersion_GetString(m_self, L"ProductName", text, 13), S_OK);
    EXPECT_STREQ(text, L"Versionstest");
    EXPECT_EQ(TqVersion_GetString(m_self, L"ProductName", text, 12), TQ_E_BUFFERTOOSMALL);
    EXPECT_STREQ(text, L"Versionstes");
    EXPECT_EQ(TqVersion_GetString(m_self, L"ProductName", text, 0), E_INVALIDARG);
    EXPECT_EQ(TqVersion_GetString(m_self, L"ProductName", nullptr, 16), E_INVALIDARG);
    EXPECT_EQ(TqVersion_GetString(nullptr, L"ProductName", text, 16), E_INVALIDARG);
    EXPECT_EQ(TqVersion_GetString(m_self, nullptr, text, 16), E_INVALIDARG);
}

} // namespace
