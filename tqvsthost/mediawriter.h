// Writes an audio file in any container the host writes (WAV, switching to RF64 past 4 GiB,
// Wave64, AIFF), with the metadata chunks of another file carried into it.
#pragma once

#include "mediafile.h"

namespace tqhost {

// The container an output takes: by its extension (.wav, .w64, .aif, .aiff), else the input's.
Container OutputContainer(const std::wstring& path, Container input);

// The format the samples take in a container: AIFF holds big-endian PCM, and float as AIFF-C
// (kept as the kernel's float type here; the writer turns it big-endian); the others take any
// format, with AIFF's integer samples made little-endian. TQSAMPLE_NONE where the container
// cannot hold the samples.
TQSAMPLETYPE OutputSampleType(Container container, TQSAMPLETYPE input);

// Writes under a temporary name beside the target; only Commit puts the file in the target's
// place, so a failure never leaves a partial file under the user's name.
class MediaWriter
{
public:
    MediaWriter() = default;
    ~MediaWriter();
    MediaWriter(const MediaWriter&) = delete;
    MediaWriter& operator=(const MediaWriter&) = delete;

    // format is the input's header: kept whole when the type stays, rebuilt as plain PCM when
    // it changes. Chunks that have no form in the output's container are skipped and named in
    // dropped.
    HRESULT Create(const std::wstring& path, Container container, const MediaLayout& input,
                   TQSAMPLETYPE type, const std::vector<MediaChunk>& chunks,
                   std::vector<std::wstring>& dropped);
    // The buffer holds samples of the type given to Create.
    HRESULT Write(const void* buffer, UINT32 frames);
    // Completes the sizes, closes the file and renames it to the target.
    HRESULT Commit();
    // What the file became (a WAV past 4 GiB becomes RF64).
    Container Written() const { return m_container; }

private:
    HRESULT WriteBytes(const void* data, size_t size);
    HRESULT WriteAt(UINT64 offset, const void* data, size_t size);
    // Where the next write lands.
    UINT64 Position() const;

    tq::UniqueFile m_file;
    std::wstring m_path;
    std::wstring m_tempPath;
    Container m_container = Container::Wave;
    UINT32 m_frameBytes = 1;
    UINT64 m_frames = 0;
    UINT64 m_dataBytes = 0;
    UINT64 m_dataHeader = 0; // offset of the data chunk's header
    UINT64 m_commFrames = 0; // offset of the frame count in COMM
    bool m_highAligned24 = false;
    UINT32 m_swapBytes = 0; // the sample size, for float AIFF-C: written big-endian
    std::vector<BYTE> m_shifted;
};

} // namespace tqhost
