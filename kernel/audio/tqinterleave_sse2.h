// SSE2 interleavers into 16-bit; the lookup hands them out when the processor allows.
#pragma once

namespace tq::audio {

// Whole groups of four frames only: frames beyond the last group are not written. The scaled
// values are rounded by the control word's mode and saturated to 16 bits; a value beyond the
// 32-bit range saturates to -32768 even when positive, where the scalar functions clamp.
void InterleavePcm32ToPcm16Sse2(void* dst, const void* srcLeft, const void* srcRight, long frames);
void InterleaveFloat32ToPcm16Sse2(void* dst, const void* srcLeft, const void* srcRight,
                                  long frames);
void InterleaveUnpacked24ToPcm16Sse2(void* dst, const void* srcLeft, const void* srcRight,
                                     long frames);

} // namespace tq::audio
