// The host's end of the shared Process channel, and the forwarding of every other call.
#include "sharedeffect.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <new>

namespace tqvst {

namespace {

constexpr DWORD kDefaultProcessTimeoutMs = 2000;
std::atomic<DWORD> g_processTimeoutMs = kDefaultProcessTimeoutMs;

// The host waits this long on the shared memory for a block to come back before it sleeps: long
// enough for a light plug-in's whole block, short enough that a heavy one costs a wake-up only.
constexpr LONGLONG kHostSpinUs = 200;
// Larger blocks take the ordinary call, which has no limit of its own.
constexpr UINT64 kMaxAreaBytes = 64u << 20;
// Calls other than Process may take longer: opening an editor, loading a bank.
constexpr DWORD kCallTimeoutFactor = 5;
// What a server that ended during a block, or before it, gives over the ordinary call.
constexpr HRESULT kServerEndedInCall = HRESULT_FROM_WIN32(RPC_S_CALL_FAILED);

UINT64 HandleValue(HANDLE handle)
{
    return static_cast<UINT64>(reinterpret_cast<ULONG_PTR>(handle));
}

} // namespace

void SetSharedProcessTimeout(DWORD milliseconds)
{
    g_processTimeoutMs = milliseconds ? milliseconds : kDefaultProcessTimeoutMs;
}

DWORD SharedProcessTimeout()
{
    return g_processTimeoutMs;
}

DWORD CTqVstSharedEffect::CallTimeout()
{
    return g_processTimeoutMs.load() * kCallTimeoutFactor;
}

HRESULT CTqVstSharedEffect::Watched(const CallWatch& watch, HRESULT hr)
{
    if (!watch.Fired()) return hr;
    m_broken = TQVST_E_TIMEOUT;
    return m_broken;
}

HRESULT CTqVstSharedEffect::Create(IClassFactory* serverFactory, ITqVstEffect* proxy,
                                   ITqVstEffect** out)
{
    *out = nullptr;
    tq::ComPtr<ITqVstBlockChannel> channel;
    HRESULT hr = serverFactory->CreateInstance(nullptr, IID_ITqVstBlockChannel, channel.PutVoid());
    if (FAILED(hr)) return hr;
    tq::UniqueHandle request(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    tq::UniqueHandle done(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    if (!request || !done) return HRESULT_FROM_WIN32(GetLastError());
    UINT32 serverProcessId = 0;
    hr = channel->Open(proxy, GetCurrentProcessId(), HandleValue(request.Get()),
                       HandleValue(done.Get()), &serverProcessId);
    if (FAILED(hr)) return hr;
    // Ending the server is the watchdog's last resort, so the handle must allow it.
    tq::UniqueHandle server(OpenProcess(SYNCHRONIZE | PROCESS_TERMINATE, FALSE, serverProcessId));
    if (!server) return HRESULT_FROM_WIN32(GetLastError());

    auto* made = new (std::nothrow) CTqVstSharedEffect;
    if (!made) return E_OUTOFMEMORY;
    made->m_proxy = tq::ComPtr<ITqVstEffect>(proxy);
    made->m_channel = std::move(channel);
    made->m_request = std::move(request);
    made->m_done = std::move(done);
    made->m_server = std::move(server);
    *out = made;
    return S_OK;
}

CTqVstSharedEffect::~CTqVstSharedEffect()
{
    // The server lets go of the block and stops its audio thread before the effect goes.
    {
        CallWatch watch(m_server.Get(), CallTimeout());
        m_channel.Reset();
        m_proxy.Reset();
    }
    m_master.Reset(nullptr);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::QueryInterface(REFIID riid, void** object)
{
    if (!object) return E_POINTER;
    *object = nullptr;
    if (riid != IID_IUnknown && riid != IID_ITqVstEffect) return E_NOINTERFACE;
    *object = static_cast<ITqVstEffect*>(this);
    AddRef();
    return S_OK;
}

ULONG STDMETHODCALLTYPE CTqVstSharedEffect::AddRef()
{
    return static_cast<ULONG>(InterlockedIncrement(&m_refCount));
}

ULONG STDMETHODCALLTYPE CTqVstSharedEffect::Release()
{
    const LONG count = InterlockedDecrement(&m_refCount);
    if (count == 0) delete this;
    return static_cast<ULONG>(count);
}

HRESULT CTqVstSharedEffect::Configure(UINT64 areaBytes)
{
    const UINT32 area = block::AlignArea(static_cast<UINT32>(areaBytes));
    const UINT32 inputOffset = block::AlignArea(sizeof(block::Header));
    const UINT32 outputOffset = inputOffset + area;
    const UINT32 size = outputOffset + area;
    tq::UniqueHandle mapping(
        CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, size, nullptr));
    if (!mapping) return HRESULT_FROM_WIN32(GetLastError());
    tq::UniqueView view(MapViewOfFile(mapping.Get(), FILE_MAP_ALL_ACCESS, 0, 0, size));
    if (!view) return HRESULT_FROM_WIN32(GetLastError());

    auto* header = static_cast<block::Header*>(view.Get());
    header->magic = block::kMagic;
    header->headerBytes = sizeof(block::Header);
    header->inputOffset = inputOffset;
    header->outputOffset = outputOffset;
    header->areaBytes = area;
    _tqmemorytoken token = {};
    token.handle = HandleValue(mapping.Get());
    token.address = static_cast<UINT64>(reinterpret_cast<ULONG_PTR>(view.Get()));
    token.size = size;
    token.capacity = size;
    token.kind = TQMEMORYTOKEN_MAPPING;
    token.ownerProcessId = GetCurrentProcessId();
    TqVstBlockToken sent;
    static_assert(sizeof(sent) == sizeof(token));
    std::memcpy(&sent, &token, sizeof(sent));
    // The server stops its audio thread and lets the old block go before it answers.
    CallWatch watch(m_server.Get(), CallTimeout());
    const HRESULT hr = Watched(watch, m_channel->Configure(&sent));
    if (FAILED(hr))
    {
        m_header = nullptr;
        m_view.Reset();
        m_mapping.Reset();
        m_areaBytes = 0;
        return hr;
    }
    m_view = std::move(view);
    m_mapping = std::move(mapping);
    m_header = header;
    m_input = static_cast<BYTE*>(m_view.Get()) + inputOffset;
    m_output = static_cast<BYTE*>(m_view.Get()) + outputOffset;
    m_areaBytes = area;
    m_sequence = 0;
    return S_OK;
}

void CTqVstSharedEffect::SupplyTransport(block::Header& header)
{
    header.time = {};
    header.tempo = 0;
    if (!m_hasMaster)
    {
        header.timeResult = header.tempoResult = MasterRelay::kNoMaster;
        return;
    }
    TqVstMasterTime time = {};
    header.timeResult = m_master.Call([&](ITqVstMaster* master) { return master->GetTime(&time); });
    header.time = time;
    const UINT32 position =
        header.timeResult == S_OK && time.samplePos >= 0 ? static_cast<UINT32>(time.samplePos) : 0;
    INT32 tempo = 0;
    header.tempoResult =
        m_master.Call([&](ITqVstMaster* master) { return master->GetTempoAt(position, &tempo); });
    header.tempo = tempo;
}

void CTqVstSharedEffect::ReplayCallbacks(const block::Header& header)
{
    const UINT32 count = std::min(header.callbackCount, block::kMaxCallbacks);
    for (UINT32 i = 0; i < count; ++i)
    {
        const block::Callback call = header.callbacks[i];
        m_master.Call([&](ITqVstMaster* master) {
            switch (call.kind)
            {
            case block::kAutomate:
                return master->Automate(call.index, call.value);
            case block::kBeginEdit:
                return master->BeginEdit(call.index);
            case block::kEndEdit:
                return master->EndEdit(call.index);
            case block::kUpdateDisplay:
                return master->UpdateDisplay();
            case block::kIdle:
                return master->Idle();
            case block::kSizeWindow:
                return master->SizeWindow(call.index, call.extra);
            default:
                return E_INVALIDARG;
            }
        });
    }
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::Process(BYTE* input, UINT32 inputChannels,
                                                      BYTE* output, INT32 outputChannels,
                                                      UINT32 frames, UINT32 bytesPerSample)
{
    if (FAILED(m_broken)) return m_broken;
    // Anything but a plain block takes the ordinary call, whose answers to odd arguments are the
    // reference.
    const UINT64 frameBytes = UINT64(frames) * bytesPerSample;
    const UINT64 inputBytes = input ? frameBytes * inputChannels : 0;
    const UINT64 outputBytes = outputChannels > 0 ? frameBytes * UINT64(outputChannels) : 0;
    const UINT64 areaBytes = std::max(inputBytes, outputBytes);
    if (m_serverGone || !output || outputBytes == 0 || areaBytes > kMaxAreaBytes)
        return Forward(&ITqVstEffect::Process, input, inputChannels, output, outputChannels, frames,
                       bytesPerSample);
    if (areaBytes > m_areaBytes)
    {
        const HRESULT hr = Configure(areaBytes);
        if (FAILED(m_broken)) return m_broken;
        if (FAILED(hr))
            return Forward(&ITqVstEffect::Process, input, inputChannels, output, outputChannels,
                           frames, bytesPerSample);
    }

    block::Header& header = *m_header;
    header.frames = frames;
    header.inputChannels = inputChannels;
    header.outputChannels = outputChannels;
    header.bytesPerSample = bytesPerSample;
    header.hasInput = input ? 1 : 0;
    if (inputBytes) std::memcpy(m_input, input, static_cast<size_t>(inputBytes));
    SupplyTransport(header);

    const LONG sequence = ++m_sequence;
    block::PassTurn(header.requestSeq, sequence, header.serverAsleep, m_request.Get());
    const HANDLE server = m_server.Get();
    static const LONGLONG spinTicks = block::TicksFromMicroseconds(kHostSpinUs);
    const block::TurnWait waited =
        block::WaitTurn(header.doneSeq, sequence, header.hostAsleep, m_done.Get(), &server, 1,
                        spinTicks, g_processTimeoutMs.load());
    if (waited == block::TurnWait::Signalled)
    {
        m_serverGone = true;
        return kServerEndedInCall;
    }
    if (waited == block::TurnWait::TimedOut)
    {
        // A plug-in stuck in its block holds the server's audio thread and, with it, every later
        // call on this effect: the server cannot be saved, and ending it frees the host.
        TerminateProcess(server, static_cast<UINT>(TQVST_E_TIMEOUT));
        WaitForSingleObject(server, 1000);
        m_broken = TQVST_E_TIMEOUT;
        return m_broken;
    }
    std::memcpy(output, m_output, static_cast<size_t>(outputBytes));
    const HRESULT result = header.result;
    if (header.callbackCount) ReplayCallbacks(header);
    return result;
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::SetMaster(IUnknown* master)
{
    if (FAILED(m_broken)) return m_broken;
    CallWatch watch(m_server.Get(), CallTimeout());
    const HRESULT hr = Watched(watch, m_channel->SetMaster(master));
    if (FAILED(hr)) return hr;
    m_hasMaster = master && SUCCEEDED(m_master.Reset(master));
    if (!master) m_master.Reset(nullptr);
    return hr;
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::GetEffectName(WCHAR* name, UINT32 capacity)
{
    return Forward(&ITqVstEffect::GetEffectName, name, capacity);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::GetVendorName(WCHAR* name, INT32 capacity)
{
    return Forward(&ITqVstEffect::GetVendorName, name, capacity);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::GetProductName(WCHAR* name, UINT32 capacity)
{
    return Forward(&ITqVstEffect::GetProductName, name, capacity);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::GetEffectInfo(TqVstEffectInfo* info)
{
    return Forward(&ITqVstEffect::GetEffectInfo, info);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::GetNextShellPlugin(UINT32* id, WCHAR* name,
                                                                 INT32 capacity)
{
    return Forward(&ITqVstEffect::GetNextShellPlugin, id, name, capacity);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::Idle()
{
    return Forward(&ITqVstEffect::Idle);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::Suspend(INT32 full)
{
    return Forward(&ITqVstEffect::Suspend, full);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::Resume(INT32 force)
{
    return Forward(&ITqVstEffect::Resume, force);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::SetSampleRate(double rate)
{
    return Forward(&ITqVstEffect::SetSampleRate, rate);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::SetSampleType(UINT32 sampleType)
{
    return Forward(&ITqVstEffect::SetSampleType, sampleType);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::SetChannelCount(INT32 channels)
{
    return Forward(&ITqVstEffect::SetChannelCount, channels);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::SetBlockSize(INT32 frames)
{
    return Forward(&ITqVstEffect::SetBlockSize, frames);
}

HRESULT STDMETHODCALLTYPE
CTqVstSharedEffect::GetParameterProperties(UINT32 index, TqVstParameterProperties* props)
{
    return Forward(&ITqVstEffect::GetParameterProperties, index, props);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::CanParameterBeAutomated(UINT32 index, UINT32* yes)
{
    return Forward(&ITqVstEffect::CanParameterBeAutomated, index, yes);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::GetParameterName(UINT32 index, WCHAR* text,
                                                               UINT32 capacity)
{
    return Forward(&ITqVstEffect::GetParameterName, index, text, capacity);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::GetParameterDisplay(UINT32 index, WCHAR* text,
                                                                  UINT32 capacity)
{
    return Forward(&ITqVstEffect::GetParameterDisplay, index, text, capacity);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::GetParameterLabel(UINT32 index, WCHAR* text,
                                                                UINT32 capacity)
{
    return Forward(&ITqVstEffect::GetParameterLabel, index, text, capacity);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::GetParameter(UINT32 index, float* value)
{
    return Forward(&ITqVstEffect::GetParameter, index, value);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::SetParameter(UINT32 index, float value)
{
    return Forward(&ITqVstEffect::SetParameter, index, value);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::GetInitialDelay(UINT32* frames)
{
    return Forward(&ITqVstEffect::GetInitialDelay, frames);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::GetTailSize(UINT32* frames)
{
    return Forward(&ITqVstEffect::GetTailSize, frames);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::ProcessReplace()
{
    return Forward(&ITqVstEffect::ProcessReplace);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::GetProgram(UINT32* program)
{
    return Forward(&ITqVstEffect::GetProgram, program);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::SetProgram(INT32 program)
{
    return Forward(&ITqVstEffect::SetProgram, program);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::GetProgramName(INT32 program, WCHAR* name,
                                                             UINT32 capacity)
{
    return Forward(&ITqVstEffect::GetProgramName, program, name, capacity);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::SetProgramName(const WCHAR* name)
{
    return Forward(&ITqVstEffect::SetProgramName, name);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::SavePreset(IStream* stream, UINT32* bytes)
{
    return Forward(&ITqVstEffect::SavePreset, stream, bytes);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::LoadPreset(IStream* stream)
{
    return Forward(&ITqVstEffect::LoadPreset, stream);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::SaveBank(IStream* stream, UINT32* bytes)
{
    return Forward(&ITqVstEffect::SaveBank, stream, bytes);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::LoadBank(IStream* stream, UINT32 program)
{
    return Forward(&ITqVstEffect::LoadBank, stream, program);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::OpenEditor(HWND parent, UINT32* rect)
{
    return Forward(&ITqVstEffect::OpenEditor, parent, rect);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::EditorIdle()
{
    return Forward(&ITqVstEffect::EditorIdle);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::CloseEditor()
{
    return Forward(&ITqVstEffect::CloseEditor);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::ResizeEditor(INT32 width, INT32 height)
{
    return Forward(&ITqVstEffect::ResizeEditor, width, height);
}

HRESULT STDMETHODCALLTYPE CTqVstSharedEffect::CanResizeEditor(UINT32* yes)
{
    return Forward(&ITqVstEffect::CanResizeEditor, yes);
}

} // namespace tqvst
