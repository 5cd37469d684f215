// Reading and writing large audio files through the host's media reader and writer, in each
// container, beside plain WriteFile/ReadFile of the same number of bytes in the same run. Prints
// the median MB/s of several runs. Usage: bench_media [MiB] [runs] (default 256 MiB, 5 runs).
#include "mediawriter.h"

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cwchar>
#include <string>
#include <vector>

namespace {

constexpr UINT32 kBlockFrames = 65536;

double Seconds(LARGE_INTEGER from, LARGE_INTEGER to)
{
    LARGE_INTEGER frequency;
    QueryPerformanceFrequency(&frequency);
    return double(to.QuadPart - from.QuadPart) / double(frequency.QuadPart);
}

double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// A stereo 24-bit format, the commonest recording format past 4 GiB.
tqhost::MediaLayout Layout()
{
    tqhost::MediaLayout layout;
    layout.format.assign(sizeof(WAVEFORMATEXTENSIBLE), 0);
    auto* wfx = reinterpret_cast<WAVEFORMATEX*>(layout.format.data());
    *wfx = {WAVE_FORMAT_PCM, 2, 48000, 48000 * 6, 6, 24, 0};
    layout.sampleType = TQSAMPLE_PCM24;
    return layout;
}

// One write and one read of the whole file; false when a step fails.
bool MeasureLayers(const std::wstring& path, tqhost::Container container, UINT64 frames,
                   const std::vector<BYTE>& block, double& writeSeconds, double& readSeconds)
{
    const tqhost::MediaLayout layout = Layout();
    const TQSAMPLETYPE type = tqhost::OutputSampleType(container, layout.sampleType);
    LARGE_INTEGER start, end;
    QueryPerformanceCounter(&start);
    {
        tqhost::MediaWriter writer;
        std::vector<std::wstring> dropped;
        if (FAILED(writer.Create(path, container, layout, type, {}, dropped))) return false;
        for (UINT64 done = 0; done < frames; done += kBlockFrames)
            if (FAILED(writer.Write(block.data(), kBlockFrames))) return false;
        if (FAILED(writer.Commit())) return false;
    }
    QueryPerformanceCounter(&end);
    writeSeconds = Seconds(start, end);
    QueryPerformanceCounter(&start);
    {
        tqhost::MediaReader reader;
        // What was written must read back whole, in the container the size called for.
        const bool large = frames * 6 > 0xFFFFFFFFull - 1024;
        if (FAILED(reader.Open(path)) || reader.Layout().Frames() != frames ||
            (container == tqhost::Container::Wave && large &&
             reader.Layout().container != tqhost::Container::Rf64))
            return false;
        std::vector<BYTE> buffer(block.size());
        for (UINT32 read = 1; read;)
            if (FAILED(reader.Read(buffer.data(), kBlockFrames, &read))) return false;
    }
    QueryPerformanceCounter(&end);
    readSeconds = Seconds(start, end);
    return true;
}

bool MeasurePlain(const std::wstring& path, UINT64 bytes, const std::vector<BYTE>& block,
                  double& writeSeconds, double& readSeconds)
{
    LARGE_INTEGER start, end;
    QueryPerformanceCounter(&start);
    HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    DWORD done = 0;
    bool ok = true;
    for (UINT64 at = 0; ok && at < bytes; at += block.size())
        ok = WriteFile(file, block.data(), static_cast<DWORD>(block.size()), &done, nullptr);
    CloseHandle(file);
    QueryPerformanceCounter(&end);
    writeSeconds = Seconds(start, end);
    QueryPerformanceCounter(&start);
    file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                       FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    std::vector<BYTE> buffer(block.size());
    while (ok && ReadFile(file, buffer.data(), static_cast<DWORD>(buffer.size()), &done, nullptr) &&
           done)
    {
    }
    CloseHandle(file);
    QueryPerformanceCounter(&end);
    readSeconds = Seconds(start, end);
    return ok;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    const UINT64 mebibytes = argc > 1 ? std::wcstoull(argv[1], nullptr, 10) : 256;
    const int runs = argc > 2 ? std::max(1, _wtoi(argv[2])) : 5;
    const UINT64 blockBytes = UINT64(kBlockFrames) * 6;
    const UINT64 frames =
        std::max<UINT64>(mebibytes << 20, blockBytes) / 6 / kBlockFrames * kBlockFrames;
    const UINT64 bytes = frames * 6;
    std::vector<BYTE> block(static_cast<size_t>(blockBytes));
    for (size_t i = 0; i < block.size(); ++i)
        block[i] = static_cast<BYTE>(i * 7 + 3);

    wchar_t folder[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, folder);
    const std::wstring base =
        std::wstring(folder) + L"bench_media_" + std::to_wstring(GetCurrentProcessId());
    wprintf(L"%llu MiB of stereo 24-bit samples, %d runs, medians in MB/s\n", bytes >> 20, runs);
    wprintf(L"%-24ls %10ls %10ls\n", L"", L"write", L"read");

    struct Row
    {
        const wchar_t* label;
        tqhost::Container container;
        const wchar_t* extension;
        bool plain;
    };
    const Row rows[] = {
        {L"plain WriteFile/ReadFile", tqhost::Container::Wave, L".raw", true},
        {L"WAV (RF64 past 4 GiB)", tqhost::Container::Wave, L".wav", false},
        {L"RF64", tqhost::Container::Rf64, L".wav", false},
        {L"Wave64", tqhost::Container::Wave64, L".w64", false},
        {L"AIFF (big-endian)", tqhost::Container::Aiff, L".aif", false},
    };
    for (const Row& row : rows)
    {
        if (row.container == tqhost::Container::Aiff && bytes >= 0xFFFFFF00ull)
        {
            wprintf(L"%-24ls not measured: AIFF stops at 4 GiB\n", row.label);
            continue;
        }
        const std::wstring path = base + row.extension;
        std::vector<double> writes, reads;
        for (int run = 0; run < runs; ++run)
        {
            double write = 0, read = 0;
            const bool ok = row.plain
                                ? MeasurePlain(path, bytes, block, write, read)
                                : MeasureLayers(path, row.container, frames, block, write, read);
            if (!ok) break;
            writes.push_back(double(bytes) / 1e6 / write);
            reads.push_back(double(bytes) / 1e6 / read);
        }
        DeleteFileW(path.c_str());
        if (writes.size() != static_cast<size_t>(runs))
            wprintf(L"%-24ls failed\n", row.label);
        else
            wprintf(L"%-24ls %10.0f %10.0f\n", row.label, Median(writes), Median(reads));
    }
    return 0;
}
