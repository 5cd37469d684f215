// Summary and display lists on Wave64 under the fuzz program: the input is a list whose
// GUID-framed entries are loaded as INFO and as UNFO, one text is looked up, and the chunks are
// walked for "DISP".
#include "fuzztarget.h"

#include "displist.h"
#include "riff64.h"
#include "summary.h"

namespace tqfuzz {

namespace {

GUID Family(const char* id)
{
    GUID guid = RIFF64_GUID_FMT;
    guid.Data1 = RIFF_ID(id[0], id[1], id[2], id[3]);
    return guid;
}

void Append(Bytes& b, const void* data, size_t count)
{
    const auto* p = static_cast<const BYTE*>(data);
    b.insert(b.end(), p, p + count);
}

void Append(Bytes& b, const Bytes& more)
{
    b.insert(b.end(), more.begin(), more.end());
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

Bytes List(const char* type, const Bytes& entries)
{
    const GUID guid = Family(type);
    Bytes body;
    Append(body, &guid, sizeof guid);
    Append(body, entries);
    return Chunk(RIFF64_GUID_LIST, body);
}

Bytes Text(const char* s, size_t extra = 1)
{
    return Bytes(s, s + strlen(s) + extra);
}

ULONGLONG FileSize(HANDLE file)
{
    LARGE_INTEGER size = {};
    GetFileSizeEx(file, &size);
    return static_cast<ULONGLONG>(size.QuadPart);
}

void Rewind(HANDLE file, ULONGLONG to)
{
    riff64_RestoreLocation(file, to);
}

} // namespace

std::vector<Bytes> Summary64Seeds()
{
    Bytes info = Chunk(Family("INAM"), Text("A title"));
    Append(info, Chunk(Family("IART"), Text("noterm", 0), true));
    Append(info, Chunk(Family("ICMT"), Bytes{0}));
    Append(info, Chunk(RIFF64_GUID_JUNK, Text("junk")));
    const Bytes unfo = Chunk(Family("INAM"), {'T', 0, 'i', 0, 0, 0});
    Bytes disp = Chunk(Family("DISP"), {1, 0, 0, 0, 'a', 'b', 'c'});
    Append(disp, Chunk(Family("DISP"), {8, 0, 0, 0}));
    Bytes mixed = List("INFO", info);
    Append(mixed, disp);
    // A whole file with a picture: a 2 by 2 bitmap of 32-bit pixels.
    Bytes dib = {8, 0, 0, 0}; // CF_DIB
    const BITMAPINFOHEADER header = {sizeof header, 2, 2, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    Append(dib, &header, sizeof header);
    dib.resize(dib.size() + 16, 0x55);
    Bytes chunks = Chunk(RIFF64_GUID_FMT, Bytes(16, 1));
    Append(chunks, Chunk(RIFF64_GUID_DATA, Bytes(8, 2)));
    Append(chunks, Chunk(Family("DISP"), dib));
    const ULONGLONG stored = 40 + chunks.size();
    Bytes file;
    Append(file, &RIFF64_GUID_RIFF, sizeof(GUID));
    Append(file, &stored, sizeof stored);
    Append(file, &RIFF64_GUID_WAVE, sizeof(GUID));
    Append(file, chunks);
    return {List("INFO", info), List("UNFO", unfo), mixed, file};
}

HRESULT RunSummary64(FuzzContext& context)
{
    HANDLE file = context.File();
    if (file == INVALID_HANDLE_VALUE) return E_HANDLE;
    const ULONGLONG size = FileSize(file);
    // The list's entries start behind its 40-byte header, as a caller that found it would have.
    const ULONGLONG listSize = size > 40 ? size - 40 : 0;
    tSUMMARYLIST list = {};
    ULONGLONG bound = listSize;
    Rewind(file, 40);
    const HRESULT info = TqSummary_Load64(file, &list, &bound);
    TqSummary_Free(&list);
    Rewind(file, 40);
    TqSummary_LoadUNFO64(file, &list, &bound);
    TqSummary_Free(&list);

    auto* text = context.Out<WCHAR>(7);
    bound = size;
    Rewind(file, 0);
    TqSummary64_GetStringFromFile(file, RIFF_ID('I', 'N', 'A', 'M'), text, 7, &bound);
    // A bound far beyond the file, as a damaged form size gives.
    bound = ~0ull;
    Rewind(file, 0);
    TqSummary64_GetStringFromFile(file, RIFF_ID('I', 'A', 'R', 'T'), text, 7, &bound);

    tDISPLIST display = {};
    displist_Create(&display);
    bound = ~0ull;
    Rewind(file, 0);
    displist64_Load(file, &display, &bound);
    displist_Destroy(&display);
    if (const HBITMAP bitmap = displist_CreateBitmapFromFile(context.FilePath()))
        DeleteObject(bitmap);
    return info;
}

} // namespace tqfuzz
