// Test plug-ins write the calls a host makes into the environment variable TQ_VST3_CALLS, one word
// each, so that a test reads their order even after the module is gone.
#pragma once

#include <windows.h>

#include <string>

namespace vst3plugin {

inline void recordCall(const std::string& call)
{
    char held[4096] = {};
    GetEnvironmentVariableA("TQ_VST3_CALLS", held, sizeof held);
    std::string calls = held;
    if (!calls.empty()) calls += ' ';
    SetEnvironmentVariableA("TQ_VST3_CALLS", (calls + call).c_str());
}

} // namespace vst3plugin
