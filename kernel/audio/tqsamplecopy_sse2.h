// SSE2 variants of a few copy functions; the lookups hand them out when the processor allows.
#pragma once

namespace tq::audio {

// Block copies (destination from source). They agree with the scalar functions bit for bit but
// where noted in their definitions.
void CopyFloat32ToPcm16Sse2(void* dst, const void* src, long count, float gain);
void CopyPcm16ToFloat32Sse2(void* dst, const void* src, long count, float gain);
void CopyFloat64ToFloat32Sse2(void* dst, const void* src, long count, float gain);
void CopyFloat32ToFloat64Sse2(void* dst, const void* src, long count, float gain);

// Between singles and 24-bit samples, packed and unpacked: identical to the scalar functions.
void CopyFloat32ToPcm24Sse2(void* dst, const void* src, long count, float gain);
void CopyPcm24ToFloat32Sse2(void* dst, const void* src, long count, float gain);
void CopyFloat32ToUnpacked24Sse2(void* dst, const void* src, long count, float gain);
void CopyUnpacked24ToFloat32Sse2(void* dst, const void* src, long count, float gain);
// The packed rows again where SSSE3 is allowed; identical too.
void CopyFloat32ToPcm24Ssse3(void* dst, const void* src, long count, float gain);
void CopyPcm24ToFloat32Ssse3(void* dst, const void* src, long count, float gain);

// Channel copy from 16-bit to double; exact, so identical to the scalar function.
void CopyChannelPcm16ToFloat64Sse2(void* dst, unsigned long dstStride, unsigned long dstChannel,
                                   const void* src, unsigned long srcStride,
                                   unsigned long srcChannel, long frames);

} // namespace tq::audio
