// The seam between frame loops and instruction sets: one table of row kernels per level.
#ifndef TARN_ENGINES_KERNELS_ROW_KERNELS_H_
#define TARN_ENGINES_KERNELS_ROW_KERNELS_H_

#include <cstddef>
#include <cstdint>

#include "engines/kernels/binning_recipe.h"

namespace tarn {

// The widest output row that a kernel is given; wider rows come in tiles of this width, which is a
// whole number of groups of every layout.
inline constexpr int kTileWidth = 4080;

// 16-bit entries of the scratch row of sums: a tile, rounded up so that a kernel may store whole
// vectors. Aligned to kRowSumAlignment bytes.
inline constexpr int kRowSumEntries = 4096;
inline constexpr int kRowSumAlignment = 64;

// One output row of a binning operation.
//   src     first of the recipe's `cell` input rows, which are `srcPitch` bytes apart (any value)
//   dst     output row; src and dst do not overlap
//   count   output pixels, 1..kTileWidth
//   ev      gain on the sums, or null for none
//   rowSum  kRowSumEntries of scratch, content undefined before and after
// Reads BytesRead(recipe, count) bytes of each input row and writes BytesWritten(recipe, count)
// bytes, not one more on either side. Any alignment of src and dst.
using BinRowKernel = void (*)(const uint8_t* src, ptrdiff_t srcPitch, uint8_t* dst, int count,
                              const EvRule* ev, uint16_t* rowSum);

// Compensates a run of whole groups. dst may be src; otherwise they do not overlap.
using EvRowKernel = void (*)(const uint8_t* src, uint8_t* dst, ptrdiff_t groups, const EvRule& ev);

// Compensates count values in place. values is aligned for its type.
using EvValuesKernel = void (*)(uint16_t* values, ptrdiff_t count, const EvRule& ev);

// Packs whole groups of values, each shifted right by shift (0..15) first. Reads and writes whole
// groups, not one byte more.
using PackKernel = void (*)(const uint16_t* src, uint8_t* dst, ptrdiff_t groups, int shift);

// One instruction-set level. The scalar one is complete; any other has what it does better, and
// names the level below it, which serves where an entry is null.
struct RowKernels {
    const char* name;
    BinRowKernel bin[kBinningCount];  // by Binning
    EvRowKernel ev[kLayoutCount];     // by Layout
    EvValuesKernel evValues;
    PackKernel pack[kLayoutCount];  // by Layout
    const RowKernels* below = nullptr;

    BinRowKernel Bin(Binning operation) const {
        const int i = static_cast<int>(operation);
        return bin[i] ? bin[i] : below->Bin(operation);
    }
    EvRowKernel Ev(Layout layout) const {
        const int i = static_cast<int>(layout);
        return ev[i] ? ev[i] : below->Ev(layout);
    }
    EvValuesKernel EvValues() const { return evValues ? evValues : below->EvValues(); }
    PackKernel Pack(Layout layout) const {
        const int i = static_cast<int>(layout);
        return pack[i] ? pack[i] : below->Pack(layout);
    }
};

}  // namespace tarn

#endif  // TARN_ENGINES_KERNELS_ROW_KERNELS_H_
