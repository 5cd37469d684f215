// SMPTE timecode values and their arithmetic: frame counts, nano-time, stepping and text.
#pragma once

#include "tqkernelapi.h"

// Frame formats of a timecode value.
#define TQSMPTE_TYPE_30 1       // 30 frames, non-drop
#define TQSMPTE_TYPE_2997DROP 2 // 29.97 frames, drop-frame
#define TQSMPTE_TYPE_25 3       // 25 frames
#define TQSMPTE_TYPE_24 4       // 24 frames
#define TQSMPTE_TYPE_2997 5     // 29.97 frames, non-drop
#define TQSMPTE_TYPE_23976 6    // 23.976 frames, non-drop
#define TQSMPTE_TYPE_FIRST TQSMPTE_TYPE_30
#define TQSMPTE_TYPE_LAST TQSMPTE_TYPE_23976

// Frame counts of a whole day: drop-frame, and the non-drop formats by frames per second.
#define TQSMPTE_DAYFRAMES_DROP 2589408u
#define TQSMPTE_DAYFRAMES_30 2592000u
#define TQSMPTE_DAYFRAMES_25 2160000u
#define TQSMPTE_DAYFRAMES_24 2073600u

// A timecode value. type is one of the TQSMPTE_TYPE_ values; hours run 0 to 23, minutes and
// seconds 0 to 59, frames within the format. reserved stays zero.
typedef struct _smpteval
{
    UINT32 type;
    UINT32 hours;
    UINT32 minutes;
    UINT32 seconds;
    UINT32 frames;
    UINT32 reserved;
} _smpteval;

// Sets the four time fields from a frame count, taken modulo the day; type is read, not written.
// Types other than 1, 3, 4, 5 and 6 convert as drop-frame.
TQKERNEL_API void TQSMPTE_FrameCountToSMPTE(_smpteval* value, UINT32 count);
// The frame count of a value; 0 for a type outside 1 to 6. In drop-frame a frame 0 or 1 that the
// format skips counts as frame 2.
TQKERNEL_API UINT32 TQSMPTE_SMPTEToFrameCount(const _smpteval* value);

// Nano-time (100-nanosecond steps) of a value, rounded up to the step.
TQKERNEL_API LONGLONG TQSMPTE_SMPTEToNanos(const _smpteval* value);
// Sets the value's time fields from nano-time; times before zero or beyond a day wrap.
TQKERNEL_API void TQSMPTE_NanoToSMPTE(LONGLONG nanos, _smpteval* value);
// Nano-time of the four fields at any frame rate, its type ignored; a rate of 0 or less ignores
// the frames.
TQKERNEL_API LONGLONG TQSMPTE_SmpteLikeToNanos(double frameRate, const _smpteval* value);

// Reads "01:02:03:04", "01020304", "12:05" (12 seconds, 5 frames) and the like; the last number
// given is always the frames, and a trailing separator stands for a zero field. type is kept and
// its frame count carries over into seconds. S_OK, or E_POINTER.
TQKERNEL_API HRESULT TQSMPTE_TextToSMPTE(const wchar_t* text, _smpteval* value);

// a = a + b or a - b within one day of a's format, wrapping across midnight both ways. b is
// counted in its own type. S_OK; E_POINTER; E_INVALIDARG for a's type outside 1 to 6 (a is left
// as it is).
TQKERNEL_API HRESULT TQSMPTE_AddSMPTE(_smpteval* a, const _smpteval* b);
TQKERNEL_API HRESULT TQSMPTE_SubtractSMPTE(_smpteval* a, const _smpteval* b);
// -1, 0 or 1 by hours, minutes, seconds and frames; types are not looked at.
TQKERNEL_API int TQSMPTE_SMPTECompare(const _smpteval* a, const _smpteval* b);

// One frame forward or back, carrying through every field and wrapping at midnight.
TQKERNEL_API void TQSMPTE_IncrementByFrame(_smpteval* value);
TQKERNEL_API void TQSMPTE_DeccrementByFrame(_smpteval* value);
