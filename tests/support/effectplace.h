// The three places a host can drive an effect from: in this process, in a server of this
// bitness, and in the 32-bit server. A test that must answer alike in all of them runs its cases
// once per place, as a PlacedTest instantiated over kPlaces.
#pragma once

#include "comptr.h"
#include "support/serverprocess.h"
#include "support/testpaths.h"
#include "vstclient.h"

#include <gtest/gtest.h>

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

    tq::ComPtr<ITqVstEffect> Create(const std::wstring& file, UINT32 id = 0,
                                    HRESULT* hr = nullptr) const
    {
        tq::ComPtr<ITqVstEffect> effect;
        const HRESULT made =
            m_factory->CreateEffect(Plugin(file).c_str(), id, IID_ITqVstEffect, effect.PutVoid());
        if (hr) *hr = made;
        return effect;
    }

private:
    Place m_place;
    HRESULT m_result = E_FAIL;
    tq::ComPtr<ITqVstEffectFactory> m_factory;
    std::unique_ptr<ServerProcess> m_server;
};

// Names the instances of a test over kPlaces.
inline std::string PlaceName(const testing::TestParamInfo<Place>& info)
{
    constexpr const char* kNames[] = {"InProcess", "Server", "Server32"};
    return kNames[info.index];
}

// COM on the test's thread and the factory of one place, which a fixture opens in its SetUp; a
// test skips where this machine has no such place.
template <class Base>
class WithFactory : public Base
{
protected:
    void Open(const Place& place)
    {
        ASSERT_HRESULT_SUCCEEDED(CoInitialize(nullptr));
        m_factory = std::make_unique<PlacedFactory>(place);
        if (!m_factory->Available()) GTEST_SKIP() << "no 32-bit server here";
        ASSERT_EQ(m_factory->Result(), S_OK);
    }
    void TearDown() override
    {
        m_factory.reset();
        CoUninitialize();
    }

    // A test plug-in that must load here.
    tq::ComPtr<ITqVstEffect> Create(const std::wstring& file)
    {
        HRESULT hr = E_FAIL;
        tq::ComPtr<ITqVstEffect> effect = m_factory->Create(file, 0, &hr);
        EXPECT_EQ(hr, S_OK) << "cannot load " << std::string(file.begin(), file.end());
        return effect;
    }

    std::unique_ptr<PlacedFactory> m_factory;
};

// A test run once per place.
class PlacedTest : public WithFactory<testing::TestWithParam<Place>>
{
protected:
    void SetUp() override { Open(GetParam()); }
};

// A test that runs in this process only: its plug-ins leave records only this process can read,
// or it looks into the effect object itself.
class InProcessTest : public WithFactory<testing::Test>
{
protected:
    void SetUp() override { Open(kPlaces[0]); }
};

} // namespace tqtest
