// Texts for the plug-in server's own result codes by context, falling back to the system's
// message table with its inserts filled or dropped.
#include "hresulttext.h"

#include "hostlog.h"

#include "riff.h"
#include "tqvst.h"

#include <cstdio>
#include <cwctype>

namespace tqhost {
namespace {

struct KnownResult
{
    HRESULT code;
    ResultArea area; // General: the text holds wherever the code arises
    const wchar_t* text;
};

constexpr HRESULT kFileTooLarge = static_cast<HRESULT>(0x80070000u | ERROR_FILE_TOO_LARGE);

// The first row of the code for the context wins, then its general row.
constexpr KnownResult kKnownResults[] = {
    {TQVST_S_SHELL, ResultArea::General,
     L"the file is a shell plug-in; choose a sub-plug-in with --id"},
    {TQVST_E_THREAD, ResultArea::General, L"the load worker could not be set up"},
    {TQVST_E_BADFILE, ResultArea::Preset,
     L"the file is not a preset or bank of this plug-in, or was saved by a newer version of it"},
    {TQVST_E_BADFILE, ResultArea::Wave, L"the file is corrupt or of an unknown format"},
    {TQVST_E_BADFILE, ResultArea::General,
     L"the file is corrupt, of an unknown format, or does not fit this effect"},
    {TQVST_E_TIMEOUT, ResultArea::General,
     L"the plug-in did not finish loading in time and was abandoned"},
    {TQVST_E_PLUGINFAULT, ResultArea::General, L"the plug-in raised an exception"},
    {TQVST_E_NOSELECTION, ResultArea::General, L"no sub-plug-in of the shell is selected"},
    {static_cast<HRESULT>(0x0004E01B), ResultArea::General,
     L"no VST3 plug-in could be loaded from the file"},
    {TQ_E_OPENFAILED, ResultArea::General, L"the file could not be opened"},
    {TQ_E_READFAILED, ResultArea::General, L"the file could not be read or ended early"},
    {TQ_E_WRITEFAILED, ResultArea::General, L"the file could not be written"},
    {TQ_E_SIZELIMIT, ResultArea::General, L"the file would outgrow its format's 4 GiB limit"},
    {TQ_E_NORIFFHEADER, ResultArea::General, L"not a RIFF file (a WAV file starts with RIFF)"},
    {TQ_E_NOTFOUND, ResultArea::Wave, L"a chunk the WAV file needs is missing"},
    {TQ_E_NOTFOUND, ResultArea::General, L"not found"},
    {TQ_E_ZEROLENGTHCHUNK, ResultArea::General, L"the file has a chunk of length 0"},
    {TQ_E_BADCHUNKHEADER, ResultArea::General, L"the file has a damaged chunk header"},
    {kFileTooLarge, ResultArea::Preset,
     L"the plug-in has more parameters or programs than a preset file can hold"},
    {E_INVALIDARG, ResultArea::Plugin, L"the file is not a plug-in, or an argument is invalid"},
    {E_INVALIDARG, ResultArea::Preset, L"the plug-in has no program of that number"},
    {E_UNEXPECTED, ResultArea::Plugin, L"the shell plug-in has no sub-plug-in with that id"},
    {E_UNEXPECTED, ResultArea::Preset,
     L"the file ends early, or its chunk or the plug-in's is empty"},
    {E_UNEXPECTED, ResultArea::General, L"an unexpected failure"},
    // What a host gets when the server it started did not say it was ready within 5 s.
    {REGDB_E_CLASSNOTREG, ResultArea::General,
     L"the plug-in server did not become ready in time; try again"},
    {static_cast<HRESULT>(0x800706BA), ResultArea::General,
     L"the server process is not available (it ended)"},
    {static_cast<HRESULT>(0x800706BE), ResultArea::General,
     L"the server process ended during the call"},
};

// With the inserts ignored a system text keeps "%1", "%2!d!" and escapes such as "%n" as they
// are: inserts take the subject or go, escapes become what they stand for.
std::wstring ResolveInserts(const std::wstring& text, const std::wstring& subject)
{
    std::wstring out;
    for (size_t i = 0; i < text.size(); ++i)
    {
        if (text[i] != L'%' || i + 1 == text.size())
        {
            out += text[i];
            continue;
        }
        const wchar_t next = text[++i];
        if (next >= L'1' && next <= L'9')
        {
            while (i + 1 < text.size() && iswdigit(text[i + 1]))
                ++i;
            if (i + 1 < text.size() && text[i + 1] == L'!')
            {
                const size_t end = text.find(L'!', i + 2);
                i = end == std::wstring::npos ? text.size() - 1 : end;
            }
            out += subject;
        }
        else if (next == L'0')
            break;
        else if (next == L'n' || next == L'r' || next == L't')
            out += L' ';
        else
            out += next; // "%%", "%.", "%!" and the like stand for the character itself
    }
    // A dropped insert leaves doubled or dangling spaces behind.
    std::wstring tidy;
    for (wchar_t c : out)
        if (c != L' ' || (!tidy.empty() && tidy.back() != L' ')) tidy += c;
    return tidy;
}

std::wstring SystemText(HRESULT hr, const std::wstring& subject)
{
    wchar_t* buffer = nullptr;
    const DWORD length = FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, static_cast<DWORD>(hr), 0, reinterpret_cast<LPWSTR>(&buffer), 0, nullptr);
    std::wstring text = length && buffer ? std::wstring(buffer, length) : L"unknown error";
    if (buffer) LocalFree(buffer);
    for (wchar_t& c : text)
        if (c == L'\r' || c == L'\n') c = L' ';
    text = ResolveInserts(text, subject);
    while (!text.empty() && (text.back() == L' ' || text.back() == L'.'))
        text.pop_back();
    return text;
}

} // namespace

std::wstring DescribeResult(HRESULT hr, const ResultContext& context)
{
    for (const KnownResult& known : kKnownResults)
        if (known.code == hr && known.area == context.area) return known.text;
    for (const KnownResult& known : kKnownResults)
        if (known.code == hr && known.area == ResultArea::General) return known.text;
    return SystemText(hr, context.subject);
}

int ReportFailure(const std::wstring& what, HRESULT hr, const ResultContext& context)
{
    const std::wstring meaning = DescribeResult(hr, context);
    fwprintf(stderr, L"tqvsthost: %ls: 0x%08X (%ls)\n", what.c_str(), static_cast<unsigned>(hr),
             meaning.c_str());
    LogLine(TQLOG_ERROR, what + L": " + HexCode(hr) + L" (" + meaning + L")");
    return 1;
}

} // namespace tqhost
