// The 32-bit id under which hosts know a VST3 class.
#pragma once

#include <cstdint>

namespace tqvst {

// The CRC-32 (zlib's) of the 16 bytes of a class id. Hosts store it, so it never changes
// between loads of the same file.
uint32_t ShellId(const void* cid) noexcept;

} // namespace tqvst
