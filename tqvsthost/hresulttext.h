// What a result code means, in words a user can act on.
#pragma once

#include <windows.h>

#include <string>

namespace tqhost {

// The system's own codes and those of the plug-in server; "unknown error" for anything else.
std::wstring DescribeResult(HRESULT hr);

// Prints "tqvsthost: WHAT: 0x........ (meaning)" to standard error; returns the exit code 1.
int ReportFailure(const std::wstring& what, HRESULT hr);

} // namespace tqhost
