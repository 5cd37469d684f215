// fuzz_media SEED COUNT [TARGET]: feeds COUNT mutated inputs to each parser (or to TARGET only)
// in this process, with guard pages around every buffer it hands over, and counts the codes.
// A fault or an input that does not come back within the hang limit is saved to a file and
// ends the run with exit code 2; a complete run exits with 0.
#include "fuzztarget.h"

#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>

namespace {

using namespace tqfuzz;

constexpr DWORD kHangLimitMs = 60000;

// What the crash and hang reporters need to know about the input under way.
struct Current
{
    const char* target = "";
    unsigned long long seed = 0;
    unsigned long long index = 0;
    const Bytes* input = nullptr;
    volatile LONG progress = 0;
};
Current g_current;

void SaveInput(const char* why)
{
    char name[128];
    std::snprintf(name, sizeof name, "fuzz-%s-%llu-%llu.bin", g_current.target, g_current.seed,
                  g_current.index);
    std::printf("fuzz_media: %s in %s, seed %llu, input %llu; saved as %s\n", why, g_current.target,
                g_current.seed, g_current.index, name);
    std::fflush(stdout);
    if (!g_current.input) return;
    HANDLE f = CreateFileA(name, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    if (f == INVALID_HANDLE_VALUE) return;
    DWORD written = 0;
    WriteFile(f, g_current.input->data(), static_cast<DWORD>(g_current.input->size()), &written,
              nullptr);
    CloseHandle(f);
}

LONG WINAPI OnFault(EXCEPTION_POINTERS* info)
{
    char why[96];
    std::snprintf(why, sizeof why, "fault 0x%08lX at %p",
                  static_cast<unsigned long>(info->ExceptionRecord->ExceptionCode),
                  info->ExceptionRecord->ExceptionAddress);
    SaveInput(why);
    ExitProcess(2);
}

DWORD WINAPI Watchdog(void*)
{
    LONG seen = -1;
    for (;;)
    {
        Sleep(kHangLimitMs);
        const LONG now = g_current.progress;
        if (now == seen)
        {
            SaveInput("hang");
            ExitProcess(2);
        }
        seen = now;
    }
}

// The input of one index: the same for the same seed, target and index on every machine.
uint64_t InputSeed(uint64_t seed, size_t target, uint64_t index)
{
    Random r(seed * 0x100000001B3ull ^ (static_cast<uint64_t>(target) << 56) ^ index);
    return r.Next();
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 3)
    {
        std::printf("usage: fuzz_media SEED COUNT [TARGET]\n");
        return 1;
    }
    const unsigned long long seed = std::strtoull(argv[1], nullptr, 10);
    const unsigned long long count = std::strtoull(argv[2], nullptr, 10);
    const char* only = argc > 3 ? argv[3] : nullptr;
    SetUnhandledExceptionFilter(OnFault);
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    CloseHandle(CreateThread(nullptr, 0, Watchdog, nullptr, 0, nullptr));

    const auto& targets = Targets();
    bool ran = false;
    for (size_t t = 0; t < targets.size(); ++t)
    {
        const FuzzTarget& target = targets[t];
        if (only && std::strcmp(only, target.name) != 0) continue;
        ran = true;
        const std::vector<Bytes> seeds = target.seeds();
        const Mutator mutator(seeds, target.tokens, target.maxSize);
        FuzzContext context;
        std::map<HRESULT, unsigned long long> codes;
        unsigned long long bytes = 0;
        g_current.target = target.name;
        g_current.seed = seed;
        const ULONGLONG start = GetTickCount64();
        for (unsigned long long i = 0; i < count; ++i)
        {
            Random random(InputSeed(seed, t, i));
            // The valid inputs themselves go first.
            const Bytes input = i < seeds.size() ? seeds[i] : mutator.Make(random);
            g_current.index = i;
            g_current.input = &input;
            context.SetInput(input, (i & 1) != 0);
            ++codes[target.run(context)];
            bytes += input.size();
            InterlockedIncrement(&g_current.progress);
            if ((i + 1) % 100000 == 0 && i + 1 < count)
            {
                std::printf("%-6s %llu inputs so far, %.0f s\n", target.name, i + 1,
                            static_cast<double>(GetTickCount64() - start) / 1000.0);
                std::fflush(stdout);
            }
        }
        g_current.input = nullptr;
        const double seconds = static_cast<double>(GetTickCount64() - start) / 1000.0;
        std::printf("%-6s %llu inputs, %.1f MB, %.1f s, %.0f inputs/s; codes:", target.name, count,
                    static_cast<double>(bytes) / 1e6, seconds,
                    seconds > 0 ? static_cast<double>(count) / seconds : 0.0);
        for (const auto& [code, n] : codes)
            std::printf(" 0x%08lX x%llu", static_cast<unsigned long>(code), n);
        std::printf("\n");
        std::fflush(stdout);
    }
    if (!ran)
    {
        std::printf("fuzz_media: no target named %s\n", only);
        return 1;
    }
    return 0;
}
