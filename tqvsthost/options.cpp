// Parsing and help text of tqvsthost's command line.
#include "options.h"

#include "tqsamplecopy.h"

#include <algorithm>
#include <cstdio>
#include <cwchar>
#include <cwctype>

namespace tqhost {
namespace {

std::optional<UINT32> ParseNumber(const std::wstring& text)
{
    if (text.empty()) return std::nullopt;
    wchar_t* end = nullptr;
    const unsigned long long value = wcstoull(text.c_str(), &end, 0);
    if (*end != 0 || value > 0xFFFFFFFFull) return std::nullopt;
    return static_cast<UINT32>(value);
}

std::optional<float> ParseFloat(const std::wstring& text)
{
    if (text.empty()) return std::nullopt;
    wchar_t* end = nullptr;
    const double value = wcstod(text.c_str(), &end);
    if (*end != 0) return std::nullopt;
    return static_cast<float>(value);
}

// A block beyond a million frames gains nothing and could not be allocated for many channels.
constexpr UINT32 kMaxBlockFrames = 1u << 20;

struct SampleTypeRow
{
    UINT32 code;
    const wchar_t* name;
};

// The types a host may hand the effect: those with a byte size of their own.
constexpr SampleTypeRow kSampleTypes[] = {
    {16, L"pcm8"},    {17, L"pcm16"},   {18, L"pcm24"},      {19, L"pcm32"},
    {32, L"float32"}, {33, L"float64"}, {48, L"unpacked24"}, {49, L"signed8"},
    {64, L"be16"},    {65, L"be24"},    {66, L"be32"},
};

} // namespace

std::optional<UINT32> ParseSampleType(const std::wstring& text)
{
    const std::optional<UINT32> code = ParseNumber(text);
    for (const SampleTypeRow& row : kSampleTypes)
        if ((code && *code == row.code) || _wcsicmp(text.c_str(), row.name) == 0) return row.code;
    return std::nullopt;
}

const wchar_t* SampleTypeName(UINT32 type)
{
    for (const SampleTypeRow& row : kSampleTypes)
        if (row.code == type) return row.name;
    return L"unknown";
}

std::optional<WAVEFORMATEX> ParseWaveFormat(const std::wstring& text)
{
    const size_t first = text.find(L',');
    const size_t second = first == std::wstring::npos ? first : text.find(L',', first + 1);
    if (second == std::wstring::npos) return std::nullopt;
    const auto rate = ParseNumber(text.substr(0, first));
    const auto channels = ParseNumber(text.substr(first + 1, second - first - 1));
    const auto type = ParseSampleType(text.substr(second + 1));
    if (!rate || !channels || !type || *rate == 0 || *channels == 0 || *channels > 64)
        return std::nullopt;
    const bool isFloat = *type == TQSAMPLE_FLOAT32 || *type == TQSAMPLE_FLOAT64;
    if (!isFloat && *type != TQSAMPLE_PCM8 && *type != TQSAMPLE_PCM16 && *type != TQSAMPLE_PCM24 &&
        *type != TQSAMPLE_PCM32)
        return std::nullopt;
    WAVEFORMATEX wfx = {};
    wfx.wFormatTag = isFloat ? WAVE_FORMAT_IEEE_FLOAT : WAVE_FORMAT_PCM;
    wfx.nChannels = static_cast<WORD>(*channels);
    wfx.nSamplesPerSec = *rate;
    wfx.wBitsPerSample =
        static_cast<WORD>(TqAudio_BytesFromSampleType(static_cast<TQSAMPLETYPE>(*type)) * 8);
    wfx.nBlockAlign = static_cast<WORD>(wfx.nChannels * wfx.wBitsPerSample / 8);
    wfx.nAvgBytesPerSec = wfx.nSamplesPerSec * wfx.nBlockAlign;
    return wfx;
}

std::optional<UINT32> ParsePluginId(const std::wstring& text)
{
    std::wstring chars = text;
    if (chars.size() == 6 && chars.front() == L'\'' && chars.back() == L'\'')
        chars = chars.substr(1, 4);
    const bool allDigits = !chars.empty() && std::all_of(chars.begin(), chars.end(), iswdigit);
    if (chars.size() == 4 && !allDigits)
    {
        UINT32 id = 0;
        for (wchar_t c : chars)
        {
            if (c < 0x20 || c > 0x7E) return std::nullopt;
            id = (id << 8) | static_cast<UINT32>(c);
        }
        return id;
    }
    return ParseNumber(text);
}

std::wstring FourCharacters(UINT32 id)
{
    std::wstring text;
    for (int shift = 24; shift >= 0; shift -= 8)
    {
        const wchar_t c = static_cast<wchar_t>((id >> shift) & 0xFF);
        text += c >= 0x20 && c <= 0x7E ? c : L'.';
    }
    return text;
}

bool ParseOptions(int argc, wchar_t** argv, Options& options, std::wstring& error)
{
    bool inproc = false;
    bool x86 = false;
    for (int i = 1; i < argc; ++i)
    {
        const std::wstring arg = argv[i];
        const auto value = [&]() -> const wchar_t* {
            if (i + 1 >= argc)
            {
                error = arg + L" needs a value";
                return nullptr;
            }
            return argv[++i];
        };
        if (arg == L"--help" || arg == L"-h" || arg == L"/?")
            options.help = true;
        else if (arg == L"--inproc")
            inproc = true;
        else if (arg == L"--x86")
            x86 = true;
        else if (arg == L"--id")
        {
            const wchar_t* text = value();
            if (!text) return false;
            options.id = ParsePluginId(text);
            if (!options.id)
            {
                error = std::wstring(L"--id: not a plug-in id: ") + text;
                return false;
            }
        }
        else if (arg == L"--timeout" || arg == L"--block" || arg == L"--program" ||
                 arg == L"--process-timeout")
        {
            const wchar_t* text = value();
            if (!text) return false;
            const auto number = ParseNumber(text);
            if (!number || (arg == L"--block" && (*number == 0 || *number > kMaxBlockFrames)) ||
                (arg == L"--process-timeout" && *number == 0))
            {
                error = arg + L": not a usable number: " + text;
                return false;
            }
            if (arg == L"--timeout")
                options.timeoutMs = *number;
            else if (arg == L"--block")
                options.blockFrames = *number;
            else if (arg == L"--process-timeout")
                options.processTimeoutMs = *number;
            else
                options.program = *number;
        }
        else if (arg == L"--type")
        {
            const wchar_t* text = value();
            if (!text) return false;
            options.sampleType = ParseSampleType(text);
            if (!options.sampleType)
            {
                error = std::wstring(L"--type: not a sample type: ") + text;
                return false;
            }
        }
        else if (arg == L"--param")
        {
            const wchar_t* text = value();
            if (!text) return false;
            const std::wstring assignment = text;
            const size_t equals = assignment.find(L'=');
            const auto index = equals == std::wstring::npos
                                   ? std::nullopt
                                   : ParseNumber(assignment.substr(0, equals));
            const auto number = equals == std::wstring::npos
                                    ? std::nullopt
                                    : ParseFloat(assignment.substr(equals + 1));
            if (!index || !number)
            {
                error = L"--param: expected INDEX=VALUE, not " + assignment;
                return false;
            }
            options.parameters.emplace_back(*index, *number);
        }
        else if (arg == L"--preset" || arg == L"--bank")
        {
            const wchar_t* text = value();
            if (!text) return false;
            (arg == L"--preset" ? options.presetFile : options.bankFile) = text;
        }
        else if (arg == L"--seconds")
        {
            const wchar_t* text = value();
            if (!text) return false;
            const auto seconds = ParseFloat(text);
            if (!seconds || *seconds < 0)
            {
                error = std::wstring(L"--seconds: not a number of seconds: ") + text;
                return false;
            }
            options.seconds = *seconds;
        }
        else if (arg == L"--time-format")
        {
            const wchar_t* text = value();
            if (!text) return false;
            const auto format = ParseTimeFormat(text);
            if (!format)
            {
                error = std::wstring(L"--time-format: not a time format: ") + text;
                return false;
            }
            options.timeFormat.format = *format;
        }
        else if (arg == L"--tempo")
        {
            const wchar_t* text = value();
            if (!text) return false;
            const auto tempo = ParseFloat(text);
            if (!tempo || !(*tempo >= 1.0f && *tempo <= 999.0f))
            {
                error = std::wstring(L"--tempo: not a tempo from 1 to 999 beats a minute: ") + text;
                return false;
            }
            options.timeFormat.tempo = *tempo;
        }
        else if (arg == L"--log")
        {
            const wchar_t* text = value();
            if (!text) return false;
            options.logFile = text;
        }
        else if (arg == L"--format")
        {
            const wchar_t* text = value();
            if (!text) return false;
            options.repairFormat = ParseWaveFormat(text);
            if (!options.repairFormat)
            {
                error = std::wstring(L"--format: expected RATE,CHANNELS,TYPE, not ") + text;
                return false;
            }
        }
        else if (arg == L"--json")
            options.json = true;
        else if (arg.size() > 1 && arg[0] == L'-')
        {
            error = L"unknown option " + arg;
            return false;
        }
        else if (options.command.empty())
            options.command = arg;
        else
            options.arguments.push_back(arg);
    }
    if (inproc && x86)
    {
        error = L"--inproc and --x86 exclude each other";
        return false;
    }
    if (!options.presetFile.empty() && !options.bankFile.empty())
    {
        error = L"--preset and --bank exclude each other";
        return false;
    }
    options.location = inproc ? 0 : x86 ? 2 : 1;
    return true;
}

void PrintUsage()
{
    wprintf(L"tqvsthost: hosts VST2 and VST3 plug-ins through the tqvst plug-in server.\n"
            L"\n"
            L"PLUGIN is a VST2 .dll, a VST3 .vst3 file, or a VST3 bundle folder X.vst3, of which\n"
            L"the file X.vst3\\Contents\\x86_64-win\\X.vst3 is loaded (x86-win with --x86).\n"
            L"\n"
            L"Usage:\n"
            L"  tqvsthost info PLUGIN [--inproc | --x86] [--id ID] [--timeout MS]\n"
            L"      Loads PLUGIN, prints its name, vendor, product, unique id, version, program,\n"
            L"      parameter and channel counts, latency, flags and state, and which processes\n"
            L"      the host and the plug-in ran in. For a shell plug-in, lists its sub-plug-ins.\n"
            L"      For VST3: the class name, vendor, ShellId and version; a module of several\n"
            L"      audio classes lists each with its ShellId.\n"
            L"  tqvsthost params PLUGIN [--inproc | --x86] [--id ID]\n"
            L"      Lists every parameter (name, display text, label, value, whether it can be\n"
            L"      automated, properties or \"none\") and every program by name. For VST3 the\n"
            L"      label is the units and the value the normalised value (0 to 1).\n"
            L"  tqvsthost scan FOLDER... [--timeout MS] [--json] [--x86]\n"
            L"      Loads every *.dll and *.vst3 file and every .vst3 bundle under the folders\n"
            L"      (subfolders too) and prints one line per file and a summary. A plug-in\n"
            L"      that hangs (default limit 10000 ms) or faults is reported and the scan\n"
            L"      goes on; a server that dies is started again.\n"
            L"      --json prints a JSON array (UTF-8) on standard output, an object per file,\n"
            L"      and the progress on standard error; a VST3 module of several audio classes\n"
            L"      gets their ShellIds as \"shellIds\".\n"
            L"  tqvsthost process PLUGIN IN OUT [--type T] [--block N]\n"
            L"                    [--param INDEX=VALUE]... [--preset FILE.fxp|FILE.vstpreset]\n"
            L"                    [--bank FILE.fxb [--program N]] [--inproc | --x86] [--id ID]\n"
            L"                    [--time-format F [--tempo BPM]] [--process-timeout MS]\n"
            L"      Sends IN through the plug-in in blocks of N frames (default 4096, at most\n"
            L"      1048576) and writes OUT, then prints the peaks in and out in dBFS and the\n"
            L"      process the plug-in ran in. IN is a WAV, RF64, Wave64, AIFF or AIFF-C file\n"
            L"      of PCM or float samples. OUT takes the container its extension names (.wav,\n"
            L"      .w64, .aif), else IN's, and IN's sample format (AIFF's samples become\n"
            L"      little-endian in WAV and Wave64, and float goes to AIFF-C). A WAV output\n"
            L"      past 4 GiB becomes RF64. Every metadata chunk of IN (bext, iXML, LIST INFO\n"
            L"      and UNFO, DISP, markers, unknown chunks) is carried to OUT where its\n"
            L"      container has a form for it (the others are named; WAV cue points and\n"
            L"      AIFF markers are converted), and bext gains a\n"
            L"      coding-history line naming the plug-in and its settings.\n"
            L"      The plug-in gets the samples as type T (default: OUT's own): pcm8, pcm16,\n"
            L"      pcm24, pcm32, float32, float64, unpacked24, signed8, be16, be24, be32 or a\n"
            L"      code. OUT is written under a temporary name and renamed when complete; OUT\n"
            L"      may not be IN. The input's length and the progress are shown as time F:\n"
            L"      time (hh:mm:ss.mmm, the default), samples, seconds, smpte24, smpte25,\n"
            L"      smpte2997drop, smpte30, or measures (4/4 at BPM beats a minute, default 120).\n"
            L"      A VST3 plug-in takes --param values normalised, from 0 to 1.\n"
            L"  tqvsthost probe FILE... [--json] [--time-format F [--tempo BPM]]\n"
            L"      Prints each file's container, format, length (as time F), data offset and\n"
            L"      every metadata chunk decoded: bext with its time reference as a position,\n"
            L"      iXML as an indented outline, LIST INFO and UNFO items by label, DISP\n"
            L"      entries; other chunks by id and size. A damaged file is named with what\n"
            L"      is wrong. --json prints a JSON array (UTF-8), an object per file.\n"
            L"  tqvsthost repair FILE [--format RATE,CHANNELS,TYPE]\n"
            L"      Rebuilds the header of a WAV or Wave64 file whose writer died, from the\n"
            L"      samples the file still holds in whole frames, after copying it to\n"
            L"      FILE.bak (an existing FILE.bak stops it). Prints what the header said\n"
            L"      before and after. --format (e.g. 48000,2,pcm24; types pcm8, pcm16,\n"
            L"      pcm24, pcm32, float32, float64) is used where the old header holds no\n"
            L"      sensible format; without it, 44100 Hz 16-bit stereo.\n"
            L"  tqvsthost save-preset PLUGIN FILE.fxp|FILE.fxb|FILE.vstpreset\n"
            L"                        [--param INDEX=VALUE]... [--program N]\n"
            L"                        [--preset FILE.fxp|FILE.vstpreset | --bank FILE.fxb]\n"
            L"      Applies the settings, then saves the current program (.fxp) or the whole\n"
            L"      bank (.fxb); a VST3 plug-in saves its whole state (.vstpreset). --program\n"
            L"      chooses the program first.\n"
            L"  tqvsthost editor PLUGIN [--seconds S] [--inproc | --x86] [--id ID]\n"
            L"      Opens the plug-in's editor in a window of the size it reports, keeps it\n"
            L"      idle for S seconds (default 3), following its requests to resize, then\n"
            L"      closes it. A VST3 view keeps the size it reports. Needs a display.\n"
            L"  tqvsthost generate OUT.wav [--seconds S]\n"
            L"      Writes a test signal: a 997 Hz sine at -6 dBFS, stereo, 16-bit, 44100 Hz,\n"
            L"      S seconds long (default 3).\n"
            L"  tqvsthost --help\n"
            L"      Shows this text.\n"
            L"\n"
            L"Options:\n"
            L"  --inproc      load the plug-in inside this process (no server)\n"
            L"  --x86         load the plug-in in the 32-bit server (x86\\tqvstserver.exe)\n"
            L"                Without either, a server of this program's bitness is used.\n"
            L"  --id ID       sub-plug-in of a shell: four characters (TqSA) or a number; for\n"
            L"                VST3 the ShellId as info prints it (0x...)\n"
            L"  --timeout MS  give up on a plug-in that takes longer than MS milliseconds to load\n"
            L"  --process-timeout MS\n"
            L"                give up on a server that takes longer than MS milliseconds (default\n"
            L"                2000) over one block of audio, and end it\n"
            L"  --log FILE    record what the host does (commands, plug-ins, result codes, times)\n"
            L"                in FILE, to send with a bug report; any command takes it\n"
            L"\n"
            L"A failure prints one line with the HRESULT and its meaning, and exits with 1.\n");
}

} // namespace tqhost
