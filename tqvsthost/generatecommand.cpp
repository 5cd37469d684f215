// tqvsthost generate: a 997 Hz sine at half scale, stereo, 16-bit, 44.1 kHz. 997 Hz is prime, so
// no block or sample-rate cycle lines up with it and every sample value gets exercised.
#include "generatecommand.h"

#include "hresulttext.h"
#include "pluginsession.h"
#include "wavstream.h"

#include <cmath>
#include <cstdio>
#include <vector>

namespace tqhost {
namespace {

constexpr DWORD kRate = 44100;
constexpr WORD kChannels = 2;
constexpr double kFrequency = 997.0;
constexpr double kAmplitude = 0.5; // -6.02 dBFS
constexpr UINT32 kBlockFrames = 4096;

WavFormat SineFormat()
{
    WavFormat format;
    format.size = sizeof(PCMWAVEFORMAT);
    format.chunk.assign(sizeof(WAVEFORMATEXTENSIBLE), 0);
    auto* header = reinterpret_cast<WAVEFORMATEX*>(format.chunk.data());
    header->wFormatTag = WAVE_FORMAT_PCM;
    header->nChannels = kChannels;
    header->nSamplesPerSec = kRate;
    header->wBitsPerSample = 16;
    header->nBlockAlign = kChannels * 2;
    header->nAvgBytesPerSec = kRate * header->nBlockAlign;
    return format;
}

} // namespace

int RunGenerate(const Options& options)
{
    if (options.arguments.size() != 1)
    {
        fwprintf(stderr, L"tqvsthost: generate needs exactly one output file (see --help)\n");
        return 1;
    }
    std::wstring path;
    if (!FullPath(options.arguments[0], path))
        return ReportFailure(L"not a usable path", HRESULT_FROM_WIN32(ERROR_BAD_PATHNAME));
    WavWriter writer;
    HRESULT hr = writer.Create(path, SineFormat());
    if (FAILED(hr)) return ReportFailure(L"could not create " + path, hr, {ResultArea::Wave, path});

    const UINT64 total = static_cast<UINT64>(std::llround(options.seconds * kRate));
    std::vector<INT16> samples(size_t(kBlockFrames) * kChannels);
    const double step = 2.0 * 3.14159265358979323846 * kFrequency / kRate;
    for (UINT64 frame = 0; frame < total;)
    {
        const UINT32 frames = static_cast<UINT32>(std::min<UINT64>(kBlockFrames, total - frame));
        for (UINT32 i = 0; i < frames; ++i)
        {
            const auto value = static_cast<INT16>(
                std::lround(32767.0 * kAmplitude * std::sin(step * double(frame + i))));
            for (WORD channel = 0; channel < kChannels; ++channel)
                samples[size_t(i) * kChannels + channel] = value;
        }
        hr = writer.Write(samples.data(), frames);
        if (FAILED(hr))
            return ReportFailure(L"could not write " + path, hr, {ResultArea::Wave, path});
        frame += frames;
    }
    hr = writer.Commit();
    if (FAILED(hr))
        return ReportFailure(L"could not complete " + path, hr, {ResultArea::Wave, path});
    wprintf(L"Wrote %llu frames of a %.0f Hz sine at %.2f dBFS, stereo, 16-bit, %lu Hz: %ls\n",
            total, kFrequency, 20.0 * std::log10(kAmplitude), kRate, path.c_str());
    return 0;
}

} // namespace tqhost
