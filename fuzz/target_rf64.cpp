// The RF64 layer under the fuzz program: the ds64 walk, the searches behind the samples, size
// updates, deletion and WAV repair on the input as a file, and the wave utilities by name.
#include "fuzztarget.h"

#include "rf64.h"
#include "wavefile.h"

#include <cstdlib>

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

Bytes LE64(ULONGLONG v)
{
    Bytes b = LE32(static_cast<DWORD>(v));
    Append(b, LE32(static_cast<DWORD>(v >> 32)));
    return b;
}

Bytes Chunk(const char* id, const Bytes& data, DWORD sizeField)
{
    Bytes b(id, id + 4);
    Append(b, LE32(sizeField));
    Append(b, data);
    if (data.size() & 1) b.push_back(0);
    return b;
}

Bytes Chunk(const char* id, const Bytes& data)
{
    return Chunk(id, data, static_cast<DWORD>(data.size()));
}

Bytes Fmt()
{
    return Chunk("fmt ", {1, 0, 2, 0, 0x80, 0xBB, 0, 0, 0, 0xEE, 2, 0, 4, 0, 16, 0, 0, 0});
}

// "RF64" with ds64 sizes, the samples with their size only in ds64, and chunks behind them.
Bytes Rf64(const Bytes& samples, const Bytes& behind)
{
    Bytes chunks = Fmt();
    Append(chunks, Chunk("data", samples, 0xFFFFFFFF));
    Append(chunks, behind);
    const ULONGLONG riffSize = 4 + 36 + chunks.size();
    Bytes ds64 = LE64(riffSize);
    Append(ds64, LE64(samples.size()));
    Append(ds64, LE64(samples.size() / 4));
    Append(ds64, LE32(0));
    Bytes b = {'R', 'F', '6', '4', 0xFF, 0xFF, 0xFF, 0xFF, 'W', 'A', 'V', 'E'};
    Append(b, Chunk("ds64", ds64));
    Append(b, chunks);
    return b;
}

} // namespace

std::vector<Bytes> Rf64Seeds()
{
    Bytes info = {'I', 'N', 'F', 'O'};
    Append(info, Chunk("INAM", {'n', 'a', 'm', 'e', 0}));
    Bytes behind = Chunk("LIST", info);
    Append(behind, Chunk("bext", Bytes(20, 'b')));
    Bytes plain = {'R', 'I', 'F', 'F', 0, 0, 0, 0, 'W', 'A', 'V', 'E'};
    Append(plain, Fmt());
    Append(plain, Chunk("JUNK", Bytes(12, 0)));
    Append(plain, Chunk("data", Bytes(64, 0x12), 0));
    return {Rf64(Bytes(80, 0x31), behind), Rf64(Bytes(7, 0x55), {}), plain};
}

HRESULT RunRf64(FuzzContext& context)
{
    HANDLE file = context.File();
    if (file == INVALID_HANDLE_VALUE) return E_HANDLE;
    ULONGLONG size = 0, dataPos = 0, remaining = 0, fileEnd = 0;
    const BOOL found =
        RF64_FindChunk(file, RIFF_ID_DATA, &size, FALSE, &dataPos, &remaining, &fileEnd);
    RF64_FindChunk(file, RIFF_ID('b', 'e', 'x', 't'), &size, FALSE, nullptr, &remaining, nullptr);
    if (SUCCEEDED(SeekToRF64End(file)))
    {
        ULONGLONG listSize = 0;
        ULONGLONG bound = context.Size();
        RF64_FindListChunk(file, RIFF_ID_INFO, &listSize, &bound);
        DWORD count = 0;
        RF64_GetNumListEntries(file, &count, &listSize);
        RF64_FindChunkHeader(file, RIFF_ID('I', 'N', 'A', 'M'), &size, &listSize);
    }
    // Writes run on every fourth input only, and last: size update, deletion, then repair.
    if (context.Size() % 4 == 0)
    {
        static const DWORD ids[] = {RIFF_ID_INFO, RIFF_ID('b', 'e', 'x', 't'), RIFF_ID_FMT,
                                    RIFF_ID_DATA};
        const size_t pick = context.Size() / 4 % 4;
        RF64_UpdateRIFFSize(file, static_cast<LONGLONG>(pick) - 2);
        RF64_DeleteChunk(file, ids[pick], context.Out<ULONGLONG>(1, 1), pick == 0);
        TqFixTrashedWav(file, nullptr, static_cast<DWORD>(context.Size() / 2));
    }
    ULONGLONG* frames = context.Out<ULONGLONG>(1, 2);
    ULONGLONG* dataStart = context.Out<ULONGLONG>(1, 3);
    const wchar_t* path = context.FilePath();
    free(TqGetFileWfx(path, frames, dataStart));
    TqFileIsWave(path, FALSE);
    return found ? S_OK : TQ_E_NOTFOUND;
}

} // namespace tqfuzz
