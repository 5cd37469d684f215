// The machine type written in an executable file's header.
#pragma once

#include <windows.h>

namespace tqvst {

// IMAGE_FILE_MACHINE_* of the file, or 0 when it cannot be read or is no executable image.
WORD ReadMachineType(const wchar_t* path);

} // namespace tqvst
