// Exposure compensation of a vector. Included by neon.cpp only.
#ifndef TARN_ENGINES_KERNELS_NEON_GAIN_H_
#define TARN_ENGINES_KERNELS_NEON_GAIN_H_

#include "engines/kernels/exact_gain.h"
#include "engines/kernels/neon_vector.h"

namespace tarn {

// For CompensatedWide, by the rule of exact_gain.h.
struct Gain {
    uint16x8_t pedestal;
    float32x4_t factor;
    float32x4_t offset;
};

TARN_INLINE Gain MakeGain(float gain, int pedestal) {
    return {Words(pedestal), vdupq_n_f32(gain), vdupq_n_f32(GainOffset(gain, pedestal))};
}

// A vector's lower and upper four values, in the upper halves of lanes of 32 bits.
struct Wide {
    uint16x8_t low;
    uint16x8_t high;
};

// Values of so many bits, moved to the top of their lanes: the conversion to a fraction of 2^bits
// saturates, which is the upper clamp, and the upper halves are what is asked for.
template <int bits>
TARN_INLINE Wide CompensatedWide(uint16x8_t v, const Gain& gain) {
    const uint16x8_t above = vqsubq_u16(v, gain.pedestal);
    const float32x4_t low = vreinterpretq_f32_u16(vzip1q_u16(above, Words(kExponentOfTwoTo23)));
    const float32x4_t high = vreinterpretq_f32_u16(vzip2q_u16(above, Words(kExponentOfTwoTo23)));
    const uint32x4_t a = vcvtq_n_u32_f32(vfmaq_f32(gain.offset, low, gain.factor), 32 - bits);
    const uint32x4_t b = vcvtq_n_u32_f32(vfmaq_f32(gain.offset, high, gain.factor), 32 - bits);
    return {vreinterpretq_u16_u32(a), vreinterpretq_u16_u32(b)};
}

template <int bits>
TARN_INLINE uint16x8_t Compensated(uint16x8_t v, const Gain& gain) {
    const Wide wide = CompensatedWide<bits>(v, gain);
    return vuzp2q_u16(wide.low, wide.high);
}

// Two vectors at once: the lower halves of both, and the upper halves of both.
template <int bits>
TARN_INLINE Lanes<2> CompensatedHalves(uint16x8_t a, uint16x8_t b, const Gain& gain) {
    const Wide wideA = CompensatedWide<bits>(a, gain), wideB = CompensatedWide<bits>(b, gain);
    return {{vuzp2q_u16(wideA.low, wideB.low), vuzp2q_u16(wideA.high, wideB.high)}};
}

}  // namespace tarn

#endif  // TARN_ENGINES_KERNELS_NEON_GAIN_H_
