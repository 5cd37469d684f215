// Stereo interleave and de-interleave: the plain moves, the tables against the channel copy rows,
// and the vector variants: the four-frame groups of the interleavers in every rounding mode, the
// de-interleaver's frames.
#include "tqinterleave.h"

#include <gtest/gtest.h>

#include <string.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "sampleencodings.h"
#include "tqcpu.h"
#include "tqsamplecopy.h"

namespace {

using tq::audio::test::Noise;
using Bytes = std::vector<BYTE>;

constexpr TQSAMPLETYPE kTableTypes[] = {
    TQSAMPLE_PCM8,    TQSAMPLE_PCM16,      TQSAMPLE_PCM24,   TQSAMPLE_PCM32, TQSAMPLE_FLOAT32,
    TQSAMPLE_FLOAT64, TQSAMPLE_UNPACKED24, TQSAMPLE_SIGNED8, TQSAMPLE_BE16,  TQSAMPLE_BE24,
    TQSAMPLE_BE32,    TQSAMPLE_RA16,       TQSAMPLE_RA24};

// Bytes of a sample; the right-aligned types live in 32-bit words.
size_t SizeOf(TQSAMPLETYPE type)
{
    return type == TQSAMPLE_RA16 || type == TQSAMPLE_RA24 ? 4 : TqAudio_BytesFromSampleType(type);
}

// count samples of a type: floats within -1.25 to 1.25 (some clamp), integers any bit pattern.
Bytes Samples(Noise& noise, TQSAMPLETYPE type, size_t count)
{
    Bytes out(count * SizeOf(type));
    for (size_t i = 0; i < count; ++i)
    {
        if (type == TQSAMPLE_FLOAT32)
        {
            const float v = noise.Sample();
            memcpy(&out[i * 4], &v, 4);
        }
        else if (type == TQSAMPLE_FLOAT64)
        {
            const double v = noise.Sample();
            memcpy(&out[i * 8], &v, 8);
        }
        else
        {
            const Bytes b = noise.Bytes(SizeOf(type));
            memcpy(&out[i * b.size()], b.data(), b.size());
        }
    }
    return out;
}

// Samples of two planes alternating, as the interleaved buffer must hold them.
Bytes Alternate(const Bytes& left, const Bytes& right, size_t size)
{
    Bytes out;
    for (size_t i = 0; i < left.size(); i += size)
    {
        out.insert(out.end(), left.begin() + i, left.begin() + i + size);
        out.insert(out.end(), right.begin() + i, right.begin() + i + size);
    }
    return out;
}

// Keeps the lookups on their scalar functions for the scope.
class ScalarOnly
{
public:
    ScalarOnly() : m_hadSse2((TqGetCPUSupport(0) & TQCPU_SSE2) != 0)
    {
        TqDisallowCPUSupport(TQCPU_SSE2);
    }
    ~ScalarOnly()
    {
        if (m_hadSse2) TqAllowCPUSupport(TQCPU_SSE2);
    }

private:
    bool m_hadSse2;
};

TEST(PlainStereo, MovesSamplesOfEachSupportedTypeUnchanged)
{
    const TQSAMPLETYPE types[] = {TQSAMPLE_PCM8,    TQSAMPLE_PCM16,   TQSAMPLE_PCM32,
                                  TQSAMPLE_FLOAT32, TQSAMPLE_FLOAT64, TQSAMPLE_UNPACKED24};
    Noise noise;
    for (TQSAMPLETYPE type : types)
    {
        SCOPED_TRACE(testing::Message() << "type " << type);
        const size_t size = SizeOf(type);
        const long frames = 7;
        const Bytes left = noise.Bytes(frames * size);
        const Bytes right = noise.Bytes(frames * size);
        Bytes pairs(2 * frames * size);
        ASSERT_EQ(S_OK,
                  TqAudio_InterleaveStereo(pairs.data(), left.data(), right.data(), type, frames));
        EXPECT_EQ(Alternate(left, right, size), pairs);

        Bytes backLeft(left.size()), backRight(right.size());
        ASSERT_EQ(S_OK, TqAudio_DeInterleaveStereo(backLeft.data(), backRight.data(), pairs.data(),
                                                   type, frames));
        EXPECT_EQ(left, backLeft);
        EXPECT_EQ(right, backRight);
    }
}

TEST(PlainStereo, RefusesTypesWithoutAPureMove)
{
    const TQSAMPLETYPE types[] = {TQSAMPLE_NONE, TQSAMPLE_PCM24, TQSAMPLE_SIGNED8, TQSAMPLE_BE16,
                                  TQSAMPLE_BE24, TQSAMPLE_BE32,  TQSAMPLE_RA16,    TQSAMPLE_RA24};
    BYTE left[16] = {1}, right[16] = {2}, pairs[32] = {};
    for (TQSAMPLETYPE type : types)
    {
        SCOPED_TRACE(testing::Message() << "type " << type);
        EXPECT_EQ(E_NOTIMPL, TqAudio_InterleaveStereo(pairs, left, right, type, 2));
        EXPECT_EQ(E_NOTIMPL, TqAudio_DeInterleaveStereo(left, right, pairs, type, 2));
    }
    EXPECT_EQ(Bytes(32, 0), Bytes(pairs, pairs + 32));
}

TEST(PlainStereo, ChecksFramesAndBuffers)
{
    BYTE buffer[8] = {};
    EXPECT_EQ(S_OK, TqAudio_InterleaveStereo(nullptr, nullptr, nullptr, TQSAMPLE_PCM16, 0));
    EXPECT_EQ(E_INVALIDARG, TqAudio_InterleaveStereo(buffer, buffer, buffer, TQSAMPLE_PCM16, -1));
    EXPECT_EQ(E_POINTER, TqAudio_InterleaveStereo(buffer, nullptr, buffer, TQSAMPLE_PCM16, 1));
    EXPECT_EQ(E_POINTER, TqAudio_DeInterleaveStereo(buffer, buffer, nullptr, TQSAMPLE_PCM16, 1));
}

TEST(StereoEx, PackedTwentyFourBitGoesThroughTheTable)
{
    Noise noise;
    const long frames = 5;
    const Bytes left = noise.Bytes(frames * 3);
    const Bytes right = noise.Bytes(frames * 3);
    Bytes pairs(2 * frames * 3);
    ASSERT_EQ(S_OK, TqAudio_InterleaveStereoEx(pairs.data(), TQSAMPLE_PCM24, left.data(),
                                               right.data(), TQSAMPLE_PCM24, frames));
    EXPECT_EQ(Alternate(left, right, 3), pairs);

    Bytes backLeft(left.size()), backRight(right.size());
    ASSERT_EQ(S_OK, TqAudio_DeInterleaveStereoEx(backLeft.data(), backRight.data(), TQSAMPLE_PCM24,
                                                 pairs.data(), TQSAMPLE_PCM24, frames));
    EXPECT_EQ(left, backLeft);
    EXPECT_EQ(right, backRight);
}

TEST(StereoEx, ConvertsBetweenTypesAndRefusesPairsWithoutAFunction)
{
    const short left[2] = {16384, -32768};
    const short right[2] = {-8192, 32767};
    float pairs[4] = {};
    ASSERT_EQ(S_OK,
              TqAudio_InterleaveStereoEx(pairs, TQSAMPLE_FLOAT32, left, right, TQSAMPLE_PCM16, 2));
    EXPECT_EQ(0.5f, pairs[0]);
    EXPECT_EQ(-0.25f, pairs[1]);
    EXPECT_EQ(-1.0f, pairs[2]);
    EXPECT_EQ(32767.0f / 32768.0f, pairs[3]);

    BYTE buffer[16] = {};
    EXPECT_EQ(E_NOTIMPL,
              TqAudio_InterleaveStereoEx(buffer, TQSAMPLE_PCM8, buffer, buffer, TQSAMPLE_RA16, 2));
    EXPECT_EQ(E_NOTIMPL, TqAudio_DeInterleaveStereoEx(buffer, buffer, TQSAMPLE_RA16, buffer,
                                                      TQSAMPLE_BE16, 2));
}

// Every stereo entry must do what two calls of the pair's channel copy function do, and exist
// exactly where that function does.
TEST(StereoTables, AgreeWithTheChannelCopyRows)
{
    ScalarOnly scalar;
    Noise noise;
    const long frames = 7; // a group of four and a tail
    for (TQSAMPLETYPE dstType : kTableTypes)
    {
        for (TQSAMPLETYPE srcType : kTableTypes)
        {
            SCOPED_TRACE(testing::Message() << "dst " << dstType << " src " << srcType);
            const TQAUDIO_COPYCHANNELSFUNC channel =
                TqAudio_GetCopyChannelsFunction2(dstType, srcType);
            const TQAUDIO_INTERLEAVESTEREOFUNC interleave =
                TqAudio_GetStereoInterleaveFunction(dstType, srcType);
            const TQAUDIO_DEINTERLEAVESTEREOFUNC deinterleave =
                TqAudio_GetStereoDeInterleaveFunction(dstType, srcType);
            ASSERT_EQ(channel != nullptr, interleave != nullptr);
            ASSERT_EQ(channel != nullptr, deinterleave != nullptr);
            if (!channel) continue;

            const size_t dSize = SizeOf(dstType);
            const Bytes left = Samples(noise, srcType, frames);
            const Bytes right = Samples(noise, srcType, frames);
            Bytes expected(2 * frames * dSize), pairs(2 * frames * dSize);
            channel(expected.data(), 2, 0, left.data(), 1, 0, frames);
            channel(expected.data(), 2, 1, right.data(), 1, 0, frames);
            interleave(pairs.data(), left.data(), right.data(), frames);
            EXPECT_EQ(expected, pairs);

            const Bytes source = Samples(noise, srcType, 2 * frames);
            Bytes expectedLeft(frames * dSize), expectedRight(frames * dSize);
            channel(expectedLeft.data(), 1, 0, source.data(), 2, 0, frames);
            channel(expectedRight.data(), 1, 0, source.data(), 2, 1, frames);
            Bytes outLeft(frames * dSize), outRight(frames * dSize);
            deinterleave(outLeft.data(), outRight.data(), source.data(), frames);
            EXPECT_EQ(expectedLeft, outLeft);
            EXPECT_EQ(expectedRight, outRight);
        }
    }
}

TEST(StereoTables, HaveNoFunctionOutsideTheTypes)
{
    EXPECT_EQ(nullptr, TqAudio_GetStereoInterleaveFunction(TQSAMPLE_NONE, TQSAMPLE_PCM16));
    EXPECT_EQ(nullptr, TqAudio_GetStereoInterleaveFunction(TQSAMPLE_PCM16, TQSAMPLETYPE(20)));
    EXPECT_EQ(nullptr, TqAudio_GetStereoDeInterleaveFunction(TQSAMPLETYPE(130), TQSAMPLE_PCM16));
}

class Sse2Interleavers : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!(TqGetCPUSupport(0) & TQCPU_SSE2)) GTEST_SKIP() << "no SSE2";
    }

    static constexpr TQSAMPLETYPE kSources[] = {TQSAMPLE_PCM32, TQSAMPLE_FLOAT32,
                                                TQSAMPLE_UNPACKED24};
};

