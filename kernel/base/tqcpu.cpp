// Processor detection through CPUID and a guarded first SSE instruction, and the allow mask.
#include "tqcpu.h"

#include <intrin.h>

#include <atomic>
#include <cwchar>
#include <cwctype>

// The SSE probe: stores MXCSR to *scratch, turns on flush-to-zero and denormals-are-zero and loads
// it back, then returns 1. It never touches the stack, so a fault inside it can be answered by
// returning 0 to its caller straight from the exception handler.
extern "C" int TqSseProbe(unsigned* scratch) asm("tq_sse_probe");
extern "C" const char tqSseProbeEnd[] asm("tq_sse_probe_end");
#if defined(_WIN64)
asm(R"(
    .text
    .globl tq_sse_probe
tq_sse_probe:
    stmxcsr (%rcx)
    orl $0x8040, (%rcx)
    ldmxcsr (%rcx)
    movl $1, %eax
    ret
    .globl tq_sse_probe_end
tq_sse_probe_end:
)");
#else
asm(R"(
    .text
    .globl tq_sse_probe
tq_sse_probe:
    movl 4(%esp), %ecx
    stmxcsr (%ecx)
    orl $0x8040, (%ecx)
    ldmxcsr (%ecx)
    movl $1, %eax
    ret
    .globl tq_sse_probe_end
tq_sse_probe_end:
)");
#endif

