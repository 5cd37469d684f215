// A factory of the chosen location and one effect made from it, released in the right order.
#pragma once

#include "comptr.h"
#include "options.h"
#include "tqvst.h"

#include <string>

namespace tqhost {

// A factory from GetVstFactory, given back on destruction; the last one retires its server.
class FactoryLease
{
public:
    FactoryLease() = default;
    ~FactoryLease() { Reset(); }
    FactoryLease(const FactoryLease&) = delete;
    FactoryLease& operator=(const FactoryLease&) = delete;

    HRESULT Open(int location);
    void Reset();
    ITqVstEffectFactory* Get() const { return m_factory.Get(); }
    DWORD ServerProcessId() const { return m_serverProcessId; }

private:
    int m_location = 0;
    DWORD m_serverProcessId = 0;
    tq::ComPtr<ITqVstEffectFactory> m_factory;
};

struct PluginSession
{
    FactoryLease factory; // declared first so the effect goes before its server
    tq::ComPtr<ITqVstEffect> effect;
    std::wstring path; // full path of the plug-in file, inside its bundle for a VST3 bundle
};

// The full form of a path as the user gave it; false when the system cannot make one.
bool FullPath(const std::wstring& path, std::wstring& full);

// Reaches the server of the options' location and makes the effect (with --id for a shell's
// sub-plug-in) from the file, or from the file inside it for a VST3 bundle folder. On failure
// prints the one-line error and returns false.
bool OpenPlugin(const Options& options, const std::wstring& file, PluginSession& session);

// Loads --preset or --bank (with --program), then sets each --param in order. On failure prints
// the one-line error and returns false.
bool ApplySettings(const Options& options, ITqVstEffect* effect);

} // namespace tqhost
