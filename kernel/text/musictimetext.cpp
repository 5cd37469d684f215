// Music time as text: tick counts to "measures:beats.ticks", and music text back to ticks and
// nano-time.
#include "tqnanotime.h"

#include "nanotimeinternal.h"
#include "numberlocale.h"
#include "numberscanner.h"
#include "timefields.h"
#include "tqlang.h"
#include "tqstrings.h"

#include <wctype.h>

namespace tq::nanotime {
namespace {

// Enough for measures grouped into thousands, beats and ticks, and a few numbers behind them.
constexpr int kMaxFields = 8;

LONGLONG ToSigned(ULONGLONG value)
{
    return value > static_cast<ULONGLONG>(LLONG_MAX) ? LLONG_MAX : static_cast<LONGLONG>(value);
}

// Measures written with the locale's thousands separators come as extra leading fields of three
// digits, which join the measures. Where the thousands and measure separators are the same
// ("1.234.2.000"), only as long as there are more fields than the text should have.
void JoinGroupedMeasures(Field* fields, int* count, int wanted)
{
    const text::NumberLocale locale = text::CurrentNumberLocale();
    const text::LocaleText& thousand = locale.Get(text::LocaleItem::Thousand);
    const text::LocaleText& measure = locale.Get(text::LocaleItem::Measure);
    const bool ambiguous = thousand.length == measure.length &&
                           wcsncmp(thousand.text, measure.text, thousand.length) == 0;
    while (*count > (ambiguous ? wanted : 1) && thousand.length > 0 && fields[1].digits == 3 &&
           fields[1].start - fields[0].end == thousand.length && thousand.IsAt(fields[0].end))
    {
        const ULONGLONG joined = fields[0].integer * 1000 + fields[1].integer;
        fields[0].integer = fields[0].integer > (~0ull - 999) / 1000 ? ~0ull : joined;
        fields[0].end = fields[1].end;
        for (int i = 1; i + 1 < *count; ++i)
            fields[i] = fields[i + 1];
        --*count;
    }
}

} // namespace

bool ReadMusicFields(const wchar_t* text, int wanted, MusicFields* out)
{
    Field fields[kMaxFields];
    int count = 0;
    for (const wchar_t* c = text; count < kMaxFields && NextIntegerField(c, &fields[count]);
         c = fields[count++].end)
    {
    }
    if (count == 0) return false;
    JoinGroupedMeasures(fields, &count, wanted);
    if (count > wanted) count = wanted;
    for (int i = 0; i < 3; ++i)
        out->values[i] = i < count ? ToSigned(fields[i].integer) : 0;
    out->count = count;
    out->end = fields[count - 1].end;
    return true;
}

bool ReadMusicTime(const wchar_t* text, const _tqposfmt& format, DWORD flags, LONGLONG* nanos,
                   const wchar_t** end)
{
    MusicFields fields;
    if (!ReadMusicFields(text, (flags & TQPOSFMT_MUSICSHORT) ? 2 : 3, &fields)) return false;
    *end = fields.end;
    LONGLONG measures = fields.values[0];
    LONGLONG beats = fields.values[1];
    if (format.format == TQPOSFMT_MEASURES && !(flags & TQPOSFMT_RELATIVE))
    {
        // Counted from 1: a 0 typed for either reads as the first.
        measures = measures > 0 ? measures - 1 : 0;
        beats = beats > 0 ? beats - 1 : 0;
    }
    const MusicGrid grid(format);
    if (grid.tempo <= 0)
    {
        *nanos = 0;
        return true;
    }
    const double totalBeats = static_cast<double>(measures) * grid.beatsPerMeasure +
                              static_cast<double>(beats) +
                              static_cast<double>(fields.values[2]) / grid.ticksPerBeat;
    *nanos = ClampToNanoTime(totalBeats * 60e7 / grid.tempo);
    return true;
}

} // namespace tq::nanotime

using namespace tq::nanotime;

