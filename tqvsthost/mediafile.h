// The layout of an audio file in any of the containers the host reads: WAV, RF64, Wave64, AIFF
// and AIFF-C. Where the samples lie, their format, and every other chunk, kept for copying.
#pragma once

#include "tqsamplecopy.h"
#include "uniquehandle.h"

#include <windows.h>

#include <mmreg.h>

#include <string>
#include <vector>

namespace tqhost {

enum class Container
{
    Wave,   // RIFF WAVE
    Rf64,   // RF64 WAVE with ds64
    Wave64, // 64-bit RIFF with GUID chunk ids
    Aiff,   // FORM AIFF or AIFC
};

const wchar_t* ContainerName(Container container);

// A chunk the host does not interpret itself. Chunks of the RIFF family carry their four
// characters and the GUID they take in a Wave64 file; a Wave64 chunk without a four-character
// form has only its GUID (fourcc 0). An AIFF chunk has its characters and aiff set.
struct MediaChunk
{
    DWORD fourcc = 0; // the characters in file order, as MAKEFOURCC makes them
    GUID guid = {};
    bool aiff = false;
    UINT64 offset = 0; // of the chunk's header
    std::vector<BYTE> data;
    std::wstring Name() const;
};

struct MediaLayout
{
    Container container = Container::Wave;
    bool aifc = false;
    // The format as a WAVEFORMATEX with its tail, zero-padded to hold an extensible header.
    std::vector<BYTE> format;
    TQSAMPLETYPE sampleType = TQSAMPLE_NONE;
    bool highAligned24 = false;  // 24 valid bits at the top of 32-bit words
    bool bigEndianFloat = false; // float AIFF-C: IEEE samples in big-endian order
    UINT64 dataStart = 0;
    UINT64 dataBytes = 0;         // whole frames present in the file
    UINT64 declaredDataBytes = 0; // what the header claims
    std::vector<MediaChunk> chunks;
    std::vector<std::wstring> warnings; // damage the walk stepped around

    const WAVEFORMATEX* Header() const
    {
        return reinterpret_cast<const WAVEFORMATEX*>(format.data());
    }
    UINT64 Frames() const { return dataBytes / Header()->nBlockAlign; }
};

// Walks an open file. TQ_E_NORIFFHEADER for a file of no known container, TQ_E_CORRUPTFILE for
// one without a usable format or sample data.
HRESULT ReadMediaLayout(HANDLE file, MediaLayout& layout);

// The GUID a four-character RIFF chunk id takes in a Wave64 file, and back (0 where the GUID is
// not of that family).
GUID Wave64Guid(DWORD fourcc);
DWORD FourccOfWave64Guid(const GUID& guid);

// Reverses the bytes of each sample: the kernel has no big-endian float types, so float AIFF-C
// samples turn little-endian at the file boundary, both ways.
void SwapSampleBytes(void* samples, size_t bytes, UINT32 sampleBytes);

// Reads the sample data of a file a block at a time, as samples of the layout's kernel type.
class MediaReader
{
public:
    HRESULT Open(const std::wstring& path);
    const MediaLayout& Layout() const { return m_layout; }
    HRESULT Read(void* buffer, UINT32 frames, UINT32* read);

private:
    tq::UniqueFile m_file;
    MediaLayout m_layout;
    UINT64 m_position = 0;
};

} // namespace tqhost
