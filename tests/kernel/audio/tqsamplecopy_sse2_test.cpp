// The SSE2 variants: chosen by the processor support word, equal to the scalar functions where
// they must be, different only where that is documented, and leaving the control word alone.
#include "tqsamplecopy.h"

#include <gtest/gtest.h>

#include <math.h>

#include <vector>

#include "sampleencodings.h"
#include "tqcpu.h"

namespace {

using tq::audio::ScalarCopyFunction;
using tq::audio::test::Noise;

unsigned GetMxcsr()
{
    unsigned value;
    __asm__ volatile("stmxcsr %0" : "=m"(value));
    return value;
}

void SetMxcsr(unsigned value)
{
    __asm__ volatile("ldmxcsr %0" : : "m"(value));
}

class Sse2Variants : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!(TqGetCPUSupport(0) & TQCPU_SSE2)) GTEST_SKIP() << "no SSE2";
    }
};

// Singles starting at a chosen distance (in samples) from a 16-byte boundary.
struct Floats
{
    std::vector<float> storage;
    float* data;
    Floats(size_t count, size_t misalign) : storage(count + 8)
    {
        const auto address = reinterpret_cast<uintptr_t>(storage.data());
        data = storage.data() + ((16 - (address & 15)) & 15) / 4 + misalign;
    }
};

TEST_F(Sse2Variants, ChosenOnlyWhileAllowed)
{
    const auto vector = [](TQSAMPLETYPE dst, TQSAMPLETYPE src) {
        return TqAudio_GetCopyFunction2(dst, src) != ScalarCopyFunction(dst, src);
    };
    const auto channelVector = [] {
        return TqAudio_GetCopyChannelsFunction2(TQSAMPLE_FLOAT64, TQSAMPLE_PCM16) !=
               tq::audio::ScalarCopyChannelsFunction(TQSAMPLE_FLOAT64, TQSAMPLE_PCM16);
    };
    EXPECT_TRUE(vector(TQSAMPLE_PCM16, TQSAMPLE_FLOAT32));
    EXPECT_TRUE(vector(TQSAMPLE_FLOAT32, TQSAMPLE_PCM16));
    EXPECT_TRUE(vector(TQSAMPLE_FLOAT32, TQSAMPLE_FLOAT64));
    EXPECT_TRUE(vector(TQSAMPLE_FLOAT64, TQSAMPLE_FLOAT32));
    EXPECT_TRUE(channelVector());
    EXPECT_FALSE(vector(TQSAMPLE_PCM32, TQSAMPLE_FLOAT32));

    TqDisallowCPUSupport(TQCPU_SSE2);
    EXPECT_FALSE(vector(TQSAMPLE_PCM16, TQSAMPLE_FLOAT32));
    EXPECT_FALSE(channelVector());
    TqAllowCPUSupport(TQCPU_SSE2);
    TqDisallowCPUSupport(TQCPU_SSE); // single and double need both
    EXPECT_FALSE(vector(TQSAMPLE_FLOAT64, TQSAMPLE_FLOAT32));
    EXPECT_TRUE(vector(TQSAMPLE_PCM16, TQSAMPLE_FLOAT32));
    TqAllowCPUSupport(TQCPU_SSE);
}

// Single to 16-bit agrees with the scalar function for every value in range, however alignment
// splits a run into head, kernel and tail, and at any gain: both form the product in single.
TEST_F(Sse2Variants, Float32ToPcm16AgreesInRange)
{
    const TQAUDIO_COPYFUNC vector = TqAudio_GetCopyFunction2(TQSAMPLE_PCM16, TQSAMPLE_FLOAT32);
    const TQAUDIO_COPYFUNC scalar = ScalarCopyFunction(TQSAMPLE_PCM16, TQSAMPLE_FLOAT32);
    Noise noise;
    for (size_t misalign : {0u, 1u, 3u})
    {
        for (long count : {5L, 21L, 1000L})
        {
            Floats in(count, misalign);
            for (long i = 0; i < count; ++i)
                in.data[i] = noise.Sample();
            in.data[count / 2] = 2.5f / 32768; // a tie
            for (float gain : {1.0f, 0.3f, 7.0f})
            {
                std::vector<int16_t> a(count), b(count);
                vector(a.data(), in.data, count, gain);
                scalar(b.data(), in.data, count, gain);
                EXPECT_EQ(a, b) << count << " at " << misalign << ", gain " << gain;
            }
        }
    }
}

// Beyond the 32-bit range the kernel's conversion gives the integer-indefinite value, which
// saturates to -32768 even for a positive sample. Not aligned to 4 bytes, the scalar function
// does everything and clamps to 32767.
TEST_F(Sse2Variants, Float32ToPcm16DiffersBeyondThe32BitRange)
{
    const TQAUDIO_COPYFUNC vector = TqAudio_GetCopyFunction2(TQSAMPLE_PCM16, TQSAMPLE_FLOAT32);
    using namespace tq::audio::test;
    const Bytes big = Cat({Bytes(2), Repeat(Stored(1e6f), 16)});
    Floats aligned(16, 0);
    memcpy(aligned.data, big.data() + 2, 64);
    int16_t out[16];
    vector(out, aligned.data, 16, 1.0f);
    for (int16_t v : out)
        EXPECT_EQ(v, -32768);
    vector(out, big.data() + 2, 16, 1.0f);
    for (int16_t v : out)
        EXPECT_EQ(v, 32767);
}

