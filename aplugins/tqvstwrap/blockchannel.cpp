// The server's end of the shared Process channel.
#include "blockchannel.h"

#include <cstring>
#include <new>

namespace tqvst {

namespace {

static_assert(sizeof(TqVstBlockToken) == sizeof(_tqmemorytoken));

// Between two blocks of a busy host the audio thread waits this long on the shared memory before
// it sleeps; a host that streams blocks back to back then never pays for a wake-up.
constexpr LONGLONG kServerSpinUs = 300;

// Only an object of this server may be driven from the audio thread: a proxy would make a call
// across processes on every block.
bool IsProxy(IUnknown* object)
{
    tq::ComPtr<IClientSecurity> security;
    return SUCCEEDED(object->QueryInterface(IID_IClientSecurity, security.PutVoid()));
}

HANDLE HostHandle(UINT64 value)
{
    return reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(value));
}

} // namespace

CTqVstBlockChannel::~CTqVstBlockChannel()
{
    StopThread();
}

HRESULT STDMETHODCALLTYPE CTqVstBlockChannel::QueryInterface(REFIID riid, void** object)
{
    if (!object) return E_POINTER;
    *object = nullptr;
    if (riid != IID_IUnknown && riid != IID_ITqVstBlockChannel) return E_NOINTERFACE;
    *object = static_cast<ITqVstBlockChannel*>(this);
    AddRef();
    return S_OK;
}

ULONG STDMETHODCALLTYPE CTqVstBlockChannel::AddRef()
{
    return static_cast<ULONG>(InterlockedIncrement(&m_refCount));
}

ULONG STDMETHODCALLTYPE CTqVstBlockChannel::Release()
{
    const LONG count = InterlockedDecrement(&m_refCount);
    if (count == 0) delete this;
    return static_cast<ULONG>(count);
}

