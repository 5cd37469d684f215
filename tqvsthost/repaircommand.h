// tqvsthost repair: rebuilds the header of a WAV or Wave64 file whose writer died.
#pragma once

#include "options.h"

namespace tqhost {

int RunRepair(const Options& options);

} // namespace tqhost
