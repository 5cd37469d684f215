// Test helpers for the Wave64, RF64 and wave file tests: chunk images built in code, formats,
// the reference files a widely used audio tool wrote at build time, and sparse large files.
#pragma once

#include "riff64.h"
#include "rf64.h"

#include "kernel/media/riffimage.h"
#include "support/testpaths.h"

#include <mmreg.h>
#include <winioctl.h>

#include <string>

namespace tq::test {

inline Bytes U64(ULONGLONG v)
{
    return U32(static_cast<DWORD>(v)) + U32(static_cast<DWORD>(v >> 32));
}
inline Bytes U16(WORD v)
{
    return {BYTE(v), BYTE(v >> 8)};
}
inline Bytes GuidBytes(const GUID& g)
{
    const auto* b = reinterpret_cast<const BYTE*>(&g);
    return Bytes(b, b + sizeof g);
}

// A Wave64 chunk whose stored size leaves its padding out, as one written in one go stores it,
// or counts it, as one finished afterwards does.
// The Wave64 GUID of the family that spells a RIFF id in its first field.
inline GUID Family(const char (&id)[5])
{
    GUID guid = RIFF64_GUID_FMT;
    guid.Data1 = Id(id);
    return guid;
}

inline Bytes W64Chunk(const GUID& id, const Bytes& data, bool sizeCountsPadding = false)
{
    const size_t padded = (data.size() + 7) & ~size_t(7);
    const ULONGLONG stored = 24 + (sizeCountsPadding ? padded : data.size());
    return GuidBytes(id) + U64(stored) + data + Bytes(padded - data.size());
}
inline Bytes W64List(const GUID& type, const Bytes& entries)
{
    return W64Chunk(RIFF64_GUID_LIST, GuidBytes(type) + entries);
}
// The file header with the honest stored size unless one is given.
inline Bytes W64File(const Bytes& chunks, const GUID& form = RIFF64_GUID_WAVE, ULONGLONG stored = 0)
{
    return GuidBytes(RIFF64_GUID_RIFF) + U64(stored ? stored : 40 + chunks.size()) +
           GuidBytes(form) + chunks;
}

// A GUID of this test's own for chunks no one else knows.
inline const GUID kTestGuid = {0x74736574, 0x0001, 0x0002, {1, 2, 3, 4, 5, 6, 7, 8}};

inline WAVEFORMATEX Pcm(WORD channels, DWORD rate, WORD bits, WORD tag = WAVE_FORMAT_PCM)
{
    WAVEFORMATEX wfx = {};
    wfx.wFormatTag = tag;
    wfx.nChannels = channels;
    wfx.nSamplesPerSec = rate;
    wfx.wBitsPerSample = bits;
    wfx.nBlockAlign = static_cast<WORD>(channels * (bits / 8));
    wfx.nAvgBytesPerSec = rate * wfx.nBlockAlign;
    return wfx;
}
inline Bytes FmtBytes(const WAVEFORMATEX& wfx, size_t count = 18)
{
    const auto* b = reinterpret_cast<const BYTE*>(&wfx);
    Bytes out(b, b + std::min<size_t>(count, sizeof wfx));
    out.resize(count, 0);
    return out;
}

// An RF64 file: "RF64", ds64 with the sizes given (the honest ones when 0), "fmt ", then the
// chunks given, which include "data".
inline Bytes Rf64File(const Bytes& chunks, ULONGLONG dataSize, ULONGLONG riffSize = 0)
{
    const Bytes fmt = Chunk("fmt ", FmtBytes(Pcm(2, 48000, 16), 16));
    const size_t total = 12 + 36 + fmt.size() + chunks.size();
    const Bytes ds64 =
        U64(riffSize ? riffSize : total - 8) + U64(dataSize) + U64(dataSize / 4) + U32(0);
    return Text("RF64") + U32(0xFFFFFFFF) + Text("WAVE") + Chunk("ds64", ds64) + fmt + chunks;
}

// The folder the reference files went to at build time, and where files for the tool to read
// back go.
inline std::wstring MediaFolder()
{
    return tqtest::ProgramFolder() + L"\\testmedia\\";
}

// A whole file's bytes, read through a copy so that a file held open elsewhere still reads.
inline Bytes ReadFileBytes(const std::wstring& path)
{
    HANDLE f = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                           OPEN_EXISTING, 0, nullptr);
    if (f == INVALID_HANDLE_VALUE) return {};
    LARGE_INTEGER size = {};
    GetFileSizeEx(f, &size);
    Bytes b(static_cast<size_t>(size.QuadPart));
    DWORD got = 0;
    if (!b.empty()) ::ReadFile(f, b.data(), static_cast<DWORD>(b.size()), &got, nullptr);
    CloseHandle(f);
    b.resize(got);
    return b;
}

