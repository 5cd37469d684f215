// tqvsthost's log, written through the kernel's CLog.
#include "hostlog.h"

#include <cwchar>

namespace tqhost {
namespace {

// A log grows to this size, then moves to "FILE.previous" and starts again.
constexpr int kLogRotateBytes = 4 * 1024 * 1024;

CLog g_log;
bool g_logging = false;

} // namespace

HRESULT StartLog(const std::wstring& file)
{
    const HRESULT hr =
        g_log.Init(file.c_str(), TQLOG_ERROR | TQLOG_WARNING | TQLOG_INFO | TQLOG_TIMESTAMP,
                   kLogRotateBytes, 0);
    g_logging = SUCCEEDED(hr);
    return hr;
}

void StopLog()
{
    if (!g_logging) return;
    g_log.Shutdown();
    g_logging = false;
}

bool Logging() { return g_logging; }

void LogLine(LOGFLAGS level, const std::wstring& text)
{
    // The text goes in as an argument, so a "%" or "$" in a path is never read as a format.
    if (g_logging) g_log.Write(level, nullptr, 0, L"%s", text.c_str());
}

std::wstring HexCode(HRESULT hr)
{
    wchar_t code[16];
    swprintf(code, 16, L"0x%08X", static_cast<unsigned>(hr));
    return code;
}

} // namespace tqhost
