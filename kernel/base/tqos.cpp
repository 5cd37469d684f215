// Operating system names, the version test, bitness and colour depth of the screen.
#include "tqos.h"

#include "procaddress.h"

#include <atomic>
#include <cwchar>

namespace tq {
namespace {

// A row matches a platform and ranges of major and minor version; build65 asks for the low byte
// of the build number to be 65 (1), to be anything else (0), or does not look (-1). The first
// matching row names the system.
struct OsNameRow
{
    DWORD platform;
    DWORD majorFrom, majorTo;
    DWORD minorFrom, minorTo;
    int build65;
    const wchar_t* name;
};
constexpr DWORD kAny = 0xFFFFFFFFu;
constexpr OsNameRow kOsNames[] = {
    {VER_PLATFORM_WIN32_WINDOWS, 0, 3, 0, kAny, -1, L"Windows 95"},
    {VER_PLATFORM_WIN32_WINDOWS, 4, 4, 0, 0, -1, L"Windows 95"},
    {VER_PLATFORM_WIN32_WINDOWS, 4, 4, 1, 89, 0, L"Windows 98"},
    {VER_PLATFORM_WIN32_WINDOWS, 4, 4, 1, 89, 1, L"Windows 98 SE"},
    {VER_PLATFORM_WIN32_WINDOWS, 0, kAny, 90, kAny, -1, L"Windows Me"},
    {VER_PLATFORM_WIN32_NT, 4, 4, 0, kAny, -1, L"Windows NT"},
    {VER_PLATFORM_WIN32_NT, 5, 5, 0, 0, -1, L"Windows 2000"},
    {VER_PLATFORM_WIN32_NT, 5, 5, 1, kAny, -1, L"Windows XP"},
    {VER_PLATFORM_WIN32_NT, 6, 6, 0, 0, -1, L"Windows Vista"},
    {VER_PLATFORM_WIN32_NT, 6, 6, 1, 1, -1, L"Windows 7"},
    {VER_PLATFORM_WIN32_NT, 6, 6, 2, 2, -1, L"Windows 8"},
    {VER_PLATFORM_WIN32_NT, 6, 6, 3, 3, -1, L"Windows 8.1"},
    {VER_PLATFORM_WIN32_NT, 10, 10, 0, 0, -1, L"Windows 10.0"},
};

// The oldest system each TqOSVersionOK code accepts.
struct OsRequirement
{
    int code;
    DWORD platform, major, minor;
    int servicePack; // -1: the caller's
};
constexpr OsRequirement kAnyWindows9x = {-1, VER_PLATFORM_WIN32_WINDOWS, 0, 0, -1};
constexpr OsRequirement kOsRequirements[] = {
    {TQOS_WIN95, VER_PLATFORM_WIN32_WINDOWS, 4, 0, -1},
    {TQOS_WIN98, VER_PLATFORM_WIN32_WINDOWS, 4, 1, -1},
    {TQOS_WIN98SE, VER_PLATFORM_WIN32_WINDOWS, 4, 1, 1},
    {TQOS_WINNT4, VER_PLATFORM_WIN32_NT, 4, 0, -1},
    {TQOS_WIN2000, VER_PLATFORM_WIN32_NT, 5, 0, -1},
    {TQOS_WINXP, VER_PLATFORM_WIN32_NT, 5, 1, -1},
    {TQOS_WINVISTA, VER_PLATFORM_WIN32_NT, 6, 0, -1},
    {TQOS_WIN7, VER_PLATFORM_WIN32_NT, 6, 1, -1},
    {TQOS_WIN8, VER_PLATFORM_WIN32_NT, 6, 2, -1},
};

bool InRange(DWORD value, DWORD from, DWORD to)
{
    return value >= from && value <= to;
}

OSVERSIONINFOEXW RunningVersion()
{
    OSVERSIONINFOEXW version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    if (!GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&version)))
        version = OSVERSIONINFOEXW{}; // platform 0: no name, no version test passes
    return version;
}

// Answers cached on first use: -1 not measured yet, else 0 or 1.
std::atomic<int> g_isWin95{-1};
std::atomic<int> g_highColor{-1};
std::atomic<int> g_allMonitorsHighColor{-1};

template <class Measure>
BOOL Cached(std::atomic<int>& slot, Measure measure)
{
    int value = slot.load();
    if (value < 0)
    {
        value = measure() ? 1 : 0;
        slot.store(value);
    }
    return value;
}

constexpr int kHighColorBits = 16;

