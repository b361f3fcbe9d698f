// What the x86 levels agree on: how values stand in lanes of 16 bits, and how a gain is applied to
// them there.
//
// Pixels and sums stand at the top of their lane: a 10-bit pixel is shifted left by 6, a 12-bit sum
// by 4, a 14-bit sum by 2. So the black level of all is kTopPedestal, and one compensation and one
// packer per layout serve them all. Only sums of nine stand on a black level of their own.
#ifndef TARN_ENGINES_KERNELS_TOP_LANES_H_
#define TARN_ENGINES_KERNELS_TOP_LANES_H_

#include "engines/kernels/by_blocks.h"
#include "engines/kernels/exact_gain.h"

namespace tarn {

// What the lanes of an operation hold: its sums, moved to the top.
struct SumScale {
    int shift;
    int pedestal;
    int limit;  // above the highest compensated sum
    bool ninths;
};

constexpr SumScale ScaleOf(const BinningRecipe& recipe) {
    int shift = 0;
    while (recipe.Range() << (shift + 1) <= 0x10000) ++shift;
    return {shift, recipe.Pedestal() << shift, recipe.Range() << shift, recipe.Divisor() % 9 == 0};
}

// For floor(sum / 9) at the top of the lane, from 4 sum: twice the upper half of this product is
// exact, with the remainder's bits below.
inline constexpr int kNinth = 58255;

// A row by blocks, or by the rule where the blocks' gain is not exact.
template <Binning operation, class Blocks>
static void BinTopLanes(const uint8_t* src, ptrdiff_t srcPitch, uint8_t* dst, int count,
                        const EvRule* ev, uint16_t* rowSum) {
    if (ev && !GainIsServed(ev->gain, ScaleOf(Recipe(operation)).pedestal)) {
        return kScalarKernels.Bin(operation)(src, srcPitch, dst, count, ev, rowSum);
    }
    BinRowByBlocks<operation, Blocks>(src, srcPitch, dst, count, ev, rowSum);
}

template <Layout layout, class Blocks>
static void EvTopLanes(const uint8_t* src, uint8_t* dst, ptrdiff_t groups, const EvRule& ev) {
    if (!GainIsServed(ev.gain, kTopPedestal))
        return kScalarKernels.Ev(layout)(src, dst, groups, ev);
    EvRowByBlocks<LayoutType<layout>, Blocks>(src, dst, groups, ev);
}

}  // namespace tarn

#endif  // TARN_ENGINES_KERNELS_TOP_LANES_H_
