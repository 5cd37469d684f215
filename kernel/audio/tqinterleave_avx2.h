// AVX2 stereo functions; the lookup hands them out when the processor and the system allow AVX2.
#pragma once

namespace tq::audio {

// Whole groups of four frames only, like the SSE2 forms they replace, and the same bits.
void InterleaveFloat32ToPcm16Avx2(void* dst, const void* srcLeft, const void* srcRight,
                                  long frames);
void InterleavePcm32ToPcm16Avx2(void* dst, const void* srcLeft, const void* srcRight, long frames);
void InterleaveUnpacked24ToPcm16Avx2(void* dst, const void* srcLeft, const void* srcRight,
                                     long frames);

} // namespace tq::audio
