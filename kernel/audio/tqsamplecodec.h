// Per-sample work of the copy engine: how each type stores a sample, the conversion rule with its
// gain-1.0 shortcuts, and the loops that walk buffers. Internal to kernel/audio.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include "tqsampletype.h"

namespace tq::audio {

using Byte = uint8_t;

// 1.5 times 2 to the 52nd. Adding it to a double of magnitude below 2 to the 51st leaves the
// integer nearest to it, rounded by the floating-point unit in its current mode, in the low bits
// of the mantissa: the only rounding the engine does.
inline constexpr double kRoundingConstant = 6755399441055744.0;

// ---------------------------------------------------------------------------------------------
// Storage

// A signed integer sample of Bits significant bits in Size bytes. A 4-byte container is read
// whole, with no masking, so that an unpacked 24-bit word out of range stays out of range until
// it is clamped.
template <unsigned Size, unsigned Bits, bool BigEndian, bool OffsetBinary = false>
struct IntSample
{
    static constexpr unsigned kSize = Size;
    static constexpr unsigned kBits = Bits;
    static constexpr bool kFloat = false;
    static constexpr double kScale = static_cast<double>(1ull << (Bits - 1));
    static constexpr double kUnit = 1.0 / kScale;
    static constexpr double kMin = -kScale;
    static constexpr double kMax = kScale - 1.0;

    static int32_t Load(const Byte* p)
    {
        if constexpr (Size == 1)
        {
            return static_cast<int8_t>(OffsetBinary ? p[0] ^ 0x80 : p[0]);
        }
        else if constexpr (Size == 2)
        {
            uint16_t v;
            memcpy(&v, p, 2);
            if constexpr (BigEndian) v = __builtin_bswap16(v);
            return static_cast<int16_t>(v);
        }
        else if constexpr (Size == 3)
        {
            const Byte lo = BigEndian ? p[2] : p[0];
            const Byte hi = BigEndian ? p[0] : p[2];
            return static_cast<int32_t>(lo | (p[1] << 8) | (static_cast<int8_t>(hi) * 65536));
        }
        else
        {
            uint32_t v;
            memcpy(&v, p, 4);
            if constexpr (BigEndian) v = __builtin_bswap32(v);
            return static_cast<int32_t>(v);
        }
    }

    static void Store(Byte* p, int32_t value)
    {
        if constexpr (Size == 1)
        {
            p[0] = static_cast<Byte>(OffsetBinary ? value ^ 0x80 : value);
        }
        else if constexpr (Size == 2)
        {
            uint16_t v = static_cast<uint16_t>(value);
            if constexpr (BigEndian) v = __builtin_bswap16(v);
            memcpy(p, &v, 2);
        }
        else if constexpr (Size == 3)
        {
            p[BigEndian ? 2 : 0] = static_cast<Byte>(value);
            p[1] = static_cast<Byte>(value >> 8);
            p[BigEndian ? 0 : 2] = static_cast<Byte>(value >> 16);
        }
        else
        {
            uint32_t v = static_cast<uint32_t>(value);
            if constexpr (BigEndian) v = __builtin_bswap32(v);
            memcpy(p, &v, 4);
        }
    }

    // A container wider than the value (the unpacked 24-bit word) is held to the value's range
    // before it is used as an exact integer.
    static int32_t Held(int32_t value)
    {
        if constexpr (Size * 8 == Bits)
        {
            return value;
        }
        else
        {
            constexpr int32_t lo = -(1 << (Bits - 1));
            constexpr int32_t hi = (1 << (Bits - 1)) - 1;
            return value < lo ? lo : value > hi ? hi : value;
        }
    }
};

template <class Real>
struct FloatSample
{
    static constexpr unsigned kSize = sizeof(Real);
    static constexpr unsigned kBits = sizeof(Real) * 8;
    static constexpr bool kFloat = true;

