// Sample types: the closed enumeration every piece of sample code switches on, and its arithmetic.
#pragma once

#include "tqkernelapi.h"

// The codes cross the effect interface and index the copy tables: they never change.
#ifdef __cplusplus
enum TQSAMPLETYPE : unsigned int
#else
enum TQSAMPLETYPE
#endif
{
    TQSAMPLE_NONE = 0,        // compressed or unknown
    TQSAMPLE_PCM8 = 16,       // unsigned 8-bit, offset binary, silence is 128
    TQSAMPLE_PCM16 = 17,      // signed, little-endian
    TQSAMPLE_PCM24 = 18,      // signed, little-endian, packed into 3 bytes
    TQSAMPLE_PCM32 = 19,      // signed, little-endian
    TQSAMPLE_FLOAT32 = 32,    // IEEE single, full scale 1.0
    TQSAMPLE_FLOAT64 = 33,    // IEEE double, full scale 1.0
    TQSAMPLE_UNPACKED24 = 48, // 24-bit value sign-extended in a little-endian 32-bit word
    TQSAMPLE_SIGNED8 = 49,    // signed 8-bit, silence is 0
    TQSAMPLE_BE16 = 64,       // signed, big-endian
    TQSAMPLE_BE24 = 65,       // signed, big-endian, packed
    TQSAMPLE_BE32 = 66,       // signed, big-endian
    TQSAMPLE_RA16 = 128,      // 16-bit value right-aligned in a 32-bit word
    TQSAMPLE_RA24 = 129,      // 24-bit value right-aligned in a 32-bit word
};
typedef enum TQSAMPLETYPE TQSAMPLETYPE;

// The system's own format tags for the PCM forms the platform has no tag for.
#define WAVE_FORMAT_TQ_PCM_UNPACKED 0xFE00 // TQSAMPLE_UNPACKED24
#define WAVE_FORMAT_TQ_PCM_SIGNED 0xFE01   // TQSAMPLE_SIGNED8
#define WAVE_FORMAT_TQ_PCM_BIGENDIAN 0xFE02
#define WAVE_FORMAT_TQ_PCM_RIGHTALIGNED 0xFE03 // only ever read, never written

// The one place where a tag and a bit count become a sample type; 0 when they name none.
TQKERNEL_API TQSAMPLETYPE TqAudio_GetSampleType2(WORD formatTag, WORD bitsPerSample);

// Tag, container bits and bytes of a type. Only codes 16 to 66 have them: the right-aligned
// types answer 0 like unknown codes, because only the channel copy tables know them.
TQKERNEL_API WORD TqAudio_FormatTagFromSampleType(TQSAMPLETYPE type);
TQKERNEL_API WORD TqAudio_BitsFromSampleType(TQSAMPLETYPE type);
TQKERNEL_API WORD TqAudio_BytesFromSampleType(TQSAMPLETYPE type);
