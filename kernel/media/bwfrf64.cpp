// Broadcast-wave metadata on RF64 files, and on plain RIFF files given to the RF64 forms.
#include "chunkframing.h"

using namespace tq::bwf;
using tq::media::Rf64Framing;
using tq::media::RiffFraming;

namespace {

// Runs f on the framing the file has: RF64 with its ds64, else plain RIFF.
template <class F>
HRESULT OnFraming(HANDLE file, F f)
{
    if (Rf64Framing::HasDs64(file))
    {
        Rf64Framing framing(file);
        return f(framing);
    }
    RiffFraming framing(file);
    return f(framing);
}

} // namespace

TQKERNEL_API HRESULT bwfriffRF64_LoadInfo(HANDLE file, _tagTQBWF_Chunk* chunk, BOOL* found)
{
    return OnFraming(file, [&](Framing& f) { return LoadInfo(f, chunk, found, false); });
}

TQKERNEL_API HRESULT ReadFilePropsFromFormatChunkRF64(HANDLE file, DWORD* sampleRate,
                                                      WORD* bitsPerSample, WORD* channels)
{
    return OnFraming(
        file, [&](Framing& f) { return ReadFormat(f, sampleRate, bitsPerSample, channels); });
}

TQKERNEL_API HRESULT bwfRF64_UpdateStreamChunk(DWORD kind, HANDLE file, const void* data,
                                               DWORD size, ULONGLONG* written)
{
    return OnFraming(file,
                     [&](Framing& f) { return UpdateStreamChunk(f, kind, data, size, written); });
}

TQKERNEL_API HRESULT bwfRF64_DeleteChunk(DWORD kind, HANDLE file, ULONGLONG* bytes)
{
    return OnFraming(file, [&](Framing& f) { return DeleteChunk(f, kind, bytes); });
}
