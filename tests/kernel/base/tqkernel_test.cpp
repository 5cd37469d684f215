// Kernel start-up and termination: what each makes and keeps, repeated, and out of order.
#include "tqkernel.h"
#include "tqlang.h"
#include "tqprintf.h"
#include "tqtimer.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr UINT kCachedStringId = 101; // in tqkernel_test.rc

HMODULE Self()
{
    return GetModuleHandleW(nullptr);
}

std::wstring Print(const wchar_t* format)
{
    wchar_t out[256] = {};
    TqCchPrintF(out, 256, nullptr, format);
    return out;
}

const wchar_t* CachedString()
{
    return TqGetString(nullptr, MAKEINTRESOURCEW(kCachedStringId));
}

// The tests share the process's kernel; each leaves it terminated. This one runs first.
TEST(KernelLifetime, TerminationWithoutStartUpIsHarmless)
{
    EXPECT_TRUE(TqKernel_LateTerminate(Self()));
    EXPECT_EQ(TqKernel_GetAppKernel(), nullptr);
    EXPECT_EQ(TqLang_GetKernelLang(), nullptr);
    EXPECT_EQ(Print(L"$(SMPTE.Whole)"), L"$(SMPTE.Whole)");
}

TEST(KernelLifetime, StartUpMakesTheKernelServicesAndTerminationTakesThemDown)
{
    SetErrorMode(0);
    ASSERT_TRUE(TqKernel_EarlyInitialize(Self(), 0));
    EXPECT_EQ(GetErrorMode() & 0x8001u, 0x8001u);
    EXPECT_EQ(TqKernel_GetAppKernel(), Self());
    EXPECT_NE(TqLang_GetKernelLang(), nullptr);
    EXPECT_STREQ(CachedString(), L"Cached kernel string");
    // The locale record was read and its tokens defined.
    EXPECT_EQ(Print(L"$(SMPTE.Whole)"), L":");
    EXPECT_TRUE(tq::TimersReady());

    EXPECT_TRUE(TqKernel_LateTerminate(Self()));
    EXPECT_EQ(TqKernel_GetAppKernel(), nullptr);
    EXPECT_EQ(TqLang_GetKernelLang(), nullptr);
    EXPECT_EQ(Print(L"$(SMPTE.Whole)"), L"$(SMPTE.Whole)");
}

TEST(KernelLifetime, SecondStartUpKeepsLanguageCacheAndTokens)
{
    ASSERT_TRUE(TqKernel_EarlyInitialize(Self(), 0));
    const HTQLANG language = TqLang_GetKernelLang();
    const wchar_t* cached = CachedString();
    ASSERT_TRUE(TqPrintF_AddToken(L"KernelTest", L"kept"));
    TqKernel_SetSplash(GetDesktopWindow());

    EXPECT_TRUE(TqKernel_EarlyInitialize(Self(), TQKERNEL_OPT_MODE2));
    EXPECT_EQ(TqLang_GetKernelLang(), language);
    EXPECT_EQ(CachedString(), cached);
    EXPECT_EQ(Print(L"$(KernelTest)"), L"kept");
    // Only the stored values are written again.
    EXPECT_EQ(TqKernel_GetSplash(), nullptr);
    EXPECT_EQ(tq::KernelMode(), 2);

    TqKernel_LateTerminate(Self());
    EXPECT_EQ(Print(L"$(KernelTest)"), L"$(KernelTest)");
    // And it starts again after termination.
    ASSERT_TRUE(TqKernel_EarlyInitialize(Self(), 0));
    EXPECT_NE(TqLang_GetKernelLang(), nullptr);
    EXPECT_EQ(Print(L"$(SMPTE.Whole)"), L":");
    TqKernel_LateTerminate(Self());
}

TEST(KernelLifetime, ModeComesFromOptionBitsZeroAndFive)
{
    const struct
    {
        DWORD options;
        int mode;
    } cases[] = {
        {0, 0}, {0x1, 1}, {0x20, 2}, {0x21, 1}, {0xFFFFFFDEu, 0},
    };
    for (const auto& c : cases)
    {
        TqKernel_EarlyInitialize(Self(), c.options);
        EXPECT_EQ(tq::KernelMode(), c.mode) << std::hex << c.options;
    }
    TqKernel_LateTerminate(Self());
}

TEST(KernelLifetime, AppKernelPathNameMustFit)
{
    ASSERT_TRUE(TqKernel_EarlyInitialize(Self(), 0));
    wchar_t expected[MAX_PATH];
    const DWORD length = GetModuleFileNameW(nullptr, expected, MAX_PATH);
    wchar_t path[MAX_PATH];
    EXPECT_EQ(TqKernel_GetAppKernelPathName(path, MAX_PATH), length);
    EXPECT_STREQ(path, expected);
    EXPECT_EQ(TqKernel_GetAppKernelPathName(path, length), 0u);
    EXPECT_STREQ(path, L"");
    EXPECT_EQ(TqKernel_GetAppKernelPathName(nullptr, MAX_PATH), 0u);
    TqKernel_LateTerminate(Self());
}

} // namespace
