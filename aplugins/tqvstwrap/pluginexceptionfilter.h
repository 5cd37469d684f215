// The verdict every guard around plug-in code applies to an exception.
#pragma once

#include "pluginguard.h"

namespace tqvst {

// The load worker raises this inside a hijacked thread; it must pass every plug-in guard.
constexpr DWORD kAbortException = 0xE0000001;

GuardVerdict PluginExceptionFilter(EXCEPTION_POINTERS* pointers, void* context);

// Runs body inside a guard with PluginExceptionFilter; true when it returned normally.
template <class F>
bool CallPlugin(F&& body) noexcept
{
    return Guarded(static_cast<F&&>(body), PluginExceptionFilter);
}

} // namespace tqvst
