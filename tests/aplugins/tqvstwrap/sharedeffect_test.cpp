// Blocks through the shared channel: the same bytes as in process and as over plain calls for
// every host sample type and channel layout, the block's transport and callbacks, and a server
// that hangs or ends in a block.
#include "comptr.h"
#include "support/serverprocess.h"
#include "support/testmaster.h"
#include "support/testpaths.h"
#include "tqsampletype.h"
#include "uniquehandle.h"
#include "vstclient.h"

#include <gtest/gtest.h>

#include <psapi.h>
#include <winternl.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

using tqtest::PluginPath;

constexpr HRESULT kServerEndedInCall = HRESULT_FROM_WIN32(RPC_S_CALL_FAILED);

// A factory of one location with its server watched, given back at the end.
class Factory
{
public:
    explicit Factory(int location) : m_location(location)
    {
        DWORD pid = 0;
        m_result = GetVstFactory(location, IID_ITqVstEffectFactory, m_factory.PutVoid(), L"tqvst",
                                 L"tests", &pid, nullptr);
        m_pid = pid;
        if (pid) m_server = std::make_unique<tqtest::ServerProcess>(pid);
    }
    ~Factory()
    {
        if (m_factory) ReleaseVstFactory(m_location, m_factory.Detach());
    }
    Factory(const Factory&) = delete;
    Factory& operator=(const Factory&) = delete;

    HRESULT Result() const { return m_result; }
    DWORD ServerPid() const { return m_pid; }
    const tqtest::ServerProcess& Server() const { return *m_server; }

    tq::ComPtr<ITqVstEffect> Create(const std::wstring& plugin) const
    {
        tq::ComPtr<ITqVstEffect> effect;
        if (m_factory)
            m_factory->CreateEffect(plugin.c_str(), 0, IID_ITqVstEffect, effect.PutVoid());
        return effect;
    }

private:
    int m_location;
    HRESULT m_result = E_FAIL;
    DWORD m_pid = 0;
    tq::ComPtr<ITqVstEffectFactory> m_factory;
    std::unique_ptr<tqtest::ServerProcess> m_server;
};

// Each test is a host's single-threaded apartment.
class SharedBlocks : public testing::Test
{
protected:
    void SetUp() override { ASSERT_HRESULT_SUCCEEDED(CoInitialize(nullptr)); }
    void TearDown() override { CoUninitialize(); }
};

bool IsProxy(ITqVstEffect* effect)
{
    tq::ComPtr<IClientSecurity> security;
    return SUCCEEDED(effect->QueryInterface(IID_IClientSecurity, security.PutVoid()));
}

double Now()
{
    LARGE_INTEGER counter, frequency;
    QueryPerformanceCounter(&counter);
    QueryPerformanceFrequency(&frequency);
    return double(counter.QuadPart) * 1000.0 / double(frequency.QuadPart);
}

// Bytes with every bit pattern, so that any type's conversion meets its edges.
std::vector<BYTE> Noise(size_t bytes, uint32_t seed)
{
    std::vector<BYTE> block(bytes);
    for (BYTE& b : block)
    {
        seed = seed * 1664525u + 1013904223u;
        b = BYTE(seed >> 24);
    }
    return block;
}

struct Outcome
{
    HRESULT result;
    std::vector<BYTE> output;
};

Outcome Run(ITqVstEffect* effect, std::vector<BYTE>& input, UINT32 channels, UINT32 frames,
            UINT32 bytes)
{
    Outcome outcome{E_FAIL, std::vector<BYTE>(input.size(), 0xA5)};
    outcome.result = effect->Process(input.data(), channels, outcome.output.data(), INT32(channels),
                                     frames, bytes);
    return outcome;
}

