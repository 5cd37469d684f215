// What the Wave64 functions share: header sizes, the 8-byte rounding, and moves of 64-bit counts.
#pragma once

#include "filecursor.h"
#include "riff64.h"

namespace tq::riff64 {

inline constexpr ULONGLONG kHeaderBytes = 24;     // GUID and size
inline constexpr ULONGLONG kGuidBytes = 16;       // a form or list type
inline constexpr ULONGLONG kFileHeaderBytes = 40; // header and form
inline constexpr ULONGLONG kSizeFieldOffset = 16;

// The count rounded up to 8, held below 2^64 for counts read from damaged files.
constexpr ULONGLONG Round8(ULONGLONG count)
{
    return count > ~0ull - 7 ? ~0ull & ~7ull : (count + 7) & ~7ull;
}

// The payload of a stored size; sizes below the header's own read as 0.
constexpr ULONGLONG Payload(ULONGLONG stored)
{
    return stored > kHeaderBytes ? stored - kHeaderBytes : 0;
}

constexpr ULONGLONG TakeOff(ULONGLONG remaining, ULONGLONG count)
{
    return count >= remaining ? 0 : remaining - count;
}

// Moves forward by a count read from a file. The platform takes a signed distance, so a count
// near 2^64 would move backwards and a walk could circle for ever: such counts fail as a read
// past the end would.
inline HRESULT SkipForward(riff::FileCursor& c, ULONGLONG count) noexcept
{
    constexpr ULONGLONG kLargestMove = 1ull << 62;
    return count > kLargestMove ? TQ_E_READFAILED : c.Skip(count);
}

// Exact reads and writes of counts that may pass 4 GiB, in pieces the platform accepts.
HRESULT ReadAll(riff::FileCursor& c, void* buffer, ULONGLONG count) noexcept;
HRESULT WriteAll(riff::FileCursor& c, const void* buffer, ULONGLONG count) noexcept;

HRESULT ReadChunkHeader(riff::FileCursor& c, GUID* id, ULONGLONG* size) noexcept;

} // namespace tq::riff64
