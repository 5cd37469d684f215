// Positions and lengths of audio as the user chose to see them (--time-format, --tempo).
#pragma once

#include "tqnanotime.h"

#include <windows.h>

#include <optional>
#include <string>

namespace tqhost {

struct TimeFormat
{
    INT32 format = TQPOSFMT_TIME;
    double tempo = 120.0; // beats per minute, for measures
};

// samples, time (hh:mm:ss.mmm), seconds, smpte24, smpte25, smpte2997drop, smpte30, measures;
// nothing for another name.
std::optional<INT32> ParseTimeFormat(const std::wstring& name);

// A count of frames at a sample rate, as a position (measures count from 1) or as a length.
std::wstring FramesToText(const TimeFormat& format, UINT64 frames, UINT32 sampleRate, bool length);

} // namespace tqhost
