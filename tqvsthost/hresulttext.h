// What a result code means, in words a user can act on.
#pragma once

#include <windows.h>

#include <string>

namespace tqhost {

// Where a code arose: the same code means different things to a plug-in load and to a file.
enum class ResultArea
{
    General,
    Plugin, // loading a plug-in or one of a shell's sub-plug-ins
    Preset, // reading or writing a preset or bank file, choosing a program
    Wave,   // reading or writing a WAV file
};

struct ResultContext
{
    ResultArea area = ResultArea::General;
    // The file or name the failure concerns; it fills the inserts of a system text.
    std::wstring subject;
};

// The plug-in server's codes and the system's, explained for the context; "unknown error" for a
// code the system does not know either. The text never shows an unfilled insert.
std::wstring DescribeResult(HRESULT hr, const ResultContext& context = {});

// Prints "tqvsthost: WHAT: 0x........ (meaning)" to standard error; returns the exit code 1.
int ReportFailure(const std::wstring& what, HRESULT hr, const ResultContext& context = {});

} // namespace tqhost
