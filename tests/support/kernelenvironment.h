// The kernel as a process has it after start-up, in English, with an application name for
// $(AppName); including this header starts it once for the whole test program.
#pragma once

#include "tqkernel.h"
#include "tqlang.h"
#include "tqprintf.h"

#include <gtest/gtest.h>

namespace tqtest {

class KernelEnvironment : public testing::Environment
{
public:
    void SetUp() override
    {
        ASSERT_TRUE(TqKernel_EarlyInitialize(GetModuleHandleW(nullptr), 0));
        TqLang_UpdateKernelLCID(TqLang_GetKernelLang(), 0x409);
        ASSERT_TRUE(TqPrintF_AddToken(L"AppName", L"TestApp"));
    }
    void TearDown() override { TqKernel_LateTerminate(GetModuleHandleW(nullptr)); }
};

inline testing::Environment* const g_kernelEnvironment =
    testing::AddGlobalTestEnvironment(new KernelEnvironment);

} // namespace tqtest
