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

    HANDLE Handle() const noexcept { return m_file; }

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

// Puts the cursor back where it was on every path out.
class CursorKeeper
{
public:
    explicit CursorKeeper(FileCursor& c) noexcept : m_c(c) { m_saved = SUCCEEDED(c.Tell(m_pos)); }
    CursorKeeper(const CursorKeeper&) = delete;
    CursorKeeper& operator=(const CursorKeeper&) = delete;
    ~CursorKeeper()
    {
        if (m_saved) m_c.SeekTo(m_pos);
    }
    bool Saved() const noexcept { return m_saved; }

private:
    FileCursor& m_c;
    ULONGLONG m_pos = 0;
    bool m_saved = false;
};

// Moves the bytes from `from` to the end of the file down to `to` in blocks of 4,096, and ends the
// file there. Every byte written over has been read before, so a failure half-way leaves each
// byte of the file somewhere in it. 0x8004E008, 0x8004E009, E_OUTOFMEMORY.
HRESULT MoveTailDown(FileCursor& c, ULONGLONG from, ULONGLONG to) noexcept;

} // namespace tq::riff
