// ShellId against a CRC-32 worked out here bit by bit, without zlib.
#include "shellid.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

uint32_t BitwiseCrc32(const uint8_t* bytes, size_t size)
{
    uint32_t crc = 0xFFFFFFFF;
    for (size_t i = 0; i < size; ++i)
    {
        crc ^= bytes[i];
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1)));
    }
    return ~crc;
}

TEST(ShellId, IsTheCrc32OfTheSixteenIdBytes)
{
    uint8_t ids[4][16] = {};
    for (int i = 0; i < 16; ++i)
    {
        ids[1][i] = 0xFF;
        ids[2][i] = static_cast<uint8_t>(i * 17 + 3);
        ids[3][i] = static_cast<uint8_t>(0x80 >> (i % 8));
    }
    for (const auto& id : ids)
        EXPECT_EQ(BitwiseCrc32(id, 16), tqvst::ShellId(id));
    // Values known from outside, so the reference above is checked too.
    EXPECT_EQ(0xECBB4B55u, tqvst::ShellId(ids[0]));
    EXPECT_EQ(0x3FB3C61Au, tqvst::ShellId(ids[1]));
}

} // namespace
