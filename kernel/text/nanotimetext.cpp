// Nano-time to text in the twenty display formats, and the time splits they stand on: hours to
// frames, and measures, beats and ticks.
#include "tqnanotime.h"

#include "nanotimeinternal.h"
#include "smpteformat.h"
#include "tqlang.h"
#include "tqprintf.h"
#include "tqstrings.h"

#include <wchar.h>

namespace tq::nanotime {

bool ComposedText::Print(const wchar_t* format, ...)
{
    if (m_failed || !format) return false;
    va_list args;
    va_start(args, format);
    size_t length = 0;
    const HRESULT hr = TqNVPrintF(Cursor(), Room(), &length, format, args);
    va_end(args);
    // A text that fills the room may have been cut: no format of the tables comes near it.
    m_failed = FAILED(hr) || length + 1 >= Room();
    if (!m_failed) m_length += length;
    return !m_failed;
}

int ComposedText::CopyTo(wchar_t* buffer, size_t capacity) const
{
    if (!buffer || capacity == 0) return 0;
    if (m_failed || m_length + 1 > capacity)
    {
        buffer[0] = L'\0';
        return 0;
    }
    wmemcpy(buffer, m_text, m_length);
    buffer[m_length] = L'\0';
    return static_cast<int>(m_length);
}

namespace {

constexpr const wchar_t* kNormalFormats[TQPOSFMT_COUNT] = {
    TQS(PosFmt0),  TQS(PosFmt1),  TQS(PosFmt2),  TQS(PosFmt3),  TQS(PosFmt4),
    TQS(PosFmt5),  TQS(PosFmt6),  TQS(PosFmt7),  TQS(PosFmt8),  TQS(PosFmt9),
    TQS(PosFmt10), TQS(PosFmt11), TQS(PosFmt12), TQS(PosFmt13), TQS(PosFmt14),
    TQS(PosFmt15), TQS(PosFmt16), TQS(PosFmt17), TQS(PosFmt18), TQS(PosFmt19)};
constexpr const wchar_t* kShortFormats[TQPOSFMT_COUNT] = {
    TQS(PosFmtShort0),  TQS(PosFmtShort1),  TQS(PosFmtShort2),  TQS(PosFmtShort3),
    TQS(PosFmtShort4),  TQS(PosFmtShort5),  TQS(PosFmtShort6),  TQS(PosFmtShort7),
    TQS(PosFmtShort8),  TQS(PosFmtShort9),  TQS(PosFmtShort10), TQS(PosFmtShort11),
    TQS(PosFmtShort12), TQS(PosFmtShort13), TQS(PosFmtShort14), TQS(PosFmtShort15),
    TQS(PosFmtShort16), TQS(PosFmtShort17), TQS(PosFmtShort18), TQS(PosFmtShort19)};

// The raw value's string, for formats outside the tables.
constexpr wchar_t kRawFormat[] = L"$I64d";
// A whole-number display of a fractional value: printed truncated, never rounded up to a
// number the value has not reached.
constexpr wchar_t kWholeFormat[] = L"$.0f";

const wchar_t* TableFormat(int format, DWORD flags)
{
    if (format < 0 || format >= TQPOSFMT_COUNT) return kRawFormat;
    return TqGetString(nullptr,
                       (flags & TQPOSFMT_SHORT) ? kShortFormats[format] : kNormalFormats[format]);
}

LONGLONG TruncateToInt64(long double value)
{
    if (!(value < 9.2e18L)) return isnan(value) ? 0 : LLONG_MAX;
    return static_cast<LONGLONG>(value);
}

_smpteval Split(LONGLONG time, UINT32 type, double rate)
{
    _smpteval value = {};
    value.type = type;
    TqNanoTimeToHMSF(time, &value, rate);
    return value;
}

bool PrintHMSF(ComposedText& out, const wchar_t* format, const _smpteval& v)
{
    return out.Print(format, v.hours, v.minutes, v.seconds, v.frames);
}

// A fractional count under a format string; the whole-number string prints it truncated.
bool PrintFraction(ComposedText& out, const wchar_t* format, long double value)
{
    if (wcscmp(format, kWholeFormat) == 0) return out.Print(L"$I64d", TruncateToInt64(value));
    return out.Print(format, static_cast<double>(value));
}

bool PrintMeasures(ComposedText& out, const wchar_t* format, LONGLONG time, const _tqposfmt& record,
                   bool fromOne)
{
    LONGLONG measures = 0;
    UINT32 beats = 0, ticks = 0;
    TqNanoTimeToMeasures(time, &record, &measures, &beats, &ticks);
    // The string shows 32-bit measures: a count beyond them, centuries at any tempo, stays at
    // the largest.
    if (measures > 0xFFFFFFFELL) measures = 0xFFFFFFFELL;
    const UINT32 shown = static_cast<UINT32>(measures) + (fromOne ? 1 : 0);
    return out.Print(format, shown, beats + (fromOne ? 1 : 0), ticks);
}

// Compact time: no leading zeros on the first field, and no hours field when there are none.
bool PrintCompact(ComposedText& out, const wchar_t* format, LONGLONG time, DWORD flags)
{
    if (flags & TQPOSFMT_SHORT) return out.Print(format, time / TQNANOTIME_PER_SECOND);
    const _smpteval v = Split(time, 0, 1000.0);
    if (v.hours >= 10) return out.Print(format, v.hours, v.minutes, v.seconds);
    if (v.hours >= 1)
        return out.Print(TqGetString(nullptr, TQS(PosFmtCompactHours)), v.hours, v.minutes,
                         v.seconds);
    if (v.minutes >= 10)
        return out.Print(TqGetString(nullptr, TQS(PosFmtCompactMinutes)), v.minutes, v.seconds);
    return out.Print(TqGetString(nullptr, TQS(PosFmtCompactFewMinutes)), v.minutes, v.seconds);
}

// The text of a time that is not negative.
bool PrintMagnitude(ComposedText& out, const _tqposfmt& record, LONGLONG time,
                    const wchar_t* format, DWORD flags)
{
    const double seconds = static_cast<double>(time) * 1e-7;
    // Counts of samples, frames and beats far from zero need more digits than a double holds to
    // read back as the same count; the extended type has them.
    const long double exactSeconds = static_cast<long double>(time) / 1e7L;
    switch (record.format)
    {
    case TQPOSFMT_SAMPLES:
        return out.Print(format, TruncateToInt64(exactSeconds * record.sampleRate + 0.5L));
    case TQPOSFMT_TIME:
        return PrintHMSF(out, format, Split(time, 0, 1000.0));
    case TQPOSFMT_SECONDS:
        if (wcscmp(format, kWholeFormat) == 0)
            return out.Print(L"$I64d", time / TQNANOTIME_PER_SECOND);
        return out.Print(format, seconds);
    case TQPOSFMT_TIMEFRAMES:
        return PrintHMSF(out, format, Split(time, 0, record.frameRate));
    case TQPOSFMT_FRAMES:
        return PrintFraction(out, format, exactSeconds * record.frameRate + 0.00001L);
    case TQPOSFMT_MEASURES:
        return PrintMeasures(out, format, time, record, !(flags & TQPOSFMT_RELATIVE));
    case TQPOSFMT_MEASURESFROMZERO:
        return PrintMeasures(out, format, time, record, false);
    case TQPOSFMT_SMPTE2997:
    case TQPOSFMT_SMPTE30:
    case TQPOSFMT_SMPTE2997DROP:
    case TQPOSFMT_SMPTE25:
    case TQPOSFMT_SMPTE24:
    case TQPOSFMT_SMPTE23976:
        return PrintHMSF(out, format, Split(time, SmpteTypeOf(record.format), 0));
    case TQPOSFMT_MICROSECONDS:
        return out.Print(format, time / 10 + (time % 10 >= 5 ? 1 : 0));
    case TQPOSFMT_BEATS:
        return PrintFraction(out, format, exactSeconds * record.tempo / 60);
    case TQPOSFMT_FEET40:
    case TQPOSFMT_FEET16:
    {
        const LONGLONG perFoot = record.format == TQPOSFMT_FEET40 ? 40 : 16;
        const LONGLONG frames = TruncateToInt64(exactSeconds * record.frameRate + 0.50001L);
        return out.Print(format, frames / perFoot, frames % perFoot);
    }
    case TQPOSFMT_CDTIME:
        return PrintHMSF(out, format, Split(time, 0, 75.0));
    case TQPOSFMT_COMPACTTIME:
        return PrintCompact(out, format, time, flags);
    default:
        return out.Print(format, time);
    }
}

int Render(wchar_t* buffer, size_t capacity, const _tqposfmt* record, LONGLONG time,
           const wchar_t* format, DWORD flags)
{
    ComposedText out;
    if (!record || !format)
    {
        out.Fail();
        return out.CopyTo(buffer, capacity);
    }
    LONGLONG shown = (flags & TQPOSFMT_RELATIVE) ? time : SaturatingSubtract(time, record->origin);
    if (shown < 0)
    {
        out.Put(L'-');
        shown = shown == LLONG_MIN ? LLONG_MAX : -shown;
    }
    PrintMagnitude(out, *record, shown, format, flags);
    return out.CopyTo(buffer, capacity);
}

size_t CapacityOf(int capacity)
{
    return capacity > 0 ? static_cast<size_t>(capacity) : 0;
}

} // namespace
} // namespace tq::nanotime

