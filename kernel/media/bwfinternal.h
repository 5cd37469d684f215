// Helpers shared by the files of the broadcast-wave record: owned texts and the table's shape.
#pragma once

#include "bwf.h"

namespace tq::bwf {

// A locked copy of text, or null for no memory (or a null text).
WCHAR* CopyText(const WCHAR* text) noexcept;
char* CopyText(const char* text) noexcept;
// Frees an owned text and clears the pointer.
void FreeText(WCHAR*& text) noexcept;

// Frees the iXML part of the record (values, entries, unknown elements); bext stays.
void FreeIxmlPart(_tagTQBWF_Chunk* chunk) noexcept;

// Frees a chain of unknown elements with everything below them.
void FreeUnknown(LISTUNKNOWN* first) noexcept;

// The element table, and the row of a metadata index (null when there is none).
const _tagIxml_Info* Rows(INT32& count) noexcept;
const _tagIxml_Info* RowOf(INT32 index) noexcept;
// Where a field of an entry lives: TRACK or SYNC_POINT fields by metadata index.
bool IsTrackField(INT32 index) noexcept;
bool IsSyncPointField(INT32 index) noexcept;
// A leaf that occurs once in a document (not a field of an entry).
bool IsSingleLeaf(INT32 index) noexcept;

// The bext chunk's data parsed into the record (full: every field and the coding history).
// Fewer than 8 bytes are corrupt.
HRESULT ParseBext(const BYTE* data, DWORD size, _tagTQBWF_Chunk* chunk, bool full) noexcept;

// The bext chunk's data made from the record; a null buffer asks for the size alone.
HRESULT BuildBext(const _tagTQBWF_Chunk* chunk, void** buffer, DWORD* size) noexcept;

} // namespace tq::bwf
