// Carries calls to the host's ITqVstMaster from whatever thread a plug-in makes them on.
#pragma once

#include "comptr.h"
#include "tqvst.h"
#include "uniquehandle.h"

#include <windows.h>

#include <atomic>
#include <type_traits>

namespace tqvst {

// Holds the host's master for an effect. The thread that hands the master over owns it and calls
// it directly, as does any thread when the master is an ordinary object of this process. A proxy
// belongs to its owner's apartment, so a call from any other thread goes to a relay thread of our
// own in the multithreaded apartment, which holds a proxy of its own and so needs neither the
// caller's apartment nor a free owner thread. The caller waits for the host's answer.
class MasterRelay
{
public:
    // What a call gets when no master is held, or while the master is being taken away.
    static constexpr HRESULT kNoMaster = CO_E_OBJNOTCONNECTED;

    MasterRelay() = default;
    ~MasterRelay() { Reset(nullptr); }
    MasterRelay(const MasterRelay&) = delete;
    MasterRelay& operator=(const MasterRelay&) = delete;

    // Takes master's ITqVstMaster, or with null only lets the old one go. Called on the thread
    // that owns the master; a call from another thread that is waiting for the host is answered
    // before the old master goes. S_FALSE for null, else the result of the master's
    // QueryInterface.
    HRESULT Reset(IUnknown* master);

    // Runs call(ITqVstMaster*) against the master on the right thread and returns its result, or
    // kNoMaster.
    template <class F>
    HRESULT Call(F&& call)
    {
        using Fn = std::remove_reference_t<F>;
        return Invoke([](ITqVstMaster* master,
                         void* context) -> HRESULT { return (*static_cast<Fn*>(context))(master); },
                      &call);
    }

private:
    using Thunk = HRESULT (*)(ITqVstMaster*, void*);

    HRESULT Invoke(Thunk thunk, void* context);
    HRESULT Forward(Thunk thunk, void* context);
    void StartThread(ITqVstMaster* master);
    void StopThread();
    static DWORD WINAPI ThreadMain(void* self);
    void Serve();

    // Written by Reset alone. The owner reads them without the lock, so that a plug-in asking
    // for the time on the host's processing thread takes none; other threads take it shared.
    SRWLOCK m_masterLock = SRWLOCK_INIT;
    tq::ComPtr<ITqVstMaster> m_master;
    std::atomic<DWORD> m_owner = 0;
    // The master is a proxy: only its owner's apartment may call it directly.
    bool m_tied = false;

    // One relayed call at a time, held across the round trip by the calling thread.
    SRWLOCK m_callerLock = SRWLOCK_INIT;
    // Guards what follows, briefly.
    SRWLOCK m_stateLock = SRWLOCK_INIT;
    bool m_closing = true;
    bool m_quit = false;
    tq::UniqueHandle m_thread;
    tq::UniqueHandle m_request; // auto-reset: a request or the quit order is ready
    tq::UniqueHandle m_answer;  // auto-reset: the relay thread has answered
    tq::UniqueHandle m_idle;    // manual-reset: no relayed call is in flight
    // The master for the relay thread, which unmarshals it once.
    tq::ComPtr<IStream> m_marshalled;
    Thunk m_thunk = nullptr;
    void* m_context = nullptr;
    HRESULT m_result = S_OK;
};

} // namespace tqvst
