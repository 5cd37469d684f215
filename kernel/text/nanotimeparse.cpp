// Text to nano-time in any display format, and the time, frame and feet parsers beneath it.
#include "tqnanotime.h"

#include "nanotimeinternal.h"
#include "numberscanner.h"
#include "smpteformat.h"
#include "timefields.h"
#include "tqnumtext.h"

#include <wchar.h>
#include <wctype.h>

namespace tq::nanotime {
namespace {

// The largest magnitude any parser returns: the lower bound's, so that a negated text reaches it.
constexpr double kLargestMagnitude = 4611686018427387904.0;
// Seconds are read as a magnitude up to that; the sign comes before the number, and the result is
// clamped to the bounds once it has its sign.
constexpr double kLargestSeconds = kLargestMagnitude / 1e7;
// The longest timecode text passed on; anything longer is no timecode.
constexpr size_t kTimecodeChars = 64;

bool IsDigit(wchar_t c)
{
    return c >= L'0' && c <= L'9';
}

const wchar_t* SkipBlanks(const wchar_t* c)
{
    while (iswspace(*c))
        ++c;
    return c;
}

// A number parser read something only when a digit lies between where it began and stopped.
bool ReadDigits(const wchar_t* begin, const wchar_t* end)
{
    for (; begin < end; ++begin)
        if (IsDigit(*begin)) return true;
    return false;
}

// A magnitude in nano-time from a count of units of the given length in seconds. The extended
// type keeps counts far from zero exact enough to show as the same count again.
LONGLONG FromUnits(double count, double unitsPerSecond)
{
    if (!(unitsPerSecond > 0)) return 0;
    const long double nanos = static_cast<long double>(count) / unitsPerSecond * 1e7L;
    if (!(nanos > 0)) return 0;
    return nanos >= kLargestMagnitude ? static_cast<LONGLONG>(kLargestMagnitude)
                                      : static_cast<LONGLONG>(floorl(nanos + 0.5L));
}

struct Parsed
{
    LONGLONG nanos = 0; // not negative
    const wchar_t* end = nullptr;
    bool found = false;
};

Parsed Integer(const wchar_t* text, LONGLONG scale)
{
    Parsed p;
    const LONGLONG value = TqTextToLongLongToken(text, &p.end);
    p.found = ReadDigits(text, p.end);
    LONGLONG nanos;
    if (value < 0 || __builtin_mul_overflow(value, scale, &nanos)) nanos = LLONG_MAX;
    p.nanos = nanos;
    return p;
}

Parsed Samples(const wchar_t* text, const _tqposfmt& format)
{
    Parsed p;
    const LONGLONG samples =
        TqTextToLongLongTokenEx(text, 0, TQNANOTIME_MIN, TQNANOTIME_MAX, &p.end);
    p.found = ReadDigits(text, p.end);
    p.nanos = FromUnits(static_cast<double>(samples), format.sampleRate);
    return p;
}

Parsed Seconds(const wchar_t* text)
{
    Parsed p;
    const double seconds = TqTextToDoubleTokenEx(text, 0, 0, kLargestSeconds, &p.end, TRUE);
    p.found = ReadDigits(text, p.end);
    // Whole seconds apart, so that they convert exactly at any distance from zero.
    const double whole = floor(seconds);
    p.nanos = static_cast<LONGLONG>(whole) * TQNANOTIME_PER_SECOND +
              static_cast<LONGLONG>(floor((seconds - whole) * 1e7 + 0.5));
    return p;
}

Parsed Decimal(const wchar_t* text, double unitsPerSecond)
{
    Parsed p;
    const double count = TqTextToDoubleToken(text, &p.end, TRUE);
    p.found = ReadDigits(text, p.end);
    p.nanos = FromUnits(count, unitsPerSecond);
    return p;
}

Parsed Time(const wchar_t* text)
{
    Parsed p;
    const LONGLONG milliseconds = TqTextToTimeToken(text, &p.end);
    p.found = p.end != text;
    p.nanos = milliseconds * (TQNANOTIME_PER_SECOND / 1000);
    return p;
}

Parsed HMSF(const wchar_t* text, double frameRate, DWORD flags)
{
    Parsed p;
    _smpteval value = {};
    p.found = TqTextToHMSFToken(text, flags, &value, &p.end) != FALSE;
    p.nanos = TqHMSFToNanoTime(&value, frameRate);
    return p;
}

// A timecode is the word that starts at its first digit.
Parsed Timecode(const wchar_t* text, UINT32 type)
{
    Parsed p;
    p.end = text;
    const wchar_t* start = FirstDigit(text);
    if (!start) return p;
    wchar_t word[kTimecodeChars] = {};
    size_t length = 0;
    const wchar_t* c = start;
    for (; *c && !iswspace(*c); ++c)
        if (length + 1 < kTimecodeChars) word[length++] = *c;
    _smpteval value = {};
    value.type = type;
    TQSMPTE_TextToSMPTE(word, &value);
    p.found = true;
    p.end = c;
    p.nanos = TQSMPTE_SMPTEToNanos(&value);
    return p;
}

Parsed Feet(const wchar_t* text, const _tqposfmt& format, UINT32 framesPerFoot)
{
    Parsed p;
    const LONGLONG frames = TqTextToFeetAndFramesToken(text, framesPerFoot, &p.end);
    p.found = p.end != text;
    p.nanos = FromUnits(static_cast<double>(frames), format.frameRate);
    return p;
}

Parsed Music(const wchar_t* text, const _tqposfmt& format, DWORD flags)
{
    Parsed p;
    p.end = text;
    p.found = ReadMusicTime(text, format, flags, &p.nanos, &p.end);
    return p;
}

Parsed ByFormat(const wchar_t* text, const _tqposfmt& format, DWORD flags)
{
    switch (format.format)
    {
    case TQPOSFMT_SAMPLES:
        return Samples(text, format);
    case TQPOSFMT_TIME:
    case TQPOSFMT_COMPACTTIME:
        return Time(text);
    case TQPOSFMT_SECONDS:
        return Seconds(text);
    case TQPOSFMT_TIMEFRAMES:
        return HMSF(text, format.frameRate, flags);
    case TQPOSFMT_FRAMES:
        return Decimal(text, format.frameRate);
    case TQPOSFMT_MEASURES:
    case TQPOSFMT_MEASURESFROMZERO:
        return Music(text, format, flags);
    case TQPOSFMT_SMPTE2997:
    case TQPOSFMT_SMPTE30:
    case TQPOSFMT_SMPTE2997DROP:
    case TQPOSFMT_SMPTE25:
    case TQPOSFMT_SMPTE24:
    case TQPOSFMT_SMPTE23976:
        return Timecode(text, SmpteTypeOf(format.format));
    case TQPOSFMT_MICROSECONDS:
        return Integer(text, 10);
    case TQPOSFMT_BEATS:
        return Decimal(text, MusicGrid(format).tempo / 60);
    case TQPOSFMT_FEET40:
        return Feet(text, format, 40);
    case TQPOSFMT_FEET16:
        return Feet(text, format, 16);
    case TQPOSFMT_CDTIME:
        return HMSF(text, 75.0, flags);
    default:
        return Integer(text, 1);
    }
}

} // namespace
} // namespace tq::nanotime

