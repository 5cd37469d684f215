// Structured exception guards: guard frames, filter calls, the x64 fallback for broken unwind
// chains, FPU restore.
#include "pluginguard.h"

#include <cstdint>

namespace tqvst {
namespace {

// The part of a guard that lives on the guarded thread's stack while the body runs. The guard
// routines in pluginguard_<arch>.S use the fields up to stackPointer at fixed offsets (checked
// below).
struct GuardFrame
{
#ifndef _WIN64
    // The registration record linked at fs:[0]: how the dispatcher finds the guard.
    GuardFrame* sehNext;
    void* sehHandler;
#endif
    // The guard routine's stack pointer while the body runs: where a stop lands.
    uintptr_t stackPointer;
    GuardFilter filter;
    void* filterContext;
    DWORD code;
#ifdef _WIN64
    GuardFrame* outer; // the next guard out on the same thread
#endif
};

#ifdef _WIN64
static_assert(offsetof(GuardFrame, stackPointer) == 0);
#else
static_assert(offsetof(GuardFrame, sehNext) == 0 && offsetof(GuardFrame, sehHandler) == 4 &&
              offsetof(GuardFrame, stackPointer) == 8);
#endif

} // namespace
} // namespace tqvst

extern "C" {
// pluginguard_<arch>.S. Calls body(arg) inside the guard routine's frame; returns 1 when body
// returns, 0 when a stop lands in the frame.
int tq_guard_call(void* frame, void (*body)(void*), void* arg);
#ifdef _WIN64
// Entered, never called, with a GuardFrame* in rax: returns 0 from that frame's tq_guard_call.
void tq_guard_resume();
// The return address of the body's call inside tq_guard_call: how a stack walk recognises a
// guard.
extern const char tq_guard_return[];
#else
// Unwinds the registration records above frame, then returns 0 from frame's tq_guard_call.
[[noreturn]] void tq_guard_unwind(void* frame, EXCEPTION_RECORD* record);
#endif
}

namespace tqvst {
namespace {

// Asks the guard's filter; a guard that stops the exception remembers its code.
bool Stops(GuardFrame& frame, EXCEPTION_POINTERS* pointers)
{
    if (frame.filter(pointers, frame.filterContext) != GuardVerdict::Stop) return false;
    frame.code = pointers->ExceptionRecord->ExceptionCode;
    return true;
}

#ifdef _WIN64

// Where the thread's innermost guard is found (each frame links to the next one out), and the
// process's one registration of the fallback below.
class ThreadGuards
{
public:
    static const ThreadGuards& Get()
    {
        static const ThreadGuards guards;
        return guards;
    }

    GuardFrame* Innermost() const
    {
        // TlsGetValue clears the last error, and plug-in code may still read it.
        const DWORD error = GetLastError();
        auto* frame = static_cast<GuardFrame*>(TlsGetValue(slot_));
        SetLastError(error);
        return frame;
    }

    void SetInnermost(GuardFrame* frame) const { TlsSetValue(slot_, frame); }

    ThreadGuards(const ThreadGuards&) = delete;
    ThreadGuards& operator=(const ThreadGuards&) = delete;

private:
    ThreadGuards();
    ~ThreadGuards()
    {
        RemoveVectoredExceptionHandler(fallback_);
        TlsFree(slot_);
    }

    DWORD slot_;
    void* fallback_;
};

// Keeps a guard on its thread's stack of guards while the guarded call runs.
class ThreadGuardScope
{
public:
    explicit ThreadGuardScope(GuardFrame& frame) : guards_(ThreadGuards::Get()), frame_(frame)
    {
        frame_.outer = guards_.Innermost();
        guards_.SetInnermost(&frame_);
    }
    ~ThreadGuardScope() { guards_.SetInnermost(frame_.outer); }

