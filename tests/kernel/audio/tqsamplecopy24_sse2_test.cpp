// The SSE2 rows between singles and 24-bit samples give the scalar rows' bytes exactly, for any
// sample, gain, count and alignment, in place too, and write nothing past the end.
#include "tqsamplecopy.h"

#include <gtest/gtest.h>

#include <math.h>

#include <limits>
#include <vector>

#include "sampleencodings.h"
#include "tqcpu.h"

namespace {

using namespace tq::audio::test;
using tq::audio::ScalarCopyFunction;

struct Pair
{
    TQSAMPLETYPE dst;
    TQSAMPLETYPE src;
};

constexpr Pair kPairs[] = {{TQSAMPLE_PCM24, TQSAMPLE_FLOAT32},
                           {TQSAMPLE_FLOAT32, TQSAMPLE_PCM24},
                           {TQSAMPLE_UNPACKED24, TQSAMPLE_FLOAT32},
                           {TQSAMPLE_FLOAT32, TQSAMPLE_UNPACKED24}};

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

    // The row's vector forms: the one chosen, and the SSE2 one where SSSE3 is chosen first.
    std::vector<TQAUDIO_COPYFUNC> Variants()
    {
        std::vector<TQAUDIO_COPYFUNC> variants = {m_vector};
        TqDisallowCPUSupport(TQCPU_SSSE3);
        const TQAUDIO_COPYFUNC sse2 = TqAudio_GetCopyFunction2(GetParam().dst, GetParam().src);
        TqAllowCPUSupport(TQCPU_SSSE3);
        if (sse2 != m_vector) variants.push_back(sse2);
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

// Counts around the vector step put samples in heads, blocks and tails; byte offsets misalign
// both buffers; the guard bytes past the end must survive.
TEST_P(Sse2Rows24, SameBytesAsScalar)
{
    Noise noise;
    constexpr size_t kGuard = 32;
    for (TQAUDIO_COPYFUNC vector : Variants())
        for (long count : {1L, 7L, 8L, 15L, 16L, 17L, 18L, 31L, 33L, 100L, 1027L})
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
                        << count << " samples at +" << offset << ", gain " << gain;
                }
            }
        }
}

// In place the rows walk as the scalar rows do, so a shared buffer ends as a separate one would.
TEST_P(Sse2Rows24, InPlace)
{
    Noise noise;
    for (TQAUDIO_COPYFUNC vector : Variants())
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
                ASSERT_EQ(Hex(shared), Hex(expected)) << count << ", gain " << gain;
            }
        }
}

INSTANTIATE_TEST_SUITE_P(Rows, Sse2Rows24, ::testing::ValuesIn(kPairs));

} // namespace