BOOL CALLBACK CheckMonitor(HMONITOR monitor, HDC, RECT*, LPARAM data)
{
    MONITORINFOEXW info = {};
    info.cbSize = sizeof(info);
    DEVMODEW mode = {};
    mode.dmSize = sizeof(mode);
    if (GetMonitorInfoW(monitor, &info) &&
        EnumDisplaySettingsW(info.szDevice, ENUM_CURRENT_SETTINGS, &mode) &&
        mode.dmBitsPerPel < kHighColorBits)
    {
        *reinterpret_cast<bool*>(data) = false;
        return FALSE;
    }
    return TRUE;
}

bool ScreenIsHighColor()
{
    HDC screen = GetDC(nullptr);
    if (!screen) return false;
    const int bits = GetDeviceCaps(screen, BITSPIXEL) * GetDeviceCaps(screen, PLANES);
    ReleaseDC(nullptr, screen);
    return bits >= kHighColorBits;
}

bool AllMonitorsAreHighColor()
{
    bool all = true;
    EnumDisplayMonitors(nullptr, nullptr, CheckMonitor, reinterpret_cast<LPARAM>(&all));
    return all;
}

} // namespace

BOOL OsName(const OSVERSIONINFOEXW& version, WORD nativeArchitecture, wchar_t* buffer, int capacity)
{
    if (!buffer || capacity < 1) return FALSE;
    const int build65 = (version.dwBuildNumber & 0xFF) == 65 ? 1 : 0;
    const OsNameRow* named = nullptr;
    for (const OsNameRow& row : kOsNames)
    {
        if (row.platform == version.dwPlatformId &&
            InRange(version.dwMajorVersion, row.majorFrom, row.majorTo) &&
            InRange(version.dwMinorVersion, row.minorFrom, row.minorTo) &&
            (row.build65 < 0 || row.build65 == build65))
        {
            named = &row;
            break;
        }
    }
    const wchar_t* bitness = L"";
    if (version.dwMajorVersion >= 5)
    {
        if (nativeArchitecture == PROCESSOR_ARCHITECTURE_INTEL)
            bitness = L" (32-bit)";
        else if (nativeArchitecture == PROCESSOR_ARCHITECTURE_AMD64)
            bitness = L" (64-bit)";
    }
    if (named)
        _snwprintf(buffer, capacity, L"%s%s", named->name, bitness);
    else
        _snwprintf(buffer, capacity, L"Unknown %lu-%lu.%lu%s", version.dwPlatformId,
                   version.dwMajorVersion, version.dwMinorVersion, bitness);
    buffer[capacity - 1] = L'\0';
    return named != nullptr;
}

BOOL OsVersionOK(const OSVERSIONINFOEXW& version, int code, int servicePack)
{
    const OsRequirement* need = &kAnyWindows9x;
    for (const OsRequirement& row : kOsRequirements)
        if (row.code == code) need = &row;
    if (need->servicePack >= 0) servicePack = need->servicePack;

    if (version.dwPlatformId != need->platform) return FALSE;
    if (version.dwMajorVersion != need->major) return version.dwMajorVersion > need->major;
    if (version.dwMinorVersion != need->minor) return version.dwMinorVersion > need->minor;
    return version.wServicePackMajor >= servicePack;
}

void ForgetColorDepth()
{
    g_highColor.store(-1);
    g_allMonitorsHighColor.store(-1);
}

} // namespace tq

using namespace tq;

TQKERNEL_API BOOL TqGetOS(wchar_t* buffer, int capacity)
{
    SYSTEM_INFO native = {};
    GetNativeSystemInfo(&native);
    return OsName(RunningVersion(), native.wProcessorArchitecture, buffer, capacity);
}

TQKERNEL_API BOOL TqOSVersionOK(int code, int servicePack)
{
    return OsVersionOK(RunningVersion(), code, servicePack);
}

TQKERNEL_API BOOL TqIsWin95(void)
{
    return Cached(g_isWin95,
                  [] { return RunningVersion().dwPlatformId == VER_PLATFORM_WIN32_WINDOWS; });
}

TQKERNEL_API BOOL TqIsOS64Bit(void)
{
    using IsWow64ProcessFn = BOOL(WINAPI*)(HANDLE, BOOL*);
    BOOL wow64 = FALSE;
    if (auto isWow64 =
            GetProc<IsWow64ProcessFn>(GetModuleHandleW(L"kernel32.dll"), "IsWow64Process"))
    {
        if (!isWow64(GetCurrentProcess(), &wow64)) wow64 = FALSE;
    }
    // A 64-bit process runs on a 64-bit system whatever the answer; it matters to a 32-bit one.
    return sizeof(void*) == 8 || wow64;
}

TQKERNEL_API BOOL TqIsHighColor(void)
{
    return Cached(g_highColor, ScreenIsHighColor);
}

TQKERNEL_API BOOL TqIsAllMonitorsHighColor(void)
{
    return Cached(g_allMonitorsHighColor, AllMonitorsAreHighColor);
}
