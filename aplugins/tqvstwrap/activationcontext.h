// Activation of the program's own manifest around calls that must see it (plug-in loads, windows).
#pragma once

#include <windows.h>

namespace tqvst {

// Activates, for its lifetime, the manifest embedded in the module that holds this code, so
// plug-ins loaded in a host process see the same common-controls and proxy bindings as in the
// server. Does nothing when the module has no manifest.
class ScopedActivationContext
{
public:
    ScopedActivationContext() noexcept;
    ~ScopedActivationContext();
    ScopedActivationContext(const ScopedActivationContext&) = delete;
    ScopedActivationContext& operator=(const ScopedActivationContext&) = delete;

private:
    ULONG_PTR m_cookie = 0;
    bool m_active = false;
};

} // namespace tqvst
