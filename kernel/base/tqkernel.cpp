// Kernel start-up and shutdown: nothing to start yet, so both return at once.
#include "tqkernel.h"

extern "C" HRESULT TqKernel_EarlyInitialize(HMODULE, DWORD)
{
    return S_OK;
}

extern "C" HRESULT TqKernel_LateTerminate(HMODULE)
{
    return S_OK;
}

extern "C" HCURSOR TqLoadCursor(HINSTANCE instance, UINT_PTR id)
{
    return LoadCursorW(instance, MAKEINTRESOURCEW(id));
}
