// Millisecond and microsecond timers over the performance counter, or the tick count without one.
#pragma once

#include "tqkernelapi.h"

// Time since the kernel chose its counter (at start-up, or at the first timer call before it).
// Microseconds wrap as 32-bit values: they are meant for short intervals.
TQKERNEL_API DWORD TqGetMillisec(void);
TQKERNEL_API DWORD TqGetMicrosec(void);
// Time since start, a counter value stored by TqDeltaMillisecEx or TqDeltaMicrosecEx.
TQKERNEL_API DWORD TqGetMillisecEx(LONGLONG start);
TQKERNEL_API DWORD TqGetMicrosecEx(LONGLONG start);
// The same, and the current counter value is stored back in *start for the next interval. A
// *start of 0 measures from an arbitrary point: call once to begin.
TQKERNEL_API DWORD TqDeltaMillisecEx(LONGLONG* start);
TQKERNEL_API DWORD TqDeltaMicrosecEx(LONGLONG* start);
// Marks the timers as ready; the last step of start-up.
TQKERNEL_API void TqTimer_LateInitialize(void);

#ifdef __cplusplus
namespace tq {

// How counts of a counter with the given frequency become time, as the timers convert them.
class CounterScale
{
public:
    explicit CounterScale(LONGLONG frequency);
    DWORD Millisec(LONGLONG counts) const;
    DWORD Microsec(LONGLONG counts) const;

private:
    LONGLONG m_ticksPerMillisec;
    LONGLONG m_divider;
    LONGLONG m_correction; // 0 when counts/divider already are microseconds
};

// Chooses the counter now, once per process; start-up calls it.
void SelectTimers();
// True once TqTimer_LateInitialize has run.
bool TimersReady();

} // namespace tq
#endif
