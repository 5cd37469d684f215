// The kernel's blocking work queue: an intrusive ring of caller-owned records with a lock and a
// wake-up event.
#pragma once

#include "tqkernelapi.h"

// The link part of a record; a record embeds it as its first member. Both links are null while
// the record is in no queue.
typedef struct tTQQELM
{
    struct tTQQELM* next;
    struct tTQQELM* prev;
} tTQQELM;

// The head is the sentinel of the ring: its first two fields have the shape of tTQQELM, and they
// point at the head itself while the queue is empty. The event is signalled while the queue is
// non-empty (and after TqQueueFlush). A head must be zero-filled before its first
// initialisation.
typedef struct tTQQHEAD
{
    tTQQELM* next; // first element
    tTQQELM* prev; // last element
    CRITICAL_SECTION lock;
    HANDLE event; // manual-reset; null before initialisation and after TqQueueDelete
} tTQQHEAD;

// Selects an element when it returns non-zero; called under the queue's lock.
typedef int (*TQQUEUE_MATCHPROC)(tTQQELM* element, void* context);

// Wait flags of TqQueueRemoveEx; the low 16 bits are a QS_* wake mask.
#define TQQUEUE_WAIT_ALL 0x10000u            // MWMO_WAITALL
#define TQQUEUE_WAIT_ALERTABLE 0x20000u      // MWMO_ALERTABLE
#define TQQUEUE_WAIT_INPUTAVAILABLE 0x40000u // MWMO_INPUTAVAILABLE
// Keep waiting through sent messages and I/O completions; adds QS_SENDMESSAGE to the wake mask.
#define TQQUEUE_WAIT_KEEPWAITING 0x80000u

// 1, or 0 when the event could not be made. On a head that has an event already, it only empties
// the ring (the records linked before are forgotten).
TQKERNEL_API BOOL TqQueueInitialize(tTQQHEAD* head);
// Wakes every waiter and releases the event and the lock. Safe to call twice.
TQKERNEL_API void TqQueueDelete(tTQQHEAD* head);
// Empties the ring without touching the records, and leaves the event set so that every waiter,
// present and future, returns null until the queue has been filled and emptied again.
TQKERNEL_API void TqQueueFlush(tTQQHEAD* head);

// Append at the tail / put at the front.
TQKERNEL_API void TqQueueInsert(tTQQHEAD* head, tTQQELM* element);
TQKERNEL_API void TqQueueInsertHead(tTQQHEAD* head, tTQQELM* element);
// Ordered insert: in front of the first element that matches, walking from the front (Ex) or from
// the back (ExRev); at the tail when none matches.
TQKERNEL_API void TqQueueInsertEx(tTQQHEAD* head, TQQUEUE_MATCHPROC match, void* context,
                                  tTQQELM* element);
TQKERNEL_API void TqQueueInsertExRev(tTQQHEAD* head, TQQUEUE_MATCHPROC match, void* context,
                                     tTQQELM* element);

// Takes the first element, waiting up to timeout milliseconds (0: poll, INFINITE: for ever).
TQKERNEL_API tTQQELM* TqQueueRemove(tTQQHEAD* head, DWORD timeout);
// The same in an alertable wait that keeps waiting through APCs and sent messages.
TQKERNEL_API tTQQELM* TqQueueRemoveAlertable(tTQQHEAD* head, DWORD timeout);
// Takes the first element, waiting on the queue, on up to 62 further handles and on the thread's
// message queue as the flags say. Returns null when a handle or a message ends the wait, at
// timeout, and after a wake that found the queue empty. waitResult, when given, receives the
// result of the last wait: WAIT_OBJECT_0 for the queue, WAIT_OBJECT_0 + 1 + i for handles[i],
// WAIT_OBJECT_0 + 1 + handleCount for a message; without a wait WAIT_OBJECT_0 when an element
// was there, WAIT_TIMEOUT when not, and WAIT_FAILED for too many handles or a deleted queue.
TQKERNEL_API tTQQELM* TqQueueRemoveEx(tTQQHEAD* head, const HANDLE* handles, DWORD handleCount,
                                      DWORD waitFlags, DWORD timeout, DWORD* waitResult);
// Takes the last element, waiting on the queue alone.
TQKERNEL_API tTQQELM* TqQueueRemoveTail(tTQQHEAD* head, DWORD timeout);
// Waits once for the queue to be non-empty; removes nothing. Non-zero if it is non-empty after.
TQKERNEL_API BOOL TqQueueWait(tTQQHEAD* head, DWORD timeout);

// The first element that matches, from the front or (Rev) from the back. The lock is released on
// return, so the element may be gone by the time the caller looks.
TQKERNEL_API tTQQELM* TqQueueFind(tTQQHEAD* head, TQQUEUE_MATCHPROC match, void* context);
TQKERNEL_API tTQQELM* TqQueueFindRev(tTQQHEAD* head, TQQUEUE_MATCHPROC match, void* context);
// The same, unlinked from the queue.
TQKERNEL_API tTQQELM* TqQueueFindAndRemove(tTQQHEAD* head, TQQUEUE_MATCHPROC match, void* context);
TQKERNEL_API tTQQELM* TqQueueFindAndRemoveRev(tTQQHEAD* head, TQQUEUE_MATCHPROC match,
                                              void* context);
// The first element that matches (walking from the front), moved to the front or the tail.
TQKERNEL_API tTQQELM* TqQueueFindAndMoveToHead(tTQQHEAD* head, TQQUEUE_MATCHPROC match,
                                               void* context);
TQKERNEL_API tTQQELM* TqQueueFindAndMoveToTail(tTQQHEAD* head, TQQUEUE_MATCHPROC match,
                                               void* context);
// 1 if the element was in the queue and not yet at that end, and moved; else 0.
TQKERNEL_API BOOL TqQueueMoveToHead(tTQQHEAD* head, tTQQELM* element);
TQKERNEL_API BOOL TqQueueMoveToTail(tTQQHEAD* head, tTQQELM* element);
// 1 if the element is linked in this queue.
TQKERNEL_API BOOL IsInTqQueue(tTQQHEAD* head, tTQQELM* element);
