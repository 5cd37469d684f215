// Tests of the registry of reason tables: order of the search, the limit of 32 tables, bad input.
#include "support/kernelenvironment.h"
#include <gtest/gtest.h>

#include <string>

#include "tqerrorhandler.h"
#include "tqkernel.h"

namespace {

constexpr HRESULT kOwnCode = static_cast<HRESULT>(0x8004E0F1);
constexpr HRESULT kLateCode = static_cast<HRESULT>(0x8004E0F2);

// Registrations stay for the life of the process, so the tests count them.
int g_registered = 0;

HRESULT Register(const _tqerror_table* table, int count)
{
    const HRESULT hr = TqErrorHandler_AddErrorTable(table, count);
    if (hr == S_OK) ++g_registered;
    return hr;
}

std::wstring Reason(HRESULT code)
{
    const wchar_t* text = TqErrorHandler_GetHresultString(code);
    return text ? text : L"(none)";
}

TEST(ErrorTables, RegisteredTablesAreSearchedFirstInTheirOrder)
{
    static const _tqerror_table first[] = {
        {kOwnCode, L"\n\nFirst table."},
        {TQ_E_NOTFOUND, L"\n\nThe take was not found."},
    };
    static const _tqerror_table second[] = {
        {kOwnCode, L"\n\nSecond table."},
        {kLateCode, L"\n\nOnly in the second table."},
    };
    ASSERT_EQ(S_OK, Register(first, ARRAYSIZE(first)));
    ASSERT_EQ(S_OK, TqErrorHandler_AddErrorTable(nullptr, second, ARRAYSIZE(second)));
    ++g_registered;

    EXPECT_EQ(L"\n\nFirst table.", Reason(kOwnCode));
    EXPECT_EQ(L"\n\nOnly in the second table.", Reason(kLateCode));
    EXPECT_EQ(L"\n\nThe take was not found.", Reason(TQ_E_NOTFOUND));
    // The built-in table still answers what no registered table knows.
    EXPECT_EQ(L"\n\nThe file already exists.", Reason(TQ_E_ALREADYEXISTS));
    EXPECT_EQ(L"An error occurred during the current operation.\n\nFirst table.",
              std::wstring(TqErrorHandler_GetErrorMessage(0, kOwnCode, nullptr)));
}

TEST(ErrorTables, ThirtyThirdTableIsRefusedAndChangesNothing)
{
    static const _tqerror_table filler[] = {{kOwnCode, L"\n\nFiller."}};
    static const _tqerror_table late[] = {{static_cast<HRESULT>(0x8004E0F3), L"\n\nToo late."}};
    while (g_registered < 32)
        ASSERT_EQ(S_OK, Register(filler, ARRAYSIZE(filler))) << g_registered;

    EXPECT_EQ(S_FALSE, TqErrorHandler_AddErrorTable(late, ARRAYSIZE(late)));
    EXPECT_EQ(L"(none)", Reason(static_cast<HRESULT>(0x8004E0F3)));
}

TEST(ErrorTables, EmptyOrMissingTablesAreRefused)
{
    static const _tqerror_table table[] = {{kOwnCode, L"x"}};
    EXPECT_EQ(E_INVALIDARG, TqErrorHandler_AddErrorTable(nullptr, 1));
    EXPECT_EQ(E_INVALIDARG, TqErrorHandler_AddErrorTable(table, 0));
    EXPECT_EQ(E_INVALIDARG, TqErrorHandler_AddErrorTable(table, -1));
}

} // namespace