namespace tq {
namespace {

// CPUID leaf 1 bits and the support bits they give.
struct FeatureBit
{
    DWORD cpuidBit;
    DWORD support;
};
constexpr FeatureBit kEdxFeatures[] = {
    {1u << 23, TQCPU_MMX},  {1u << 25, TQCPU_SSE}, {1u << 26, TQCPU_SSE2},
    {1u << 15, TQCPU_CMOV}, {1u << 4, TQCPU_TSC},
};
constexpr FeatureBit kEcxFeatures[] = {
    {1u << 0, TQCPU_SSE3},   {1u << 9, TQCPU_SSSE3}, {1u << 19, TQCPU_SSE41},
    {1u << 20, TQCPU_SSE42}, {1u << 28, TQCPU_AVX},
};
constexpr DWORD kEdxFpu = 1u << 0;
constexpr DWORD kEcxOsxsave = 1u << 27;
constexpr DWORD kLeaf7EbxAvx2 = 1u << 5;
// XCR0: the system saves the SSE and the upper halves of the AVX registers on a switch.
constexpr DWORD kXcr0SseAndYmm = 0x6;
// Features a system must have confirmed SSE for; each in the chip and OS words may be used.
constexpr DWORD kSseFamily = TQCPU_SSE2 | TQCPU_SSE3 | TQCPU_SSSE3 | TQCPU_SSE41 | TQCPU_SSE42;
// Features that need no help from the system.
constexpr DWORD kPlainFeatures = TQCPU_CMOV | TQCPU_CMOVFPU | TQCPU_TSC;

constexpr DWORD kProcessorTypeAmd64 = 0x21D8; // PROCESSOR_AMD_X8664

struct CpuState
{
    CpuWords words;
    DWORD processorCount = 0;
};
CpuState g_cpu;
INIT_ONCE g_cpuOnce = INIT_ONCE_STATIC_INIT;

std::atomic<DWORD> g_allowMask{0xFFFFFFFFu};
std::atomic<DWORD> g_classOverride{0};

CpuIdLeaves ReadCpuId(DWORD processorType)
{
    CpuIdLeaves leaves;
    if (processorType != PROCESSOR_INTEL_PENTIUM && processorType != kProcessorTypeAmd64)
        return leaves;
    int regs[4] = {};
    __cpuid(regs, 0);
    leaves.maxLeaf = static_cast<DWORD>(regs[0]);
    if (leaves.maxLeaf < 1) return leaves;
    __cpuid(regs, 1);
    leaves.leaf1Ecx = static_cast<DWORD>(regs[2]);
    leaves.leaf1Edx = static_cast<DWORD>(regs[3]);
    // XGETBV is an illegal instruction unless the system has turned on OSXSAVE.
    if (leaves.leaf1Ecx & kEcxOsxsave)
    {
        unsigned low = 0, high = 0;
        __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
        leaves.xcr0 = low;
    }
    if (leaves.maxLeaf < 7) return leaves;
    __cpuidex(regs, 7, 0);
    leaves.leaf7Ebx = static_cast<DWORD>(regs[1]);
    return leaves;
}

// Answers an illegal instruction inside the probe as if the probe had returned 0.
LONG CALLBACK SseProbeHandler(EXCEPTION_POINTERS* pointers)
{
    if (pointers->ExceptionRecord->ExceptionCode != STATUS_ILLEGAL_INSTRUCTION)
        return EXCEPTION_CONTINUE_SEARCH;
    const auto at = reinterpret_cast<ULONG_PTR>(pointers->ExceptionRecord->ExceptionAddress);
    const auto begin = reinterpret_cast<ULONG_PTR>(&TqSseProbe);
    const auto end = reinterpret_cast<ULONG_PTR>(tqSseProbeEnd);
    if (at < begin || at >= end) return EXCEPTION_CONTINUE_SEARCH;
    CONTEXT* context = pointers->ContextRecord;
#if defined(_WIN64)
    context->Rip = *reinterpret_cast<DWORD64*>(context->Rsp);
    context->Rsp += sizeof(DWORD64);
    context->Rax = 0;
#else
    context->Eip = *reinterpret_cast<DWORD*>(context->Esp);
    context->Esp += sizeof(DWORD);
    context->Eax = 0;
#endif
    return EXCEPTION_CONTINUE_EXECUTION;
}

// The kernel has no crash reporter to step aside, so the probe brings its own guard: a vectored
// handler that only ever answers for the probe's own instructions.
bool RunSseProbe()
{
    PVOID handler = AddVectoredExceptionHandler(1, SseProbeHandler);
    if (!handler) return false;
    unsigned scratch = 0;
    const bool ran = TqSseProbe(&scratch) != 0;
    RemoveVectoredExceptionHandler(handler);
    return ran;
}

BOOL CALLBACK DetectOnce(INIT_ONCE*, void*, void**)
{
    SYSTEM_INFO info = {};
    GetSystemInfo(&info);
    g_cpu.processorCount = info.dwNumberOfProcessors;
    g_cpu.words = ClassifyCpu(info.dwProcessorType, ReadCpuId(info.dwProcessorType), RunSseProbe);
    return TRUE;
}

const CpuState& Cpu()
{
    DetectCpu();
    return g_cpu;
}

DWORD MaskOrAll(DWORD mask)
{
    return mask ? mask : 0xFFFFFFFFu;
}

// Register bytes as text: a byte outside 32 to 126 ends it.
void AppendRegister(DWORD value, wchar_t*& out)
{
    for (int i = 0; i < 4; ++i)
    {
        const unsigned byte = (value >> (8 * i)) & 0xFF;
        if (byte < 32 || byte > 126) return;
        *out++ = static_cast<wchar_t>(byte);
    }
}

// Registers as text by the same rule, trimmed: the first unprintable byte ends the whole text.
template <size_t Count>
void RegistersToText(const DWORD (&registers)[Count], wchar_t (&buffer)[4 * Count + 1])
{
    wchar_t* out = buffer;
    for (DWORD value : registers)
    {
        wchar_t* before = out;
        AppendRegister(value, out);
        if (out - before < 4) break;
    }
    while (out > buffer && std::iswspace(out[-1]))
        --out;
    *out = L'\0';
    const wchar_t* first = buffer;
    while (*first && std::iswspace(*first))
        ++first;
    if (first != buffer) std::wmemmove(buffer, first, wcslen(first) + 1);
}

} // namespace

CpuWords ClassifyCpu(DWORD processorType, const CpuIdLeaves& leaves, SseProbe probe)
{
    DWORD processorClass = 0;
    if (processorType == PROCESSOR_INTEL_486)
        processorClass = 1;
    else if (processorType == PROCESSOR_INTEL_PENTIUM)
        processorClass = 2;

    CpuWords words;
    for (const FeatureBit& f : kEdxFeatures)
        if (leaves.leaf1Edx & f.cpuidBit) words.chip |= f.support;
    for (const FeatureBit& f : kEcxFeatures)
        if (leaves.leaf1Ecx & f.cpuidBit) words.chip |= f.support;
    if ((words.chip & TQCPU_CMOV) && (leaves.leaf1Edx & kEdxFpu))
    {
        words.chip |= TQCPU_CMOVFPU;
        processorClass = 3;
    }
    // AVX2 needs AVX beneath it, and a system that saves the 256-bit registers it writes;
    // without that a thread switch would corrupt them.
    if ((leaves.leaf7Ebx & kLeaf7EbxAvx2) && (words.chip & TQCPU_AVX)) words.chip |= TQCPU_AVX2;
    const bool ymmSaved =
        (leaves.leaf1Ecx & kEcxOsxsave) && (leaves.xcr0 & kXcr0SseAndYmm) == kXcr0SseAndYmm;
    words.os = words.chip & TQCPU_MMX;
    words.detected = words.chip & kPlainFeatures;

    if ((words.chip & TQCPU_SSE) && probe())
    {
        words.os |= TQCPU_SSE;
        words.detected |= TQCPU_SSE | TQCPU_FTZDAZ;
        // The classes above stop at 3, so today's processors stay at 3 here; the ladder still
        // reads as the classes are defined.
        if (processorClass == 4) processorClass = 5;
        words.os |= words.chip & kSseFamily;
        words.detected |= words.chip & words.os & kSseFamily;
        if (ymmSaved && (words.chip & TQCPU_AVX2))
        {
            words.os |= TQCPU_AVX2;
            words.detected |= TQCPU_AVX2;
        }
        if ((words.detected & TQCPU_SSE2) && processorClass == 5) processorClass = 6;
    }
    words.chip |= processorClass;
    words.detected |= processorClass;
    return words;
}

void DetectCpu()
{
    InitOnceExecuteOnce(&g_cpuOnce, DetectOnce, nullptr, nullptr);
}

void CpuVendorString(wchar_t (&buffer)[13])
{
    int regs[4] = {};
    __cpuid(regs, 0);
    const DWORD ordered[] = {static_cast<DWORD>(regs[1]), static_cast<DWORD>(regs[3]),
                             static_cast<DWORD>(regs[2])};
    RegistersToText(ordered, buffer);
}

void CpuBrandString(wchar_t (&buffer)[49])
{
    buffer[0] = L'\0';
    int regs[4] = {};
    __cpuid(regs, static_cast<int>(0x80000000u));
    if (static_cast<DWORD>(regs[0]) < 0x80000004u) return;
    DWORD brand[12] = {};
    for (int leaf = 0; leaf < 3; ++leaf)
    {
        __cpuid(regs, static_cast<int>(0x80000002u + leaf));
        for (int r = 0; r < 4; ++r)
            brand[leaf * 4 + r] = static_cast<DWORD>(regs[r]);
    }
    RegistersToText(brand, buffer);
}

} // namespace tq

