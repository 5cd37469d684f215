// Replacing and removing the bext and iXML chunks of a file, over any framing.
#include "chunkframing.h"

namespace tq::bwf {

namespace {

DWORD IdOf(DWORD kind)
{
    return kind == BWF_CHUNK_BEXT ? RIFF_ID_BEXT : RIFF_ID_IXML;
}

} // namespace

HRESULT UpdateStreamChunk(Framing& framing, DWORD kind, const void* data, DWORD size,
                          ULONGLONG* written) noexcept
{
    if (written) *written = 0;
    if (kind != BWF_CHUNK_BEXT && kind != BWF_CHUNK_IXML) return E_INVALIDARG;
    // bext may be spelt in capitals; an update keeps the spelling it finds.
    const DWORD alternate = kind == BWF_CHUNK_BEXT ? RIFF_ID_BEXT_UPPER : 0;
    return tq::media::ReplaceChunk(framing, IdOf(kind), alternate, data, size,
                                   tq::media::ChunkSizing::KeepOld, written);
}

HRESULT DeleteChunk(Framing& framing, DWORD kind, ULONGLONG* bytes) noexcept
{
    if (bytes) *bytes = 0;
    if (kind != BWF_CHUNK_BEXT && kind != BWF_CHUNK_IXML) return E_INVALIDARG;
    ULONGLONG removed = 0;
    HRESULT hr = framing.Delete(IdOf(kind), removed);
    if (hr == TQ_E_NOTFOUND && kind == BWF_CHUNK_BEXT)
        hr = framing.Delete(RIFF_ID_BEXT_UPPER, removed);
    if (hr == TQ_E_NOTFOUND) return S_OK;
    if (FAILED(hr)) return hr;
    if (bytes) *bytes = removed;
    return S_OK;
}

} // namespace tq::bwf
