// Exposure compensation of one value: the rule that every kernel must match to the bit.
#ifndef TARN_ENGINES_KERNELS_EV_RULE_H_
#define TARN_ENGINES_KERNELS_EV_RULE_H_

#include "layout/packed_layouts.h"

namespace tarn {

// pedestal + gain x (v - pedestal), held between pedestal and maximum. Pedestal and maximum are
// whole numbers below 2^17, so exact as floats.
struct EvRule {
    float gain;
    float pedestal;
    float maximum;
};

// Pixels and sums stand on a black level of one sixteenth of their range.
constexpr EvRule EvRuleOfDepth(int bitDepth, float gain) {
    const int depth = bitDepth < 4 ? 4 : bitDepth > 16 ? 16 : bitDepth;
    return {gain, static_cast<float>(1 << (depth - 4)), static_cast<float>((1 << depth) - 1)};
}

// One fused multiply-add in single precision. Where the processor has none, a product and a sum in
// double, rounded once to float, give the same after truncation and clamp: for gains of 2^-17 and
// above the double sum is exact (the product's lowest bit lies at most 52 places below the sum's
// highest), and for smaller ones the product is below 1/2, which neither way reaches the next whole
// number above the pedestal.
TARN_INLINE float FusedMultiplyAdd(float a, float b, float c) {
#ifdef __FP_FAST_FMAF
    return __builtin_fmaf(a, b, c);
#else
    return static_cast<float>(static_cast<double>(a) * static_cast<double>(b) +
                              static_cast<double>(c));
#endif
}

// The clamp comes before the conversion, so that infinities saturate, and each comparison is
// written so that a NaN becomes the pedestal.
TARN_INLINE uint16_t Compensate(uint16_t value, const EvRule& rule) {
    const float aboveBlack = static_cast<float>(value) - rule.pedestal;
    const float result = FusedMultiplyAdd(rule.gain, aboveBlack, rule.pedestal);
    const float raised = result > rule.pedestal ? result : rule.pedestal;
    return static_cast<uint16_t>(raised < rule.maximum ? raised : rule.maximum);
}

}  // namespace tarn

#endif  // TARN_ENGINES_KERNELS_EV_RULE_H_
