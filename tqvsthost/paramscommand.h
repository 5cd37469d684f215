// tqvsthost params: every parameter and program of a plug-in.
#pragma once

#include "options.h"

namespace tqhost {

// Returns the process exit code.
int RunParams(const Options& options);

} // namespace tqhost
