// The effect a host gets from a server through the client library: every call goes to the
// server's proxy, but for Process, whose blocks travel through shared memory.
#pragma once

#include "blockshare.h"
#include "callwatch.h"
#include "comptr.h"
#include "masterrelay.h"
#include "tqmemorytoken.h"
#include "tqvst.h"
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
    HRESULT STDMETHODCALLTYPE GetEffectName(WCHAR* name, UINT32 capacity) override;
    HRESULT STDMETHODCALLTYPE GetVendorName(WCHAR* name, INT32 capacity) override;
    HRESULT STDMETHODCALLTYPE GetProductName(WCHAR* name, UINT32 capacity) override;
    HRESULT STDMETHODCALLTYPE GetEffectInfo(TqVstEffectInfo* info) override;
    HRESULT STDMETHODCALLTYPE GetNextShellPlugin(UINT32* id, WCHAR* name, INT32 capacity) override;
    HRESULT STDMETHODCALLTYPE SetMaster(IUnknown* master) override;
    HRESULT STDMETHODCALLTYPE Idle() override;
    HRESULT STDMETHODCALLTYPE Suspend(INT32 full) override;
    HRESULT STDMETHODCALLTYPE Resume(INT32 force) override;
    HRESULT STDMETHODCALLTYPE SetSampleRate(double rate) override;
    HRESULT STDMETHODCALLTYPE SetSampleType(UINT32 sampleType) override;
    HRESULT STDMETHODCALLTYPE SetChannelCount(INT32 channels) override;
    HRESULT STDMETHODCALLTYPE SetBlockSize(INT32 frames) override;
    HRESULT STDMETHODCALLTYPE GetParameterProperties(UINT32 index,
                                                     TqVstParameterProperties* props) override;
    HRESULT STDMETHODCALLTYPE CanParameterBeAutomated(UINT32 index, UINT32* yes) override;
    HRESULT STDMETHODCALLTYPE GetParameterName(UINT32 index, WCHAR* text, UINT32 capacity) override;
    HRESULT STDMETHODCALLTYPE GetParameterDisplay(UINT32 index, WCHAR* text,
                                                  UINT32 capacity) override;
    HRESULT STDMETHODCALLTYPE GetParameterLabel(UINT32 index, WCHAR* text,
                                                UINT32 capacity) override;
    HRESULT STDMETHODCALLTYPE GetParameter(UINT32 index, float* value) override;
    HRESULT STDMETHODCALLTYPE SetParameter(UINT32 index, float value) override;
    HRESULT STDMETHODCALLTYPE GetInitialDelay(UINT32* frames) override;
    HRESULT STDMETHODCALLTYPE GetTailSize(UINT32* frames) override;
    HRESULT STDMETHODCALLTYPE Process(BYTE* input, UINT32 inputChannels, BYTE* output,
                                      INT32 outputChannels, UINT32 frames,
                                      UINT32 bytesPerSample) override;
    HRESULT STDMETHODCALLTYPE ProcessReplace() override;
    HRESULT STDMETHODCALLTYPE GetProgram(UINT32* program) override;
    HRESULT STDMETHODCALLTYPE SetProgram(INT32 program) override;
    HRESULT STDMETHODCALLTYPE GetProgramName(INT32 program, WCHAR* name, UINT32 capacity) override;
    HRESULT STDMETHODCALLTYPE SetProgramName(const WCHAR* name) override;
    HRESULT STDMETHODCALLTYPE SavePreset(IStream* stream, UINT32* bytes) override;
    HRESULT STDMETHODCALLTYPE LoadPreset(IStream* stream) override;
    HRESULT STDMETHODCALLTYPE SaveBank(IStream* stream, UINT32* bytes) override;
    HRESULT STDMETHODCALLTYPE LoadBank(IStream* stream, UINT32 program) override;
    HRESULT STDMETHODCALLTYPE OpenEditor(HWND parent, UINT32* rect) override;
    HRESULT STDMETHODCALLTYPE EditorIdle() override;
    HRESULT STDMETHODCALLTYPE CloseEditor() override;
    HRESULT STDMETHODCALLTYPE ResizeEditor(INT32 width, INT32 height) override;
    HRESULT STDMETHODCALLTYPE CanResizeEditor(UINT32* yes) override;

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
