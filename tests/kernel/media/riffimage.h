// Test helpers for the RIFF layer: byte images of RIFF files built in code, and temporary files.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace tq::test {

using Bytes = std::vector<BYTE>;

inline Bytes operator+(Bytes a, const Bytes& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

inline Bytes U32(DWORD v)
{
    return {BYTE(v), BYTE(v >> 8), BYTE(v >> 16), BYTE(v >> 24)};
}

// A four-character id as a u32 in file byte order.
inline DWORD Id(const char (&s)[5])
{
    DWORD v;
    std::memcpy(&v, s, 4);
    return v;
}

inline Bytes Text(const char* s)
{
    return Bytes(s, s + std::strlen(s));
}

// Bytes first, first + 1, ... so that moved data is easy to recognise.
inline Bytes Pattern(size_t count, BYTE first = 0)
{
    Bytes b(count);
    for (size_t i = 0; i < count; ++i)
        b[i] = static_cast<BYTE>(first + i);
    return b;
}

// A header that claims size bytes, whatever follows.
inline Bytes Header(const char (&id)[5], DWORD size)
{
    return U32(Id(id)) + U32(size);
}
// Header, data and the pad byte of an odd size.
inline Bytes Chunk(const char (&id)[5], const Bytes& data)
{
    return Header(id, static_cast<DWORD>(data.size())) + data + Bytes(data.size() & 1);
}
inline Bytes List(const char (&type)[5], const Bytes& entries)
{
    return Header("LIST", static_cast<DWORD>(entries.size() + 4)) + U32(Id(type)) + entries;
}
// A file header before the chunks; its size is the honest one unless given.
inline Bytes Riff(const Bytes& chunks, const char (&form)[5] = "WAVE", DWORD size = 0)
{
    return Header("RIFF", size ? size : static_cast<DWORD>(chunks.size() + 4)) + U32(Id(form)) +
           chunks;
}

inline Bytes Cut(Bytes b, size_t size)
{
    b.resize(size);
    return b;
}
inline Bytes With(Bytes b, size_t at, BYTE value)
{
    b[at] = value;
    return b;
}

// A file in the temporary folder holding the given bytes, open for reading and writing, removed
// when the object goes.
class TempFile
{
public:
    explicit TempFile(const Bytes& contents = {})
    {
        wchar_t folder[MAX_PATH];
        wchar_t path[MAX_PATH];
        ::GetTempPathW(MAX_PATH, folder);
        ::GetTempFileNameW(folder, L"tqr", 0, path);
        m_path = path;
        m_file =
            ::CreateFileW(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                          nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        EXPECT_NE(m_file, INVALID_HANDLE_VALUE);
        DWORD written = 0;
        if (!contents.empty())
            ::WriteFile(m_file, contents.data(), static_cast<DWORD>(contents.size()), &written,
                        nullptr);
        EXPECT_EQ(written, contents.size());
        Seek(0);
    }
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;
    ~TempFile()
    {
        Close();
        ::DeleteFileW(m_path.c_str());
    }

    // Lets code under test open the file by its path on its own terms.
    void Close()
    {
        if (m_file != INVALID_HANDLE_VALUE) ::CloseHandle(m_file);
        m_file = INVALID_HANDLE_VALUE;
    }
    HANDLE Handle() const { return m_file; }
    const std::wstring& Path() const { return m_path; }

    ULONGLONG Pos() const
    {
        LARGE_INTEGER zero = {}, pos = {};
        ::SetFilePointerEx(m_file, zero, &pos, FILE_CURRENT);
        return static_cast<ULONGLONG>(pos.QuadPart);
    }
    void Seek(ULONGLONG pos) const
    {
        LARGE_INTEGER to;
        to.QuadPart = static_cast<LONGLONG>(pos);
        ::SetFilePointerEx(m_file, to, nullptr, FILE_BEGIN);
    }
    ULONGLONG Length() const
    {
        LARGE_INTEGER size = {};
        ::GetFileSizeEx(m_file, &size);
        return static_cast<ULONGLONG>(size.QuadPart);
    }
    // count bytes from offset (to the end without count); the cursor is kept.
    Bytes Read(ULONGLONG offset = 0, DWORD count = 0) const
    {
        const ULONGLONG pos = Pos();
        Bytes b(count ? count : static_cast<DWORD>(Length() - offset));
        Seek(offset);
        DWORD got = 0;
        if (!b.empty()) ::ReadFile(m_file, b.data(), static_cast<DWORD>(b.size()), &got, nullptr);
        Seek(pos);
        b.resize(got);
        return b;
    }
    DWORD U32At(ULONGLONG offset) const
    {
        const Bytes b = Read(offset, 4);
        DWORD v = 0;
        std::memcpy(&v, b.data(), std::min<size_t>(b.size(), 4));
        return v;
    }

private:
    std::wstring m_path;
    HANDLE m_file = INVALID_HANDLE_VALUE;
};

// Unlocks and frees a block handed out by the RIFF layer.
inline void FreeBlock(void* data)
{
    if (!data) return;
    const HGLOBAL h = ::GlobalHandle(data);
    ::GlobalUnlock(h);
    ::GlobalFree(h);
}

} // namespace tq::test
