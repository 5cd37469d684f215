// A server whose host died is of no use to anyone: this watch ends it.
#include "hostwatch.h"

#include <cwchar>

namespace tqvst {

namespace {

struct Watch
{
    HANDLE host;
    DWORD quitThreadId;
    DWORD graceMs;
};

DWORD WINAPI WatchMain(void* context)
{
    const Watch watch = *static_cast<Watch*>(context);
    delete static_cast<Watch*>(context);
    WaitForSingleObject(watch.host, INFINITE);
    CloseHandle(watch.host);
    PostThreadMessageW(watch.quitThreadId, WM_QUIT, 0, 0);
    Sleep(watch.graceMs);
    // Still here: something in the close hangs. Nothing of this process is worth waiting for.
    TerminateProcess(GetCurrentProcess(), 1);
    return 0;
}

} // namespace

DWORD HostProcessIdFromEventName(const wchar_t* name)
{
    constexpr wchar_t kPrefix[] = L"RkVstServerEvent_";
    constexpr size_t kPrefixLength = sizeof(kPrefix) / sizeof(kPrefix[0]) - 1;
    if (!name || std::wcsncmp(name, kPrefix, kPrefixLength) != 0) return 0;
    const wchar_t* digits = name + kPrefixLength;
    ULONGLONG id = 0;
    for (const wchar_t* at = digits; *at; ++at)
    {
        if (*at < L'0' || *at > L'9') return 0;
        id = id * 10 + static_cast<ULONGLONG>(*at - L'0');
        if (id > MAXDWORD) return 0;
    }
    return digits[0] ? static_cast<DWORD>(id) : 0;
}

bool WatchHostProcess(DWORD hostProcessId, DWORD quitThreadId, DWORD graceMs)
{
    if (hostProcessId == 0) return false;
    HANDLE host = OpenProcess(SYNCHRONIZE, FALSE, hostProcessId);
    if (!host) return false;
    auto* watch = new Watch{host, quitThreadId, graceMs};
    HANDLE thread = CreateThread(nullptr, 64 * 1024, WatchMain, watch,
                                 STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    if (!thread)
    {
        CloseHandle(host);
        delete watch;
        return false;
    }
    CloseHandle(thread);
    return true;
}

} // namespace tqvst
