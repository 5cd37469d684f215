// Memory between two no-access pages.
#include "guardedblock.h"

#include <cstring>

namespace tqfuzz {

namespace {

size_t PageSize()
{
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    return info.dwPageSize;
}

} // namespace

GuardedBlock::~GuardedBlock()
{
    Free();
}

void GuardedBlock::Free() noexcept
{
    if (m_base) VirtualFree(m_base, 0, MEM_RELEASE);
    m_base = nullptr;
    m_dataBytes = 0;
    m_writable = false;
}

BYTE* GuardedBlock::Place(const void* source, size_t size, bool readOnly, bool atStart)
{
    static const size_t page = PageSize();
    const size_t needed = (size + page - 1) / page * page;
    if (!m_base || needed > m_dataBytes)
    {
        Free();
        const size_t dataBytes = needed ? needed : page;
        BYTE* base = static_cast<BYTE*>(
            VirtualAlloc(nullptr, dataBytes + 2 * page, MEM_RESERVE | MEM_COMMIT, PAGE_NOACCESS));
        if (!base) return nullptr;
        m_base = base;
        m_dataBytes = dataBytes;
    }
    DWORD old = 0;
    if (!m_writable && !VirtualProtect(m_base + page, m_dataBytes, PAGE_READWRITE, &old))
        return nullptr;
    m_writable = true;
    m_data = m_base + page + (atStart ? 0 : m_dataBytes - size);
    if (source && size) std::memcpy(m_data, source, size);
    if (readOnly)
    {
        if (!VirtualProtect(m_base + page, m_dataBytes, PAGE_READONLY, &old)) return nullptr;
        m_writable = false;
    }
    return m_data;
}

} // namespace tqfuzz
