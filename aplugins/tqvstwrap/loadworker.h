// The load worker: a thread that loads plug-ins for timed calls and is abandoned by force when a
// plug-in hangs.
#pragma once

#include "effectload.h"
#include "tqqueue.h"
#include "uniquehandle.h"

#include <windows.h>

namespace tqvst {

// One unit of work for the worker; the queue link comes first, as the queues require.
struct TqWorkRecord
{
    tTQQELM link;
    INT32 command; // kReadEffectFacts is the only one
    EffectLoadRequest* request;
    tq::UniqueHandle done; // auto-reset, set when the worker has finished the record
};

class TqWorkerThread
{
public:
    static constexpr INT32 kReadEffectFacts = 0;

    TqWorkerThread();
    ~TqWorkerThread();
    TqWorkerThread(const TqWorkerThread&) = delete;
    TqWorkerThread& operator=(const TqWorkerThread&) = delete;

    // S_OK, S_FALSE when the worker runs already, TQVST_E_THREAD (after Shutdown) on any failure.
    HRESULT Start();
    bool Started() const { return static_cast<bool>(m_stopEvent); }
    // Queues the request and waits for it at most timeoutMs, pumping all messages. Returns the
    // record's completion event when the request ended (or the thread did), null when no record
    // could be had or the worker was abandoned at the timeout.
    HANDLE Submit(INT32 command, EffectLoadRequest* request, DWORD timeoutMs);
    // Waits for one of the handles (or all), with the worker's thread handle added last when
    // there is a thread, letting messages through meanwhile. The index of the signalled handle,
    // or WAIT_TIMEOUT; 0 at once with no handles at all.
    DWORD MessageWait(DWORD count, const HANDLE* handles, bool waitAll, DWORD timeoutMs,
                      bool pumpAll);
    // Ends the thread, by force when it will not end by itself; graceMs is how long the forced
    // end may take. S_FALSE when there is no thread.
    HRESULT StopThread(DWORD graceMs);
    // Ends the thread and dismantles the queues and records: the worker is as new afterwards.
    void Shutdown(bool infinite);

private:
    static constexpr int kRecordCount = 3;

    static unsigned __stdcall ThreadMain(void* self);
    static HRESULT WorkerLoop(void* self);
    void ForceAbort();

    bool m_multithreaded = false;
    CRITICAL_SECTION m_lock;
    tq::UniqueHandle m_thread;
    DWORD m_threadId = 0;
    HRESULT (*m_entry)(void*) = nullptr;
    void* m_entryArgument = nullptr;
    tq::UniqueHandle m_stopEvent;
    tTQQHEAD m_requests = {};
    tTQQHEAD m_freeRecords = {};
    TqWorkRecord m_records[kRecordCount] = {};
};

// Steps of a timed GetEffectInfoForFile: the request runs on the worker, the caller waits at most
// timeoutMs, and a plug-in that takes longer is abandoned. The request's result, or
// TQVST_E_TIMEOUT (also written to the request) when the worker gave up or could not start.
HRESULT RunOnLoadWorker(EffectLoadRequest& request, DWORD timeoutMs);

} // namespace tqvst
