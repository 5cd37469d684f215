// A time limit on calls into a server: COM waits for ever on a server that never answers, so a
// call that takes too long ends the server, which makes the call return.
#pragma once

#include <windows.h>

namespace tqvst {

// Watches one call for as long as the object lives. When timeoutMs pass first, the server
// process is ended, and Fired() says so. One thread of the process does all the watching.
class CallWatch
{
public:
    CallWatch(HANDLE server, DWORD timeoutMs);
    ~CallWatch();
    CallWatch(const CallWatch&) = delete;
    CallWatch& operator=(const CallWatch&) = delete;

    bool Fired() const;

private:
    friend class CallWatchList;
    HANDLE m_server;
    ULONGLONG m_deadline;
    bool m_fired = false;
    bool m_armed = false;
    CallWatch* m_next = nullptr;
    CallWatch* m_previous = nullptr;
};

} // namespace tqvst
