// The three character entities of XML text: &amp;, &lt; and &gt;.
#pragma once

#include "tqkernelapi.h"

// True when text holds one of the three entities.
TQKERNEL_API BOOL TqXML_DoesStringHaveEscapes(const WCHAR* text);
// True when text holds "<", ">", or an "&" that does not begin one of the entities.
TQKERNEL_API BOOL TqXML_DoesStringNeedEscapes(const WCHAR* text);
// Turns the entities back into their characters in place; an "&" that begins none of them
// stays. Returns the new length.
TQKERNEL_API DWORD TqXML_RemoveEscapes(WCHAR* text);
// Copies text into buffer with an entity for each "<", ">" and "&" that does not begin one.
// Only the first entity is written: behind it the output moves on by each later entity's
// length and leaves the buffer's characters there as they were, so give it text with at most
// one such character or a cleared buffer. Nothing is written past capacity; a cut output is
// terminated in the last place and gives 0x8004E03C.
TQKERNEL_API HRESULT TqXML_AddEscapes(WCHAR* buffer, DWORD capacity, const WCHAR* text);
