// The load worker's thread, queues and records, its message-pumping wait, and the forced end of
// a thread that is stuck inside a plug-in.
#include "loadworker.h"

#include "errorreport.h"
#include "pluginexceptionfilter.h"

#include <objbase.h>
#include <process.h>

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

// How long a thread asked to quit may take before it is hijacked. Half a second, so that a caller
// whose load is abandoned has control back within a second of its timeout.
constexpr DWORD kQuitGraceMs = 500;

} // namespace

TqWorkerThread::TqWorkerThread()
{
    InitializeCriticalSection(&m_lock);
}

TqWorkerThread::~TqWorkerThread()
{
    Shutdown(false);
    StopThread(0);
    DeleteCriticalSection(&m_lock);
}

HRESULT TqWorkerThread::Start()
{
    if (m_thread) return S_FALSE;
    m_stopEvent.Reset(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    if (!TqQueueInitialize(&m_freeRecords) || !TqQueueInitialize(&m_requests) || !m_stopEvent)
    {
        Shutdown(false);
        return TQVST_E_THREAD;
    }
    for (TqWorkRecord& record : m_records)
    {
        record.done.Reset(CreateEventW(nullptr, FALSE, FALSE, nullptr));
        if (!record.done)
        {
            Shutdown(false);
            return TQVST_E_THREAD;
        }
        TqQueueInsert(&m_freeRecords, &record.link);
    }
    m_multithreaded = false;
    m_entry = WorkerLoop;
    m_entryArgument = this;
    unsigned threadId = 0;
    m_thread.Reset(
        reinterpret_cast<HANDLE>(_beginthreadex(nullptr, 0, ThreadMain, this, 0, &threadId)));
    if (!m_thread)
    {
        Shutdown(false);
        return TQVST_E_THREAD;
    }
    m_threadId = threadId;
    return S_OK;
}

unsigned __stdcall TqWorkerThread::ThreadMain(void* argument)
{
    auto* self = static_cast<TqWorkerThread*>(argument);
    const HRESULT init = CoInitializeEx(nullptr, self->m_multithreaded ? COINIT_MULTITHREADED
                                                                       : COINIT_APARTMENTTHREADED);
    if (FAILED(init)) return static_cast<unsigned>(init);
    HRESULT result = S_OK;
    if (!Guarded([&] { result = self->m_entry(self->m_entryArgument); }, AbortFilter))
        result = TQVST_E_TIMEOUT;
    CoUninitialize();
    return static_cast<unsigned>(result);
}

HRESULT TqWorkerThread::WorkerLoop(void* argument)
{
    auto* self = static_cast<TqWorkerThread*>(argument);
    // The stop event is not reset here: it is made unsignalled by Start, and a stop set before
    // this thread first ran must not be lost.
    const HANDLE stop = self->m_stopEvent.Get();
    while (tTQQELM* element = TqQueueRemoveEx(&self->m_requests, &stop, 1, TQQUEUE_WAIT_KEEPWAITING,
                                              INFINITE, nullptr))
    {
        auto* record = reinterpret_cast<TqWorkRecord*>(element);
        ErrorReport_StartTrapBypass();
        if (record->command == kReadEffectFacts) ReadEffectFacts(*record->request);
        ErrorReport_EndTrapBypass();
        SetEvent(record->done.Get());
        TqQueueInsert(&self->m_freeRecords, &record->link);
    }
    return S_OK;
}

HANDLE TqWorkerThread::Submit(INT32 command, EffectLoadRequest* request, DWORD timeoutMs)
{
    auto* record = reinterpret_cast<TqWorkRecord*>(TqQueueRemove(&m_freeRecords, INFINITE));
    if (!record) return nullptr;
    record->command = command;
    record->request = request;
    const HANDLE done = record->done.Get();
    ResetEvent(done);
    TqQueueInsertHead(&m_requests, &record->link);
    if (MessageWait(1, &done, false, timeoutMs, true) == WAIT_TIMEOUT)
    {
        Shutdown(true);
        return nullptr;
    }
    return done;
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
    if (MessageWait(0, nullptr, false, 0, false) != WAIT_OBJECT_0)
    {
        PostThreadMessageW(m_threadId, WM_QUIT, 0, 0);
        if (MessageWait(0, nullptr, false, kQuitGraceMs, false) != WAIT_OBJECT_0)
        {
            ForceAbort();
            MessageWait(0, nullptr, false, graceMs, false);
        }
    }
    m_thread.Reset();
    m_threadId = 0;
    return S_OK;
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

void TqWorkerThread::Shutdown(bool infinite)
{
    if (m_stopEvent)
    {
        SetEvent(m_stopEvent.Get());
        StopThread(infinite ? INFINITE : 0);
        m_stopEvent.Reset();
    }
    for (tTQQHEAD* queue : {&m_requests, &m_freeRecords})
    {
        if (!queue->event) continue;
        while (TqQueueRemove(queue, 0))
        {
        }
        TqQueueDelete(queue);
        *queue = {};
    }
    for (TqWorkRecord& record : m_records)
        record = {};
}

namespace {

// The one worker of the program; its destructor ends a thread still running at process end.
TqWorkerThread g_loadWorker;

} // namespace

HRESULT RunOnLoadWorker(EffectLoadRequest& request, DWORD timeoutMs)
{
    if (!g_loadWorker.Started() && FAILED(g_loadWorker.Start()))
        return request.result = TQVST_E_TIMEOUT;
    if (!g_loadWorker.Submit(TqWorkerThread::kReadEffectFacts, &request, timeoutMs))
        return request.result = TQVST_E_TIMEOUT;
    return request.result;
}

} // namespace tqvst
