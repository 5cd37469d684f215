// The AIFF layer under the fuzz program: recognition, format (float AIFF-C too), marker lookup,
// markers to cue points and back, and deletion on the input as a file.
#include "cuemark.h"
#include "fuzztarget.h"

#include "iff.h"

#include <cstring>

namespace tqfuzz {

namespace {

void Append(Bytes& b, const Bytes& more)
{
    b.insert(b.end(), more.begin(), more.end());
}

Bytes Text(const char* s)
{
    return Bytes(s, s + 4);
}

Bytes BE32(DWORD v)
{
    return {BYTE(v >> 24), BYTE(v >> 16), BYTE(v >> 8), BYTE(v)};
}

Bytes BE16(WORD v)
{
    return {BYTE(v >> 8), BYTE(v)};
}

Bytes Chunk(const char* id, const Bytes& data)
{
    Bytes b = Text(id);
    Append(b, BE32(static_cast<DWORD>(data.size())));
    Append(b, data);
    if (data.size() & 1) b.push_back(0);
    return b;
}

Bytes Comm(WORD channels, DWORD frames, WORD bits, DWORD rate, const char* compression,
           const Bytes& name = {})
{
    WORD exponent = 0, mantissa[4] = {};
    aiff_CreateRate(rate, &exponent, mantissa);
    Bytes b = BE16(channels);
    Append(b, BE32(frames));
    Append(b, BE16(bits));
    Append(b, BE16(exponent));
    for (WORD m : mantissa)
        Append(b, BE16(m));
    if (compression) Append(b, Text(compression));
    Append(b, name);
    return Chunk("COMM", b);
}

Bytes File(const char* form, const Bytes& chunks)
{
    Bytes b = Text("FORM");
    Append(b, BE32(static_cast<DWORD>(chunks.size() + 4)));
    Append(b, Text(form));
    Append(b, chunks);
    return b;
}

Bytes Ssnd(DWORD offset, size_t sampleBytes)
{
    Bytes b = BE32(offset);
    Append(b, BE32(0));
    b.resize(b.size() + offset + sampleBytes, 0x5A);
    return Chunk("SSND", b);
}

Bytes Mark()
{
    Bytes b = BE16(2);
    Append(b, BE16(1));
    Append(b, BE32(10));
    Append(b, {3, 'o', 'n', 'e'});
    Append(b, BE16(2));
    Append(b, BE32(20));
    Append(b, {2, 't', 'w', 0});
    return Chunk("MARK", b);
}

Bytes Le32(DWORD v)
{
    return {BYTE(v), BYTE(v >> 8), BYTE(v >> 16), BYTE(v >> 24)};
}

// Cue points and their labels, little-endian inside as in a WAV file, framed here as IFF chunks
// so that the AIFF mutations reach the conversion's parsers too.
Bytes CueAndLabels()
{
    Bytes cue = Le32(2);
    for (DWORD id : {1u, 7u})
    {
        Append(cue, Le32(id));
        Append(cue, Le32(id * 10));
        Append(cue, Text("data"));
        Append(cue, Bytes(8, 0));
        Append(cue, Le32(id * 10));
    }
    Bytes labels = Text("adtl");
    Append(labels, Text("labl"));
    Append(labels, Le32(9));
    Append(labels, Le32(7));
    Append(labels, {'s', 'e', 'v', 'n', 0, 0});
    Append(labels, Text("note"));
    Append(labels, Le32(6));
    Append(labels, Le32(1));
    Append(labels, {'n', 0});
    Bytes b = Chunk("cue ", cue);
    Append(b, Chunk("LIST", labels));
    return b;
}

// The data of the first chunk of that id, copied to guarded memory of its exact size.
const BYTE* ChunkData(FuzzContext& context, DWORD id, int slot, DWORD& size)
{
    size = 0;
    HANDLE file = context.File();
    DWORD found = 0;
    if (FAILED(iff_FindChunkFromStart(file, id, &found))) return nullptr;
    Bytes data(std::min<DWORD>(found, 1u << 16));
    DWORD got = 0;
    if (!ReadFile(file, data.data(), static_cast<DWORD>(data.size()), &got, nullptr) || got == 0)
        return nullptr;
    BYTE* copy = context.Out<BYTE>(got, slot);
    std::memcpy(copy, data.data(), got);
    size = got;
    return copy;
}

void ConvertMarkers(FuzzContext& context)
{
    DWORD markSize = 0;
    if (const BYTE* mark = ChunkData(context, IFF_ID_MARK, 0, markSize))
    {
        DWORD cueSize = 0, adtlSize = 0;
        if (SUCCEEDED(
                riff_CueFromMark(mark, markSize, nullptr, 0, &cueSize, nullptr, 0, &adtlSize)))
            riff_CueFromMark(mark, markSize, context.Out<BYTE>(cueSize, 2), cueSize, &cueSize,
                             context.Out<BYTE>(adtlSize, 3), adtlSize, &adtlSize);
    }
    DWORD cueSize = 0, adtlSize = 0;
    const BYTE* cue = ChunkData(context, IFF_ID('c', 'u', 'e', ' '), 0, cueSize);
    const BYTE* adtl = ChunkData(context, IFF_ID('L', 'I', 'S', 'T'), 1, adtlSize);
    DWORD size = 0;
    if (cue && SUCCEEDED(iff_MarkFromCue(cue, cueSize, adtl, adtlSize, nullptr, 0, &size)))
        iff_MarkFromCue(cue, cueSize, adtl, adtlSize, context.Out<BYTE>(size, 2), size, &size);
}

} // namespace

std::vector<Bytes> AiffSeeds()
{
    Bytes aiff = Comm(2, 100, 16, 44100, nullptr);
    Append(aiff, Mark());
    Append(aiff, Ssnd(0, 400));
    Bytes aifc = Chunk("FVER", BE32(0xA2805140));
    Append(aifc, Comm(1, 50, 8, 22050, "sowt"));
    Append(aifc, Chunk("ANNO", Bytes{'n', 'o', 't', 'e', 's'}));
    Append(aifc, Ssnd(4, 50));
    Bytes wide = Comm(6, 10, 24, 96000, "NONE");
    Append(wide, Ssnd(0, 180));
    Append(wide, Mark());
    Bytes floats = Chunk("FVER", BE32(0xA2805140));
    const char* name = "32-bit floating point";
    Bytes counted = {BYTE(std::strlen(name))};
    Append(counted, Bytes(name, name + std::strlen(name)));
    const Bytes comm = Comm(2, 20, 32, 48000, "fl32", counted);
    Append(floats, comm);
    Append(floats, Mark());
    Append(floats, CueAndLabels());
    Append(floats, Ssnd(0, 160));
    return {File("AIFF", aiff), File("AIFC", aifc), File("AIFC", wide), File("AIFC", floats)};
}

HRESULT RunAiff(FuzzContext& context)
{
    HANDLE file = context.File();
    if (file == INVALID_HANDLE_VALUE) return E_HANDLE;
    auto* wfx = context.Out<WAVEFORMATEX>(1);
    auto* frames = context.Out<DWORD>(1, 1);
    auto* dataStart = context.Out<DWORD>(1, 2);
    const HRESULT format = iff_GetAIFFWfx(file, wfx, frames, dataStart);
    iff_GetAIFFWfxEx(file, context.Out<WAVEFORMATEX>(1), context.Out<DWORD>(1, 1),
                     context.Out<DWORD>(1, 2), context.Out<BOOL>(1, 3));
    auto* marker = context.Out<tAIFFMARKER>(1, 3);
    iff_FindMarker(file, marker, 2);
    ConvertMarkers(context);
    // Deletion writes, so it runs on every fourth input only, and last.
    if (context.Size() % 4 == 0)
    {
        static const DWORD ids[] = {IFF_ID_MARK, IFF_ID_COMM, IFF_ID_SSND,
                                    IFF_ID('A', 'N', 'N', 'O')};
        auto* removed = context.Out<DWORD>(1, 1);
        iff_DeleteChunk(file, ids[context.Size() / 4 % 4], removed);
    }
    return format;
}

} // namespace tqfuzz
