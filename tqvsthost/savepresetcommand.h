// tqvsthost save-preset: a plug-in's program or bank written as a file.
#pragma once

#include "options.h"

namespace tqhost {

// Returns the process exit code.
int RunSavePreset(const Options& options);

} // namespace tqhost
