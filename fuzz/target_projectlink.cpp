// Project links under the fuzz program: the input is a RIFF file whose link chunks are loaded,
// written back into the same file, loaded again and deleted.
#include "fuzztarget.h"

#include "projectlink.h"

#include <cstring>

namespace tqfuzz {

namespace {

void Append(Bytes& b, const Bytes& more)
{
    b.insert(b.end(), more.begin(), more.end());
}

Bytes Chunk(const char* id, const Bytes& data)
{
    Bytes b(id, id + 4);
    const DWORD size = static_cast<DWORD>(data.size());
    Append(b, {BYTE(size), BYTE(size >> 8), BYTE(size >> 16), BYTE(size >> 24)});
    Append(b, data);
    if (data.size() & 1) b.push_back(0);
    return b;
}

Bytes Wide(const wchar_t* s)
{
    const auto* p = reinterpret_cast<const BYTE*>(s);
    return Bytes(p, p + (std::wcslen(s) + 1) * sizeof(wchar_t));
}

} // namespace

std::vector<Bytes> ProjectLinkSeeds()
{
    Bytes link = Chunk("splv", {0, 0, 0, 1});
    Append(link, Chunk("splp", Wide(L"C:\\Projects\\Song.prj")));
    Append(link, Chunk("spcl", Wide(L"")));
    Append(link, Chunk("sprg", Bytes(16, 0x5A)));
    Append(link, Chunk("srtn", Wide(L"Template")));
    Append(link, Chunk("srtd", Bytes(9, 1)));
    Append(link, Chunk("srat", Bytes(3, 2)));
    Append(link, Chunk("spca", Wide(L"App")));
    Append(link, Chunk("spcc", Wide(L"Class")));
    Append(link, Chunk("spem", Bytes(40, 3)));
    Bytes wave = {'W', 'A', 'V', 'E'};
    Append(wave, Chunk("data", Bytes(32, 7)));
    Append(wave, link);
    Bytes sideCar = {'T', 'Q', 'P', 'L'};
    Append(sideCar, link);
    return {Chunk("RIFF", wave), Chunk("RIFF", sideCar)};
}

HRESULT RunProjectLink(FuzzContext& context)
{
    HANDLE file = context.File();
    if (file == INVALID_HANDLE_VALUE) return E_HANDLE;
    CTqLinkProjectInfo info;
    BOOL found = FALSE;
    const HRESULT hr = ProjectLinkRiff_LoadInfo(file, &info, &found);
    if (found)
    {
        WCHAR* path = context.Out<WCHAR>(9);
        info.GetProjectPath(path, 9);
        ProjectLinkRiff_WriteInfo(file, &info, nullptr);
        ProjectLinkRiff_LoadInfo(file, &info, &found);
    }
    DWORD removed = 0;
    ProjectLinkRiff_DeleteInfo(file, &removed);
    ProjectLinkRiff64_LoadInfo(file, &info, &found);
    if (SUCCEEDED(ProjectLinkRiffRF64_LoadInfo(file, &info, &found)) && found)
        ProjectLinkRF64_WriteInfo(file, &info, nullptr);
    return hr;
}

} // namespace tqfuzz
