// The codec name tables of the format texts. Internal to kernel/audio.
#pragma once

#include <windows.h>

namespace tq::audio {

// The long name of a tag, or null.
const wchar_t* LongCodecName(WORD tag);
// The short name of a tag, or null.
const wchar_t* ShortCodecName(WORD tag);
// The tag an alias stands for; any other tag unchanged.
WORD CanonicalCodecTag(WORD tag);

} // namespace tq::audio
