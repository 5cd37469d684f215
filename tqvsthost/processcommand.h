// tqvsthost process: a WAV file through a plug-in into a new WAV file.
#pragma once

#include "options.h"

namespace tqhost {

// Returns the process exit code.
int RunProcess(const Options& options);

} // namespace tqhost
