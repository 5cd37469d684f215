// bench_rpc: round trip of one effect call in process and through a server process.
#include "benchsupport.h"
#include "comptr.h"
#include "vstclient.h"

#include <objbase.h>
#include <shlwapi.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace {

using tqbench::BenchFolder;
using tqbench::Percentile;

constexpr int kWarmUp = 200;
constexpr int kCalls = 3000;

struct Figures
{
    bool measured = false;
    double medianUs = 0;
    double p99Us = 0;
};

Figures Measure(int location, const std::wstring& plugin, const wchar_t* label)
{
    Figures figures;
    tq::ComPtr<ITqVstEffectFactory> factory;
    HRESULT hr = GetVstFactory(location, IID_ITqVstEffectFactory, factory.PutVoid(), L"tqvst",
                               L"bench_rpc", nullptr, nullptr);
    if (FAILED(hr))
    {
        wprintf(L"%-22ls not measured: factory 0x%08X\n", label, static_cast<unsigned>(hr));
        return figures;
    }
    tq::ComPtr<ITqVstEffect> effect;
    hr = factory->CreateEffect(plugin.c_str(), 0, IID_ITqVstEffect, effect.PutVoid());
    if (FAILED(hr))
    {
        wprintf(L"%-22ls not measured: effect 0x%08X\n", label, static_cast<unsigned>(hr));
        ReleaseVstFactory(location, factory.Detach());
        return figures;
    }

    LARGE_INTEGER frequency, start, end;
    QueryPerformanceFrequency(&frequency);
    std::vector<double> samples;
    samples.reserve(kCalls);
    float value = 0;
    for (int i = 0; i < kWarmUp; ++i)
        effect->GetParameter(0, &value);
    for (int i = 0; i < kCalls; ++i)
    {
        QueryPerformanceCounter(&start);
        effect->GetParameter(0, &value);
        QueryPerformanceCounter(&end);
        samples.push_back(static_cast<double>(end.QuadPart - start.QuadPart) * 1e6 /
                          static_cast<double>(frequency.QuadPart));
    }
    figures.measured = true;
    figures.medianUs = Percentile(samples, 0.5);
    figures.p99Us = Percentile(samples, 0.99);
    wprintf(L"%-22ls GetParameter round trip over %d calls: median %9.2f us, p99 %9.2f us\n", label,
            kCalls, figures.medianUs, figures.p99Us);
    effect.Reset();
    ReleaseVstFactory(location, factory.Detach());
    return figures;
}

} // namespace

int wmain()
{
    if (FAILED(CoInitialize(nullptr))) return 1;
    const std::wstring folder = BenchFolder();
    const std::wstring plugin = folder + L"\\..\\testplugins\\tqgain.dll";
    const std::wstring plugin32 = folder + L"\\x86\\testplugins\\tqgain.dll";

    const Figures inProcess = Measure(kTqVstInProcess, plugin, L"in process");
    const Figures server = Measure(kTqVstServer, plugin, L"server");
    Figures server32;
    if (GetFileAttributesW((folder + L"\\x86\\tqvstserver.exe").c_str()) != INVALID_FILE_ATTRIBUTES)
        server32 = Measure(kTqVstServer32, plugin32, L"32-bit server");
    else
        wprintf(L"%-22ls not measured: no 32-bit server beside this program\n", L"32-bit server");

    wprintf(L"bench_rpc: median in process %.2f us, out of process %.2f us (p99 %.2f us)",
            inProcess.medianUs, server.medianUs, server.p99Us);
    if (server32.measured)
        wprintf(L", 32-bit server %.2f us (p99 %.2f us)", server32.medianUs, server32.p99Us);
    if (inProcess.measured && server.measured && inProcess.medianUs > 0)
        wprintf(L", out of process / in process %.0fx", server.medianUs / inProcess.medianUs);
    wprintf(L"\n");
    CoUninitialize();
    return inProcess.measured && server.measured ? 0 : 1;
}
