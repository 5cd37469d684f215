// Broadcast-wave metadata on Wave64 files.
#include "chunkframing.h"

#include <initializer_list>

using namespace tq::bwf;
using tq::media::Wave64Framing;

TQKERNEL_API HRESULT bwfriff64_LoadInfo(HANDLE file, _tagTQBWF_Chunk* chunk, BOOL* found)
{
    Wave64Framing framing(file);
    return LoadInfo(framing, chunk, found, false);
}

TQKERNEL_API HRESULT ReadFilePropsFromFormatChunk64(HANDLE file, DWORD* sampleRate,
                                                    WORD* bitsPerSample, WORD* channels)
{
    Wave64Framing framing(file);
    return ReadFormat(framing, sampleRate, bitsPerSample, channels);
}

TQKERNEL_API HRESULT bwfriff64_UpdateStreamChunk(DWORD kind, HANDLE file, const void* data,
                                                 DWORD size, ULONGLONG* written)
{
    Wave64Framing framing(file);
    return UpdateStreamChunk(framing, kind, data, size, written);
}

TQKERNEL_API HRESULT bwfriff64_DeleteChunk(DWORD kind, HANDLE file, ULONGLONG* bytes)
{
    Wave64Framing framing(file);
    return DeleteChunk(framing, kind, bytes);
}

TQKERNEL_API HRESULT bwfriff64_DeleteAllChunks(HANDLE file, ULONGLONG* bytes)
{
    if (bytes) *bytes = 0;
    ULONGLONG total = 0;
    for (DWORD kind : {BWF_CHUNK_BEXT, BWF_CHUNK_IXML})
    {
        ULONGLONG removed = 0;
        if (const HRESULT hr = bwfriff64_DeleteChunk(kind, file, &removed); FAILED(hr)) return hr;
        total += removed;
        if (bytes) *bytes = total;
    }
    return S_OK;
}
