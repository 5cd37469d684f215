// Processor detection from CPUID inputs, the allow mask, the class override and register text.
#include "tqcpu.h"

#include <gtest/gtest.h>

namespace {

constexpr DWORD kTypeAmd64 = 0x21D8;
// CPUID leaf 1 bits.
constexpr DWORD kEdxFpu = 1u << 0, kEdxTsc = 1u << 4, kEdxCmov = 1u << 15, kEdxMmx = 1u << 23,
                kEdxSse = 1u << 25, kEdxSse2 = 1u << 26;
constexpr DWORD kEcxSse3 = 1u << 0, kEcxSsse3 = 1u << 9, kEcxSse41 = 1u << 19, kEcxSse42 = 1u << 20,
                kEcxAvx = 1u << 28;
constexpr DWORD kEcxOsxsave = 1u << 27, kLeaf7Avx2 = 1u << 5, kXcr0Ymm = 0x7;
constexpr DWORD kEdxAll = kEdxFpu | kEdxTsc | kEdxCmov | kEdxMmx | kEdxSse | kEdxSse2;
constexpr DWORD kEcxAll = kEcxSse3 | kEcxSsse3 | kEcxSse41 | kEcxSse42 | kEcxAvx;
constexpr DWORD kSseFamily = TQCPU_SSE2 | TQCPU_SSE3 | TQCPU_SSSE3 | TQCPU_SSE41 | TQCPU_SSE42;

bool ProbeRuns()
{
    return true;
}
bool ProbeRefused()
{
    return false;
}
bool ProbeMustNotRun()
{
    ADD_FAILURE() << "the SSE probe ran on a processor without SSE";
    return true;
}

struct ClassifyCase
{
    const char* what;
    DWORD processorType;
    tq::CpuIdLeaves leaves;
    tq::SseProbe probe;
    tq::CpuWords expected;
};

const ClassifyCase kClassifyCases[] = {
    {"modern x64: class stays 3, MMX and AVX never usable",
     kTypeAmd64,
     {13, kEcxAll, kEdxAll},
     ProbeRuns,
     {3 | TQCPU_CMOV | TQCPU_CMOVFPU | TQCPU_TSC | TQCPU_SSE | kSseFamily | TQCPU_FTZDAZ,
      3 | TQCPU_CMOV | TQCPU_CMOVFPU | TQCPU_TSC | TQCPU_MMX | TQCPU_SSE | kSseFamily | TQCPU_AVX,
      TQCPU_MMX | TQCPU_SSE | kSseFamily}},
    {"system refuses SSE: nothing SSE-based is claimed",
     kTypeAmd64,
     {13, kEcxAll, kEdxAll},
     ProbeRefused,
     {3 | TQCPU_CMOV | TQCPU_CMOVFPU | TQCPU_TSC,
      3 | TQCPU_CMOV | TQCPU_CMOVFPU | TQCPU_TSC | TQCPU_MMX | TQCPU_SSE | kSseFamily | TQCPU_AVX,
      TQCPU_MMX}},
    {"AVX2 with the 256-bit registers saved by the system is usable",
     kTypeAmd64,
     {13, kEcxAll | kEcxOsxsave, kEdxAll, kLeaf7Avx2, kXcr0Ymm},
     ProbeRuns,
     {3 | TQCPU_CMOV | TQCPU_CMOVFPU | TQCPU_TSC | TQCPU_SSE | kSseFamily | TQCPU_FTZDAZ |
          TQCPU_AVX2,
      3 | TQCPU_CMOV | TQCPU_CMOVFPU | TQCPU_TSC | TQCPU_MMX | TQCPU_SSE | kSseFamily | TQCPU_AVX |
          TQCPU_AVX2,
      TQCPU_MMX | TQCPU_SSE | kSseFamily | TQCPU_AVX2}},
    {"AVX2 on a system that saves only the 128-bit registers is not",
     kTypeAmd64,
     {13, kEcxAll | kEcxOsxsave, kEdxAll, kLeaf7Avx2, 0x3},
     ProbeRuns,
     {3 | TQCPU_CMOV | TQCPU_CMOVFPU | TQCPU_TSC | TQCPU_SSE | kSseFamily | TQCPU_FTZDAZ,
      3 | TQCPU_CMOV | TQCPU_CMOVFPU | TQCPU_TSC | TQCPU_MMX | TQCPU_SSE | kSseFamily | TQCPU_AVX |
          TQCPU_AVX2,
      TQCPU_MMX | TQCPU_SSE | kSseFamily}},
    {"AVX2 without OSXSAVE is not, whatever XCR0 would say",
     kTypeAmd64,
     {13, kEcxAll, kEdxAll, kLeaf7Avx2, kXcr0Ymm},
     ProbeRuns,
     {3 | TQCPU_CMOV | TQCPU_CMOVFPU | TQCPU_TSC | TQCPU_SSE | kSseFamily | TQCPU_FTZDAZ,
      3 | TQCPU_CMOV | TQCPU_CMOVFPU | TQCPU_TSC | TQCPU_MMX | TQCPU_SSE | kSseFamily | TQCPU_AVX |
          TQCPU_AVX2,
      TQCPU_MMX | TQCPU_SSE | kSseFamily}},
    {"AVX2 is not usable where the system refuses SSE",
     kTypeAmd64,
     {13, kEcxAll | kEcxOsxsave, kEdxAll, kLeaf7Avx2, kXcr0Ymm},
     ProbeRefused,
     {3 | TQCPU_CMOV | TQCPU_CMOVFPU | TQCPU_TSC,
      3 | TQCPU_CMOV | TQCPU_CMOVFPU | TQCPU_TSC | TQCPU_MMX | TQCPU_SSE | kSseFamily | TQCPU_AVX |
          TQCPU_AVX2,
      TQCPU_MMX}},
    {"486 without CPUID", PROCESSOR_INTEL_486, {}, ProbeMustNotRun, {1, 1, 0}},
    {"Pentium with CMOV but no FPU keeps class 2",
     PROCESSOR_INTEL_PENTIUM,
     {1, 0, kEdxCmov | kEdxMmx},
     ProbeMustNotRun,
     {2 | TQCPU_CMOV, 2 | TQCPU_CMOV | TQCPU_MMX, TQCPU_MMX}},
    {"SSE2 and SSE3 without SSE4",
     PROCESSOR_INTEL_PENTIUM,
     {2, kEcxSse3, kEdxFpu | kEdxCmov | kEdxSse | kEdxSse2},
     ProbeRuns,
     {3 | TQCPU_CMOV | TQCPU_CMOVFPU | TQCPU_SSE | TQCPU_SSE2 | TQCPU_SSE3 | TQCPU_FTZDAZ,
      3 | TQCPU_CMOV | TQCPU_CMOVFPU | TQCPU_SSE | TQCPU_SSE2 | TQCPU_SSE3,
      TQCPU_SSE | TQCPU_SSE2 | TQCPU_SSE3}},
    {"unknown processor type gives class 0", PROCESSOR_INTEL_IA64, {}, ProbeMustNotRun, {0, 0, 0}},
};

TEST(ClassifyCpu, WordsFollowChipAndSystem)
{
    for (const ClassifyCase& c : kClassifyCases)
    {
        SCOPED_TRACE(c.what);
        const tq::CpuWords words = tq::ClassifyCpu(c.processorType, c.leaves, c.probe);
        EXPECT_EQ(words.detected, c.expected.detected);
        EXPECT_EQ(words.chip, c.expected.chip);
        EXPECT_EQ(words.os, c.expected.os);
    }
}

unsigned CurrentMxcsr()
{
    unsigned mxcsr = 0;
    asm volatile("stmxcsr %0" : "=m"(mxcsr));
    return mxcsr;
}

// Every processor this runs on has SSE2, and the system runs it.
TEST(CpuDetection, ClaimsSseAndFlushesDenormalsOnTheDetectingThread)
{
    const DWORD detected = TqGetCPUSupport(0);
    EXPECT_TRUE(detected & TQCPU_SSE);
    EXPECT_TRUE(detected & TQCPU_FTZDAZ);
    EXPECT_EQ(CurrentMxcsr() & 0x8040u, 0x8040u);
    EXPECT_FALSE(detected & TQCPU_MMX);
    EXPECT_FALSE(detected & TQCPU_AVX);
    EXPECT_TRUE(TqGetOSSupport(0) & TQCPU_SSE2);

    SYSTEM_INFO info = {};
    GetSystemInfo(&info);
    EXPECT_EQ(TqGetProcessorCount(), info.dwNumberOfProcessors);
}

// Tests of the allow mask put it back as they found it; the class override cannot be taken back
// and is tested last.
class AllowMask : public testing::Test
{
protected:
    void TearDown() override { TqAllowCPUSupport(0xFFFFFFFFu); }
    static DWORD Flags(DWORD support) { return support & ~TQCPU_CLASS; }
};

TEST_F(AllowMask, DisallowHidesFromCpuSupportButNotFromOsSupport)
{
    ASSERT_TRUE(TqGetCPUSupport(0) & TQCPU_SSE2);
    EXPECT_TRUE(TqDisallowCPUSupport(TQCPU_SSE2));
    EXPECT_FALSE(TqGetCPUSupport(0) & TQCPU_SSE2);
    EXPECT_TRUE(TqGetOSSupport(0) & TQCPU_SSE2);
    EXPECT_TRUE(TqAllowCPUSupport(TQCPU_SSE2));
    EXPECT_TRUE(TqGetCPUSupport(0) & TQCPU_SSE2);
}

TEST_F(AllowMask, MaskSelectsBits)
{
    EXPECT_EQ(Flags(TqGetCPUSupport(TQCPU_SSE2 | TQCPU_AVX)), TQCPU_SSE2);
    EXPECT_EQ(TqGetOSSupport(TQCPU_SSE | TQCPU_CMOV), TQCPU_SSE);
}

TEST_F(AllowMask, OnlyAllowReplacesTheSimdBitsAndRefusesOthers)
{
    const DWORD before = TqGetCPUSupport(0);
    EXPECT_FALSE(TqOnlyAllowCPUSupport(0x1000));
    EXPECT_FALSE(TqOnlyAllowCPUSupport(TQCPU_SSE | TQCPU_CLASS));
    EXPECT_EQ(TqGetCPUSupport(0), before);

    EXPECT_TRUE(TqOnlyAllowCPUSupport(TQCPU_SSE));
    EXPECT_EQ(Flags(TqGetCPUSupport(TQCPU_ALLOWABLE)), TQCPU_SSE);
    // Bits outside the SIMD range stay as they were.
    EXPECT_EQ(Flags(TqGetCPUSupport(~TQCPU_ALLOWABLE)), Flags(before) & ~TQCPU_ALLOWABLE);
}

TEST_F(AllowMask, ClassBySupportTakesTheClassFromTheOverrideOnly)
{
    TqDisallowCPUSupport(TQCPU_SSE2);
    TqSetCPUClassBySupport();
    EXPECT_EQ(TqGetCPUSupport(0) & TQCPU_CLASS, 5u);
    // The override stands even when the mask asks for nothing of it.
    EXPECT_EQ(TqGetCPUSupport(TQCPU_SSE), TQCPU_SSE | 5u);

    TqAllowCPUSupport(TQCPU_SSE2);
    TqSetCPUClassBySupport();
    // Detection gives class 3 here; 3 | 6 would show that the detected class leaked through.
    EXPECT_EQ(TqGetCPUSupport(0) & TQCPU_CLASS, 6u);
    EXPECT_EQ(TqGetCPUSupport(15), 6u);

    // MMX is never usable, so without SSE there is no class at all.
    TqDisallowCPUSupport(TQCPU_SSE | TQCPU_SSE2);
    TqSetCPUClassBySupport();
    EXPECT_EQ(TqGetCPUSupport(0) & TQCPU_CLASS, 0u);
    TqAllowCPUSupport(0xFFFFFFFFu);
    TqSetCPUClassBySupport();
}

TEST(CpuText, RegisterBytesStopAtTheFirstUnprintable)
{
    wchar_t text[5];
    EXPECT_STREQ(TqFourCCToStringCPU(0x756E6547, text), L"Genu");
    EXPECT_STREQ(TqFourCCToStringCPU(0x20202041, text), L"A   ");
    EXPECT_STREQ(TqFourCCToStringCPU(0x41004241, text), L"AB");
    EXPECT_STREQ(TqFourCCToStringCPU(0x4141417F, text), L"");
    EXPECT_STREQ(TqFourCCToStringCPU(0x1F, text), L"");
    EXPECT_EQ(TqFourCCToStringCPU(0x41, nullptr), nullptr);
}

TEST(CpuText, VendorAndBrandAreTrimmed)
{
    wchar_t vendor[13];
    tq::CpuVendorString(vendor);
    EXPECT_EQ(wcslen(vendor), 12u) << vendor;

    wchar_t brand[49];
    tq::CpuBrandString(brand);
    const size_t length = wcslen(brand);
    ASSERT_GT(length, 0u);
    EXPECT_NE(brand[0], L' ');
    EXPECT_NE(brand[length - 1], L' ');
}

} // namespace
