// tqvsthost scan: the facts of every plug-in file under some folders.
#pragma once

#include "options.h"

#include <string>
#include <vector>

namespace tqhost {

// Every *.dll below the folder by name, then those of each subfolder, also by name.
std::vector<std::wstring> FindPluginFiles(const std::wstring& folder);

// Returns the process exit code: 0 when the scan ran, even if plug-ins failed.
int RunScan(const Options& options);

} // namespace tqhost