    static Real Load(const Byte* p)
    {
        Real v;
        memcpy(&v, p, sizeof v);
        return v;
    }
    static void Store(Byte* p, double value)
    {
        const Real v = static_cast<Real>(value);
        memcpy(p, &v, sizeof v);
    }
};

template <TQSAMPLETYPE T>
struct SampleFormat;
template <>
struct SampleFormat<TQSAMPLE_PCM8> : IntSample<1, 8, false, true>
{
};
template <>
struct SampleFormat<TQSAMPLE_SIGNED8> : IntSample<1, 8, false>
{
};
template <>
struct SampleFormat<TQSAMPLE_PCM16> : IntSample<2, 16, false>
{
};
template <>
struct SampleFormat<TQSAMPLE_BE16> : IntSample<2, 16, true>
{
};
template <>
struct SampleFormat<TQSAMPLE_PCM24> : IntSample<3, 24, false>
{
};
template <>
struct SampleFormat<TQSAMPLE_BE24> : IntSample<3, 24, true>
{
};
template <>
struct SampleFormat<TQSAMPLE_UNPACKED24> : IntSample<4, 24, false>
{
};
template <>
struct SampleFormat<TQSAMPLE_PCM32> : IntSample<4, 32, false>
{
};
template <>
struct SampleFormat<TQSAMPLE_BE32> : IntSample<4, 32, true>
{
};
template <>
struct SampleFormat<TQSAMPLE_FLOAT32> : FloatSample<float>
{
};
template <>
struct SampleFormat<TQSAMPLE_FLOAT64> : FloatSample<double>
{
};

// The eleven types of the block table, in the order of their codes.
inline constexpr TQSAMPLETYPE kBlockTypes[] = {
    TQSAMPLE_PCM8,    TQSAMPLE_PCM16,   TQSAMPLE_PCM24,      TQSAMPLE_PCM32,
    TQSAMPLE_FLOAT32, TQSAMPLE_FLOAT64, TQSAMPLE_UNPACKED24, TQSAMPLE_SIGNED8,
    TQSAMPLE_BE16,    TQSAMPLE_BE24,    TQSAMPLE_BE32};
inline constexpr size_t kBlockTypeCount = sizeof(kBlockTypes) / sizeof(kBlockTypes[0]);

// Position of a code in kBlockTypes, or -1.
constexpr int BlockTypeIndex(unsigned code)
{
    for (size_t i = 0; i < kBlockTypeCount; ++i)
    {
        if (kBlockTypes[i] == code) return static_cast<int>(i);
    }
    return -1;
}

// ---------------------------------------------------------------------------------------------
// The rule

// The integer nearest to v within the destination's range: the lower bound is tested first, and
// clamping comes before rounding, so a value just above the maximum gives the maximum.
template <class D>
inline int32_t ClampRound(double v)
{
    if (v < D::kMin)
        v = D::kMin;
    else if (v > D::kMax)
        v = D::kMax;
    const double sum = v + kRoundingConstant;
    uint64_t bits;
    memcpy(&bits, &sum, sizeof bits);
    return static_cast<int32_t>(static_cast<uint32_t>(bits));
}

template <class D>
inline void StoreRounded(Byte* p, double v)
{
    int32_t value = ClampRound<D>(v);
    // Packed 24-bit destinations hold the integer in range a second time, so that whatever the
    // rounding gave (a NaN's payload, say) cannot wrap when only three bytes are kept.
    if constexpr (D::kSize == 3) value = IntSample<4, 24, false>::Held(value);
    D::Store(p, value);
}

// The product of two singles, rounded to single. The x87 unit would keep it wider.
inline float SingleProduct(float a, float b)
{
#if defined(__i386__)
    volatile float product = a * b;
    return product;
#else
    return a * b;
#endif
}

// The double-precision rule assumes the unit rounds to double. MinGW's start-up leaves the x87
// unit at 64-bit precision, where adding the rounding constant would round twice, so 32-bit code
// switches to 53 bits for the length of a call; the rounding mode stays the caller's.
class FpuDoublePrecision
{
public:
#if defined(__i386__)
    FpuDoublePrecision()
    {
        __asm__ volatile("fnstcw %0" : "=m"(m_saved));
        const uint16_t wanted = static_cast<uint16_t>((m_saved & ~0x0300u) | 0x0200u);
        if (wanted == m_saved) return;
        __asm__ volatile("fldcw %0" : : "m"(wanted));
        m_changed = true;
    }
    ~FpuDoublePrecision()
    {
        if (m_changed) __asm__ volatile("fldcw %0" : : "m"(m_saved));
    }

private:
    uint16_t m_saved = 0;
    bool m_changed = false;
#else
    // SSE2 arithmetic is double precision already.
    FpuDoublePrecision()
    {
    }
#endif
    FpuDoublePrecision(const FpuDoublePrecision&) = delete;
    FpuDoublePrecision& operator=(const FpuDoublePrecision&) = delete;
};

// One sample at gain 1.0, where everything exact by nature is done with integers.
template <TQSAMPLETYPE DT, TQSAMPLETYPE ST>
struct UnityOp
{
    using D = SampleFormat<DT>;
    using S = SampleFormat<ST>;
    // Whether the op rounds in floating point.
    static constexpr bool kUsesFpu = D::kFloat || S::kFloat || (!D::kFloat && D::kBits < S::kBits);

