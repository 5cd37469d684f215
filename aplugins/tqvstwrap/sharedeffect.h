// The effect a host gets from a server through the client library: every call goes to the
// server's proxy, but for Process, whose blocks travel through shared memory.
#pragma once

#include "blockshare.h"
#include "callwatch.h"
#include "comptr.h"
#include "masterrelay.h"
#include "tqmemorytoken.h"
#include "tqvst.h"
#include "tqvsteffectmethods.h"
#include "uniquehandle.h"

#include <windows.h>

namespace tqvst {

// How long Process waits for a server to hand a block back before it ends the server; process
// wide, read on each block.
void SetSharedProcessTimeout(DWORD milliseconds);
DWORD SharedProcessTimeout();

class CTqVstSharedEffect final : public ITqVstEffect
{
public:
    // Opens a channel beside proxy on the server behind serverFactory and wraps both. On failure
    // nothing is made and the caller goes on with the proxy.
    static HRESULT Create(IClassFactory* serverFactory, ITqVstEffect* proxy, ITqVstEffect** out);

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    // ITqVstEffect
    TQVST_EFFECT_METHODS

private:
    CTqVstSharedEffect() = default;
    ~CTqVstSharedEffect();

    // The proxy's answer, or at once the failure that ended the server. A server that does not
    // answer within the call timeout is ended, which is the only way out of a call that COM
    // would wait on for ever.
    template <class... P, class... A>
    HRESULT Forward(HRESULT (STDMETHODCALLTYPE ITqVstEffect::*method)(P...), A... args)
    {
        if (FAILED(m_broken)) return m_broken;
        CallWatch watch(m_server.Get(), CallTimeout());
        const HRESULT hr = (m_proxy.Get()->*method)(args...);
        return Watched(watch, hr);
    }
    HRESULT Watched(const CallWatch& watch, HRESULT hr);
    static DWORD CallTimeout();
    // A new block of at least areaBytes for each direction, handed to the server.
    HRESULT Configure(UINT64 areaBytes);
    void SupplyTransport(block::Header& header);
    void ReplayCallbacks(const block::Header& header);

    volatile LONG m_refCount = 1;
    tq::ComPtr<ITqVstEffect> m_proxy;
    tq::ComPtr<ITqVstBlockChannel> m_channel;
    // The host's master, called on the host's threads with the block's transport and its
    // callbacks.
    MasterRelay m_master;
    bool m_hasMaster = false;
    tq::UniqueHandle m_request;
    tq::UniqueHandle m_done;
    tq::UniqueHandle m_server; // the server process: its end ends a wait at once
    tq::UniqueHandle m_mapping;
    tq::UniqueView m_view;
    block::Header* m_header = nullptr;
    BYTE* m_input = nullptr;
    BYTE* m_output = nullptr;
    UINT64 m_areaBytes = 0;
    LONG m_sequence = 0;
    // TQVST_E_TIMEOUT once a block did not come back: the server was ended, and nothing more is
    // asked of it.
    HRESULT m_broken = S_OK;
    // The server ended during a block: later blocks go the ordinary way, which reports it.
    bool m_serverGone = false;
};

} // namespace tqvst
