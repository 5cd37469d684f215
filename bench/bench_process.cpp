// bench_process: round trip of one Process call for stereo float blocks through the VST2 gain
// and the VST3 gain, in process and through a server process, there both through shared memory
// and as plain calls.
#include "benchsupport.h"
#include "blockshare.h"
#include "uniquehandle.h"

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
    // Blocks longer than the host's spin on the shared path: those where it had to sleep.
    int slow[kSizes] = {};
};

constexpr double kHostSpinUs = 200;

// Times kCalls blocks of the given size and counts those over the host's spin; false when a call
// fails.
bool MeasureSize(ITqVstEffect* effect, UINT32 frames, double* median, double* p99, int* slow)
{
    LARGE_INTEGER frequency;
    QueryPerformanceFrequency(&frequency);
    const LONGLONG slowTicks = static_cast<LONGLONG>(kHostSpinUs * 1e-6 * frequency.QuadPart);
    int made = 0;
    std::vector<float> input(size_t(frames) * kChannels), output(input.size());
    for (size_t i = 0; i < input.size(); ++i)
        input[i] = static_cast<float>(std::sin(double(i) * 0.01) * 0.5);
    auto* in = reinterpret_cast<BYTE*>(input.data());
    auto* out = reinterpret_cast<BYTE*>(output.data());
    return tqbench::TimeCalls(
        kWarmUp, kCalls,
        [&] {
            LARGE_INTEGER start, end;
            QueryPerformanceCounter(&start);
            const HRESULT hr =
                effect->Process(in, kChannels, out, kChannels, frames, sizeof(float));
            QueryPerformanceCounter(&end);
            if (++made > kWarmUp && end.QuadPart - start.QuadPart > slowTicks) ++*slow;
            return hr;
        },
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
        figures.measured = MeasureSize(effect, kFrameCounts[s], &figures.medianUs[s],
                                       &figures.p99Us[s], &figures.slow[s]);
        if (figures.measured)
            wprintf(L"%-22ls Process %4u stereo float frames over %d calls: median %9.2f us, "
                    L"p99 %9.2f us, %d over %.0f us\n",
                    label, kFrameCounts[s], kCalls, figures.medianUs[s], figures.p99Us[s],
                    figures.slow[s], kHostSpinUs);
        else
            wprintf(L"%-22ls Process %4u frames failed\n", label, kFrameCounts[s]);
    }
    effect->Suspend(1);
    return figures;
}

// The turn handshake alone, between two threads of this process with the same spins and events
// as host and server: what it costs is the floor under the shared path, and its p99 is the
// machine's scheduling, not the plug-in's nor the copies'.
struct Handshake
{
    tqvst::block::Header header = {};
    tq::UniqueHandle request{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    tq::UniqueHandle done{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    tq::UniqueHandle stop{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
};

DWORD WINAPI AnswerTurns(void* context)
{
    auto& shake = *static_cast<Handshake*>(context);
    const LONGLONG spin = tqvst::block::TicksFromMicroseconds(300);
    const HANDLE stop = shake.stop.Get();
    for (LONG served = 1;; ++served)
    {
        if (tqvst::block::WaitTurn(shake.header.requestSeq, served, shake.header.serverAsleep,
                                   shake.request.Get(), &stop, 1, spin,
                                   INFINITE) != tqvst::block::TurnWait::Reached)
            return 0;
        tqvst::block::PassTurn(shake.header.doneSeq, served, shake.header.hostAsleep,
                               shake.done.Get());
    }
}

void MeasureHandshake()
{
    Handshake shake;
    tq::UniqueHandle thread(CreateThread(nullptr, 0, AnswerTurns, &shake, 0, nullptr));
    const LONGLONG spin = tqvst::block::TicksFromMicroseconds(200);
    LONG turn = 0;
    double median = 0, p99 = 0;
    tqbench::TimeCalls(
        kWarmUp, kCalls,
        [&] {
            ++turn;
            tqvst::block::PassTurn(shake.header.requestSeq, turn, shake.header.serverAsleep,
                                   shake.request.Get());
            return tqvst::block::WaitTurn(shake.header.doneSeq, turn, shake.header.hostAsleep,
                                          shake.done.Get(), nullptr, 0, spin,
                                          INFINITE) == tqvst::block::TurnWait::Reached
                       ? S_OK
                       : E_FAIL;
        },
        &median, &p99);
    SetEvent(shake.stop.Get());
    WaitForSingleObject(thread.Get(), INFINITE);
    wprintf(L"%-22ls turn there and back over %d turns: median %9.2f us, p99 %9.2f us\n",
            L"handshake alone", kCalls, median, p99);
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
        const std::wstring name = format;
        const Figures inProcess = Measure(kTqVstInProcess, plugin, (name + L" in process").c_str());
        const Figures shared =
            Measure(kTqVstServer, plugin, (name + L" server, shared block").c_str());
        const Figures calls = Measure(kTqVstServer | kTqVstPlainProxy, plugin,
                                      (name + L" server, plain calls").c_str());
        for (int s = 0; s < kSizes; ++s)
        {
            wprintf(L"bench_process %ls: %4u frames, median (p99) us: in process %.2f (%.2f), "
                    L"shared %.2f (%.2f), plain calls %.2f (%.2f); shared over in process "
                    L"+%.2f us median, +%.2f us p99; plain calls / shared %.1fx\n",
                    format, kFrameCounts[s], inProcess.medianUs[s], inProcess.p99Us[s],
                    shared.medianUs[s], shared.p99Us[s], calls.medianUs[s], calls.p99Us[s],
                    shared.medianUs[s] - inProcess.medianUs[s],
                    shared.p99Us[s] - inProcess.p99Us[s],
                    shared.medianUs[s] > 0 ? calls.medianUs[s] / shared.medianUs[s] : 0.0);
        }
        measured = measured && inProcess.measured && shared.measured && calls.measured;
    }
    MeasureHandshake();
    CoUninitialize();
    return measured ? 0 : 1;
}
