// The shared block of the Process channel: its fixed layout, and the turn handshake by which
// host and server hand it to each other.
#pragma once

#include "tqvst.h"

#include <windows.h>

#include <cstddef>

namespace tqvst::block {

constexpr UINT32 kMagic = 0x4B425154; // "TQBK"
constexpr UINT32 kMaxCallbacks = 256;
// The data areas start on a cache line of their own.
constexpr UINT32 kAreaAlignment = 64;

// What an effect asked of the host during a block, for the host to replay afterwards in order.
enum CallbackKind : UINT32
{
    kAutomate = 1,
    kBeginEdit,
    kEndEdit,
    kUpdateDisplay,
    kIdle,
    kSizeWindow,
};

struct Callback
{
    UINT32 kind;
    UINT32 index; // parameter index, or width for kSizeWindow
    float value;
    UINT32 extra; // height for kSizeWindow
};

// At the start of the mapping, the same in 32- and 64-bit processes. The host writes the layout
// and, per block, the block's facts and the transport; the server writes the result and the
// callbacks. Only the turn counters are touched by both sides at once.
struct Header
{
    UINT32 magic;
    UINT32 headerBytes;
    UINT32 inputOffset;
    UINT32 outputOffset;
    UINT32 areaBytes; // each of the two areas
    UINT32 reserved0;
    // The host counts blocks up in requestSeq; the server answers each in doneSeq.
    volatile LONG requestSeq;
    volatile LONG doneSeq;
    // Set by a side that is about to sleep on its event, so the other side knows to set it.
    volatile LONG hostAsleep;
    volatile LONG serverAsleep;

    UINT32 frames;
    UINT32 inputChannels;
    INT32 outputChannels;
    UINT32 bytesPerSample;
    UINT32 hasInput; // 0: the host gave no input buffer
    INT32 timeResult;
    INT32 tempoResult;
    INT32 tempo;
    TqVstMasterTime time;

    INT32 result;
    UINT32 callbackCount;
    UINT32 callbacksLost;
    UINT32 reserved2;
    Callback callbacks[kMaxCallbacks];
};

static_assert(offsetof(Header, requestSeq) == 24);
static_assert(offsetof(Header, frames) == 40);
static_assert(offsetof(Header, time) == 72);
static_assert(offsetof(Header, result) == 144);
static_assert(offsetof(Header, callbacks) == 160);
static_assert(sizeof(Header) == 160 + 16 * kMaxCallbacks);

constexpr UINT32 AlignArea(UINT32 bytes)
{
    return (bytes + kAreaAlignment - 1) & ~(kAreaAlignment - 1);
}

// Gives the turn: publishes value and wakes the other side if it went to sleep.
inline void PassTurn(volatile LONG& turn, LONG value, volatile LONG& otherAsleep, HANDLE wake)
{
    InterlockedExchange(&turn, value);
    if (InterlockedExchange(&otherAsleep, 0) != 0) SetEvent(wake);
}

// How a wait for the turn ended.
enum class TurnWait
{
    Reached,
    Signalled, // one of the extra handles (a process ended, a stop was asked)
    TimedOut,
};

// Waits until turn reads want: a spin of at most spinTicks performance-counter ticks, then
// sleeps on wake (an auto-reset event the other side sets when it finds ownAsleep set) or any of
// the extra handles, for at most timeoutMs in all. signalled receives the index of the extra
// handle that ended the wait.
TurnWait WaitTurn(const volatile LONG& turn, LONG want, volatile LONG& ownAsleep, HANDLE wake,
                  const HANDLE* extra, DWORD extraCount, LONGLONG spinTicks, DWORD timeoutMs,
                  DWORD* signalled = nullptr);

// Performance-counter ticks in the given microseconds.
LONGLONG TicksFromMicroseconds(LONGLONG microseconds);

} // namespace tqvst::block
