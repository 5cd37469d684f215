// The stereo interleave and de-interleave tables, and the pure-move stereo functions.
#include "tqinterleave.h"

#include <string.h>

#include <array>
#include <utility>

#include "tqcpu.h"
#include "tqframeloop.h"
#include "tqinterleave_avx2.h"
#include "tqinterleave_sse2.h"
#include "tqsamplecodec.h"
#include "tqsamplecopy.h"

namespace tq::audio {
namespace {

// Runs body under double precision when the op rounds in floating point.
template <class Op, class Body>
inline void WithPrecisionFor(const Body& body)
{
    if constexpr (Op::kUsesFpu)
    {
        FpuDoublePrecision precision;
        body();
    }
    else
    {
        body();
    }
}

// Two planes into alternating samples by the gain-1.0 rule of the pair, in one pass.
template <TQSAMPLETYPE DT, TQSAMPLETYPE ST>
void Interleave(void* dst, const void* srcLeft, const void* srcRight, long frames)
{
    using Op = UnityOp<DT, ST>;
    constexpr size_t kD = SampleFormat<DT>::kSize;
    constexpr size_t kS = SampleFormat<ST>::kSize;
    auto* d = static_cast<Byte*>(dst);
    auto* l = static_cast<const Byte*>(srcLeft);
    auto* r = static_cast<const Byte*>(srcRight);
    WithPrecisionFor<Op>([&] {
        const Op op;
        ForEachFrame(frames, [&](size_t i) {
            op(d + 2 * kD * i, l + kS * i);
            op(d + 2 * kD * i + kD, r + kS * i);
        });
    });
}

template <TQSAMPLETYPE DT, TQSAMPLETYPE ST>
void DeInterleave(void* dstLeft, void* dstRight, const void* src, long frames)
{
    using Op = UnityOp<DT, ST>;
    constexpr size_t kD = SampleFormat<DT>::kSize;
    constexpr size_t kS = SampleFormat<ST>::kSize;
    auto* l = static_cast<Byte*>(dstLeft);
    auto* r = static_cast<Byte*>(dstRight);
    auto* s = static_cast<const Byte*>(src);
    WithPrecisionFor<Op>([&] {
        const Op op;
        ForEachFrame(frames, [&](size_t i) {
            op(l + kD * i, s + 2 * kS * i);
            op(r + kD * i, s + 2 * kS * i + kS);
        });
    });
}

// The right-aligned types are rare inbound formats with rows of their own, some of them
// deliberately lopsided; their stereo entries run the channel table's row once per side rather
// than restate it.
template <TQSAMPLETYPE DT, TQSAMPLETYPE ST>
void InterleaveByChannels(void* dst, const void* srcLeft, const void* srcRight, long frames)
{
    const TQAUDIO_COPYCHANNELSFUNC copy = ScalarCopyChannelsFunction(DT, ST);
    copy(dst, 2, 0, srcLeft, 1, 0, frames);
    copy(dst, 2, 1, srcRight, 1, 0, frames);
}

template <TQSAMPLETYPE DT, TQSAMPLETYPE ST>
void DeInterleaveByChannels(void* dstLeft, void* dstRight, const void* src, long frames)
{
    const TQAUDIO_COPYCHANNELSFUNC copy = ScalarCopyChannelsFunction(DT, ST);
    copy(dstLeft, 1, 0, src, 2, 0, frames);
    copy(dstRight, 1, 0, src, 2, 1, frames);
}

constexpr bool IsBlockType(TQSAMPLETYPE type)
{
    return BlockTypeIndex(type) >= 0;
}

struct StereoEntries
{
    TQAUDIO_INTERLEAVESTEREOFUNC interleave;
    TQAUDIO_DEINTERLEAVESTEREOFUNC deinterleave;
};

template <TQSAMPLETYPE DT, TQSAMPLETYPE ST>
constexpr StereoEntries Entries()
{
    if constexpr (IsBlockType(DT) && IsBlockType(ST))
        return {&Interleave<DT, ST>, &DeInterleave<DT, ST>};
    else
        return {&InterleaveByChannels<DT, ST>, &DeInterleaveByChannels<DT, ST>};
}

// The types of the channel copy table; which of their pairs exist is that table's answer.
constexpr TQSAMPLETYPE kStereoTypes[] = {
    TQSAMPLE_PCM8,    TQSAMPLE_PCM16,      TQSAMPLE_PCM24,   TQSAMPLE_PCM32, TQSAMPLE_FLOAT32,
    TQSAMPLE_FLOAT64, TQSAMPLE_UNPACKED24, TQSAMPLE_SIGNED8, TQSAMPLE_BE16,  TQSAMPLE_BE24,
    TQSAMPLE_BE32,    TQSAMPLE_RA16,       TQSAMPLE_RA24};
constexpr size_t kStereoTypeCount = sizeof(kStereoTypes) / sizeof(kStereoTypes[0]);

constexpr int StereoTypeIndex(unsigned code)
{
    for (size_t i = 0; i < kStereoTypeCount; ++i)
    {
        if (kStereoTypes[i] == code) return static_cast<int>(i);
    }
    return -1;
}

using StereoRow = std::array<StereoEntries, kStereoTypeCount>;

template <TQSAMPLETYPE DT, size_t... S>
constexpr StereoRow MakeStereoRow(std::index_sequence<S...>)
{
    return {Entries<DT, kStereoTypes[S]>()...};
}

template <size_t... D>
constexpr std::array<StereoRow, kStereoTypeCount> MakeStereoTable(std::index_sequence<D...>)
{
    return {MakeStereoRow<kStereoTypes[D]>(std::make_index_sequence<kStereoTypeCount>{})...};
}

// Rows are destinations, columns sources, both in the order of kStereoTypes.
constexpr auto kStereoTable = MakeStereoTable(std::make_index_sequence<kStereoTypeCount>{});

const StereoEntries* FindEntries(TQSAMPLETYPE dstType, TQSAMPLETYPE srcType)
{
    const int d = StereoTypeIndex(dstType);
    const int s = StereoTypeIndex(srcType);
    if (d < 0 || s < 0 || !ScalarCopyChannelsFunction(dstType, srcType)) return nullptr;
    return &kStereoTable[d][s];
}

struct InterleaveVariant
{
    TQSAMPLETYPE dst;
    TQSAMPLETYPE src;
    DWORD features; // all of these must be allowed
    TQAUDIO_INTERLEAVESTEREOFUNC function;
};

// The first allowed variant of a pair wins, so the richer instruction sets come first.
constexpr InterleaveVariant kVectorInterleavers[] = {
    {TQSAMPLE_PCM16, TQSAMPLE_PCM32, TQCPU_AVX2 | TQCPU_SSE2, &InterleavePcm32ToPcm16Avx2},
    {TQSAMPLE_PCM16, TQSAMPLE_FLOAT32, TQCPU_AVX2 | TQCPU_SSE2, &InterleaveFloat32ToPcm16Avx2},
    {TQSAMPLE_PCM16, TQSAMPLE_UNPACKED24, TQCPU_AVX2 | TQCPU_SSE2,
     &InterleaveUnpacked24ToPcm16Avx2},
    {TQSAMPLE_PCM16, TQSAMPLE_PCM32, TQCPU_SSE2, &InterleavePcm32ToPcm16Sse2},
    {TQSAMPLE_PCM16, TQSAMPLE_FLOAT32, TQCPU_SSE2, &InterleaveFloat32ToPcm16Sse2},
    {TQSAMPLE_PCM16, TQSAMPLE_UNPACKED24, TQCPU_SSE2, &InterleaveUnpacked24ToPcm16Sse2},
};

// The pure moves of the plain functions: whole samples of one size, no arithmetic.
template <size_t Size>
void MoveInterleave(void* dst, const void* srcLeft, const void* srcRight, long frames)
{
    auto* d = static_cast<Byte*>(dst);
    auto* l = static_cast<const Byte*>(srcLeft);
    auto* r = static_cast<const Byte*>(srcRight);
    ForEachFrame(frames, [&](size_t i) {
        memcpy(d + 2 * Size * i, l + Size * i, Size);
        memcpy(d + 2 * Size * i + Size, r + Size * i, Size);
    });
}

template <size_t Size>
void MoveDeInterleave(void* dstLeft, void* dstRight, const void* src, long frames)
{
    auto* l = static_cast<Byte*>(dstLeft);
    auto* r = static_cast<Byte*>(dstRight);
    auto* s = static_cast<const Byte*>(src);
    ForEachFrame(frames, [&](size_t i) {
        memcpy(l + Size * i, s + 2 * Size * i, Size);
        memcpy(r + Size * i, s + 2 * Size * i + Size, Size);
    });
}

struct PlainMove
{
    TQSAMPLETYPE type;
    TQAUDIO_INTERLEAVESTEREOFUNC interleave;
    TQAUDIO_DEINTERLEAVESTEREOFUNC deinterleave;
};

// Packed 24-bit and the big-endian types have no pure move here; the Ex forms reach them
// through the table.
constexpr PlainMove kPlainMoves[] = {
    {TQSAMPLE_PCM8, &MoveInterleave<1>, &MoveDeInterleave<1>},
    {TQSAMPLE_PCM16, &MoveInterleave<2>, &MoveDeInterleave<2>},
    {TQSAMPLE_PCM32, &MoveInterleave<4>, &MoveDeInterleave<4>},
    {TQSAMPLE_FLOAT32, &MoveInterleave<4>, &MoveDeInterleave<4>},
    {TQSAMPLE_FLOAT64, &MoveInterleave<8>, &MoveDeInterleave<8>},
    {TQSAMPLE_UNPACKED24, &MoveInterleave<4>, &MoveDeInterleave<4>},
};

const PlainMove* FindPlainMove(TQSAMPLETYPE type)
{
    for (const PlainMove& move : kPlainMoves)
    {
        if (move.type == type) return &move;
    }
    return nullptr;
}

HRESULT CheckCall(long frames, bool pointersValid)
{
    if (frames < 0) return E_INVALIDARG;
    if (frames > 0 && !pointersValid) return E_POINTER;
    return S_OK;
}

} // namespace

TQAUDIO_INTERLEAVESTEREOFUNC ScalarStereoInterleaveFunction(TQSAMPLETYPE dstType,
                                                            TQSAMPLETYPE srcType)
{
    const StereoEntries* entries = FindEntries(dstType, srcType);
    return entries ? entries->interleave : nullptr;
}

TQAUDIO_DEINTERLEAVESTEREOFUNC ScalarStereoDeInterleaveFunction(TQSAMPLETYPE dstType,
                                                                TQSAMPLETYPE srcType)
{
    const StereoEntries* entries = FindEntries(dstType, srcType);
    return entries ? entries->deinterleave : nullptr;
}

} // namespace tq::audio

