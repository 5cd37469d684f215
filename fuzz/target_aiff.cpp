// The AIFF layer under the fuzz program: recognition, format, marker lookup and deletion on
// the input as a file.
#include "fuzztarget.h"

#include "iff.h"

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

Bytes Comm(WORD channels, DWORD frames, WORD bits, DWORD rate, const char* compression)
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
    return {File("AIFF", aiff), File("AIFC", aifc), File("AIFC", wide)};
}

HRESULT RunAiff(FuzzContext& context)
{
    HANDLE file = context.File();
    if (file == INVALID_HANDLE_VALUE) return E_HANDLE;
    auto* wfx = context.Out<WAVEFORMATEX>(1);
    auto* frames = context.Out<DWORD>(1, 1);
    auto* dataStart = context.Out<DWORD>(1, 2);
    const HRESULT format = iff_GetAIFFWfx(file, wfx, frames, dataStart);
    auto* marker = context.Out<tAIFFMARKER>(1, 3);
    iff_FindMarker(file, marker, 2);
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
