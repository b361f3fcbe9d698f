// Exposure compensation of a vector. Included by avx2.cpp only.
#ifndef TARN_ENGINES_KERNELS_AVX2_GAIN_H_
#define TARN_ENGINES_KERNELS_AVX2_GAIN_H_

#include "engines/kernels/avx2_vector.h"
#include "engines/kernels/top_lanes.h"

namespace tarn {

struct Gain {
    __m256i pedestal;
    __m256 factor;
    __m256 offset;
};

TARN_INLINE Gain MakeGain(float gain, int pedestal) {
    return {Words(pedestal), _mm256_set1_ps(gain), _mm256_set1_ps(GainOffset(gain, pedestal))};
}

// Clamped to the pedestal by the saturating subtraction and to 65535 by the saturating pack.
TARN_INLINE __m256i Compensated(__m256i v, const Gain& gain) {
    const __m256i above = _mm256_subs_epu16(v, gain.pedestal);
    const __m256 low = _mm256_castsi256_ps(_mm256_unpacklo_epi16(above, Words(kExponentOfTwoTo23)));
    const __m256 high =
        _mm256_castsi256_ps(_mm256_unpackhi_epi16(above, Words(kExponentOfTwoTo23)));
    return _mm256_packus_epi32(
        _mm256_cvttps_epi32(_mm256_fmadd_ps(gain.factor, low, gain.offset)),
        _mm256_cvttps_epi32(_mm256_fmadd_ps(gain.factor, high, gain.offset)));
}

}  // namespace tarn

#endif  // TARN_ENGINES_KERNELS_AVX2_GAIN_H_
