// Summary and display lists under the fuzz program: the input is a "LIST" whose entries are
// loaded as INFO and as UNFO, one text is looked up, and the chunks are walked for "DISP"; each
// through the RIFF functions and through the RF64 ones with their 64-bit bounds. The display
// list is also read from the input as a stream, and the picture of the input as a whole file.
#include "fuzztarget.h"

#include "displist.h"
#include "summary.h"

#include <shlwapi.h>

#include <algorithm>

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

Bytes List(const char* type, const Bytes& entries)
{
    Bytes body(type, type + 4);
    Append(body, entries);
    return Chunk("LIST", body);
}

Bytes Text(const char* s, size_t extra = 1)
{
    return Bytes(s, s + strlen(s) + extra);
}

DWORD FileSize(HANDLE file)
{
    LARGE_INTEGER size = {};
    GetFileSizeEx(file, &size);
    return size.QuadPart > 0xFFFFFFFF ? 0xFFFFFFFF : static_cast<DWORD>(size.QuadPart);
}

void Rewind(HANDLE file, DWORD to)
{
    riff_RestoreLocation(file, to);
}

} // namespace

std::vector<Bytes> SummarySeeds()
{
    Bytes info = Chunk("INAM", Text("A title"));
    Append(info, Chunk("IART", Text("noterm", 0)));
    Append(info, Chunk("ICMT", Bytes{0}));
    const Bytes unfo = Chunk("INAM", {'T', 0, 'i', 0, 0, 0});
    Bytes disp = Chunk("DISP", {1, 0, 0, 0, 'a', 'b', 'c'});
    Append(disp, Chunk("DISP", {8, 0, 0, 0}));
    Append(disp, Chunk("DISP", {2, 0, 0, 0, 9}));
    Bytes mixed = List("INFO", info);
    Append(mixed, disp);
    // Whole files with a picture: a 2 by 2 bitmap of 32-bit pixels.
    Bytes dib = LE32(CF_DIB);
    const BITMAPINFOHEADER header = {sizeof header, 2, 2, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    dib.insert(dib.end(), reinterpret_cast<const BYTE*>(&header),
               reinterpret_cast<const BYTE*>(&header) + sizeof header);
    dib.resize(dib.size() + 16, 0x55);
    Bytes riffBody = {'W', 'A', 'V', 'E'};
    Append(riffBody, Chunk("fmt ", Bytes(16, 1)));
    Append(riffBody, Chunk("data", Bytes(8, 2)));
    Append(riffBody, Chunk("DISP", dib));
    Bytes riff = {'R', 'I', 'F', 'F'};
    Append(riff, LE32(static_cast<DWORD>(riffBody.size())));
    Append(riff, riffBody);
    Bytes rf64Body = {'W', 'A', 'V', 'E'};
    Bytes ds64 = LE32(0); // the form's size, set below
    Append(ds64, LE32(0));
    Append(ds64, LE32(8)); // data
    Append(ds64, Bytes(16, 0));
    Append(rf64Body, Chunk("ds64", ds64));
    Append(rf64Body, Chunk("fmt ", Bytes(16, 1)));
    Append(rf64Body, {'d', 'a', 't', 'a', 0xFF, 0xFF, 0xFF, 0xFF});
    Append(rf64Body, Bytes(8, 2));
    Append(rf64Body, Chunk("DISP", dib));
    Bytes rf64 = {'R', 'F', '6', '4', 0xFF, 0xFF, 0xFF, 0xFF};
    Append(rf64, rf64Body);
    const Bytes riffSize = LE32(static_cast<DWORD>(rf64.size() - 8));
    std::copy(riffSize.begin(), riffSize.end(), rf64.begin() + 20);
    return {List("INFO", info), List("UNFO", unfo), mixed, riff, rf64};
}

HRESULT RunSummary(FuzzContext& context)
{
    HANDLE file = context.File();
    if (file == INVALID_HANDLE_VALUE) return E_HANDLE;
    const DWORD size = FileSize(file);
    // The list's entries start behind its 12-byte header, as a caller that found it would have.
    const DWORD listSize = size > 12 ? size - 12 : 0;
    tSUMMARYLIST list = {};
    DWORD bound = listSize;
    Rewind(file, 12);
    const HRESULT info = TqSummary_Load(file, &list, &bound);
    TqSummary_Free(&list);
    bound = listSize;
    Rewind(file, 12);
    TqSummary_LoadUNFO(file, &list, &bound);
    TqSummary_Free(&list);

    auto* text = context.Out<WCHAR>(7);
    bound = size;
    Rewind(file, 0);
    TqSummary_GetStringFromFile(file, RIFF_ID('I', 'N', 'A', 'M'), text, 7, &bound);

    tDISPLIST display = {};
    displist_Create(&display);
    bound = size;
    Rewind(file, 0);
    displist_Load(file, &display, &bound);

    // The RF64 forms, with a bound far beyond the file as a damaged ds64 size gives.
    ULONGLONG wide = listSize;
    Rewind(file, 12);
    TqSummary_LoadRF64(file, &list, &wide);
    TqSummary_Free(&list);
    wide = ~0ull;
    Rewind(file, 12);
    TqSummary_LoadUNFORF64(file, &list, &wide);
    TqSummary_Free(&list);
    wide = ~0ull;
    Rewind(file, 0);
    TqSummaryRF64_GetStringFromFile(file, RIFF_ID('I', 'A', 'R', 'T'), text, 7, &wide);
    wide = ~0ull;
    Rewind(file, 0);
    displistRF64_Load(file, &display, &wide);

    if (IStream* stream = SHCreateMemStream(context.Data(), static_cast<UINT>(context.Size())))
    {
        bound = size;
        displist_LoadFromStream(stream, &display, &bound);
        stream->Release();
    }
    displist_Destroy(&display);
    if (const HBITMAP bitmap = displist_CreateBitmapFromFile(context.FilePath()))
        DeleteObject(bitmap);
    return info;
}

} // namespace tqfuzz
