// The version text of a VST3 class as one number.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string_view>

namespace tqvst {

constexpr HRESULT kVst3VersionOutOfRange = 0x0004E01C;

// Reads up to four dot-separated fields a.b.c.d from the end of text, so "1.2.3" is b.c.d; of
// more than four fields the leftmost is taken as a. Characters other than digits and dots are
// skipped. Gives ((a * 100 + b) * 100 + c) * 1000 + d in *version and S_OK, or
// kVst3VersionOutOfRange when d > 999, c > 99, b > 99 or a > 428 (the number would not fit in
// 32 bits). The empty text is version 0.
HRESULT ParseVersionString(std::string_view text, uint32_t* version) noexcept;

} // namespace tqvst
