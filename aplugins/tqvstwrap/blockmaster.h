// The master a server's effect talks to while its blocks come through the shared channel.
#pragma once

#include "blockshare.h"
#include "masterrelay.h"
#include "tqvst.h"

#include <windows.h>

#include <atomic>

namespace tqvst {

// Stands between the effect and the host's master. On the channel's audio thread during a block
// it answers the time and tempo the host sent with the block and lists every other callback in
// the block for the host to replay afterwards: that thread never makes a call across processes,
// since the host is waiting for the block, not serving calls. Any other thread reaches the host's
// master through a relay.
class CTqVstBlockMaster final : public ITqVstMaster
{
public:
    // Starts with one reference, owned by the caller.
    CTqVstBlockMaster() = default;

    // Takes the host's master, on the thread that owns it (null lets it go).
    HRESULT SetHostMaster(IUnknown* master) { return m_relay.Reset(master); }

    // Called on the audio thread around each block.
    void BeginBlock(block::Header* header);
    void EndBlock();

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    // ITqVstMaster
    HRESULT STDMETHODCALLTYPE Automate(UINT32 index, float value) override;
    HRESULT STDMETHODCALLTYPE Idle() override;
    HRESULT STDMETHODCALLTYPE UpdateDisplay() override;
    HRESULT STDMETHODCALLTYPE GetTime(TqVstMasterTime* time) override;
    HRESULT STDMETHODCALLTYPE GetTempoAt(UINT32 samplePos, INT32* tempo) override;
    HRESULT STDMETHODCALLTYPE SizeWindow(UINT32 width, UINT32 height) override;
    HRESULT STDMETHODCALLTYPE BeginEdit(UINT32 index) override;
    HRESULT STDMETHODCALLTYPE EndEdit(UINT32 index) override;
    HRESULT STDMETHODCALLTYPE LoadPresetFile(const WCHAR* path) override;

private:
    ~CTqVstBlockMaster() = default;
    bool InBlock() const
    {
        return m_blockThread.load(std::memory_order_relaxed) == GetCurrentThreadId();
    }
    HRESULT List(block::CallbackKind kind, UINT32 index, float value, UINT32 extra);

    volatile LONG m_refCount = 1;
    MasterRelay m_relay;
    // The audio thread while it runs a block, else 0; only that thread writes it.
    std::atomic<DWORD> m_blockThread = 0;
    block::Header* m_header = nullptr;
    // The block's transport, copied from the host's record when the block starts.
    TqVstMasterTime m_time = {};
    HRESULT m_timeResult = S_OK;
    INT32 m_tempo = 0;
    HRESULT m_tempoResult = S_OK;
};

} // namespace tqvst
