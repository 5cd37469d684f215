// The broadcast-wave "bext" chunk as the host shows and extends it.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

namespace tqhost {

struct BextFields
{
    std::wstring description;
    std::wstring originator;
    std::wstring originatorReference;
    std::wstring date;
    std::wstring time;
    UINT64 timeReference = 0; // samples since midnight
    UINT16 version = 0;
    std::wstring codingHistory;
};

// The fields of a chunk, or nothing for one too short to hold its fixed part.
std::optional<BextFields> ParseBext(const std::vector<BYTE>& chunk);

// Adds a line at the end of the coding history, ending any open line first and dropping the
// zero padding some writers leave behind it. False for a chunk too short to be "bext".
bool AppendCodingHistory(std::vector<BYTE>& chunk, const std::string& line);

} // namespace tqhost
