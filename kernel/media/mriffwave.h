// Reading the format chunk of a wave file held in memory, shared by both forms of mriff_GetWfx.
#pragma once

#include <windows.h>

namespace tq::riff {

// Checks the file header of the block ("RIFF", form "WAVE"), finds "fmt " and "data" from the
// start within the header's bound, and copies the first bytes of "fmt " (at most capacity) into
// header, which is zero-filled first. fmtBytes gets the count copied, dataBytes the size of
// "data". Nothing is written to the outputs on failure.
HRESULT ReadWaveFormat(const void* data, DWORD size, void* header, DWORD capacity, DWORD& fmtBytes,
                       DWORD& dataBytes) noexcept;

} // namespace tq::riff