// file is a test plug-in's file name, taken from the server's own bitness.
void SharedMatchesInProcessAndPlainCalls(int location, const wchar_t* file)
{
    const std::wstring plugin =
        location == kTqVstServer32 ? tqtest::Plugin32Path(file) : PluginPath(file);
    Factory inProcess(kTqVstInProcess);
    Factory shared(location);
    Factory plain(location | kTqVstPlainProxy);
    ASSERT_EQ(shared.Result(), S_OK);
    ASSERT_EQ(plain.Result(), S_OK);
    // Half gain, so the plug-in changes every sample.
    tq::ComPtr<ITqVstEffect> effects[] = {inProcess.Create(PluginPath(file)), shared.Create(plugin),
                                          plain.Create(plugin)};
    for (auto& effect : effects)
    {
        ASSERT_TRUE(effect);
        ASSERT_EQ(effect->SetParameter(0, 0.25f), S_OK);
    }
    ASSERT_FALSE(IsProxy(effects[1].Get())) << "the server's effect came without its channel";
    ASSERT_TRUE(IsProxy(effects[2].Get()));

    // The host types with a sample size; the right-aligned ones have none on this path.
    constexpr TQSAMPLETYPE kTypes[] = {TQSAMPLE_PCM8,       TQSAMPLE_PCM16,   TQSAMPLE_PCM24,
                                       TQSAMPLE_PCM32,      TQSAMPLE_FLOAT32, TQSAMPLE_FLOAT64,
                                       TQSAMPLE_UNPACKED24, TQSAMPLE_SIGNED8, TQSAMPLE_BE16,
                                       TQSAMPLE_BE24,       TQSAMPLE_BE32};
    constexpr UINT32 kChannels[] = {1, 2, 4, 8};
    // Growing and shrinking, so the block is laid out anew and reused.
    constexpr UINT32 kFrames[] = {64, 8192, 333, 2048};
    uint32_t seed = 1;
    for (TQSAMPLETYPE type : kTypes)
    {
        const UINT32 bytes = TqAudio_BytesFromSampleType(type);
        for (auto& effect : effects)
        {
            ASSERT_EQ(effect->SetSampleType(type), S_OK);
            ASSERT_EQ(effect->Resume(0) >= 0, true);
        }
        for (UINT32 channels : kChannels)
        {
            // A VST3 effect answers S_FALSE where channels beyond its buses pass dry.
            for (auto& effect : effects)
                ASSERT_TRUE(SUCCEEDED(effect->SetChannelCount(INT32(channels))));
            for (UINT32 frames : kFrames)
            {
                std::vector<BYTE> input = Noise(size_t(frames) * channels * bytes, seed++);
                const Outcome reference = Run(effects[0].Get(), input, channels, frames, bytes);
                const Outcome overShared = Run(effects[1].Get(), input, channels, frames, bytes);
                const Outcome overCalls = Run(effects[2].Get(), input, channels, frames, bytes);
                SCOPED_TRACE(testing::Message() << "type " << type << ", " << channels
                                                << " channels, " << frames << " frames");
                ASSERT_EQ(reference.result, S_OK);
                EXPECT_EQ(overShared.result, S_OK);
                EXPECT_EQ(overCalls.result, S_OK);
                EXPECT_TRUE(overShared.output == reference.output);
                EXPECT_TRUE(overCalls.output == reference.output);
            }
        }
    }
    // A block with no input and one whose byte size the effect refuses answer as over calls.
    std::vector<BYTE> out1(1024), out2(1024);
    EXPECT_EQ(effects[1]->Process(nullptr, 2, out1.data(), 2, 64, 2),
              effects[2]->Process(nullptr, 2, out2.data(), 2, 64, 2));
    EXPECT_EQ(effects[1]->Process(out1.data(), 2, out1.data(), 2, 64, 3),
              effects[2]->Process(out2.data(), 2, out2.data(), 2, 64, 3));
}

TEST_F(SharedBlocks, MatchInProcessAndPlainCallsForEveryTypeLayoutAndSize)
{
    for (const wchar_t* file : {L"tqgain.dll", L"tqgain3.vst3"})
    {
        SCOPED_TRACE(testing::Message() << file);
        SharedMatchesInProcessAndPlainCalls(kTqVstServer, file);
    }
}

TEST_F(SharedBlocks, MatchInProcessAndPlainCallsThroughThe32BitServer)
{
    if (!tqtest::Have32BitServer()) GTEST_SKIP() << "no 32-bit server here";
    for (const wchar_t* file : {L"tqgain.dll", L"tqgain3.vst3"})
    {
        SCOPED_TRACE(testing::Message() << file);
        SharedMatchesInProcessAndPlainCalls(kTqVstServer32, file);
    }
}

// The master's calls other than the per-block time questions, in order.
std::vector<std::string> Callbacks(const tqtest::TestMaster& master)
{
    std::vector<std::string> calls;
    for (const std::string& call : master.Calls())
        if (call.rfind("GetT", 0) != 0) calls.push_back(call);
    return calls;
}

