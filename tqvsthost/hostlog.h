// The log a user asks for with --log: what the host did, to send with a bug report. Without the
// option nothing is written and every call here does nothing.
#pragma once

#include "clog.h"

#include <windows.h>

#include <string>

namespace tqhost {

// Opens (or continues) FILE for this run; the kernel's code when it cannot be opened.
HRESULT StartLog(const std::wstring& file);
void StopLog();
bool Logging();

// One line at a level of the log (TQLOG_INFO, TQLOG_WARNING, TQLOG_ERROR).
void LogLine(LOGFLAGS level, const std::wstring& text);

// "0x8004E017" for the log's lines.
std::wstring HexCode(HRESULT hr);

} // namespace tqhost
