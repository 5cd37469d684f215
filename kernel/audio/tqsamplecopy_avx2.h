// AVX2 variants of the copy functions from singles to 24-bit samples; the lookup hands them out
// when the processor and the system allow AVX2.
#pragma once

namespace tq::audio {

// Identical to the scalar functions, packed and unpacked, at any gain.
void CopyFloat32ToPcm24Avx2(void* dst, const void* src, long count, float gain);
void CopyFloat32ToUnpacked24Avx2(void* dst, const void* src, long count, float gain);

} // namespace tq::audio
