// Small pieces the benchmark programs share: where they live, and percentiles of timings.
#pragma once

#include <windows.h>

#include <shlwapi.h>

#include <algorithm>
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

} // namespace tqbench
