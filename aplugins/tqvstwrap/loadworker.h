// The load worker: a thread that loads plug-ins for timed calls and is abandoned by force when a
// plug-in hangs.
#pragma once

#include "effectload.h"
#include "tqqueue.h"
#include "uniquehandle.h"

#include <windows.h>

#include <memory>

namespace tqvst {

// One unit of work for the worker; the queue link comes first, as the queues require. The worker
// loads from the record's own copy of the request and fills the record's own buffers: a thread
// abandoned inside a plug-in may write its answers long after the caller has gone.
struct TqWorkRecord
{
    tTQQELM link;
    INT32 command; // kReadEffectFacts is the only one
    EffectLoadRequest* request;
    tq::UniqueHandle done; // auto-reset, set when the worker has finished the record
    EffectLoadRequest load;
    std::unique_ptr<WCHAR[]> path;
    WCHAR name[kFactCapacity];
    WCHAR vendor[kFactCapacity];
    WCHAR product[kFactCapacity];
    TqVstEffectInfo info;
};

// Everything the worker's thread can reach. Owned by the worker and by its thread together: a
// thread that is abandoned keeps it, so nothing it may still touch is reused or freed under it.
struct TqWorkerState
{
    static constexpr int kRecordCount = 3;

    TqWorkerState() = default;
    ~TqWorkerState();
    TqWorkerState(const TqWorkerState&) = delete;
    TqWorkerState& operator=(const TqWorkerState&) = delete;

    volatile LONG references = 1;
    bool multithreaded = false;
    HRESULT (*entry)(void*) = nullptr;
    void* entryArgument = nullptr;
    tq::UniqueHandle stopEvent; // auto-reset; set to end the loop
    tTQQHEAD requests = {};
    tTQQHEAD freeRecords = {};
    TqWorkRecord records[kRecordCount] = {};
};

class TqWorkerThread
{
public:
    static constexpr INT32 kReadEffectFacts = 0;

    TqWorkerThread();
    ~TqWorkerThread();
    TqWorkerThread(const TqWorkerThread&) = delete;
    TqWorkerThread& operator=(const TqWorkerThread&) = delete;

    // S_OK, S_FALSE when the worker's thread runs already, TQVST_E_THREAD (after Shutdown) on any
    // failure. A worker whose thread has ended is dismantled and started anew.
    HRESULT Start();
    bool Started() const { return m_state != nullptr; }
    // Queues the request and waits for it at most timeoutMs, pumping all messages. Returns the
    // record's completion event when the request ended, null when no record could be had, when
    // the worker was abandoned at the timeout, or when its thread ended during the request; the
    // request's result then says which.
    HANDLE Submit(INT32 command, EffectLoadRequest* request, DWORD timeoutMs);
    // Waits for one of the handles (or all), with the worker's thread handle added last when
    // there is a thread, letting messages through meanwhile. The index of the signalled handle,
    // or WAIT_TIMEOUT; 0 at once with no handles at all.
    DWORD MessageWait(DWORD count, const HANDLE* handles, bool waitAll, DWORD timeoutMs,
                      bool pumpAll);
    // Ends the thread, by force when it will not end by itself. A thread that the forced end has
    // not reached within graceMs is abandoned, and its state with it. S_FALSE when there is no
    // thread.
    HRESULT StopThread(DWORD graceMs);
    // Ends or abandons the thread and dismantles the queues and records: the worker is as new
    // afterwards. With wait, a forced end is given its grace before the thread is abandoned.
    void Shutdown(bool wait);

private:
    static unsigned __stdcall ThreadMain(void* state);
    static HRESULT WorkerLoop(void* state);
    bool ThreadEnded() const;
    void ForceAbort();

    CRITICAL_SECTION m_lock;
    tq::UniqueHandle m_thread;
    DWORD m_threadId = 0;
    TqWorkerState* m_state = nullptr;
    bool m_submitting = false;
};

// Steps of a timed GetEffectInfoForFile: the request runs on the worker, the caller waits at most
// timeoutMs, and a plug-in that takes longer is abandoned. The request's result, or
// TQVST_E_TIMEOUT (also written to the request) when the worker gave up or could not start.
HRESULT RunOnLoadWorker(EffectLoadRequest& request, DWORD timeoutMs);

} // namespace tqvst
