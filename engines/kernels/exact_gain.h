// A gain in one fused multiply-add without the conversion to float, and the gains for which that is
// exact. All vector levels use it, and leave other gains to the scalar level.
#ifndef TARN_ENGINES_KERNELS_EXACT_GAIN_H_
#define TARN_ENGINES_KERNELS_EXACT_GAIN_H_

#include "layout/packed_layouts.h"

namespace tarn {

// The black level of values that stand at the top of a lane of 16 bits.
inline constexpr int kTopPedestal = 0x10000 / 16;

// pedestal + gain x (v - pedestal) as one fused multiply-add on d = max(v - pedestal, 0):
// the bits 0x4B00'0000 + d are the float 2^23 + d, which saves the conversion, and
//   gain x (2^23 + d) + (pedestal - gain x 2^23)
// has the exact value of the rule before its one rounding as long as the float in brackets is
// exact. That is so for gains from 2^-10 to the lowest set bit of the pedestal: there gain x 2^23
// is at least twice the pedestal, and its own lowest bit not above that of the pedestal.
inline constexpr int kExponentOfTwoTo23 = 0x4B00;

TARN_INLINE float GainOffset(float gain, int pedestal) {
    return static_cast<float>(pedestal) - gain * 8388608.0f;
}

TARN_INLINE bool GainIsServed(float gain, int pedestal) {
    return gain >= 0x1p-10f && gain <= static_cast<float>(pedestal & -pedestal);
}

}  // namespace tarn

#endif  // TARN_ENGINES_KERNELS_EXACT_GAIN_H_
