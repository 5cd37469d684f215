// Nano-time and music time as text: twenty display formats of a position, and their parsers.
#pragma once

#include "tqkernelapi.h"
#include "tqsmpte.h"

// Nano-time counts 100-nanosecond steps. Positions are clamped to these bounds, never wrapped.
#define TQNANOTIME_PER_SECOND 10000000LL
#define TQNANOTIME_MIN ((LONGLONG)-0x4000000000000000LL)
#define TQNANOTIME_MAX ((LONGLONG)0x2000000000000000LL)

// Display formats.
#define TQPOSFMT_SAMPLES 0           // 1,234,567
#define TQPOSFMT_TIME 1              // 00:01:02.345
#define TQPOSFMT_SECONDS 2           // 62.345
#define TQPOSFMT_TIMEFRAMES 3        // 00:01:02.10, frames at frameRate
#define TQPOSFMT_FRAMES 4            // 1,870.350, frames at frameRate
#define TQPOSFMT_MEASURES 5          // 12:3.480, counted from 1
#define TQPOSFMT_SMPTE2997 6         // 00:01:02:10, 29.97 non-drop
#define TQPOSFMT_SMPTE30 7           // 00:01:02:10
#define TQPOSFMT_SMPTE2997DROP 8     // 00:01:02;10
#define TQPOSFMT_SMPTE25 9           // 00:01:02:10
#define TQPOSFMT_SMPTE24 10          // 00:01:02:10
#define TQPOSFMT_NANOTIME 11         // the raw value
#define TQPOSFMT_MICROSECONDS 12     // 62,345,000
#define TQPOSFMT_MEASURESFROMZERO 13 // 11:2.480
#define TQPOSFMT_BEATS 14            // 46.500
#define TQPOSFMT_FEET40 15           // 2+20, 40 frames to the foot
#define TQPOSFMT_FEET16 16           // 6+4, 16 frames to the foot
#define TQPOSFMT_CDTIME 17           // 00:01:02:26, 75 frames a second
#define TQPOSFMT_SMPTE23976 18       // 00:01:02:10
#define TQPOSFMT_COMPACTTIME 19      // 1:02
#define TQPOSFMT_COUNT 20

// Flags of the output functions and the parsers.
#define TQPOSFMT_SHORT 0x1      // no sub-second detail: the second table of formats
#define TQPOSFMT_RELATIVE 0x2   // a length: origin is not applied, measures and beats count from 0
#define TQPOSFMT_MUSICSHORT 0x4 // parsers: music text ends at the beats, as the short form shows

// Room that every text of the formats fits in, terminator included; the unbounded output
// functions need this much.
#define TQNANOTIME_MAXCHARS 260

// A display format and the tempo it reads music time by.
typedef struct _tqposfmt
{
    INT32 format;           // TQPOSFMT_
    UINT32 sampleRate;      // samples per second
    double frameRate;       // frames per second of formats 3, 4, 15 and 16
    double tempo;           // beats per minute
    LONGLONG origin;        // nano-time shown as zero
    UINT16 beatNote;        // note value of a beat: 4 for quarters
    UINT16 beatsPerMeasure; //
    UINT32 ticksPerBeat;    //
} _tqposfmt;

// Output. Each returns the text's length, a leading "-" included; the N forms take a capacity
// including the terminator and return 0, with an empty text, when the text does not fit. A format
// outside 0 to 19 prints the raw value.
TQKERNEL_API int TqNanoTimeToText(wchar_t* buffer, const _tqposfmt* format, LONGLONG time,
                                  BOOL shortForm);
TQKERNEL_API int TqNanoTimeToTextN(wchar_t* buffer, int capacity, const _tqposfmt* format,
                                   LONGLONG time, BOOL shortForm);
TQKERNEL_API int TqNanoTimeToTextEx(wchar_t* buffer, const _tqposfmt* format, LONGLONG time,
                                    DWORD flags);
TQKERNEL_API int TqNanoTimeToTextExN(wchar_t* buffer, int capacity, const _tqposfmt* format,
                                     LONGLONG time, DWORD flags);
// As above with a format string of the caller's, which receives the same values as the format's
// own string from the tables.
TQKERNEL_API int TqNanoTimeToTextFormat(wchar_t* buffer, const _tqposfmt* format, LONGLONG time,
                                        const wchar_t* formatString, DWORD flags);
TQKERNEL_API int TqNanoTimeToTextFormatN(wchar_t* buffer, int capacity, const _tqposfmt* format,
                                         LONGLONG time, const wchar_t* formatString, DWORD flags);

