// The program's activation context, made once from the manifest resource of this module.
#include "activationcontext.h"

namespace tqvst {
namespace {

HANDLE ProgramActivationContext()
{
    static const HANDLE context = [] {
        HMODULE self = nullptr;
        GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                               GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           reinterpret_cast<LPCWSTR>(&ProgramActivationContext), &self);
        ACTCTXW description = {};
        description.cbSize = sizeof(description);
        description.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
        description.hModule = self;
        // An executable carries its manifest as resource 1, a DLL as resource 2.
        const bool isExe = self == GetModuleHandleW(nullptr);
        description.lpResourceName = MAKEINTRESOURCEW(isExe ? 1 : 2);
        HANDLE made = CreateActCtxW(&description);
        return made == INVALID_HANDLE_VALUE ? HANDLE(nullptr) : made;
    }();
    return context;
}

} // namespace

ScopedActivationContext::ScopedActivationContext() noexcept
{
    if (HANDLE context = ProgramActivationContext())
        m_active = ActivateActCtx(context, &m_cookie) != FALSE;
}

ScopedActivationContext::~ScopedActivationContext()
{
    if (m_active) DeactivateActCtx(0, m_cookie);
}

} // namespace tqvst
