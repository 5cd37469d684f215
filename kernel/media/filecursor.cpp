// The file pointer of a platform file handle as the cursor of the chunk algorithms.
#include "filecursor.h"

#include "riff.h"

#include <memory>
#include <new>

namespace tq::riff {

bool FileCursor::ReadSome(void* buffer, DWORD count, DWORD& got) noexcept
{
    got = 0;
    if (count == 0) return true;
    return ::ReadFile(m_file, buffer, count, &got, nullptr) != FALSE;
}

HRESULT FileCursor::Read(void* buffer, DWORD count) noexcept
{
    DWORD got = 0;
    return ReadSome(buffer, count, got) && got == count ? S_OK : TQ_E_READFAILED;
}

HRESULT FileCursor::Write(const void* buffer, DWORD count) noexcept
{
    if (count == 0) return S_OK;
    DWORD written = 0;
    const BOOL ok = ::WriteFile(m_file, buffer, count, &written, nullptr);
    return ok && written == count ? S_OK : TQ_E_WRITEFAILED;
}

HRESULT FileCursor::Move(LONGLONG distance, DWORD method, ULONGLONG* pos) noexcept
{
    LARGE_INTEGER move;
    move.QuadPart = distance;
    LARGE_INTEGER now;
    if (!::SetFilePointerEx(m_file, move, &now, method)) return TQ_E_READFAILED;
    if (pos) *pos = static_cast<ULONGLONG>(now.QuadPart);
    return S_OK;
}

HRESULT FileCursor::Skip(ULONGLONG count) noexcept
{
    if (count == 0) return S_OK;
    return Move(static_cast<LONGLONG>(count), FILE_CURRENT, nullptr);
}

HRESULT FileCursor::SeekTo(ULONGLONG pos) noexcept
{
    return Move(static_cast<LONGLONG>(pos), FILE_BEGIN, nullptr);
}

HRESULT FileCursor::Tell(ULONGLONG& pos) noexcept
{
    return Move(0, FILE_CURRENT, &pos);
}

HRESULT FileCursor::Length(ULONGLONG& length) noexcept
{
    LARGE_INTEGER size;
    if (!::GetFileSizeEx(m_file, &size)) return TQ_E_READFAILED;
    length = static_cast<ULONGLONG>(size.QuadPart);
    return S_OK;
}

HRESULT FileCursor::BytesLeft(ULONGLONG& count) noexcept
{
    ULONGLONG pos = 0;
    ULONGLONG length = 0;
    if (const HRESULT hr = Tell(pos); FAILED(hr)) return hr;
    if (const HRESULT hr = Length(length); FAILED(hr)) return hr;
    count = length > pos ? length - pos : 0;
    return S_OK;
}

HRESULT FileCursor::Truncate() noexcept
{
    return ::SetEndOfFile(m_file) ? S_OK : TQ_E_WRITEFAILED;
}

HRESULT MoveTailDown(FileCursor& c, ULONGLONG from, ULONGLONG to) noexcept
{
    constexpr DWORD kBlockBytes = 4096;
    const std::unique_ptr<BYTE[]> block(new (std::nothrow) BYTE[kBlockBytes]);
    if (!block) return E_OUTOFMEMORY;
    for (;;)
    {
        DWORD got = 0;
        if (FAILED(c.SeekTo(from)) || !c.ReadSome(block.get(), kBlockBytes, got))
            return TQ_E_READFAILED;
        if (got == 0) break;
        if (FAILED(c.SeekTo(to))) return TQ_E_WRITEFAILED;
        if (const HRESULT hr = c.Write(block.get(), got); FAILED(hr)) return hr;
        from += got;
        to += got;
        if (got < kBlockBytes) break;
    }
    if (FAILED(c.SeekTo(to))) return TQ_E_WRITEFAILED;
    return c.Truncate();
}

} // namespace tq::riff