TEST_F(Sse2Interleavers, AreChosenOnlyWhileSse2IsAllowed)
{
    for (TQSAMPLETYPE src : kSources)
    {
        SCOPED_TRACE(testing::Message() << "src " << src);
        EXPECT_NE(tq::audio::ScalarStereoInterleaveFunction(TQSAMPLE_PCM16, src),
                  TqAudio_GetStereoInterleaveFunction(TQSAMPLE_PCM16, src));
        ScalarOnly scalar;
        EXPECT_EQ(tq::audio::ScalarStereoInterleaveFunction(TQSAMPLE_PCM16, src),
                  TqAudio_GetStereoInterleaveFunction(TQSAMPLE_PCM16, src));
    }
    EXPECT_NE(tq::audio::ScalarStereoDeInterleaveFunction(TQSAMPLE_FLOAT32, TQSAMPLE_PCM16),
              TqAudio_GetStereoDeInterleaveFunction(TQSAMPLE_FLOAT32, TQSAMPLE_PCM16));
    ScalarOnly scalar;
    EXPECT_EQ(tq::audio::ScalarStereoDeInterleaveFunction(TQSAMPLE_FLOAT32, TQSAMPLE_PCM16),
              TqAudio_GetStereoDeInterleaveFunction(TQSAMPLE_FLOAT32, TQSAMPLE_PCM16));
}

