// tqvsthost process: reads a WAV, RF64, Wave64 or AIFF file, sends it through the plug-in block by
// block in the chosen host sample type, and writes the result with the input's metadata in the
// input's container or the one the output's extension names.
#include "processcommand.h"

#include "codinghistory.h"
#include "hresulttext.h"
#include "markerchunks.h"
#include "mediawriter.h"
#include "pluginsession.h"
#include "riff.h"
#include "tqsamplecopy.h"
#include "timetext.h"
#include "wavstream.h"

#include <shlwapi.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

namespace tqhost {
namespace {

// Files longer than this many frames show how far the processing got.
constexpr UINT64 kProgressThresholdFrames = 10ull * 48000;
// Each of the four block buffers stays below this, whatever the channel count, so that a block
// can be allocated and its size counted in 32 bits.
constexpr size_t kMaxBufferBytes = size_t(64) << 20;

// The loudest sample of a block, measured in float so every sample type reads alike.
class PeakMeter
{
public:
    void Measure(TQSAMPLETYPE type, const void* samples, UINT32 channels, UINT32 frames)
    {
        m_scratch.resize(size_t(channels) * frames);
        if (FAILED(TqAudio_CopyByType(TQSAMPLE_FLOAT32, m_scratch.data(), type, samples, channels,
                                      static_cast<long>(frames), 1.0f)))
            return;
        for (float sample : m_scratch)
            m_peak = std::max(m_peak, std::fabs(sample));
    }
    double Decibels() const { return m_peak > 0 ? 20.0 * std::log10(m_peak) : -INFINITY; }

private:
    std::vector<float> m_scratch;
    float m_peak = 0.0f;
};

// Same full path, or, when both exist, the same file under another name (a short name or a link).
bool SameFile(const std::wstring& a, const std::wstring& b)
{
    if (_wcsicmp(a.c_str(), b.c_str()) == 0) return true;
    const auto identity = [](const std::wstring& path, BY_HANDLE_FILE_INFORMATION& info) {
        tq::UniqueFile file(CreateFileW(path.c_str(), 0,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                        nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        return file.Get() != INVALID_HANDLE_VALUE && GetFileInformationByHandle(file.Get(), &info);
    };
    BY_HANDLE_FILE_INFORMATION first = {}, second = {};
    return identity(a, first) && identity(b, second) &&
           first.dwVolumeSerialNumber == second.dwVolumeSerialNumber &&
           first.nFileIndexHigh == second.nFileIndexHigh &&
           first.nFileIndexLow == second.nFileIndexLow;
}

// Sets the effect up for the stream, stopping at the first step that fails.
bool Prepare(ITqVstEffect* effect, const WAVEFORMATEX* format, UINT32 hostType, UINT32 block)
{
    HRESULT hr = S_OK;
    const wchar_t* what = L"could not set the sample rate";
    if (SUCCEEDED(hr = effect->SetSampleRate(format->nSamplesPerSec)))
    {
        what = L"could not set the sample type";
        hr = effect->SetSampleType(hostType);
    }
    if (SUCCEEDED(hr))
    {
        what = L"could not set the channel count";
        hr = effect->SetChannelCount(format->nChannels);
    }
    if (SUCCEEDED(hr))
    {
        what = L"could not set the block size";
        hr = effect->SetBlockSize(static_cast<INT32>(block));
    }
    if (SUCCEEDED(hr))
    {
        what = L"could not resume the plug-in";
        hr = effect->Resume(0);
    }
    if (SUCCEEDED(hr)) return true;
    ReportFailure(what, hr);
    return false;
}

// The plug-in's output channels fill the file's first channels; the file's others are silenced.
void PrintMutedChannels(ITqVstEffect* effect, UINT32 channels)
{
    TqVstEffectInfo info = {};
    if (FAILED(effect->GetEffectInfo(&info)) || info.numOutputs >= channels) return;
    const UINT32 first = info.numOutputs + 1;
    if (first == channels)
        wprintf(L"Muted channel %u of %u: the plug-in has %u outputs\n", first, channels,
                info.numOutputs);
    else
        wprintf(L"Muted channels %u to %u of %u: the plug-in has %u outputs\n", first, channels,
                channels, info.numOutputs);
}

// The coding-history line of the processing: the samples written and what changed them.
std::string CodingHistoryLine(const Options& options, const std::wstring& plugin,
                              const WAVEFORMATEX* format, TQSAMPLETYPE type)
{
    std::wstring line = L"A=PCM,F=" + std::to_wstring(format->nSamplesPerSec) + L",W=" +
                        std::to_wstring(TqAudio_BytesFromSampleType(type) * 8) + L",M=" +
                        (format->nChannels == 1   ? L"mono"
                         : format->nChannels == 2 ? L"stereo"
                                                  : std::to_wstring(format->nChannels) + L"ch") +
                        L",T=tqvsthost " + PathFindFileNameW(plugin.c_str());
    if (options.sampleType) line += std::wstring(L" type ") + SampleTypeName(*options.sampleType);
    if (!options.presetFile.empty())
        line += std::wstring(L" preset ") + PathFindFileNameW(options.presetFile.c_str());
    if (!options.bankFile.empty())
        line += std::wstring(L" bank ") + PathFindFileNameW(options.bankFile.c_str());
    if (options.program) line += L" program " + std::to_wstring(*options.program);
    for (const auto& [index, value] : options.parameters)
    {
        wchar_t text[48];
        swprintf(text, 48, L" param %u=%g", index, static_cast<double>(value));
        line += text;
    }
    std::string narrow(line.size(), '\0');
    const int made =
        WideCharToMultiByte(CP_ACP, 0, line.c_str(), static_cast<int>(line.size()), narrow.data(),
                            static_cast<int>(narrow.size()), nullptr, nullptr);
    narrow.resize(made > 0 ? static_cast<size_t>(made) : 0);
    return narrow;
}

} // namespace

int RunProcess(const Options& options)
{
    if (options.arguments.size() != 3)
    {
        fwprintf(stderr, L"tqvsthost: process needs PLUGIN IN OUT (see --help)\n");
        return 1;
    }
    std::wstring input, output;
    if (!FullPath(options.arguments[1], input) || !FullPath(options.arguments[2], output))
        return ReportFailure(L"not a usable path", HRESULT_FROM_WIN32(ERROR_BAD_PATHNAME));
    if (SameFile(input, output))
        return ReportFailure(L"the output would overwrite the input " + input,
                             HRESULT_FROM_WIN32(ERROR_FILE_EXISTS));

    MediaReader reader;
    HRESULT hr = reader.Open(input);
    if (FAILED(hr))
        return ReportFailure(L"could not read " + input + L" as a WAV, RF64, Wave64 or AIFF file",
                             hr, {ResultArea::Wave, input});
    const MediaLayout& layout = reader.Layout();
    const WAVEFORMATEX* format = layout.Header();
    const TQSAMPLETYPE fileType = layout.sampleType;
    if (fileType == TQSAMPLE_NONE)
        return ReportFailure(input + L" holds compressed or unknown samples",
                             HRESULT_FROM_WIN32(ERROR_NOT_SUPPORTED));
    const UINT32 channels = format->nChannels;
    // Every copy steps by channels times the sample size; a frame of any other size is not a
    // plain sample format, and reading it as one runs past the buffers.
    const UINT32 frameBytes = channels * TqAudio_BytesFromSampleType(fileType);
    if (format->nBlockAlign != frameBytes)
        return ReportFailure(input + L": a frame of " + std::to_wstring(channels) +
                                 L" channels of " + SampleTypeName(fileType) + L" is " +
                                 std::to_wstring(frameBytes) + L" bytes, the header says " +
                                 std::to_wstring(format->nBlockAlign),
                             HRESULT_FROM_WIN32(ERROR_NOT_SUPPORTED));
    const Container container = OutputContainer(output, layout.container);
    const TQSAMPLETYPE outType = OutputSampleType(container, fileType);
    if (outType == TQSAMPLE_NONE)
        return ReportFailure(std::wstring(L"an ") + ContainerName(container) +
                                 L" file cannot hold " + SampleTypeName(fileType) + L" samples",
                             HRESULT_FROM_WIN32(ERROR_NOT_SUPPORTED));
    const auto hostType = static_cast<TQSAMPLETYPE>(options.sampleType.value_or(outType));
    const UINT32 hostBytes = TqAudio_BytesFromSampleType(hostType);
    const bool convertIn = hostType != fileType;
    const bool convertOut = hostType != outType;
    if ((convertIn && !TqAudio_GetCopyFunction2(hostType, fileType)) ||
        (convertOut && !TqAudio_GetCopyFunction2(outType, hostType)))
        return ReportFailure(std::wstring(L"no conversion between the file's samples and ") +
                                 SampleTypeName(hostType),
                             E_NOTIMPL);

    PluginSession session;
    if (!OpenPlugin(options, options.arguments[0], session)) return 1;
    ITqVstEffect* effect = session.effect.Get();
    if (!ApplySettings(options, effect)) return 1;
    const size_t outFrameBytes = size_t(channels) * TqAudio_BytesFromSampleType(outType);
    const size_t widestFrame =
        std::max({size_t(frameBytes), size_t(channels) * hostBytes, outFrameBytes});
    const auto block = static_cast<UINT32>(
        std::clamp<size_t>(kMaxBufferBytes / widestFrame, 1, options.blockFrames));
    if (!Prepare(effect, format, hostType, block)) return 1;

    // The metadata goes along; the broadcast-wave history records this step.
    std::vector<MediaChunk> chunks = layout.chunks;
    for (MediaChunk& chunk : chunks)
        if (chunk.fourcc == RIFF_ID('b', 'e', 'x', 't') && !chunk.aiff)
            AppendCodingHistory(chunk.data,
                                CodingHistoryLine(options, session.path, format, outType));
    ConvertMarkers(chunks, layout.container, container);
    for (const std::wstring& warning : layout.warnings)
        fwprintf(stderr, L"tqvsthost: %ls: %ls\n", input.c_str(), warning.c_str());
    MediaWriter writer;
    std::vector<std::wstring> dropped;
    hr = writer.Create(output, container, layout, outType, chunks, dropped);
    if (FAILED(hr))
        return ReportFailure(L"could not create " + output, hr, {ResultArea::Wave, output});
    for (const std::wstring& name : dropped)
        wprintf(L"Left out chunk %ls: the %ls output has no place for it\n", name.c_str(),
                ContainerName(container));

    const size_t fileBlockBytes = size_t(block) * format->nBlockAlign;
    const size_t hostBlockBytes = size_t(block) * channels * hostBytes;
    std::vector<BYTE> fileIn(fileBlockBytes), fileOut(size_t(block) * outFrameBytes);
    std::vector<BYTE> hostIn(hostBlockBytes), hostOut(hostBlockBytes);
    PeakMeter peakIn, peakOut;
    const UINT64 total = layout.Frames();
    const UINT32 rate = format->nSamplesPerSec;
    const std::wstring length = FramesToText(options.timeFormat, total, rate, true);
    wprintf(L"Length: %ls (%llu frames)\n", length.c_str(), total);
    fflush(stdout);
    const bool showProgress = total > kProgressThresholdFrames;
    UINT64 done = 0;
    int shownPercent = -1;
    for (;;)
    {
        UINT32 frames = 0;
        hr = reader.Read(fileIn.data(), block, &frames);
        if (FAILED(hr))
            return ReportFailure(L"could not read " + input, hr, {ResultArea::Wave, input});
        if (frames == 0) break;
        peakIn.Measure(fileType, fileIn.data(), channels, frames);
        if (convertIn)
            TqAudio_CopyByType(hostType, hostIn.data(), fileType, fileIn.data(), channels,
                               static_cast<long>(frames), 1.0f);
        BYTE* in = convertIn ? hostIn.data() : fileIn.data();
        BYTE* out = convertOut ? hostOut.data() : fileOut.data();
        hr = effect->Process(in, channels, out, static_cast<INT32>(channels), frames, hostBytes);
        if (FAILED(hr)) return ReportFailure(L"the plug-in could not process", hr);
        if (convertOut)
            TqAudio_CopyByType(outType, fileOut.data(), hostType, hostOut.data(), channels,
                               static_cast<long>(frames), 1.0f);
        peakOut.Measure(outType, fileOut.data(), channels, frames);
        hr = writer.Write(fileOut.data(), frames);
        if (FAILED(hr))
            return ReportFailure(L"could not write " + output, hr, {ResultArea::Wave, output});
        done += frames;
        const int percent = static_cast<int>(done * 100 / std::max<UINT64>(total, 1));
        if (showProgress && percent / 10 != shownPercent / 10)
        {
            fwprintf(stderr, L"\rprocessing: %ls of %ls (%d%%)",
                     FramesToText(options.timeFormat, done, rate, false).c_str(), length.c_str(),
                     percent);
            shownPercent = percent;
        }
    }
    if (showProgress) fwprintf(stderr, L"\n");
    effect->Suspend(1);
    hr = writer.Commit();
    if (FAILED(hr))
        return ReportFailure(L"could not complete " + output, hr, {ResultArea::Wave, output});
    wprintf(L"Processed %llu frames, %u channels, %u Hz, as %ls, through %ls\n", done, channels,
            static_cast<unsigned>(format->nSamplesPerSec), SampleTypeName(hostType),
            session.path.c_str());
    wprintf(L"Wrote %ls as %ls\n", output.c_str(), ContainerName(writer.Written()));
    PrintMutedChannels(effect, channels);
    if (options.location == 0)
        wprintf(L"Plug-in process: %lu (in process)\n", GetCurrentProcessId());
    else
        wprintf(L"Plug-in process: %lu (server; this host is %lu)\n",
                session.factory.ServerProcessId(), GetCurrentProcessId());
    wprintf(L"Peak in:  %.2f dBFS\nPeak out: %.2f dBFS\n", peakIn.Decibels(), peakOut.Decibels());
    return 0;
}

} // namespace tqhost
