// Broadcast-wave metadata on RIFF files.
#include "chunkframing.h"

#include <initializer_list>

using tq::media::Clamp32;
using namespace tq::bwf;
using tq::media::RiffFraming;

namespace {

// Closes the handle it was given on every path out.
class OwnedFile
{
public:
    explicit OwnedFile(HANDLE file) noexcept : m_file(file) {}
    OwnedFile(const OwnedFile&) = delete;
    OwnedFile& operator=(const OwnedFile&) = delete;
    ~OwnedFile()
    {
        if (m_file != INVALID_HANDLE_VALUE) ::CloseHandle(m_file);
    }
    HANDLE Get() const noexcept { return m_file; }

private:
    HANDLE m_file;
};

} // namespace

TQKERNEL_API HRESULT bwfriff_LoadInfo(HANDLE file, _tagTQBWF_Chunk* chunk, BOOL* found)
{
    RiffFraming framing(file);
    return LoadInfo(framing, chunk, found, false);
}

TQKERNEL_API HRESULT bwfriff_LoadTimestampInfoQuick(const WCHAR* path, _tagTQBWF_Chunk* chunk,
                                                    BOOL* found)
{
    if (!path || !chunk || !found) return E_INVALIDARG;
    OwnedFile file(::CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                 OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (file.Get() == INVALID_HANDLE_VALUE)
    {
        *found = FALSE;
        return TQ_E_OPENFAILED;
    }
    RiffFraming framing(file.Get());
    return LoadInfo(framing, chunk, found, true);
}

TQKERNEL_API HRESULT ReadFilePropsFromFormatChunk(HANDLE file, DWORD* sampleRate,
                                                  WORD* bitsPerSample, WORD* channels)
{
    RiffFraming framing(file);
    return ReadFormat(framing, sampleRate, bitsPerSample, channels);
}

TQKERNEL_API HRESULT bwfriff_UpdateStreamChunk(DWORD kind, HANDLE file, const void* data,
                                               DWORD size, DWORD* written)
{
    RiffFraming framing(file);
    ULONGLONG grown = 0;
    const HRESULT hr = UpdateStreamChunk(framing, kind, data, size, &grown);
    if (written) *written = Clamp32(grown);
    return hr;
}

TQKERNEL_API HRESULT bwfriff_DeleteChunk(DWORD kind, HANDLE file, DWORD* bytes)
{
    RiffFraming framing(file);
    ULONGLONG removed = 0;
    const HRESULT hr = DeleteChunk(framing, kind, &removed);
    if (bytes) *bytes = Clamp32(removed);
    return hr;
}

TQKERNEL_API HRESULT bwfriff_DeleteAllChunks(HANDLE file, DWORD* bytes)
{
    if (bytes) *bytes = 0;
    DWORD total = 0;
    for (DWORD kind : {BWF_CHUNK_BEXT, BWF_CHUNK_IXML})
    {
        DWORD removed = 0;
        if (const HRESULT hr = bwfriff_DeleteChunk(kind, file, &removed); FAILED(hr)) return hr;
        total += removed;
        if (bytes) *bytes = total;
    }
    return S_OK;
}
