// A chunk list's payload in the other framing: a RIFF list (four-character type and entries
// with 8-byte headers, padded to even) as a Wave64 list (type and entries named by GUIDs of the
// family that spells a four-character id in the first field, 24-byte headers, padded to 8), and
// back, so that lists travel between containers and stay readable as lists.
#pragma once

#include <windows.h>

#include <vector>

namespace tqhost {

// False for a payload that is no list of the source framing (an entry runs past its end), or, to
// RIFF, for a type or entry whose GUID has no four-character form or a size RIFF cannot hold.
bool RiffListToWave64(const std::vector<BYTE>& riff, std::vector<BYTE>& wave64);
bool Wave64ListToRiff(const std::vector<BYTE>& wave64, std::vector<BYTE>& riff);

} // namespace tqhost