inline bool WriteFileBytes(const std::wstring& path, const Bytes& bytes)
{
    HANDLE f = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    if (f == INVALID_HANDLE_VALUE) return false;
    DWORD written = 0;
    const BOOL ok = bytes.empty() || ::WriteFile(f, bytes.data(), static_cast<DWORD>(bytes.size()),
                                                 &written, nullptr);
    CloseHandle(f);
    return ok && written == bytes.size();
}

// Samples that look like audio in any width: a slow ramp in every byte position, different per
// channel, so that a shifted or swapped sample shows.
inline Bytes Samples(size_t frames, WORD blockAlign)
{
    Bytes b(frames * blockAlign);
    for (size_t i = 0; i < b.size(); ++i)
        b[i] = static_cast<BYTE>((i * 7 + i / blockAlign * 3) & 0x7F);
    return b;
}

// A file of length bytes whose body is a hole, where the file system allows; false if it does not
// (the test then skips rather than write gigabytes).
inline bool MakeSparse(HANDLE file, ULONGLONG length)
{
    DWORD returned = 0;
    DeviceIoControl(file, FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &returned, nullptr);
    LARGE_INTEGER to;
    to.QuadPart = static_cast<LONGLONG>(length);
    if (!SetFilePointerEx(file, to, nullptr, FILE_BEGIN) || !SetEndOfFile(file)) return false;
    FILE_STANDARD_INFO info = {};
    if (!GetFileInformationByHandleEx(file, FileStandardInfo, &info, sizeof info)) return false;
    return static_cast<ULONGLONG>(info.EndOfFile.QuadPart) == length &&
           static_cast<ULONGLONG>(info.AllocationSize.QuadPart) < (64ull << 20);
}

inline void WriteAt(HANDLE file, ULONGLONG offset, const Bytes& bytes)
{
    LARGE_INTEGER to;
    to.QuadPart = static_cast<LONGLONG>(offset);
    SetFilePointerEx(file, to, nullptr, FILE_BEGIN);
    DWORD written = 0;
    ::WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
}

inline Bytes ReadAt(HANDLE file, ULONGLONG offset, DWORD count)
{
    LARGE_INTEGER to;
    to.QuadPart = static_cast<LONGLONG>(offset);
    SetFilePointerEx(file, to, nullptr, FILE_BEGIN);
    Bytes b(count);
    DWORD got = 0;
    ::ReadFile(file, b.data(), count, &got, nullptr);
    b.resize(got);
    return b;
}

// The tool's name of a plain sample format.
inline std::string CodecOf(const WAVEFORMATEX& wfx)
{
    if (wfx.wFormatTag == WAVE_FORMAT_IEEE_FLOAT)
        return "pcm_f" + std::to_string(wfx.wBitsPerSample) + "le";
    if (wfx.wBitsPerSample == 8) return "pcm_u8";
    return "pcm_s" + std::to_string(wfx.wBitsPerSample) + "le";
}

// Leaves a file in testmedia\written for the tool to read back after this program has ended,
// with the samples it must decode beside it and a line in this program's manifest, which the
// first call of a run starts afresh.
inline void KeepForTool(const std::wstring& program, const std::wstring& name, const Bytes& file,
                        const Bytes& samples, const WAVEFORMATEX& wfx)
{
    const std::wstring folder = MediaFolder() + L"written\\";
    CreateDirectoryW(MediaFolder().c_str(), nullptr);
    CreateDirectoryW(folder.c_str(), nullptr);
    ASSERT_TRUE(WriteFileBytes(folder + name, file)) << "cannot keep a file for the tool";
    ASSERT_TRUE(WriteFileBytes(folder + name + L".raw", samples));
    static bool started = false;
    const std::wstring manifest = folder + program + L".manifest";
    Bytes lines = started ? ReadFileBytes(manifest) : Bytes();
    started = true;
    const std::string narrow(name.begin(), name.end());
    const std::string line = narrow + "|" + narrow + ".raw|" + CodecOf(wfx) + "|" +
                             std::to_string(wfx.nSamplesPerSec) + "|" +
                             std::to_string(wfx.nChannels) + "\n";
    lines.insert(lines.end(), line.begin(), line.end());
    ASSERT_TRUE(WriteFileBytes(manifest, lines));
}

} // namespace tq::test