// The kernel rounds to nearest whatever the caller's mode, and gives the caller's word back.
TEST_F(Sse2Variants, KernelRoundsToNearestAndRestoresTheControlWord)
{
    const TQAUDIO_COPYFUNC vector = TqAudio_GetCopyFunction2(TQSAMPLE_PCM16, TQSAMPLE_FLOAT32);
    Floats in(32, 0);
    for (int i = 0; i < 32; ++i)
        in.data[i] = 2.75f / 32768;
    int16_t out[32];
    const unsigned saved = GetMxcsr();
    const unsigned towardZero = saved | 0x6000u;
    SetMxcsr(towardZero);
    vector(out, in.data, 32, 1.0f);
    const unsigned after = GetMxcsr();
    SetMxcsr(saved);
    EXPECT_EQ(after & ~0x3Fu, towardZero & ~0x3Fu); // exception flags may differ
    for (int16_t v : out)
        EXPECT_EQ(v, 3);
}

// 16-bit to single is exact at gain 1.0. At other gains the variant works with gain/32768 in
// single precision, where the scalar function multiplies in double: at most a last bit apart.
TEST_F(Sse2Variants, Pcm16ToFloat32)
{
    const TQAUDIO_COPYFUNC vector = TqAudio_GetCopyFunction2(TQSAMPLE_FLOAT32, TQSAMPLE_PCM16);
    const TQAUDIO_COPYFUNC scalar = ScalarCopyFunction(TQSAMPLE_FLOAT32, TQSAMPLE_PCM16);
    std::vector<int16_t> in(65536);
    for (int i = 0; i < 65536; ++i)
        in[i] = static_cast<int16_t>(i - 32768);
    const float gain = 0.3f, k = gain * 3.0517578125e-5f;
    for (size_t misalign : {0u, 3u})
    {
        Floats a(in.size(), misalign), b(in.size(), misalign);
        vector(a.data, in.data(), 65536, 1.0f);
        scalar(b.data, in.data(), 65536, 1.0f);
        EXPECT_EQ(memcmp(a.data, b.data, 65536 * 4), 0) << misalign;
        vector(a.data, in.data(), 65536, gain);
        scalar(b.data, in.data(), 65536, gain);
        for (int i = 0; i < 65536; ++i)
        {
            volatile float single = static_cast<float>(in[i]) * k;
            ASSERT_EQ(a.data[i], single) << in[i];
            ASSERT_LE(fabsf(a.data[i] - b.data[i]), fabsf(b.data[i]) * 1.2e-7f) << in[i];
        }
    }
    // In place it is the scalar function, which runs backwards.
    std::vector<float> shared(64), expected(64);
    for (int i = 0; i < 64; ++i)
        reinterpret_cast<int16_t*>(shared.data())[i] = in[i * 1000];
    scalar(expected.data(), shared.data(), 64, gain);
    vector(shared.data(), shared.data(), 64, gain);
    EXPECT_EQ(shared, expected);
}

// Single and double convert exactly as the scalar functions do, at any gain and in place.
TEST_F(Sse2Variants, SingleAndDoubleAgreeBitForBit)
{
    const TQAUDIO_COPYFUNC narrow = TqAudio_GetCopyFunction2(TQSAMPLE_FLOAT32, TQSAMPLE_FLOAT64);
    const TQAUDIO_COPYFUNC widen = TqAudio_GetCopyFunction2(TQSAMPLE_FLOAT64, TQSAMPLE_FLOAT32);
    Noise noise;
    for (long count : {3L, 29L, 301L})
    {
        std::vector<double> doubles(count);
        for (double& d : doubles)
            d = noise.Sample() / 3.0;
        for (float gain : {1.0f, 0.7f})
        {
            std::vector<float> singles(count), singlesScalar(count);
            narrow(singles.data(), doubles.data(), count, gain);
            ScalarCopyFunction(TQSAMPLE_FLOAT32, TQSAMPLE_FLOAT64)(singlesScalar.data(),
                                                                   doubles.data(), count, gain);
            EXPECT_EQ(singles, singlesScalar) << count << ", gain " << gain;
            std::vector<double> wide(count), wideScalar(count);
            widen(wide.data(), singles.data(), count, gain);
            ScalarCopyFunction(TQSAMPLE_FLOAT64, TQSAMPLE_FLOAT32)(wideScalar.data(),
                                                                   singles.data(), count, gain);
            EXPECT_EQ(wide, wideScalar) << count << ", gain " << gain;

            std::vector<double> shared = doubles;
            narrow(shared.data(), shared.data(), count, gain);
            EXPECT_EQ(memcmp(shared.data(), singles.data(), count * 4), 0) << count;
            memcpy(shared.data(), singles.data(), count * 4);
            widen(shared.data(), shared.data(), count, gain);
            EXPECT_EQ(shared, wide) << count;
        }
    }
}

} // namespace
