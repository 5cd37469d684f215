// The summary and display lists on file, written once over the chunk framing of each family
// (RIFF, Wave64, RF64); the public functions of each family hand their framing in.
#pragma once

#include "chunkframing.h"
#include "displist.h"
#include "summary.h"

#include <memory>

namespace tq::summary {

using tq::media::Framing;

// The entries of a list whose first entry is at the cursor, within listSize bytes; wide for
// 16-bit texts. The list is freed first, and a failure leaves it empty.
HRESULT LoadList(Framing& framing, tSUMMARYLIST* list, const ULONGLONG* listSize,
                 bool wide) noexcept;
// The list at the cursor as a list of type "INFO" or, wide, "UNFO"; written gets the bytes.
HRESULT SaveList(Framing& framing, const tSUMMARYLIST* list, ULONGLONG* written,
                 bool wide) noexcept;
// One text of the "INFO" list found from the cursor within *remaining; the cursor is restored.
HRESULT GetString(Framing& framing, DWORD id, WCHAR* buffer, DWORD bufferChars,
                  ULONGLONG* remaining) noexcept;

// The "DISP" chunks from the cursor within *remaining, into the items of the list's formats.
HRESULT LoadDisplay(Framing& framing, tDISPLIST* list, ULONGLONG* remaining) noexcept;
// One "DISP" chunk for every item that holds a payload; written gets the bytes.
HRESULT SaveDisplay(Framing& framing, const tDISPLIST* list, ULONGLONG* written) noexcept;

// Reads an entry's data, found by its header, into a new block of size + 2 bytes ending in two
// zero bytes, and steps over its pad. A size the file cannot hold is refused before allocating.
HRESULT ReadEntry(Framing& framing, ULONGLONG size, std::unique_ptr<char[]>& data) noexcept;
// Writes count zero bytes, count below 8.
HRESULT WritePad(Framing& framing, ULONGLONG count) noexcept;

} // namespace tq::summary
