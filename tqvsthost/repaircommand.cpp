// tqvsthost repair: keeps a copy of the file as FILE.bak, then has the kernel rebuild the header
// from what the file still holds, and says what it found and what it changed.
#include "repaircommand.h"

#include "hresulttext.h"
#include "mediafile.h"
#include "pluginsession.h"
#include "riff.h"
#include "wavefile.h"

#include <cstdio>
#include <cstring>

namespace tqhost {
namespace {

// What the header says, or why it says nothing usable.
std::wstring Describe(HANDLE file)
{
    MediaLayout layout;
    const HRESULT hr = ReadMediaLayout(file, layout);
    if (hr == TQ_E_NORIFFHEADER) return L"no usable file header";
    if (FAILED(hr)) return L"no usable format or data chunk";
    const WAVEFORMATEX* format = layout.Header();
    std::wstring text = std::wstring(ContainerName(layout.container)) + L", " +
                        std::to_wstring(format->nChannels) + L" channels, " +
                        std::to_wstring(format->nSamplesPerSec) + L" Hz, " +
                        SampleTypeName(layout.sampleType) + L", samples at offset " +
                        std::to_wstring(layout.dataStart) + L", " +
                        std::to_wstring(layout.declaredDataBytes) + L" bytes of samples claimed";
    if (layout.declaredDataBytes != layout.dataBytes)
        text += L", " + std::to_wstring(layout.dataBytes) + L" present in whole frames";
    return text;
}

} // namespace

int RunRepair(const Options& options)
{
    if (options.arguments.size() != 1)
    {
        fwprintf(stderr, L"tqvsthost: repair needs FILE (see --help)\n");
        return 1;
    }
    std::wstring path;
    if (!FullPath(options.arguments[0], path))
        return ReportFailure(L"not a usable path", HRESULT_FROM_WIN32(ERROR_BAD_PATHNAME));
    tq::UniqueFile file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (file.Get() == INVALID_HANDLE_VALUE)
        return ReportFailure(L"could not open " + path, HRESULT_FROM_WIN32(GetLastError()),
                             {ResultArea::Wave, path});
    char magic[4] = {};
    DWORD got = 0;
    if (!ReadFile(file.Get(), magic, 4, &got, nullptr) || got != 4)
        return ReportFailure(path + L" is too short to hold any header", TQ_E_CORRUPTFILE,
                             {ResultArea::Wave, path});
    const bool wave64 = std::memcmp(magic, "riff", 4) == 0;
    if (!wave64 && std::memcmp(magic, "RIFF", 4) != 0)
        return ReportFailure(path + L" is not a WAV or Wave64 file", TQ_E_NORIFFHEADER,
                             {ResultArea::Wave, path});
    wprintf(L"Found: %ls\n", Describe(file.Get()).c_str());
    file.Reset();

    // The original is kept whatever happens next; an older copy is never overwritten.
    const std::wstring backup = path + L".bak";
    if (!CopyFileW(path.c_str(), backup.c_str(), TRUE))
        return ReportFailure(L"could not keep a copy as " + backup,
                             HRESULT_FROM_WIN32(GetLastError()), {ResultArea::Wave, backup});
    wprintf(L"Kept the original as %ls\n", backup.c_str());

    file.Reset(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                           FILE_ATTRIBUTE_NORMAL, nullptr));
    if (file.Get() == INVALID_HANDLE_VALUE)
        return ReportFailure(L"could not open " + path + L" for writing",
                             HRESULT_FROM_WIN32(GetLastError()), {ResultArea::Wave, path});
    const WAVEFORMATEX* fallback = options.repairFormat ? &*options.repairFormat : nullptr;
    const HRESULT hr = wave64 ? TqFixTrashedW64(file.Get(), fallback, ~0ull)
                              : TqFixTrashedWav(file.Get(), fallback, MAXDWORD);
    if (FAILED(hr))
        return ReportFailure(L"could not repair " + path + L"; the original is unchanged in " +
                                 backup,
                             hr, {ResultArea::Wave, path});
    wprintf(L"Now:   %ls\n", Describe(file.Get()).c_str());
    return 0;
}

} // namespace tqhost
