// WAV cue points and labels to AIFF markers and back, through the kernel's conversion.
#include "markerchunks.h"

#include "cuemark.h"

#include <algorithm>
#include <cstring>

namespace tqhost {
namespace {

constexpr DWORD kCue = RIFF_ID('c', 'u', 'e', ' ');
constexpr DWORD kList = RIFF_ID('L', 'I', 'S', 'T');
constexpr DWORD kMark = RIFF_ID('M', 'A', 'R', 'K');

bool IsLabelList(const MediaChunk& chunk)
{
    return !chunk.aiff && chunk.fourcc == kList && chunk.data.size() >= 4 &&
           std::memcmp(chunk.data.data(), "adtl", 4) == 0;
}

DWORD SizeOf(const std::vector<BYTE>& data)
{
    return static_cast<DWORD>(data.size());
}

void CueToMark(std::vector<MediaChunk>& chunks)
{
    const auto cue = std::find_if(chunks.begin(), chunks.end(), [](const MediaChunk& chunk) {
        return !chunk.aiff && chunk.fourcc == kCue;
    });
    if (cue == chunks.end()) return;
    const auto labels = std::find_if(chunks.begin(), chunks.end(), IsLabelList);
    const BYTE* adtl = labels != chunks.end() ? labels->data.data() : nullptr;
    const DWORD adtlSize = labels != chunks.end() ? SizeOf(labels->data) : 0;
    DWORD size = 0;
    if (FAILED(iff_MarkFromCue(cue->data.data(), SizeOf(cue->data), adtl, adtlSize, nullptr, 0,
                               &size)))
        return;
    MediaChunk mark;
    mark.fourcc = kMark;
    mark.aiff = true;
    mark.offset = cue->offset;
    mark.data.resize(size);
    if (FAILED(iff_MarkFromCue(cue->data.data(), SizeOf(cue->data), adtl, adtlSize,
                               mark.data.data(), size, &size)))
        return;
    *cue = std::move(mark);
    if (labels != chunks.end()) chunks.erase(labels);
}

void MarkToCue(std::vector<MediaChunk>& chunks)
{
    const auto mark = std::find_if(chunks.begin(), chunks.end(), [](const MediaChunk& chunk) {
        return chunk.aiff && chunk.fourcc == kMark;
    });
    if (mark == chunks.end()) return;
    DWORD cueSize = 0, adtlSize = 0;
    if (FAILED(riff_CueFromMark(mark->data.data(), SizeOf(mark->data), nullptr, 0, &cueSize,
                                nullptr, 0, &adtlSize)))
        return;
    MediaChunk cue, labels;
    cue.fourcc = kCue;
    cue.guid = Wave64Guid(kCue);
    cue.offset = mark->offset;
    cue.data.resize(cueSize);
    labels.fourcc = kList;
    labels.guid = Wave64Guid(kList);
    labels.offset = mark->offset;
    labels.data.resize(adtlSize);
    if (FAILED(riff_CueFromMark(mark->data.data(), SizeOf(mark->data), cue.data.data(), cueSize,
                                &cueSize, labels.data.data(), adtlSize, &adtlSize)))
        return;
    *mark = std::move(cue);
    if (adtlSize) chunks.insert(mark + 1, std::move(labels));
}

} // namespace

void ConvertMarkers(std::vector<MediaChunk>& chunks, Container input, Container output)
{
    const bool fromAiff = input == Container::Aiff;
    const bool toAiff = output == Container::Aiff;
    if (toAiff && !fromAiff)
        CueToMark(chunks);
    else if (fromAiff && !toAiff)
        MarkToCue(chunks);
}

} // namespace tqhost
