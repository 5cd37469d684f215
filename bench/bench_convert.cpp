// bench_convert: throughput of the sample copy engine's main pairs beside memcpy of the same bytes.
#include "tqsamplecopy.h"
#if TQ_BENCH_INTERLEAVE
#include "tqinterleave.h"
#endif

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <utility>
#include <vector>

namespace {

constexpr int kRepetitions = 41;
// One timed repetition is short, so that most of them run within one time slice of a busy machine.
constexpr double kRunSeconds = 0.0005;

// Samples of one call; 16384 singles are a stereo block of 8192 frames, 64 KB.
constexpr long kDefaultSamples = 16384;

double Seconds(LONGLONG counts)
{
    static const double frequency = [] {
        LARGE_INTEGER f;
        QueryPerformanceFrequency(&f);
        return static_cast<double>(f.QuadPart);
    }();
    return static_cast<double>(counts) / frequency;
}

LONGLONG Now()
{
    LARGE_INTEGER t;
    QueryPerformanceCounter(&t);
    return t.QuadPart;
}

// Calls per timed repetition, so that one lasts about kRunSeconds.
int CallsPerRun(const std::function<void()>& call)
{
    int calls = 1;
    for (;;)
    {
        const LONGLONG start = Now();
        for (int i = 0; i < calls; ++i)
            call();
        if (Seconds(Now() - start) > kRunSeconds / 4 || calls > (1 << 24)) break;
        calls *= 2;
    }
    return calls * 4;
}

// Median throughput of call over the given bytes, alternating with memcpy of as many bytes, so
// that both see the same machine load.
struct Figures
{
    double convert;
    double memcpy;
};

Figures Measure(const std::function<void()>& call, size_t bytes)
{
    std::vector<BYTE> from(bytes, 1), to(bytes);
    const std::function<void()> copy = [&] { memcpy(to.data(), from.data(), bytes); };
    const int convertCalls = CallsPerRun(call);
    const int copyCalls = CallsPerRun(copy);
    std::vector<double> convert, plain;
    for (int r = 0; r < kRepetitions; ++r)
    {
        LONGLONG start = Now();
        for (int i = 0; i < convertCalls; ++i)
            call();
        convert.push_back(bytes * static_cast<double>(convertCalls) / Seconds(Now() - start));
        start = Now();
        for (int i = 0; i < copyCalls; ++i)
            copy();
        plain.push_back(bytes * static_cast<double>(copyCalls) / Seconds(Now() - start));
    }
    auto median = [](std::vector<double>& v) {
        std::nth_element(v.begin(), v.begin() + v.size() / 2, v.end());
        return v[v.size() / 2] / 1e6;
    };
    return {median(convert), median(plain)};
}

// Samples in the source type that stay within full scale, as a host would send.
std::vector<BYTE> Source(TQSAMPLETYPE type, long samples)
{
    const size_t size = TqAudio_BytesFromSampleType(type);
    std::vector<float> plane(samples);
    for (long i = 0; i < samples; ++i)
        plane[i] = static_cast<float>((i * 7919) % 20001 - 10000) / 10001.0f;
    std::vector<BYTE> out(samples * size);
    TqAudio_GetCopyFunction2(type, TQSAMPLE_FLOAT32)(out.data(), plane.data(), samples, 1.0f);
    return out;
}

struct Row
{
    const char* name;
    bool vectorised;
    Figures figures;
};

Row BlockRow(const char* name, TQSAMPLETYPE dst, TQSAMPLETYPE src, long samples)
{
    const TQAUDIO_COPYFUNC copy = TqAudio_GetCopyFunction2(dst, src);
    const bool vectorised = copy != tq::audio::ScalarCopyFunction(dst, src);
    const std::vector<BYTE> in = Source(src, samples);
    const size_t dstSize = TqAudio_BytesFromSampleType(dst);
    std::vector<BYTE> out(samples * dstSize);
    const size_t wider = std::max<size_t>(dstSize, TqAudio_BytesFromSampleType(src)) * samples;
    return {name, vectorised, Measure([&] { copy(out.data(), in.data(), samples, 1.0f); }, wider)};
}

#if TQ_BENCH_INTERLEAVE
std::vector<Row> InterleaveRows(long samples)
{
    const long frames = samples / 2;
    const std::vector<BYTE> left = Source(TQSAMPLE_FLOAT32, frames);
    const std::vector<BYTE> right = Source(TQSAMPLE_FLOAT32, frames);
    std::vector<BYTE> pairs(samples * 2);
    const auto interleave = TqAudio_GetStereoInterleaveFunction(TQSAMPLE_PCM16, TQSAMPLE_FLOAT32);
    const auto scalarInterleave =
        tq::audio::ScalarStereoInterleaveFunction(TQSAMPLE_PCM16, TQSAMPLE_FLOAT32);
    Row in{
        "stereo f32->i16", interleave != scalarInterleave,
        Measure([&] { interleave(pairs.data(), left.data(), right.data(), frames); }, samples * 4)};

    const std::vector<BYTE> packed = Source(TQSAMPLE_PCM16, samples);
    std::vector<BYTE> l(frames * 4), r(frames * 4);
    const auto split = TqAudio_GetStereoDeInterleaveFunction(TQSAMPLE_FLOAT32, TQSAMPLE_PCM16);
    const auto scalarSplit =
        tq::audio::ScalarStereoDeInterleaveFunction(TQSAMPLE_FLOAT32, TQSAMPLE_PCM16);
    Row out{"stereo i16->f32", split != scalarSplit,
            Measure([&] { split(l.data(), r.data(), packed.data(), frames); }, samples * 4)};
    std::vector<Row> rows = {in, out};

    // The 32-bit word sources into 16-bit pairs, as a host with 32-bit or 24-in-32 planes has.
    const std::pair<const char*, TQSAMPLETYPE> words[] = {{"stereo i32->i16", TQSAMPLE_PCM32},
                                                          {"stereo u24->i16", TQSAMPLE_UNPACKED24}};
    for (const auto& [name, type] : words)
    {
        const std::vector<BYTE> wl = Source(type, frames), wr = Source(type, frames);
        const auto fn = TqAudio_GetStereoInterleaveFunction(TQSAMPLE_PCM16, type);
        const auto scalarFn = tq::audio::ScalarStereoInterleaveFunction(TQSAMPLE_PCM16, type);
        rows.push_back(
            {name, fn != scalarFn,
             Measure([&] { fn(pairs.data(), wl.data(), wr.data(), frames); }, samples * 4)});
    }
    return rows;
}
#endif

} // namespace

