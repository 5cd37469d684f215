// Millisecond and microsecond timers: the counter is chosen once, and its base taken with it.
#include "tqtimer.h"

#include <atomic>

namespace tq {
namespace {

// The chosen counter: the performance counter with its scale, or the tick count.
struct Clock
{
    bool performanceCounter = false;
    CounterScale scale{1000};
    LONGLONG base = 0;

    LONGLONG Now() const
    {
        if (!performanceCounter) return GetTickCount();
        LARGE_INTEGER now;
        QueryPerformanceCounter(&now);
        return now.QuadPart;
    }
    DWORD Millisec(LONGLONG counts) const
    {
        return performanceCounter ? scale.Millisec(counts) : static_cast<DWORD>(counts);
    }
    DWORD Microsec(LONGLONG counts) const
    {
        return performanceCounter ? scale.Microsec(counts) : static_cast<DWORD>(counts) * 1000;
    }
    // The tick count wraps after 49 days; its differences stay right in 32 bits.
    LONGLONG Elapsed(LONGLONG start, LONGLONG now) const
    {
        const LONGLONG counts = now - start;
        return performanceCounter ? counts : static_cast<DWORD>(counts);
    }
};

Clock g_clock;
std::atomic<const Clock*> g_chosen{nullptr};
INIT_ONCE g_chooseOnce = INIT_ONCE_STATIC_INIT;
std::atomic<bool> g_ready{false};

BOOL CALLBACK ChooseOnce(INIT_ONCE*, void*, void**)
{
    LARGE_INTEGER frequency = {};
    // A counter whose frequency has zero low 32 bits would give a zero divisor in places, and one
    // slower than a kilohertz is no better than the tick count.
    if (QueryPerformanceFrequency(&frequency) && frequency.LowPart != 0 &&
        frequency.QuadPart >= 1000)
    {
        g_clock.performanceCounter = true;
        g_clock.scale = CounterScale(frequency.QuadPart);
    }
    g_clock.base = g_clock.Now();
    g_chosen.store(&g_clock);
    return TRUE;
}

const Clock& Chosen()
{
    if (const Clock* clock = g_chosen.load()) return *clock;
    SelectTimers();
    return g_clock;
}

} // namespace

CounterScale::CounterScale(LONGLONG frequency)
    : m_ticksPerMillisec(frequency / 1000 ? frequency / 1000 : 1),
      m_divider(m_ticksPerMillisec / 1000 ? m_ticksPerMillisec / 1000 : 1),
      m_correction(frequency / m_divider == 1000000 ? 0 : frequency / m_divider)
{
}

DWORD CounterScale::Millisec(LONGLONG counts) const
{
    return static_cast<DWORD>(counts / m_ticksPerMillisec);
}

// 32-bit arithmetic and MulDiv bound the range on purpose: the result wraps like a 32-bit count.
DWORD CounterScale::Microsec(LONGLONG counts) const
{
    const auto value = static_cast<DWORD>(counts / m_divider);
    if (!m_correction) return value;
    return static_cast<DWORD>(
        MulDiv(static_cast<int>(value), 1000000, static_cast<int>(m_correction)));
}

void SelectTimers()
{
    InitOnceExecuteOnce(&g_chooseOnce, ChooseOnce, nullptr, nullptr);
}

bool TimersReady()
{
    return g_ready.load();
}

} // namespace tq

using namespace tq;

TQKERNEL_API DWORD TqGetMillisec(void)
{
    const Clock& clock = Chosen();
    return clock.Millisec(clock.Elapsed(clock.base, clock.Now()));
}

TQKERNEL_API DWORD TqGetMicrosec(void)
{
    const Clock& clock = Chosen();
    return clock.Microsec(clock.Elapsed(clock.base, clock.Now()));
}

TQKERNEL_API DWORD TqGetMillisecEx(LONGLONG start)
{
    const Clock& clock = Chosen();
    return clock.Millisec(clock.Elapsed(start, clock.Now()));
}

TQKERNEL_API DWORD TqGetMicrosecEx(LONGLONG start)
{
    const Clock& clock = Chosen();
    return clock.Microsec(clock.Elapsed(start, clock.Now()));
}

TQKERNEL_API DWORD TqDeltaMillisecEx(LONGLONG* start)
{
    if (!start) return 0;
    const Clock& clock = Chosen();
    const LONGLONG now = clock.Now();
    const DWORD result = clock.Millisec(clock.Elapsed(*start, now));
    *start = now;
    return result;
}

TQKERNEL_API DWORD TqDeltaMicrosecEx(LONGLONG* start)
{
    if (!start) return 0;
    const Clock& clock = Chosen();
    const LONGLONG now = clock.Now();
    const DWORD result = clock.Microsec(clock.Elapsed(*start, now));
    *start = now;
    return result;
}

TQKERNEL_API void TqTimer_LateInitialize(void)
{
    g_ready.store(true);
}
