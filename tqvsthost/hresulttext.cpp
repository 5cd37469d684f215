// Texts for the plug-in server's own result codes, falling back to the system's message table.
#include "hresulttext.h"

#include "riff.h"
#include "tqvst.h"

#include <cstdio>

namespace tqhost {
namespace {

struct KnownResult
{
    HRESULT code;
    const wchar_t* text;
};

constexpr KnownResult kServerResults[] = {
    {TQVST_S_SHELL, L"the file is a shell plug-in; choose a sub-plug-in with --id"},
    {TQVST_E_THREAD, L"the load worker could not be set up"},
    // The file layers share this code, so the text covers a bad WAV file as well as a preset.
    {TQVST_E_BADFILE, L"the file is corrupt, of an unknown format, or does not fit this effect"},
    {TQVST_E_TIMEOUT, L"the plug-in did not finish loading in time and was abandoned"},
    {TQVST_E_PLUGINFAULT, L"the plug-in raised an exception"},
    {TQVST_E_NOSELECTION, L"no sub-plug-in of the shell is selected"},
    {static_cast<HRESULT>(0x0004E01B), L"no VST3 plug-in could be loaded from the file"},
    {TQ_E_OPENFAILED, L"the file could not be opened"},
    {TQ_E_READFAILED, L"the file could not be read or ended early"},
    {TQ_E_WRITEFAILED, L"the file could not be written"},
    {TQ_E_SIZELIMIT, L"the file would outgrow its format's 4 GiB limit"},
    {TQ_E_NORIFFHEADER, L"not a RIFF file (a WAV file starts with RIFF)"},
    {TQ_E_NOTFOUND, L"not found (in a WAV file: a chunk it needs is missing)"},
    {TQ_E_ZEROLENGTHCHUNK, L"the file has a chunk of length 0"},
    {TQ_E_BADCHUNKHEADER, L"the file has a damaged chunk header"},
    {E_INVALIDARG, L"the file is not a plug-in, or an argument is invalid"},
    {E_UNEXPECTED, L"the shell plug-in has no sub-plug-in with that id"},
    {static_cast<HRESULT>(0x800706BA), L"the server process is not available (it ended)"},
    {static_cast<HRESULT>(0x800706BE), L"the server process ended during the call"},
};

} // namespace

std::wstring DescribeResult(HRESULT hr)
{
    for (const KnownResult& known : kServerResults)
        if (known.code == hr) return known.text;
    wchar_t* buffer = nullptr;
    const DWORD length = FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, static_cast<DWORD>(hr), 0, reinterpret_cast<LPWSTR>(&buffer), 0, nullptr);
    std::wstring text = length && buffer ? std::wstring(buffer, length) : L"unknown error";
    if (buffer) LocalFree(buffer);
    while (!text.empty() && (text.back() == L'\n' || text.back() == L'\r' || text.back() == L' ' ||
                             text.back() == L'.'))
        text.pop_back();
    return text;
}

int ReportFailure(const std::wstring& what, HRESULT hr)
{
    fwprintf(stderr, L"tqvsthost: %ls: 0x%08X (%ls)\n", what.c_str(), static_cast<unsigned>(hr),
             DescribeResult(hr).c_str());
    return 1;
}

} // namespace tqhost
