// tqvsthost save-preset: applies --preset, --bank and --param to a fresh effect, then saves its
// current program (.fxp) or its whole bank (.fxb).
#include "savepresetcommand.h"

#include "hresulttext.h"
#include "pluginsession.h"
#include "presetfile.h"

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
    wprintf(L"Saved %ls (%u bytes) to %ls\n", IsBankFile(path) ? L"the bank" : L"the program",
            bytes, path.c_str());
    return 0;
}

} // namespace tqhost
