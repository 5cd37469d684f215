// Stereo interleave and de-interleave: two planes to one interleaved pair and back, by type.
#pragma once

#include "tqkernelapi.h"
#include "tqsampletype.h"

// Writes frames pairs into dst from a left and a right plane.
typedef void (*TQAUDIO_INTERLEAVESTEREOFUNC)(void* dst, const void* srcLeft, const void* srcRight,
                                             long frames);
// Splits frames pairs of src into a left and a right plane.
typedef void (*TQAUDIO_DEINTERLEAVESTEREOFUNC)(void* dstLeft, void* dstRight, const void* src,
                                               long frames);

// The function of a pair (destination type first), or null: the pairs are those of the channel
// copy table. A function stays valid for the process; look it up once, never on the audio thread.
//
// Where SSE2 is allowed, the interleavers into 16-bit from 32-bit integers, singles and unpacked
// 24-bit words convert whole groups of four frames only: the last frames % 4 pairs are not
// written. Pass a multiple of four, or finish the tail with the scalar entry below.
//
// The two pairs the hosts' stereo path leans on are interleave 16-bit from single and
// de-interleave single from 16-bit:
//   TqAudio_GetStereoInterleaveFunction(TQSAMPLE_PCM16, TQSAMPLE_FLOAT32)
//   TqAudio_GetStereoDeInterleaveFunction(TQSAMPLE_FLOAT32, TQSAMPLE_PCM16)
TQKERNEL_API TQAUDIO_INTERLEAVESTEREOFUNC TqAudio_GetStereoInterleaveFunction(TQSAMPLETYPE dstType,
                                                                              TQSAMPLETYPE srcType);
TQKERNEL_API TQAUDIO_DEINTERLEAVESTEREOFUNC
TqAudio_GetStereoDeInterleaveFunction(TQSAMPLETYPE dstType, TQSAMPLETYPE srcType);

// Same type on both sides, a pure move: 8-bit unsigned, 16-bit, 32-bit, unpacked 24-bit, single
// and double. S_OK (also for 0 frames); E_NOTIMPL for any other type, packed 24-bit among them;
// E_INVALIDARG for negative frames; E_POINTER.
TQKERNEL_API HRESULT TqAudio_InterleaveStereo(void* dst, const void* srcLeft, const void* srcRight,
                                              TQSAMPLETYPE type, long frames);
TQKERNEL_API HRESULT TqAudio_DeInterleaveStereo(void* dstLeft, void* dstRight, const void* src,
                                                TQSAMPLETYPE type, long frames);

// Any pair: equal types try the pure move first, everything else (and what it refused) goes
// through the table function of the pair, with its four-frame groups where it has them. S_OK;
// E_NOTIMPL when the pair has no function; E_INVALIDARG; E_POINTER.
TQKERNEL_API HRESULT TqAudio_InterleaveStereoEx(void* dst, TQSAMPLETYPE dstType,
                                                const void* srcLeft, const void* srcRight,
                                                TQSAMPLETYPE srcType, long frames);
TQKERNEL_API HRESULT TqAudio_DeInterleaveStereoEx(void* dstLeft, void* dstRight,
                                                  TQSAMPLETYPE dstType, const void* src,
                                                  TQSAMPLETYPE srcType, long frames);

#ifdef __cplusplus
namespace tq::audio {
// The table functions without the processor variants: every frame is written.
TQAUDIO_INTERLEAVESTEREOFUNC ScalarStereoInterleaveFunction(TQSAMPLETYPE dstType,
                                                            TQSAMPLETYPE srcType);
TQAUDIO_DEINTERLEAVESTEREOFUNC ScalarStereoDeInterleaveFunction(TQSAMPLETYPE dstType,
                                                                TQSAMPLETYPE srcType);
} // namespace tq::audio
#endif
