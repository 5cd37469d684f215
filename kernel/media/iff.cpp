// The IFF chunk layer: byte order, headers, skipping and searching.
#include "iff.h"

#include "filecursor.h"

using tq::riff::FileCursor;

namespace {

constexpr DWORD kHeaderBytes = 8;

ULONGLONG Padded(DWORD size)
{
    return static_cast<ULONGLONG>(size) + (size & 1);
}

DWORD TakeOff(DWORD remaining, ULONGLONG count)
{
    return count >= remaining ? 0 : static_cast<DWORD>(remaining - count);
}

void Swap16(void* buffer, DWORD count)
{
    auto* b = static_cast<BYTE*>(buffer);
    for (DWORD i = 0; i < count; ++i, b += 2)
    {
        const BYTE t = b[0];
        b[0] = b[1];
        b[1] = t;
    }
}

void Swap32(void* buffer, DWORD count)
{
    auto* b = static_cast<BYTE*>(buffer);
    for (DWORD i = 0; i < count; ++i, b += 4)
    {
        BYTE t = b[0];
        b[0] = b[3];
        b[3] = t;
        t = b[1];
        b[1] = b[2];
        b[2] = t;
    }
}

} // namespace

TQKERNEL_API void iff_ByteSwap16(void* buffer, DWORD count)
{
    if (buffer) Swap16(buffer, count);
}

TQKERNEL_API void iff_ByteSwap32(void* buffer, DWORD count)
{
    if (buffer) Swap32(buffer, count);
}

TQKERNEL_API void aiff_WriteByteSwap16(void* buffer, DWORD count)
{
    if (buffer) Swap16(buffer, count);
}

TQKERNEL_API void aiff_WriteByteSwap32(void* buffer, DWORD count)
{
    if (buffer) Swap32(buffer, count);
}

TQKERNEL_API HRESULT iff_ReadChunkHdr(HANDLE file, tIFFCHUNKHEADER* header)
{
    if (!header) return E_POINTER;
    FileCursor c(file);
    DWORD words[2];
    if (const HRESULT hr = c.Read(words, sizeof words); FAILED(hr)) return hr;
    Swap32(words, 2);
    header->id = words[0];
    header->size = words[1];
    return S_OK;
}

TQKERNEL_API HRESULT iff_ReadDWORD(HANDLE file, DWORD* value)
{
    if (!value) return E_POINTER;
    FileCursor c(file);
    if (const HRESULT hr = c.Read(value, sizeof *value); FAILED(hr)) return hr;
    Swap32(value, 1);
    return S_OK;
}

TQKERNEL_API HRESULT iff_ReadWORD(HANDLE file, WORD* value)
{
    if (!value) return E_POINTER;
    FileCursor c(file);
    if (const HRESULT hr = c.Read(value, sizeof *value); FAILED(hr)) return hr;
    Swap16(value, 1);
    return S_OK;
}

TQKERNEL_API HRESULT iff_ReadFormType(HANDLE file, const tIFFCHUNKHEADER* header, DWORD* type)
{
    if (!header || !type) return E_POINTER;
    if (header->id != IFF_ID_FORM) return TQ_E_CORRUPTFILE;
    return iff_ReadDWORD(file, type);
}

TQKERNEL_API HRESULT iff_WriteFileID(HANDLE file, DWORD form, DWORD size)
{
    DWORD words[3] = {IFF_ID_FORM, size, form};
    Swap32(words, 3);
    FileCursor c(file);
    return c.Write(words, sizeof words);
}

TQKERNEL_API HRESULT iff_WriteChunk(HANDLE file, const tIFFCHUNKHEADER* header)
{
    if (!header) return E_POINTER;
    DWORD words[2] = {header->id, header->size};
    Swap32(words, 2);
    FileCursor c(file);
    return c.Write(words, sizeof words);
}

TQKERNEL_API HRESULT iff_WriteDWORD(HANDLE file, DWORD value)
{
    Swap32(&value, 1);
    FileCursor c(file);
    return c.Write(&value, sizeof value);
}

TQKERNEL_API HRESULT iff_WriteWORD(HANDLE file, WORD value)
{
    Swap16(&value, 1);
    FileCursor c(file);
    return c.Write(&value, sizeof value);
}

TQKERNEL_API ULONGLONG iff_SkipChunk(HANDLE file, DWORD size)
{
    FileCursor c(file);
    return SUCCEEDED(c.Skip(Padded(size))) ? Padded(size) : 0;
}

TQKERNEL_API HRESULT iff_FindChunkHeader(HANDLE file, DWORD id, DWORD* size, DWORD* remaining)
{
    // Without remaining the walk is unbounded and ends by a failed read.
    FileCursor c(file);
    DWORD left = remaining ? *remaining : 0;
    HRESULT hr = S_OK;
    for (;;)
    {
        if (remaining && left < kHeaderBytes)
        {
            hr = TQ_E_NOTFOUND;
            break;
        }
        tIFFCHUNKHEADER header = {};
        if (hr = iff_ReadChunkHdr(file, &header); FAILED(hr)) break;
        left = TakeOff(left, kHeaderBytes);
        if (header.id == id)
        {
            if (size) *size = header.size;
            break;
        }
        if (hr = c.Skip(Padded(header.size)); FAILED(hr)) break;
        left = TakeOff(left, Padded(header.size));
    }
    if (remaining) *remaining = left;
    return hr;
}

TQKERNEL_API HRESULT iff_SeekChunkHeader(HANDLE file, DWORD id, DWORD* size)
{
    return iff_FindChunkHeader(file, id, size, nullptr);
}

TQKERNEL_API HRESULT iff_FindChunkFromStart(HANDLE file, DWORD id, DWORD* size)
{
    if (size) *size = 0;
    FileCursor c(file);
    if (FAILED(c.SeekTo(0))) return TQ_E_NORIFFHEADER;
    tIFFCHUNKHEADER header = {};
    DWORD form = 0;
    if (FAILED(iff_ReadChunkHdr(file, &header)) || header.id != IFF_ID_FORM ||
        FAILED(iff_ReadDWORD(file, &form)))
        return TQ_E_NORIFFHEADER;
    return SUCCEEDED(iff_SeekChunkHeader(file, id, size)) ? S_OK : TQ_E_NOTFOUND;
}
