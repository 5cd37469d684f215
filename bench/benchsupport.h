// Small pieces the benchmark programs share: where they live, the effect under test, and timing
// of calls with percentiles.
#pragma once

#include "comptr.h"
#include "vstclient.h"

#include <windows.h>

#include <shlwapi.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace tqbench {

// The folder of the running benchmark, beside which the servers and their proxies are copied.
inline std::wstring BenchFolder()
{
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    PathRemoveFileSpecW(path);
    return path;
}

// The sample at the given fraction of the sorted order; reorders the samples.
inline double Percentile(std::vector<double>& samples, double fraction)
{
    const size_t at = std::min(samples.size() - 1, static_cast<size_t>(fraction * samples.size()));
    std::nth_element(samples.begin(), samples.begin() + static_cast<ptrdiff_t>(at), samples.end());
    return samples[at];
}

// An effect made in a location for measuring; says on the terminal why when it cannot be had,
// and gives its factory back when it goes.
class BenchEffect
{
public:
    BenchEffect(int location, const std::wstring& plugin, const wchar_t* label, const wchar_t* host)
        : m_location(location)
    {
        HRESULT hr = GetVstFactory(location, IID_ITqVstEffectFactory, m_factory.PutVoid(), L"tqvst",
                                   host, nullptr, nullptr);
        if (FAILED(hr))
        {
            wprintf(L"%-22ls not measured: factory 0x%08X\n", label, static_cast<unsigned>(hr));
            return;
        }
        hr = m_factory->CreateEffect(plugin.c_str(), 0, IID_ITqVstEffect, m_effect.PutVoid());
        if (FAILED(hr))
            wprintf(L"%-22ls not measured: effect 0x%08X\n", label, static_cast<unsigned>(hr));
    }
    ~BenchEffect()
    {
        m_effect.Reset();
        if (m_factory) ReleaseVstFactory(m_location, m_factory.Detach());
    }
    BenchEffect(const BenchEffect&) = delete;
    BenchEffect& operator=(const BenchEffect&) = delete;

    ITqVstEffect* Get() const { return m_effect.Get(); }

private:
    int m_location;
    tq::ComPtr<ITqVstEffectFactory> m_factory;
    tq::ComPtr<ITqVstEffect> m_effect;
};

// Calls call() warmUp times, then times it calls times; median and p99 in microseconds. False
// as soon as a call fails.
template <class Call>
bool TimeCalls(int warmUp, int calls, Call call, double* median, double* p99)
{
    for (int i = 0; i < warmUp; ++i)
        if (FAILED(call())) return false;
    LARGE_INTEGER frequency, start, end;
    QueryPerformanceFrequency(&frequency);
    std::vector<double> samples;
    samples.reserve(static_cast<size_t>(calls));
    for (int i = 0; i < calls; ++i)
    {
        QueryPerformanceCounter(&start);
        const HRESULT hr = call();
        QueryPerformanceCounter(&end);
        if (FAILED(hr)) return false;
        samples.push_back(static_cast<double>(end.QuadPart - start.QuadPart) * 1e6 /
                          static_cast<double>(frequency.QuadPart));
    }
    *median = Percentile(samples, 0.5);
    *p99 = Percentile(samples, 0.99);
    return true;
}

} // namespace tqbench
