// The server's end of the shared Process channel: the block mapping, the handshake events and
// the audio thread that runs the effect's Process on each block.
#pragma once

#include "blockmaster.h"
#include "blockshare.h"
#include "comptr.h"
#include "tqmemorytoken.h"
#include "tqvst.h"
#include "uniquehandle.h"

#include <memory>

namespace tqvst {

class CTqVstBlockChannel final : public ITqVstBlockChannel
{
public:
    // Starts with one reference, owned by the caller.
    CTqVstBlockChannel() = default;

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    // ITqVstBlockChannel
    HRESULT STDMETHODCALLTYPE Open(IUnknown* effect, UINT32 hostProcessId, UINT64 requestEvent,
                                   UINT64 doneEvent, UINT32* serverProcessId) override;
    HRESULT STDMETHODCALLTYPE Configure(const TqVstBlockToken* block) override;
    HRESULT STDMETHODCALLTYPE SetMaster(IUnknown* master) override;

private:
    ~CTqVstBlockChannel();
    HRESULT StartThread();
    void StopThread();
    static DWORD WINAPI ThreadMain(void* self);
    void Serve();
    void RunBlock();

    volatile LONG m_refCount = 1;
    tq::ComPtr<ITqVstEffect> m_effect;
    tq::ComPtr<CTqVstBlockMaster> m_master;
    tq::UniqueHandle m_request; // the host's: a block waits for a sleeping server
    tq::UniqueHandle m_done;    // the host's: a block came back to a sleeping host
    tq::UniqueHandle m_stop;    // ours, manual-reset: the audio thread is to end
    tq::UniqueHandle m_thread;
    std::unique_ptr<CMappingOfTqMemoryToken> m_block;
    block::Header* m_header = nullptr;
    BYTE* m_input = nullptr;
    BYTE* m_output = nullptr;
    UINT32 m_areaBytes = 0;
};

} // namespace tqvst
