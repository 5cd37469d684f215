// Broadcast-wave metadata under the fuzz program: the input is a wave file whose bext and iXML
// are loaded, written back into the same file, and loaded again; its bytes are also walked as
// an iXML document on their own.
#include "fuzztarget.h"

#include "bwf.h"

#include <cstring>

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

Bytes Wave(const Bytes& chunks)
{
    Bytes body = {'W', 'A', 'V', 'E'};
    Append(body, Chunk("fmt ", {1, 0, 2, 0, 0x80, 0xBB, 0, 0, 0, 0xEE, 2, 0, 4, 0, 16, 0}));
    Append(body, chunks);
    return Chunk("RIFF", body);
}

Bytes Bext(const char* history)
{
    Bytes b(602);
    std::memcpy(b.data(), "Description", 11);
    std::memcpy(&b[320], "2026-11-2401:02:03", 18);
    b[338] = 0x40;
    b[346] = 1;
    Append(b, Bytes(history, history + std::strlen(history)));
    return b;
}

Bytes Text(const char* s)
{
    return Bytes(s, s + std::strlen(s));
}

const char kIxml[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<BWFXML><IXML_VERSION>1.52</IXML_VERSION>"
    "<PROJECT>P &amp; Q</PROJECT><X_VENDOR a=\"1\"><Y>z</Y></X_VENDOR><circled>TRUE</circled>"
    "<SPEED><NOTE>n</NOTE><TIMECODE_RATE>25/1</TIMECODE_RATE></SPEED><TRACK_LIST>"
    "<TRACK_COUNT>2</TRACK_COUNT><TRACK><CHANNEL_INDEX>1</CHANNEL_INDEX><NAME>a</NAME>"
    "<COLOUR>red</COLOUR></TRACK><TRACK><CHANNEL_INDEX>2</CHANNEL_INDEX></TRACK></TRACK_LIST>"
    "<SYNC_POINT_LIST><SYNC_POINT><SYNC_POINT_LOW>5</SYNC_POINT_LOW></SYNC_POINT>"
    "</SYNC_POINT_LIST></BWFXML>";

} // namespace

std::vector<Bytes> BwfSeeds()
{
    const Bytes data = Chunk("data", Bytes(64, 1));
    Bytes both = Chunk("bext", Bext("A=PCM\r\n"));
    Append(both, Chunk("iXML", Text(kIxml)));
    Append(both, data);
    Bytes upper = Chunk("BEXT", Bext(""));
    Append(upper, data);
    Append(upper, Chunk("JUNK", Bytes(8)));
    Append(upper, Chunk("iXML", Text(kIxml)));
    // RF64: ds64 with the true sizes, "data" marked as sized there.
    Bytes rf64 = {'R', 'F', '6', '4', 0xFF, 0xFF, 0xFF, 0xFF, 'W', 'A', 'V', 'E'};
    Bytes ds64 = Bytes(28);
    Append(rf64, Chunk("ds64", ds64));
    Append(rf64, Chunk("fmt ", {1, 0, 1, 0, 0x44, 0xAC, 0, 0, 0x88, 0x58, 1, 0, 2, 0, 16, 0}));
    Append(rf64, Chunk("bext", Bext("A=PCM\r\n")));
    Append(rf64, {'d', 'a', 't', 'a', 0xFF, 0xFF, 0xFF, 0xFF});
    Append(rf64, Bytes(16, 3));
    Append(rf64, Chunk("iXML", Text(kIxml)));
    const ULONGLONG riffSize = rf64.size() - 8, dataSize = 16;
    std::memcpy(&rf64[20], &riffSize, 8);
    std::memcpy(&rf64[28], &dataSize, 8);
    return {Wave(both), Wave(upper), Text(kIxml), rf64};
}

HRESULT RunBwf(FuzzContext& context)
{
    _tagTQBWF_Chunk chunk = {};
    ExtractIxmlContent(context.Data(), static_cast<DWORD>(context.Size()), &chunk);
    FreeBwfChunkGlobal(&chunk);

    HANDLE file = context.File();
    if (file == INVALID_HANDLE_VALUE) return E_HANDLE;
    BOOL found = FALSE;
    const HRESULT hr = bwfriff_LoadInfo(file, &chunk, &found);
    DWORD rate = 0;
    WORD bits = 0, channels = 0;
    ReadFilePropsFromFormatChunk(file, &rate, &bits, &channels);
    if (found)
    {
        // What was read goes back into the file it came from, and is read once more.
        void* bext = nullptr;
        DWORD size = 0;
        if (SUCCEEDED(BuildRawBwfIxmlChunkGlobal(&chunk, &bext, &size, BWF_CHUNK_BEXT, 0, 0)))
        {
            bwfriff_UpdateStreamChunk(BWF_CHUNK_BEXT, file, bext, size, nullptr);
            GlobalUnlock(GlobalHandle(bext));
            GlobalFree(GlobalHandle(bext));
        }
        BuildAndWriteRawIxmlChunk(file, &chunk, BWF_RIFF);
        bwfriff_LoadInfo(file, &chunk, &found);
        DWORD removed = 0;
        bwfriff_DeleteAllChunks(file, &removed);
    }
    FreeBwfChunkGlobal(&chunk);
    // The same bytes through the wide framings, which refuse or read them on their own terms.
    bwfriff64_LoadInfo(file, &chunk, &found);
    FreeBwfChunkGlobal(&chunk);
    if (SUCCEEDED(bwfriffRF64_LoadInfo(file, &chunk, &found)) && found)
    {
        BuildAndWriteRawIxmlChunk(file, &chunk, BWF_RF64);
        ULONGLONG removed = 0;
        bwfRF64_DeleteChunk(BWF_CHUNK_BEXT, file, &removed);
    }
    FreeBwfChunkGlobal(&chunk);
    return hr;
}

} // namespace tqfuzz
