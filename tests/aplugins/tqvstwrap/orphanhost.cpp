// A host for the orphan test: starts a server, processes through a plug-in in it, prints the
// server's process id and waits to be ended. "stuck" leaves a second block running on a thread
// of its own, for a plug-in that never returns from it.
#include "comptr.h"
#include "vstclient.h"

#include <objbase.h>

#include <cstdio>
#include <cwchar>
#include <vector>

namespace {

std::vector<float> g_input(2 * 256), g_output(2 * 256);

DWORD WINAPI ProcessOnce(void* effect)
{
    static_cast<ITqVstEffect*>(effect)->Process(reinterpret_cast<BYTE*>(g_input.data()), 2,
                                                reinterpret_cast<BYTE*>(g_output.data()), 2, 256,
                                                sizeof(float));
    return 0;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    if (argc < 3 || FAILED(CoInitialize(nullptr))) return 2;
    tq::ComPtr<ITqVstEffectFactory> factory;
    DWORD serverPid = 0;
    if (FAILED(GetVstFactory(kTqVstServer, IID_ITqVstEffectFactory, factory.PutVoid(), L"tqvst",
                             L"orphan", &serverPid, nullptr)))
        return 3;
    tq::ComPtr<ITqVstEffect> effect;
    if (FAILED(factory->CreateEffect(argv[1], 0, IID_ITqVstEffect, effect.PutVoid()))) return 4;
    effect->SetSampleType(32);
    ProcessOnce(effect.Get());
    if (std::wcscmp(argv[2], L"stuck") == 0)
    {
        CreateThread(nullptr, 0, ProcessOnce, effect.Get(), 0, nullptr);
        Sleep(200);
    }
    std::printf("%lu\n", serverPid);
    std::fflush(stdout);
    Sleep(INFINITE);
    return 0;
}
