// tqvsthost editor: shows a plug-in's editor for a while.
#pragma once

#include "options.h"

namespace tqhost {

// Returns the process exit code.
int RunEditor(const Options& options);

} // namespace tqhost
