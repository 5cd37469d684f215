// Markers between the two families of chunk files: the cue points of a WAV file, named by the
// labels of its LIST "adtl", and the markers of an AIFF "MARK" chunk.
#pragma once

#include "riff.h"

// Chunk data goes in and out without chunk headers; a LIST's data begins with its type.
// Positions are sample frames both ways (a cue point's sample offset). Names are 8-bit text;
// a marker name holds at most 255 bytes, so a longer label is cut. Entries that a count
// promises but the data does not hold are left out rather than refused.

// The data of a "MARK" chunk for the cue points in cue (the data of a "cue " chunk), named by
// the "labl" entries of adtl (the data of a LIST "adtl"; optional). A marker id must lie in
// 1 to 32767: the cue ids are kept when they all do and none repeats, else the markers are
// numbered from 1 in order; cue points past 32767 are left out. With a null mark, markSize
// gets the size needed and the result is S_OK; with a capacity below it, 0x8004E03C and
// nothing written. 0x8004E00B for cue data without a whole count.
TQKERNEL_API HRESULT iff_MarkFromCue(const void* cue, DWORD cueSize, const void* adtl,
                                     DWORD adtlSize, void* mark, DWORD capacity, DWORD* markSize);

// The data of a "cue " chunk and of a LIST "adtl" for the markers in mark (the data of a
// "MARK" chunk): one cue point in the "data" chunk per marker, with its id, and one "labl"
// per named marker. adtlSize is 0 when no marker has a name. Null buffers ask for the sizes;
// a capacity below either size gives 0x8004E03C and nothing written. 0x8004E00B for mark data
// without a whole count.
TQKERNEL_API HRESULT riff_CueFromMark(const void* mark, DWORD markSize, void* cue,
                                      DWORD cueCapacity, DWORD* cueSize, void* adtl,
                                      DWORD adtlCapacity, DWORD* adtlSize);
