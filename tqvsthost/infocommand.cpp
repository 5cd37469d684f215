// tqvsthost info: reads a plug-in's facts where the options say, and shows in which process the
// plug-in ran.
#include "infocommand.h"

#include "comptr.h"
#include "hresulttext.h"
#include "vst3bundle.h"
#include "vstclient.h"

#include <cstdio>
#include <set>
#include <string>

namespace tqhost {
namespace {

constexpr UINT32 kTextCapacity = 64;
// Far more sub-plug-ins than any shell bundles; a list that goes on is a shell out of order.
constexpr size_t kMaxSubPlugins = 10000;

const wchar_t* LocationName(int location)
{
    switch (location)
    {
    case kTqVstInProcess:
        return L"in process";
    case kTqVstServer32:
        return L"32-bit server";
    default:
        return L"server";
    }
}

std::wstring DescribeFlags(UINT32 flags)
{
    static constexpr struct
    {
        UINT32 bit;
        const wchar_t* name;
    } kFlags[] = {
        {0x001, L"has editor"},
        {0x008, L"can mono"},
        {0x100, L"synth"},
        {0x200, L"no sound in stop"},
    };
    std::wstring text;
    for (const auto& flag : kFlags)
        if (flags & flag.bit) text += (text.empty() ? L"" : L", ") + std::wstring(flag.name);
    return text.empty() ? L"none" : text;
}

std::wstring DescribeState(UINT32 state)
{
    std::wstring text = (state & 1) ? L"loadable" : L"wrong machine type";
    text += (state & 2) ? L", VST3" : L", VST2";
    return text;
}

// A VST3 class's version number holds the four fields of its version text as a.bb.cc.ddd.
std::wstring Vst3VersionText(UINT32 version)
{
    wchar_t text[48];
    swprintf(text, 48, L"%u.%u.%u.%u (%u)", version / 10000000, version / 100000 % 100,
             version / 1000 % 100, version % 1000, version);
    return text;
}

void PrintFacts(const wchar_t* name, const wchar_t* vendor, const wchar_t* product,
                const TqVstEffectInfo& info, bool vst3)
{
    if (vst3)
    {
        // A VST3 class has no product text and no vendor version; its id is the ShellId that
        // --id takes.
        wprintf(L"Class:            %ls\n", name);
        wprintf(L"Vendor:           %ls\n", vendor);
        wprintf(L"ShellId:          0x%08X\n", info.uniqueId);
        wprintf(L"Version:          %ls\n", Vst3VersionText(info.version).c_str());
    }
    else
    {
        wprintf(L"Name:             %ls\n", name);
        wprintf(L"Vendor:           %ls\n", vendor);
        wprintf(L"Product:          %ls\n", product);
        wprintf(L"Unique id:        '%ls' (0x%08X)\n", FourCharacters(info.uniqueId).c_str(),
                info.uniqueId);
        wprintf(L"Version:          %u\n", info.version);
        wprintf(L"Vendor version:   %u\n", info.vendorVersion);
    }
    wprintf(L"Programs:         %u\n", info.numPrograms);
    wprintf(L"Parameters:       %u\n", info.numParameters);
    wprintf(L"Inputs:           %u\n", info.numInputs);
    wprintf(L"Outputs:          %u\n", info.numOutputs);
    wprintf(L"Initial delay:    %u frames\n", info.initialDelay);
    wprintf(L"Flags:            0x%03X (%ls)\n", info.flags, DescribeFlags(info.flags).c_str());
    wprintf(L"State:            0x%X (%ls)\n", info.state, DescribeState(info.state).c_str());
}

// A shell's sub-plug-ins come from an effect made without an id. The list ends at the first id
// seen twice: a shell whose list faults answers the same -1 for ever. A VST3 module's audio
// classes are listed by ShellId, which has no characters to show.
int PrintShell(ITqVstEffectFactory* factory, const wchar_t* path, bool vst3)
{
    tq::ComPtr<ITqVstEffect> shell;
    const HRESULT hr = factory->CreateEffect(path, 0, IID_ITqVstEffect, shell.PutVoid());
    if (FAILED(hr) || !shell)
        return ReportFailure(L"could not open the shell for its sub-plug-ins",
                             FAILED(hr) ? hr : E_FAIL);
    wprintf(vst3 ? L"Module of several audio classes (choose one with --id and its ShellId):\n"
                 : L"Shell plug-in; sub-plug-ins (choose one with --id):\n");
    UINT32 id = 0;
    WCHAR name[kTextCapacity] = {};
    std::set<UINT32> seen;
    while (shell->GetNextShellPlugin(&id, name, kTextCapacity) == S_OK)
    {
        if (!seen.insert(id).second)
        {
            wprintf(L"%zu sub-plug-ins\n", seen.size());
            // A fault in the shell's dispatcher reaches the host as the id 0xFFFFFFFF.
            if (id == 0xFFFFFFFF)
                fwprintf(stderr, L"tqvsthost: the list stops here: the shell faults when asked "
                                 L"for its next sub-plug-in\n");
            else
                fwprintf(stderr,
                         L"tqvsthost: the list stops here: the shell named '%ls' (0x%08X) a "
                         L"second time\n",
                         FourCharacters(id).c_str(), id);
            return 1;
        }
        if (seen.size() > kMaxSubPlugins)
        {
            wprintf(L"%zu sub-plug-ins\n", kMaxSubPlugins);
            fwprintf(stderr, L"tqvsthost: the list stops here: the shell names more than %zu\n",
                     kMaxSubPlugins);
            return 1;
        }
        if (vst3)
            wprintf(L"  0x%08X  %ls\n", id, name);
        else
            wprintf(L"  '%ls' (0x%08X)  %ls\n", FourCharacters(id).c_str(), id, name);
    }
    wprintf(L"%zu sub-plug-ins\n", seen.size());
    return 0;
}

} // namespace

int RunInfo(const Options& options)
{
    if (options.arguments.size() != 1)
    {
        fwprintf(stderr, L"tqvsthost: info needs exactly one plug-in file (see --help)\n");
        return 1;
    }
    wchar_t full[MAX_PATH] = {};
    if (!GetFullPathNameW(options.arguments[0].c_str(), MAX_PATH, full, nullptr))
        return ReportFailure(L"not a usable path", HRESULT_FROM_WIN32(GetLastError()));
    const std::wstring file = ResolveVst3Bundle(full, options.location);
    const wchar_t* path = file.c_str();
    const bool vst3 = IsVst3Path(file);

    tq::ComPtr<ITqVstEffectFactory> factory;
    DWORD serverProcessId = 0;
    HRESULT hr = GetVstFactory(options.location, IID_ITqVstEffectFactory, factory.PutVoid(),
                               L"tqvst", L"tqvsthost", &serverProcessId, nullptr);
    if (FAILED(hr)) return ReportFailure(L"could not reach the plug-in server", hr);

    WCHAR name[kTextCapacity] = {}, vendor[kTextCapacity] = {}, product[kTextCapacity] = {};
    TqVstEffectInfo info = {};
    hr = factory->GetEffectInfoForFile(path, options.id.value_or(0), name, vendor, product, &info,
                                       options.timeoutMs.value_or(0));
    int exitCode = 0;
    if (FAILED(hr))
    {
        exitCode =
            ReportFailure(std::wstring(L"could not load ") + path, hr, {ResultArea::Plugin, path});
    }
    else
    {
        wprintf(L"Plug-in:          %ls\n", path);
        if (hr == TQVST_S_SHELL)
            exitCode = PrintShell(factory.Get(), path, vst3);
        else
            PrintFacts(name, vendor, product, info, vst3);
        wprintf(L"Host process:     %lu\n", GetCurrentProcessId());
        if (options.location == kTqVstInProcess)
            wprintf(L"Plug-in process:  %lu (in process)\n", GetCurrentProcessId());
        else
            wprintf(L"Plug-in process:  %lu (%ls)\n", serverProcessId,
                    LocationName(options.location));
    }
    ReleaseVstFactory(options.location, factory.Detach());
    return exitCode;
}

} // namespace tqhost
