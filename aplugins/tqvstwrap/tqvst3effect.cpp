// VST3 effect object. Loading is not available yet, so every object is a failed effect that the
// host can only release; it still counts toward the server's life like any effect.
#include "tqvst3effect.h"

#include "serverlifetime.h"

CTqVst3Effect::CTqVst3Effect(const wchar_t*, UINT32, HRESULT* result)
{
    *result = kNoVst3Plugin;
    AdjustObjectCount(true);
}

CTqVst3Effect::~CTqVst3Effect()
{
    AdjustObjectCount(false);
}

HRESULT STDMETHODCALLTYPE CTqVst3Effect::QueryInterface(REFIID riid, void** object)
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

ULONG STDMETHODCALLTYPE CTqVst3Effect::AddRef()
{
    return InterlockedIncrement(&m_refCount);
}

ULONG STDMETHODCALLTYPE CTqVst3Effect::Release()
{
    const ULONG count = InterlockedDecrement(&m_refCount);
    if (count == 0) delete this;
    return count;
}

namespace {
HRESULT ClearedName(WCHAR* name, UINT32 capacity)
{
    if (!name) return E_INVALIDARG;
    if (capacity > 0) name[0] = 0;
    return TQVST_E_NOSELECTION;
}
} // namespace

HRESULT STDMETHODCALLTYPE CTqVst3Effect::GetEffectName(WCHAR* name, UINT32 capacity)
{
    return ClearedName(name, capacity);
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::GetVendorName(WCHAR* name, INT32 capacity)
{
    return ClearedName(name, capacity > 0 ? static_cast<UINT32>(capacity) : 0);
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::GetProductName(WCHAR* name, UINT32 capacity)
{
    return ClearedName(name, capacity);
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::GetEffectInfo(TqVstEffectInfo* info)
{
    return info ? TQVST_E_NOSELECTION : E_INVALIDARG;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::GetNextShellPlugin(UINT32* id, WCHAR* name, INT32 capacity)
{
    if (id) *id = 0;
    if (name && capacity > 0) name[0] = 0;
    return TQVST_E_NOSELECTION;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::SetMaster(IUnknown* master)
{
    return master ? TQVST_E_NOSELECTION : S_FALSE;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::Idle()
{
    return S_OK;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::Suspend(INT32)
{
    return S_OK;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::Resume(INT32)
{
    return S_OK;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::SetSampleRate(double)
{
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::SetSampleType(UINT32)
{
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::SetChannelCount(INT32)
{
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::SetBlockSize(INT32)
{
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::GetParameterProperties(UINT32, TqVstParameterProperties*)
{
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::CanParameterBeAutomated(UINT32, UINT32* yes)
{
    if (yes) *yes = 0;
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::GetParameterName(UINT32, WCHAR*, UINT32)
{
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::GetParameterDisplay(UINT32, WCHAR*, UINT32)
{
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::GetParameterLabel(UINT32, WCHAR*, UINT32)
{
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::GetParameter(UINT32, float*)
{
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::SetParameter(UINT32, float)
{
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::GetInitialDelay(UINT32*)
{
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::GetTailSize(UINT32*)
{
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::Process(BYTE*, UINT32, BYTE*, INT32, UINT32, UINT32)
{
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::ProcessReplace()
{
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::GetProgram(UINT32*)
{
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::SetProgram(INT32)
{
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::GetProgramName(INT32, WCHAR*, UINT32)
{
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::SetProgramName(const WCHAR*)
{
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::SavePreset(IStream*, UINT32*)
{
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::LoadPreset(IStream*)
{
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::SaveBank(IStream*, UINT32*)
{
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::LoadBank(IStream*, UINT32)
{
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::OpenEditor(HWND, UINT32*)
{
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::EditorIdle()
{
    return S_OK;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::CloseEditor()
{
    return S_FALSE;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::ResizeEditor(INT32, INT32)
{
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVst3Effect::CanResizeEditor(UINT32* yes)
{
    if (yes) *yes = 0;
    return S_OK;
}
