// tqvsthost: a command-line host for VST2 plug-ins, driving them through the plug-in server.
#include "editorcommand.h"
#include "generatecommand.h"
#include "infocommand.h"
#include "options.h"
#include "paramscommand.h"
#include "processcommand.h"
#include "savepresetcommand.h"
#include "scancommand.h"

#include <objbase.h>

#include <cstdio>

namespace {

struct Command
{
    const wchar_t* name;
    int (*run)(const tqhost::Options&);
};

constexpr Command kCommands[] = {
    {L"info", tqhost::RunInfo},
    {L"params", tqhost::RunParams},
    {L"scan", tqhost::RunScan},
    {L"process", tqhost::RunProcess},
    {L"save-preset", tqhost::RunSavePreset},
    {L"generate", tqhost::RunGenerate},
    {L"editor", tqhost::RunEditor},
};

} // namespace

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
    const Command* command = nullptr;
    for (const Command& known : kCommands)
        if (options.command == known.name) command = &known;
    if (!command)
    {
        fwprintf(stderr, L"tqvsthost: unknown command %ls (see --help)\n", options.command.c_str());
        return 1;
    }
    if (FAILED(CoInitialize(nullptr)))
    {
        fwprintf(stderr, L"tqvsthost: COM could not be initialised\n");
        return 1;
    }
    const int exitCode = command->run(options);
    CoUninitialize();
    return exitCode;
}