    ThreadGuardScope(const ThreadGuardScope&) = delete;
    ThreadGuardScope& operator=(const ThreadGuardScope&) = delete;

private:
    const ThreadGuards& guards_;
    GuardFrame& frame_;
};

// The guard routine keeps its GuardFrame* at this offset from its establisher frame
// (pluginguard_x64.S).
constexpr uintptr_t kFrameSlot = 192;

GuardFrame& FrameAt(void* establisherFrame)
{
    return **reinterpret_cast<GuardFrame**>(static_cast<char*>(establisherFrame) + kFrameSlot);
}

// The lowest address of the thread's committed stack, from its TIB (read directly: GCC 12 warns
// about NtCurrentTeb's own read).
DWORD64 CurrentStackLimit()
{
    DWORD64 limit;
    asm("movq %%gs:%c1, %0" : "=r"(limit) : "i"(offsetof(NT_TIB, StackLimit)));
    return limit;
}

enum class Walk
{
    ReachesGuard, // the system's dispatcher will get to the guard by itself
    Broken,       // a frame without unwind data stands between
    Answered,     // visit ended the walk
};

// Follows the frames from `start` as the system's dispatcher does until it arrives at `target`'s
// guard routine, calling visit(dispatch) for each frame with an exception handler; visit returns
// false to end the walk. Only the frame the exception happened in may lack unwind data: it is then
// a leaf with its return address on top.
template <class Visit>
Walk WalkFrames(const CONTEXT& start, bool startMayBeLeaf, const GuardFrame& target, Visit&& visit)
{
    const DWORD64 stackLimit = CurrentStackLimit();
    CONTEXT context = start;
    for (bool leafAllowed = startMayBeLeaf;; leafAllowed = false)
    {
        if (context.Rsp == target.stackPointer)
            return context.Rip == reinterpret_cast<DWORD64>(tq_guard_return) ? Walk::ReachesGuard
                                                                             : Walk::Broken;
        if (context.Rsp > target.stackPointer || context.Rsp < stackLimit) return Walk::Broken;

        DISPATCHER_CONTEXT dispatch{};
        dispatch.ControlPc = context.Rip;
        dispatch.FunctionEntry = RtlLookupFunctionEntry(context.Rip, &dispatch.ImageBase, nullptr);
        const DWORD64 stackPointer = context.Rsp;
        if (dispatch.FunctionEntry)
        {
            dispatch.LanguageHandler = RtlVirtualUnwind(
                UNW_FLAG_EHANDLER, dispatch.ImageBase, context.Rip, dispatch.FunctionEntry,
                &context, &dispatch.HandlerData, &dispatch.EstablisherFrame, nullptr);
        }
        else if (leafAllowed)
        {
            dispatch.EstablisherFrame = context.Rsp;
            context.Rip = *reinterpret_cast<const DWORD64*>(context.Rsp);
            context.Rsp += sizeof(DWORD64);
        }
        else
        {
            return Walk::Broken;
        }
        if (context.Rsp <= stackPointer) return Walk::Broken;

        if (dispatch.LanguageHandler)
        {
            // Handlers may write to the context they get; the walk goes on from the real one.
            CONTEXT caller = context;
            dispatch.ContextRecord = &caller;
            if (!visit(dispatch)) return Walk::Answered;
        }
    }
}

constexpr auto kKeepWalking = [](DISPATCHER_CONTEXT&) { return true; };

// Does what the system's dispatcher would have done had the unwind chain not been broken between
// `start` and `target`: offer the exception to the handlers it could still reach, then to the
// guards from `target` outwards. Returns the guard that stops it; otherwise *answer tells what the
// handlers said.
GuardFrame* FinishDispatch(EXCEPTION_POINTERS* pointers, const CONTEXT& start, bool startMayBeLeaf,
                           GuardFrame& target, EXCEPTION_DISPOSITION* answer)
{
    *answer = ExceptionContinueSearch;
    WalkFrames(start, startMayBeLeaf, target, [&](DISPATCHER_CONTEXT& dispatch) {
        *answer = dispatch.LanguageHandler(pointers->ExceptionRecord,
                                           reinterpret_cast<void*>(dispatch.EstablisherFrame),
                                           pointers->ContextRecord, &dispatch);
        return *answer == ExceptionContinueSearch;
    });
    if (*answer != ExceptionContinueSearch) return nullptr;
    for (GuardFrame* frame = &target; frame; frame = frame->outer)
    {
        if (Stops(*frame, pointers)) return frame;
    }
    return nullptr;
}

// First in line for every exception, but acts only when the chain from the fault to the innermost
// guard is broken by code without unwind data; otherwise normal dispatch, plug-in handlers first,
// decides. A stop lands in the stopping guard directly: the abandoned frames' cleanups do not run.
LONG CALLBACK Fallback(EXCEPTION_POINTERS* pointers)
{
    GuardFrame* innermost = ThreadGuards::Get().Innermost();
    if (!innermost ||
        WalkFrames(*pointers->ContextRecord, true, *innermost, kKeepWalking) != Walk::Broken)
        return EXCEPTION_CONTINUE_SEARCH;

    EXCEPTION_DISPOSITION answer;
    GuardFrame* stopper =
        FinishDispatch(pointers, *pointers->ContextRecord, true, *innermost, &answer);
    if (!stopper)
        return answer == ExceptionContinueExecution ? EXCEPTION_CONTINUE_EXECUTION
                                                    : EXCEPTION_CONTINUE_SEARCH;
    CONTEXT& context = *pointers->ContextRecord;
    context.Rip = reinterpret_cast<DWORD64>(&tq_guard_resume);
    context.Rax = reinterpret_cast<DWORD64>(stopper);
    context.EFlags &= ~0x400u; // the faulting code may have left the direction flag set
    return EXCEPTION_CONTINUE_EXECUTION;
}

ThreadGuards::ThreadGuards()
    : slot_(TlsAlloc()), fallback_(AddVectoredExceptionHandler(0, &Fallback))
{
}

// The context in the function that called the guard routine whose frame this is.
CONTEXT CallerOf(const GuardFrame& frame)
{
    CONTEXT context{};
    context.Rip = reinterpret_cast<DWORD64>(tq_guard_return);
    context.Rsp = frame.stackPointer;
    DWORD64 imageBase = 0;
    PRUNTIME_FUNCTION function = RtlLookupFunctionEntry(context.Rip, &imageBase, nullptr);
    void* handlerData = nullptr;
    DWORD64 establisherFrame = 0;
    RtlVirtualUnwind(UNW_FLAG_NHANDLER, imageBase, context.Rip, function, &context, &handlerData,
                     &establisherFrame, nullptr);
    return context;
}

#endif // _WIN64

struct FloatingPointControl
{
    uint16_t x87;
    uint32_t sse;
};

constexpr uint32_t kSseExceptionFlags = 0x3F;

FloatingPointControl SaveFloatingPointControl()
{
    FloatingPointControl control;
    asm volatile("fnstcw %0\n\tstmxcsr %1" : "=m"(control.x87), "=m"(control.sse));
    return control;
}

// fninit first: a caught x87 fault leaves a pending exception that the next x87 instruction would
// raise again.
void LoadFloatingPointControl(uint16_t x87, uint32_t sse)
{
    asm volatile("fninit\n\tfldcw %0\n\tldmxcsr %1" : : "m"(x87), "m"(sse));
}

} // namespace

bool RunGuarded(void (*body)(void*), void* arg, GuardFilter filter, void* filterContext,
                DWORD* code) noexcept
{
    GuardFrame frame{};
    frame.filter = filter;
    frame.filterContext = filterContext;
    const FloatingPointControl control = SaveFloatingPointControl();
#ifdef _WIN64
    const ThreadGuardScope scope(frame);
#endif
    if (tq_guard_call(&frame, body, arg)) return true;
    LoadFloatingPointControl(control.x87, control.sse & ~kSseExceptionFlags);
    if (code) *code = frame.code;
    return false;
}

void ResetFloatingPoint() noexcept
{
    LoadFloatingPointControl(0x27F, 0x1F80);
}

} // namespace tqvst

