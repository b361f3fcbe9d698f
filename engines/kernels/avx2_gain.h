// Exposure compensation of a vector. Included by avx2.cpp only.
#ifndef TARN_ENGINES_KERNELS_AVX2_GAIN_H_
#define TARN_ENGINES_KERNELS_AVX2_GAIN_H_

#include "engines/kernels/avx2_vector.h"

namespace tarn {

// pedestal + gain x (v - pedestal) as one fused multiply-add on d = max(v - pedestal, 0):
// the bits 0x4B00'0000 + d are the float 2^23 + d, which saves the conversion, and
//   gain x (2^23 + d) + (pedestal - gain x 2^23)
// has the exact value of the rule before its one rounding as long as the float in brackets is
// exact. That is so for gains from 2^-10 to the lowest set bit of the pedestal: there gain x 2^23
// is at least twice the pedestal, and its own lowest bit not above that of the pedestal.
struct Gain {
    __m256i pedestal;
    __m256 factor;
    __m256 offset;
};

constexpr float kTwoTo23 = 8388608.0f;

TARN_INLINE bool GainIsServed(float gain, int pedestal) {
    return gain >= 0x1p-10f && gain <= static_cast<float>(pedestal & -pedestal);
}

TARN_INLINE Gain MakeGain(float gain, int pedestal) {
    return {Words(pedestal), _mm256_set1_ps(gain),
            _mm256_set1_ps(static_cast<float>(pedestal) - gain * kTwoTo23)};
}

// Clamped to the pedestal by the saturating subtraction and to 65535 by the saturating pack.
TARN_INLINE __m256i Compensated(__m256i v, const Gain& gain) {
    const __m256i above = _mm256_subs_epu16(v, gain.pedestal);
    const __m256 low = _mm256_castsi256_ps(_mm256_unpacklo_epi16(above, Words(0x4B00)));
    const __m256 high = _mm256_castsi256_ps(_mm256_unpackhi_epi16(above, Words(0x4B00)));
    return _mm256_packus_epi32(
        _mm256_cvttps_epi32(_mm256_fmadd_ps(gain.factor, low, gain.offset)),
        _mm256_cvttps_epi32(_mm256_fmadd_ps(gain.factor, high, gain.offset)));
}

}  // namespace tarn

#endif  // TARN_ENGINES_KERNELS_AVX2_GAIN_H_
