// Frame counts as the kernel's time text.
#include "timetext.h"

#include <limits>

namespace tqhost {
namespace {

struct TimeFormatName
{
    const wchar_t* name;
    INT32 format;
};

constexpr TimeFormatName kTimeFormats[] = {
    {L"samples", TQPOSFMT_SAMPLES},     {L"time", TQPOSFMT_TIME},
    {L"seconds", TQPOSFMT_SECONDS},     {L"smpte24", TQPOSFMT_SMPTE24},
    {L"smpte25", TQPOSFMT_SMPTE25},     {L"smpte2997drop", TQPOSFMT_SMPTE2997DROP},
    {L"smpte30", TQPOSFMT_SMPTE30},     {L"measures", TQPOSFMT_MEASURES},
};

constexpr LONGLONG kNanoPerSecond = 10000000;

// Split so that no product leaves 64 bits for any file length a WAV header can describe.
LONGLONG FramesToNanoTime(UINT64 frames, UINT32 sampleRate)
{
    if (sampleRate == 0) return 0;
    const UINT64 seconds = frames / sampleRate;
    if (seconds > static_cast<UINT64>(std::numeric_limits<LONGLONG>::max() / kNanoPerSecond))
        return std::numeric_limits<LONGLONG>::max();
    return static_cast<LONGLONG>(seconds) * kNanoPerSecond +
           static_cast<LONGLONG>((frames % sampleRate) * kNanoPerSecond / sampleRate);
}

} // namespace

std::optional<INT32> ParseTimeFormat(const std::wstring& name)
{
    for (const TimeFormatName& row : kTimeFormats)
        if (_wcsicmp(name.c_str(), row.name) == 0) return row.format;
    return std::nullopt;
}

std::wstring FramesToText(const TimeFormat& format, UINT64 frames, UINT32 sampleRate, bool length)
{
    _tqposfmt position = {};
    position.format = format.format;
    position.sampleRate = sampleRate;
    position.tempo = format.tempo;
    position.beatNote = 4;
    position.beatsPerMeasure = 4;
    position.ticksPerBeat = 960;
    wchar_t text[TQNANOTIME_MAXCHARS];
    if (!TqNanoTimeToTextExN(text, TQNANOTIME_MAXCHARS, &position,
                             FramesToNanoTime(frames, sampleRate),
                             length ? TQPOSFMT_RELATIVE : 0))
        return std::to_wstring(frames) + L" frames";
    return text;
}

} // namespace tqhost