    void operator()(Byte* d, const Byte* s) const
    {
        if constexpr (DT == ST)
            memcpy(d, s, D::kSize);
        else if constexpr (D::kFloat && S::kFloat)
            D::Store(d, S::Load(s));
        else if constexpr (D::kFloat)
            D::Store(d, static_cast<double>(S::Load(s)) * S::kUnit);
        else if constexpr (S::kFloat)
            StoreRounded<D>(d, static_cast<double>(S::Load(s)) * D::kScale);
        else if constexpr (D::kBits >= S::kBits)
            D::Store(d, S::Held(S::Load(s)) << (D::kBits - S::kBits));
        else
            StoreRounded<D>(d, static_cast<double>(S::Load(s)) * (S::kUnit * D::kScale));
    }
};

// One sample at any other gain: x times U(src) times g times F(dst) in double precision. The
// scale factors are powers of two, so folding them with the gain into one factor gives the same
// bits as multiplying in the written order.
template <TQSAMPLETYPE DT, TQSAMPLETYPE ST>
struct GainOp
{
    using D = SampleFormat<DT>;
    using S = SampleFormat<ST>;
    // Destinations 16-bit and unpacked 24-bit form gain times a single sample in single
    // precision, as they always have; all others multiply in double.
    static constexpr bool kSingleProduct =
        ST == TQSAMPLE_FLOAT32 && (DT == TQSAMPLE_PCM16 || DT == TQSAMPLE_UNPACKED24);

    explicit GainOp(float gain) : m_gain(gain), m_factor(Factor(gain)) {}

    void operator()(Byte* d, const Byte* s) const
    {
        if constexpr (kSingleProduct)
            StoreRounded<D>(d, static_cast<double>(SingleProduct(m_gain, S::Load(s))) * D::kScale);
        else if constexpr (D::kFloat)
            D::Store(d, static_cast<double>(S::Load(s)) * m_factor);
        else
            StoreRounded<D>(d, static_cast<double>(S::Load(s)) * m_factor);
    }

private:
    static double Factor(float gain)
    {
        double factor = gain;
        if constexpr (!S::kFloat) factor *= S::kUnit;
        if constexpr (!D::kFloat) factor *= D::kScale;
        return factor;
    }

    float m_gain;
    double m_factor;
};

// ---------------------------------------------------------------------------------------------
// Loops, unrolled by four with a tail of the remainder.

template <unsigned DSize, unsigned SSize, class Op>
inline void Forward(Byte* d, const Byte* s, long count, const Op& op)
{
    for (; count >= 4; count -= 4, d += 4 * DSize, s += 4 * SSize)
    {
        op(d, s);
        op(d + DSize, s + SSize);
        op(d + 2 * DSize, s + 2 * SSize);
        op(d + 3 * DSize, s + 3 * SSize);
    }
    for (; count > 0; --count, d += DSize, s += SSize)
        op(d, s);
}

// From the last sample to the first, so that a destination wider than its source can share the
// buffer: each sample is read before anything overwrites it.
template <unsigned DSize, unsigned SSize, class Op>
inline void Backward(Byte* d, const Byte* s, long count, const Op& op)
{
    d += static_cast<size_t>(count) * DSize;
    s += static_cast<size_t>(count) * SSize;
    for (; count >= 4; count -= 4)
    {
        d -= 4 * DSize;
        s -= 4 * SSize;
        op(d + 3 * DSize, s + 3 * SSize);
        op(d + 2 * DSize, s + 2 * SSize);
        op(d + DSize, s + SSize);
        op(d, s);
    }
    while (count-- > 0)
    {
        d -= DSize;
        s -= SSize;
        op(d, s);
    }
}

// Interleaved channels: steps in bytes.
template <class Op>
inline void Strided(Byte* d, size_t dStep, const Byte* s, size_t sStep, long frames, const Op& op)
{
    for (; frames >= 4; frames -= 4, d += 4 * dStep, s += 4 * sStep)
    {
        op(d, s);
        op(d + dStep, s + sStep);
        op(d + 2 * dStep, s + 2 * sStep);
        op(d + 3 * dStep, s + 3 * sStep);
    }
    for (; frames > 0; --frames, d += dStep, s += sStep)
        op(d, s);
}

} // namespace tq::audio
