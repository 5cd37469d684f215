// The one door into untrusted code: a structured exception guard that works without __try.
#pragma once

#include <windows.h>

#include <type_traits>
#include <utility>

namespace tqvst {

// What a guard's filter decides about an exception raised inside the guarded code.
enum class GuardVerdict : LONG
{
    PassOn = EXCEPTION_CONTINUE_SEARCH, // let an outer guard (or the plug-in's own handler) see it
    Stop = EXCEPTION_EXECUTE_HANDLER,   // unwind to the guard; the guarded call reports the fault
};

using GuardFilter = GuardVerdict (*)(EXCEPTION_POINTERS* pointers, void* context);

// Calls body(arg). Returns true when body returned normally. Returns false when an exception
// raised inside it was stopped by filter: the stack is unwound back to the guard, the x87 and
// SSE control state is restored to what it was on entry, and *code (if given) receives the
// exception code. Exceptions the filter passes on continue to outer handlers; handlers the
// guarded code installs itself (C++ exceptions, its own SEH frames) see their exceptions first.
// Works when code without unwind information stands between the fault and the guard; the frames
// in between are then abandoned without their cleanups. Guards nest, per thread, and an exception
// passed on reaches the next guard out even across such code.
// The filter runs while the exception is dispatched, on the faulting thread, with the faulting
// code's floating-point state: it must be quick, raise nothing and do no floating-point arithmetic.
bool RunGuarded(void (*body)(void*), void* arg, GuardFilter filter, void* filterContext,
                DWORD* code = nullptr) noexcept;

// Convenience form for a callable; the callable must not throw C++ exceptions of its own (one
// thrown by GCC-compiled code that reaches a stopping guard ends the process: its unwinder only
// resumes at handlers of its own).
template <class F>
bool Guarded(F&& body, GuardFilter filter, void* filterContext = nullptr,
             DWORD* code = nullptr) noexcept
{
    using Body = std::remove_reference_t<F>;
    return RunGuarded([](void* p) { (*static_cast<Body*>(p))(); },
                      const_cast<void*>(static_cast<const void*>(&body)), filter, filterContext,
                      code);
}

// Puts the x87 and SSE units into the state the host runs with (x87 control 0x27F, MXCSR 0x1F80,
// no pending exceptions). The runtime's own reset covers only one of the two units.
void ResetFloatingPoint() noexcept;

} // namespace tqvst
