// Log lines are formatted on every call even with no log attached: a log can be attached to any
// effect without changing how the plug-in is driven.
#include "vst2log.h"

#include "opcodenames.h"

#include <cstdio>
#include <iterator>

namespace vst2 {
namespace {

constexpr char kSource[] = "aplugins/tqvstwrap/tqvst2effect";

// A result of exactly -1 is what a guard reports after a fault, so it is logged as one.
void Emit(CLog* log, const wchar_t* line, int32_t result, int okLine, int faultLine)
{
    if (result == -1)
    {
        wchar_t fault[600];
        _snwprintf(fault, std::size(fault) - 1, L"EXCEPTION from %ls", line);
        fault[std::size(fault) - 1] = 0;
        if (log) log->Write(TQLOG_WARNING, kSource, faultLine, L"%s", fault);
        return;
    }
    if (log) log->Write(TQLOG_DEBUG, kSource, okLine, L"%s", line);
}

} // namespace

void LogDispatch(CLog* log, int32_t opcode, int32_t index, int64_t value, const void* ptr,
                 const char* ptrText, float opt, int32_t result)
{
    wchar_t line[512];
    const char* name = EffectOpcodeName(opcode);
    if (ptrText)
        _snwprintf(line, std::size(line) - 1,
                   L"VstDispatch(%hs, index=%ld, value=%I64d, ptr=\"%hs\", opt=%f) returned (%d)",
                   name, static_cast<long>(index), value, ptrText, static_cast<double>(opt),
                   result);
    else
        _snwprintf(line, std::size(line) - 1,
                   L"VstDispatch(%hs, index=%ld, value=%I64d, ptr=0x%x, opt=%f) returned (%d)",
                   name, static_cast<long>(index), value,
                   static_cast<unsigned>(reinterpret_cast<uintptr_t>(ptr)),
                   static_cast<double>(opt), result);
    line[std::size(line) - 1] = 0;
    Emit(log, line, result, 266, 260);
}

void LogCallback(CLog* log, int32_t opcode, int32_t index, int64_t value, const void* ptr,
                 float opt, int32_t result)
{
    wchar_t line[512];
    _snwprintf(line, std::size(line) - 1,
               L"VstCallback(%hs, index=%d, value=%d, ptr=0x%x, opt=%f) returned (%d)",
               HostOpcodeName(opcode), index, static_cast<int>(value),
               static_cast<unsigned>(reinterpret_cast<uintptr_t>(ptr)), static_cast<double>(opt),
               result);
    line[std::size(line) - 1] = 0;
    Emit(log, line, result, 155, 149);
}

} // namespace vst2
