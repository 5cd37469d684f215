// Tests of the memory twin of the RIFF layer: the twin functions against the file functions on
// the same bytes, the cursor's primitives, INFO texts and wave headers.
#include "mriff.h"

#include "tqwaveformat.h"

#include "kernel/media/riffimage.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace tq::test;

namespace {

// Calls the file function of a twin pair on a file, or the memory function on a cursor.
struct OnFile
{
    HANDLE h;
    ULONGLONG length;
    template <class F, class M, class... A>
    auto operator()(F f, M, A... a)
    {
        return f(h, a...);
    }
    // A file pointer may stand beyond the end; the memory cursor stops there.
    ULONGLONG Pos()
    {
        LARGE_INTEGER zero = {}, pos = {};
        ::SetFilePointerEx(h, zero, &pos, FILE_CURRENT);
        return std::min<ULONGLONG>(pos.QuadPart, length);
    }
};

struct OnMemory
{
    _tMRIFF* m;
    template <class F, class M, class... A>
    auto operator()(F, M f, A... a)
    {
        return f(m, a...);
    }
    ULONGLONG Pos() { return mriff_GetFilePointer(m); }
};

using Trace = std::vector<ULONGLONG>;

// One fixed walk: every result, every output and the cursor after each call.
template <class Api>
Trace Walk(Api& a)
{
    Trace t;
    auto note = [&](HRESULT hr, std::initializer_list<ULONGLONG> values = {}) {
        t.push_back(static_cast<ULONG>(hr));
        t.insert(t.end(), values);
        t.push_back(a.Pos());
        return hr;
    };
    DWORD size = 0, form = 0, left = 0, id = 0, count = 0, pos = 0;
    BYTE buffer[16] = {};
    note(a(riff_ReadFileID, mriff_ReadFileID, &size, &form), {size, form});

    if (SUCCEEDED(note(
            a(riff_FindChunkHeaderInRIFF, mriff_FindChunkHeaderInRIFF, RIFF_ID_FMT, &size, &left),
            {size, left})))
    {
        note(a(riff_ReadDataBounded, mriff_ReadDataBounded, buffer, size, DWORD{sizeof buffer}));
        t.insert(t.end(), buffer, buffer + sizeof buffer);
    }
    if (SUCCEEDED(note(
            a(riff_FindChunkHeaderInRIFF, mriff_FindChunkHeaderInRIFF, RIFF_ID_DATA, &size, &left),
            {size, left})))
    {
        tRIFFBLOCK block = {size, nullptr};
        note(a(riff_ReadDataAlloc, mriff_ReadDataAlloc, &block));
        if (block.data) t.insert(t.end(), static_cast<BYTE*>(block.data)[size - 1]);
        FreeBlock(block.data);
    }
    if (SUCCEEDED(
            note(a(riff_FindListChunkFromStart, mriff_FindListChunkFromStart, RIFF_ID_INFO, &size),
                 {size})))
    {
        note(a(riff_GetNumListEntries, mriff_GetNumListEntries, &count, &size), {count});
        note(a(riff_ReadChunkHeader, mriff_ReadChunkHeader, &id, &left), {id, left});
        note(a(riff_ReadData, mriff_ReadData, buffer, std::min<DWORD>(left, sizeof buffer)));
        t.insert(t.end(), buffer, buffer + sizeof buffer);
    }

    note(a(riff_SeekDataStart, mriff_SeekDataStart));
    for (int i = 0; i < 8; ++i)
    {
        if (FAILED(note(a(riff_ReadChunkHeader, mriff_ReadChunkHeader, &id, &size), {id, size})))
            break;
        t.push_back(a(riff_SkipChunk, mriff_SkipChunk, size));
    }
    for (DWORD bound : {7u, 1000u})
    {
        a(riff_SeekDataStart, mriff_SeekDataStart);
        left = bound;
        note(a(riff_FindChunkHeader, mriff_FindChunkHeader, RIFF_ID_DATA, &size, &left), {left});
        left = bound;
        note(a(riff_FindListChunk, mriff_FindListChunk, RIFF_ID_INFO, &size, &left), {left});
    }
    note(a(riff_SaveLocation, mriff_SaveLocation, &pos), {std::min<ULONGLONG>(pos, a.Pos())});
    note(a(riff_RestoreLocation, mriff_RestoreLocation, DWORD{12}));
    note(a(riff_ReadListHeader, mriff_ReadListHeader, &id, &size), {id, size});
    return t;
}

Bytes GoodWave()
{
    return Riff(Chunk("fmt ", Pattern(16, 1)) +
                List("INFO", Chunk("INAM", Text("title")) + Chunk("IART", Text("artist"))) +
                Chunk("data", Pattern(33, 0x40)));
}

_tMRIFF Over(Bytes& b, DWORD capacity = 0)
{
    _tMRIFF m;
    const auto size = static_cast<DWORD>(b.size());
    EXPECT_EQ(mriff_Init(&m, b.data(), size, std::max(size, capacity)), S_OK);
    return m;
}

} // namespace

