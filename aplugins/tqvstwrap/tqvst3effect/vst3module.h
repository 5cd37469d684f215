// A loaded .vst3 module and the plug-in factory it hands out.
#pragma once

#include "pluginterfaces/base/ipluginbase.h"

#include <windows.h>

namespace tqvst {

// Loads the module in its constructor and unloads it in its destructor. Validity is read from
// the object: a usable module has both a handle and a factory. Every call into the module's code
// runs inside a plug-in guard; a fault leaves the object usable but marked faulted().
class Vst3Module
{
public:
    explicit Vst3Module(const wchar_t* path) noexcept;
    ~Vst3Module();
    Vst3Module(const Vst3Module&) = delete;
    Vst3Module& operator=(const Vst3Module&) = delete;

    HMODULE module() const noexcept { return m_module; }
    // 0, or the loader's error as an HRESULT, or TQVST_E_PLUGINFAULT.
    HRESULT loadError() const noexcept { return m_loadError; }
    vst3::IPluginFactory* factory() const noexcept { return m_factory; }
    // Whether any call into the module's code has faulted since it was loaded.
    bool faulted() const noexcept { return m_faulted; }

    bool GetFactoryInfo(vst3::PFactoryInfo* info) noexcept;
    // 0 without a factory.
    vst3::int32 CountClasses() noexcept;
    // Reads one class record and its class id. False without a factory, for an index out of
    // range, for a factory that does not speak IPluginFactory2, and on a fault.
    bool GetClassInfoAt(vst3::int32 index, vst3::PClassInfo2* info, vst3::uint8 cid[16]) noexcept;

private:
    template <class F>
    bool Call(F&& body) noexcept;

    HMODULE m_module = nullptr;
    HRESULT m_loadError = 0;
    vst3::IPluginFactory* m_factory = nullptr;
    bool m_faulted = false;
};

} // namespace tqvst
