// The RF64 walks on a file cursor, shared by the RF64 functions and the wave utilities.
#pragma once

#include "filecursor.h"
#include "rf64.h"

namespace tq::rf64 {

// RF64_FindChunk; ds64 (optional) also gets the ds64 read on the way, zeros if there was none.
BOOL FindChunk(riff::FileCursor& c, DWORD id, ULONGLONG* size, bool stopAtData, ULONGLONG* dataPos,
               ULONGLONG* remaining, ULONGLONG* fileEnd, tRF64DS64* ds64);
HRESULT FindChunkHeader(riff::FileCursor& c, DWORD id, ULONGLONG* size, ULONGLONG* remaining);
HRESULT FindListChunk(riff::FileCursor& c, DWORD type, ULONGLONG* size, ULONGLONG* remaining);

} // namespace tq::rf64
