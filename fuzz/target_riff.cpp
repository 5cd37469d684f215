// The RIFF layer under the fuzz program: searches, list walks, text and block reads and deletion
// on the input as a file, and the memory twin on the input in guarded memory.
#include "fuzztarget.h"

#include "mriff.h"
#include "riff.h"

namespace tqfuzz {

namespace {

void Append(Bytes& b, const Bytes& more)
{
    b.insert(b.end(), more.begin(), more.end());
}

Bytes LE32(DWORD v)
{
    return {BYTE(v), BYTE(v >> 8), BYTE(v >> 16), BYTE(v >> 24)};
}

Bytes Chunk(const char* id, const Bytes& data)
{
    Bytes b(id, id + 4);
    Append(b, LE32(static_cast<DWORD>(data.size())));
    Append(b, data);
    if (data.size() & 1) b.push_back(0);
    return b;
}

Bytes Riff(const char* form, const Bytes& chunks)
{
    Bytes b = {'R', 'I', 'F', 'F'};
    Append(b, LE32(static_cast<DWORD>(chunks.size() + 4)));
    Append(b, Bytes(form, form + 4));
    Append(b, chunks);
    return b;
}

Bytes Fmt()
{
    return Chunk("fmt ", {1, 0, 2, 0, 0x44, 0xAC, 0, 0, 0x10, 0xB1, 2, 0, 4, 0, 16, 0});
}

Bytes Info()
{
    Bytes entries = {'I', 'N', 'F', 'O'};
    Append(entries, Chunk("INAM", {'t', 'i', 't', 'l', 'e', 0}));
    Append(entries, Chunk("ICMT", {'o', 'd', 'd', 0, 0}));
    return Chunk("LIST", entries);
}

} // namespace

std::vector<Bytes> RiffSeeds()
{
    Bytes wave = Fmt();
    Append(wave, Info());
    Append(wave, Chunk("data", Bytes(64, 0x33)));
    Bytes cda = Chunk("fmt ", Bytes(24, 1));
    Bytes odd = Fmt();
    Append(odd, Chunk("bext", Bytes(7, 'b')));
    Append(odd, Chunk("data", Bytes(5, 0x44)));
    Append(odd, Info());
    return {Riff("WAVE", wave), Riff("CDDA", cda), Riff("WAVE", odd)};
}

HRESULT RunRiff(FuzzContext& context)
{
    HANDLE file = context.File();
    if (file == INVALID_HANDLE_VALUE) return E_HANDLE;
    DWORD size = 0;
    const HRESULT found = riff_FindChunkHeaderInRIFF(file, RIFF_ID_FMT, &size, nullptr);
    if (SUCCEEDED(found))
    {
        tRIFFBLOCK block = {size, nullptr};
        if (SUCCEEDED(riff_ReadDataAlloc(file, &block)) && block.data)
        {
            const HGLOBAL h = GlobalHandle(block.data);
            GlobalUnlock(h);
            GlobalFree(h);
        }
    }
    DWORD listSize = 0;
    if (SUCCEEDED(riff_FindListChunkFromStart(file, RIFF_ID_INFO, &listSize)))
    {
        DWORD count = 0;
        riff_GetNumListEntries(file, &count, &listSize);
        DWORD id = 0, textSize = 0;
        if (SUCCEEDED(riff_ReadChunkHeader(file, &id, &textSize)))
            riff_ReadANSIString(file, context.Out<WCHAR>(16), 16, &textSize);
        riff_SeekListEntry(file, 1, &listSize);
    }
    DWORD fileSize = 0;
    riff_GetFileSize(file, &fileSize);

    // The memory twin reads the same bytes in place.
    auto* wfx = context.Out<WAVEFORMATEX>(1);
    DWORD dataBytes = 0;
    mriff_GetWfx(wfx, context.Data(), static_cast<DWORD>(context.Size()), &dataBytes);
    _tMRIFF m;
    if (SUCCEEDED(mriff_Init(&m, const_cast<BYTE*>(context.Data()),
                             static_cast<DWORD>(context.Size()),
                             static_cast<DWORD>(context.Size()))))
    {
        DWORD remaining = static_cast<DWORD>(context.Size());
        mriff_SeekDataStart(&m);
        mriff_GetInfoString(&m, RIFF_ID('I', 'N', 'A', 'M'), context.Out<char>(8, 1), 8,
                            &remaining);
    }
    // Deletion writes, so it runs on every fourth input only, and last.
    if (context.Size() % 4 == 0)
    {
        static const DWORD ids[] = {RIFF_ID_INFO, RIFF_ID_FMT, RIFF_ID_DATA,
                                    RIFF_ID('b', 'e', 'x', 't')};
        const DWORD id = ids[context.Size() / 4 % 4];
        riff_DeleteChunk(file, id, context.Out<DWORD>(1, 2), id == RIFF_ID_INFO);
    }
    return found;
}

} // namespace tqfuzz