using namespace tq::nanotime;
using tq::text::ReportEnd;

TQKERNEL_API LONGLONG TqTextToNanoTimeToken2(const wchar_t* text, const _tqposfmt* format,
                                             LONGLONG low, LONGLONG high, LONGLONG defaultValue,
                                             DWORD flags, const wchar_t** end)
{
    if (!text || !format)
    {
        ReportEnd(end, text);
        return defaultValue;
    }
    ReportEnd(end, text + wcslen(text));
    const wchar_t* c = SkipBlanks(text);
    const bool negative = *c == L'-';
    if (negative) c = SkipBlanks(c + 1);
    if (!*c) return defaultValue;

    const Parsed parsed = ByFormat(c, *format, flags);
    ReportEnd(end, parsed.end);
    if (!parsed.found) return defaultValue;
    LONGLONG value = negative ? -parsed.nanos : parsed.nanos;
    if (!(flags & TQPOSFMT_RELATIVE)) value = SaturatingAdd(value, format->origin);
    value = ClampToNanoTime(value);
    if (value < low) value = low;
    if (value > high) value = high;
    return value;
}

TQKERNEL_API LONGLONG TqTextToNanoTimeTokenEx(const wchar_t* text, const _tqposfmt* format,
                                              LONGLONG defaultValue, LONGLONG low, LONGLONG high,
                                              const wchar_t** end)
{
    return TqTextToNanoTimeToken2(text, format, low, high, defaultValue, 0, end);
}

