// The coding history of a broadcast-wave "bext" chunk, extended by each step that rewrites the
// samples.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace tqhost {

// Adds a line at the end of the coding history, ending any open line first and dropping the
// zero padding some writers leave behind it. False for a chunk too short to be "bext".
bool AppendCodingHistory(std::vector<BYTE>& chunk, const std::string& line);

} // namespace tqhost