using namespace tq::audio;

extern "C" TQAUDIO_INTERLEAVESTEREOFUNC TqAudio_GetStereoInterleaveFunction(TQSAMPLETYPE dstType,
                                                                            TQSAMPLETYPE srcType)
{
    const DWORD allowed = TqGetCPUSupport(0);
    for (const InterleaveVariant& variant : kVectorInterleavers)
    {
        if (variant.dst == dstType && variant.src == srcType &&
            (allowed & variant.features) == variant.features)
            return variant.function;
    }
    return ScalarStereoInterleaveFunction(dstType, srcType);
}

extern "C" TQAUDIO_DEINTERLEAVESTEREOFUNC
TqAudio_GetStereoDeInterleaveFunction(TQSAMPLETYPE dstType, TQSAMPLETYPE srcType)
{
    if ((TqGetCPUSupport(0) & TQCPU_SSE2) && dstType == TQSAMPLE_FLOAT32 &&
        srcType == TQSAMPLE_PCM16)
        return &DeInterleavePcm16ToFloat32Sse2;
    return ScalarStereoDeInterleaveFunction(dstType, srcType);
}

extern "C" HRESULT TqAudio_InterleaveStereo(void* dst, const void* srcLeft, const void* srcRight,
                                            TQSAMPLETYPE type, long frames)
{
    const PlainMove* move = FindPlainMove(type);
    if (!move) return E_NOTIMPL;
    const HRESULT hr = CheckCall(frames, dst && srcLeft && srcRight);
    if (hr != S_OK || frames == 0) return hr;
    move->interleave(dst, srcLeft, srcRight, frames);
    return S_OK;
}