// The 16-bit de-interleaver writes every frame, heads and tails of any length and misaligned
// buffers included, with the scalar entry's bits for every 16-bit value on either side.
TEST_F(Sse2Interleavers, DeInterleaverFrom16BitMatchesTheScalarEntry)
{
    const TQAUDIO_DEINTERLEAVESTEREOFUNC vector =
        TqAudio_GetStereoDeInterleaveFunction(TQSAMPLE_FLOAT32, TQSAMPLE_PCM16);
    const TQAUDIO_DEINTERLEAVESTEREOFUNC scalar =
        tq::audio::ScalarStereoDeInterleaveFunction(TQSAMPLE_FLOAT32, TQSAMPLE_PCM16);
    Bytes every(65536 * 2 + 2);
    for (int i = 0; i < 65536; ++i)
    {
        const short value = static_cast<short>(i - 32768);
        memcpy(every.data() + 2 + 2 * i, &value, 2); // left and right take alternate values
    }
    for (long frames : {1L, 7L, 8L, 9L, 17L, 32767L})
    {
        for (size_t offset : {0u, 2u})
        {
            const size_t bytes = frames * 4 + 8;
            Bytes l(bytes + 1, 0xA5), r(bytes + 1, 0xA5), el = l, er = r;
            const BYTE* src = every.data() + offset;
            vector(l.data() + 1, r.data() + 1, src, frames);
            scalar(el.data() + 1, er.data() + 1, src, frames);
            ASSERT_EQ(el, l) << frames << " frames at +" << offset;
            ASSERT_EQ(er, r) << frames << " frames at +" << offset;
        }
    }
}

