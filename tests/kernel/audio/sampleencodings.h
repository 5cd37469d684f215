// Test data of the copy engine's tests: stored forms of single samples, two exact values in every
// block type, deterministic noise, and a scoped rounding mode.
#pragma once

#include "tqsampletype.h"

#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include <initializer_list>
#include <string>
#include <vector>

namespace tq::audio::test {

using Bytes = std::vector<BYTE>;

// The low bytes of a value, lowest first or highest first.
inline Bytes Le(int64_t value, int bytes)
{
    Bytes out;
    for (int i = 0; i < bytes; ++i)
        out.push_back(static_cast<BYTE>(value >> (8 * i)));
    return out;
}
inline Bytes Be(int64_t value, int bytes)
{
    Bytes out = Le(value, bytes);
    return Bytes(out.rbegin(), out.rend());
}
template <class Real>
Bytes Stored(Real value)
{
    Bytes out(sizeof value);
    memcpy(out.data(), &value, sizeof value);
    return out;
}

inline Bytes Cat(std::initializer_list<Bytes> parts)
{
    Bytes out;
    for (const Bytes& part : parts)
        out.insert(out.end(), part.begin(), part.end());
    return out;
}

inline Bytes Repeat(const Bytes& sample, size_t n)
{
    Bytes out;
    for (size_t i = 0; i < n; ++i)
        out.insert(out.end(), sample.begin(), sample.end());
    return out;
}

inline std::string Hex(const Bytes& bytes)
{
    std::string text;
    char digits[4];
    for (BYTE b : bytes)
    {
        snprintf(digits, sizeof digits, "%02X ", b);
        text += digits;
    }
    return text;
}

// -0.5 and -0.25 of full scale: exact in every type, so every conversion between types must give
// the other type's bytes exactly.
struct ExactValues
{
    TQSAMPLETYPE type;
    Bytes minusHalf;
    Bytes minusQuarter;
};

inline const std::vector<ExactValues>& Encodings()
{
    static const std::vector<ExactValues> table = {
        {TQSAMPLE_PCM8, {0x40}, {0x60}},
        {TQSAMPLE_PCM16, Le(-0x4000, 2), Le(-0x2000, 2)},
        {TQSAMPLE_PCM24, Le(-0x400000, 3), Le(-0x200000, 3)},
        {TQSAMPLE_PCM32, Le(-0x40000000, 4), Le(-0x20000000, 4)},
        {TQSAMPLE_FLOAT32, Stored(-0.5f), Stored(-0.25f)},
        {TQSAMPLE_FLOAT64, Stored(-0.5), Stored(-0.25)},
        {TQSAMPLE_UNPACKED24, Le(-0x400000, 4), Le(-0x200000, 4)},
        {TQSAMPLE_SIGNED8, {0xC0}, {0xE0}},
        {TQSAMPLE_BE16, Be(-0x4000, 2), Be(-0x2000, 2)},
        {TQSAMPLE_BE24, Be(-0x400000, 3), Be(-0x200000, 3)},
        {TQSAMPLE_BE32, Be(-0x40000000, 4), Be(-0x20000000, 4)},
    };
    return table;
}

// xorshift: the same samples on every run.
class Noise
{
public:
    uint32_t Next()
    {
        m_state ^= m_state << 13;
        m_state ^= m_state >> 17;
        m_state ^= m_state << 5;
        return m_state;
    }
    test::Bytes Bytes(size_t n)
    {
        test::Bytes out(n);
        for (BYTE& b : out)
            b = static_cast<BYTE>(Next() >> 24);
        return out;
    }
    // Samples of a type: any bytes for integers, values around full scale (some clamp) for floats.
    test::Bytes Samples(TQSAMPLETYPE type, size_t count)
    {
        if (type != TQSAMPLE_FLOAT32 && type != TQSAMPLE_FLOAT64)
            return Bytes(count * TqAudio_BytesFromSampleType(type));
        test::Bytes out;
        for (size_t i = 0; i < count; ++i)
            out = Cat({out, type == TQSAMPLE_FLOAT32 ? Stored(Sample())
                                                     : Stored(static_cast<double>(Sample()))});
        return out;
    }
    // Singles from -1.25 to 1.25.
    float Sample() { return (static_cast<float>(Next() >> 8) / 16777216.0f - 0.5f) * 2.5f; }

private:
    uint32_t m_state = 0x9E3779B9u;
};

// Sets a rounding mode (0 nearest, 1 down, 2 up, 3 toward zero) in both units for the scope: the
// scalar rows of 32-bit code round on the x87 unit.
class RoundingMode
{
public:
    explicit RoundingMode(unsigned mode)
    {
        __asm__ volatile("stmxcsr %0" : "=m"(m_mxcsr));
        __asm__ volatile("fnstcw %0" : "=m"(m_x87));
        const unsigned mxcsr = (m_mxcsr & ~0x6000u) | (mode << 13);
        const unsigned short x87 = static_cast<unsigned short>((m_x87 & ~0x0C00u) | (mode << 10));
        __asm__ volatile("ldmxcsr %0" : : "m"(mxcsr));
        __asm__ volatile("fldcw %0" : : "m"(x87));
    }
    ~RoundingMode()
    {
        __asm__ volatile("ldmxcsr %0" : : "m"(m_mxcsr));
        __asm__ volatile("fldcw %0" : : "m"(m_x87));
    }

private:
    unsigned m_mxcsr = 0;
    unsigned short m_x87 = 0;
};

} // namespace tq::audio::test
