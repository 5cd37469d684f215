// tqvsthost scan: the facts of every plug-in file under some folders.
#pragma once

#include "options.h"

#include <string>
#include <vector>

namespace tqhost {

// Every plug-in file below the folder by name, then those of each subfolder, also by name: each
// *.dll and *.vst3 file, and for each *.vst3 bundle folder the file inside it that a server at
// location loads (the bundle is not searched further).
std::vector<std::wstring> FindPluginFiles(const std::wstring& folder, int location);

// Returns the process exit code: 0 when the scan ran, even if plug-ins failed.
int RunScan(const Options& options);

} // namespace tqhost
