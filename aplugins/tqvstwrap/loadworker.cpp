// The load worker's thread, queues and records, its message-pumping wait, and the forced end of
// a thread that is stuck inside a plug-in.
#include "loadworker.h"

#include "errorreport.h"
#include "pluginexceptionfilter.h"

#include <objbase.h>
#include <process.h>

#include <new>
#include <utility>

extern "C" {
// loadworker_<arch>.S. Entered, never called, in place of a hung thread's next instruction, with
// that instruction's address pushed as if it had called here: raises the abort exception.
void tq_worker_abort();
}

namespace tqvst {
namespace {

// Ends the worker's entry routine and nothing else: every other exception is the business of the
// guards around plug-in code.
GuardVerdict AbortFilter(EXCEPTION_POINTERS* pointers, void*)
{
    return pointers->ExceptionRecord->ExceptionCode == kAbortException ? GuardVerdict::Stop
                                                                       : GuardVerdict::PassOn;
}

// Lets the messages the thread has waiting through: all of them, or only those sent from other
// threads. A WM_QUIT taken on the way is noted for the caller to post again.
void PumpMessages(bool pumpAll, bool& sawQuit, int& quitCode)
{
    MSG message;
    if (!pumpAll)
    {
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE | PM_QS_SENDMESSAGE))
        {
        }
        return;
    }
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
    {
        if (message.message == WM_QUIT)
        {
            sawQuit = true;
            quitCode = static_cast<int>(message.wParam);
            return;
        }
        const HWND active = GetActiveWindow();
        if (active && IsDialogMessageW(active, &message)) continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

class CriticalSectionLock
{
public:
    explicit CriticalSectionLock(CRITICAL_SECTION& lock) : m_lock(lock)
    {
        EnterCriticalSection(&m_lock);
    }
    ~CriticalSectionLock() { LeaveCriticalSection(&m_lock); }
    CriticalSectionLock(const CriticalSectionLock&) = delete;
    CriticalSectionLock& operator=(const CriticalSectionLock&) = delete;

private:
    CRITICAL_SECTION& m_lock;
};

// How long a thread asked to quit may take before it is hijacked, and how long the hijack may take
// before the thread is abandoned: together well inside the second that a caller whose load is
// given up may wait past its timeout.
constexpr DWORD kQuitGraceMs = 100;
constexpr DWORD kAbortGraceMs = 300;

void ReleaseState(TqWorkerState* state)
{
    if (InterlockedDecrement(&state->references) == 0) delete state;
}

// Gives the worker its own copy of the request; false when the path cannot be copied.
bool CopyIn(TqWorkRecord& record, const EffectLoadRequest& request)
{
    record.path.reset();
    if (request.path)
    {
        const size_t count = lstrlenW(request.path) + size_t{1};
        record.path.reset(new (std::nothrow) WCHAR[count]);
        if (!record.path) return false;
        CopyMemory(record.path.get(), request.path, count * sizeof(WCHAR));
    }
    ZeroMemory(record.name, sizeof(record.name));
    ZeroMemory(record.vendor, sizeof(record.vendor));
    ZeroMemory(record.product, sizeof(record.product));
    record.info = {};
    // A buffer the caller left out stays left out, so the load answers as it would in place.
    record.load = {S_OK,
                   request.uniqueId,
                   record.path.get(),
                   request.name ? record.name : nullptr,
                   request.vendor ? record.vendor : nullptr,
                   request.product ? record.product : nullptr,
                   request.info ? &record.info : nullptr};
    record.request = &record.load;
    return true;
}

void CopyOut(const TqWorkRecord& record, EffectLoadRequest& request)
{
    request.result = record.load.result;
    if (request.name) CopyMemory(request.name, record.name, sizeof(record.name));
    if (request.vendor) CopyMemory(request.vendor, record.vendor, sizeof(record.vendor));
    if (request.product) CopyMemory(request.product, record.product, sizeof(record.product));
    if (request.info) *request.info = record.info;
}

} // namespace

TqWorkerState::~TqWorkerState()
{
    for (tTQQHEAD* queue : {&requests, &freeRecords})
    {
        if (!queue->event) continue;
        while (TqQueueRemove(queue, 0))
        {
        }
        TqQueueDelete(queue);
    }
}

TqWorkerThread::TqWorkerThread()
{
    InitializeCriticalSection(&m_lock);
}

TqWorkerThread::~TqWorkerThread()
{
    Shutdown(false);
    DeleteCriticalSection(&m_lock);
}

HRESULT TqWorkerThread::Start()
{
    if (m_thread && !ThreadEnded()) return S_FALSE;
    // A thread that ended by itself (a plug-in can end the thread that loads it) leaves a worker
    // that cannot serve: it is built anew.
    Shutdown(false);
    m_state = new (std::nothrow) TqWorkerState;
    if (!m_state) return TQVST_E_THREAD;
    TqWorkerState& state = *m_state;
    state.stopEvent.Reset(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    if (!TqQueueInitialize(&state.freeRecords) || !TqQueueInitialize(&state.requests) ||
        !state.stopEvent)
    {
        Shutdown(false);
        return TQVST_E_THREAD;
    }
    for (TqWorkRecord& record : state.records)
    {
        record.done.Reset(CreateEventW(nullptr, FALSE, FALSE, nullptr));
        if (!record.done)
        {
            Shutdown(false);
            return TQVST_E_THREAD;
        }
        TqQueueInsert(&state.freeRecords, &record.link);
    }
    state.multithreaded = false;
    state.entry = WorkerLoop;
    state.entryArgument = &state;
    // The thread's own reference, given back as the last thing it does.
    state.references = 2;
    unsigned threadId = 0;
    m_thread.Reset(
        reinterpret_cast<HANDLE>(_beginthreadex(nullptr, 0, ThreadMain, &state, 0, &threadId)));
    if (!m_thread)
    {
        state.references = 1;
        Shutdown(false);
        return TQVST_E_THREAD;
    }
    m_threadId = threadId;
    return S_OK;
}

unsigned __stdcall TqWorkerThread::ThreadMain(void* argument)
{
    auto* state = static_cast<TqWorkerState*>(argument);
    HRESULT result = CoInitializeEx(nullptr, state->multithreaded ? COINIT_MULTITHREADED
                                                                  : COINIT_APARTMENTTHREADED);
    if (SUCCEEDED(result))
    {
        if (!Guarded([&] { result = state->entry(state->entryArgument); }, AbortFilter))
            result = TQVST_E_TIMEOUT;
        CoUninitialize();
    }
    ReleaseState(state);
    return static_cast<unsigned>(result);
}

HRESULT TqWorkerThread::WorkerLoop(void* argument)
{
    auto* state = static_cast<TqWorkerState*>(argument);
    // The stop event is not reset here: it is made unsignalled by Start, and a stop set before
    // this thread first ran must not be lost.
    const HANDLE stop = state->stopEvent.Get();
    while (tTQQELM* element = TqQueueRemoveEx(&state->requests, &stop, 1, TQQUEUE_WAIT_KEEPWAITING,
                                              INFINITE, nullptr))
    {
        auto* record = reinterpret_cast<TqWorkRecord*>(element);
        ErrorReport_StartTrapBypass();
        if (record->command == kReadEffectFacts) ReadEffectFacts(*record->request);
        ErrorReport_EndTrapBypass();
        SetEvent(record->done.Get());
        TqQueueInsert(&state->freeRecords, &record->link);
    }
    return S_OK;
}

HANDLE TqWorkerThread::Submit(INT32 command, EffectLoadRequest* request, DWORD timeoutMs)
{
    if (!request) return nullptr;
    request->result = TQVST_E_TIMEOUT;
    // One request at a time: the wait lets other calls in, and one that timed out would take the
    // worker away from the request it interrupted.
    if (!m_state || m_submitting) return nullptr;
    auto* record = reinterpret_cast<TqWorkRecord*>(TqQueueRemove(&m_state->freeRecords, timeoutMs));
    if (!record) return nullptr;
    if (!CopyIn(*record, *request))
    {
        TqQueueInsert(&m_state->freeRecords, &record->link);
        request->result = E_OUTOFMEMORY;
        return nullptr;
    }
    record->command = command;
    const HANDLE done = record->done.Get();
    ResetEvent(done);
    TqQueueInsertHead(&m_state->requests, &record->link);

    m_submitting = true;
    const DWORD waited = MessageWait(1, &done, false, timeoutMs, true);
    m_submitting = false;
    if (waited == WAIT_OBJECT_0)
    {
        CopyOut(*record, *request);
        return done;
    }
    // A thread that ended under the request (a plug-in can call ExitThread or raise the abort code
    // itself) leaves the request as far as it got: hosts read the result as it stands, which is
    // S_OK with whatever facts were written. The worker is rebuilt for the next request.
    if (waited != WAIT_TIMEOUT && ThreadEnded()) CopyOut(*record, *request);
    Shutdown(true);
    return nullptr;
}
DWORD TqWorkerThread::MessageWait(DWORD count, const HANDLE* handles, bool waitAll, DWORD timeoutMs,
                                  bool pumpAll)
{
    // The message queue takes one of the system's wait slots.
    HANDLE all[MAXIMUM_WAIT_OBJECTS - 1];
    const DWORD slots = count + (m_thread ? 1 : 0);
    if (slots > MAXIMUM_WAIT_OBJECTS - 1 || (count && !handles)) return WAIT_FAILED;
    for (DWORD i = 0; i < count; ++i)
        all[i] = handles[i];
    if (m_thread) all[count++] = m_thread.Get();
    if (count == 0) return WAIT_OBJECT_0;

    const DWORD wakeMask = pumpAll ? QS_ALLINPUT : QS_SENDMESSAGE;
    const DWORD flags = MWMO_INPUTAVAILABLE | (waitAll ? MWMO_WAITALL : 0);
    const DWORD start = GetTickCount();
    DWORD remaining = timeoutMs;
    bool sawQuit = false;
    int quitCode = 0;
    DWORD result;
    for (;;)
    {
        result = MsgWaitForMultipleObjectsEx(count, all, remaining, wakeMask, flags);
        if (result == WAIT_IO_COMPLETION)
        {
            if (remaining == 0)
            {
                result = WAIT_TIMEOUT;
                break;
            }
        }
        else if (result == WAIT_OBJECT_0 + count)
        {
            // A quit taken from the queue is kept for the caller's own loop; pumping stops until
            // the wait ends, or the same message would wake every round.
            if (!sawQuit) PumpMessages(pumpAll, sawQuit, quitCode);
            if (sawQuit && remaining != 0) Sleep(1);
        }
        else
            break;
        if (timeoutMs != INFINITE)
        {
            const DWORD elapsed = GetTickCount() - start;
            remaining = elapsed >= timeoutMs ? 0 : timeoutMs - elapsed;
        }
    }
    if (sawQuit) PostQuitMessage(quitCode);
    return result;
}

HRESULT TqWorkerThread::StopThread(DWORD graceMs)
{
    if (!m_thread) return S_FALSE;
    if (!ThreadEnded())
    {
        PostThreadMessageW(m_threadId, WM_QUIT, 0, 0);
        if (MessageWait(0, nullptr, false, kQuitGraceMs, false) != WAIT_OBJECT_0)
        {
            ForceAbort();
            MessageWait(0, nullptr, false, graceMs, false);
        }
    }
    if (m_state && ThreadEnded())
    {
        // However it ended, the thread touches nothing any more: its state is the worker's alone.
        m_state->references = 1;
    }
    else if (m_state)
    {
        // Abandoned, not terminated: ending a thread that may hold the heap's or the loader's lock
        // can hang the whole process, while a thread left alone costs its stack and may still end.
        SetEvent(m_state->stopEvent.Get());
        ReleaseState(std::exchange(m_state, nullptr));
    }
    m_thread.Reset();
    m_threadId = 0;
    return S_OK;
}

bool TqWorkerThread::ThreadEnded() const
{
    return WaitForSingleObject(m_thread.Get(), 0) == WAIT_OBJECT_0;
}

// Points the thread at tq_worker_abort as if its current instruction had called it, so that the
// abort exception unwinds from where it hangs through every guard to the thread's entry. A thread
// blocked in a system call takes the new context when that call returns.
void TqWorkerThread::ForceAbort()
{
    CriticalSectionLock lock(m_lock);
    if (SuspendThread(m_thread.Get()) == static_cast<DWORD>(-1)) return;
    if (MessageWait(0, nullptr, false, 0, false) != WAIT_OBJECT_0)
    {
        CONTEXT context = {};
        context.ContextFlags = CONTEXT_CONTROL;
        if (GetThreadContext(m_thread.Get(), &context))
        {
#ifdef _WIN64
            context.Rsp -= sizeof(DWORD64);
            *reinterpret_cast<DWORD64*>(context.Rsp) = context.Rip;
            context.Rip = reinterpret_cast<DWORD64>(&tq_worker_abort);
#else
            context.Esp -= sizeof(DWORD);
            *reinterpret_cast<DWORD*>(context.Esp) = context.Eip;
            context.Eip = reinterpret_cast<DWORD>(&tq_worker_abort);
#endif
            SetThreadContext(m_thread.Get(), &context);
        }
    }
    ResumeThread(m_thread.Get());
}

void TqWorkerThread::Shutdown(bool wait)
{
    if (m_state) SetEvent(m_state->stopEvent.Get());
    StopThread(wait ? kAbortGraceMs : 0);
    if (m_state) ReleaseState(std::exchange(m_state, nullptr));
}

namespace {

// The one worker of the program; its destructor ends a thread still running at process end.
TqWorkerThread g_loadWorker;

} // namespace

HRESULT RunOnLoadWorker(EffectLoadRequest& request, DWORD timeoutMs)
{
    if (FAILED(g_loadWorker.Start())) return request.result = TQVST_E_TIMEOUT;
    g_loadWorker.Submit(TqWorkerThread::kReadEffectFacts, &request, timeoutMs);
    return request.result;
}

} // namespace tqvst
