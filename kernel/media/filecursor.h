// The file pointer of a platform file handle as the cursor of the chunk algorithms.
#pragma once

#include <windows.h>

namespace tq::riff {

// Positions are 64-bit here so that arithmetic near the 4 GiB limit cannot wrap; the public
// functions decide what they accept.
class FileCursor
{
public:
    explicit FileCursor(HANDLE file) noexcept : m_file(file) {}

    // Reads up to count bytes; false only if the platform call failed.
    bool ReadSome(void* buffer, DWORD count, DWORD& got) noexcept;
    // Exactly count bytes, else 0x8004E008.
    HRESULT Read(void* buffer, DWORD count) noexcept;
    // Exactly count bytes, else 0x8004E009.
    HRESULT Write(const void* buffer, DWORD count) noexcept;
    // Moves forward; passing the end of the file is allowed, as it is for the platform.
    HRESULT Skip(ULONGLONG count) noexcept;
    HRESULT SeekTo(ULONGLONG pos) noexcept;
    HRESULT Tell(ULONGLONG& pos) noexcept;
    HRESULT Length(ULONGLONG& length) noexcept;
    // Bytes between the cursor and the end of the file, 0 beyond it.
    HRESULT BytesLeft(ULONGLONG& count) noexcept;
    // Ends the file at the cursor.
    HRESULT Truncate() noexcept;

private:
    HRESULT Move(LONGLONG distance, DWORD method, ULONGLONG* pos) noexcept;

    HANDLE m_file;
};

} // namespace tq::riff
