// Names of the VST2 opcodes in both directions, for log lines.
#pragma once

#include <cstdint>

namespace vst2 {

// "<unknown>" outside the table.
const char* EffectOpcodeName(int32_t opcode);
const char* HostOpcodeName(int32_t opcode);

} // namespace vst2
