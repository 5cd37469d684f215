// The command line of tqvsthost.
#pragma once

#include "timetext.h"

#include <windows.h>

#include <mmreg.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tqhost {

struct Options
{
    std::wstring command;
    std::vector<std::wstring> arguments;
    int location = 1; // out of process, same bitness
    std::optional<UINT32> id;
    std::optional<UINT32> timeoutMs;
    // How long a server may take over one block before it is given up (client default 2000 ms).
    std::optional<UINT32> processTimeoutMs;
    bool json = false;
    std::optional<UINT32> sampleType;
    UINT32 blockFrames = 4096;
    std::vector<std::pair<UINT32, float>> parameters; // in the order given
    std::wstring presetFile;
    std::wstring bankFile;
    std::optional<UINT32> program;
    double seconds = 3.0;
    TimeFormat timeFormat;
    std::wstring logFile;
    // The format repair assumes where the damaged header holds none that makes sense.
    std::optional<WAVEFORMATEX> repairFormat;
    bool help = false;
};

// False with a one-line error for an unknown option or a missing or bad value.
bool ParseOptions(int argc, wchar_t** argv, Options& options, std::wstring& error);

// A plug-in id given as four characters ('TqGn' or TqGn) or as a number (decimal or 0x hex).
std::optional<UINT32> ParsePluginId(const std::wstring& text);

// A sample type by its code (17) or its name (pcm16, float32, ...).
std::optional<UINT32> ParseSampleType(const std::wstring& text);
const wchar_t* SampleTypeName(UINT32 type);

// A plain PCM or float format written RATE,CHANNELS,TYPE (48000,2,pcm24).
std::optional<WAVEFORMATEX> ParseWaveFormat(const std::wstring& text);

// The four characters of an id where they are printable, for display.
std::wstring FourCharacters(UINT32 id);

void PrintUsage();

} // namespace tqhost