struct BlockOnThread
{
    ITqVstEffect* effect;
    std::vector<BYTE>* input;
    std::vector<BYTE>* output;
    HRESULT result;
};

DWORD WINAPI ProcessOnThread(void* context)
{
    auto* block = static_cast<BlockOnThread*>(context);
    block->result = block->effect->Process(block->input->data(), 2, block->output->data(), 2, 64,
                                           sizeof(float));
    return 0;
}

TEST_F(SharedBlocks, TimeTempoAndCallbacksOfABlockAreTheHostsFromAnyThread)
{
    Factory inProcess(kTqVstInProcess);
    Factory shared(kTqVstServer);
    const std::wstring plugin = PluginPath(L"callbacks_in_process.dll");
    tq::ComPtr<ITqVstEffect> reference = inProcess.Create(plugin);
    tq::ComPtr<ITqVstEffect> effect = shared.Create(plugin);
    ASSERT_TRUE(reference);
    ASSERT_TRUE(effect);
    ASSERT_FALSE(IsProxy(effect.Get()));

    tqtest::TestMaster referenceMaster, master;
    for (tqtest::TestMaster* m : {&referenceMaster, &master})
    {
        m->time.samplePos = 4096;
        m->time.tempo = 120.5;
        m->time.ppqPos = 8.25;
        m->time.flags = 0x7;
        m->tempo = 1405000;
    }
    ASSERT_EQ(reference->SetMaster(&referenceMaster), S_OK);
    ASSERT_EQ(effect->SetMaster(&master), S_OK);
    for (ITqVstEffect* e : {reference.Get(), effect.Get()})
    {
        ASSERT_EQ(e->SetSampleType(TQSAMPLE_FLOAT32), S_OK);
        ASSERT_EQ(e->SetChannelCount(2), S_OK);
        ASSERT_GE(e->Resume(0), 0);
    }

    std::vector<BYTE> input = Noise(64 * 2 * sizeof(float), 7);
    std::vector<BYTE> expected(input.size()), got(input.size());
    ASSERT_EQ(reference->Process(input.data(), 2, expected.data(), 2, 64, sizeof(float)), S_OK);
    ASSERT_EQ(effect->Process(input.data(), 2, got.data(), 2, 64, sizeof(float)), S_OK);
    EXPECT_TRUE(got == expected);
    // The plug-in's report sits in the first samples of its first channel.
    float report[6];
    for (int i = 0; i < 6; ++i)
        std::memcpy(&report[i], &got[size_t(i) * 2 * sizeof(float)], 4);
    EXPECT_EQ(report[0], 1.0f) << "no time record inside the block";
    EXPECT_EQ(report[1], 4096.0f);
    EXPECT_EQ(report[2], 120.5f);
    EXPECT_EQ(report[3], 8.25f);

    const std::vector<std::string> inOrder = {"BeginEdit 1",    "Automate 1 0.25",
                                              "Automate 2 0.5", "Automate 1 0.75",
                                              "EndEdit 1",      "UpdateDisplay"};
    EXPECT_EQ(Callbacks(referenceMaster), inOrder);
    EXPECT_EQ(Callbacks(master), inOrder);

    // The next block comes from another host thread: the time is asked and the callbacks are
    // made there.
    master.ClearCalls();
    master.time.samplePos = 8192;
    std::vector<BYTE> fromThread(input.size());
    BlockOnThread block{effect.Get(), &input, &fromThread, E_FAIL};
    tq::UniqueHandle thread(CreateThread(nullptr, 0, ProcessOnThread, &block, 0, nullptr));
    ASSERT_TRUE(thread);
    ASSERT_EQ(WaitForSingleObject(thread.Get(), 30000), WAIT_OBJECT_0);
    EXPECT_EQ(block.result, S_OK);
    float position;
    std::memcpy(&position, &fromThread[2 * sizeof(float)], sizeof position);
    EXPECT_EQ(position, 8192.0f);
    EXPECT_EQ(Callbacks(master), inOrder);

    ASSERT_EQ(effect->SetMaster(nullptr), S_FALSE);
    ASSERT_EQ(reference->SetMaster(nullptr), S_FALSE);
}