// Hours (wrapped at 24), minutes, seconds and frames of a time. A value type of 1 to 6 converts
// as that timecode; any other at frameRate, rounded to the nearest frame. Times before zero wrap
// into the previous day.
TQKERNEL_API void TqNanoTimeToHMSF(LONGLONG time, _smpteval* value, double frameRate);
// The time of hours, minutes, seconds and frames; a timecode type converts as that timecode.
TQKERNEL_API LONGLONG TqHMSFToNanoTime(const _smpteval* value, double frameRate);

// Measures, beats and ticks at the record's tempo, all counted from 0; a time before zero gives
// negative measures with beats and ticks counted forward from them. Any pointer may be null.
TQKERNEL_API void TqNanoTimeToMeasures(LONGLONG time, const _tqposfmt* format, LONGLONG* measures,
                                       UINT32* beats, UINT32* ticks);
// A tick count as "measures:beats.ticks", a beat being ticksPerBeat × 4 / beatNote ticks; mode 1
// counts measures and beats from 1, with measure -1 just before measure 1. ticksStep divides the
// ticks shown. Return the length; the buffer holds TQNANOTIME_MAXCHARS.
TQKERNEL_API int TqTicksToText(wchar_t* buffer, const _tqposfmt* format, LONGLONG ticks, int mode,
                               BOOL shortForm, UINT32 ticksStep);
// The same with the measures given apart; negative ticks borrow from the measures.
TQKERNEL_API int TqMeasuresAndTicksToText(wchar_t* buffer, const _tqposfmt* format, LONG measures,
                                          LONGLONG ticks, int mode, BOOL shortForm,
                                          UINT32 ticksStep);

// Parsers. They skip what stands in front of the first number (labels, units), store where they
// stopped in end when it is given, and read the locale's separators.

// Any format's text to nano-time: a leading "-" negates, origin is added unless TQPOSFMT_RELATIVE,
// and the result is clamped to low and high and to the nano-time bounds. A text without a number
// gives defaultValue. TQPOSFMT_SHORT reads the short forms of the frame formats, whose last field
// is the seconds; TQPOSFMT_MUSICSHORT those of music time.
TQKERNEL_API LONGLONG TqTextToNanoTimeToken2(const wchar_t* text, const _tqposfmt* format,
                                             LONGLONG low, LONGLONG high, LONGLONG defaultValue,
                                             DWORD flags, const wchar_t** end);
// Flags 0, in the order of the number parsers' Ex forms.
TQKERNEL_API LONGLONG TqTextToNanoTimeTokenEx(const wchar_t* text, const _tqposfmt* format,
                                              LONGLONG defaultValue, LONGLONG low, LONGLONG high,
                                              const wchar_t** end);
// Flags 0, default 0, the nano-time bounds.
TQKERNEL_API LONGLONG TqTextToNanoTimeToken(const wchar_t* text, const _tqposfmt* format,
                                            const wchar_t** end);

// Milliseconds of "hh:mm:ss.mmm", "mm:ss" or "ss.s": the last number is the seconds, with
// decimals. 0 and end at text when there is no number.
TQKERNEL_API LONGLONG TqTextToTimeToken(const wchar_t* text, const wchar_t** end);
// Hours, minutes, seconds and frames as typed, into a value of type 0; the last number is the
// frames, or with TQPOSFMT_SHORT the seconds. FALSE when there is no number.
TQKERNEL_API BOOL TqTextToHMSFToken(const wchar_t* text, DWORD flags, _smpteval* value,
                                    const wchar_t** end);
// Feet and frames, "12+5", as a frame count; a number alone is frames. framesPerFoot of 0 reads
// the feet as 0 frames.
TQKERNEL_API LONGLONG TqTextToFeetAndFramesToken(const wchar_t* text, UINT32 framesPerFoot,
                                                 const wchar_t** end);
// Measures, beats and ticks as typed ("12:3.480", "12:3", "12"); numbers left out are 0.
// Measures written with thousands separators are read whole. FALSE when there is no number.
TQKERNEL_API BOOL TqTextToMeasuresBeatsTicks(const wchar_t* text, DWORD flags, LONGLONG* measures,
                                             LONGLONG* beats, LONGLONG* ticks, const wchar_t** end);
// Beats and ticks as typed ("3.480"). FALSE when there is no number.
TQKERNEL_API BOOL TqTextToBeatsTicks(const wchar_t* text, LONGLONG* beats, LONGLONG* ticks,
                                     const wchar_t** end);
// The tick count of a music text as TqTicksToText writes it in the same mode.
TQKERNEL_API LONGLONG TqTextToTicks(const wchar_t* text, const _tqposfmt* format, int mode,
                                    DWORD flags, const wchar_t** end);
// The nano-time of a music text at the record's tempo; format 5 counts from 1 unless
// TQPOSFMT_RELATIVE. Not clamped, not moved by origin.
TQKERNEL_API LONGLONG TqTextToMusicTimeToken(const wchar_t* text, const _tqposfmt* format,
                                             DWORD flags, const wchar_t** end);
