// bench_printf: throughput of TqPrintF and TqNVPrintF against the C library's swprintf on the
// same formats.
#include "tqkernel.h"
#include "tqprintf.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

constexpr int kRepetitions = 11;
constexpr int kCallsPerRepetition = 20000;
constexpr size_t kCapacity = 256;

wchar_t g_buffer[kCapacity];

// One way to print one case's format with its arguments.
using Printer = void (*)();

struct Case
{
    const wchar_t* name;
    Printer swprintfForm;
    Printer tqPrintF;
    Printer tqNVPrintF;
};

// TqNVPrintF as callers reach it from their own variadic wrappers.
void Bounded(const wchar_t* format, ...)
{
    va_list args;
    va_start(args, format);
    TqNVPrintF(g_buffer, kCapacity, nullptr, format, args);
    va_end(args);
}

// msvcrt's swprintf with a count; the plain name maps to a different implementation under
// mingw's C99 switch.
#define FORMS(format, ...)                                                                         \
    [] { _snwprintf(g_buffer, kCapacity, format, __VA_ARGS__); },                                  \
        [] { TqPrintF(g_buffer, format, __VA_ARGS__); }, [] { Bounded(format, __VA_ARGS__); }

const Case kCases[] = {
    // The unused argument only keeps the macro's shape.
    {L"plain text", FORMS(L"Plain text of a status line, with no conversions", 0)},
    {L"%d", FORMS(L"%d", 1234567)},
    {L"%08X", FORMS(L"%08X", 0xBEEFu)},
    {L"%I64d", FORMS(L"%I64d", 1234567890123LL)},
    {L"%s", FORMS(L"[%s]", L"a short name")},
    {L"%.2f", FORMS(L"%.2f", 1234.5678)},
};

const Case kMixedLine = {
    L"mixed line", FORMS(L"Track %d: %s at %.2f dB, %u samples", 12, L"Vocals", -6.02, 48000u)};

// Locale forms: the C library's nearest, which does no grouping, against the kernel's "$" form.
const Case kLocaleCases[] = {
    {L"$d vs %d", [] { _snwprintf(g_buffer, kCapacity, L"%d", 1234567); },
     [] { TqPrintF(g_buffer, L"$d", 1234567); }, [] { Bounded(L"$d", 1234567); }},
    {L"$.2f vs %.2f", [] { _snwprintf(g_buffer, kCapacity, L"%.2f", 1234.5678); },
     [] { TqPrintF(g_buffer, L"$.2f", 1234.5678); }, [] { Bounded(L"$.2f", 1234.5678); }},
};

// Nanoseconds per call of one batch.
double Batch(Printer print, const LARGE_INTEGER& frequency)
{
    LARGE_INTEGER start, end;
    QueryPerformanceCounter(&start);
    for (int i = 0; i < kCallsPerRepetition; ++i)
        print();
    QueryPerformanceCounter(&end);
    return static_cast<double>(end.QuadPart - start.QuadPart) * 1e9 /
           static_cast<double>(frequency.QuadPart) / kCallsPerRepetition;
}

double Median(std::vector<double>& values)
{
    std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
    return values[values.size() / 2];
}

struct Ratios
{
    double tqPrintF;
    double tqNVPrintF;
};

// The three forms take turns batch by batch, so that a busy machine slows them alike; each
// figure is the median of its batches.
Ratios Run(const Case& c)
{
    LARGE_INTEGER frequency;
    QueryPerformanceFrequency(&frequency);
    const Printer forms[] = {c.swprintfForm, c.tqPrintF, c.tqNVPrintF};
    std::vector<double> times[3];
    for (Printer print : forms)
        Batch(print, frequency);
    for (int r = 0; r < kRepetitions; ++r)
        for (int f = 0; f < 3; ++f)
            times[f].push_back(Batch(forms[f], frequency));
    const double base = Median(times[0]);
    const double unbounded = Median(times[1]);
    const double bounded = Median(times[2]);
    wprintf(
        L"%-14ls swprintf %8.1f ns   TqPrintF %8.1f ns (%5.2fx)   TqNVPrintF %8.1f ns (%5.2fx)\n",
        c.name, base, unbounded, unbounded / base, bounded, bounded / base);
    return {unbounded / base, bounded / base};
}

double GeometricMean(const std::vector<double>& values)
{
    double logSum = 0;
    for (double v : values)
        logSum += std::log(v);
    return std::exp(logSum / static_cast<double>(values.size()));
}

} // namespace

int wmain()
{
    TqKernel_EarlyInitialize(GetModuleHandleW(nullptr), 0);
    wprintf(L"bench_printf: median of %d repetitions of %d calls, time per call\n", kRepetitions,
            kCallsPerRepetition);

    std::vector<double> unbounded, bounded;
    for (const Case& c : kCases)
    {
        const Ratios r = Run(c);
        unbounded.push_back(r.tqPrintF);
        bounded.push_back(r.tqNVPrintF);
    }
    const Ratios mixed = Run(kMixedLine);
    unbounded.push_back(mixed.tqPrintF);
    bounded.push_back(mixed.tqNVPrintF);
    wprintf(L"locale forms (the kernel groups and localises, the C library does not):\n");
    std::vector<double> localeRatios;
    for (const Case& c : kLocaleCases)
        localeRatios.push_back(Run(c).tqPrintF);

    wprintf(L"bench_printf: time relative to swprintf, geometric mean over %zu shared formats: "
            L"TqPrintF %.2fx, TqNVPrintF %.2fx; mixed line %.2fx / %.2fx; locale forms %.2fx\n",
            unbounded.size(), GeometricMean(unbounded), GeometricMean(bounded), mixed.tqPrintF,
            mixed.tqNVPrintF, GeometricMean(localeRatios));
    TqKernel_LateTerminate(GetModuleHandleW(nullptr));
    return 0;
}
