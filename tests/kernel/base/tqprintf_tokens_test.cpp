// Tests of the printing token table: definition, replacement, deletion, lookup and concurrency.
#include "tqprintf.h"

#include "uniquehandle.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::wstring Print(const wchar_t* format)
{
    wchar_t buffer[1024];
    TqPrintF(buffer, format);
    return buffer;
}

class Tokens : public testing::Test
{
protected:
    void SetUp() override { ASSERT_EQ(TqPrintF_Initialize(), S_OK); }
    void TearDown() override { TqPrintF_Terminate(); }
};

TEST_F(Tokens, DefinedTokensExpandWithoutRegardToCase)
{
    ASSERT_TRUE(TqPrintF_AddToken(L"AppName", L"Mixer"));
    EXPECT_EQ(Print(L"[$(AppName)]"), L"[Mixer]");
    EXPECT_EQ(Print(L"[$(APPNAME)] [$(appname)]"), L"[Mixer] [Mixer]");
}

TEST_F(Tokens, AddingAnExistingNameReplacesItsValue)
{
    ASSERT_TRUE(TqPrintF_AddToken(L"m.b", L"."));
    ASSERT_TRUE(TqPrintF_AddToken(L"M.B", L"|"));
    EXPECT_EQ(Print(L"1$(m.b)2"), L"1|2");
    // Only one token was there.
    EXPECT_TRUE(TqPrintF_DeleteToken(L"m.b"));
    EXPECT_FALSE(TqPrintF_DeleteToken(L"M.b"));
    EXPECT_EQ(Print(L"$(m.b)"), L"$(m.b)");
    EXPECT_FALSE(TqPrintF_DeleteToken(nullptr));
}

TEST_F(Tokens, ValuesMayBeEmptyOrLong)
{
    ASSERT_TRUE(TqPrintF_AddToken(L"Empty", L""));
    ASSERT_TRUE(TqPrintF_AddToken(L"Null", nullptr));
    EXPECT_EQ(Print(L"<$(Empty)$(Null)>"), L"<>");
    const std::wstring value(700, L'v');
    ASSERT_TRUE(TqPrintF_AddToken(L"Long", value.c_str()));
    EXPECT_EQ(Print(L"$(Long)"), value);
}

TEST_F(Tokens, NamesMustBeUsable)
{
    EXPECT_FALSE(TqPrintF_AddToken(nullptr, L"x"));
    EXPECT_FALSE(TqPrintF_AddToken(L"", L"x"));
    const std::wstring longest(260, L'n');
    EXPECT_TRUE(TqPrintF_AddToken(longest.c_str(), L"ok"));
    EXPECT_EQ(Print((L"$(" + longest + L")").c_str()), L"ok");
    EXPECT_FALSE(TqPrintF_AddToken(std::wstring(261, L'n').c_str(), L"x"));
}

TEST_F(Tokens, ManyTokensStaySortedForLookup)
{
    // Inserted out of order; every one must still be found by the binary search.
    for (int i = 0; i < 200; ++i)
    {
        const int n = (i * 37) % 200;
        ASSERT_TRUE(
            TqPrintF_AddToken((L"T" + std::to_wstring(n)).c_str(), std::to_wstring(n * 3).c_str()));
    }
    for (int n = 0; n < 200; ++n)
        ASSERT_EQ(Print((L"$(t" + std::to_wstring(n) + L")").c_str()), std::to_wstring(n * 3));
}

TEST_F(Tokens, BoundedTokenValuesAreCutWithoutError)
{
    ASSERT_TRUE(TqPrintF_AddToken(L"Digits", L"0123456789"));
    wchar_t buffer[5];
    size_t length = 0;
    EXPECT_EQ(TqCchPrintF(buffer, 5, &length, L"$(Digits)"), S_OK);
    EXPECT_STREQ(buffer, L"0123");
    EXPECT_EQ(length, 4u);
}

TEST_F(Tokens, WithoutTableNothingIsDefinedAndNothingExpands)
{
    ASSERT_TRUE(TqPrintF_AddToken(L"Early", L"x"));
    // A second start keeps the table; the end is final, however often it comes.
    EXPECT_EQ(TqPrintF_Initialize(), S_OK);
    EXPECT_EQ(Print(L"$(Early)"), L"x");
    TqPrintF_Terminate();
    TqPrintF_Terminate();
    EXPECT_FALSE(TqPrintF_AddToken(L"Early", L"x"));
    EXPECT_FALSE(TqPrintF_DeleteToken(L"Early"));
    EXPECT_EQ(Print(L"$(Early)"), L"$(Early)");
}

// Writers replace and delete tokens while readers expand them: a reader must only ever see a
// whole value, never a torn or freed one.
DWORD WINAPI Writer(void* parameter)
{
    const int id = static_cast<int>(reinterpret_cast<INT_PTR>(parameter));
    const std::wstring own = L"Own" + std::to_wstring(id);
    for (int i = 0; i < 2000; ++i)
    {
        TqPrintF_AddToken(L"Shared", (i % 2) ? L"aaaaaaaa" : L"bbbbbbbb");
        TqPrintF_AddToken(own.c_str(), L"x");
        TqPrintF_DeleteToken(own.c_str());
    }
    return 0;
}

DWORD WINAPI Reader(void* parameter)
{
    auto* torn = static_cast<LONG*>(parameter);
    for (int i = 0; i < 4000; ++i)
    {
        const std::wstring text = Print(L"$(Shared)");
        if (text != L"aaaaaaaa" && text != L"bbbbbbbb") InterlockedIncrement(torn);
    }
    return 0;
}

TEST_F(Tokens, ConcurrentChangesAndLookups)
{
    ASSERT_TRUE(TqPrintF_AddToken(L"Shared", L"aaaaaaaa"));
    LONG torn = 0;
    tq::UniqueHandle threads[] = {
        tq::UniqueHandle(CreateThread(nullptr, 0, Writer, reinterpret_cast<void*>(1), 0, nullptr)),
        tq::UniqueHandle(CreateThread(nullptr, 0, Writer, reinterpret_cast<void*>(2), 0, nullptr)),
        tq::UniqueHandle(CreateThread(nullptr, 0, Reader, &torn, 0, nullptr)),
        tq::UniqueHandle(CreateThread(nullptr, 0, Reader, &torn, 0, nullptr)),
    };
    HANDLE handles[4];
    for (int i = 0; i < 4; ++i)
    {
        ASSERT_TRUE(threads[i]);
        handles[i] = threads[i].Get();
    }
    EXPECT_EQ(WaitForMultipleObjects(4, handles, TRUE, 60000), WAIT_OBJECT_0);
    EXPECT_EQ(torn, 0);
}

} // namespace