using namespace tq;

TQKERNEL_API DWORD TqGetCPUSupport(DWORD mask)
{
    return (g_allowMask.load() & Cpu().words.detected & MaskOrAll(mask)) | g_classOverride.load();
}

TQKERNEL_API DWORD TqGetOSSupport(DWORD mask)
{
    return Cpu().words.os & MaskOrAll(mask);
}

TQKERNEL_API DWORD TqGetProcessorCount(void)
{
    return Cpu().processorCount;
}

TQKERNEL_API BOOL TqOnlyAllowCPUSupport(DWORD bits)
{
    if (bits & ~TQCPU_ALLOWABLE) return FALSE;
    DWORD allow = g_allowMask.load();
    while (!g_allowMask.compare_exchange_weak(allow, (allow & ~TQCPU_ALLOWABLE) | bits))
    {
    }
    return TRUE;
}

TQKERNEL_API BOOL TqDisallowCPUSupport(DWORD bits)
{
    g_allowMask.fetch_and(~bits);
    return TRUE;
}

TQKERNEL_API BOOL TqAllowCPUSupport(DWORD bits)
{
    g_allowMask.fetch_or(bits);
    return TRUE;
}

TQKERNEL_API void TqSetCPUClassBySupport(void)
{
    const DWORD allowed = g_allowMask.fetch_and(~TQCPU_CLASS) & Cpu().words.detected;
    DWORD processorClass = 0;
    if (allowed & TQCPU_SSE2)
        processorClass = 6;
    else if (allowed & TQCPU_SSE)
        processorClass = 5;
    else if (allowed & TQCPU_MMX)
        processorClass = 4;
    g_classOverride.store(processorClass);
}

TQKERNEL_API wchar_t* TqFourCCToStringCPU(DWORD value, wchar_t* buffer)
{
    if (!buffer) return nullptr;
    wchar_t* out = buffer;
    AppendRegister(value, out);
    *out = L'\0';
    return buffer;
}
