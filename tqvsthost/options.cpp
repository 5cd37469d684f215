// Parsing and help text of tqvsthost's command line.
#include "options.h"

#include <algorithm>
#include <cstdio>
#include <cwchar>
#include <cwctype>

namespace tqhost {
namespace {

std::optional<UINT32> ParseNumber(const std::wstring& text)
{
    if (text.empty()) return std::nullopt;
    wchar_t* end = nullptr;
    const unsigned long long value = wcstoull(text.c_str(), &end, 0);
    if (*end != 0 || value > 0xFFFFFFFFull) return std::nullopt;
    return static_cast<UINT32>(value);
}

} // namespace

std::optional<UINT32> ParsePluginId(const std::wstring& text)
{
    std::wstring chars = text;
    if (chars.size() == 6 && chars.front() == L'\'' && chars.back() == L'\'')
        chars = chars.substr(1, 4);
    const bool allDigits = !chars.empty() && std::all_of(chars.begin(), chars.end(), iswdigit);
    if (chars.size() == 4 && !allDigits)
    {
        UINT32 id = 0;
        for (wchar_t c : chars)
        {
            if (c < 0x20 || c > 0x7E) return std::nullopt;
            id = (id << 8) | static_cast<UINT32>(c);
        }
        return id;
    }
    return ParseNumber(text);
}

std::wstring FourCharacters(UINT32 id)
{
    std::wstring text;
    for (int shift = 24; shift >= 0; shift -= 8)
    {
        const wchar_t c = static_cast<wchar_t>((id >> shift) & 0xFF);
        text += c >= 0x20 && c <= 0x7E ? c : L'.';
    }
    return text;
}

bool ParseOptions(int argc, wchar_t** argv, Options& options, std::wstring& error)
{
    bool inproc = false;
    bool x86 = false;
    for (int i = 1; i < argc; ++i)
    {
        const std::wstring arg = argv[i];
        const auto value = [&]() -> const wchar_t* {
            if (i + 1 >= argc)
            {
                error = arg + L" needs a value";
                return nullptr;
            }
            return argv[++i];
        };
        if (arg == L"--help" || arg == L"-h" || arg == L"/?")
            options.help = true;
        else if (arg == L"--inproc")
            inproc = true;
        else if (arg == L"--x86")
            x86 = true;
        else if (arg == L"--id")
        {
            const wchar_t* text = value();
            if (!text) return false;
            options.id = ParsePluginId(text);
            if (!options.id)
            {
                error = std::wstring(L"--id: not a plug-in id: ") + text;
                return false;
            }
        }
        else if (arg == L"--timeout")
        {
            const wchar_t* text = value();
            if (!text) return false;
            const auto ms = ParseNumber(text);
            if (!ms)
            {
                error = std::wstring(L"--timeout: not a number of milliseconds: ") + text;
                return false;
            }
            options.timeoutMs = *ms;
        }
        else if (arg.size() > 1 && arg[0] == L'-')
        {
            error = L"unknown option " + arg;
            return false;
        }
        else if (options.command.empty())
            options.command = arg;
        else
            options.arguments.push_back(arg);
    }
    if (inproc && x86)
    {
        error = L"--inproc and --x86 exclude each other";
        return false;
    }
    options.location = inproc ? 0 : x86 ? 2 : 1;
    return true;
}

void PrintUsage()
{
    wprintf(L"tqvsthost: hosts VST2 plug-ins through the tqvst plug-in server.\n"
            L"\n"
            L"Usage:\n"
            L"  tqvsthost info PLUGIN [--inproc | --x86] [--id ID] [--timeout MS]\n"
            L"      Loads PLUGIN, prints its name, vendor, product, unique id, version, program,\n"
            L"      parameter and channel counts, latency, flags and state, and which processes\n"
            L"      the host and the plug-in ran in. For a shell plug-in, lists its sub-plug-ins.\n"
            L"  tqvsthost --help\n"
            L"      Shows this text.\n"
            L"\n"
            L"Options:\n"
            L"  --inproc      load the plug-in inside this process (no server)\n"
            L"  --x86         load the plug-in in the 32-bit server (x86\\tqvstserver.exe)\n"
            L"                Without either, a server of this program's bitness is used.\n"
            L"  --id ID       sub-plug-in of a shell: four characters (TqSA) or a number\n"
            L"  --timeout MS  give up on a plug-in that takes longer than MS milliseconds to load\n"
            L"\n"
            L"A failure prints one line with the HRESULT and its meaning, and exits with 1.\n");
}

} // namespace tqhost
