// Sample-type arithmetic: tag and bits to type, and type to tag, bits and bytes.
#include "tqsampletype.h"

#include <mmreg.h>

namespace tq::audio {
namespace {

struct TagBitsType
{
    WORD tag;
    WORD bits;
    TQSAMPLETYPE type;
};

// 20-bit PCM is read as 24-bit, an 8-bit big-endian header as unsigned 8-bit, and only the 8-bit
// row tells the signed tag from plain PCM.
constexpr TagBitsType kTypeOfTag[] = {
    {WAVE_FORMAT_PCM, 8, TQSAMPLE_PCM8},
    {WAVE_FORMAT_PCM, 16, TQSAMPLE_PCM16},
    {WAVE_FORMAT_PCM, 20, TQSAMPLE_PCM24},
    {WAVE_FORMAT_PCM, 24, TQSAMPLE_PCM24},
    {WAVE_FORMAT_PCM, 32, TQSAMPLE_PCM32},
    {WAVE_FORMAT_TQ_PCM_SIGNED, 8, TQSAMPLE_SIGNED8},
    {WAVE_FORMAT_TQ_PCM_SIGNED, 16, TQSAMPLE_PCM16},
    {WAVE_FORMAT_TQ_PCM_SIGNED, 20, TQSAMPLE_PCM24},
    {WAVE_FORMAT_TQ_PCM_SIGNED, 24, TQSAMPLE_PCM24},
    {WAVE_FORMAT_TQ_PCM_SIGNED, 32, TQSAMPLE_PCM32},
    {WAVE_FORMAT_IEEE_FLOAT, 32, TQSAMPLE_FLOAT32},
    {WAVE_FORMAT_IEEE_FLOAT, 64, TQSAMPLE_FLOAT64},
    {WAVE_FORMAT_TQ_PCM_UNPACKED, 24, TQSAMPLE_UNPACKED24},
    {WAVE_FORMAT_TQ_PCM_UNPACKED, 32, TQSAMPLE_UNPACKED24},
    {WAVE_FORMAT_TQ_PCM_BIGENDIAN, 8, TQSAMPLE_PCM8},
    {WAVE_FORMAT_TQ_PCM_BIGENDIAN, 16, TQSAMPLE_BE16},
    {WAVE_FORMAT_TQ_PCM_BIGENDIAN, 24, TQSAMPLE_BE24},
    {WAVE_FORMAT_TQ_PCM_BIGENDIAN, 32, TQSAMPLE_BE32},
    {WAVE_FORMAT_TQ_PCM_RIGHTALIGNED, 16, TQSAMPLE_RA16},
    {WAVE_FORMAT_TQ_PCM_RIGHTALIGNED, 24, TQSAMPLE_RA24},
};

struct TypeShape
{
    TQSAMPLETYPE type;
    WORD tag;
    WORD bits;
};

constexpr TypeShape kShapeOfType[] = {
    {TQSAMPLE_PCM8, WAVE_FORMAT_PCM, 8},
    {TQSAMPLE_PCM16, WAVE_FORMAT_PCM, 16},
    {TQSAMPLE_PCM24, WAVE_FORMAT_PCM, 24},
    {TQSAMPLE_PCM32, WAVE_FORMAT_PCM, 32},
    {TQSAMPLE_FLOAT32, WAVE_FORMAT_IEEE_FLOAT, 32},
    {TQSAMPLE_FLOAT64, WAVE_FORMAT_IEEE_FLOAT, 64},
    {TQSAMPLE_UNPACKED24, WAVE_FORMAT_TQ_PCM_UNPACKED, 32},
    {TQSAMPLE_SIGNED8, WAVE_FORMAT_TQ_PCM_SIGNED, 8},
    {TQSAMPLE_BE16, WAVE_FORMAT_TQ_PCM_BIGENDIAN, 16},
    {TQSAMPLE_BE24, WAVE_FORMAT_TQ_PCM_BIGENDIAN, 24},
    {TQSAMPLE_BE32, WAVE_FORMAT_TQ_PCM_BIGENDIAN, 32},
};

const TypeShape* ShapeOf(TQSAMPLETYPE type)
{
    for (const TypeShape& shape : kShapeOfType)
    {
        if (shape.type == type) return &shape;
    }
    return nullptr;
}

} // namespace
} // namespace tq::audio

using namespace tq::audio;

extern "C" TQSAMPLETYPE TqAudio_GetSampleType2(WORD formatTag, WORD bitsPerSample)
{
    for (const TagBitsType& row : kTypeOfTag)
    {
        if (row.tag == formatTag && row.bits == bitsPerSample) return row.type;
    }
    return TQSAMPLE_NONE;
}

extern "C" WORD TqAudio_FormatTagFromSampleType(TQSAMPLETYPE type)
{
    const TypeShape* shape = ShapeOf(type);
    return shape ? shape->tag : 0;
}

extern "C" WORD TqAudio_BitsFromSampleType(TQSAMPLETYPE type)
{
    const TypeShape* shape = ShapeOf(type);
    return shape ? shape->bits : 0;
}

extern "C" WORD TqAudio_BytesFromSampleType(TQSAMPLETYPE type)
{
    const TypeShape* shape = ShapeOf(type);
    return shape ? static_cast<WORD>(shape->bits >> 3) : 0;
}
