// The three places a host can drive an effect from: in this process, in a server of this
// bitness, and in the 32-bit server. A test that must answer alike in all of them runs its cases
// once per place.
#pragma once

#include "comptr.h"
#include "support/serverprocess.h"
#include "support/testpaths.h"
#include "vstclient.h"

#include <memory>
#include <ostream>
#include <string>

namespace tqtest {

struct Place
{
    int location;
    const char* name;
};

// Names a place in test output.
inline void PrintTo(const Place& place, std::ostream* out)
{
    *out << place.name;
}

inline constexpr Place kPlaces[] = {
    {kTqVstInProcess, "in process"},
    {kTqVstServer, "server"},
    {kTqVstServer32, "32-bit server"},
};

// The factory of one place, released at the end; a server it started must end within the
// watcher's grace time or is ended.
class PlacedFactory
{
public:
    explicit PlacedFactory(const Place& place) : m_place(place)
    {
        if (place.location == kTqVstServer32 && !Have32BitServer()) return;
        DWORD pid = 0;
        m_result = GetVstFactory(place.location, IID_ITqVstEffectFactory, m_factory.PutVoid(),
                                 L"tqvst", L"tests", &pid, nullptr);
        if (place.location != kTqVstInProcess) m_server = std::make_unique<ServerProcess>(pid);
    }
    ~PlacedFactory()
    {
        if (m_factory) ReleaseVstFactory(m_place.location, m_factory.Detach());
    }
    PlacedFactory(const PlacedFactory&) = delete;
    PlacedFactory& operator=(const PlacedFactory&) = delete;

    // False where this machine has no such place (no 32-bit Wine, or a 32-bit build).
    bool Available() const { return m_place.location != kTqVstServer32 || Have32BitServer(); }
    HRESULT Result() const { return m_result; }
    ITqVstEffectFactory* Get() const { return m_factory.Get(); }

    // A test plug-in of the bitness that runs in this place.
    std::wstring Plugin(const std::wstring& file) const
    {
        return m_place.location == kTqVstServer32 ? Plugin32Path(file) : PluginPath(file);
    }

    tq::ComPtr<ITqVstEffect> Create(const std::wstring& file, UINT32 id = 0) const
    {
        tq::ComPtr<ITqVstEffect> effect;
        m_factory->CreateEffect(Plugin(file).c_str(), id, IID_ITqVstEffect, effect.PutVoid());
        return effect;
    }

private:
    Place m_place;
    HRESULT m_result = E_FAIL;
    tq::ComPtr<ITqVstEffectFactory> m_factory;
    std::unique_ptr<ServerProcess> m_server;
};

} // namespace tqtest
