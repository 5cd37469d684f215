// The command line of tqvsthost.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

namespace tqhost {

struct Options
{
    std::wstring command;
    std::vector<std::wstring> arguments;
    int location = 1; // out of process, same bitness
    std::optional<UINT32> id;
    UINT32 timeoutMs = 0;
    bool help = false;
};

// False with a one-line error for an unknown option or a missing or bad value.
bool ParseOptions(int argc, wchar_t** argv, Options& options, std::wstring& error);

// A plug-in id given as four characters ('TqGn' or TqGn) or as a number (decimal or 0x hex).
std::optional<UINT32> ParsePluginId(const std::wstring& text);

// The four characters of an id where they are printable, for display.
std::wstring FourCharacters(UINT32 id);

void PrintUsage();

} // namespace tqhost
