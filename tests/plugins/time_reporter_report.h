// What time_reporter asks the host on each idle tick and what it got, for a host in the same
// process.
#pragma once

#include "aeffect.h"

#include <cstdint>

namespace time_reporter {

// The position time_reporter asks the tempo for.
constexpr intptr_t kTempoPosition = 4800;

struct Report
{
    int32_t asks;           // audioMasterGetTime calls made
    int32_t gotTime;        // 1 if the last one answered a record, 0 if a null pointer
    vst2::VstTimeInfo time; // a copy of that record, zero when there was none
    intptr_t tempo;         // the audioMasterTempoAt answer
};

// Exported by time_reporter.dll: TqTimeReporterSetMask sets the filter mask for the next ticks,
// TqTimeReporterReport reads back the last one.
using SetMask = void(__cdecl*)(int32_t mask);
using ReadReport = void(__cdecl*)(Report* report);

} // namespace time_reporter