TQKERNEL_API LONGLONG TqTextToNanoTimeToken(const wchar_t* text, const _tqposfmt* format,
                                            const wchar_t** end)
{
    return TqTextToNanoTimeToken2(text, format, TQNANOTIME_MIN, TQNANOTIME_MAX, 0, 0, end);
}

TQKERNEL_API LONGLONG TqTextToTimeToken(const wchar_t* text, const wchar_t** end)
{
    ReportEnd(end, text);
    constexpr int kMaxFields = 3;
    Field fields[kMaxFields];
    int count = 0;
    for (const wchar_t* c = text; count < kMaxFields && NextDecimalField(c, &fields[count]);
         c = fields[count++].end)
    {
    }
    if (count == 0) return 0;
    ReportEnd(end, fields[count - 1].end);
    // From the right: seconds, minutes, hours.
    double seconds = 0;
    for (int i = 0; i < count; ++i)
        seconds = seconds * 60 + fields[i].value;
    const double milliseconds = floor(seconds * 1000 + 0.5);
    constexpr double kLargest = kLargestMagnitude / 10000;
    return static_cast<LONGLONG>(milliseconds > kLargest ? kLargest : milliseconds);
}

TQKERNEL_API BOOL TqTextToHMSFToken(const wchar_t* text, DWORD flags, _smpteval* value,
                                    const wchar_t** end)
{
    ReportEnd(end, text);
    if (!value) return FALSE;
    *value = {};
    // The short form ends at the seconds.
    const int fieldCount = (flags & TQPOSFMT_SHORT) ? 3 : 4;
    Field fields[4];
    int count = 0;
    for (const wchar_t* c = text; count < fieldCount && NextIntegerField(c, &fields[count]);
         c = fields[count++].end)
    {
    }
    if (count == 0) return FALSE;
    ReportEnd(end, fields[count - 1].end);
    UINT32* const slots[] = {&value->hours, &value->minutes, &value->seconds, &value->frames};
    for (int i = 0; i < count; ++i)
    {
        const ULONGLONG number = fields[i].integer;
        *slots[fieldCount - count + i] =
            number > 0xFFFFFFFFull ? 0xFFFFFFFFu : static_cast<UINT32>(number);
    }
    return TRUE;
}

TQKERNEL_API LONGLONG TqTextToFeetAndFramesToken(const wchar_t* text, UINT32 framesPerFoot,
                                                 const wchar_t** end)
{
    ReportEnd(end, text);
    const wchar_t* first = FirstDigit(text);
    if (!first) return 0;
    const wchar_t* stop = nullptr;
    const LONGLONG leading = TqTextToLongLongToken(first, &stop);
    // "+5" is five frames; "12" alone is twelve frames.
    if (wmemchr(text, L'+', static_cast<size_t>(first - text)))
    {
        ReportEnd(end, stop);
        return leading;
    }
    const wchar_t* plus = SkipBlanks(stop);
    if (*plus != L'+')
    {
        ReportEnd(end, stop);
        return leading;
    }
    LONGLONG frames;
    if (__builtin_mul_overflow(leading, static_cast<LONGLONG>(framesPerFoot), &frames))
        frames = LLONG_MAX;
    const wchar_t* rest = SkipBlanks(plus + 1);
    if (!IsDigit(*rest))
    {
        ReportEnd(end, plus + 1);
        return frames;
    }
    const LONGLONG more = TqTextToLongLongToken(rest, &stop);
    ReportEnd(end, stop);
    return SaturatingAdd(frames, more);
}