TEST(MriffTwin, SameBytesGiveTheSameResultsAsTheFileFunctions)
{
    const size_t good = GoodWave().size();
    const struct
    {
        const char* name;
        Bytes bytes;
    } cases[] = {
        {"good", GoodWave()},
        {"truncated in data", Cut(GoodWave(), good - 10)},
        {"truncated in a header", Cut(GoodWave(), 38)},
        {"odd last chunk without pad", Cut(GoodWave(), good - 1)},
        {"wrong id", With(GoodWave(), 0, 'X')},
        {"zero-length chunks", Riff(Chunk("fmt ", {}) + Chunk("JUNK", {}) + Chunk("data", {}))},
        {"size beyond the file",
         Riff(Chunk("fmt ", Pattern(16)) + Header("data", 0x40000000) + Pattern(8))},
        {"list too small", Riff(Header("LIST", 3) + Pattern(4) + Chunk("data", {}))},
        {"riff size too small", Riff(Chunk("fmt ", Pattern(16)), "WAVE", 10)},
        {"riff size huge", With(GoodWave(), 7, 0xFF)},
        {"header only", Cut(GoodWave(), 12)},
        {"empty", Bytes{}},
    };
    for (const auto& c : cases)
    {
        TempFile f(c.bytes);
        OnFile file{f.Handle(), c.bytes.size()};
        Bytes copy = c.bytes;
        _tMRIFF m = Over(copy);
        OnMemory memory{&m};
        const Trace onFile = Walk(file);
        EXPECT_EQ(Walk(memory), onFile) << c.name;
        EXPECT_EQ(copy, c.bytes) << c.name; // reading never writes
    }
}

TEST(MriffCursor, InitAndBrokenCursors)
{
    BYTE block[8];
    _tMRIFF m;
    EXPECT_EQ(mriff_Init(nullptr, block, 0, 8), E_POINTER);
    EXPECT_EQ(mriff_Init(&m, nullptr, 0, 8), E_POINTER);
    EXPECT_EQ(mriff_Init(&m, block, 9, 8), E_INVALIDARG);
    ASSERT_EQ(mriff_Init(&m, block, 4, 8), S_OK);
    EXPECT_EQ(m.current, block);
    EXPECT_EQ(m.dataEnd, block + 4);
    EXPECT_EQ(m.capacityEnd, block + 8);

    // A record whose pointers disagree with its counts is refused, not followed.
    m.dataSize = 8000;
    DWORD id = 0;
    EXPECT_EQ(mriff_ReadChunkHeader(&m, &id, nullptr), E_INVALIDARG);
    EXPECT_EQ(mriff_GetFilePointer(&m), INVALID_SET_FILE_POINTER);
    EXPECT_FALSE(mriff_WriteFile(&m, block, 1, &id));
    EXPECT_EQ(mriff_ReadChunkHeader(nullptr, &id, nullptr), E_POINTER);
}