HRESULT STDMETHODCALLTYPE CTqVstBlockChannel::Open(IUnknown* effect, UINT32 hostProcessId,
                                                   UINT64 requestEvent, UINT64 doneEvent,
                                                   UINT32* serverProcessId)
{
    if (!effect || !serverProcessId) return E_POINTER;
    *serverProcessId = 0;
    if (m_effect) return E_UNEXPECTED;
    if (IsProxy(effect)) return E_INVALIDARG;
    tq::ComPtr<ITqVstEffect> target;
    HRESULT hr = effect->QueryInterface(IID_ITqVstEffect, target.PutVoid());
    if (FAILED(hr)) return hr;

    HANDLE request = nullptr;
    HANDLE done = nullptr;
    hr = DuplicateHandleFromProcessId(HostHandle(requestEvent), hostProcessId, &request);
    if (FAILED(hr)) return hr;
    tq::UniqueHandle ownRequest(request);
    hr = DuplicateHandleFromProcessId(HostHandle(doneEvent), hostProcessId, &done);
    if (FAILED(hr)) return hr;
    tq::UniqueHandle ownDone(done);
    tq::UniqueHandle stop(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    if (!stop) return HRESULT_FROM_WIN32(GetLastError());
    auto* master = new (std::nothrow) CTqVstBlockMaster;
    if (!master) return E_OUTOFMEMORY;

    m_master = tq::ComPtr<CTqVstBlockMaster>::Attach(master);
    m_request = std::move(ownRequest);
    m_done = std::move(ownDone);
    m_stop = std::move(stop);
    m_effect = std::move(target);
    *serverProcessId = GetCurrentProcessId();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVstBlockChannel::Configure(const TqVstBlockToken* block)
{
    if (!block) return E_POINTER;
    if (!m_effect) return E_UNEXPECTED;
    _tqmemorytoken token;
    std::memcpy(&token, block, sizeof(token));
    // Only a mapping is shared both ways at once; a copied block would never see the turns.
    if (token.kind != TQMEMORYTOKEN_MAPPING || token.size < sizeof(block::Header))
        return E_INVALIDARG;

    StopThread();
    m_header = nullptr;
    m_block.reset();
    auto mapping = std::make_unique<CMappingOfTqMemoryToken>(token, FILE_MAP_READ | FILE_MAP_WRITE);
    auto* base = static_cast<BYTE*>(mapping->Pointer());
    if (!base) return E_FAIL;

    // The host laid the block out; nothing it wrote may lead outside the mapping.
    auto* header = reinterpret_cast<block::Header*>(base);
    const UINT64 size = token.size;
    const UINT64 area = header->areaBytes;
    if (header->magic != block::kMagic || header->headerBytes != sizeof(block::Header) ||
        header->inputOffset < sizeof(block::Header) ||
        header->inputOffset + area > header->outputOffset || header->outputOffset + area > size)
        return E_INVALIDARG;

    m_block = std::move(mapping);
    m_header = header;
    m_input = base + header->inputOffset;
    m_output = base + header->outputOffset;
    m_areaBytes = header->areaBytes;
    return StartThread();
}

HRESULT STDMETHODCALLTYPE CTqVstBlockChannel::SetMaster(IUnknown* master)
{
    if (!m_effect) return E_UNEXPECTED;
    const HRESULT taken = m_master->SetHostMaster(master);
    if (FAILED(taken) || !master)
    {
        m_effect->SetMaster(nullptr);
        return taken;
    }
    return m_effect->SetMaster(static_cast<ITqVstMaster*>(m_master.Get()));
}

HRESULT CTqVstBlockChannel::StartThread()
{
    ResetEvent(m_stop.Get());
    m_thread.Reset(CreateThread(nullptr, 0, ThreadMain, this, 0, nullptr));
    return m_thread ? S_OK : HRESULT_FROM_WIN32(GetLastError());
}

// A plug-in stuck in a block keeps this wait from ending; the host's watchdog then ends the
// whole server, which is the only safe way out of plug-in code that never returns.
void CTqVstBlockChannel::StopThread()
{
    if (!m_thread) return;
    SetEvent(m_stop.Get());
    WaitForSingleObject(m_thread.Get(), INFINITE);
    m_thread.Reset();
}

DWORD WINAPI CTqVstBlockChannel::ThreadMain(void* self)
{
    static_cast<CTqVstBlockChannel*>(self)->Serve();
    return 0;
}

void CTqVstBlockChannel::Serve()
{
    const HRESULT init = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_HIGHEST);
    const LONGLONG spinTicks = block::TicksFromMicroseconds(kServerSpinUs);
    const HANDLE stop = m_stop.Get();
    LONG served = m_header->doneSeq;
    for (;;)
    {
        const block::TurnWait waited =
            block::WaitTurn(m_header->requestSeq, served + 1, m_header->serverAsleep,
                            m_request.Get(), &stop, 1, spinTicks, INFINITE);
        if (waited != block::TurnWait::Reached) break;
        RunBlock();
        ++served;
        block::PassTurn(m_header->doneSeq, served, m_header->hostAsleep, m_done.Get());
    }
    if (SUCCEEDED(init)) CoUninitialize();
}

void CTqVstBlockChannel::RunBlock()
{
    block::Header& header = *m_header;
    const UINT32 frames = header.frames;
    const UINT32 inputChannels = header.inputChannels;
    const INT32 outputChannels = header.outputChannels;
    const UINT32 bytesPerSample = header.bytesPerSample;
    const UINT64 frameBytes = UINT64(frames) * bytesPerSample;
    if (outputChannels <= 0 || frameBytes * UINT64(outputChannels) > m_areaBytes ||
        frameBytes * inputChannels > m_areaBytes)
    {
        header.callbackCount = 0;
        header.result = E_INVALIDARG;
        return;
    }
    m_master->BeginBlock(&header);
    header.result = m_effect->Process(header.hasInput ? m_input : nullptr, inputChannels, m_output,
                                      outputChannels, frames, bytesPerSample);
    m_master->EndBlock();
}

} // namespace tqvst
