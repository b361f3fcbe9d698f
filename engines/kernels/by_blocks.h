// Rows by whole blocks: the one place where a vector level's row ends are decided.
//
// A vector level writes block code only. Whole blocks run in place; what is left of a row is copied
// into a small zeroed row on the stack, the same block code runs there, and the bytes that belong
// to the row are copied back. Zeros are right for what lies past the width: their sums are 0, or
// the pedestal under a gain, as in the scalar level.
//
// All functions have internal linkage: this header is compiled with each level's own flags.
#ifndef TARN_ENGINES_KERNELS_BY_BLOCKS_H_
#define TARN_ENGINES_KERNELS_BY_BLOCKS_H_

#include <cstring>

#include "engines/kernels/row_kernels.h"
#include "engines/kernels/scalar.h"

namespace tarn {

// How many whole blocks fit a run when block code also touches `slack` bytes past its last block.
constexpr int BlocksThatFit(int runBytes, int blockBytes, int slack) {
    return runBytes < slack ? 0 : (runBytes - slack) / blockBytes;
}

constexpr int Least(int a, int b) {
    return a < b ? a : b;
}

// A row kernel made of block code for the operation. Block provides
//   kPixels      output pixels of one block: whole groups, whole steps of input
//   kReadSlack   bytes of each input row that it may read past its last block
//   kWriteSlack  bytes that it may write past its last block
//   Run(src, srcPitch, dst, blocks, ev, rowSum)
// with the meanings of BinRowKernel and blocks >= 1 whole blocks.
template <Binning Op, class Block>
static void BinRowByBlocks(const uint8_t* src, ptrdiff_t srcPitch, uint8_t* dst, int count,
                           const EvRule* ev, uint16_t* rowSum) {
    constexpr BinningRecipe kRecipe = Recipe(Op);
    constexpr int kGroupPixels = Shape(kRecipe.out).pixels;
    constexpr int kIn = BytesRead(kRecipe, Block::kPixels);
    constexpr int kOut = BytesWritten(kRecipe, Block::kPixels);
    static_assert(Block::kPixels % kGroupPixels == 0 && Block::kPixels % kRecipe.StepSums() == 0);

    // Sums past the width that stay uncompensated under a gain are more than block code can say.
    if (kRecipe.evSpan == EvSpan::Width && ev && count % kGroupPixels != 0) {
        const int whole = count / kGroupPixels * kGroupPixels;
        kScalarKernels.Bin(Op)(src + BytesRead(kRecipe, whole), srcPitch,
                               dst + BytesWritten(kRecipe, whole), count - whole, ev, rowSum);
        count = whole;
    }

    const int blocks = Least(Least(count / Block::kPixels, BlocksThatFit(BytesRead(kRecipe, count),
                                                                         kIn, Block::kReadSlack)),
                             BlocksThatFit(BytesWritten(kRecipe, count), kOut, Block::kWriteSlack));
    if (blocks > 0) Block::Run(src, srcPitch, dst, blocks, ev, rowSum);

    const int rest = count - blocks * Block::kPixels;
    if (rest == 0) return;
    constexpr int kRestBlocks =
        1 + (Block::kReadSlack + kIn - 1) / kIn + (Block::kWriteSlack + kOut - 1) / kOut;
    constexpr int kRestPitch = kRestBlocks * kIn + Block::kReadSlack;
    const int restBlocks = CeilDiv(rest, Block::kPixels);
    uint8_t restIn[kRecipe.cell * kRestPitch];
    uint8_t restOut[kRestBlocks * kOut + Block::kWriteSlack];
    const int valid = BytesRead(kRecipe, rest);
    const uint8_t* from = src + ptrdiff_t{blocks} * kIn;
    for (int row = 0; row < kRecipe.cell; ++row) {
        uint8_t* to = restIn + row * kRestPitch;
        std::memcpy(to, from + row * srcPitch, static_cast<size_t>(valid));
        std::memset(to + valid, 0,
                    static_cast<size_t>(restBlocks * kIn + Block::kReadSlack - valid));
    }
    Block::Run(restIn, kRestPitch, restOut, restBlocks, ev, rowSum);
    std::memcpy(dst + ptrdiff_t{blocks} * kOut, restOut,
                static_cast<size_t>(BytesWritten(kRecipe, rest)));
}

// The same for exposure compensation of whole groups of layout L, in place or not. Block provides
//   kGroups      groups of one block
//   kReadSlack   bytes that it may read past its last block; it writes none there
//   Run(src, dst, blocks, ev)   blocks of any count from 1; each is read before it is written
template <class L, class Block>
static void EvRowByBlocks(const uint8_t* src, uint8_t* dst, ptrdiff_t groups, const EvRule& ev) {
    constexpr int kBytes = Block::kGroups * L::kGroupBytes;
    constexpr int kSlackBlocks = (Block::kReadSlack + kBytes - 1) / kBytes;
    ptrdiff_t blocks = groups / Block::kGroups;
    while (blocks > 0 && blocks * kBytes + Block::kReadSlack > groups * L::kGroupBytes) --blocks;

    // The rest is taken first: in place, the last block's slack must still be unchanged input.
    uint8_t rest[(1 + kSlackBlocks) * kBytes + Block::kReadSlack];
    const ptrdiff_t offset = blocks * kBytes;
    const size_t valid = static_cast<size_t>(groups * L::kGroupBytes - offset);
    const ptrdiff_t restBlocks =
        (groups - blocks * Block::kGroups + Block::kGroups - 1) / Block::kGroups;
    if (valid > 0) {
        std::memcpy(rest, src + offset, valid);
        std::memset(rest + valid, 0,
                    static_cast<size_t>(restBlocks) * kBytes + Block::kReadSlack - valid);
        Block::Run(rest, rest, restBlocks, ev);
    }
    if (blocks > 0) Block::Run(src, dst, blocks, ev);
    if (valid > 0) std::memcpy(dst + offset, rest, valid);
}

}  // namespace tarn

#endif  // TARN_ENGINES_KERNELS_BY_BLOCKS_H_
