// The vector rows between singles and 24-bit samples (SSE2, SSSE3 and AVX2, whichever the
// processor allows) give the scalar rows' bytes exactly, for any sample, gain, count and
// alignment, in place too, and write nothing past the end.
#include "tqsamplecopy.h"

#include <gtest/gtest.h>

#include <math.h>

#include <limits>
#include <string>
#include <vector>

#include "sampleencodings.h"
#include "tqcpu.h"

namespace {

using namespace tq::audio::test;
using tq::audio::ScalarCopyFunction;

// The instruction sets that have rows of their own, richest first; looking a row up at a level
// withholds the sets above it.
struct Level
{
    const char* name;
    DWORD feature;
    DWORD withheld;
};
constexpr Level kLevels[] = {{"AVX2", TQCPU_AVX2, 0},
                             {"SSSE3", TQCPU_SSSE3, TQCPU_AVX2},
                             {"SSE2", TQCPU_SSE2, TQCPU_AVX2 | TQCPU_SSSE3}};

struct Pair
{
    TQSAMPLETYPE dst;
    TQSAMPLETYPE src;
    DWORD levels; // the features with a row of their own for this pair
};

constexpr Pair kPairs[] = {
    {TQSAMPLE_PCM24, TQSAMPLE_FLOAT32, TQCPU_AVX2 | TQCPU_SSSE3 | TQCPU_SSE2},
    {TQSAMPLE_FLOAT32, TQSAMPLE_PCM24, TQCPU_SSSE3 | TQCPU_SSE2},
    {TQSAMPLE_UNPACKED24, TQSAMPLE_FLOAT32, TQCPU_AVX2 | TQCPU_SSE2},
    {TQSAMPLE_FLOAT32, TQSAMPLE_UNPACKED24, TQCPU_SSE2}};

struct Variant
{
    const char* level;
    TQAUDIO_COPYFUNC function;
};

class Sse2Rows24 : public ::testing::TestWithParam<Pair>
{
protected:
    void SetUp() override
    {
        if (!(TqGetCPUSupport(0) & TQCPU_SSE2)) GTEST_SKIP() << "no SSE2";
        m_vector = TqAudio_GetCopyFunction2(GetParam().dst, GetParam().src);
        m_scalar = ScalarCopyFunction(GetParam().dst, GetParam().src);
        m_dstSize = TqAudio_BytesFromSampleType(GetParam().dst);
        m_srcSize = TqAudio_BytesFromSampleType(GetParam().src);
    }

    // Noise with the edges scattered through it: full scale and just beyond, ties, NaNs with
    // payloads, infinities, denormals and signed zeros for singles; any bytes for integers, so
    // unpacked words also lie beyond 24 bits.
    Bytes Source(long count, Noise& noise)
    {
        if (GetParam().src != TQSAMPLE_FLOAT32) return noise.Bytes(count * m_srcSize);
        const float inf = std::numeric_limits<float>::infinity();
        const float edges[] = {1.0f,
                               -1.0f,
                               nextafterf(1.0f, 2.0f),
                               nextafterf(-1.0f, -2.0f),
                               8388607.0f / 8388608.0f,
                               8388607.5f / 8388608.0f,
                               -8388608.5f / 8388608.0f,
                               2.5f / 8388608.0f,
                               -3.5f / 8388608.0f,
                               1e30f,
                               -1e30f,
                               inf,
                               -inf,
                               std::numeric_limits<float>::quiet_NaN(),
                               -std::numeric_limits<float>::quiet_NaN(),
                               std::numeric_limits<float>::denorm_min(),
                               -1e-40f,
                               0.0f,
                               -0.0f};
        Bytes out;
        for (long i = 0; i < count; ++i)
        {
            const uint32_t pick = noise.Next();
            float v = noise.Sample();
            if (pick % 4 == 0) v = edges[(pick >> 8) % (sizeof edges / sizeof edges[0])];
            Bytes bytes = Stored(v);
            if (pick % 64 == 1) bytes = Le(0x7F800000 | (pick >> 9) | 1, 4); // NaN, any payload
            out.insert(out.end(), bytes.begin(), bytes.end());
        }
        return out;
    }

    TQAUDIO_COPYFUNC LookUpAt(const Level& level)
    {
        TqDisallowCPUSupport(level.withheld);
        const TQAUDIO_COPYFUNC function = TqAudio_GetCopyFunction2(GetParam().dst, GetParam().src);
        TqAllowCPUSupport(level.withheld);
        return function;
    }

    // The pair's rows at each level that has one and that the processor allows.
    std::vector<Variant> Variants()
    {
        std::vector<Variant> variants;
        for (const Level& level : kLevels)
        {
            if ((GetParam().levels & level.feature) && TqGetCPUSupport(level.feature))
                variants.push_back({level.name, LookUpAt(level)});
        }
        return variants;
    }

