// The position format record the nano-time tests write and read with: 48 kHz samples,
// 25 frames a second, and 120 quarter-note beats a minute in 4/4 with 960 ticks a beat.
#pragma once

#include "tqnanotime.h"

namespace tq::test {

inline _tqposfmt Record(int format)
{
    _tqposfmt record = {};
    record.format = format;
    record.sampleRate = 48000;
    record.frameRate = 25.0;
    record.tempo = 120.0;
    record.beatNote = 4;
    record.beatsPerMeasure = 4;
    record.ticksPerBeat = 960;
    return record;
}

} // namespace tq::test
