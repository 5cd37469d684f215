// tqvsthost generate: a test signal written as a WAV file.
#pragma once

#include "options.h"

namespace tqhost {

// Returns the process exit code.
int RunGenerate(const Options& options);

} // namespace tqhost
