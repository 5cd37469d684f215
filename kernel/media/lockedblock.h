// Locked blocks of the movable global heap, as the media lists own their texts and payloads:
// the owner holds the pointer, and the handle is found again from it when the block is freed.
#pragma once

#include <windows.h>

namespace tq::media {

// A zero-filled, locked block of bytes (at least one); null for no memory.
inline void* AllocLocked(SIZE_T bytes) noexcept
{
    const HGLOBAL handle = ::GlobalAlloc(GHND, bytes ? bytes : 1);
    if (!handle) return nullptr;
    void* data = ::GlobalLock(handle);
    if (!data) ::GlobalFree(handle);
    return data;
}

// Frees a block from AllocLocked; null is allowed.
inline void FreeLocked(const void* data) noexcept
{
    if (!data) return;
    const HGLOBAL handle = ::GlobalHandle(data);
    if (!handle) return;
    ::GlobalUnlock(handle);
    ::GlobalFree(handle);
}

} // namespace tq::media
