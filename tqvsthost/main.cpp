// tqvsthost: a command-line host for VST2 plug-ins, driving them through the plug-in server.
#include "infocommand.h"
#include "options.h"

#include <objbase.h>

#include <cstdio>

int wmain(int argc, wchar_t** argv)
{
    tqhost::Options options;
    std::wstring error;
    if (!tqhost::ParseOptions(argc, argv, options, error))
    {
        fwprintf(stderr, L"tqvsthost: %ls (see --help)\n", error.c_str());
        return 1;
    }
    if (options.help || options.command.empty())
    {
        tqhost::PrintUsage();
        return options.help ? 0 : 1;
    }
    if (options.command != L"info")
    {
        fwprintf(stderr, L"tqvsthost: unknown command %ls (see --help)\n", options.command.c_str());
        return 1;
    }
    if (FAILED(CoInitialize(nullptr)))
    {
        fwprintf(stderr, L"tqvsthost: COM could not be initialised\n");
        return 1;
    }
    const int exitCode = tqhost::RunInfo(options);
    CoUninitialize();
    return exitCode;
}
