// RIFF chunk layer on platform file handles: reading, locating, searching and writing chunks.
#include "riff.h"

#include "filecursor.h"
#include "riffwalk.h"

#include <algorithm>
#include <memory>
#include <new>

using tq::riff::FileCursor;

namespace {

// Zero-filled scratch bytes; null if there is no memory.
std::unique_ptr<char[]> ScratchBytes(DWORD count) noexcept
{
    return std::unique_ptr<char[]>(new (std::nothrow) char[count == 0 ? 1 : count]());
}

} // namespace

// --- Reading ---

TQKERNEL_API HRESULT riff_ReadFileID(HANDLE file, DWORD* size, DWORD* form)
{
    FileCursor c(file);
    return tq::riff::ReadFileID(c, size, form);
}

TQKERNEL_API HRESULT riff_ReadChunkHeader(HANDLE file, DWORD* id, DWORD* size)
{
    FileCursor c(file);
    return tq::riff::ReadChunkHeader(c, id, size);
}

TQKERNEL_API HRESULT riff_ReadListHeader(HANDLE file, DWORD* type, DWORD* size)
{
    FileCursor c(file);
    return tq::riff::ReadListHeader(c, type, size);
}

TQKERNEL_API HRESULT riff_ReadData(HANDLE file, void* buffer, DWORD size)
{
    FileCursor c(file);
    return tq::riff::ReadData(c, buffer, size);
}

TQKERNEL_API HRESULT riff_ReadDataBounded(HANDLE file, void* buffer, DWORD a, DWORD b)
{
    FileCursor c(file);
    return tq::riff::ReadDataBounded(c, buffer, a, b);
}

TQKERNEL_API HRESULT riff_ReadDataAlloc(HANDLE file, tRIFFBLOCK* block)
{
    FileCursor c(file);
    return tq::riff::ReadDataAlloc(c, block);
}

TQKERNEL_API HRESULT riff_ReadANSIString(HANDLE file, WCHAR* buffer, DWORD bufferChars, DWORD* size)
{
    if (!buffer || !size || bufferChars == 0) return E_INVALIDARG;
    const DWORD chunkSize = *size;
    // Callers count the terminator that the wide text gains.
    *size = chunkSize + 1;
    buffer[0] = L'\0';

    const DWORD count = std::min(chunkSize, bufferChars);
    const auto text = ScratchBytes(count);
    if (!text) return E_OUTOFMEMORY;
    FileCursor c(file);
    if (const HRESULT hr = c.Read(text.get(), count); FAILED(hr)) return hr;
    if (count != 0)
    {
        text[count - 1] = '\0';
        // The input ends in its terminator and has no more bytes than the buffer has
        // characters, so the converted text, terminator included, fits.
        const int chars =
            ::MultiByteToWideChar(CP_ACP, MB_PRECOMPOSED, text.get(), static_cast<int>(count),
                                  buffer, static_cast<int>(bufferChars));
        buffer[chars > 0 ? chars - 1 : 0] = L'\0';
    }
    return c.Skip(static_cast<ULONGLONG>(chunkSize - count) + (chunkSize & 1));
}

TQKERNEL_API HRESULT riff_GetFileSize(HANDLE file, DWORD* size)
{
    if (!size) return E_POINTER;
    FileCursor c(file);
    if (const HRESULT hr = c.SeekTo(0); FAILED(hr)) return hr;
    DWORD header[3];
    if (const HRESULT hr = c.Read(header, sizeof header); FAILED(hr)) return hr;
    if (header[0] != RIFF_ID_RIFF) return TQ_E_NORIFFHEADER;
    if (header[1] > MAXDWORD - 4) return TQ_E_SIZELIMIT;
    *size = header[1] + 4;
    return S_OK;
}

// --- Locating ---

TQKERNEL_API HRESULT riff_SaveLocation(HANDLE file, DWORD* pos)
{
    FileCursor c(file);
    return tq::riff::SaveLocation(c, pos);
}

TQKERNEL_API HRESULT riff_RestoreLocation(HANDLE file, DWORD pos)
{
    return FileCursor(file).SeekTo(pos);
}

TQKERNEL_API ULONGLONG riff_SkipChunk(HANDLE file, DWORD size)
{
    FileCursor c(file);
    return tq::riff::SkipChunk(c, size);
}

TQKERNEL_API HRESULT riff_SeekDataStart(HANDLE file)
{
    return FileCursor(file).SeekTo(tq::riff::kFileHeaderBytes);
}

