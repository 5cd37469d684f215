// The printing token table as the format scanner sees it.
#pragma once

#include <stddef.h>

namespace tq::printing {

// Longest token name the scanner reads between "$(" and ")".
constexpr size_t kMaxTokenName = 260;

// Looks name up under the table's lock and copies its value into dest, at most room characters
// (no terminator); *copied receives their number. False when there is no such token.
bool CopyTokenValue(const wchar_t* name, wchar_t* dest, size_t room, size_t* copied);

} // namespace tq::printing
