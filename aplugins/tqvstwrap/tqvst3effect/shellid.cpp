// ShellId: the class id folded to the 32 bits the effect interface carries.
#include "shellid.h"

#include <zlib.h>

namespace tqvst {

uint32_t ShellId(const void* cid) noexcept
{
    const uLong start = crc32(0, Z_NULL, 0);
    return static_cast<uint32_t>(crc32(start, static_cast<const Bytef*>(cid), 16));
}

} // namespace tqvst
