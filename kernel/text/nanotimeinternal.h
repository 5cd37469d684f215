// What the nano-time output, the music-time text and the parsers share.
#pragma once

#include "tqnanotime.h"

#include <limits.h>
#include <math.h>
#include <stdarg.h>

namespace tq::nanotime {

// The music grid of a record. A record without a meter reads as 4/4 in quarters, and one
// without a tick resolution as one tick a beat, so that nothing divides by zero.
struct MusicGrid
{
    double tempo = 0; // beats per minute; 0 when the record has none
    UINT32 beatsPerMeasure = 4;
    UINT32 ticksPerBeat = 1; // ticks of a tempo beat
    LONGLONG beatTicks = 1;  // ticks of a beat of the meter: ticksPerBeat × 4 / beatNote

    explicit MusicGrid(const _tqposfmt& format)
    {
        if (format.tempo > 0 && isfinite(format.tempo)) tempo = format.tempo;
        if (format.beatsPerMeasure) beatsPerMeasure = format.beatsPerMeasure;
        if (format.ticksPerBeat) ticksPerBeat = format.ticksPerBeat;
        const UINT32 note = format.beatNote ? format.beatNote : 4;
        beatTicks = static_cast<LONGLONG>(ticksPerBeat) * 4 / note;
        if (beatTicks < 1) beatTicks = 1;
    }
    LONGLONG MeasureTicks() const { return beatTicks * beatsPerMeasure; }
};

// The SMPTE timecode type of a position format, 0 for a format that is not timecode.
inline UINT32 SmpteTypeOf(int format)
{
    switch (format)
    {
    case TQPOSFMT_SMPTE2997:
        return TQSMPTE_TYPE_2997;
    case TQPOSFMT_SMPTE30:
        return TQSMPTE_TYPE_30;
    case TQPOSFMT_SMPTE2997DROP:
        return TQSMPTE_TYPE_2997DROP;
    case TQPOSFMT_SMPTE25:
        return TQSMPTE_TYPE_25;
    case TQPOSFMT_SMPTE24:
        return TQSMPTE_TYPE_24;
    case TQPOSFMT_SMPTE23976:
        return TQSMPTE_TYPE_23976;
    default:
        return 0;
    }
}

// A nano-time computed in floating point, rounded to nearest and held within the bounds.
inline LONGLONG ClampToNanoTime(double value)
{
    if (!(value > static_cast<double>(TQNANOTIME_MIN))) return isnan(value) ? 0 : TQNANOTIME_MIN;
    if (value >= static_cast<double>(TQNANOTIME_MAX)) return TQNANOTIME_MAX;
    return static_cast<LONGLONG>(floor(value + 0.5));
}

inline LONGLONG ClampToNanoTime(LONGLONG value)
{
    return value < TQNANOTIME_MIN   ? TQNANOTIME_MIN
           : value > TQNANOTIME_MAX ? TQNANOTIME_MAX
                                    : value;
}

// a + b and a - b held at the ends of the 64-bit range instead of wrapping.
inline LONGLONG SaturatingAdd(LONGLONG a, LONGLONG b)
{
    LONGLONG sum;
    if (!__builtin_add_overflow(a, b, &sum)) return sum;
    return b > 0 ? LLONG_MAX : LLONG_MIN;
}

inline LONGLONG SaturatingSubtract(LONGLONG a, LONGLONG b)
{
    LONGLONG difference;
    if (!__builtin_sub_overflow(a, b, &difference)) return difference;
    return b < 0 ? LLONG_MAX : LLONG_MIN;
}

// Texts are composed here and handed out whole, or not at all when the caller's room is short.
class ComposedText
{
public:
    wchar_t* Cursor() { return m_text + m_length; }
    size_t Room() const { return TQNANOTIME_MAXCHARS - m_length; }
    void Put(wchar_t c)
    {
        if (m_length + 1 < TQNANOTIME_MAXCHARS) m_text[m_length++] = c;
    }
    void Fail() { m_failed = true; }
    // One conversion by a format string; false when it failed or did not fit.
    bool Print(const wchar_t* format, ...);
    // Copies the text to the caller's buffer: its length, or 0 and an empty text when it does not
    // fit or failed.
    int CopyTo(wchar_t* buffer, size_t capacity) const;

private:
    wchar_t m_text[TQNANOTIME_MAXCHARS];
    size_t m_length = 0;
    bool m_failed = false;
};

// The numbers of a music text: measures, beats and ticks as typed, those left out 0.
struct MusicFields
{
    LONGLONG values[3] = {};
    int count = 0;
    const wchar_t* end = nullptr;
};
// Reads at most wanted numbers; false when the text has none.
bool ReadMusicFields(const wchar_t* text, int wanted, MusicFields* out);
// The nano-time of a music text, not negative; false when the text has no number.
bool ReadMusicTime(const wchar_t* text, const _tqposfmt& format, DWORD flags, LONGLONG* nanos,
                   const wchar_t** end);

} // namespace tq::nanotime
