// SSE2 stereo functions; the lookup hands them out when the processor allows.
#pragma once

namespace tq::audio {

// Whole groups of four frames only: frames beyond the last group are not written. The scaled
// values are rounded by the control word's mode and clamped to 16 bits, as the scalar functions
// do.
void InterleavePcm32ToPcm16Sse2(void* dst, const void* srcLeft, const void* srcRight, long frames);
void InterleaveFloat32ToPcm16Sse2(void* dst, const void* srcLeft, const void* srcRight,
                                  long frames);
void InterleaveUnpacked24ToPcm16Sse2(void* dst, const void* srcLeft, const void* srcRight,
                                     long frames);

// De-interleaves 16-bit pairs into single planes, every frame; exact, so identical to the scalar
// function.
void DeInterleavePcm16ToFloat32Sse2(void* dstLeft, void* dstRight, const void* src, long frames);

} // namespace tq::audio
