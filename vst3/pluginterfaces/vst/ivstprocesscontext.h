// Transport and tempo facts handed to the processor with each block.
#pragma once

#include "vsttypes.h"

namespace vst3 {

VST3_PACK_PUSH

struct FrameRate
{
    enum FrameRateFlags : uint32
    {
        kPullDownRate = 1 << 0,
        kDropRate = 1 << 1,
    };

    uint32 framesPerSecond;
    uint32 flags;
};

struct Chord
{
    uint8 keyNote;
    uint8 rootNote;
    int16 chordMask;
};

struct ProcessContext
{
    enum StatesAndFlags : uint32
    {
        kPlaying = 1 << 1,
        kCycleActive = 1 << 2,
        kRecording = 1 << 3,
        kSystemTimeValid = 1 << 8,
        kProjectTimeMusicValid = 1 << 9,
        kTempoValid = 1 << 10,
        kBarPositionValid = 1 << 11,
        kCycleValid = 1 << 12,
        kTimeSigValid = 1 << 13,
        kSmpteValid = 1 << 14,
        kClockValid = 1 << 15,
        kContTimeValid = 1 << 17,
        kChordValid = 1 << 18,
    };

    uint32 state;
    double sampleRate;
    TSamples projectTimeSamples;
    int64 systemTime;
    TSamples continousTimeSamples;
    TQuarterNotes projectTimeMusic;
    TQuarterNotes barPositionMusic;
    TQuarterNotes cycleStartMusic;
    TQuarterNotes cycleEndMusic;
    double tempo;
    int32 timeSigNumerator;
    int32 timeSigDenominator;
    Chord chord;
    int32 smpteOffsetSubframes;
    FrameRate frameRate;
    int32 samplesToNextClock;
};

VST3_PACK_POP

} // namespace vst3
