// Processor capabilities: the detected, chip and OS support words, and the allow mask over them.
#pragma once

#include "tqkernelapi.h"

// Bits shared by the three support words. The low four bits are a processor class, not flags.
#define TQCPU_CLASS 0x0000000Fu
#define TQCPU_MMX 0x00000010u
#define TQCPU_SSE 0x00000020u
#define TQCPU_SSE2 0x00000040u
#define TQCPU_SSE3 0x00000080u
#define TQCPU_SSSE3 0x00000100u
#define TQCPU_SSE41 0x00000200u
#define TQCPU_SSE42 0x00000400u
#define TQCPU_AVX 0x00000800u
#define TQCPU_CMOV 0x00001000u
#define TQCPU_CMOVFPU 0x00002000u
#define TQCPU_TSC 0x00004000u
// AVX2 with the system saving the 256-bit registers. Outside TQCPU_ALLOWABLE, so only
// TqDisallowCPUSupport and TqAllowCPUSupport move it.
#define TQCPU_AVX2 0x00008000u
#define TQCPU_FTZDAZ 0x00020000u // flush-to-zero and denormals-are-zero are in force
// The bits TqOnlyAllowCPUSupport may replace.
#define TQCPU_ALLOWABLE 0x00000FF0u

// What may be used: (allow mask & detected word & mask) | class override; a mask of 0 means all.
TQKERNEL_API DWORD TqGetCPUSupport(DWORD mask);
// What the system is confirmed to run, masked the same way; the allow mask does not apply.
TQKERNEL_API DWORD TqGetOSSupport(DWORD mask);
TQKERNEL_API DWORD TqGetProcessorCount(void);

// Replaces the TQCPU_ALLOWABLE bits of the allow mask with bits; FALSE, and no change, when bits
// has anything outside them.
TQKERNEL_API BOOL TqOnlyAllowCPUSupport(DWORD bits);
TQKERNEL_API BOOL TqDisallowCPUSupport(DWORD bits);
TQKERNEL_API BOOL TqAllowCPUSupport(DWORD bits);
// Takes the processor class from what is allowed instead of from detection: 6 with SSE2, 5 with
// SSE, 4 with MMX, else 0.
TQKERNEL_API void TqSetCPUClassBySupport(void);

// Writes the four bytes of a register, lowest first, as text into buffer (5 characters); a byte
// outside 32 to 126 ends the text. Returns buffer.
TQKERNEL_API wchar_t* TqFourCCToStringCPU(DWORD value, wchar_t* buffer);

#ifdef __cplusplus
namespace tq {

// The three words detection produces, and the processor count.
struct CpuWords
{
    DWORD detected = 0;
    DWORD chip = 0;
    DWORD os = 0;
};

// The registers of CPUID leaves 0, 1 and 7 that detection reads, and the extended control
// register XCR0; all zero when CPUID (or XGETBV) was not run.
struct CpuIdLeaves
{
    DWORD maxLeaf = 0;
    DWORD leaf1Ecx = 0;
    DWORD leaf1Edx = 0;
    DWORD leaf7Ebx = 0;
    DWORD xcr0 = 0;
};

// The first SSE instruction of the process, run only when the chip claims SSE: true when it ran,
// false when the system refused it as an illegal instruction.
using SseProbe = bool (*)();

// Detection from its inputs: GetSystemInfo's processor type, the CPUID leaves and the probe.
CpuWords ClassifyCpu(DWORD processorType, const CpuIdLeaves& leaves, SseProbe probe);

// Runs detection now (once per process); start-up calls it, the queries call it on first use.
void DetectCpu();

// The processor's vendor ("GenuineIntel") and brand strings, trimmed; empty when not reported.
void CpuVendorString(wchar_t (&buffer)[13]);
void CpuBrandString(wchar_t (&buffer)[49]);

} // namespace tq
#endif