TEST(MriffCursor, SeeksClampBetweenBaseAndEndOfData)
{
    BYTE block[32] = {};
    _tMRIFF m;
    ASSERT_EQ(mriff_Init(&m, block, 20, 32), S_OK);
    const struct
    {
        LONG startAt, distance;
        DWORD method, expected;
    } cases[] = {
        {0, 5, FILE_BEGIN, 5},     {0, 25, FILE_BEGIN, 20},    {0, -5, FILE_BEGIN, 0},
        {10, 4, FILE_CURRENT, 14}, {10, -30, FILE_CURRENT, 0}, {10, 15, FILE_CURRENT, 20},
        {0, -4, FILE_END, 16},     {0, 4, FILE_END, 20},
    };
    for (const auto& c : cases)
    {
        mriff_SetFilePointer(&m, c.startAt, nullptr, FILE_BEGIN);
        EXPECT_EQ(mriff_SetFilePointer(&m, c.distance, nullptr, c.method), c.expected)
            << c.startAt << " " << c.distance << " " << c.method;
    }
    LONG high = 1; // 4 GiB + 3
    EXPECT_EQ(mriff_SetFilePointer(&m, 3, &high, FILE_BEGIN), 20u);
    EXPECT_EQ(high, 0);
    EXPECT_EQ(mriff_TqSetFilePointer(&m, -0x100000000ll, FILE_CURRENT), 0);
    EXPECT_EQ(mriff_TqSetFilePointer(&m, 7, FILE_BEGIN), 7);
    EXPECT_EQ(mriff_SetFilePointer(&m, 1, nullptr, 9), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(mriff_GetFilePointer(&m), 7u);
}

TEST(MriffCursor, ReadsStopAtEndOfDataAndWritesAtEndOfCapacity)
{
    Bytes block(12, 0xEE);
    _tMRIFF m;
    ASSERT_EQ(mriff_Init(&m, block.data(), 4, 10), S_OK);
    BYTE buffer[8] = {};
    DWORD count = 0;
    EXPECT_FALSE(mriff_ReadFile(&m, buffer, 8, &count));
    EXPECT_EQ(count, 4u);

    // From offset 2, 8 of 10 bytes fit; end of data follows the cursor.
    mriff_SetFilePointer(&m, 2, nullptr, FILE_BEGIN);
    EXPECT_TRUE(mriff_WriteFile(&m, Pattern(10, 1).data(), 10, &count));
    EXPECT_EQ(count, 8u);
    EXPECT_EQ(m.dataSize, 10u);
    EXPECT_EQ(m.dataEnd, block.data() + 10);
    EXPECT_EQ(Bytes(block.begin() + 8, block.end()), (Bytes{7, 8, 0xEE, 0xEE}));
    EXPECT_EQ(mriff_WriteChunkHeader(&m, RIFF_ID_DATA, 0), TQ_E_WRITEFAILED);

    // Data size moves within the block and keeps the cursor inside.
    EXPECT_EQ(mriff_UpdateDataSize(&m, 100), 0);
    EXPECT_EQ(mriff_UpdateDataSize(&m, -6), -6);
    EXPECT_EQ(mriff_GetFilePointer(&m), 4u);
    EXPECT_EQ(mriff_UpdateDataSize(&m, 3), 3);
    EXPECT_EQ(mriff_UpdateDataSize(&m, -100), -7);
    EXPECT_EQ(m.current, block.data());
}

TEST(MriffCursor, HeadersLandInTheBlockAsOnAFile)
{
    Bytes block(32);
    _tMRIFF m;
    ASSERT_EQ(mriff_Init(&m, block.data(), 0, 32), S_OK);
    ASSERT_EQ(mriff_WriteFileID(&m, RIFF_ID_WAVE, 24), S_OK);
    ASSERT_EQ(mriff_WriteListHeader(&m, RIFF_ID_INFO, 4), S_OK);
    ASSERT_EQ(mriff_WriteChunkHeader(&m, RIFF_ID_DATA, 0), S_OK);
    EXPECT_EQ(Cut(block, m.dataSize), Riff(List("INFO", {}) + Chunk("data", {})));
    mriff_SetFilePointer(&m, 24, nullptr, FILE_BEGIN);
    EXPECT_EQ(mriff_WriteFileID(&m, RIFF_ID_WAVE, 0), TQ_E_WRITEFAILED); // 8 bytes of room
}

TEST(MriffInfo, TextsAreFoundInTheInfoListAndTheCursorGoesBack)
{
    Bytes bytes = Riff(Chunk("fmt ", Pattern(16)) + List("adtl", Chunk("INAM", Text("not this"))) +
                       List("INFO", Chunk("IART", Text("artist")) + Chunk("INAM", Text("title"))));
    _tMRIFF m = Over(bytes);
    mriff_SeekDataStart(&m);
    char text[16];
    ASSERT_EQ(mriff_GetInfoString(&m, Id("INAM"), text, sizeof text, nullptr), S_OK);
    EXPECT_STREQ(text, "title");
    EXPECT_EQ(mriff_GetFilePointer(&m), 12u);

    // Cut to the buffer, and terminated in its last byte.
    std::fill(std::begin(text), std::end(text), 'x');
    ASSERT_EQ(mriff_GetInfoString(&m, Id("IART"), text, 4, nullptr), S_OK);
    EXPECT_EQ(std::string(text, 5), std::string("art\0x", 5));

    EXPECT_EQ(mriff_GetInfoString(&m, Id("ICMT"), text, sizeof text, nullptr), TQ_E_NOTFOUND);
    EXPECT_STREQ(text, "");
    DWORD remaining = 48; // ends with the "adtl" list
    EXPECT_EQ(mriff_GetInfoString(&m, Id("INAM"), text, sizeof text, &remaining), TQ_E_NOTFOUND);
    EXPECT_EQ(remaining, 48u);
    EXPECT_EQ(mriff_GetFilePointer(&m), 12u);
}

namespace {

WAVEFORMATEX Pcm(WORD channels, DWORD rate, WORD bits)
{
    // Block alignment and average rate left wrong on purpose.
    return {WAVE_FORMAT_PCM, channels, rate, 1, 1, bits, 0};
}

Bytes AsBytes(const void* p, size_t size)
{
    return Bytes(static_cast<const BYTE*>(p), static_cast<const BYTE*>(p) + size);
}

} // namespace

TEST(MriffWave, PcmHeaderIsWrittenShortWithDerivedFields)
{
    Bytes block(64);
    _tMRIFF m;
    ASSERT_EQ(mriff_Init(&m, block.data(), 0, 64), S_OK);
    const WAVEFORMATEX wfx = Pcm(2, 44100, 16);
    ASSERT_EQ(mriff_WriteWaveHeader(&m, &wfx, 1001, 10), S_OK);

    const WAVEFORMATEX fmt = {WAVE_FORMAT_PCM, 2, 44100, 176400, 4, 16, 0};
    // 10 + 20 + 16 + 1001 = 1047, made even.
    EXPECT_EQ(Cut(block, m.dataSize),
              Riff(Chunk("fmt ", AsBytes(&fmt, 16)) + Header("data", 1001), "WAVE", 1048));

    WAVEFORMATEX back = {};
    DWORD dataBytes = 0;
    ASSERT_EQ(mriff_GetWfx(&back, block.data(), m.dataSize, &dataBytes), S_OK);
    EXPECT_EQ(dataBytes, 1001u);
    EXPECT_EQ(AsBytes(&back, sizeof back), AsBytes(&fmt, sizeof fmt));

    mriff_SetFilePointer(&m, 0, nullptr, FILE_BEGIN);
    EXPECT_EQ(mriff_WriteWaveHeader(&m, &wfx, 0xFFFFFFF8 - 36, 0), TQ_E_SIZELIMIT);
    EXPECT_EQ(mriff_WriteWaveHeader(&m, &wfx, 0xFFFFFFF8 - 38, 0), S_OK);
}

TEST(MriffWave, OtherTagsKeepTheirExtraBytes)
{
    WAVEFORMATEXTENSIBLE ext = {};
    ext.Format = {WAVE_FORMAT_EXTENSIBLE, 6, 48000, 48000 * 24, 24, 32, 22};
    ext.Samples.wValidBitsPerSample = 24;
    ext.dwChannelMask = 0x3F;
    ext.SubFormat = {WAVE_FORMAT_PCM, 0, 0x10, {0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71}};
    Bytes block(80);
    _tMRIFF m;
    ASSERT_EQ(mriff_Init(&m, block.data(), 0, 80), S_OK);
    ASSERT_EQ(mriff_WriteWaveHeader(&m, &ext.Format, 0, 0), S_OK);
    EXPECT_EQ(Cut(block, m.dataSize), Riff(Chunk("fmt ", AsBytes(&ext, 40)) + Header("data", 0)));

    // The bare header handed back says nothing of bytes it does not carry.
    WAVEFORMATEX back = {};
    ASSERT_EQ(mriff_GetWfx(&back, block.data(), m.dataSize, nullptr), S_OK);
    EXPECT_EQ(back.wFormatTag, WAVE_FORMAT_EXTENSIBLE);
    EXPECT_EQ(back.nBlockAlign, 24);
    EXPECT_EQ(back.cbSize, 0);

    ASSERT_EQ(mriff_Init(&m, block.data(), 0, 40), S_OK);
    EXPECT_EQ(mriff_WriteWaveHeader(&m, &ext.Format, 0, 0), TQ_E_WRITEFAILED);
}

TEST(MriffWave, BadBlocksGiveTheirCodesAndLeaveTheOutputs)
{
    const Bytes fmt = Pattern(16, 1);
    const Bytes good = Riff(Chunk("fmt ", fmt) + Chunk("data", Pattern(4)));
    const struct
    {
        const char* name;
        Bytes bytes;
        HRESULT expected;
    } cases[] = {
        {"shorter than a header", Cut(good, 11), TQ_E_NOTFOUND},
        {"not RIFF", With(good, 0, 'r'), TQ_E_NORIFFHEADER},
        {"not WAVE", Riff(Chunk("fmt ", fmt) + Chunk("data", {}), "AVI "), E_FAIL},
        {"no data", Riff(Chunk("fmt ", fmt)), TQ_E_NOTFOUND},
        {"no fmt", Riff(Chunk("data", fmt)), TQ_E_NOTFOUND},
        {"empty fmt", Riff(Chunk("fmt ", {}) + Chunk("data", {})), TQ_E_ZEROLENGTHCHUNK},
        {"fmt cut by the block", Cut(good, 30), TQ_E_READFAILED},
        {"data outside the bound", Riff(Chunk("fmt ", fmt) + Chunk("data", {}), "WAVE", 28),
         TQ_E_NOTFOUND},
    };
    for (const auto& c : cases)
    {
        WAVEFORMATEX wfx;
        std::memset(&wfx, 0x5A, sizeof wfx);
        const Bytes before = AsBytes(&wfx, sizeof wfx);
        DWORD dataBytes = 77;
        EXPECT_EQ(
            mriff_GetWfx(&wfx, c.bytes.data(), static_cast<DWORD>(c.bytes.size()), &dataBytes),
            c.expected)
            << c.name;
        EXPECT_EQ(AsBytes(&wfx, sizeof wfx), before) << c.name;
        EXPECT_EQ(dataBytes, 77u) << c.name;
    }

    // A "fmt " shorter than the header is zero-filled.
    const Bytes shortFmt = Riff(Chunk("fmt ", Pattern(14, 1)) + Chunk("data", {}));
    WAVEFORMATEX wfx;
    ASSERT_EQ(mriff_GetWfx(&wfx, shortFmt.data(), static_cast<DWORD>(shortFmt.size()), nullptr),
              S_OK);
    EXPECT_EQ(wfx.nBlockAlign, 0x0E0D);
    EXPECT_EQ(wfx.wBitsPerSample, 0);
}

TEST(MriffWave, RecordsComeBackFromTheHeaderTheyWrote)
{
    const struct
    {
        const char* name;
        TQSAMPLETYPE type;
        WORD channels;
        DWORD mask;
        DWORD fmtSize;
    } cases[] = {
        {"pcm", TQSAMPLE_PCM16, 2, 0, 16},
        {"float", TQSAMPLE_FLOAT32, 2, 0, 18},
        {"default stereo mask stays plain", TQSAMPLE_PCM24, 2, 0x3, 16},
        {"multichannel is extensible", TQSAMPLE_PCM24, 6, 0x3F, 40},
        {"other mask is extensible", TQSAMPLE_PCM16, 2, 0x6, 40},
    };
    for (const auto& c : cases)
    {
        _tqwaveformat fmt;
        fmt.Init(48000, c.type, c.channels, c.mask);
        Bytes block(96);
        _tMRIFF m;
        ASSERT_EQ(mriff_Init(&m, block.data(), 0, 96), S_OK);
        ASSERT_EQ(mriff_WriteWaveHeader(&m, &fmt, 4800, 0), S_OK) << c.name;
        EXPECT_EQ(Bytes(block.begin() + 16, block.begin() + 20), U32(c.fmtSize)) << c.name;

        // An extensible header is only recognised with its sub-format: all 40 bytes are read.
        _tqwaveformat back;
        DWORD dataBytes = 0;
        ASSERT_EQ(mriff_GetWfx(&back, block.data(), m.dataSize, &dataBytes), S_OK) << c.name;
        EXPECT_EQ(dataBytes, 4800u) << c.name;
        EXPECT_EQ(back.sampleType, static_cast<UINT32>(c.type)) << c.name;
        EXPECT_TRUE(back == fmt) << c.name;
    }
}
