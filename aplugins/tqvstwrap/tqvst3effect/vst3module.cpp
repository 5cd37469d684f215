// Loading a .vst3 module: the loader under the program's manifest, InitDll, GetPluginFactory, and
// the reverse on unload.
#include "vst3module.h"

#include "activationcontext.h"
#include "pluginexceptionfilter.h"
#include "procaddress.h"
#include "tqvst.h"

#include <cstring>

namespace tqvst {

template <class F>
bool Vst3Module::Call(F&& body) noexcept
{
    if (CallPlugin(static_cast<F&&>(body))) return true;
    m_faulted = true;
    return false;
}

Vst3Module::Vst3Module(const wchar_t* path) noexcept
{
    const bool completed = Call([&] {
        ResetFloatingPoint();
        DWORD error = 0;
        {
            // The plug-in's own dependencies must resolve against the program's manifest.
            ScopedActivationContext manifest;
            m_module = LoadLibraryW(path);
            if (!m_module) error = GetLastError();
        }
        if (!m_module)
        {
            SetLastError(error);
            if (static_cast<LONG>(error) > 0)
                m_loadError = static_cast<HRESULT>(0x80070000u | (error & 0xFFFF));
            return;
        }
        // Only the low byte carries InitDll's answer: the bits above it are whatever the module
        // left there, so the export is called as returning one byte.
        if (auto init = tq::GetProc<BYTE (*)()>(m_module, "InitDll"))
        {
            if (init() == 0)
            {
                FreeLibrary(m_module);
                m_module = nullptr;
                return;
            }
        }
        if (auto entry = tq::GetProc<vst3::GetFactoryProc>(m_module, "GetPluginFactory"))
            m_factory = entry();
    });
    if (!completed) m_loadError = TQVST_E_PLUGINFAULT;
}

Vst3Module::~Vst3Module()
{
    if (m_factory)
    {
        vst3::IPluginFactory* factory = m_factory;
        m_factory = nullptr;
        Call([&] { factory->release(); });
    }
    if (!m_module) return;
    // ExitDll runs once the factory reference is gone and before the code goes away.
    Call([&] {
        if (auto exit = tq::GetProc<vst3::ExitModuleProc>(m_module, "ExitDll")) exit();
    });
    Call([&] { FreeLibrary(m_module); });
    m_module = nullptr;
}

bool Vst3Module::GetFactoryInfo(vst3::PFactoryInfo* info) noexcept
{
    if (!m_factory || !info) return false;
    vst3::tresult result = vst3::kInternalError;
    return Call([&] { result = m_factory->getFactoryInfo(info); }) && result == vst3::kResultOk;
}

vst3::int32 Vst3Module::CountClasses() noexcept
{
    if (!m_factory) return 0;
    vst3::int32 count = 0;
    return Call([&] { count = m_factory->countClasses(); }) ? count : 0;
}

bool Vst3Module::GetClassInfoAt(vst3::int32 index, vst3::PClassInfo2* info,
                                vst3::uint8 cid[16]) noexcept
{
    if (!m_factory || !info || index < 0 || index >= CountClasses()) return false;
    bool read = false;
    const bool completed = Call([&] {
        // The base record is asked for first, as every host does, though only the second
        // version's record is kept.
        vst3::PClassInfo base{};
        m_factory->getClassInfo(index, &base);
        void* object = nullptr;
        if (m_factory->queryInterface(vst3::IPluginFactory2::iid, &object) != vst3::kResultOk ||
            !object)
            return;
        auto* factory2 = static_cast<vst3::IPluginFactory2*>(object);
        // The answer code is not read: a refused record stays cleared and matches no category.
        factory2->getClassInfo2(index, info);
        factory2->release();
        read = true;
    });
    if (!completed || !read) return false;
    std::memcpy(cid, info->cid, sizeof(vst3::TUID));
    return true;
}

} // namespace tqvst
