// tqvsthost save-preset: applies --preset, --bank and --param to a fresh effect, then saves its
// current program (.fxp) or its whole bank (.fxb), or for a VST3 plug-in its whole state
// (.vstpreset).
#include "savepresetcommand.h"

#include "hresulttext.h"
#include "pluginsession.h"
#include "presetfile.h"
#include "vst3bundle.h"

#include <cstdio>

namespace tqhost {

int RunSavePreset(const Options& options)
{
    if (options.arguments.size() != 2)
    {
        fwprintf(stderr, L"tqvsthost: save-preset needs PLUGIN FILE (see --help)\n");
        return 1;
    }
    std::wstring path;
    if (!FullPath(options.arguments[1], path))
        return ReportFailure(L"not a usable path", HRESULT_FROM_WIN32(ERROR_BAD_PATHNAME));
    // The effect writes what its kind knows whatever the name says: a name that promises another
    // format would mislead whoever opens the file later.
    const bool vst3 = IsVst3Path(options.arguments[0]);
    if (vst3 != IsVst3PresetFile(path))
        return ReportFailure(vst3 ? L"a VST3 plug-in saves its state to a .vstpreset file"
                                  : L"a VST2 plug-in saves to an .fxp or .fxb file",
                             E_INVALIDARG);
    PluginSession session;
    if (!OpenPlugin(options, options.arguments[0], session)) return 1;
    if (!ApplySettings(options, session.effect.Get())) return 1;
    if (options.program && options.bankFile.empty())
    {
        const HRESULT hr = session.effect->SetProgram(static_cast<INT32>(*options.program));
        if (FAILED(hr))
            return ReportFailure(L"could not choose the program", hr, {ResultArea::Preset, {}});
    }
    UINT32 bytes = 0;
    const HRESULT hr = SavePresetOrBankFile(session.effect.Get(), path, &bytes);
    if (FAILED(hr)) return ReportFailure(L"could not save " + path, hr, {ResultArea::Preset, path});
    wprintf(L"Saved %ls (%u bytes) to %ls\n",
            vst3               ? L"the state"
            : IsBankFile(path) ? L"the bank"
                               : L"the program",
            bytes, path.c_str());
    return 0;
}

} // namespace tqhost