TQKERNEL_API int TqMeasuresAndTicksToText(wchar_t* buffer, const _tqposfmt* format, LONG measures,
                                          LONGLONG ticks, int mode, BOOL shortForm,
                                          UINT32 ticksStep)
{
    ComposedText out;
    if (!format)
    {
        out.Fail();
        return out.CopyTo(buffer, TQNANOTIME_MAXCHARS);
    }
    const MusicGrid grid(*format);
    const LONGLONG measureTicks = grid.MeasureTicks();
    LONGLONG wholeMeasures = measures;
    if (ticks < 0)
    {
        const LONGLONG borrowed = (-(ticks + 1)) / measureTicks + 1;
        wholeMeasures -= borrowed;
        ticks += borrowed * measureTicks;
    }
    const UINT32 beats = static_cast<UINT32>(ticks / grid.beatTicks % grid.beatsPerMeasure);
    const UINT32 shownTicks =
        static_cast<UINT32>(ticks % grid.beatTicks / (ticksStep ? ticksStep : 1));
    const bool fromOne = mode == 1;
    // From 1, there is no measure 0: the one before measure 1 is -1.
    if (fromOne && wholeMeasures >= 0) ++wholeMeasures;
    if (wholeMeasures > LONG_MAX) wholeMeasures = LONG_MAX;
    if (wholeMeasures < LONG_MIN) wholeMeasures = LONG_MIN;
    const LONG shownMeasures = static_cast<LONG>(wholeMeasures);
    const UINT32 shownBeats = beats + (fromOne ? 1 : 0);
    if (shortForm)
        out.Print(TqGetString(nullptr, TQS(PosFmtTicksShort)), shownMeasures, shownBeats);
    else
        out.Print(TqGetString(nullptr, TQS(PosFmtTicks)), shownMeasures, shownBeats, shownTicks);
    return out.CopyTo(buffer, TQNANOTIME_MAXCHARS);
}

TQKERNEL_API int TqTicksToText(wchar_t* buffer, const _tqposfmt* format, LONGLONG ticks, int mode,
                               BOOL shortForm, UINT32 ticksStep)
{
    if (!format) return TqMeasuresAndTicksToText(buffer, format, 0, 0, mode, shortForm, ticksStep);
    const LONGLONG measureTicks = MusicGrid(*format).MeasureTicks();
    LONGLONG measures = ticks / measureTicks;
    LONGLONG rest = ticks % measureTicks;
    if (rest < 0)
    {
        rest += measureTicks;
        --measures;
    }
    if (measures > LONG_MAX) measures = LONG_MAX;
    if (measures < LONG_MIN) measures = LONG_MIN;
    return TqMeasuresAndTicksToText(buffer, format, static_cast<LONG>(measures), rest, mode,
                                    shortForm, ticksStep);
}

TQKERNEL_API BOOL TqTextToMeasuresBeatsTicks(const wchar_t* text, DWORD flags, LONGLONG* measures,
                                             LONGLONG* beats, LONGLONG* ticks, const wchar_t** end)
{
    MusicFields fields;
    const bool found =
        text && ReadMusicFields(text, (flags & TQPOSFMT_MUSICSHORT) ? 2 : 3, &fields);
    tq::text::ReportEnd(end, found ? fields.end : text);
    if (measures) *measures = found ? fields.values[0] : 0;
    if (beats) *beats = found ? fields.values[1] : 0;
    if (ticks) *ticks = found ? fields.values[2] : 0;
    return found;
}

TQKERNEL_API BOOL TqTextToBeatsTicks(const wchar_t* text, LONGLONG* beats, LONGLONG* ticks,
                                     const wchar_t** end)
{
    MusicFields fields;
    const bool found = text && ReadMusicFields(text, 2, &fields);
    tq::text::ReportEnd(end, found ? fields.end : text);
    if (beats) *beats = found ? fields.values[0] : 0;
    if (ticks) *ticks = found ? fields.values[1] : 0;
    return found;
}

TQKERNEL_API LONGLONG TqTextToTicks(const wchar_t* text, const _tqposfmt* format, int mode,
                                    DWORD flags, const wchar_t** end)
{
    tq::text::ReportEnd(end, text);
    if (!text || !format) return 0;
    const wchar_t* c = text;
    while (iswspace(*c))
        ++c;
    const bool negative = *c == L'-';
    if (negative) ++c;
    MusicFields fields;
    if (!ReadMusicFields(c, (flags & TQPOSFMT_MUSICSHORT) ? 2 : 3, &fields)) return 0;
    tq::text::ReportEnd(end, fields.end);
    LONGLONG measures = fields.values[0];
    LONGLONG beats = fields.values[1];
    if (mode == 1)
    {
        // Measure -1 stands just before measure 1.
        if (!negative && measures > 0) --measures;
        beats = beats > 0 ? beats - 1 : 0;
    }
    if (negative) measures = -measures;
    const MusicGrid grid(*format);
    const double total = static_cast<double>(measures) * static_cast<double>(grid.MeasureTicks()) +
                         static_cast<double>(beats) * static_cast<double>(grid.beatTicks) +
                         static_cast<double>(fields.values[2]);
    if (total >= 9.2e18) return LLONG_MAX;
    if (total <= -9.2e18) return LLONG_MIN;
    return static_cast<LONGLONG>(total);
}

TQKERNEL_API LONGLONG TqTextToMusicTimeToken(const wchar_t* text, const _tqposfmt* format,
                                             DWORD flags, const wchar_t** end)
{
    tq::text::ReportEnd(end, text);
    LONGLONG nanos = 0;
    const wchar_t* stop = text;
    if (text && format && ReadMusicTime(text, *format, flags, &nanos, &stop))
        tq::text::ReportEnd(end, stop);
    return nanos;
}
