// Tests for the structured exception guard: real faults caught, codes passed on between nested
// guards, plug-ins' own handlers left alone, the floating-point state put back, in code with and
// without unwind data.
#include "pluginguard.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <iterator>
#include <stdexcept>
#include <string>

using tqvst::Guarded;
using tqvst::GuardVerdict;

extern "C" {
// plugincode_<arch>.S
void tq_test_call_without_unwind_info(void (*fn)(void*), void* arg);
void tq_test_divide_sse();
void tq_test_divide_x87();
int tq_test_plugin_try(void (*fn)(void*), void* arg, DWORD code);
}

#ifdef _WIN64
extern "C" const char tq_test_plugin_landing[];

// The filter and handler of tq_test_plugin_try's scope, as a plug-in's compiler would generate
// them.
extern "C" EXCEPTION_DISPOSITION tq_test_plugin_handler(EXCEPTION_RECORD* record,
                                                        void* establisherFrame, CONTEXT*, void*)
{
    const DWORD taken = *reinterpret_cast<const DWORD*>(static_cast<char*>(establisherFrame) + 32);
    if (record->ExceptionCode != taken) return ExceptionContinueSearch;
    CONTEXT scratch;
    RtlUnwindEx(establisherFrame, const_cast<char*>(tq_test_plugin_landing), record, nullptr,
                &scratch, nullptr);
    return ExceptionContinueSearch;
}
#else
extern "C" [[noreturn]] void tq_test_plugin_unwind(void* registration, EXCEPTION_RECORD* record);

extern "C" EXCEPTION_DISPOSITION __cdecl tq_test_plugin_handler(EXCEPTION_RECORD* record,
                                                                void* registration, CONTEXT*, void*)
{
    if (IS_UNWINDING(record->ExceptionFlags) ||
        record->ExceptionCode != static_cast<DWORD*>(registration)[2])
        return ExceptionContinueSearch;
    tq_test_plugin_unwind(registration, record);
}
#endif

