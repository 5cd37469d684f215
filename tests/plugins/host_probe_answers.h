// The questions host_probe asks, in the order it reports their answers.
#pragma once

#include <cstdint>

namespace host_probe {

enum Answer
{
    kEntryVersion,
    kEntryCurrentId,
    kEntryUpdateDisplay,
    kOpenVersion,
    kOpenCurrentId,
    kOpenCanDoSizeWindow,
    kOpenCanDoUpperCase,
    kOpenCanDoNull,
    kOpenVendorString,
    kOpenVendorVersion,
    kOpenUpdateDisplay,
    kOpenGetTime,
    kOpenAutomatable,
    kAnswerCount
};

constexpr intptr_t kProbeId = 0x54714850; // "TqHP"

// Exported by host_probe.dll: copies the answers and the vendor text the host gave (64 bytes).
using ReadAnswers = int(__cdecl*)(intptr_t* answers, int count, char* vendor);

} // namespace host_probe
