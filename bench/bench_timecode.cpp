// bench_timecode: time per conversion of timecode and nano-time text, each next to the C
// library's swprintf (or swscanf, for the parser) of the same fields in the same run.
#include "tqkernel.h"
#include "tqnanotime.h"
#include "tqsmpte.h"

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

constexpr int kRepetitions = 11;
constexpr int kCallsPerBatch = 20000;
constexpr int kInputs = 1024;
constexpr size_t kCapacity = 64;

wchar_t g_buffer[kCapacity];
volatile LONGLONG g_sink;
UINT32 g_counts[kInputs];
LONGLONG g_times[kInputs];
_smpteval g_fields[kInputs];
wchar_t g_texts[kInputs][kCapacity];
_tqposfmt g_record;

using Call = void (*)(int input);

struct Case
{
    const wchar_t* name;
    Call kernel;
    Call library;
    const wchar_t* libraryName;
};

void PrintFields(int i, const wchar_t* format)
{
    const _smpteval& v = g_fields[i];
    _snwprintf(g_buffer, kCapacity, format, v.hours, v.minutes, v.seconds, v.frames);
}

void SmpteFrameCount(int i, UINT32 type)
{
    _smpteval value = {type, 0, 0, 0, 0, 0};
    TQSMPTE_FrameCountToSMPTE(&value, g_counts[i]);
    g_sink = value.frames;
}

void NanoText(int i, int format)
{
    g_record.format = format;
    TqNanoTimeToText(g_buffer, &g_record, g_times[i], FALSE);
}

const Case kCases[] = {
    {L"FrameCountToSMPTE 25", [](int i) { SmpteFrameCount(i, TQSMPTE_TYPE_25); },
     [](int i) { PrintFields(i, L"%02u:%02u:%02u:%02u"); }, L"swprintf %02u x4"},
    {L"FrameCountToSMPTE drop", [](int i) { SmpteFrameCount(i, TQSMPTE_TYPE_2997DROP); },
     [](int i) { PrintFields(i, L"%02u:%02u:%02u;%02u"); }, L"swprintf %02u x4"},
    {L"NanoTimeToText samples", [](int i) { NanoText(i, TQPOSFMT_SAMPLES); },
     [](int i) { _snwprintf(g_buffer, kCapacity, L"%I64d", g_times[i] / 208); }, L"swprintf %I64d"},
    {L"NanoTimeToText hh:mm:ss.mmm", [](int i) { NanoText(i, TQPOSFMT_TIME); },
     [](int i) { PrintFields(i, L"%02u:%02u:%02u.%03u"); }, L"swprintf %02u x4"},
    {L"NanoTimeToText SMPTE drop", [](int i) { NanoText(i, TQPOSFMT_SMPTE2997DROP); },
     [](int i) { PrintFields(i, L"%02u:%02u:%02u;%02u"); }, L"swprintf %02u x4"},
    {L"TextToNanoTimeToken2 time",
     [](int i) {
         g_record.format = TQPOSFMT_TIME;
         g_sink = TqTextToNanoTimeToken2(g_texts[i], &g_record, TQNANOTIME_MIN, TQNANOTIME_MAX, 0,
                                         0, nullptr);
     },
     [](int i) {
         unsigned h = 0, m = 0, s = 0, ms = 0;
         swscanf(g_texts[i], L"%u:%u:%u.%u", &h, &m, &s, &ms);
         g_sink = ms;
     },
     L"swscanf %u x4"},
};

double Batch(Call call, const LARGE_INTEGER& frequency)
{
    LARGE_INTEGER start, end;
    QueryPerformanceCounter(&start);
    for (int i = 0; i < kCallsPerBatch; ++i)
        call(i % kInputs);
    QueryPerformanceCounter(&end);
    return static_cast<double>(end.QuadPart - start.QuadPart) * 1e9 /
           static_cast<double>(frequency.QuadPart) / kCallsPerBatch;
}

double Median(std::vector<double>& values)
{
    std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
    return values[values.size() / 2];
}

// The two take turns batch by batch, so that a busy machine slows them alike.
void Run(const Case& c)
{
    LARGE_INTEGER frequency;
    QueryPerformanceFrequency(&frequency);
    Batch(c.kernel, frequency);
    Batch(c.library, frequency);
    std::vector<double> kernel, library;
    for (int r = 0; r < kRepetitions; ++r)
    {
        kernel.push_back(Batch(c.kernel, frequency));
        library.push_back(Batch(c.library, frequency));
    }
    const double k = Median(kernel), l = Median(library);
    wprintf(L"%-30ls %8.1f ns   %-18ls %8.1f ns   (%5.2fx)\n", c.name, k, c.libraryName, l, k / l);
}

void MakeInputs()
{
    g_record = {};
    g_record.sampleRate = 48000;
    g_record.frameRate = 25.0;
    g_record.tempo = 120.0;
    g_record.beatNote = 4;
    g_record.beatsPerMeasure = 4;
    g_record.ticksPerBeat = 960;
    g_record.format = TQPOSFMT_TIME;
    // Positions spread over a day, with every field moving.
    for (int i = 0; i < kInputs; ++i)
    {
        g_counts[i] = static_cast<UINT32>((i * 2531011u) % TQSMPTE_DAYFRAMES_DROP);
        g_times[i] = static_cast<LONGLONG>(i) * 843750123LL + 1234567;
        g_fields[i] = {TQSMPTE_TYPE_2997DROP, 0, 0, 0, 0, 0};
        TQSMPTE_FrameCountToSMPTE(&g_fields[i], g_counts[i]);
        TqNanoTimeToText(g_texts[i], &g_record, g_times[i], FALSE);
    }
}

} // namespace

int wmain()
{
    TqKernel_EarlyInitialize(GetModuleHandleW(nullptr), 0);
    MakeInputs();
    wprintf(L"bench_timecode: median of %d batches of %d calls, time per conversion\n",
            kRepetitions, kCallsPerBatch);
    for (const Case& c : kCases)
        Run(c);
    TqKernel_LateTerminate(GetModuleHandleW(nullptr));
    return 0;
}