int wmain(int argc, wchar_t** argv)
{
    long samples = argc > 1 ? wcstol(argv[1], nullptr, 10) : kDefaultSamples;
    samples = std::max(16L, samples - samples % 16);
    std::vector<Row> rows = {
        BlockRow("f32->i16", TQSAMPLE_PCM16, TQSAMPLE_FLOAT32, samples),
        BlockRow("i16->f32", TQSAMPLE_FLOAT32, TQSAMPLE_PCM16, samples),
        BlockRow("f32->i24", TQSAMPLE_PCM24, TQSAMPLE_FLOAT32, samples),
        BlockRow("i24->f32", TQSAMPLE_FLOAT32, TQSAMPLE_PCM24, samples),
        BlockRow("f32->u24", TQSAMPLE_UNPACKED24, TQSAMPLE_FLOAT32, samples),
        BlockRow("u24->f32", TQSAMPLE_FLOAT32, TQSAMPLE_UNPACKED24, samples),
        BlockRow("f32->f64", TQSAMPLE_FLOAT64, TQSAMPLE_FLOAT32, samples),
        BlockRow("f64->f32", TQSAMPLE_FLOAT32, TQSAMPLE_FLOAT64, samples),
    };
#if TQ_BENCH_INTERLEAVE
    for (const Row& row : InterleaveRows(samples))
        rows.push_back(row);
#endif

    wprintf(L"bench_convert: %ld samples a call, gain 1.0, medians of %d runs; MB/s count the "
            L"wider buffer, memcpy copies as many bytes\n",
            samples, kRepetitions);
#if !TQ_BENCH_INTERLEAVE
    wprintf(L"(stereo interleave pairs left out: the kernel was built without them)\n");
#endif
    wprintf(L"%-16ls %8ls %12ls %12ls %7ls\n", L"pair", L"kind", L"convert MB/s", L"memcpy MB/s",
            L"ratio");
    // The summary judges the vectorised block pairs against the target; the others are reported.
    double lowestBlock = 1e9, lowestStereo = 1e9;
    for (const Row& row : rows)
    {
        const double ratio = row.figures.convert / row.figures.memcpy;
        wprintf(L"%-16hs %8ls %12.0f %12.0f %7.2f\n", row.name,
                row.vectorised ? L"vector" : L"scalar", row.figures.convert, row.figures.memcpy,
                ratio);
        if (!row.vectorised) continue;
        double& lowest = strncmp(row.name, "stereo", 6) == 0 ? lowestStereo : lowestBlock;
        lowest = std::min(lowest, ratio);
    }
    if (lowestBlock > 1e8)
    {
        wprintf(L"summary: no vectorised block pair on this processor\n");
        return 0;
    }
    wprintf(L"summary: vectorised block pairs at %.2f of memcpy or better (target 0.50): %ls",
            lowestBlock, lowestBlock >= 0.5 ? L"met" : L"missed");
    if (lowestStereo < 1e8) wprintf(L"; vectorised stereo pairs at %.2f or better", lowestStereo);
    wprintf(L"\n");
    return 0;
}
