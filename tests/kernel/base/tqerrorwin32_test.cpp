// Tests of the translation of Win32 and common dialog errors into the kernel's codes.
#include <gtest/gtest.h>

#include "tqerrorhandler.h"

namespace {

struct Row
{
    DWORD error;
    HRESULT code;
};

TEST(ErrorTranslation, Win32ErrorsWithACodeOfTheirOwn)
{
    const Row rows[] = {
        {0, S_OK},
        {1, E_INVALIDARG},
        {2, TQ_E_NOTFOUND},
        {3, TQ_E_NOTFOUND},
        {4, static_cast<HRESULT>(0x8004E026)},
        {5, E_ACCESSDENIED},
        {6, E_HANDLE},
        {14, E_OUTOFMEMORY},
        {15, static_cast<HRESULT>(0x800404B0)},
        {32, static_cast<HRESULT>(0x8004E05A)},
        {39, static_cast<HRESULT>(0x8004E002)},
        {80, static_cast<HRESULT>(0x8004E032)},
        {84, E_OUTOFMEMORY},
        {110, static_cast<HRESULT>(0x8004E007)},
        {112, static_cast<HRESULT>(0x8004E002)},
        {120, E_NOTIMPL},
        {123, static_cast<HRESULT>(0x8004E00D)},
        {126, TQ_E_NOTFOUND},
        {127, TQ_E_NOTFOUND},
        {170, static_cast<HRESULT>(0x8004E005)},
        {183, static_cast<HRESULT>(0x8004E170)},
    };
    for (const Row& row : rows)
        EXPECT_EQ(row.code, TqErrorHandler_TranslateWin32Error(row.error)) << row.error;
}

TEST(ErrorTranslation, OtherWin32ErrorsAreEFail)
{
    for (DWORD error : {7u, 87u, 122u, 1223u, 0xFFFFFFFFu})
        EXPECT_EQ(E_FAIL, TqErrorHandler_TranslateWin32Error(error)) << error;
}

TEST(ErrorTranslation, CommonDialogErrors)
{
    const Row rows[] = {
        {0, S_OK},
        {1, E_INVALIDARG},
        {3, E_INVALIDARG},
        {4, E_INVALIDARG},
        {11, E_INVALIDARG},
        {12291, E_INVALIDARG},
        {16385, E_INVALIDARG},
        {65535, E_INVALIDARG},
        {2, E_OUTOFMEMORY},
        {5, E_OUTOFMEMORY},
        {7, E_OUTOFMEMORY},
        {8, E_OUTOFMEMORY},
        {9, E_OUTOFMEMORY},
        {10, E_OUTOFMEMORY},
        {12289, E_OUTOFMEMORY},
        {6, static_cast<HRESULT>(0x8004E00E)},
        {12290, static_cast<HRESULT>(0x8004E00D)},
        {12, E_FAIL},
        {12292, E_FAIL},
        {0x1001, E_FAIL},
    };
    for (const Row& row : rows)
        EXPECT_EQ(row.code, TqErrorHandler_TranslateCommDlgError(row.error)) << row.error;
}

} // namespace
