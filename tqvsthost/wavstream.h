// WAV files read and written through the kernel's RIFF layer, a block of frames at a time.
#pragma once

#include "uniquehandle.h"

#include <windows.h>

#include <mmreg.h>

#include <string>
#include <vector>

namespace tqhost {

// The format chunk as found, kept whole so a copy can be written back unchanged.
struct WavFormat
{
    // The chunk's bytes, zero-padded behind its size so an extensible header is always readable.
    std::vector<BYTE> chunk;
    DWORD size = 0;
    const WAVEFORMATEX* Header() const
    {
        return reinterpret_cast<const WAVEFORMATEX*>(chunk.data());
    }
    // An extensible header of 24 valid bits in 32 holds each sample in the word's top 24 bits,
    // where the kernel's type for it (unpacked 24-bit) wants them in the low 24: the samples are
    // shifted by 8 bits between the file and the buffers.
    bool HighAligned24() const;
};

class WavReader
{
public:
    // Opens the file and finds its format and data. TQ_E_NORIFFHEADER or TQ_E_CORRUPTFILE for a
    // file that is not a WAV file.
    HRESULT Open(const std::wstring& path);
    const WavFormat& Format() const { return m_format; }
    UINT64 Frames() const { return m_dataBytes / m_frameBytes; }
    // Reads up to frames frames as samples of the format's kernel type; *read is 0 at the end of
    // the data.
    HRESULT Read(void* buffer, UINT32 frames, UINT32* read);

private:
    tq::UniqueFile m_file;
    WavFormat m_format;
    UINT32 m_frameBytes = 1;
    UINT32 m_dataBytes = 0;
    UINT32 m_position = 0;
    bool m_highAligned24 = false;
};

// Writes a WAV file under a temporary name beside the target; only Commit puts it in the
// target's place, so a failure never leaves a partial file under the user's name.
class WavWriter
{
public:
    WavWriter() = default;
    ~WavWriter();
    WavWriter(const WavWriter&) = delete;
    WavWriter& operator=(const WavWriter&) = delete;

    HRESULT Create(const std::wstring& path, const WavFormat& format);
    // The buffer holds samples of the format's kernel type.
    HRESULT Write(const void* buffer, UINT32 frames);
    // Completes the sizes, closes the file and renames it to the target.
    HRESULT Commit();

private:
    tq::UniqueFile m_file;
    std::wstring m_path;
    std::wstring m_tempPath;
    UINT32 m_frameBytes = 1;
    UINT32 m_dataBytes = 0;
    DWORD m_dataSizeOffset = 0;
    bool m_highAligned24 = false;
    std::vector<BYTE> m_shifted; // the block in the file's alignment
};

// Shifts each 32-bit word of a high-aligned 24-bit file: right and sign-extending from the file,
// left to it. The low 8 bits of a file's word are padding below the valid bits and are dropped;
// those written are zero.
void ShiftHighAligned24(BYTE* bytes, size_t count, bool fromFile);

// The temporary name a file is written under before it takes the target's name.
std::wstring TemporaryNameFor(const std::wstring& path);

} // namespace tqhost
