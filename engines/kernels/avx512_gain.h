// Exposure compensation of a vector. Included by avx512.cpp only.
#ifndef TARN_ENGINES_KERNELS_AVX512_GAIN_H_
#define TARN_ENGINES_KERNELS_AVX512_GAIN_H_

#include "engines/kernels/avx512_vector.h"
#include "engines/kernels/top_lanes.h"

namespace tarn {

struct WideGain {
    __m512i pedestal;
    __m512 factor;
    __m512 offset;
};

TARN_INLINE WideGain MakeWideGain(float gain, int pedestal) {
    return {WideWords(pedestal), _mm512_set1_ps(gain), _mm512_set1_ps(GainOffset(gain, pedestal))};
}

// In quarters of 16 bytes, which unpacking and packing keep in their order.
TARN_INLINE __m512i Compensated(__m512i v, const WideGain& gain) {
    const __m512i above = _mm512_subs_epu16(v, gain.pedestal);
    const __m512i exponent = WideWords(kExponentOfTwoTo23);
    const __m512 low = _mm512_castsi512_ps(_mm512_unpacklo_epi16(above, exponent));
    const __m512 high = _mm512_castsi512_ps(_mm512_unpackhi_epi16(above, exponent));
    return _mm512_packus_epi32(
        _mm512_cvttps_epi32(_mm512_fmadd_ps(gain.factor, low, gain.offset)),
        _mm512_cvttps_epi32(_mm512_fmadd_ps(gain.factor, high, gain.offset)));
}

}  // namespace tarn

#endif  // TARN_ENGINES_KERNELS_AVX512_GAIN_H_
