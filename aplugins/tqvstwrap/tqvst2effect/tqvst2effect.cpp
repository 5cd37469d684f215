// VST2 effect object: construction, loading and unloading a plug-in, and the guarded dispatcher.
#include "tqvst2effect.h"

#include "activationcontext.h"
#include "hostcallback.h"
#include "pluginexceptionfilter.h"
#include "procaddress.h"
#include "serverlifetime.h"
#include "vst2log.h"

#include <vector>

using tqvst::CallPlugin;

uint32_t g_requestedPluginId = 0;
bool g_needIdleDuringLoad = false;

namespace {

HRESULT LastErrorResult()
{
    const DWORD error = GetLastError();
    return error ? HRESULT_FROM_WIN32(error & 0xFFFF) : E_FAIL;
}

} // namespace

CTqVstEffect::CTqVstEffect(const wchar_t* path, UINT32 uniqueId, HRESULT* result)
{
    InitializeCriticalSection(&m_lock);
    *result = LoadPlugin2(path, uniqueId);
    // Counted even when the load failed: the caller releases a failed object.
    AdjustObjectCount(true);
}

CTqVstEffect::~CTqVstEffect()
{
    UnloadPlugin2();
    DeleteCriticalSection(&m_lock);
    AdjustObjectCount(false);
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::QueryInterface(REFIID riid, void** object)
{
    if (!object) return E_POINTER;
    if (riid == IID_IUnknown || riid == IID_ITqVstEffect)
    {
        *object = static_cast<ITqVstEffect*>(this);
        AddRef();
        return S_OK;
    }
    *object = nullptr;
    return E_NOINTERFACE;
}

ULONG STDMETHODCALLTYPE CTqVstEffect::AddRef()
{
    return InterlockedIncrement(&m_refCount);
}

ULONG STDMETHODCALLTYPE CTqVstEffect::Release()
{
    const ULONG count = InterlockedDecrement(&m_refCount);
    if (count == 0) delete this;
    return count;
}

HRESULT CTqVstEffect::LoadPlugin2(const wchar_t* path, UINT32 uniqueId)
{
    HRESULT hr = S_OK;
    const bool completed = CallPlugin([&] {
        lstrcpynW(m_path, path, MAX_PATH);
        tqvst::ResetFloatingPoint();
        {
            tqvst::ScopedActivationContext manifest;
            m_module.Reset(LoadLibraryW(m_path));
        }
        if (!m_module)
        {
            hr = LastErrorResult();
            return;
        }
        auto entry = tq::GetProc<vst2::EntryProc>(m_module.Get(), "VSTPluginMain");
        if (!entry) entry = tq::GetProc<vst2::EntryProc>(m_module.Get(), "main");
        if (!entry)
        {
            hr = LastErrorResult();
            return;
        }

        // A fault in the entry point leaves the lock held; the destructor deletes it.
        EnterCriticalSection(&m_lock);
        g_requestedPluginId = uniqueId;
        g_needIdleDuringLoad = false;
        m_effect = entry(AudioMasterCallback);
        if (g_needIdleDuringLoad) m_state |= kStateNeedsIdle;
        g_needIdleDuringLoad = false;
        LeaveCriticalSection(&m_lock);

        if (!m_effect || m_effect->magic != vst2::kEffectMagic)
        {
            hr = E_INVALIDARG;
            return;
        }
        if (Dispatch(vst2::effGetPlugCategory, 0, 0, nullptr, 0.0f) == vst2::kPlugCategoryShell)
        {
            m_state |= kStateShell;
            // Left loaded but unopened, so that the host can enumerate the sub-plug-ins.
            if (uniqueId == 0)
            {
                hr = TQVST_S_SHELL;
                return;
            }
            // The shell made the sub-plug-in it was asked for through audioMasterCurrentId.
            if (static_cast<UINT32>(m_effect->uniqueID) != uniqueId)
            {
                hr = E_UNEXPECTED;
                return;
            }
        }
        m_effect->resvd1 = reinterpret_cast<intptr_t>(this);
        m_effect->resvd2 = 0;
        Dispatch(vst2::effOpen, 0, 0, nullptr, 0.0f);
    });
    if (!completed) return TQVST_E_PLUGINFAULT;
    if (FAILED(hr)) UnloadPlugin2();
    return hr;
}

void CTqVstEffect::UnloadPlugin2()
{
    const bool completed = CallPlugin([&] {
        CloseEditor();
        if (m_effect)
        {
            if (m_state & kStateShellScan)
            {
                Dispatch(vst2::effVendorSpecific, vst2::kShellScanIndex, vst2::kShellScanEnd,
                         nullptr, 0.0f);
                m_state &= ~kStateShellScan;
            }
            Dispatch(vst2::effClose, 0, 0, nullptr, 0.0f);
            m_effect = nullptr;
        }
        m_master.Reset(nullptr);
        m_module.Reset();
        m_inputs.Free();
        m_outputs.Free();
        m_bufferBytes = 0;
    });
    // Whatever faulted, the module goes: a plug-in that faults in its own shutdown is still
    // unloaded.
    if (!completed) m_module.Reset();
}

int32_t CTqVstEffect::Dispatch(int32_t opcode, int32_t index, intptr_t value, void* ptr, float opt)
{
    vst2::AEffect* effect = m_effect;
    if (!effect) return 0;
    intptr_t answer = 0;
    const bool completed =
        CallPlugin([&] { answer = effect->dispatcher(effect, opcode, index, value, ptr, opt); });
    const int32_t result = completed ? static_cast<int32_t>(answer) : -1;
    // Idle ticks are kept out of the log.
    if (opcode != vst2::effIdle && opcode != vst2::effEditIdle)
        vst2::LogDispatch(m_log, opcode, index, value, ptr, nullptr, opt, result);
    return result;
}

int32_t CTqVstEffect::DispatchGetText(int32_t opcode, int32_t index, WCHAR* text, UINT32 capacity)
{
    // Plug-ins write names of any length: this buffer, not the caller's, takes what they write.
    char buffer[260] = {};
    if (text) ZeroMemory(text, capacity * sizeof(WCHAR));
    vst2::AEffect* effect = m_effect;
    int32_t result = 0;
    if (effect)
    {
        intptr_t answer = 0;
        const bool completed = CallPlugin(
            [&] { answer = effect->dispatcher(effect, opcode, index, 0, buffer, 0.0f); });
        result = completed ? static_cast<int32_t>(answer) : -1;
        buffer[sizeof(buffer) - 1] = 0;
        vst2::LogDispatch(m_log, opcode, index, 0, buffer, buffer, 0.0f, result);
    }
    if (text && capacity > 0 && buffer[0])
    {
        wchar_t wide[sizeof(buffer)] = {};
        MultiByteToWideChar(CP_ACP, 0, buffer, -1, wide, static_cast<int>(std::size(wide)));
        lstrcpynW(text, wide, static_cast<int>(capacity));
        text[capacity - 1] = 0;
    }
    return result;
}

int32_t CTqVstEffect::DispatchSetText(int32_t opcode, int32_t index, const WCHAR* text)
{
    vst2::AEffect* effect = m_effect;
    if (!effect) return 0;
    const int length = text ? lstrlenW(text) : 0;
    std::vector<char> narrow(static_cast<size_t>(length) + 2, 0);
    if (length > 0)
        WideCharToMultiByte(CP_ACP, 0, text, length, narrow.data(), static_cast<int>(narrow.size()),
                            nullptr, nullptr);
    narrow.back() = 0;
    intptr_t answer = 0;
    const bool completed = CallPlugin(
        [&] { answer = effect->dispatcher(effect, opcode, index, 0, narrow.data(), 0.0f); });
    const int32_t result = completed ? static_cast<int32_t>(answer) : -1;
    vst2::LogDispatch(m_log, opcode, index, 0, narrow.data(), narrow.data(), 0.0f, result);
    return result;
}