    TQAUDIO_COPYFUNC m_vector = nullptr;
    TQAUDIO_COPYFUNC m_scalar = nullptr;
    size_t m_dstSize = 0;
    size_t m_srcSize = 0;
};

TEST_P(Sse2Rows24, ChosenWhileAllowed)
{
    EXPECT_NE(m_vector, m_scalar);
    TqDisallowCPUSupport(TQCPU_SSE2);
    EXPECT_EQ(TqAudio_GetCopyFunction2(GetParam().dst, GetParam().src), m_scalar);
    TqAllowCPUSupport(TQCPU_SSE2);
}

// Every level the processor allows hands out a row of its own, so the tests below run each one;
// the levels it does not allow are named, since their rows go untested here.
TEST_P(Sse2Rows24, EachAllowedLevelHasItsOwnRow)
{
    std::vector<TQAUDIO_COPYFUNC> seen = {m_scalar};
    std::string ran, skipped;
    for (const Level& level : kLevels)
    {
        if (!(GetParam().levels & level.feature)) continue;
        if (!TqGetCPUSupport(level.feature))
        {
            skipped += std::string(" ") + level.name;
            continue;
        }
        const TQAUDIO_COPYFUNC function = LookUpAt(level);
        for (TQAUDIO_COPYFUNC other : seen)
            EXPECT_NE(function, other) << level.name << " row not chosen";
        seen.push_back(function);
        ran += std::string(" ") + level.name;
    }
    printf("  %u from %u: ran%s; not allowed here:%s\n", GetParam().dst, GetParam().src,
           ran.c_str(), skipped.empty() ? " none" : skipped.c_str());
}

// Counts around the vector step put samples in heads, blocks and tails; byte offsets misalign
// both buffers; the guard bytes past the end must survive.
TEST_P(Sse2Rows24, SameBytesAsScalar)
{
    Noise noise;
    constexpr size_t kGuard = 32;
    // Steps of 16 and of 32 and 8 samples, the last ones needing two or three samples beyond.
    const long counts[] = {1, 7, 8, 10, 11, 15, 16, 17, 18, 31, 33, 34, 35, 43, 66, 67, 100, 1027};
    for (const auto& [level, vector] : Variants())
        for (long count : counts)
        {
            for (size_t offset : {0u, 1u, 2u, 3u})
            {
                const Bytes samples = Source(count, noise);
                Bytes src(offset);
                src.insert(src.end(), samples.begin(), samples.end());
                for (float gain : {1.0f, 0.5f, 0.3f, 7.0f, -1.0f})
                {
                    Bytes a(offset + count * m_dstSize + kGuard, 0xA5);
                    Bytes b = a;
                    vector(a.data() + offset, src.data() + offset, count, gain);
                    m_scalar(b.data() + offset, src.data() + offset, count, gain);
                    ASSERT_EQ(Hex(a), Hex(b))
                        << level << ", " << count << " samples at +" << offset << ", gain " << gain;
                }
            }
        }
}

// In place the rows walk as the scalar rows do, so a shared buffer ends as a separate one would.
TEST_P(Sse2Rows24, InPlace)
{
    Noise noise;
    for (const auto& [level, vector] : Variants())
        for (long count : {16L, 49L, 1000L})
        {
            const Bytes samples = Source(count, noise);
            for (float gain : {1.0f, 0.3f})
            {
                Bytes expected(count * m_dstSize);
                m_scalar(expected.data(), samples.data(), count, gain);
                Bytes shared = samples;
                shared.resize(count * std::max(m_dstSize, m_srcSize));
                vector(shared.data(), shared.data(), count, gain);
                shared.resize(count * m_dstSize);
                ASSERT_EQ(Hex(shared), Hex(expected))
                    << level << ", " << count << ", gain " << gain;
            }
        }
}

// Every rounding mode of the caller gives the scalar row's bytes, toward zero included, where the
// rule's positive sums round negative values down. Denormals are left out: the kernel turns on
// denormals-are-zero, which the vector units honour and the 32-bit scalar rows on the x87 unit do
// not, so in a directed mode a negative denormal gives -1 there and 0 here.
TEST_P(Sse2Rows24, FollowTheCallersRoundingMode)
{
    Noise noise;
    const char* const modes[] = {"nearest", "down", "up", "toward zero"};
    for (const auto& [level, vector] : Variants())
        for (long count : {66L, 100L})
        {
            Bytes src = Source(count, noise);
            if (GetParam().src == TQSAMPLE_FLOAT32)
            {
                // Quarter steps near zero: every fraction class on both signs.
                for (long i = 0; i < count; i += 3)
                {
                    const uint32_t pick = noise.Next();
                    const float v = (static_cast<float>(pick % 64) - 32.0f) * 0.25f / 8388608.0f;
                    memcpy(&src[4 * i], &v, 4);
                }
                for (long i = 0; i < count; ++i)
                {
                    float v;
                    memcpy(&v, &src[4 * i], 4);
                    if (v != 0.0f && fabsf(v) < std::numeric_limits<float>::min())
                        memset(&src[4 * i], 0, 4);
                }
            }
            for (unsigned mode = 0; mode < 4; ++mode)
                for (float gain : {1.0f, 0.3f, -1.0f})
                {
                    Bytes a(count * m_dstSize + 32, 0xA5), b = a;
                    {
                        RoundingMode rounding(mode);
                        vector(a.data(), src.data(), count, gain);
                        m_scalar(b.data(), src.data(), count, gain);
                    }
                    ASSERT_EQ(Hex(a), Hex(b)) << level << ", " << modes[mode] << ", " << count
                                              << " samples, gain " << gain;
                }
        }
}

INSTANTIATE_TEST_SUITE_P(Rows, Sse2Rows24, ::testing::ValuesIn(kPairs));

} // namespace
