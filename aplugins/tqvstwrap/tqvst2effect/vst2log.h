// The debug lines written for every call between host and plug-in.
#pragma once

#include "clog.h"

#include <cstdint>

namespace vst2 {

// ptrText, when not null, is shown in place of the pointer (text-carrying opcodes).
void LogDispatch(CLog* log, int32_t opcode, int32_t index, int64_t value, const void* ptr,
                 const char* ptrText, float opt, int32_t result);
void LogCallback(CLog* log, int32_t opcode, int32_t index, int64_t value, const void* ptr,
                 float opt, int32_t result);

} // namespace vst2