TEST_F(SharedBlocks, AServerStuckInABlockIsEndedAfterTheTimeoutAndTheEffectFailsAtOnce)
{
    constexpr DWORD kTimeoutMs = 500;
    SetVstProcessTimeout(kTimeoutMs);
    {
        Factory shared(kTqVstServer);
        tq::ComPtr<ITqVstEffect> effect = shared.Create(PluginPath(L"hang_in_process.dll"));
        ASSERT_TRUE(effect);
        ASSERT_EQ(effect->SetSampleType(TQSAMPLE_FLOAT32), S_OK);
        std::vector<BYTE> input = Noise(256 * 2 * sizeof(float), 3), output(input.size());
        ASSERT_EQ(effect->Process(input.data(), 2, output.data(), 2, 256, 4), S_OK);

        const double start = Now();
        EXPECT_EQ(effect->Process(input.data(), 2, output.data(), 2, 256, 4), TQVST_E_TIMEOUT);
        const double waited = Now() - start;
        std::printf("stuck block answered after %.1f ms (timeout %lu ms)\n", waited, kTimeoutMs);
        EXPECT_GE(waited, kTimeoutMs - 20.0);
        EXPECT_TRUE(shared.Server().EndsWithin(5000)) << "the stuck server was left running";

        float value = 0;
        EXPECT_EQ(effect->GetParameter(0, &value), TQVST_E_TIMEOUT);
        EXPECT_EQ(effect->Process(input.data(), 2, output.data(), 2, 256, 4), TQVST_E_TIMEOUT);
        const double released = Now();
        effect.Reset();
        std::printf("release after the timeout took %.1f ms\n", Now() - released);
    }
    SetVstProcessTimeout(0);
}

TEST_F(SharedBlocks, AServerStuckInAnyOtherCallIsEndedToo)
{
    // Other calls wait five times the block's bound.
    SetVstProcessTimeout(200);
    {
        Factory shared(kTqVstServer);
        tq::ComPtr<ITqVstEffect> effect = shared.Create(PluginPath(L"hang_in_setparameter.dll"));
        ASSERT_TRUE(effect);
        const double start = Now();
        EXPECT_EQ(effect->SetParameter(0, 0.5f), TQVST_E_TIMEOUT);
        std::printf("stuck call answered after %.1f ms (bound 1000 ms)\n", Now() - start);
        EXPECT_TRUE(shared.Server().EndsWithin(5000)) << "the stuck server was left running";
        float value = 0;
        EXPECT_EQ(effect->GetParameter(0, &value), TQVST_E_TIMEOUT);
    }
    SetVstProcessTimeout(0);
}

struct Kill
{
    DWORD pid;
    DWORD afterMs;
    double at;
};

DWORD WINAPI KillLater(void* context)
{
    auto* kill = static_cast<Kill*>(context);
    Sleep(kill->afterMs);
    tq::UniqueHandle process(OpenProcess(PROCESS_TERMINATE, FALSE, kill->pid));
    kill->at = Now();
    TerminateProcess(process.Get(), 1);
    return 0;
}

TEST_F(SharedBlocks, AServerThatEndsDuringABlockGivesAnRpcError)
{
    Factory shared(kTqVstServer);
    tq::ComPtr<ITqVstEffect> effect = shared.Create(PluginPath(L"hang_in_process.dll"));
    ASSERT_TRUE(effect);
    ASSERT_EQ(effect->SetSampleType(TQSAMPLE_FLOAT32), S_OK);
    std::vector<BYTE> input = Noise(256 * 2 * sizeof(float), 5), output(input.size());
    ASSERT_EQ(effect->Process(input.data(), 2, output.data(), 2, 256, 4), S_OK);

    Kill kill{shared.ServerPid(), 300, 0};
    tq::UniqueHandle killer(CreateThread(nullptr, 0, KillLater, &kill, 0, nullptr));
    ASSERT_TRUE(killer);
    EXPECT_EQ(effect->Process(input.data(), 2, output.data(), 2, 256, 4), kServerEndedInCall);
    const double answered = Now();
    WaitForSingleObject(killer.Get(), INFINITE);
    std::printf("block answered %.1f ms after the server was ended\n", answered - kill.at);
    // From then on the effect answers as a proxy to a gone server does.
    EXPECT_TRUE(FAILED(effect->Process(input.data(), 2, output.data(), 2, 256, 4)));
}

