// tqvsthost params: lists a plug-in's parameters with their texts, values and properties, then
// its programs. A VST3 parameter's label is its units and its value the normalised one.
#include "paramscommand.h"

#include "hresulttext.h"
#include "pluginsession.h"
#include "vst3bundle.h"

#include <cstdio>
#include <string>

namespace tqhost {
namespace {

constexpr UINT32 kTextCapacity = 64;

// A text the plug-in may not give; empty rather than failing the listing.
template <class Getter>
std::wstring TextOf(Getter getter)
{
    WCHAR text[kTextCapacity] = {};
    if (FAILED(getter(text, kTextCapacity))) return L"";
    text[kTextCapacity - 1] = 0;
    return text;
}

std::wstring DescribeProperties(ITqVstEffect* effect, UINT32 index)
{
    TqVstParameterProperties props = {};
    if (effect->GetParameterProperties(index, &props) != S_OK) return L"none";
    wchar_t text[256];
    props.label[63] = 0;
    props.shortLabel[7] = 0;
    swprintf(text, 256,
             L"label \"%ls\", short \"%ls\", flags 0x%X, integer %d..%d step %d/%d, "
             L"step %g/%g/%g",
             props.label, props.shortLabel, static_cast<unsigned>(props.flags), props.minInteger,
             props.maxInteger, props.stepInteger, props.largeStepInteger, props.smallStepFloat,
             props.stepFloat, props.largeStepFloat);
    return text;
}

void PrintParameters(ITqVstEffect* effect, UINT32 count, bool vst3)
{
    wprintf(L"Parameters: %u\n", count);
    for (UINT32 index = 0; index < count; ++index)
    {
        const std::wstring name = TextOf([&](WCHAR* text, UINT32 capacity) {
            return effect->GetParameterName(index, text, capacity);
        });
        const std::wstring display = TextOf([&](WCHAR* text, UINT32 capacity) {
            return effect->GetParameterDisplay(index, text, capacity);
        });
        const std::wstring label = TextOf([&](WCHAR* text, UINT32 capacity) {
            return effect->GetParameterLabel(index, text, capacity);
        });
        float value = 0.0f;
        const HRESULT valueResult = effect->GetParameter(index, &value);
        UINT32 automatable = 0;
        const HRESULT automatableResult = effect->CanParameterBeAutomated(index, &automatable);
        wprintf(L"  %3u  %-24ls display \"%ls\"  %ls \"%ls\"  value ", index, name.c_str(),
                display.c_str(), vst3 ? L"units" : L"label", label.c_str());
        if (SUCCEEDED(valueResult))
            wprintf(L"%.6f", value);
        else
            wprintf(L"unknown");
        wprintf(L"  automatable %ls\n", FAILED(automatableResult) ? L"unknown"
                                        : automatable             ? L"yes"
                                                                  : L"no");
        wprintf(L"       properties: %ls\n", DescribeProperties(effect, index).c_str());
    }
}

void PrintPrograms(ITqVstEffect* effect, UINT32 count)
{
    UINT32 current = 0;
    if (SUCCEEDED(effect->GetProgram(&current)))
        wprintf(L"Programs: %u (current %u)\n", count, current);
    else
        wprintf(L"Programs: %u\n", count);
    for (UINT32 index = 0; index < count; ++index)
    {
        const std::wstring name = TextOf([&](WCHAR* text, UINT32 capacity) {
            return effect->GetProgramName(static_cast<INT32>(index), text, capacity);
        });
        wprintf(L"  %3u  %ls\n", index, name.c_str());
    }
}

} // namespace

int RunParams(const Options& options)
{
    if (options.arguments.size() != 1)
    {
        fwprintf(stderr, L"tqvsthost: params needs exactly one plug-in file (see --help)\n");
        return 1;
    }
    PluginSession session;
    if (!OpenPlugin(options, options.arguments[0], session)) return 1;
    TqVstEffectInfo info = {};
    const HRESULT hr = session.effect->GetEffectInfo(&info);
    if (FAILED(hr)) return ReportFailure(L"could not read the plug-in's facts", hr);
    wprintf(L"Plug-in: %ls\n", session.path.c_str());
    PrintParameters(session.effect.Get(), info.numParameters, IsVst3Path(session.path));
    PrintPrograms(session.effect.Get(), info.numPrograms);
    return 0;
}

} // namespace tqhost
