// Rows by whole blocks: where a row of a vector level ends inside a block.
//
// A vector level writes block code only. Whole blocks run in place; what is left of a row is copied
// into a small zeroed row on the stack, the same block code runs there, and the bytes that belong
// to the row are copied back. That copy is taken before the whole blocks run: vectors read right
// after bytes were written one by one wait until those have reached the cache. Zeros are right for
// what lies past the width: their sums are 0, or the pedestal under a gain, as in the scalar level.
//
// All functions have internal linkage: this header is compiled with each level's own flags.
#ifndef TARN_ENGINES_KERNELS_BY_BLOCKS_H_
#define TARN_ENGINES_KERNELS_BY_BLOCKS_H_

#include <cstring>

#include "engines/kernels/row_kernels.h"
#include "engines/kernels/scalar.h"

namespace tarn {

// The first `bytes` of each of some rows, zeros behind them.
template <int rows, int rowBytes>
TARN_INLINE void CopyRows(uint8_t (&to)[rows][rowBytes], const uint8_t* src, ptrdiff_t srcPitch,
                          int bytes) {
    std::memset(to, 0, sizeof to);
    for (int row = 0; row < rows; ++row) {
        std::memcpy(to[row], src + row * srcPitch, static_cast<size_t>(bytes));
    }
}

// A row kernel made of block code for the operation. Block provides
//   kPixels      output pixels of one block: whole groups, whole steps of input
//   Run(src, srcPitch, dst, blocks, ev, rowSum)
// with the meanings of BinRowKernel and blocks >= 1 whole blocks, no byte beyond which it touches.
template <Binning Op, class Block>
static void BinRowByBlocks(const uint8_t* src, ptrdiff_t srcPitch, uint8_t* dst, int count,
                           const EvRule* ev, uint16_t* rowSum) {
    constexpr BinningRecipe kRecipe = Recipe(Op);
    constexpr int kGroupPixels = Shape(kRecipe.out).pixels;
    static_assert(Block::kPixels % kGroupPixels == 0 && Block::kPixels % kRecipe.StepSums() == 0);

    // Sums past the width that stay uncompensated under a gain are more than block code can say.
    if (kRecipe.evSpan == EvSpan::Width && ev && count % kGroupPixels != 0) {
        const int whole = count / kGroupPixels * kGroupPixels;
        kScalarKernels.Bin(Op)(src + BytesRead(kRecipe, whole), srcPitch,
                               dst + BytesWritten(kRecipe, whole), count - whole, ev, rowSum);
        count = whole;
    }

    const int rest = count % Block::kPixels;
    const int whole = count - rest;
    constexpr int kIn = BytesRead(kRecipe, Block::kPixels);
    uint8_t in[kRecipe.cell][kIn];
    if (rest > 0) {
        CopyRows(in, src + BytesRead(kRecipe, whole), srcPitch, BytesRead(kRecipe, rest));
    }
    if (whole > 0) Block::Run(src, srcPitch, dst, whole / Block::kPixels, ev, rowSum);
    if (rest > 0) {
        uint8_t out[BytesWritten(kRecipe, Block::kPixels)];
        Block::Run(in[0], kIn, out, 1, ev, rowSum);
        std::memcpy(dst + BytesWritten(kRecipe, whole), out,
                    static_cast<size_t>(BytesWritten(kRecipe, rest)));
    }
}

// The same for exposure compensation of whole groups of layout L, in place or not. Block provides
//   kGroups      groups of one block
//   Run(src, dst, blocks, ev)   blocks of any count from 1; each is read before it is written
template <class L, class Block>
static void EvRowByBlocks(const uint8_t* src, uint8_t* dst, ptrdiff_t groups, const EvRule& ev) {
    const int rest = static_cast<int>(groups % Block::kGroups);
    const ptrdiff_t offset = (groups - rest) * L::kGroupBytes;
    const int valid = rest * L::kGroupBytes;
    uint8_t block[1][Block::kGroups * L::kGroupBytes];
    if (rest > 0) CopyRows(block, src + offset, 0, valid);
    if (offset > 0) Block::Run(src, dst, groups / Block::kGroups, ev);
    if (rest > 0) {
        Block::Run(block[0], block[0], 1, ev);
        std::memcpy(dst + offset, block, static_cast<size_t>(valid));
    }
}

}  // namespace tarn

#endif  // TARN_ENGINES_KERNELS_BY_BLOCKS_H_
