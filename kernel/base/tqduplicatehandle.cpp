// Passing handles between processes by process id.
#include "tqmemorytoken.h"

namespace {

HRESULT LastError()
{
    const DWORD error = GetLastError();
    return error ? HRESULT_FROM_WIN32(error) : E_FAIL;
}

HRESULT Duplicate(HANDLE handle, DWORD processId, HANDLE* out, bool intoOther)
{
    if (!out) return E_POINTER;
    *out = nullptr;
    tq::UniqueHandle other(OpenProcess(PROCESS_ALL_ACCESS, FALSE, processId));
    if (!other) return LastError();
    HANDLE from = intoOther ? GetCurrentProcess() : other.Get();
    HANDLE to = intoOther ? other.Get() : GetCurrentProcess();
    if (!DuplicateHandle(from, handle, to, out, 0, FALSE, DUPLICATE_SAME_ACCESS))
    {
        *out = nullptr;
        return LastError();
    }
    return S_OK;
}

} // namespace

TQKERNEL_API HRESULT DuplicateHandleFromProcessId(HANDLE handle, DWORD processId, HANDLE* out)
{
    return Duplicate(handle, processId, out, false);
}

TQKERNEL_API HRESULT DuplicateHandleToProcessId(HANDLE handle, DWORD processId, HANDLE* out)
{
    return Duplicate(handle, processId, out, true);
}
