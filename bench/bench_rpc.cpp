// bench_rpc: round trip of one effect call in process and through a server process, and how long
// a server takes to start.
#include "benchsupport.h"

#include <objbase.h>

#include "uniquehandle.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace {

using tqbench::BenchFolder;

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
    const tqbench::BenchEffect effect(location, plugin, label, L"bench_rpc");
    if (!effect.Get()) return figures;
    float value = 0;
    figures.measured = tqbench::TimeCalls(
        kWarmUp, kCalls, [&] { return effect.Get()->GetParameter(0, &value); }, &figures.medianUs,
        &figures.p99Us);
    if (figures.measured)
        wprintf(L"%-22ls GetParameter round trip over %d calls: median %9.2f us, p99 %9.2f us\n",
                label, kCalls, figures.medianUs, figures.p99Us);
    else
        wprintf(L"%-22ls GetParameter failed\n", label);
    return figures;
}

constexpr int kStarts = 20;

// GetVstFactory for a location whose server is not running, up to a factory that answered, over
// kStarts starts after one that warms the prefix; each server is let go and waited for before the
// next. Median and slowest in milliseconds.
bool MeasureStarts(int location, const wchar_t* label, double* median, double* slowest)
{
    std::vector<double> samples;
    LARGE_INTEGER frequency, start, end;
    QueryPerformanceFrequency(&frequency);
    for (int i = 0; i <= kStarts; ++i)
    {
        tq::ComPtr<ITqVstEffectFactory> factory;
        DWORD pid = 0;
        QueryPerformanceCounter(&start);
        const HRESULT hr = GetVstFactory(location, IID_ITqVstEffectFactory, factory.PutVoid(),
                                         L"tqvst", L"bench_rpc", &pid, nullptr);
        QueryPerformanceCounter(&end);
        if (FAILED(hr))
        {
            wprintf(L"%-22ls server start failed: 0x%08X\n", label, static_cast<unsigned>(hr));
            return false;
        }
        if (i > 0)
            samples.push_back(static_cast<double>(end.QuadPart - start.QuadPart) * 1e3 /
                              static_cast<double>(frequency.QuadPart));
        tq::UniqueHandle process(OpenProcess(SYNCHRONIZE, FALSE, pid));
        ReleaseVstFactory(location, factory.Detach());
        if (process) WaitForSingleObject(process.Get(), 10000);
    }
    *slowest = *std::max_element(samples.begin(), samples.end());
    *median = tqbench::Percentile(samples, 0.5);
    wprintf(L"%-22ls server start to a usable factory over %d starts: median %.1f ms, slowest "
            L"%.1f ms\n",
            label, kStarts, *median, *slowest);
    return true;
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

    double startMedian = 0, startSlowest = 0;
    const bool started = MeasureStarts(kTqVstServer, L"server", &startMedian, &startSlowest);
    if (started)
        wprintf(L"bench_rpc: server start median %.1f ms, slowest %.1f ms\n", startMedian,
                startSlowest);
    CoUninitialize();
    return inProcess.measured && server.measured ? 0 : 1;
}
