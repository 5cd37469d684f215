// tqvsthost: a command-line host for VST2 and VST3 plug-ins, driving them through the plug-in
// server, and the audio files it processes.
#include "editorcommand.h"
#include "generatecommand.h"
#include "hostlog.h"
#include "infocommand.h"
#include "options.h"
#include "paramscommand.h"
#include "probecommand.h"
#include "processcommand.h"
#include "repaircommand.h"
#include "savepresetcommand.h"
#include "scancommand.h"

#include "hresulttext.h"
#include "tqkernel.h"
#include "vstclient.h"

#include <objbase.h>

#include <cstdio>
#include <xmmintrin.h>

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
    {L"probe", tqhost::RunProbe},
    {L"repair", tqhost::RunRepair},
};

// The SSE control word, read and written where the compiler may not assume SSE (32-bit builds).
__attribute__((target("sse"))) unsigned int SseControl()
{
    return _mm_getcsr();
}
__attribute__((target("sse"))) void SetSseControl(unsigned int word)
{
    _mm_setcsr(word);
}

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
    // The kernel gives the time texts and the log. Its start-up sets the processor to flush
    // denormals on this thread; a plug-in loaded in process here gets the host's usual state.
    const unsigned int floatState = SseControl();
    TqKernel_EarlyInitialize(GetModuleHandleW(nullptr), 0);
    SetSseControl(floatState);
    if (!options.logFile.empty())
    {
        const HRESULT hr = tqhost::StartLog(options.logFile);
        if (FAILED(hr))
            return tqhost::ReportFailure(L"could not open the log " + options.logFile, hr);
    }
    tqhost::LogLine(TQLOG_INFO, std::wstring(L"tqvsthost ") + GetCommandLineW());
    if (options.processTimeoutMs) SetVstProcessTimeout(*options.processTimeoutMs);
    if (FAILED(CoInitialize(nullptr)))
    {
        fwprintf(stderr, L"tqvsthost: COM could not be initialised\n");
        return 1;
    }
    const ULONGLONG started = GetTickCount64();
    const int exitCode = command->run(options);
    CoUninitialize();
    tqhost::LogLine(exitCode ? TQLOG_ERROR : TQLOG_INFO,
                    options.command + L" ended with exit code " + std::to_wstring(exitCode) +
                        L" after " + std::to_wstring(GetTickCount64() - started) + L" ms");
    tqhost::StopLog();
    TqKernel_LateTerminate(GetModuleHandleW(nullptr));
    return exitCode;
}