// A host process of its own (orphanhost.exe) starts a server and processes; when that host is
// ended, the server ends by itself, also with a plug-in stuck in a block.
void ServerEndsWithItsHost(const wchar_t* plugin, const wchar_t* how)
{
    SECURITY_ATTRIBUTES inherit = {sizeof(inherit), nullptr, TRUE};
    HANDLE readEnd = nullptr, writeEnd = nullptr;
    ASSERT_TRUE(CreatePipe(&readEnd, &writeEnd, &inherit, 0));
    tq::UniqueHandle reader(readEnd), writer(writeEnd);
    SetHandleInformation(readEnd, HANDLE_FLAG_INHERIT, 0);
    std::wstring line = L"\"" + tqtest::ProgramFolder() + L"\\orphanhost.exe\" \"" +
                        PluginPath(plugin) + L"\" " + how;
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = writeEnd;
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION started = {};
    ASSERT_TRUE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                               &startup, &started));
    tq::UniqueHandle host(started.hProcess), hostThread(started.hThread);
    writer.Reset();

    char text[32] = {};
    DWORD got = 0;
    ASSERT_TRUE(ReadFile(reader.Get(), text, sizeof(text) - 1, &got, nullptr));
    const DWORD serverPid = std::strtoul(text, nullptr, 10);
    ASSERT_NE(serverPid, 0u) << "the host said: " << text;
    tqtest::ServerProcess server(serverPid);
    ASSERT_TRUE(server.Opened());

    TerminateProcess(host.Get(), 1);
    WaitForSingleObject(host.Get(), INFINITE);
    const double ended = Now();
    EXPECT_TRUE(server.EndsWithin(10000)) << "the server outlived its host";
    std::printf("server ended %.1f ms after its host (%ls)\n", Now() - ended, how);
}

TEST_F(SharedBlocks, AServerWhoseHostEndsEndsItself)
{
    ServerEndsWithItsHost(L"tqgain.dll", L"idle");
    ServerEndsWithItsHost(L"hang_in_process.dll", L"stuck");
}

// One row of the system's handle list, as the platform gives it for every process.
struct HandleRow
{
    USHORT pid;
    USHORT creatorBackTrace;
    UCHAR type;
    UCHAR attributes;
    USHORT handle;
    PVOID object;
    ULONG access;
};
struct HandleList
{
    ULONG count;
    HandleRow rows[1];
};
constexpr auto kSystemHandleInformation = SYSTEM_INFORMATION_CLASS(16);

const HandleList* ReadHandleList()
{
    static std::vector<BYTE> list(16 << 20);
    if (NtQuerySystemInformation(kSystemHandleInformation, list.data(), ULONG(list.size()),
                                 nullptr) < 0)
        return nullptr;
    return reinterpret_cast<const HandleList*>(list.data());
}

// The type number the list gives semaphores, read from one of this process.
int SemaphoreType()
{
    static const int type = [] {
        tq::UniqueHandle semaphore(CreateSemaphoreW(nullptr, 0, 1, nullptr));
        const HandleList* list = ReadHandleList();
        for (ULONG i = 0; list && i < list->count; ++i)
            if (list->rows[i].pid == USHORT(GetCurrentProcessId()) &&
                list->rows[i].handle == USHORT(ULONG_PTR(semaphore.Get())))
                return int(list->rows[i].type);
        return -1;
    }();
    return type;
}

// Handles but semaphores, threads and committed bytes of a process, summed over a stretch of
// cycles. Semaphores stay out: the 32-bit test plug-ins' own runtime (the compiler's unwinder
// and its locks) makes some on every load and never closes them, which is the plug-in's doing.
// The page-file use stands for the committed bytes.
struct Usage
{
    double handles = 0;
    double threads = 0;
    double bytes = 0;
    int samples = 0;

