// Reaching the plug-in server and making an effect for a command.
#include "pluginsession.h"

#include "hostlog.h"
#include "hresulttext.h"
#include "presetfile.h"
#include "vst3bundle.h"
#include "vstclient.h"

namespace tqhost {

HRESULT FactoryLease::Open(int location)
{
    Reset();
    m_location = location;
    return GetVstFactory(location, IID_ITqVstEffectFactory, m_factory.PutVoid(), L"tqvst",
                         L"tqvsthost", &m_serverProcessId, nullptr);
}

void FactoryLease::Reset()
{
    if (m_factory) ReleaseVstFactory(m_location, m_factory.Detach());
    m_serverProcessId = 0;
}

namespace {

std::wstring LocationText(int location, const FactoryLease& factory)
{
    if (location == 0) return L"in process";
    return std::wstring(location == 2 ? L"in the 32-bit server " : L"in the server ") +
           std::to_wstring(factory.ServerProcessId());
}

} // namespace

bool FullPath(const std::wstring& path, std::wstring& full)
{
    wchar_t buffer[MAX_PATH] = {};
    const DWORD length = GetFullPathNameW(path.c_str(), MAX_PATH, buffer, nullptr);
    if (!length || length >= MAX_PATH) return false;
    full = buffer;
    return true;
}

bool OpenPlugin(const Options& options, const std::wstring& file, PluginSession& session)
{
    const auto fail = [](const std::wstring& what, HRESULT hr) {
        ReportFailure(what, hr);
        return false;
    };
    if (!FullPath(file, session.path))
        return fail(L"not a usable path: " + file, HRESULT_FROM_WIN32(GetLastError()));
    session.path = ResolveVst3Bundle(session.path, options.location);
    HRESULT hr = session.factory.Open(options.location);
    if (FAILED(hr)) return fail(L"could not reach the plug-in server", hr);
    hr = session.factory.Get()->CreateEffect(session.path.c_str(), options.id.value_or(0),
                                             IID_ITqVstEffect, session.effect.PutVoid());
    if (SUCCEEDED(hr) && !session.effect) hr = E_FAIL;
    if (FAILED(hr))
    {
        ReportFailure(L"could not load " + session.path, hr, {ResultArea::Plugin, session.path});
        return false;
    }
    LogLine(TQLOG_INFO, L"loaded " + session.path + L" (id " + HexCode(options.id.value_or(0)) +
                            L") " + LocationText(options.location, session.factory) + L": " +
                            HexCode(hr));
    return true;
}

bool ApplySettings(const Options& options, ITqVstEffect* effect)
{
    HRESULT hr = S_OK;
    if (!options.presetFile.empty() && FAILED(hr = LoadPresetFile(effect, options.presetFile)))
    {
        ReportFailure(L"could not load the preset " + options.presetFile, hr,
                      {ResultArea::Preset, options.presetFile});
        return false;
    }
    if (!options.bankFile.empty() &&
        FAILED(hr = LoadBankFile(effect, options.bankFile, options.program.value_or(0))))
    {
        ReportFailure(L"could not load the bank " + options.bankFile, hr,
                      {ResultArea::Preset, options.bankFile});
        return false;
    }
    TqVstEffectInfo info = {};
    if (!options.parameters.empty() && FAILED(hr = effect->GetEffectInfo(&info)))
    {
        ReportFailure(L"could not read the plug-in's facts", hr);
        return false;
    }
    for (const auto& [index, value] : options.parameters)
    {
        if (index >= info.numParameters)
        {
            ReportFailure(L"--param " + std::to_wstring(index) + L": the plug-in has " +
                              std::to_wstring(info.numParameters) + L" parameters",
                          E_INVALIDARG);
            return false;
        }
        if (FAILED(hr = effect->SetParameter(index, value)))
        {
            ReportFailure(L"could not set parameter " + std::to_wstring(index), hr);
            return false;
        }
    }
    return true;
}

} // namespace tqhost