using namespace tq::nanotime;

TQKERNEL_API int TqNanoTimeToText(wchar_t* buffer, const _tqposfmt* format, LONGLONG time,
                                  BOOL shortForm)
{
    return TqNanoTimeToTextExN(buffer, TQNANOTIME_MAXCHARS, format, time,
                               shortForm ? TQPOSFMT_SHORT : 0);
}

TQKERNEL_API int TqNanoTimeToTextN(wchar_t* buffer, int capacity, const _tqposfmt* format,
                                   LONGLONG time, BOOL shortForm)
{
    return TqNanoTimeToTextExN(buffer, capacity, format, time, shortForm ? TQPOSFMT_SHORT : 0);
}

TQKERNEL_API int TqNanoTimeToTextEx(wchar_t* buffer, const _tqposfmt* format, LONGLONG time,
                                    DWORD flags)
{
    return TqNanoTimeToTextExN(buffer, TQNANOTIME_MAXCHARS, format, time, flags);
}

TQKERNEL_API int TqNanoTimeToTextExN(wchar_t* buffer, int capacity, const _tqposfmt* format,
                                     LONGLONG time, DWORD flags)
{
    const wchar_t* formatString = format ? TableFormat(format->format, flags) : nullptr;
    return Render(buffer, CapacityOf(capacity), format, time, formatString, flags);
}

