// Sample-type arithmetic: tag and bits to type, and each type's tag, bits and bytes.
#include "tqsampletype.h"

#include <gtest/gtest.h>

#include <mmreg.h>

namespace {

struct Shape
{
    TQSAMPLETYPE type;
    WORD tag;
    WORD bits;
    WORD bytes;
};

const Shape kShapes[] = {
    {TQSAMPLE_PCM8, WAVE_FORMAT_PCM, 8, 1},
    {TQSAMPLE_PCM16, WAVE_FORMAT_PCM, 16, 2},
    {TQSAMPLE_PCM24, WAVE_FORMAT_PCM, 24, 3},
    {TQSAMPLE_PCM32, WAVE_FORMAT_PCM, 32, 4},
    {TQSAMPLE_FLOAT32, WAVE_FORMAT_IEEE_FLOAT, 32, 4},
    {TQSAMPLE_FLOAT64, WAVE_FORMAT_IEEE_FLOAT, 64, 8},
    {TQSAMPLE_UNPACKED24, WAVE_FORMAT_TQ_PCM_UNPACKED, 32, 4},
    {TQSAMPLE_SIGNED8, WAVE_FORMAT_TQ_PCM_SIGNED, 8, 1},
    {TQSAMPLE_BE16, WAVE_FORMAT_TQ_PCM_BIGENDIAN, 16, 2},
    {TQSAMPLE_BE24, WAVE_FORMAT_TQ_PCM_BIGENDIAN, 24, 3},
    {TQSAMPLE_BE32, WAVE_FORMAT_TQ_PCM_BIGENDIAN, 32, 4},
};

TEST(SampleType, EachTypeHasItsShapeAndComesBackFromIt)
{
    for (const Shape& s : kShapes)
    {
        EXPECT_EQ(TqAudio_FormatTagFromSampleType(s.type), s.tag) << s.type;
        EXPECT_EQ(TqAudio_BitsFromSampleType(s.type), s.bits) << s.type;
        EXPECT_EQ(TqAudio_BytesFromSampleType(s.type), s.bytes) << s.type;
        EXPECT_EQ(TqAudio_GetSampleType2(s.tag, s.bits), s.type) << s.type;
    }
}

TEST(SampleType, RightAlignedAndUnknownCodesHaveNoShape)
{
    for (unsigned code : {0u, 15u, 20u, 34u, 67u, 128u, 129u, 0xFFFFFFFFu})
    {
        const auto type = static_cast<TQSAMPLETYPE>(code);
        EXPECT_EQ(TqAudio_FormatTagFromSampleType(type) + TqAudio_BitsFromSampleType(type) +
                      TqAudio_BytesFromSampleType(type),
                  0)
            << code;
    }
}

TEST(SampleType, TagsAndBitsBeyondTheShapes)
{
    struct Case
    {
        WORD tag;
        WORD bits;
        TQSAMPLETYPE type;
    };
    const Case cases[] = {
        {WAVE_FORMAT_PCM, 20, TQSAMPLE_PCM24}, // 20-bit is read as 24-bit
        {WAVE_FORMAT_TQ_PCM_SIGNED, 16, TQSAMPLE_PCM16},
        {WAVE_FORMAT_TQ_PCM_UNPACKED, 24, TQSAMPLE_UNPACKED24},
        {WAVE_FORMAT_TQ_PCM_BIGENDIAN, 8, TQSAMPLE_PCM8}, // no signed big-endian 8-bit
        {WAVE_FORMAT_TQ_PCM_RIGHTALIGNED, 16, TQSAMPLE_RA16},
        {WAVE_FORMAT_PCM, 12, TQSAMPLE_NONE},
        {WAVE_FORMAT_TQ_PCM_BIGENDIAN, 20, TQSAMPLE_NONE},
        {WAVE_FORMAT_EXTENSIBLE, 16, TQSAMPLE_NONE},
        {0x0055, 16, TQSAMPLE_NONE},
    };
    for (const Case& c : cases)
        EXPECT_EQ(TqAudio_GetSampleType2(c.tag, c.bits), c.type)
            << std::hex << c.tag << " " << c.bits;
}

} // namespace