using tqvst::GuardFrame;

#ifdef _WIN64

// The guard routine's handler for exceptions raised in the body (normal dispatch reached the guard)
// and for unwinds passing through it.
extern "C" EXCEPTION_DISPOSITION tq_guard_handler(EXCEPTION_RECORD* record, void* establisherFrame,
                                                  CONTEXT* context, DISPATCHER_CONTEXT*)
{
    GuardFrame& frame = tqvst::FrameAt(establisherFrame);
    if (IS_UNWINDING(record->ExceptionFlags))
    {
        // Someone's handler (or this guard) is unwinding the body: the guard no longer encloses the
        // thread.
        tqvst::ThreadGuards::Get().SetInnermost(frame.outer);
        return ExceptionContinueSearch;
    }

    EXCEPTION_POINTERS pointers{record, context};
    GuardFrame* stopper = tqvst::Stops(frame, &pointers) ? &frame : nullptr;
    if (!stopper && frame.outer)
    {
        // Passed on, but the way to the next guard out may be broken: then do the rest of the
        // dispatch here.
        const CONTEXT caller = tqvst::CallerOf(frame);
        if (tqvst::WalkFrames(caller, false, *frame.outer, tqvst::kKeepWalking) ==
            tqvst::Walk::Broken)
        {
            EXCEPTION_DISPOSITION answer;
            stopper = tqvst::FinishDispatch(&pointers, caller, false, *frame.outer, &answer);
            if (answer == ExceptionContinueExecution) return answer;
        }
    }
    if (!stopper) return ExceptionContinueSearch;

    // Unwind the body down to this guard, running the cleanups on the way, then land in the
    // stopping guard: this one, or an outer one past a broken chain (tq_guard_resume takes it in
    // rax).
    CONTEXT scratch;
    RtlUnwindEx(establisherFrame, reinterpret_cast<void*>(&tq_guard_resume), record, stopper,
                &scratch, nullptr);
    __builtin_unreachable();
}

#else

// The handler of the guard's registration record. It never returns ExceptionContinueExecution for a
// stop: the faulting instruction would run again.
extern "C" EXCEPTION_DISPOSITION __cdecl tq_guard_handler(EXCEPTION_RECORD* record,
                                                          void* registration, CONTEXT* context,
                                                          void*)
{
    if (IS_UNWINDING(record->ExceptionFlags)) return ExceptionContinueSearch;
    GuardFrame& frame = *static_cast<GuardFrame*>(registration);
    EXCEPTION_POINTERS pointers{record, context};
    if (!tqvst::Stops(frame, &pointers)) return ExceptionContinueSearch;
    tq_guard_unwind(&frame, record);
}

#endif
