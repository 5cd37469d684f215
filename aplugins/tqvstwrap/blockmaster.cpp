// The effect's master on the shared channel: block answers on the audio thread, the host's
// master everywhere else.
#include "blockmaster.h"

namespace tqvst {

void CTqVstBlockMaster::BeginBlock(block::Header* header)
{
    m_header = header;
    m_time = header->time;
    m_timeResult = header->timeResult;
    m_tempo = header->tempo;
    m_tempoResult = header->tempoResult;
    header->callbackCount = 0;
    header->callbacksLost = 0;
    m_blockThread.store(GetCurrentThreadId(), std::memory_order_relaxed);
}

void CTqVstBlockMaster::EndBlock()
{
    m_blockThread.store(0, std::memory_order_relaxed);
    m_header = nullptr;
}

HRESULT STDMETHODCALLTYPE CTqVstBlockMaster::QueryInterface(REFIID riid, void** object)
{
    if (!object) return E_POINTER;
    *object = nullptr;
    if (riid != IID_IUnknown && riid != IID_ITqVstMaster) return E_NOINTERFACE;
    *object = static_cast<ITqVstMaster*>(this);
    AddRef();
    return S_OK;
}

ULONG STDMETHODCALLTYPE CTqVstBlockMaster::AddRef()
{
    return static_cast<ULONG>(InterlockedIncrement(&m_refCount));
}

ULONG STDMETHODCALLTYPE CTqVstBlockMaster::Release()
{
    const LONG count = InterlockedDecrement(&m_refCount);
    if (count == 0) delete this;
    return static_cast<ULONG>(count);
}

HRESULT CTqVstBlockMaster::List(block::CallbackKind kind, UINT32 index, float value, UINT32 extra)
{
    const UINT32 at = m_header->callbackCount;
    if (at >= block::kMaxCallbacks)
    {
        ++m_header->callbacksLost;
        return E_OUTOFMEMORY;
    }
    m_header->callbacks[at] = {kind, index, value, extra};
    m_header->callbackCount = at + 1;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVstBlockMaster::Automate(UINT32 index, float value)
{
    if (InBlock()) return List(block::kAutomate, index, value, 0);
    return m_relay.Call([&](ITqVstMaster* master) { return master->Automate(index, value); });
}

HRESULT STDMETHODCALLTYPE CTqVstBlockMaster::Idle()
{
    if (InBlock()) return List(block::kIdle, 0, 0.0f, 0);
    return m_relay.Call([](ITqVstMaster* master) { return master->Idle(); });
}

HRESULT STDMETHODCALLTYPE CTqVstBlockMaster::UpdateDisplay()
{
    if (InBlock()) return List(block::kUpdateDisplay, 0, 0.0f, 0);
    return m_relay.Call([](ITqVstMaster* master) { return master->UpdateDisplay(); });
}

HRESULT STDMETHODCALLTYPE CTqVstBlockMaster::GetTime(TqVstMasterTime* time)
{
    if (!InBlock())
        return m_relay.Call([&](ITqVstMaster* master) { return master->GetTime(time); });
    if (!time) return E_POINTER;
    *time = m_time;
    return m_timeResult;
}

HRESULT STDMETHODCALLTYPE CTqVstBlockMaster::GetTempoAt(UINT32 samplePos, INT32* tempo)
{
    if (!InBlock())
        return m_relay.Call(
            [&](ITqVstMaster* master) { return master->GetTempoAt(samplePos, tempo); });
    if (!tempo) return E_POINTER;
    // The host sent one tempo with the block, taken at the block's position.
    *tempo = m_tempo;
    return m_tempoResult;
}

HRESULT STDMETHODCALLTYPE CTqVstBlockMaster::SizeWindow(UINT32 width, UINT32 height)
{
    if (InBlock()) return List(block::kSizeWindow, width, 0.0f, height);
    return m_relay.Call([&](ITqVstMaster* master) { return master->SizeWindow(width, height); });
}

HRESULT STDMETHODCALLTYPE CTqVstBlockMaster::BeginEdit(UINT32 index)
{
    if (InBlock()) return List(block::kBeginEdit, index, 0.0f, 0);
    return m_relay.Call([&](ITqVstMaster* master) { return master->BeginEdit(index); });
}

HRESULT STDMETHODCALLTYPE CTqVstBlockMaster::EndEdit(UINT32 index)
{
    if (InBlock()) return List(block::kEndEdit, index, 0.0f, 0);
    return m_relay.Call([&](ITqVstMaster* master) { return master->EndEdit(index); });
}

HRESULT STDMETHODCALLTYPE CTqVstBlockMaster::LoadPresetFile(const WCHAR* path)
{
    // A file name does not fit the block's list, and no effect loads presets while it processes.
    if (InBlock()) return E_NOTIMPL;
    return m_relay.Call([&](ITqVstMaster* master) { return master->LoadPresetFile(path); });
}

} // namespace tqvst
