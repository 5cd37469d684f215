// Project-link chunks in RIFF files and side-car files, over any framing.
#include "chunkframing.h"
#include "lockedblock.h"
#include "projectlink.h"

#include <iterator>

using tq::media::Clamp32;
using tq::media::Framing;
using tq::media::FreeLocked;
using tq::media::Rf64Framing;
using tq::media::RiffFraming;
using tq::media::Wave64Framing;

namespace {

constexpr auto Exact = tq::media::ChunkSizing::Exact;
constexpr DWORD kVersionId = RIFF_ID('s', 'p', 'l', 'v');
constexpr DWORD kMajorMask = 0xFF000000u;

struct Bytes
{
    const void* data;
    DWORD size;
};

// A field's chunk: its id, bit, the sizes it is taken at, and how it goes in and out.
struct LinkChunk
{
    DWORD id;
    DWORD bit;
    bool (*accepts)(ULONGLONG size);
    HRESULT (CTqLinkProjectInfo::*set)(const void*, DWORD); // null for the renderer's GUID
    Bytes (*get)(const CTqLinkProjectInfo&);
};

bool NotEmpty(ULONGLONG size)
{
    return size != 0;
}

// A path needs more than a terminator; a command line may be just one, on purpose: an empty
// command line says "open the project with its own application".
bool PathSize(ULONGLONG size)
{
    return size > 2;
}

bool CommandLineSize(ULONGLONG size)
{
    return size >= 2;
}

bool GuidSize(ULONGLONG size)
{
    return size == sizeof(GUID);
}

Bytes Guid(const CTqLinkProjectInfo& i)
{
    return {&i.GetRendererGuid(), sizeof(GUID)};
}

#define FIELD_BYTES(Name)                                                                          \
    [](const CTqLinkProjectInfo& i) { return Bytes{i.Get##Name(), i.Get##Name##Size()}; }

// In the order they are read.
const LinkChunk kChunks[] = {
    {RIFF_ID('s', 'p', 'l', 'p'), TQLINK_PROJECTPATH, PathSize,
     &CTqLinkProjectInfo::SetProjectPathToBuffer, FIELD_BYTES(ProjectPath)},
    {RIFF_ID('s', 'p', 'c', 'l'), TQLINK_COMMANDLINE, CommandLineSize,
     &CTqLinkProjectInfo::SetCommandLineToBuffer, FIELD_BYTES(CommandLine)},
    {RIFF_ID('s', 'p', 'r', 'g'), TQLINK_RENDERER, GuidSize, nullptr, Guid},
    {RIFF_ID('s', 'r', 't', 'n'), TQLINK_TEMPLATENAME, NotEmpty,
     &CTqLinkProjectInfo::SetTemplateNameToBuffer, FIELD_BYTES(TemplateName)},
    {RIFF_ID('s', 'r', 't', 'd'), TQLINK_TEMPLATEDATA, NotEmpty,
     &CTqLinkProjectInfo::SetTemplateDataToBuffer, FIELD_BYTES(TemplateData)},
    {RIFF_ID('s', 'r', 'a', 't'), TQLINK_APPTEMPLATEDATA, NotEmpty,
     &CTqLinkProjectInfo::SetAppTemplateDataToBuffer, FIELD_BYTES(AppTemplateData)},
    {RIFF_ID('s', 'p', 'c', 'a'), TQLINK_CREATORAPPINFO, NotEmpty,
     &CTqLinkProjectInfo::SetCreatorAppInfoToBuffer, FIELD_BYTES(CreatorAppInfo)},
    {RIFF_ID('s', 'p', 'c', 'c'), TQLINK_CREATORWNDCLASS, NotEmpty,
     &CTqLinkProjectInfo::SetCreatorWndClassNameToBuffer, FIELD_BYTES(CreatorWndClassName)},
    {RIFF_ID('s', 'p', 'e', 'm'), TQLINK_PROJECTDATA, NotEmpty,
     &CTqLinkProjectInfo::SetProjectDataToBuffer, FIELD_BYTES(ProjectData)},
};

#undef FIELD_BYTES

// The order in which the chunks are removed.
constexpr DWORD kDeleteOrder[] = {
    kVersionId,
    RIFF_ID('s', 'p', 'c', 'a'),
    RIFF_ID('s', 'p', 'c', 'c'),
    RIFF_ID('s', 'p', 'l', 'p'),
    RIFF_ID('s', 'p', 'c', 'l'),
    RIFF_ID('s', 'p', 'e', 'm'),
    RIFF_ID('s', 'p', 'r', 'g'),
    RIFF_ID('s', 'r', 't', 'n'),
    RIFF_ID('s', 'r', 't', 'd'),
    RIFF_ID('s', 'r', 'a', 't'),
};

// The chunk's data, found by Find, into a block the caller frees.
HRESULT ReadChunk(Framing& framing, ULONGLONG size, void*& data)
{
    data = nullptr;
    ULONGLONG left = 0;
    if (const HRESULT hr = framing.Cursor().BytesLeft(left); FAILED(hr)) return hr;
    if (size > left || size > MAXDWORD) return TQ_E_READFAILED;
    data = tq::media::AllocLocked(static_cast<SIZE_T>(size));
    if (!data) return E_OUTOFMEMORY;
    const HRESULT hr = framing.Cursor().Read(data, static_cast<DWORD>(size));
    if (FAILED(hr))
    {
        FreeLocked(data);
        data = nullptr;
    }
    return hr;
}

HRESULT LoadField(Framing& framing, CTqLinkProjectInfo* info, const LinkChunk& chunk)
{
    ULONGLONG size = 0;
    if (FAILED(framing.Find(chunk.id, size)) || !chunk.accepts(size)) return S_FALSE;
    void* data = nullptr;
    if (const HRESULT hr = ReadChunk(framing, size, data); FAILED(hr)) return hr;
    HRESULT hr = S_OK;
    if (chunk.set)
        hr = (info->*chunk.set)(data, static_cast<DWORD>(size));
    else
        info->SetRendererGuid(*static_cast<const GUID*>(data));
    FreeLocked(data);
    return hr;
}

HRESULT LoadLink(Framing& framing, CTqLinkProjectInfo* info, BOOL* found)
{
    if (!info || !found) return E_INVALIDARG;
    *found = FALSE;
    if (const HRESULT hr = framing.ReadHeader(); FAILED(hr)) return hr;
    info->Init();

    ULONGLONG size = 0;
    if (FAILED(framing.Find(kVersionId, size)) || size != sizeof(DWORD)) return TQ_E_CORRUPTFILE;
    DWORD version = 0;
    if (const HRESULT hr = framing.Cursor().Read(&version, sizeof version); FAILED(hr)) return hr;
    if ((version & kMajorMask) > TQLINK_VERSION) return TQ_E_NEWERVERSION;
    info->SetVersion(version);

    for (const LinkChunk& chunk : kChunks)
    {
        // Application data belongs to the template data: alone it means nothing.
        if (chunk.bit == TQLINK_APPTEMPLATEDATA && !(info->GetValid() & TQLINK_TEMPLATEDATA))
            continue;
        if (const HRESULT hr = LoadField(framing, info, chunk); FAILED(hr))
        {
            info->FreeMemory();
            return hr;
        }
    }
    *found = info->GetValid() != 0;
    return S_OK;
}

HRESULT WriteLink(Framing& framing, const CTqLinkProjectInfo* info, ULONGLONG* written)
{
    if (written) *written = 0;
    if (!info) return E_INVALIDARG;
    const DWORD version = info->GetVersion() ? info->GetVersion() : TQLINK_VERSION;
    ULONGLONG grown = 0;
    if (const HRESULT hr = tq::media::ReplaceChunk(framing, kVersionId, 0, &version, sizeof version,
                                                   Exact, &grown);
        FAILED(hr))
        return hr;
    ULONGLONG total = grown;
    for (const LinkChunk& chunk : kChunks)
    {
        const Bytes bytes = chunk.get(*info);
        HRESULT hr = S_OK;
        if ((info->GetValid() & chunk.bit) && bytes.data && chunk.accepts(bytes.size))
        {
            hr = tq::media::ReplaceChunk(framing, chunk.id, 0, bytes.data, bytes.size, Exact,
                                         &grown);
            total += grown;
        }
        else
            hr = tq::media::RetireChunk(framing, chunk.id);
        if (FAILED(hr)) return hr;
        if (written) *written = total;
    }
    return S_OK;
}

// The RF64 forms take plain RIFF files too: the framing is the one the file has.
template <class F>
HRESULT OnRf64Framing(HANDLE file, F f)
{
    if (Rf64Framing::HasDs64(file))
    {
        Rf64Framing framing(file);
        return f(framing);
    }
    RiffFraming framing(file);
    return f(framing);
}

} // namespace

TQKERNEL_API HRESULT ProjectLinkRiff_LoadInfo(HANDLE file, CTqLinkProjectInfo* info, BOOL* found)
{
    RiffFraming framing(file);
    return LoadLink(framing, info, found);
}

TQKERNEL_API HRESULT ProjectLinkRiff64_LoadInfo(HANDLE file, CTqLinkProjectInfo* info, BOOL* found)
{
    Wave64Framing framing(file);
    return LoadLink(framing, info, found);
}

TQKERNEL_API HRESULT ProjectLinkRiffRF64_LoadInfo(HANDLE file, CTqLinkProjectInfo* info,
                                                  BOOL* found)
{
    return OnRf64Framing(file, [&](Framing& f) { return LoadLink(f, info, found); });
}

TQKERNEL_API HRESULT ProjectLinkRiff64_WriteInfo(HANDLE file, const CTqLinkProjectInfo* info,
                                                 ULONGLONG* written)
{
    Wave64Framing framing(file);
    return WriteLink(framing, info, written);
}

TQKERNEL_API HRESULT ProjectLinkRF64_WriteInfo(HANDLE file, const CTqLinkProjectInfo* info,
                                               ULONGLONG* written)
{
    return OnRf64Framing(file, [&](Framing& f) { return WriteLink(f, info, written); });
}

TQKERNEL_API HRESULT ProjectLinkRiff_WriteInfo(HANDLE file, const CTqLinkProjectInfo* info,
                                               DWORD* written)
{
    RiffFraming framing(file);
    ULONGLONG grown = 0;
    const HRESULT hr = WriteLink(framing, info, &grown);
    if (written) *written = Clamp32(grown);
    return hr;
}

TQKERNEL_API HRESULT ProjectLinkRiff_DeleteInfo(HANDLE file, DWORD* bytes)
{
    if (bytes) *bytes = 0;
    DWORD total = 0;
    for (DWORD id : kDeleteOrder)
    {
        DWORD removed = 0;
        const HRESULT hr = riff_DeleteChunk(file, id, &removed, FALSE);
        if (hr == TQ_E_NOTFOUND) continue;
        if (FAILED(hr)) return hr;
        total += removed;
        if (bytes) *bytes = total;
    }
    return S_OK;
}

TQKERNEL_API HRESULT ProjectLinkRiff_WriteSideCar(const WCHAR* path, const CTqLinkProjectInfo* info)
{
    if (!path || !info) return E_INVALIDARG;
    HANDLE file =
        CreateFileW(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                    OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return HRESULT_FROM_WIN32(GetLastError());
    LARGE_INTEGER length = {};
    HRESULT hr = GetFileSizeEx(file, &length) ? S_OK : TQ_E_READFAILED;
    // A new side-car is an empty form to which the chunks are added like to any RIFF file.
    if (SUCCEEDED(hr) && length.QuadPart == 0) hr = riff_WriteFileID(file, RIFF_ID_TQPL, 4);
    if (SUCCEEDED(hr)) hr = ProjectLinkRiff_WriteInfo(file, info, nullptr);
    CloseHandle(file);
    return hr;
}
