// Marker lookup in the "MARK" chunk of an AIFF file.
#include "iff.h"

#include "filecursor.h"

using tq::riff::FileCursor;

namespace {

constexpr DWORD kCountBytes = 2;
constexpr DWORD kEntryBytes = sizeof(tAIFFMARKER); // 7

} // namespace

TQKERNEL_API HRESULT iff_FindMarker(HANDLE file, tAIFFMARKER* entry, WORD markerId)
{
    if (!entry) return E_POINTER;
    DWORD size = 0;
    if (const HRESULT hr = iff_FindChunkFromStart(file, IFF_ID_MARK, &size); FAILED(hr)) return hr;
    WORD count = 0;
    if (size < kCountBytes || FAILED(iff_ReadWORD(file, &count))) return TQ_E_NOTFOUND;
    DWORD left = size - kCountBytes;
    FileCursor c(file);
    for (WORD i = 0; i < count && left >= kEntryBytes; ++i)
    {
        if (FAILED(c.Read(entry, kEntryBytes))) return TQ_E_NORIFFHEADER;
        left -= kEntryBytes;
        iff_ByteSwap16(&entry->id, 1);
        iff_ByteSwap32(&entry->position, 1);
        if (entry->id == markerId) return S_OK;
        // Length byte and name together take an even count.
        const DWORD name = entry->nameLength + ((entry->nameLength & 1) ? 0 : 1);
        if (name > left) break;
        if (FAILED(c.Skip(name))) break;
        left -= name;
    }
    return TQ_E_NOTFOUND;
}
