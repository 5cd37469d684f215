// How each host sample type stores a sample, written from the formats' definitions and
// independently of the kernel's tables, and the test signals and expected blocks built on it.
#pragma once

#include "tqsampletype.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

namespace tqtest::sampletypes {

// How a host sample type stores a sample: width, byte order, scale.
struct TypeRow
{
    TQSAMPLETYPE type;
    int bytes;
    bool bigEndian;
    double fullScale; // 0 for the float types
};

constexpr TypeRow kTypes[] = {
    {TQSAMPLE_PCM8, 1, false, 128.0},           {TQSAMPLE_SIGNED8, 1, false, 128.0},
    {TQSAMPLE_PCM16, 2, false, 32768.0},        {TQSAMPLE_BE16, 2, true, 32768.0},
    {TQSAMPLE_PCM24, 3, false, 8388608.0},      {TQSAMPLE_BE24, 3, true, 8388608.0},
    {TQSAMPLE_UNPACKED24, 4, false, 8388608.0}, {TQSAMPLE_PCM32, 4, false, 2147483648.0},
    {TQSAMPLE_BE32, 4, true, 2147483648.0},     {TQSAMPLE_FLOAT32, 4, false, 0.0},
    {TQSAMPLE_FLOAT64, 8, false, 0.0},
};

inline int64_t ReadInteger(const TypeRow& row, const uint8_t* at)
{
    uint64_t bits = 0;
    for (int i = 0; i < row.bytes; ++i)
        bits |= uint64_t(at[row.bigEndian ? row.bytes - 1 - i : i]) << (8 * i);
    if (row.type == TQSAMPLE_PCM8) bits ^= 0x80;
    const int shift = 64 - 8 * row.bytes;
    return static_cast<int64_t>(bits << shift) >> shift;
}

inline void WriteInteger(const TypeRow& row, uint8_t* at, int64_t value)
{
    uint64_t bits = static_cast<uint64_t>(value);
    if (row.type == TQSAMPLE_PCM8) bits ^= 0x80;
    for (int i = 0; i < row.bytes; ++i)
        at[row.bigEndian ? row.bytes - 1 - i : i] = uint8_t(bits >> (8 * i));
}

// A sample at full scale 1.0.
inline double Decode(const TypeRow& row, const uint8_t* at)
{
    if (row.type == TQSAMPLE_FLOAT32)
    {
        float value;
        std::memcpy(&value, at, sizeof value);
        return value;
    }
    if (row.type == TQSAMPLE_FLOAT64)
    {
        double value;
        std::memcpy(&value, at, sizeof value);
        return value;
    }
    return double(ReadInteger(row, at)) / row.fullScale;
}

// Scale, clamp, round to nearest even; floats are stored as they are.
inline void Encode(const TypeRow& row, uint8_t* at, double value)
{
    if (row.type == TQSAMPLE_FLOAT32)
    {
        const float single = static_cast<float>(value);
        std::memcpy(at, &single, sizeof single);
        return;
    }
    if (row.type == TQSAMPLE_FLOAT64)
    {
        std::memcpy(at, &value, sizeof value);
        return;
    }
    const double scaled =
        std::fmin(std::fmax(value * row.fullScale, -row.fullScale), row.fullScale - 1.0);
    WriteInteger(row, at, static_cast<int64_t>(std::nearbyint(scaled)));
}

// A block that reaches both ends of the range, odd values whose halves round to even, and for
// the float types samples beyond full scale, which the float path does not clamp.
inline std::vector<uint8_t> TestSignal(const TypeRow& row, UINT32 frames, UINT32 channels)
{
    std::vector<uint8_t> block(size_t(frames) * channels * row.bytes);
    for (size_t i = 0; i < size_t(frames) * channels; ++i)
    {
        uint8_t* at = &block[i * row.bytes];
        const double phase = std::sin(double(i) * 0.37) * 1.1;
        if (row.fullScale == 0.0)
        {
            Encode(row, at, i % 7 == 0 ? 1.5 : phase);
            continue;
        }
        const int64_t top = int64_t(row.fullScale) - 1;
        int64_t value = static_cast<int64_t>(std::fmax(std::fmin(phase, 1.0), -1.0) * top) | 1;
        if (i % 11 == 0) value = top;
        if (i % 13 == 0) value = -top - 1;
        WriteInteger(row, at, value);
    }
    return block;
}

// What a plug-in that multiplies by gain in single precision gives back through the host type.
inline std::vector<uint8_t> Expected(const TypeRow& row, const std::vector<uint8_t>& input,
                                     float gain)
{
    std::vector<uint8_t> output(input.size());
    for (size_t at = 0; at < input.size(); at += row.bytes)
    {
        const float planar = static_cast<float>(Decode(row, &input[at]));
        Encode(row, &output[at], double(planar * gain));
    }
    return output;
}

constexpr const TypeRow& Row(TQSAMPLETYPE type)
{
    for (const TypeRow& row : kTypes)
        if (row.type == type) return row;
    return kTypes[0];
}

// 16-bit blocks as samples and back.
inline std::vector<int16_t> Pcm16(const std::vector<uint8_t>& bytes)
{
    std::vector<int16_t> samples(bytes.size() / 2);
    std::memcpy(samples.data(), bytes.data(), bytes.size());
    return samples;
}

inline std::vector<uint8_t> Bytes(const std::vector<int16_t>& samples)
{
    std::vector<uint8_t> bytes(samples.size() * 2);
    std::memcpy(bytes.data(), samples.data(), bytes.size());
    return bytes;
}

} // namespace tqtest::sampletypes