// Rounding, clamping and saturation must meet the scalar rule wherever the value fits 32 bits;
// the noise reaches beyond full scale in every source, so the ends are exercised too.
TEST_F(Sse2Interleavers, MatchTheScalarEntriesOnWholeGroups)
{
    Noise noise;
    const long frames = 24;
    for (TQSAMPLETYPE src : kSources)
    {
        SCOPED_TRACE(testing::Message() << "src " << src);
        const Bytes left = Samples(noise, src, frames);
        const Bytes right = Samples(noise, src, frames);
        std::vector<short> vector(2 * frames), scalar(2 * frames);
        TqAudio_GetStereoInterleaveFunction(TQSAMPLE_PCM16, src)(vector.data(), left.data(),
                                                                 right.data(), frames);
        tq::audio::ScalarStereoInterleaveFunction(TQSAMPLE_PCM16, src)(scalar.data(), left.data(),
                                                                       right.data(), frames);
        EXPECT_EQ(scalar, vector);
    }
}

// Far beyond full scale, at the infinities and for NaNs the float interleaver still follows the
// rule: clamped to the bounds, a NaN to 0.
TEST_F(Sse2Interleavers, FloatInterleaverClampsLikeTheScalarEntry)
{
    const float inf = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float left[8] = {1e30f, -1e30f, inf, -inf, nan, -nan, 1.0f, -1.00002f};
    const float right[8] = {
        32767.4f / 32768, -32768.6f / 32768, 3e9f, -3e9f, nan, 2.5f / 32768, -1.0f, 1.00002f};
    std::vector<short> vector(16), scalar(16);
    TqAudio_GetStereoInterleaveFunction(TQSAMPLE_PCM16, TQSAMPLE_FLOAT32)(vector.data(), left,
                                                                          right, 8);
    tq::audio::ScalarStereoInterleaveFunction(TQSAMPLE_PCM16, TQSAMPLE_FLOAT32)(scalar.data(), left,
                                                                                right, 8);
    EXPECT_EQ(scalar, vector);
}

