// bench_process: round trip of one Process call for stereo float blocks through the VST2 gain
// and the VST3 gain, in process and through a server process.
#include "benchsupport.h"

#include <objbase.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

namespace {

using tqbench::BenchFolder;

constexpr int kWarmUp = 100;
constexpr int kCalls = 2000;
constexpr UINT32 kChannels = 2;
constexpr UINT32 kFrameCounts[] = {64, 256, 512, 2048};
constexpr int kSizes = sizeof(kFrameCounts) / sizeof(kFrameCounts[0]);

struct Figures
{
    bool measured = false;
    double medianUs[kSizes] = {};
    double p99Us[kSizes] = {};
};

// Times kCalls blocks of the given size; false when a call fails.
bool MeasureSize(ITqVstEffect* effect, UINT32 frames, double* median, double* p99)
{
    std::vector<float> input(size_t(frames) * kChannels), output(input.size());
    for (size_t i = 0; i < input.size(); ++i)
        input[i] = static_cast<float>(std::sin(double(i) * 0.01) * 0.5);
    auto* in = reinterpret_cast<BYTE*>(input.data());
    auto* out = reinterpret_cast<BYTE*>(output.data());
    return tqbench::TimeCalls(
        kWarmUp, kCalls,
        [&] { return effect->Process(in, kChannels, out, kChannels, frames, sizeof(float)); },
        median, p99);
}

Figures Measure(int location, const std::wstring& plugin, const wchar_t* label)
{
    Figures figures;
    const tqbench::BenchEffect bench(location, plugin, label, L"bench_process");
    ITqVstEffect* effect = bench.Get();
    if (!effect) return figures;
    HRESULT hr = effect->SetSampleType(32);
    // A VST3 processor is set up for its largest block before the first one.
    if (SUCCEEDED(hr)) hr = effect->SetBlockSize(static_cast<INT32>(kFrameCounts[kSizes - 1]));
    if (SUCCEEDED(hr)) hr = effect->SetChannelCount(kChannels);
    if (SUCCEEDED(hr)) hr = effect->Resume(0);
    if (FAILED(hr))
    {
        wprintf(L"%-22ls not measured: set-up 0x%08X\n", label, static_cast<unsigned>(hr));
        return figures;
    }
    figures.measured = true;
    for (int s = 0; s < kSizes && figures.measured; ++s)
    {
        figures.measured =
            MeasureSize(effect, kFrameCounts[s], &figures.medianUs[s], &figures.p99Us[s]);
        if (figures.measured)
            wprintf(L"%-22ls Process %4u stereo float frames over %d calls: median %9.2f us, "
                    L"p99 %9.2f us\n",
                    label, kFrameCounts[s], kCalls, figures.medianUs[s], figures.p99Us[s]);
        else
            wprintf(L"%-22ls Process %4u frames failed\n", label, kFrameCounts[s]);
    }
    effect->Suspend(1);
    return figures;
}

} // namespace

int wmain()
{
    if (FAILED(CoInitialize(nullptr))) return 1;
    const std::wstring plugins = BenchFolder() + L"\\..\\testplugins\\";
    bool measured = true;
    for (const wchar_t* format : {L"VST2", L"VST3"})
    {
        const bool vst3 = format[3] == L'3';
        const std::wstring plugin = plugins + (vst3 ? L"tqgain3.vst3" : L"tqgain.dll");
        const Figures inProcess =
            Measure(kTqVstInProcess, plugin, vst3 ? L"VST3 in process" : L"VST2 in process");
        const Figures server =
            Measure(kTqVstServer, plugin, vst3 ? L"VST3 server" : L"VST2 server");
        wprintf(L"bench_process %ls: median in process / out of process (us):", format);
        for (int s = 0; s < kSizes; ++s)
            wprintf(L" %u frames %.2f / %.2f%ls", kFrameCounts[s], inProcess.medianUs[s],
                    server.medianUs[s], s + 1 < kSizes ? L"," : L"");
        wprintf(L"; out-of-process p99 at 2048 frames %.2f us\n", server.p99Us[kSizes - 1]);
        measured = measured && inProcess.measured && server.measured;
    }
    CoUninitialize();
    return measured ? 0 : 1;
}
