// Watches a server process a test started: a test that fails half-way still leaves no server
// behind, because the watcher ends a server that outlives it.
#pragma once

#include "uniquehandle.h"

#include <windows.h>

namespace tqtest {

class ServerProcess
{
public:
    static constexpr DWORD kExitMs = 5000;

    explicit ServerProcess(DWORD pid)
        : m_process(pid ? OpenProcess(SYNCHRONIZE | PROCESS_TERMINATE, FALSE, pid) : nullptr)
    {
    }
    ~ServerProcess()
    {
        if (m_process && WaitForSingleObject(m_process.Get(), kExitMs) != WAIT_OBJECT_0)
            TerminateProcess(m_process.Get(), 1);
    }
    ServerProcess(const ServerProcess&) = delete;
    ServerProcess& operator=(const ServerProcess&) = delete;

    bool Opened() const { return static_cast<bool>(m_process); }
    bool EndsWithin(DWORD ms) const
    {
        return WaitForSingleObject(m_process.Get(), ms) == WAIT_OBJECT_0;
    }

private:
    tq::UniqueHandle m_process;
};

} // namespace tqtest
