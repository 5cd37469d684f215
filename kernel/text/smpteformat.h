// The frame formats of timecode values: frames per second, rate and the frames of a day.
#pragma once

#include "tqsmpte.h"

namespace tq::smpte {

// The NTSC rates, exactly as 30000/1001 and 24000/1001 round to a double.
constexpr double kRate2997 = 30000.0 / 1001.0;
constexpr double kRate23976 = 24000.0 / 1001.0;

// Drop-frame skips frames 0 and 1 at the start of every minute but each tenth: 108 frames an hour.
constexpr UINT32 kDroppedPerHour = 108;
constexpr UINT32 kDroppedPerMinute = 2;

struct Format
{
    UINT32 fps;  // frames counted in a second
    double rate; // frames per second of real time
    bool drop;
    UINT32 DayFrames() const { return fps * 86400 - (drop ? 24 * kDroppedPerHour : 0); }
};

constexpr Format kFormats[] = {
    {30, 30.0, false},       // 1: 30 non-drop
    {30, kRate2997, true},   // 2: 29.97 drop
    {25, 25.0, false},       // 3: 25
    {24, 24.0, false},       // 4: 24
    {30, kRate2997, false},  // 5: 29.97 non-drop
    {24, kRate23976, false}, // 6: 23.976
};

inline bool IsValidType(UINT32 type)
{
    return type >= TQSMPTE_TYPE_FIRST && type <= TQSMPTE_TYPE_LAST;
}

// The format of a valid type; anything else is read as drop-frame, as the conversion from a frame
// count has always done.
inline const Format& FormatOf(UINT32 type)
{
    return kFormats[IsValidType(type) ? type - 1 : TQSMPTE_TYPE_2997DROP - 1];
}

} // namespace tq::smpte
