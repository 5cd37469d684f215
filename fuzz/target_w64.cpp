// The Wave64 layer under the fuzz program: searches, list walks, block reads, the format of the
// file, deletion and repair on the input as a file.
#include "fuzztarget.h"

#include "riff64.h"
#include "wavefile.h"

#include <cstdlib>

namespace tqfuzz {

namespace {

const GUID kInfo = {0x6F666E69, 0x0001, 0x0002, {1, 2, 3, 4, 5, 6, 7, 8}};

void Append(Bytes& b, const void* data, size_t count)
{
    const auto* p = static_cast<const BYTE*>(data);
    b.insert(b.end(), p, p + count);
}

// A chunk written in one go, or finished afterwards with its padding counted.
Bytes Chunk(const GUID& id, const Bytes& data, bool sizeCountsPadding = false)
{
    const size_t padded = (data.size() + 7) & ~size_t(7);
    const ULONGLONG stored = 24 + (sizeCountsPadding ? padded : data.size());
    Bytes b;
    Append(b, &id, sizeof id);
    Append(b, &stored, sizeof stored);
    Append(b, data.data(), data.size());
    b.resize(b.size() + padded - data.size(), 0);
    return b;
}

Bytes File(const Bytes& chunks)
{
    const ULONGLONG stored = 40 + chunks.size();
    Bytes b;
    Append(b, &RIFF64_GUID_RIFF, sizeof(GUID));
    Append(b, &stored, sizeof stored);
    Append(b, &RIFF64_GUID_WAVE, sizeof(GUID));
    Append(b, chunks.data(), chunks.size());
    return b;
}

Bytes Fmt(WORD channels, WORD bits, DWORD fmtBytes)
{
    WAVEFORMATEX wfx = {WAVE_FORMAT_PCM, channels, 48000, 0, WORD(channels * bits / 8), bits, 0};
    wfx.nAvgBytesPerSec = 48000u * wfx.nBlockAlign;
    Bytes b;
    Append(b, &wfx, fmtBytes < sizeof wfx ? fmtBytes : sizeof wfx);
    b.resize(fmtBytes, 0);
    return Chunk(RIFF64_GUID_FMT, b);
}

Bytes List(const Bytes& entries)
{
    Bytes b;
    Append(b, &kInfo, sizeof kInfo);
    Append(b, entries.data(), entries.size());
    return Chunk(RIFF64_GUID_LIST, b, true);
}

} // namespace

std::vector<Bytes> W64Seeds()
{
    Bytes plain = Fmt(2, 16, 18);
    Bytes data = Chunk(RIFF64_GUID_DATA, Bytes(100, 0x21));
    plain.insert(plain.end(), data.begin(), data.end());
    Bytes listed = Fmt(1, 24, 16);
    Bytes entries = Chunk(kInfo, {'n', 'a', 'm', 'e'});
    Bytes more = Chunk(RIFF64_GUID_JUNK, Bytes(9, 0), true);
    entries.insert(entries.end(), more.begin(), more.end());
    Bytes list = List(entries);
    listed.insert(listed.end(), list.begin(), list.end());
    data = Chunk(RIFF64_GUID_DATA, Bytes(33, 0x44), true);
    listed.insert(listed.end(), data.begin(), data.end());
    return {File(plain), File(listed)};
}

HRESULT RunW64(FuzzContext& context)
{
    HANDLE file = context.File();
    if (file == INVALID_HANDLE_VALUE) return E_HANDLE;
    ULONGLONG size = 0;
    const HRESULT found = riff64_FindChunkHeaderInRIFF(file, &RIFF64_GUID_FMT, &size, nullptr);
    if (SUCCEEDED(found))
    {
        tRIFF64BLOCK block = {size, nullptr};
        if (SUCCEEDED(riff64_ReadDataAlloc(file, &block)) && block.data)
        {
            const HGLOBAL h = GlobalHandle(block.data);
            GlobalUnlock(h);
            GlobalFree(h);
        }
        riff64_ReadDataBounded(file, context.Out<BYTE>(16), size, 16);
    }
    ULONGLONG listSize = 0;
    if (SUCCEEDED(riff64_FindListChunkFromStart(file, &kInfo, &listSize)))
    {
        DWORD count = 0;
        riff64_GetNumListEntries(file, &count, &listSize);
        riff64_SeekListEntry(file, 1, &listSize);
        GUID id;
        riff64_ReadChunkHeader(file, &id, &size);
    }
    // Writes run on every fourth input only, and last: deletion, then repair.
    if (context.Size() % 4 == 0)
    {
        const GUID* ids[] = {&kInfo, &RIFF64_GUID_FMT, &RIFF64_GUID_DATA, &RIFF64_GUID_LIST};
        riff64_DeleteChunk(file, ids[context.Size() / 4 % 4], context.Out<ULONGLONG>(1, 1));
        TqFixTrashedW64(file, nullptr, context.Size() / 2);
    }
    // The wave utilities open the file by name.
    ULONGLONG* frames = context.Out<ULONGLONG>(1, 2);
    ULONGLONG* dataStart = context.Out<ULONGLONG>(1, 3);
    const wchar_t* path = context.FilePath();
    free(TqGetFileWfx(path, frames, dataStart));
    TqFileIsWave64(path, FALSE);
    return found;
}

} // namespace tqfuzz
