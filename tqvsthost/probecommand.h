// tqvsthost probe: what an audio file holds, its metadata decoded.
#pragma once

#include "options.h"

namespace tqhost {

int RunProbe(const Options& options);

} // namespace tqhost
