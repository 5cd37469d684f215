// What a result code means, in words a user can act on.
#pragma once

#include <windows.h>

#include <string>

namespace tqhost {

// The system's own codes and those of the plug-in server; "unknown error" for anything else.
std::wstring DescribeResult(HRESULT hr);

} // namespace tqhost
