// tqvsthost scan: loads every plug-in file under the folders in the server, one at a time, and
// reports each; a plug-in that hangs, faults or takes the server down does not end the scan.
#include "scancommand.h"

#include "hostlog.h"
#include "hresulttext.h"
#include "jsonwriter.h"
#include "pluginsession.h"
#include "vst3bundle.h"

#include <algorithm>
#include <cstdio>
#include <set>

namespace tqhost {
namespace {

constexpr UINT32 kDefaultTimeoutMs = 10000;
constexpr UINT32 kTextCapacity = 64;

// The ways a call fails when the server process is gone, rather than the plug-in refusing.
bool ServerIsGone(HRESULT hr)
{
    switch (static_cast<unsigned>(hr))
    {
    case 0x800706BA: // server unavailable
    case 0x800706BE: // call failed
    case 0x80010108: // object disconnected
    case 0x80010007: // server died
    case 0x80010012: // server died, did not execute
        return true;
    default:
        return false;
    }
}

const wchar_t* Outcome(HRESULT hr)
{
    if (hr == TQVST_S_SHELL) return L"shell";
    if (SUCCEEDED(hr)) return L"ok";
    if (hr == TQVST_E_TIMEOUT) return L"hung";
    if (hr == TQVST_E_PLUGINFAULT) return L"crashed";
    if (ServerIsGone(hr)) return L"server ended";
    return L"failed";
}

bool EndsWithDll(const std::wstring& name)
{
    return name.size() >= 4 && _wcsicmp(name.c_str() + name.size() - 4, L".dll") == 0;
}

// No module holds more classes than this; a walk that goes on is a module out of order.
constexpr size_t kMaxShellIds = 10000;

struct ScanResult
{
    std::wstring path;
    HRESULT hr = S_OK;
    WCHAR name[kTextCapacity] = {};
    WCHAR vendor[kTextCapacity] = {};
    WCHAR product[kTextCapacity] = {};
    TqVstEffectInfo info = {};
    std::vector<UINT32> shellIds; // the audio classes of a VST3 module with several
};

// The ShellIds of a VST3 module's audio classes, walked on an effect made without an id. The
// walk ends at the first id seen twice, as on a module whose class list faults.
std::vector<UINT32> Vst3ShellIds(ITqVstEffectFactory* factory, const std::wstring& path)
{
    std::vector<UINT32> ids;
    tq::ComPtr<ITqVstEffect> module;
    if (FAILED(factory->CreateEffect(path.c_str(), 0, IID_ITqVstEffect, module.PutVoid())) ||
        !module)
        return ids;
    std::set<UINT32> seen;
    UINT32 id = 0;
    WCHAR name[kTextCapacity] = {};
    while (ids.size() < kMaxShellIds &&
           module->GetNextShellPlugin(&id, name, kTextCapacity) == S_OK && seen.insert(id).second)
        ids.push_back(id);
    return ids;
}

std::string JsonOf(const ScanResult& result)
{
    wchar_t code[16];
    swprintf(code, 16, L"0x%08X", static_cast<unsigned>(result.hr));
    JsonObject object;
    object.Add("path", result.path).Add("result", code).Add("outcome", Outcome(result.hr));
    if (FAILED(result.hr))
        object.Add("error", DescribeResult(result.hr, {ResultArea::Plugin, result.path}));
    object.Add("name", result.name)
        .Add("vendor", result.vendor)
        .Add("product", result.product)
        .Add("uniqueId", result.info.uniqueId)
        .Add("uniqueIdText", FourCharacters(result.info.uniqueId))
        .Add("version", result.info.version)
        .Add("inputs", result.info.numInputs)
        .Add("outputs", result.info.numOutputs)
        .Add("parameters", result.info.numParameters)
        .Add("programs", result.info.numPrograms)
        .Add("flags", result.info.flags);
    if (!result.shellIds.empty()) object.Add("shellIds", result.shellIds);
    return object.Text();
}

void PrintProgress(FILE* stream, size_t number, size_t total, const ScanResult& result)
{
    fwprintf(stream, L"[%zu/%zu] %ls: ", number, total, result.path.c_str());
    if (result.hr == TQVST_S_SHELL)
        fwprintf(stream, L"shell plug-in (see info for its sub-plug-ins)\n");
    else if (SUCCEEDED(result.hr))
        fwprintf(stream, L"%ls (%ls), '%ls', %u in, %u out, %u parameters\n", result.name,
                 result.vendor, FourCharacters(result.info.uniqueId).c_str(), result.info.numInputs,
                 result.info.numOutputs, result.info.numParameters);
    else
        fwprintf(stream, L"%ls: 0x%08X (%ls)\n", Outcome(result.hr),
                 static_cast<unsigned>(result.hr),
                 DescribeResult(result.hr, {ResultArea::Plugin, result.path}).c_str());
    fflush(stream);
}

} // namespace

std::vector<std::wstring> FindPluginFiles(const std::wstring& folder, int location)
{
    std::vector<std::wstring> files;
    std::vector<std::wstring> folders;
    WIN32_FIND_DATAW found;
    HANDLE search = FindFirstFileW((folder + L"\\*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return files;
    do
    {
        const std::wstring name = found.cFileName;
        if (name == L"." || name == L"..") continue;
        const bool isFolder = found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY;
        if (isFolder && IsVst3Path(name))
            files.push_back(ResolveVst3Bundle(folder + L"\\" + name, location));
        else if (isFolder)
            folders.push_back(folder + L"\\" + name);
        else if (EndsWithDll(name) || IsVst3Path(name))
            files.push_back(folder + L"\\" + name);
    } while (FindNextFileW(search, &found));
    FindClose(search);
    // The system lists in no promised order; a sorted scan reads the same on every run.
    const auto byName = [](const std::wstring& a, const std::wstring& b) {
        return _wcsicmp(a.c_str(), b.c_str()) < 0;
    };
    std::sort(files.begin(), files.end(), byName);
    std::sort(folders.begin(), folders.end(), byName);
    for (const std::wstring& sub : folders)
    {
        const std::vector<std::wstring> inner = FindPluginFiles(sub, location);
        files.insert(files.end(), inner.begin(), inner.end());
    }
    return files;
}

int RunScan(const Options& options)
{
    if (options.arguments.empty())
    {
        fwprintf(stderr, L"tqvsthost: scan needs at least one folder (see --help)\n");
        return 1;
    }
    std::vector<std::wstring> files;
    for (const std::wstring& folder : options.arguments)
    {
        std::wstring full;
        const DWORD attributes = GetFileAttributesW(folder.c_str());
        if (!FullPath(folder, full) || attributes == INVALID_FILE_ATTRIBUTES ||
            !(attributes & FILE_ATTRIBUTE_DIRECTORY))
            return ReportFailure(L"not a folder: " + folder,
                                 HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
        while (full.size() > 3 && full.back() == L'\\')
            full.pop_back();
        const std::vector<std::wstring> found = FindPluginFiles(full, options.location);
        files.insert(files.end(), found.begin(), found.end());
    }

    FactoryLease factory;
    HRESULT hr = factory.Open(options.location);
    if (FAILED(hr)) return ReportFailure(L"could not reach the plug-in server", hr);

    FILE* progress = options.json ? stderr : stdout;
    const UINT32 timeoutMs = options.timeoutMs.value_or(kDefaultTimeoutMs);
    size_t loaded = 0, failed = 0, restarts = 0;
    if (options.json) fputs("[", stdout);
    for (size_t i = 0; i < files.size(); ++i)
    {
        ScanResult result;
        result.path = files[i];
        const ULONGLONG started = GetTickCount64();
        if (!factory.Get()) hr = factory.Open(options.location);
        result.hr = FAILED(hr)
                        ? hr
                        : factory.Get()->GetEffectInfoForFile(result.path.c_str(), 0, result.name,
                                                              result.vendor, result.product,
                                                              &result.info, timeoutMs);
        if (result.hr == TQVST_S_SHELL && options.json && IsVst3Path(result.path))
            result.shellIds = Vst3ShellIds(factory.Get(), result.path);
        // A crash outside the server's guards ends the process; the next file gets a new one.
        if (ServerIsGone(result.hr))
        {
            factory.Reset();
            ++restarts;
        }
        SUCCEEDED(result.hr) ? ++loaded : ++failed;
        PrintProgress(progress, i + 1, files.size(), result);
        LogLine(SUCCEEDED(result.hr) ? TQLOG_INFO : TQLOG_WARNING,
                L"scanned " + result.path + L" in " + std::to_wstring(GetTickCount64() - started) +
                    L" ms: " + HexCode(result.hr) + L" " + result.name);
        if (options.json)
        {
            fputs(i ? ",\n " : "\n ", stdout);
            fputs(JsonOf(result).c_str(), stdout);
            fflush(stdout);
        }
    }
    if (options.json) fputs("\n]\n", stdout);
    fwprintf(progress, L"%zu plug-in files: %zu loaded, %zu failed", files.size(), loaded, failed);
    if (restarts)
        fwprintf(progress, L", the server was started again %zu time%ls", restarts,
                 restarts == 1 ? L"" : L"s");
    fwprintf(progress, L"\n");
    return 0;
}

} // namespace tqhost
