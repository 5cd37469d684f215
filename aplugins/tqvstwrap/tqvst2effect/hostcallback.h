// The one host callback handed to every VST2 plug-in of the process.
#pragma once

#include "aeffect.h"

#include <windows.h>

intptr_t __cdecl AudioMasterCallback(vst2::AEffect* effect, int32_t opcode, int32_t index,
                                     intptr_t value, void* ptr, float opt);

// What plug-ins are told as the host's vendor and product. A null text leaves its field as it
// was; an empty one clears it.
void SetHostStrings(const wchar_t* vendor, const wchar_t* product);