namespace {

constexpr DWORD kAbort = 0xE0000001; // what the load worker raises in a hijacked thread
constexpr DWORD kPluginCode = 0xE0000042;
// An unmasked SSE fault comes as this from Windows x64 and from 32-bit Wine, as a float divide by
// zero from 64-bit Wine.
constexpr DWORD kFloatMultipleTraps = 0xC00002B5;

// Calls a plug-in's code directly or through a frame without unwind data.
enum class Path
{
    Direct,
    WithoutUnwindInfo,
};
constexpr Path kPaths[] = {Path::Direct, Path::WithoutUnwindInfo};

const char* Name(Path path)
{
    return path == Path::Direct ? "direct" : "through a frame without unwind data";
}

template <class F>
void RunVia(Path path, F code)
{
    if (path == Path::Direct)
        code();
    else
        tq_test_call_without_unwind_info([](void* p) { (*static_cast<F*>(p))(); }, &code);
}

__attribute__((noinline)) void ReadNull()
{
    volatile int* volatile address = nullptr;
    [[maybe_unused]] const int value = *address;
}

__attribute__((noinline)) void WriteNull()
{
    volatile int* volatile address = nullptr;
    *address = 1;
}

__attribute__((noinline)) void DivideIntegerByZero()
{
    volatile int dividend = 1; // with a constant 1 the compiler needs no division
    volatile int zero = 0;
    [[maybe_unused]] volatile int quotient = dividend / zero;
}

void RaiseAbort()
{
    RaiseException(kAbort, 0, 0, nullptr);
}

// What a filter was shown; it passes on `passOn` and stops everything else.
struct Recorder
{
    DWORD passOn = 0;
    int* sequence = nullptr; // shared between the filters of one test, to see their order
    int calls = 0;
    int order = 0;
    EXCEPTION_RECORD seen{};
};

GuardVerdict Record(EXCEPTION_POINTERS* pointers, void* context)
{
    Recorder& recorder = *static_cast<Recorder*>(context);
    ++recorder.calls;
    recorder.seen = *pointers->ExceptionRecord;
    if (recorder.sequence) recorder.order = ++*recorder.sequence;
    return pointers->ExceptionRecord->ExceptionCode == recorder.passOn ? GuardVerdict::PassOn
                                                                       : GuardVerdict::Stop;
}

struct Fault
{
    const char* name;
    void (*raise)();
    DWORD code;
    DWORD otherCode;          // accepted instead of code
    ULONG_PTR accessKind = 2; // for access violations: 0 read, 1 write
};

const Fault kFaults[] = {
    {"read of address 0", ReadNull, EXCEPTION_ACCESS_VIOLATION, EXCEPTION_ACCESS_VIOLATION, 0},
    {"write to address 0", WriteNull, EXCEPTION_ACCESS_VIOLATION, EXCEPTION_ACCESS_VIOLATION, 1},
    {"integer divide by zero", DivideIntegerByZero, EXCEPTION_INT_DIVIDE_BY_ZERO,
     EXCEPTION_INT_DIVIDE_BY_ZERO},
    {"SSE divide by zero", tq_test_divide_sse, EXCEPTION_FLT_DIVIDE_BY_ZERO, kFloatMultipleTraps},
    {"x87 divide by zero", tq_test_divide_x87, EXCEPTION_FLT_DIVIDE_BY_ZERO,
     EXCEPTION_FLT_DIVIDE_BY_ZERO},
};

TEST(PluginGuard, ReturnsTrueWithoutAskingTheFilterWhenTheBodyReturns)
{
    Recorder recorder;
    int runs = 0;
    DWORD code = 0x12345678;
    EXPECT_TRUE(Guarded([&] { ++runs; }, Record, &recorder, &code));
    EXPECT_EQ(runs, 1);
    EXPECT_EQ(recorder.calls, 0);
    EXPECT_EQ(code, 0x12345678u);
}

TEST(PluginGuard, CatchesHardwareFaults)
{
    for (const Fault& fault : kFaults)
    {
        for (Path path : kPaths)
        {
            SCOPED_TRACE(std::string(fault.name) + ", " + Name(path));
            Recorder recorder;
            DWORD code = 0;
            EXPECT_FALSE(Guarded([&] { RunVia(path, fault.raise); }, Record, &recorder, &code));
            EXPECT_TRUE(code == fault.code || code == fault.otherCode) << std::hex << code;
            EXPECT_EQ(recorder.calls, 1);
            EXPECT_EQ(recorder.seen.ExceptionCode, code);
            if (fault.code == EXCEPTION_ACCESS_VIOLATION)
            {
                ASSERT_EQ(recorder.seen.NumberParameters, 2u);
                EXPECT_EQ(recorder.seen.ExceptionInformation[0], fault.accessKind);
                EXPECT_EQ(recorder.seen.ExceptionInformation[1], 0u);
            }
        }
    }
}

TEST(PluginGuard, CatchesAFaultBeneathCppFramesWithLocalObjects)
{
    Recorder recorder;
    DWORD code = 0;
    EXPECT_FALSE(Guarded(
        [&] {
            const std::string local(100, 'x');
            WriteNull();
        },
        Record, &recorder, &code));
    EXPECT_EQ(code, static_cast<DWORD>(EXCEPTION_ACCESS_VIOLATION));
    EXPECT_TRUE(Guarded([] {}, Record, &recorder));
}

TEST(PluginGuard, ReportsOtherRaisedCodesWithTheirArguments)
{
    const ULONG_PTR arguments[] = {7, 0xFEED};
    for (Path path : kPaths)
    {
        SCOPED_TRACE(Name(path));
        Recorder recorder;
        DWORD code = 0;
        auto raise = [&] { RaiseException(kPluginCode, EXCEPTION_NONCONTINUABLE, 2, arguments); };
        EXPECT_FALSE(Guarded([&] { RunVia(path, raise); }, Record, &recorder, &code));
        EXPECT_EQ(code, kPluginCode);
        EXPECT_EQ(recorder.seen.ExceptionFlags & EXCEPTION_NONCONTINUABLE,
                  static_cast<DWORD>(EXCEPTION_NONCONTINUABLE));
        ASSERT_EQ(recorder.seen.NumberParameters, 2u);
        EXPECT_EQ(recorder.seen.ExceptionInformation[0], 7u);
        EXPECT_EQ(recorder.seen.ExceptionInformation[1], 0xFEEDu);
    }
}

// The x87 and SSE control state the guard must bring back.
struct FloatingPointState
{
    uint16_t x87Control;
    uint16_t x87Status;
    uint16_t x87Tags;
    uint32_t mxcsr;
};

FloatingPointState ReadFloatingPointState()
{
    struct
    {
        uint16_t control, unused1, status, unused2, tags, unused3;
        uint32_t pointers[4];
    } environment;
    uint32_t mxcsr;
    // fnstenv masks every x87 exception; fldenv puts the control word back.
    asm volatile("fnstenv %0\n\tfldenv %0\n\tstmxcsr %1" : "=m"(environment), "=m"(mxcsr));
    return {environment.control, environment.status, environment.tags, mxcsr};
}

void WriteFloatingPointControl(uint16_t x87, uint32_t mxcsr)
{
    asm volatile("fninit\n\tfldcw %0\n\tldmxcsr %1" : : "m"(x87), "m"(mxcsr));
}

TEST(PluginGuard, PutsTheFloatingPointControlBackAfterACaughtFault)
{
    const FloatingPointState host = ReadFloatingPointState();
    // Unusual but valid: truncating, double precision, flush to zero, denormals as zero; plus a
    // stale SSE precision flag that must not come back.
    constexpr uint16_t kX87 = 0x0E7F;
    constexpr uint32_t kMxcsr = 0x9FC0;
    for (const Fault& fault : {kFaults[3], kFaults[4]})
    {
        for (Path path : kPaths)
        {
            SCOPED_TRACE(std::string(fault.name) + ", " + Name(path));
            WriteFloatingPointControl(kX87, kMxcsr | 0x20);
            Recorder recorder;
            EXPECT_FALSE(Guarded([&] { RunVia(path, fault.raise); }, Record, &recorder));
            const FloatingPointState after = ReadFloatingPointState();
            EXPECT_EQ(after.x87Control, kX87);
            EXPECT_EQ(after.mxcsr, kMxcsr);
            EXPECT_EQ(after.x87Status, 0) << "pending x87 exception or stack left behind";
            EXPECT_EQ(after.x87Tags, 0xFFFF) << "x87 registers left in use";
        }
    }

    tqvst::ResetFloatingPoint();
    const FloatingPointState reset = ReadFloatingPointState();
    EXPECT_EQ(reset.x87Control, 0x27F);
    EXPECT_EQ(reset.mxcsr, 0x1F80u);
    WriteFloatingPointControl(host.x87Control, host.mxcsr);
}

// Where the inner of two nested guards sits: what lies between it and the outer guard, and between
// it and the code that raises.
struct Nesting
{
    Path toInner;
    Path toRaise;
};

// Raises kAbort inside an inner guard that passes it on; expects the outer guard to stop it.
void ExpectAbortReachesOuterGuard(const Nesting& nesting)
{
    int sequence = 0;
    Recorder inner{kAbort, &sequence};
    Recorder outer{0, &sequence};
    bool innerReturned = false;
    auto innerGuard = [&] {
        Guarded([&] { RunVia(nesting.toRaise, RaiseAbort); }, Record, &inner);
        innerReturned = true;
    };
    DWORD code = 0;
    EXPECT_FALSE(Guarded([&] { RunVia(nesting.toInner, innerGuard); }, Record, &outer, &code));
    EXPECT_EQ(code, kAbort);
    EXPECT_FALSE(innerReturned);
    EXPECT_EQ(inner.calls, 1);
    EXPECT_EQ(inner.order, 1);
    EXPECT_EQ(outer.calls, 1);
    EXPECT_EQ(outer.order, 2);
}

// A fault where only the thread's stack of guards can find the guard: fails if a dead guard is left
// on it.
void ExpectLoneGuardCatchesFaultWithoutUnwindInfo()
{
    Recorder recorder;
    DWORD code = 0;
    EXPECT_FALSE(
        Guarded([] { RunVia(Path::WithoutUnwindInfo, WriteNull); }, Record, &recorder, &code));
    EXPECT_EQ(code, static_cast<DWORD>(EXCEPTION_ACCESS_VIOLATION));
    EXPECT_EQ(recorder.calls, 1);
}

TEST(PluginGuard, InnerGuardPassesAnAbortOnToTheOuterGuard)
{
    for (Path toInner : kPaths)
    {
        for (Path toRaise : kPaths)
        {
            SCOPED_TRACE(std::string("to inner guard ") + Name(toInner) + ", raised " +
                         Name(toRaise));
            ExpectAbortReachesOuterGuard({toInner, toRaise});
            ExpectLoneGuardCatchesFaultWithoutUnwindInfo();
        }
    }
}

__attribute__((noinline)) void ThrowPluginError()
{
    throw std::runtime_error("the plug-in's own");
}

TEST(PluginGuard, LeavesThePluginsOwnCppExceptionsAlone)
{
    for (Path path : kPaths)
    {
        SCOPED_TRACE(Name(path));
        Recorder recorder;
        bool caught = false;
        auto plugin = [&] {
            try
            {
                ThrowPluginError();
            }
            catch (const std::runtime_error&)
            {
                caught = true;
            }
        };
        EXPECT_TRUE(Guarded([&] { RunVia(path, plugin); }, Record, &recorder));
        EXPECT_TRUE(caught);
        EXPECT_EQ(recorder.calls, 0);
    }
}

TEST(PluginGuard, LeavesThePluginsOwnStructuredHandlersAlone)
{
    for (Path path : kPaths)
    {
        SCOPED_TRACE(Name(path));
        int scope = -1;
        DWORD taken = 0;
        auto plugin = [&] {
            scope = tq_test_plugin_try([](void*) { WriteNull(); }, nullptr, taken);
        };

        Recorder recorder;
        taken = EXCEPTION_ACCESS_VIOLATION;
        EXPECT_TRUE(Guarded([&] { RunVia(path, plugin); }, Record, &recorder));
        EXPECT_EQ(scope, 0) << "the plug-in's handler did not get its fault";
        EXPECT_EQ(recorder.calls, 0);

        // A plug-in handler that declines leaves the fault to the guard.
        taken = kPluginCode;
        DWORD code = 0;
        EXPECT_FALSE(Guarded([&] { RunVia(path, plugin); }, Record, &recorder, &code));
        EXPECT_EQ(code, static_cast<DWORD>(EXCEPTION_ACCESS_VIOLATION));
        EXPECT_EQ(recorder.calls, 1);
    }
}

TEST(PluginGuard, ForgetsAGuardThatAPluginHandlerUnwindsPast)
{
    Recorder inner{kPluginCode};
    Recorder outer;
    int scope = -1;
    DWORD code = 0;
    EXPECT_FALSE(Guarded(
        [&] {
            // Plug-in code calls the host, which calls a plug-in under a guard that passes the
            // plug-in's own exception on to the plug-in's own handler further out.
            auto hostCall = [&] {
                Guarded([] { RaiseException(kPluginCode, 0, 0, nullptr); }, Record, &inner);
            };
            scope = tq_test_plugin_try([](void* p) { (*static_cast<decltype(hostCall)*>(p))(); },
                                       &hostCall, kPluginCode);
            RunVia(Path::WithoutUnwindInfo, WriteNull);
        },
        Record, &outer, &code));
    EXPECT_EQ(scope, 0);
    EXPECT_EQ(inner.calls, 1);
    EXPECT_EQ(outer.calls, 1);
    EXPECT_EQ(code, static_cast<DWORD>(EXCEPTION_ACCESS_VIOLATION));
}

TEST(PluginGuard, SurvivesAThousandFaultsInARow)
{
    Recorder recorder;
    int caught = 0;
    for (int i = 0; i < 1000; ++i)
    {
        const Path path = kPaths[i % 2];
        caught += !Guarded([&] { RunVia(path, WriteNull); }, Record, &recorder);
    }
    EXPECT_EQ(caught, 1000);
    EXPECT_EQ(recorder.calls, 1000);
    ExpectAbortReachesOuterGuard({Path::WithoutUnwindInfo, Path::WithoutUnwindInfo});
    EXPECT_TRUE(Guarded([] {}, Record, &recorder));
}

// Faults of every kind, in turn, on one thread.
struct FaultLoop
{
    HANDLE start = nullptr;
    int rounds = 0;
    int caught = 0;
    int filterCalls = 0;
};

DWORD WINAPI RunFaultLoop(void* parameter)
{
    FaultLoop& loop = *static_cast<FaultLoop*>(parameter);
    WaitForSingleObject(loop.start, INFINITE);
    Recorder recorder;
    for (int i = 0; i < loop.rounds; ++i)
    {
        const Path path = kPaths[i % 2];
        const Fault& fault = kFaults[i % std::size(kFaults)];
        loop.caught += !Guarded([&] { RunVia(path, fault.raise); }, Record, &recorder);

        Recorder inner{kAbort};
        auto innerGuard = [&] { Guarded([] { RaiseAbort(); }, Record, &inner); };
        DWORD code = 0;
        loop.caught += !Guarded([&] { RunVia(path, innerGuard); }, Record, &recorder, &code);
        loop.caught += code == kAbort && inner.calls == 1;
    }
    loop.filterCalls = recorder.calls;
    return 0;
}

TEST(PluginGuard, GuardsThreadsIndependently)
{
    const HANDLE start = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    ASSERT_NE(start, nullptr);
    FaultLoop loops[3];
    HANDLE threads[2];
    for (FaultLoop& loop : loops)
        loop = {start, 200};
    for (int i = 0; i < 2; ++i)
    {
        threads[i] = CreateThread(nullptr, 0, RunFaultLoop, &loops[i], 0, nullptr);
        ASSERT_NE(threads[i], nullptr);
    }
    SetEvent(start);
    RunFaultLoop(&loops[2]);
    EXPECT_EQ(WaitForMultipleObjects(2, threads, TRUE, 60000), WAIT_OBJECT_0);
    for (const FaultLoop& loop : loops)
    {
        EXPECT_EQ(loop.caught, 3 * loop.rounds);
        EXPECT_EQ(loop.filterCalls, 2 * loop.rounds);
    }
    for (HANDLE thread : threads)
        CloseHandle(thread);
    CloseHandle(start);
}

} // namespace
