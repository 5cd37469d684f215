// Typed look-up of an exported function.
#pragma once

#include <windows.h>

namespace tq {

// The detour through void(*)() is the sanctioned way to change a function pointer's type.
template <class F>
F GetProc(HMODULE module, const char* name)
{
    return reinterpret_cast<F>(reinterpret_cast<void (*)()>(GetProcAddress(module, name)));
}

} // namespace tq
