// The block copy table and the block copies: golden samples at the edges of the conversion rule
// for each destination family, the gain-1.0 shortcuts, in-place use and TqAudio_Copy.
#include "tqsamplecopy.h"

#include <gtest/gtest.h>

#include <fenv.h>
#include <math.h>

#include <algorithm>

#include "sampleencodings.h"
#include "tqsamplecodec.h"

namespace {

using namespace tq::audio::test;
using tq::audio::kBlockTypes;
using tq::audio::ScalarCopyFunction;

Bytes Convert(TQAUDIO_COPYFUNC copy, TQSAMPLETYPE dst, const Bytes& src, size_t count, float gain)
{
    Bytes out(count * TqAudio_BytesFromSampleType(dst), 0xCD);
    copy(out.data(), src.data(), static_cast<long>(count), gain);
    return out;
}

struct Golden
{
    const char* what;
    TQSAMPLETYPE dst;
    TQSAMPLETYPE src;
    float gain;
    Bytes in;
    Bytes out;
};

// One sample each, through the scalar function and through what the lookup hands out.
const Golden kGoldens[] = {
    // Float to integer: scale, clamp, then round to even.
    {"1.0 clamps to the maximum", TQSAMPLE_PCM16, TQSAMPLE_FLOAT32, 1, Stored(1.0f), Le(32767, 2)},
    {"-1.0 is the minimum", TQSAMPLE_PCM16, TQSAMPLE_FLOAT32, 1, Stored(-1.0f), Le(-32768, 2)},
    {"2.5 units round to 2", TQSAMPLE_PCM16, TQSAMPLE_FLOAT32, 1, Stored(2.5f / 32768), Le(2, 2)},
    {"clamped before rounding", TQSAMPLE_PCM16, TQSAMPLE_FLOAT64, 1, Stored(32767.5 / 32768),
     Le(32767, 2)},
    {"1.0 to unsigned 8-bit", TQSAMPLE_PCM8, TQSAMPLE_FLOAT32, 1, Stored(1.0f), Le(0xFF, 1)},
    {"silence to unsigned 8-bit", TQSAMPLE_PCM8, TQSAMPLE_FLOAT64, 1, Stored(0.0), Le(0x80, 1)},
    {"-1.0 to signed 8-bit", TQSAMPLE_SIGNED8, TQSAMPLE_FLOAT64, 1, Stored(-1.0), Le(0x80, 1)},
    {"1.0 to packed 24-bit", TQSAMPLE_PCM24, TQSAMPLE_FLOAT32, 1, Stored(1.0f), Le(0x7FFFFF, 3)},
    {"-1.0 to unpacked 24-bit", TQSAMPLE_UNPACKED24, TQSAMPLE_FLOAT64, 1, Stored(-1.0),
     Le(-0x800000, 4)},
    {"1.0 to 32-bit", TQSAMPLE_PCM32, TQSAMPLE_FLOAT32, 1, Stored(1.0f), Le(0x7FFFFFFF, 4)},
    {"-1.0 to big-endian 32-bit", TQSAMPLE_BE32, TQSAMPLE_FLOAT64, 1, Stored(-1.0),
     Be(-0x80000000LL, 4)},
    {"gain 0.5 on 1.0", TQSAMPLE_PCM16, TQSAMPLE_FLOAT32, 0.5f, Stored(1.0f), Le(16384, 2)},
    // Integer to float: exact, or one rounding to single.
    {"16-bit minimum is -1.0", TQSAMPLE_FLOAT32, TQSAMPLE_PCM16, 1, Le(-32768, 2), Stored(-1.0f)},
    {"32-bit maximum rounds to 1.0", TQSAMPLE_FLOAT32, TQSAMPLE_PCM32, 1, Le(0x7FFFFFFF, 4),
     Stored(1.0f)},
    {"double to single rounds", TQSAMPLE_FLOAT32, TQSAMPLE_FLOAT64, 1, Stored(1.0 / 3),
     Stored(1.0f / 3)},
    // Gain through the rule on equal types.
    {"gain 0.5: 3 gives 2", TQSAMPLE_PCM16, TQSAMPLE_PCM16, 0.5f, Le(3, 2), Le(2, 2)},
    {"gain 0.5: 5 gives 2", TQSAMPLE_PCM16, TQSAMPLE_PCM16, 0.5f, Le(5, 2), Le(2, 2)},
    {"gain 2 clamps", TQSAMPLE_PCM16, TQSAMPLE_PCM16, 2.0f, Le(-20000, 2), Le(-32768, 2)},
    {"gain on unsigned 8-bit", TQSAMPLE_PCM8, TQSAMPLE_PCM8, 0.5f, Le(0x00, 1), Le(0x40, 1)},
    {"gain on big-endian 24-bit", TQSAMPLE_PCM24, TQSAMPLE_BE24, 0.5f, Be(3, 3), Le(2, 3)},
    // Narrowing at gain 1.0 rounds to even; widening shifts; byte order swaps.
    {"2.5 units of 8-bit", TQSAMPLE_PCM8, TQSAMPLE_PCM16, 1, Le(640, 2), Le(0x82, 1)},
    {"32 to 16-bit tie", TQSAMPLE_BE16, TQSAMPLE_PCM32, 1, Le(0x00018000, 4), Be(2, 2)},
    {"8-bit unsigned to 16-bit", TQSAMPLE_PCM16, TQSAMPLE_PCM8, 1, Le(0xFF, 1), Le(32512, 2)},
    {"16 to big-endian 24-bit", TQSAMPLE_BE24, TQSAMPLE_PCM16, 1, Le(0x1234, 2), Be(0x123400, 3)},
    {"16-bit to unpacked", TQSAMPLE_UNPACKED24, TQSAMPLE_PCM16, 1, Le(-1, 2), Le(-256, 4)},
    {"swap 16-bit", TQSAMPLE_BE16, TQSAMPLE_PCM16, 1, Le(0x1234, 2), Be(0x1234, 2)},
    // The unpacked word is used as it is stored.
    {"word out of range held, then shifted", TQSAMPLE_PCM32, TQSAMPLE_UNPACKED24, 1,
     Le(0x01000000, 4), Le(0x7FFFFF00, 4)},
    {"word out of range through the rule", TQSAMPLE_PCM32, TQSAMPLE_UNPACKED24, 0.5f,
     Le(0x01000000, 4), Le(0x7FFFFFFF, 4)},
    {"word out of range packed", TQSAMPLE_PCM24, TQSAMPLE_UNPACKED24, 1, Le(0x01000000, 4),
     Le(0x7FFFFF, 3)},
    {"word out of range to float", TQSAMPLE_FLOAT32, TQSAMPLE_UNPACKED24, 1, Le(0x01000000, 4),
     Stored(2.0f)},
};

TEST(BlockCopy, GoldenSamples)
{
    for (const Golden& g : kGoldens)
    {
        const TQAUDIO_COPYFUNC scalar = ScalarCopyFunction(g.dst, g.src);
        ASSERT_NE(scalar, nullptr) << g.what;
        EXPECT_EQ(Hex(Convert(scalar, g.dst, g.in, 1, g.gain)), Hex(g.out)) << g.what;
        EXPECT_EQ(Hex(Convert(TqAudio_GetCopyFunction2(g.dst, g.src), g.dst, g.in, 1, g.gain)),
                  Hex(g.out))
            << g.what;
    }
}

TEST(BlockCopy, TableHasEveryPairButFourBigEndianOnes)
{
    int present = 0;
    for (TQSAMPLETYPE dst : kBlockTypes)
    {
        for (TQSAMPLETYPE src : kBlockTypes)
        {
            const bool none = (dst == TQSAMPLE_BE16 || dst == TQSAMPLE_BE24) &&
                              (src == TQSAMPLE_UNPACKED24 || src == TQSAMPLE_BE32);
            EXPECT_EQ(TqAudio_GetCopyFunction2(dst, src) == nullptr, none) << dst << ", " << src;
            present += !none;
        }
    }
    EXPECT_EQ(present, 117);
    for (unsigned code : {0u, 15u, 67u, 128u, 129u})
        EXPECT_EQ(TqAudio_GetCopyFunction2(TQSAMPLE_PCM16, static_cast<TQSAMPLETYPE>(code)),
                  nullptr);
    // Byte swaps at equal width share their function both ways.
    EXPECT_EQ(TqAudio_GetCopyFunction2(TQSAMPLE_BE16, TQSAMPLE_PCM16),
              TqAudio_GetCopyFunction2(TQSAMPLE_PCM16, TQSAMPLE_BE16));
    EXPECT_EQ(TqAudio_GetCopyFunction2(TQSAMPLE_BE32, TQSAMPLE_PCM32),
              TqAudio_GetCopyFunction2(TQSAMPLE_PCM32, TQSAMPLE_BE32));
}

// Exact values must arrive exactly through every pair, which proves each entry converts its own
// pair in the right direction, over runs long enough for the unrolled loops and their tails.
TEST(BlockCopy, EveryPairCarriesExactValues)
{
    for (const ExactValues& from : Encodings())
    {
        for (const ExactValues& to : Encodings())
        {
            const TQAUDIO_COPYFUNC copy = TqAudio_GetCopyFunction2(to.type, from.type);
            if (!copy) continue;
            for (size_t count : {1u, 7u, 37u})
            {
                EXPECT_EQ(Hex(Convert(copy, to.type, Repeat(from.minusHalf, count), count, 1.0f)),
                          Hex(Repeat(to.minusHalf, count)))
                    << to.type << " from " << from.type << ", " << count << " samples";
            }
            // The shared swap function scales correctly only reading big-endian.
            if ((to.type == TQSAMPLE_BE16 && from.type == TQSAMPLE_PCM16) ||
                (to.type == TQSAMPLE_BE32 && from.type == TQSAMPLE_PCM32))
                continue;
            EXPECT_EQ(Hex(Convert(copy, to.type, from.minusHalf, 1, 0.5f)), Hex(to.minusQuarter))
                << to.type << " from " << from.type << " at gain 0.5";
        }
    }
}

// Gain times a single sample is formed in single precision for 16-bit and unpacked 24-bit
// destinations, in double for the others. These samples sit above a tie by less than half a unit
// of the single product. (On the x87 unit this also needs the switch to double precision.)
TEST(BlockCopy, SingleProductForSixteenBitAndUnpackedDestinations)
{
    const float gain = nextafterf(1.0f, 0.0f);
    const float x16 = nextafterf(5.0f / 65536, 1.0f); // 2.5 units of 16-bit, and a little
    const float x24 = nextafterf(5.0f / 16777216, 1.0f);
    volatile float product = gain * x16;
    ASSERT_EQ(static_cast<double>(product) * 32768.0, 2.5);
    const auto run = [&](TQSAMPLETYPE dst, float x) {
        return Hex(Convert(ScalarCopyFunction(dst, TQSAMPLE_FLOAT32), dst, Stored(x), 1, gain));
    };
    EXPECT_EQ(run(TQSAMPLE_PCM16, x16), Hex(Le(2, 2)));
    EXPECT_EQ(run(TQSAMPLE_BE16, x16), Hex(Be(3, 2)));
    EXPECT_EQ(run(TQSAMPLE_UNPACKED24, x24), Hex(Le(2, 4)));
    EXPECT_EQ(run(TQSAMPLE_PCM24, x24), Hex(Le(3, 3)));
}

// Rounding is the unit's, in its current mode: towards zero a positive value is cut, and a
// negative one, whose sum with the rounding constant is still positive, goes down.
TEST(BlockCopy, RoundsInTheCurrentRoundingMode)
{
    const TQAUDIO_COPYFUNC copy = ScalarCopyFunction(TQSAMPLE_PCM16, TQSAMPLE_FLOAT64);
    const Bytes in = Cat({Stored(2.75 / 32768), Stored(-2.75 / 32768)});
    ASSERT_EQ(fesetround(FE_TOWARDZERO), 0);
    const Bytes out = Convert(copy, TQSAMPLE_PCM16, in, 2, 1.0f);
    fesetround(FE_TONEAREST);
    EXPECT_EQ(Hex(out), Hex(Cat({Le(2, 2), Le(-3, 2)})));
}

// Every function may be called with dst equal to src; widening ones then run backwards. (The
// processor variants have their own test.)
TEST(BlockCopy, InPlaceGivesTheSameSamples)
{
    constexpr size_t kCount = 45;
    Noise noise;
    for (TQSAMPLETYPE dst : kBlockTypes)
    {
        for (TQSAMPLETYPE src : kBlockTypes)
        {
            const TQAUDIO_COPYFUNC copy = ScalarCopyFunction(dst, src);
            if (!copy) continue;
            const size_t dstBytes = kCount * TqAudio_BytesFromSampleType(dst);
            for (float gain : {1.0f, 0.7f})
            {
                Bytes buffer = noise.Samples(src, kCount);
                const Bytes expected = Convert(copy, dst, buffer, kCount, gain);
                buffer.resize(std::max(buffer.size(), dstBytes));
                copy(buffer.data(), buffer.data(), kCount, gain);
                buffer.resize(dstBytes);
                EXPECT_EQ(Hex(buffer), Hex(expected)) << dst << " from " << src << ", " << gain;
            }
        }
    }
}

TEST(BlockCopy, SameTypeAtUnityInPlaceWritesNothing)
{
    auto* page = static_cast<BYTE*>(VirtualAlloc(nullptr, 4096, MEM_COMMIT, PAGE_READWRITE));
    ASSERT_NE(page, nullptr);
    DWORD old = 0;
    ASSERT_TRUE(VirtualProtect(page, 4096, PAGE_READONLY, &old));
    // A write would fault on the read-only page; no count writes nothing at all.
    TqAudio_GetCopyFunction2(TQSAMPLE_PCM8, TQSAMPLE_PCM8)(page, page, 4096, 1.0f);
    TqAudio_GetCopyFunction2(TQSAMPLE_FLOAT32, TQSAMPLE_PCM8)(page, page, 0, 1.0f);
    TqAudio_GetCopyFunction2(TQSAMPLE_PCM16, TQSAMPLE_FLOAT64)(page, page, -4, 0.5f);
    VirtualFree(page, 0, MEM_RELEASE);
}

WAVEFORMATEX Format(TQSAMPLETYPE type, WORD channels)
{
    WAVEFORMATEX wfx;
    return *TqAudio_InitWfx(&wfx, 48000, type, channels);
}

TEST(AudioCopy, CountsSourceChannelsTimesFrames)
{
    const WAVEFORMATEX src = Format(TQSAMPLE_PCM16, 2);
    const WAVEFORMATEX dst = Format(TQSAMPLE_FLOAT32, 1); // its channel count is not looked at
    const int16_t in[4] = {-32768, 16384, 8192, 1};
    float out[5] = {9, 9, 9, 9, 9};
    ASSERT_EQ(TqAudio_Copy(&dst, out, &src, in, 2, 1.0f), S_OK);
    const float expected[5] = {-1.0f, 0.5f, 0.25f, 1.0f / 32768, 9};
    EXPECT_EQ(memcmp(out, expected, sizeof out), 0);

    union
    {
        _tqwaveformat fmt;
        BYTE bytes[64];
    } record;
    record.fmt.Init(48000, TQSAMPLE_FLOAT32, 2);
    ASSERT_EQ(TqAudio_Copy(&record.fmt, out, &src, in, 1, 2.0f), S_OK);
    EXPECT_EQ(out[0], -2.0f);
    EXPECT_EQ(out[1], 1.0f);
    EXPECT_EQ(out[2], 0.25f);
}

TEST(AudioCopy, PairsWithoutFunctionAndBadCalls)
{
    const WAVEFORMATEX unpacked = Format(TQSAMPLE_UNPACKED24, 2);
    const WAVEFORMATEX bigEndian = Format(TQSAMPLE_BE16, 2);
    const int32_t in[2] = {1, 2};
    int16_t out[2] = {7, 7};
    EXPECT_EQ(TqAudio_Copy(&bigEndian, out, &unpacked, in, 1, 1.0f), E_NOTIMPL);
    EXPECT_EQ(out[0] + out[1], 14);
    EXPECT_EQ(TqAudio_Copy(&bigEndian, nullptr, &unpacked, nullptr, 0, 1.0f), S_OK);
    EXPECT_EQ(TqAudio_Copy(nullptr, nullptr, nullptr, nullptr, 0, 1.0f), S_OK);
    EXPECT_EQ(TqAudio_Copy(nullptr, out, &unpacked, in, 1, 1.0f), E_POINTER);
    EXPECT_EQ(TqAudio_Copy(&unpacked, out, &unpacked, in, -1, 1.0f), E_INVALIDARG);
    EXPECT_EQ(TqAudio_CopyByType(TQSAMPLE_PCM16, out, TQSAMPLE_PCM16, in, 65535, 0x10000000, 1.0f),
              E_INVALIDARG);
}

} // namespace