// The distinct interleavers of a source at each instruction set the processor allows, richest
// first: the AVX2 level withholds nothing, the SSE2 one withholds AVX2.
std::vector<std::pair<std::string, TQAUDIO_INTERLEAVESTEREOFUNC>>
VectorInterleavers(TQSAMPLETYPE src)
{
    TqDisallowCPUSupport(TQCPU_AVX2);
    const auto sse2 = TqAudio_GetStereoInterleaveFunction(TQSAMPLE_PCM16, src);
    TqAllowCPUSupport(TQCPU_AVX2);
    const auto richest = TqAudio_GetStereoInterleaveFunction(TQSAMPLE_PCM16, src);
    std::vector<std::pair<std::string, TQAUDIO_INTERLEAVESTEREOFUNC>> out;
    if (richest != sse2) out.emplace_back("AVX2", richest);
    out.emplace_back("SSE2", sse2);
    return out;
}

// Where the processor allows AVX2 each source's AVX2 row must be the one chosen, so that the
// tests below run it.
TEST_F(Sse2Interleavers, AvxRowIsChosenWhereAllowed)
{
    const bool avx2 = TqGetCPUSupport(TQCPU_AVX2) != 0;
    printf("  AVX2 %s\n", avx2 ? "allowed: the AVX2 and SSE2 interleavers ran"
                               : "not allowed here: only the SSE2 interleavers ran");
    for (TQSAMPLETYPE src : kSources)
        EXPECT_EQ(avx2 ? 2u : 1u, VectorInterleavers(src).size()) << "src " << src;
    ScalarOnly scalar; // AVX2 alone is not enough
    EXPECT_EQ(tq::audio::ScalarStereoInterleaveFunction(TQSAMPLE_PCM16, TQSAMPLE_FLOAT32),
              TqAudio_GetStereoInterleaveFunction(TQSAMPLE_PCM16, TQSAMPLE_FLOAT32));
}

// Sources whose scaled values lie on and beside every rounding boundary: for integers of both
// parities and signs, near zero and near the 16-bit bounds, a zero fraction, one just above,
// below, at and above a half, and just below one; the ends of the source's range; noise.
Bytes BoundarySamples(TQSAMPLETYPE src, Noise& noise)
{
    const int shift = src == TQSAMPLE_PCM32 ? 16 : 8; // source unit times 32768
    const long long quotients[] = {0,      1,      2,      3,     -1,     -2,      -3,
                                   1000,   -1001,  32766,  32767, 32768,  32769,   -32767,
                                   -32768, -32769, -32770, 65536, -65537, 1 << 20, -(1 << 20)};
    Bytes out;
    auto add = [&](const auto& value) {
        const Bytes b = tq::audio::test::Stored(value);
        out.insert(out.end(), b.begin(), b.end());
    };
    for (long long q : quotients)
    {
        if (src == TQSAMPLE_FLOAT32)
        {
            for (double fraction : {0.0, 0.125, 0.5, 0.625, 0.875})
                add(static_cast<float>((q + fraction) / 32768.0));
            continue;
        }
        const long long unit = 1LL << shift;
        for (long long fraction :
             {0LL, 1LL, unit / 4 - 1, unit / 4, unit / 2 - 1, unit / 2, unit / 2 + 1, unit - 1})
        {
            const long long word = q * unit + fraction;
            if (word >= INT32_MIN && word <= INT32_MAX) add(static_cast<int32_t>(word));
        }
    }
    if (src == TQSAMPLE_FLOAT32)
    {
        for (float v : {1e30f, -1e30f, std::numeric_limits<float>::infinity(),
                        -std::numeric_limits<float>::infinity(),
                        std::numeric_limits<float>::quiet_NaN(), 3e9f, -3e9f})
            add(v);
    }
    else
    {
        add(INT32_MIN);
        add(INT32_MAX);
    }
    const Bytes more = Samples(noise, src, 64);
    out.insert(out.end(), more.begin(), more.end());
    return out;
}

