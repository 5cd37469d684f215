// Tests of TqFormatFileSize at every unit boundary, and of TqComposeStr that joins its words.
#include "tqprintf.h"

#include "kernel/text/testlocales.h"
#include "tqlang.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using tq::test::English;
using tq::test::German;
using tq::text::ScopedNumberLocale;

class FileSize : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        // The unit words are the kernel language's, in English.
        ASSERT_TRUE(SUCCEEDED(TqLang_OpenKernelLang(GetModuleHandleW(nullptr))));
        TqLang_UpdateKernelLCID(TqLang_GetKernelLang(), 0x409);
    }
    static void TearDownTestSuite() { TqLang_CloseKernelLang(); }

    static std::wstring Format(LONGLONG size, BOOL longBytes = FALSE)
    {
        wchar_t buffer[64];
        const int length = TqFormatFileSize(size, buffer, 64, longBytes);
        EXPECT_EQ(static_cast<size_t>(length), wcslen(buffer));
        return buffer;
    }

    ScopedNumberLocale m_locale{English()};
};

struct SizeCase
{
    LONGLONG size;
    const wchar_t* text;
};

TEST_F(FileSize, EveryUnitBoundary)
{
    const SizeCase cases[] = {
        {-5, L"0 B"},
        {0, L"0 B"},
        {998, L"998 B"},
        {999, L"0.97 KB"},
        {1023, L"0.99 KB"},
        {1024, L"1.00 KB"},
        {1536, L"1.50 KB"},
        {10 * 1024, L"10.0 KB"},
        {10 * 1024 - 1, L"9.99 KB"},
        {100 * 1024, L"100 KB"},
        {0xF9C00 - 1024, L"998 KB"},
        {0xF9C00, L"0.97 MB"},
        {0x3E700000 - 1, L"999 MB"},
        {0x3E700000, L"0.97 GB"},
        {0xF9C0000000, L"0.97 TB"},
        {0x3E70000000000, L"0.97 PB"},
        {0xF9C000000000000 - 1, L"999 PB"},
        {0xF9C000000000000, L"0.97 EB"},
        {0x6FFFFFFFFFFFFFFF, L"6.99 EB"},
        {0x7000000000000000, L"> 9 YB"},
        {0x7FFFFFFFFFFFFFFF, L"> 9 YB"},
    };
    for (const SizeCase& c : cases)
        EXPECT_EQ(Format(c.size), c.text) << std::hex << c.size;
}

TEST_F(FileSize, LongWordForBytes)
{
    EXPECT_EQ(Format(998, TRUE), L"998 bytes");
    EXPECT_EQ(Format(999, TRUE), L"0.97 KB");
}

TEST_F(FileSize, NumberFollowsTheLocale)
{
    ScopedNumberLocale german(German());
    EXPECT_EQ(Format(999), L"0,97 KB");
    EXPECT_EQ(Format(12 * 1024 + 512), L"12,5 KB");
}

TEST_F(FileSize, WithoutLeadingZeroTheSeparatorTakesADigitsPlace)
{
    auto english = English();
    english.leadingZero = 0;
    ScopedNumberLocale englishBare(english);
    EXPECT_EQ(Format(999), L".97 KB");
    auto german = German();
    german.leadingZero = 0;
    ScopedNumberLocale germanBare(german);
    EXPECT_EQ(Format(999), L",97 KB");
}

TEST_F(FileSize, TooSmallABufferGivesNothing)
{
    wchar_t buffer[8] = L"keep";
    EXPECT_EQ(TqFormatFileSize(999, buffer, 7, FALSE), 0);
    EXPECT_STREQ(buffer, L"");
    EXPECT_EQ(TqFormatFileSize(999, buffer, 8, FALSE), 7);
    EXPECT_EQ(TqFormatFileSize(999, nullptr, 8, FALSE), 0);
}

TEST(ComposeStr, NumberedInsertsInAnyOrder)
{
    wchar_t buffer[64];
    EXPECT_EQ(TqComposeStr(buffer, 64, L"%2 before %1", L"one", L"two"), 14);
    EXPECT_STREQ(buffer, L"two before one");
    EXPECT_EQ(TqComposeStr(buffer, 64, L"%1!d! files", 12), 8);
    EXPECT_STREQ(buffer, L"12 files");
    // No "$" processing.
    TqComposeStr(buffer, 64, L"$d $(x) %1", L"y");
    EXPECT_STREQ(buffer, L"$d $(x) y");
}

TEST(ComposeStr, TooSmallABufferGivesNothing)
{
    wchar_t buffer[8] = L"keep";
    EXPECT_EQ(TqComposeStr(buffer, 4, L"%1", L"long text"), 0);
    EXPECT_STREQ(buffer, L"");
    EXPECT_EQ(TqComposeStr(buffer, 0, L"x"), 0);
}

} // namespace
