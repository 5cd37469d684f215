// Memory between two no-access pages, so that a parser's read or write one byte outside the
// bytes it was given faults at once.
#pragma once

#include <windows.h>

#include <cstddef>

namespace tqfuzz {

class GuardedBlock
{
public:
    GuardedBlock() noexcept = default;
    GuardedBlock(const GuardedBlock&) = delete;
    GuardedBlock& operator=(const GuardedBlock&) = delete;
    ~GuardedBlock();

    // size bytes that start just behind the leading guard page (atStart) or end just before
    // the trailing one, holding the bytes of source when given. readOnly protects them against
    // writes too. Null when the memory cannot be had.
    BYTE* Place(const void* source, size_t size, bool readOnly, bool atStart);

private:
    void Free() noexcept;

    BYTE* m_base = nullptr; // leading guard page
    size_t m_dataBytes = 0; // committed bytes between the guards
    BYTE* m_data = nullptr;
    bool m_writable = false; // the pages between the guards
};

} // namespace tqfuzz
