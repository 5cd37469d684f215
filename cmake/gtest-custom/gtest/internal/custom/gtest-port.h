// GoogleTest's own thread notification needs std::mutex, which this toolchain's win32 thread
// model lacks; this one stands in for it with a Win32 event.
#pragma once

#include <windows.h>

#define GTEST_HAS_NOTIFICATION_ 1

namespace testing {
namespace internal {

class Notification
{
public:
    Notification() : m_event(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}
    ~Notification() { CloseHandle(m_event); }
    Notification(const Notification&) = delete;
    Notification& operator=(const Notification&) = delete;

    void Notify() { SetEvent(m_event); }
    void WaitForNotification() { WaitForSingleObject(m_event, INFINITE); }

private:
    HANDLE m_event;
};

} // namespace internal
} // namespace testing
