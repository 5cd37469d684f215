// The process's one watchdog thread and the list of calls it watches.
#include "callwatch.h"

namespace tqvst {

class CallWatchList
{
public:
    static CallWatchList& Get()
    {
        static CallWatchList list;
        return list;
    }

    bool Add(CallWatch* watch)
    {
        AcquireSRWLockExclusive(&m_lock);
        const bool running = EnsureThread();
        if (running)
        {
            watch->m_next = m_first;
            if (m_first) m_first->m_previous = watch;
            m_first = watch;
        }
        ReleaseSRWLockExclusive(&m_lock);
        // A new deadline may come before the one the thread sleeps towards.
        if (running) SetEvent(m_wake);
        return running;
    }

    void Remove(CallWatch* watch)
    {
        AcquireSRWLockExclusive(&m_lock);
        if (watch->m_previous)
            watch->m_previous->m_next = watch->m_next;
        else
            m_first = watch->m_next;
        if (watch->m_next) watch->m_next->m_previous = watch->m_previous;
        ReleaseSRWLockExclusive(&m_lock);
    }

    bool Fired(const CallWatch* watch)
    {
        AcquireSRWLockShared(&m_lock);
        const bool fired = watch->m_fired;
        ReleaseSRWLockShared(&m_lock);
        return fired;
    }

private:
    // Under the lock. The thread lives as long as the process: hosts make calls until they end.
    bool EnsureThread()
    {
        if (m_thread) return true;
        if (!m_wake) m_wake = CreateEventW(nullptr, FALSE, FALSE, nullptr);
        if (!m_wake) return false;
        m_thread = CreateThread(nullptr, 64 * 1024, ThreadMain, this,
                                STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
        return m_thread != nullptr;
    }

    static DWORD WINAPI ThreadMain(void* self)
    {
        static_cast<CallWatchList*>(self)->Watch();
        return 0;
    }

    void Watch()
    {
        for (;;)
        {
            DWORD wait = INFINITE;
            AcquireSRWLockExclusive(&m_lock);
            const ULONGLONG now = GetTickCount64();
            for (CallWatch* watch = m_first; watch; watch = watch->m_next)
            {
                if (watch->m_fired) continue;
                if (watch->m_deadline <= now)
                {
                    TerminateProcess(watch->m_server, ERROR_TIMEOUT);
                    watch->m_fired = true;
                    continue;
                }
                const ULONGLONG left = watch->m_deadline - now;
                if (left < wait) wait = static_cast<DWORD>(left);
            }
            ReleaseSRWLockExclusive(&m_lock);
            WaitForSingleObject(m_wake, wait);
        }
    }

    SRWLOCK m_lock = SRWLOCK_INIT;
    CallWatch* m_first = nullptr;
    HANDLE m_wake = nullptr;
    HANDLE m_thread = nullptr;
};

CallWatch::CallWatch(HANDLE server, DWORD timeoutMs)
    : m_server(server), m_deadline(GetTickCount64() + timeoutMs)
{
    m_armed = server && CallWatchList::Get().Add(this);
}

CallWatch::~CallWatch()
{
    if (m_armed) CallWatchList::Get().Remove(this);
}

bool CallWatch::Fired() const
{
    return m_armed && CallWatchList::Get().Fired(this);
}

} // namespace tqvst