    void Add(DWORD pid, HANDLE process)
    {
        const HandleList* list = ReadHandleList();
        if (!list) return;
        const int semaphore = SemaphoreType();
        for (ULONG i = 0; i < list->count; ++i)
            if (list->rows[i].pid == USHORT(pid) && int(list->rows[i].type) != semaphore) ++handles;
        static std::vector<BYTE> processes(1 << 20);
        if (NtQuerySystemInformation(SystemProcessInformation, processes.data(),
                                     ULONG(processes.size()), nullptr) < 0)
            return;
        for (size_t at = 0;;)
        {
            const auto* entry = reinterpret_cast<const SYSTEM_PROCESS_INFORMATION*>(&processes[at]);
            if (DWORD(ULONG_PTR(entry->UniqueProcessId)) == pid)
            {
                threads += entry->NumberOfThreads;
                break;
            }
            if (!entry->NextEntryOffset) return;
            at += entry->NextEntryOffset;
        }
        PROCESS_MEMORY_COUNTERS memory = {};
        GetProcessMemoryInfo(process, &memory, sizeof(memory));
        bytes += double(memory.PagefileUsage);
        ++samples;
    }
    double Handles() const { return samples ? handles / samples : 0; }
    double Threads() const { return samples ? threads / samples : 0; }
    double Megabytes() const { return samples ? bytes / samples / 1048576.0 : 0; }
};

// Every cycle makes an effect with its channel, block mapping, events and audio thread, runs a
// block and lets it all go: nothing of it may stay behind in either process.
TEST_F(SharedBlocks, CreateProcessReleaseCyclesLeaveHostAndServerFlat)
{
    // The test run makes 500; a soak run sets TQ_SHARED_CYCLES=10000.
    int cycles = 500;
    if (const char* text = std::getenv("TQ_SHARED_CYCLES")) cycles = std::atoi(text);
    const int stretch = std::max(1, cycles / 10);
    Factory shared(kTqVstServer);
    ASSERT_EQ(shared.Result(), S_OK);
    tq::UniqueHandle server(
        OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, shared.ServerPid()));
    ASSERT_TRUE(server);
    const std::wstring plugin = PluginPath(L"tqgain.dll");
    std::vector<BYTE> input = Noise(512 * 2 * sizeof(float), 11), output(input.size());
    Usage host[2], served[2];
    const double start = Now();
    for (int cycle = 0; cycle < cycles; ++cycle)
    {
        tq::ComPtr<ITqVstEffect> effect = shared.Create(plugin);
        ASSERT_TRUE(effect) << "cycle " << cycle;
        ASSERT_EQ(effect->SetSampleType(TQSAMPLE_FLOAT32), S_OK);
        ASSERT_EQ(effect->Process(input.data(), 2, output.data(), 2, 512, 4), S_OK) << cycle;
        effect.Reset();
        const int at = cycle < stretch ? 0 : cycle >= cycles - stretch ? 1 : -1;
        if (at >= 0 && cycle % 10 == 9)
        {
            host[at].Add(GetCurrentProcessId(), GetCurrentProcess());
            served[at].Add(shared.ServerPid(), server.Get());
        }
    }
    std::printf("%d cycles in %.1f s, first and last tenth: host %.1f -> %.1f handles, %.1f -> "
                "%.1f threads, %.2f -> %.2f MB; server %.1f -> %.1f handles, %.1f -> %.1f "
                "threads, %.2f -> %.2f MB\n",
                cycles, (Now() - start) / 1000.0, host[0].Handles(), host[1].Handles(),
                host[0].Threads(), host[1].Threads(), host[0].Megabytes(), host[1].Megabytes(),
                served[0].Handles(), served[1].Handles(), served[0].Threads(), served[1].Threads(),
                served[0].Megabytes(), served[1].Megabytes());
    ASSERT_GT(host[0].samples, 0);
    ASSERT_GT(served[0].Handles(), 0) << "no counts for the server";
    ASSERT_GE(SemaphoreType(), 0);
    // A handle or a thread per cycle would add thousands. Loading and unloading a plug-in costs a
    // few kilobytes a cycle under Wine on any path, in process too; a block, a view or a stack
    // left behind would cost more than the bound.
    // The heap's first growth and the audio threads of the last few channels, which end on their
    // own after their release, come on top and do not grow with the count.
    const double boundMb = 8.0 * 1024 * cycles * 0.9 / 1048576.0 + 4.0;
    EXPECT_LE(host[1].Handles(), host[0].Handles() + 8);
    EXPECT_LE(served[1].Handles(), served[0].Handles() + 8);
    EXPECT_LE(host[1].Threads(), host[0].Threads() + 3);
    EXPECT_LE(served[1].Threads(), served[0].Threads() + 3);
    EXPECT_LE(host[1].Megabytes(), host[0].Megabytes() + boundMb);
    EXPECT_LE(served[1].Megabytes(), served[0].Megabytes() + boundMb);
}

} // namespace
