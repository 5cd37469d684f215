// The current pointer of a _tMRIFF as the cursor of the chunk algorithms.
#include "memorycursor.h"

#include <algorithm>
#include <cstring>

namespace tq::riff {

HRESULT CheckMemoryCursor(const _tMRIFF* m) noexcept
{
    if (!m) return E_POINTER;
    const auto base = reinterpret_cast<UINT_PTR>(m->base);
    const auto current = reinterpret_cast<UINT_PTR>(m->current);
    const auto dataEnd = reinterpret_cast<UINT_PTR>(m->dataEnd);
    const auto capacityEnd = reinterpret_cast<UINT_PTR>(m->capacityEnd);
    if (!m->base && m->capacity != 0) return E_INVALIDARG;
    if (base > current || current > dataEnd || dataEnd > capacityEnd) return E_INVALIDARG;
    if (dataEnd - base != m->dataSize || capacityEnd - base != m->capacity) return E_INVALIDARG;
    return S_OK;
}

bool MemoryCursor::ReadSome(void* buffer, DWORD count, DWORD& got) noexcept
{
    const DWORD offset = Offset();
    got = std::min(count, m_m.dataSize - offset);
    if (got != 0) std::memcpy(buffer, m_m.base + offset, got);
    m_m.current = m_m.base + offset + got;
    return true;
}

HRESULT MemoryCursor::Read(void* buffer, DWORD count) noexcept
{
    DWORD got = 0;
    ReadSome(buffer, count, got);
    return got == count ? S_OK : TQ_E_READFAILED;
}

void MemoryCursor::WriteSome(const void* buffer, DWORD count, DWORD& written) noexcept
{
    const DWORD offset = Offset();
    written = std::min(count, m_m.capacity - offset);
    if (written != 0) std::memcpy(m_m.base + offset, buffer, written);
    m_m.current = m_m.base + offset + written;
    if (offset + written > m_m.dataSize) SetDataSize(offset + written);
}

HRESULT MemoryCursor::Write(const void* buffer, DWORD count) noexcept
{
    DWORD written = 0;
    WriteSome(buffer, count, written);
    return written == count ? S_OK : TQ_E_WRITEFAILED;
}

DWORD MemoryCursor::MoveTo(LONGLONG offset) noexcept
{
    const LONGLONG clamped = std::clamp<LONGLONG>(offset, 0, m_m.dataSize);
    m_m.current = m_m.base + clamped;
    return static_cast<DWORD>(clamped);
}

HRESULT MemoryCursor::Skip(ULONGLONG count) noexcept
{
    // Any count above the data clamps to its end; held below 2^33 so the sum cannot overflow.
    MoveTo(static_cast<LONGLONG>(Offset() + std::min<ULONGLONG>(count, 0x100000000ull)));
    return S_OK;
}

HRESULT MemoryCursor::SeekTo(ULONGLONG pos) noexcept
{
    MoveTo(static_cast<LONGLONG>(std::min<ULONGLONG>(pos, 0x100000000ull)));
    return S_OK;
}

HRESULT MemoryCursor::Tell(ULONGLONG& pos) noexcept
{
    pos = Offset();
    return S_OK;
}

HRESULT MemoryCursor::BytesLeft(ULONGLONG& count) noexcept
{
    count = m_m.dataSize - Offset();
    return S_OK;
}

LONG MemoryCursor::ResizeData(LONG delta) noexcept
{
    const LONGLONG wanted = static_cast<LONGLONG>(m_m.dataSize) + delta;
    const auto size = static_cast<DWORD>(std::clamp<LONGLONG>(wanted, 0, m_m.capacity));
    const LONG moved = static_cast<LONG>(static_cast<LONGLONG>(size) - m_m.dataSize);
    SetDataSize(size);
    if (Offset() > size) m_m.current = m_m.dataEnd;
    return moved;
}

void MemoryCursor::SetDataSize(DWORD size) noexcept
{
    m_m.dataSize = size;
    m_m.dataEnd = m_m.base + size;
}

} // namespace tq::riff