extern "C" HRESULT TqAudio_DeInterleaveStereo(void* dstLeft, void* dstRight, const void* src,
                                              TQSAMPLETYPE type, long frames)
{
    const PlainMove* move = FindPlainMove(type);
    if (!move) return E_NOTIMPL;
    const HRESULT hr = CheckCall(frames, dstLeft && dstRight && src);
    if (hr != S_OK || frames == 0) return hr;
    move->deinterleave(dstLeft, dstRight, src, frames);
    return S_OK;
}

extern "C" HRESULT TqAudio_InterleaveStereoEx(void* dst, TQSAMPLETYPE dstType, const void* srcLeft,
                                              const void* srcRight, TQSAMPLETYPE srcType,
                                              long frames)
{
    if (dstType == srcType &&
        TqAudio_InterleaveStereo(dst, srcLeft, srcRight, srcType, frames) == S_OK)
        return S_OK;
    const TQAUDIO_INTERLEAVESTEREOFUNC interleave =
        TqAudio_GetStereoInterleaveFunction(dstType, srcType);
    if (!interleave) return E_NOTIMPL;
    const HRESULT hr = CheckCall(frames, dst && srcLeft && srcRight);
    if (hr != S_OK || frames == 0) return hr;
    interleave(dst, srcLeft, srcRight, frames);
    return S_OK;
}

extern "C" HRESULT TqAudio_DeInterleaveStereoEx(void* dstLeft, void* dstRight, TQSAMPLETYPE dstType,
                                                const void* src, TQSAMPLETYPE srcType, long frames)
{
    if (dstType == srcType &&
        TqAudio_DeInterleaveStereo(dstLeft, dstRight, src, srcType, frames) == S_OK)
        return S_OK;
    const TQAUDIO_DEINTERLEAVESTEREOFUNC deinterleave =
        TqAudio_GetStereoDeInterleaveFunction(dstType, srcType);
    if (!deinterleave) return E_NOTIMPL;
    const HRESULT hr = CheckCall(frames, dstLeft && dstRight && src);
    if (hr != S_OK || frames == 0) return hr;
    deinterleave(dstLeft, dstRight, src, frames);
    return S_OK;
}
