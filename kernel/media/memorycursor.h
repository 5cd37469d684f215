// The current pointer of a _tMRIFF as the cursor of the chunk algorithms.
#pragma once

#include "mriff.h"

namespace tq::riff {

// E_POINTER for a null cursor, E_INVALIDARG for one whose pointers and counts disagree (so that
// no copy can be computed from a broken record), else S_OK.
HRESULT CheckMemoryCursor(const _tMRIFF* m) noexcept;

// Works in offsets from base, so no pointer is ever formed outside the block. Seeks clamp
// between base and end of data; reads stop at end of data; writes stop at end of capacity.
class MemoryCursor
{
public:
    explicit MemoryCursor(_tMRIFF& m) noexcept : m_m(m) {}

    bool ReadSome(void* buffer, DWORD count, DWORD& got) noexcept;
    HRESULT Read(void* buffer, DWORD count) noexcept;
    // Copies what fits; written is the count.
    void WriteSome(const void* buffer, DWORD count, DWORD& written) noexcept;
    HRESULT Write(const void* buffer, DWORD count) noexcept;
    HRESULT Skip(ULONGLONG count) noexcept;
    HRESULT SeekTo(ULONGLONG pos) noexcept;
    HRESULT Tell(ULONGLONG& pos) noexcept;
    HRESULT BytesLeft(ULONGLONG& count) noexcept;

    // Moves the cursor to an offset from base, clamped to the data; returns the offset.
    DWORD MoveTo(LONGLONG offset) noexcept;
    DWORD Offset() const noexcept { return static_cast<DWORD>(m_m.current - m_m.base); }
    // Moves end of data by at most the room there is; returns how far.
    LONG ResizeData(LONG delta) noexcept;

private:
    void SetDataSize(DWORD size) noexcept;

    _tMRIFF& m_m;
};

// Runs f on a cursor over m once m has been checked; f returns an HRESULT.
template <class F>
HRESULT OnMemoryCursor(_tMRIFF* m, F&& f)
{
    if (const HRESULT hr = CheckMemoryCursor(m); FAILED(hr)) return hr;
    MemoryCursor c(*m);
    return f(c);
}

} // namespace tq::riff