// The vector rows follow the caller's rounding mode as the scalar entries do, bit for bit, on
// every boundary, and write whole groups of four frames only, for any count of frames.
TEST_F(Sse2Interleavers, MatchTheScalarEntriesInEveryRoundingMode)
{
    Noise noise;
    const char* const modes[] = {"nearest", "down", "up", "toward zero"};
    for (TQSAMPLETYPE src : kSources)
    {
        const Bytes samples = BoundarySamples(src, noise);
        const long total = static_cast<long>(samples.size() / 4);
        // Left and right take the boundary list from two different starting points.
        Bytes rotated(samples.begin() + 4 * 5, samples.end());
        rotated.insert(rotated.end(), samples.begin(), samples.begin() + 4 * 5);
        const auto scalar = tq::audio::ScalarStereoInterleaveFunction(TQSAMPLE_PCM16, src);
        for (const auto& [level, vector] : VectorInterleavers(src))
            for (unsigned mode = 0; mode < 4; ++mode)
                for (long frames : {total, total - 1, 13L, 12L, 8L, 4L, 3L})
                {
                    SCOPED_TRACE(testing::Message() << level << ", src " << src << ", "
                                                    << modes[mode] << ", " << frames << " frames");
                    const long whole = frames / 4 * 4;
                    std::vector<short> expected(2 * frames + 8, 0x5A5A), out = expected;
                    {
                        tq::audio::test::RoundingMode rounding(mode);
                        scalar(expected.data(), samples.data(), rotated.data(), whole);
                        vector(out.data(), samples.data(), rotated.data(), frames);
                    }
                    ASSERT_EQ(expected, out);
                }
    }
}

TEST_F(Sse2Interleavers, LeaveFramesBeyondTheLastGroupUnwritten)
{
    const float left[6] = {0.5f, -0.5f, 0.25f, -0.25f, 1.0f, -1.0f};
    const float right[6] = {-0.5f, 0.5f, -0.25f, 0.25f, -1.0f, 1.0f};
    std::vector<short> pairs(12, 0x1111);
    const TQAUDIO_INTERLEAVESTEREOFUNC interleave =
        TqAudio_GetStereoInterleaveFunction(TQSAMPLE_PCM16, TQSAMPLE_FLOAT32);
    interleave(pairs.data(), left, right, 6);
    const std::vector<short> expected = {16384, -16384, -16384, 16384,  8192,   -8192,
                                         -8192, 8192,   0x1111, 0x1111, 0x1111, 0x1111};
    EXPECT_EQ(expected, pairs);

    std::vector<short> few(6, 0x1111);
    interleave(few.data(), left, right, 3);
    EXPECT_EQ(std::vector<short>(6, 0x1111), few);

    // The Ex form hands the frames to the same entry.
    std::vector<short> viaEx(12, 0x1111);
    ASSERT_EQ(S_OK, TqAudio_InterleaveStereoEx(viaEx.data(), TQSAMPLE_PCM16, left, right,
                                               TQSAMPLE_FLOAT32, 6));
    EXPECT_EQ(expected, viaEx);
}

} // namespace