TQKERNEL_API HRESULT riff_ValidateChunkHeader(DWORD /*id*/, DWORD size)
{
    if (size & 0x80000000u) return TQ_E_BADCHUNKHEADER;
    if (size == 0) return TQ_E_ZEROLENGTHCHUNK;
    return S_OK;
}

TQKERNEL_API HRESULT riff_FindChunkHeader(HANDLE file, DWORD id, DWORD* size, DWORD* remaining)
{
    FileCursor c(file);
    return tq::riff::FindChunkHeader(c, id, size, remaining);
}

TQKERNEL_API HRESULT riff_FindChunkHeaderInRIFF(HANDLE file, DWORD id, DWORD* size, DWORD* riffSize)
{
    FileCursor c(file);
    return tq::riff::FindChunkHeaderInRIFF(c, id, size, riffSize);
}

TQKERNEL_API HRESULT riff_FindListChunk(HANDLE file, DWORD type, DWORD* size, DWORD* remaining)
{
    FileCursor c(file);
    return tq::riff::FindListChunk(c, type, size, remaining);
}

TQKERNEL_API HRESULT riff_FindListChunkFromStart(HANDLE file, DWORD type, DWORD* size)
{
    FileCursor c(file);
    return tq::riff::FindListChunkFromStart(c, type, size);
}

TQKERNEL_API HRESULT riff_GetNumListEntries(HANDLE file, DWORD* count, DWORD* remaining)
{
    FileCursor c(file);
    return tq::riff::GetNumListEntries(c, count, remaining);
}

TQKERNEL_API HRESULT riff_SeekListEntry(HANDLE file, DWORD index, DWORD* remaining)
{
    FileCursor c(file);
    return tq::riff::SeekListEntry(c, index, remaining);
}

// --- Writing ---

TQKERNEL_API HRESULT riff_WriteFileID(HANDLE file, DWORD form, DWORD size)
{
    FileCursor c(file);
    return tq::riff::WriteFileID(c, form, size);
}

TQKERNEL_API HRESULT riff_WriteListHeader(HANDLE file, DWORD type, DWORD size)
{
    FileCursor c(file);
    return tq::riff::WriteListHeader(c, type, size);
}

TQKERNEL_API HRESULT riff_WriteChunkHeader(HANDLE file, DWORD id, DWORD size)
{
    FileCursor c(file);
    return tq::riff::WriteChunkHeader(c, id, size);
}

TQKERNEL_API HRESULT riff_WriteChunk(HANDLE file, DWORD id, const void* buffer, DWORD size,
                                     DWORD* written)
{
    if (written) *written = 0;
    if (!buffer && size != 0) return E_POINTER;
    if (tq::riff::Padded(size) + tq::riff::kChunkHeaderBytes > MAXDWORD) return TQ_E_SIZELIMIT;
    FileCursor c(file);
    if (const HRESULT hr = tq::riff::WriteChunkHeader(c, id, size); FAILED(hr)) return hr;
    if (const HRESULT hr = c.Write(buffer, size); FAILED(hr)) return hr;
    const BYTE pad = 0;
    if (const HRESULT hr = c.Write(&pad, size & 1); FAILED(hr)) return hr;
    if (written) *written = static_cast<DWORD>(tq::riff::Padded(size)) + 8;
    return S_OK;
}

TQKERNEL_API HRESULT riff_WriteANSIString(HANDLE file, const WCHAR* text, DWORD* written)
{
    if (written) *written = 0;
    if (!text) return E_POINTER;
    // Measured rather than assumed one byte a character, so that double-byte code pages fit.
    const int bytes = ::WideCharToMultiByte(CP_ACP, 0, text, -1, nullptr, 0, nullptr, nullptr);
    if (bytes <= 0) return E_INVALIDARG;
    const DWORD padded = static_cast<DWORD>(tq::riff::Padded(static_cast<DWORD>(bytes)));
    const auto ansi = ScratchBytes(padded);
    if (!ansi) return E_OUTOFMEMORY;
    if (::WideCharToMultiByte(CP_ACP, 0, text, -1, ansi.get(), bytes, nullptr, nullptr) != bytes)
        return E_INVALIDARG;
    ansi[bytes - 1] = '\0';
    if (const HRESULT hr = FileCursor(file).Write(ansi.get(), padded); FAILED(hr)) return hr;
    if (written) *written = padded;
    return S_OK;
}