TQKERNEL_API int TqNanoTimeToTextFormat(wchar_t* buffer, const _tqposfmt* format, LONGLONG time,
                                        const wchar_t* formatString, DWORD flags)
{
    return Render(buffer, TQNANOTIME_MAXCHARS, format, time, formatString, flags);
}

TQKERNEL_API int TqNanoTimeToTextFormatN(wchar_t* buffer, int capacity, const _tqposfmt* format,
                                         LONGLONG time, const wchar_t* formatString, DWORD flags)
{
    return Render(buffer, CapacityOf(capacity), format, time, formatString, flags);
}

TQKERNEL_API void TqNanoTimeToHMSF(LONGLONG time, _smpteval* value, double frameRate)
{
    if (!value) return;
    if (tq::smpte::IsValidType(value->type))
    {
        TQSMPTE_NanoToSMPTE(time, value);
        return;
    }
    // Whole seconds apart from the fraction keeps the fraction exact at any distance from zero.
    LONGLONG whole = time / TQNANOTIME_PER_SECOND;
    LONGLONG rest = time % TQNANOTIME_PER_SECOND;
    if (rest < 0)
    {
        rest += TQNANOTIME_PER_SECOND;
        --whole;
    }
    double fraction = static_cast<double>(rest) * 1e-7;
    UINT32 frames = 0;
    if (frameRate > 0.01)
    {
        // Half a frame makes the truncation below round to the nearest frame, and lets a time
        // just short of a second show as the next second's frame 0.
        fraction += 0.5 / frameRate;
        if (fraction >= 1.0)
        {
            fraction -= 1.0;
            ++whole;
        }
        frames = static_cast<UINT32>(fraction * frameRate);
    }
    constexpr LONGLONG kDay = 86400;
    whole %= kDay;
    if (whole < 0) whole += kDay;
    value->hours = static_cast<UINT32>(whole / 3600);
    value->minutes = static_cast<UINT32>(whole / 60 % 60);
    value->seconds = static_cast<UINT32>(whole % 60);
    value->frames = frames;
}

TQKERNEL_API LONGLONG TqHMSFToNanoTime(const _smpteval* value, double frameRate)
{
    if (!value) return 0;
    if (tq::smpte::IsValidType(value->type)) return TQSMPTE_SMPTEToNanos(value);
    return TQSMPTE_SmpteLikeToNanos(frameRate, value);
}

TQKERNEL_API void TqNanoTimeToMeasures(LONGLONG time, const _tqposfmt* format, LONGLONG* measures,
                                       UINT32* beats, UINT32* ticks)
{
    LONGLONG wholeMeasures = 0;
    UINT32 wholeBeats = 0, wholeTicks = 0;
    if (format)
    {
        const MusicGrid grid(*format);
        // A twentieth of a thousandth of a measure more, so that a time a rounding error short
        // of a beat shows as that beat rather than as the last tick before it.
        const double count =
            static_cast<double>(time) * grid.tempo / grid.beatsPerMeasure * (1.0 / (60 * 1e7)) +
            0.00005;
        const double measureFloor = floor(count);
        const double beatCount = (count - measureFloor) * grid.beatsPerMeasure;
        const double beatFloor = floor(beatCount);
        constexpr double kMeasureLimit = 4e18;
        wholeMeasures = static_cast<LONGLONG>(
            measureFloor > kMeasureLimit
                ? kMeasureLimit
                : (measureFloor < -kMeasureLimit ? -kMeasureLimit : measureFloor));
        wholeBeats = static_cast<UINT32>(beatFloor);
        wholeTicks = static_cast<UINT32>((beatCount - beatFloor) * grid.ticksPerBeat);
        if (wholeBeats >= grid.beatsPerMeasure) wholeBeats = grid.beatsPerMeasure - 1;
        if (wholeTicks >= grid.ticksPerBeat) wholeTicks = grid.ticksPerBeat - 1;
    }
    if (measures) *measures = wholeMeasures;
    if (beats) *beats = wholeBeats;
    if (ticks) *ticks = wholeTicks;
}
