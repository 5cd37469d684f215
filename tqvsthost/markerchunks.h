// Markers carried across the two families of containers: WAV cue points with their labels
// become an AIFF "MARK" chunk, and back.
#pragma once

#include "mediafile.h"

namespace tqhost {

// Turns the marker chunks of a file in the input's family into those of the output's, in the
// place of the first; the LIST "adtl" whose labels named the cue points goes into the markers.
// Chunks that cannot be converted stay as they are (and the writer leaves them out).
void ConvertMarkers(std::vector<MediaChunk>& chunks, Container input, Container output);

} // namespace tqhost
