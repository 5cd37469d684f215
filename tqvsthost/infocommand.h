// tqvsthost info: a plug-in's facts, read through the plug-in server.
#pragma once

#include "options.h"

namespace tqhost {

// Returns the process exit code.
int RunInfo(const Options& options);

} // namespace tqhost
