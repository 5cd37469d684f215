// bench_process: round trip of one Process call for stereo float blocks through tqgain, in
// process and through a server process.
#include "benchsupport.h"
#include "comptr.h"
#include "vstclient.h"

#include <objbase.h>
#include <shlwapi.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

namespace {

using tqbench::BenchFolder;
using tqbench::Percentile;

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

    LARGE_INTEGER frequency, start, end;
    QueryPerformanceFrequency(&frequency);
    for (int i = 0; i < kWarmUp; ++i)
        if (FAILED(effect->Process(in, kChannels, out, kChannels, frames, sizeof(float))))
            return false;
    std::vector<double> samples;
    samples.reserve(kCalls);
    for (int i = 0; i < kCalls; ++i)
    {
        QueryPerformanceCounter(&start);
        const HRESULT hr = effect->Process(in, kChannels, out, kChannels, frames, sizeof(float));
        QueryPerformanceCounter(&end);
        if (FAILED(hr)) return false;
        samples.push_back(static_cast<double>(end.QuadPart - start.QuadPart) * 1e6 /
                          static_cast<double>(frequency.QuadPart));
    }
    *median = Percentile(samples, 0.5);
    *p99 = Percentile(samples, 0.99);
    return true;
}

Figures Measure(int location, const std::wstring& plugin, const wchar_t* label)
{
    Figures figures;
    tq::ComPtr<ITqVstEffectFactory> factory;
    HRESULT hr = GetVstFactory(location, IID_ITqVstEffectFactory, factory.PutVoid(), L"tqvst",
                               L"bench_process", nullptr, nullptr);
    if (FAILED(hr))
    {
        wprintf(L"%-14ls not measured: factory 0x%08X\n", label, static_cast<unsigned>(hr));
        return figures;
    }
    tq::ComPtr<ITqVstEffect> effect;
    hr = factory->CreateEffect(plugin.c_str(), 0, IID_ITqVstEffect, effect.PutVoid());
    if (SUCCEEDED(hr)) hr = effect->SetSampleType(32);
    if (SUCCEEDED(hr)) hr = effect->SetChannelCount(kChannels);
    if (SUCCEEDED(hr)) hr = effect->Resume(0);
    if (FAILED(hr))
    {
        wprintf(L"%-14ls not measured: effect 0x%08X\n", label, static_cast<unsigned>(hr));
        effect.Reset();
        ReleaseVstFactory(location, factory.Detach());
        return figures;
    }
    figures.measured = true;
    for (int s = 0; s < kSizes && figures.measured; ++s)
    {
        figures.measured =
            MeasureSize(effect.Get(), kFrameCounts[s], &figures.medianUs[s], &figures.p99Us[s]);
        if (figures.measured)
            wprintf(L"%-14ls Process %4u stereo float frames over %d calls: median %9.2f us, "
                    L"p99 %9.2f us\n",
                    label, kFrameCounts[s], kCalls, figures.medianUs[s], figures.p99Us[s]);
        else
            wprintf(L"%-14ls Process %4u frames failed\n", label, kFrameCounts[s]);
    }
    effect->Suspend(1);
    effect.Reset();
    ReleaseVstFactory(location, factory.Detach());
    return figures;
}

} // namespace

int wmain()
{
    if (FAILED(CoInitialize(nullptr))) return 1;
    const std::wstring plugin = BenchFolder() + L"\\..\\testplugins\\tqgain.dll";

    const Figures inProcess = Measure(kTqVstInProcess, plugin, L"in process");
    const Figures server = Measure(kTqVstServer, plugin, L"server");

    wprintf(L"bench_process: median in process / out of process (us):");
    for (int s = 0; s < kSizes; ++s)
        wprintf(L" %u frames %.2f / %.2f%ls", kFrameCounts[s], inProcess.medianUs[s],
                server.medianUs[s], s + 1 < kSizes ? L"," : L"");
    wprintf(L"; out-of-process p99 at 2048 frames %.2f us\n", server.p99Us[kSizes - 1]);
    CoUninitialize();
    return inProcess.measured && server.measured ? 0 : 1;
}
