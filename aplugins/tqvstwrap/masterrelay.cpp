// The host's master for an effect, and the relay thread that calls it for threads that may not.
#include "masterrelay.h"

#include <objidl.h>

namespace tqvst {

namespace {

constexpr DWORD kRelayStackBytes = 256 * 1024;

class ExclusiveLock
{
public:
    explicit ExclusiveLock(SRWLOCK& lock) : m_lock(lock) { AcquireSRWLockExclusive(&m_lock); }
    ~ExclusiveLock() { ReleaseSRWLockExclusive(&m_lock); }
    ExclusiveLock(const ExclusiveLock&) = delete;
    ExclusiveLock& operator=(const ExclusiveLock&) = delete;

private:
    SRWLOCK& m_lock;
};

class SharedLock
{
public:
    explicit SharedLock(SRWLOCK& lock) : m_lock(lock) { AcquireSRWLockShared(&m_lock); }
    ~SharedLock() { ReleaseSRWLockShared(&m_lock); }
    SharedLock(const SharedLock&) = delete;
    SharedLock& operator=(const SharedLock&) = delete;

private:
    SRWLOCK& m_lock;
};

// Only a proxy answers for its call security; an object of this process does not.
bool IsProxy(ITqVstMaster* master)
{
    tq::ComPtr<IClientSecurity> security;
    return SUCCEEDED(master->QueryInterface(IID_IClientSecurity, security.PutVoid()));
}

// The owner is usually a single-threaded apartment: it keeps serving incoming calls while it
// waits, so a host that calls the effect from inside a relayed callback is not shut out.
void WaitServing(HANDLE handle)
{
    DWORD index = 0;
    if (FAILED(CoWaitForMultipleHandles(0, INFINITE, 1, &handle, &index)))
        WaitForSingleObject(handle, INFINITE);
}

} // namespace

HRESULT MasterRelay::Reset(IUnknown* master)
{
    StopThread();
    tq::ComPtr<ITqVstMaster> held;
    HRESULT hr = S_FALSE;
    if (master) hr = master->QueryInterface(IID_ITqVstMaster, held.PutVoid());
    const bool tied = held && IsProxy(held.Get());
    // Started at once: the proxy can be marshalled for the relay only on the owner's thread.
    if (tied) StartThread(held.Get());
    {
        ExclusiveLock lock(m_masterLock);
        std::swap(m_master, held);
        m_owner = GetCurrentThreadId();
        m_tied = tied;
    }
    // The old master is released here, outside the lock.
    return hr;
}

HRESULT MasterRelay::Invoke(Thunk thunk, void* context)
{
    if (GetCurrentThreadId() == m_owner.load())
        return m_master ? thunk(m_master.Get(), context) : kNoMaster;
    tq::ComPtr<ITqVstMaster> master;
    {
        SharedLock lock(m_masterLock);
        if (!m_master) return kNoMaster;
        if (!m_tied) master = m_master;
    }
    if (!master) return Forward(thunk, context);
    return thunk(master.Get(), context);
}

HRESULT MasterRelay::Forward(Thunk thunk, void* context)
{
    ExclusiveLock caller(m_callerLock);
    {
        ExclusiveLock state(m_stateLock);
        if (m_closing) return kNoMaster;
        m_thunk = thunk;
        m_context = context;
        ResetEvent(m_idle.Get());
    }
    SetEvent(m_request.Get());
    WaitForSingleObject(m_answer.Get(), INFINITE);
    const HRESULT result = m_result;
    SetEvent(m_idle.Get());
    return result;
}

void MasterRelay::StartThread(ITqVstMaster* master)
{
    if (!m_request) m_request.Reset(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    if (!m_answer) m_answer.Reset(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    if (!m_idle) m_idle.Reset(CreateEventW(nullptr, TRUE, TRUE, nullptr));
    if (!m_request || !m_answer || !m_idle) return;
    if (FAILED(CoMarshalInterThreadInterfaceInStream(IID_ITqVstMaster, master, m_marshalled.Put())))
        return;
    m_quit = false;
    m_thread.Reset(CreateThread(nullptr, kRelayStackBytes, ThreadMain, this,
                                STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr));
    if (!m_thread)
    {
        CoReleaseMarshalData(m_marshalled.Get());
        m_marshalled.Reset();
        return;
    }
    ExclusiveLock state(m_stateLock);
    m_closing = false;
}

void MasterRelay::StopThread()
{
    {
        ExclusiveLock state(m_stateLock);
        m_closing = true;
    }
    if (!m_thread) return;
    // A relayed call in flight is answered by the host first; no new one starts.
    WaitServing(m_idle.Get());
    {
        ExclusiveLock state(m_stateLock);
        m_quit = true;
    }
    SetEvent(m_request.Get());
    WaitServing(m_thread.Get());
    m_thread.Reset();
}

DWORD WINAPI MasterRelay::ThreadMain(void* self)
{
    static_cast<MasterRelay*>(self)->Serve();
    return 0;
}

void MasterRelay::Serve()
{
    const HRESULT init = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    tq::ComPtr<ITqVstMaster> master;
    HRESULT reached = init;
    // The call releases the stream even when unmarshalling fails.
    if (SUCCEEDED(init))
        reached = CoGetInterfaceAndReleaseStream(m_marshalled.Detach(), IID_ITqVstMaster,
                                                 master.PutVoid());
    else
        m_marshalled.Reset();
    for (;;)
    {
        WaitForSingleObject(m_request.Get(), INFINITE);
        {
            ExclusiveLock state(m_stateLock);
            if (m_quit) break;
        }
        m_result = master ? m_thunk(master.Get(), m_context) : reached;
        SetEvent(m_answer.Get());
    }
    master.Reset();
    if (SUCCEEDED(init)) CoUninitialize();
}

} // namespace tqvst
