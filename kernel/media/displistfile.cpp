// Display lists from a COM stream, and the picture of a media file's display list as a bitmap.
#include "chunkframing.h"
#include "displistwalk.h"
#include "riff64.h"
#include "rf64.h"
#include "summaryframing.h"
#include "uniquehandle.h"

#include <objidl.h>

#include <cstring>

using tq::media::Rf64Framing;
using tq::media::RiffFraming;
using tq::media::Wave64Framing;

namespace {

// A stream of RIFF chunks (as displist_Save writes them) as a source for the walk.
class StreamSource
{
public:
    explicit StreamSource(IStream* stream) noexcept : m_s(stream) {}
    DWORD HeaderBytes() const noexcept { return 8; }
    ULONGLONG Extent(ULONGLONG size) const noexcept { return 8 + size + (size & 1); }
    HRESULT ReadEntryHeader(DWORD& id, ULONGLONG& size) noexcept
    {
        DWORD header[2];
        if (const HRESULT hr = Read(header, sizeof header); FAILED(hr)) return hr;
        id = header[0];
        size = header[1];
        return S_OK;
    }
    HRESULT Read(void* buffer, DWORD count) noexcept
    {
        ULONG got = 0;
        return SUCCEEDED(m_s->Read(buffer, count, &got)) && got == count ? S_OK : TQ_E_READFAILED;
    }
    HRESULT Skip(ULONGLONG count) noexcept { return Move(count, STREAM_SEEK_CUR, nullptr); }
    HRESULT SeekTo(ULONGLONG pos) noexcept { return Move(pos, STREAM_SEEK_SET, nullptr); }
    HRESULT Tell(ULONGLONG& pos) noexcept { return Move(0, STREAM_SEEK_CUR, &pos); }
    HRESULT BytesLeft(ULONGLONG& count) noexcept
    {
        // A stream that cannot tell its size leaves the reads to find its end.
        STATSTG stat = {};
        ULONGLONG pos = 0;
        if (FAILED(m_s->Stat(&stat, STATFLAG_NONAME)) || FAILED(Tell(pos)))
            count = ~0ull;
        else
            count = stat.cbSize.QuadPart > pos ? stat.cbSize.QuadPart - pos : 0;
        return S_OK;
    }

private:
    HRESULT Move(ULONGLONG distance, DWORD origin, ULONGLONG* pos) noexcept
    {
        // A count the stream would take as a move backwards fails as a read past the end would.
        if (distance > (1ull << 62)) return TQ_E_READFAILED;
        LARGE_INTEGER move;
        move.QuadPart = static_cast<LONGLONG>(distance);
        ULARGE_INTEGER now = {};
        if (FAILED(m_s->Seek(move, origin, &now))) return TQ_E_READFAILED;
        if (pos) *pos = now.QuadPart;
        return S_OK;
    }

    IStream* m_s;
};

// Loads the display list from the top level of a RIFF, RF64 or Wave64 file. A walk that ends in
// damage keeps what it loaded before.
void LoadFromFile(HANDLE file, tDISPLIST& list)
{
    ULONGLONG bound = 0;
    if (SUCCEEDED(riff64_ReadFileID(file, &bound, nullptr)))
    {
        Wave64Framing framing(file);
        tq::summary::LoadDisplay(framing, &list, &bound);
        return;
    }
    // The walk to the audio reads the ds64 on its way and gives the form's end.
    ULONGLONG fileEnd = 0;
    if (RF64_FindChunk(file, RIFF_ID_DATA, nullptr, FALSE, nullptr, nullptr, &fileEnd) &&
        fileEnd >= 12)
    {
        Rf64Framing framing(file);
        bound = fileEnd - 12;
        if (SUCCEEDED(riff_SeekDataStart(file))) tq::summary::LoadDisplay(framing, &list, &bound);
        return;
    }
    DWORD size = 0;
    RiffFraming framing(file);
    if (SUCCEEDED(framing.Cursor().SeekTo(0)) && SUCCEEDED(riff_ReadFileID(file, &size, nullptr)))
    {
        bound = size;
        tq::summary::LoadDisplay(framing, &list, &bound);
    }
}

// A device-independent bitmap whose header, colour table and rows all lie within size bytes,
// as a DIB section; null for anything else.
HBITMAP BitmapFromDib(const BYTE* dib, DWORD size)
{
    BITMAPINFOHEADER header;
    if (size < sizeof header) return nullptr;
    std::memcpy(&header, dib, sizeof header);
    if (header.biSize < sizeof header || header.biSize > size || header.biWidth <= 0 ||
        header.biHeight == 0 || header.biHeight == LONG_MIN || header.biPlanes != 1)
        return nullptr;
    const WORD bits = header.biBitCount;
    if (bits != 1 && bits != 4 && bits != 8 && bits != 16 && bits != 24 && bits != 32)
        return nullptr;
    ULONGLONG colours = 0;
    if (header.biCompression == BI_BITFIELDS && (bits == 16 || bits == 32))
        colours = header.biSize == sizeof header ? 3 : 0;
    else if (header.biCompression != BI_RGB)
        return nullptr;
    else
        colours = bits <= 8 && !header.biClrUsed ? 1u << bits : header.biClrUsed;
    if (bits <= 8 && colours > (1u << bits)) return nullptr;
    const ULONGLONG rows = header.biHeight < 0 ? -static_cast<LONGLONG>(header.biHeight)
                                               : static_cast<ULONGLONG>(header.biHeight);
    const ULONGLONG stride = (static_cast<ULONGLONG>(header.biWidth) * bits + 31) / 32 * 4;
    const ULONGLONG offset = header.biSize + colours * sizeof(RGBQUAD);
    if (offset > size || rows > (size - offset) / stride) return nullptr;
    void* pixels = nullptr;
    const HBITMAP bitmap = CreateDIBSection(nullptr, reinterpret_cast<const BITMAPINFO*>(dib),
                                            DIB_RGB_COLORS, &pixels, nullptr, 0);
    if (bitmap && pixels) std::memcpy(pixels, dib + offset, static_cast<size_t>(stride * rows));
    return bitmap;
}

} // namespace

TQKERNEL_API HRESULT displist_LoadFromStream(IStream* stream, tDISPLIST* list, DWORD* remaining)
{
    if (!stream || !remaining) return E_POINTER;
    StreamSource source(stream);
    ULONGLONG bound = *remaining;
    const HRESULT hr = tq::summary::WalkDisplay(source, list, &bound);
    *remaining = static_cast<DWORD>(bound);
    return hr;
}

TQKERNEL_API HBITMAP displist_CreateBitmapFromFile(const WCHAR* path)
{
    if (!path) return nullptr;
    tq::UniqueFile file(CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (file.Get() == INVALID_HANDLE_VALUE) return nullptr;
    tDISPLIST list = {};
    if (FAILED(displist_Create(&list))) return nullptr;
    LoadFromFile(file.Get(), list);
    const tDISPITEM* picture = displist_GetItem(&list, CF_DIB);
    const HBITMAP bitmap =
        picture && picture->data
            ? BitmapFromDib(static_cast<const BYTE*>(picture->data), picture->size)
            : nullptr;
    displist_Destroy(&list);
    return bitmap;
}
