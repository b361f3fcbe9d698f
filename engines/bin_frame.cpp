#include "engines/bin_frame.h"

#include <algorithm>

namespace tarn {

void BinFrame(Binning operation, const RowKernels& kernels, const uint8_t* src, uint8_t* dst,
              const BufferInfo& info, float gain) {
    if (info.outWidth < 1) return;  // before the loop: outHeight may be huge

    const BinningRecipe& recipe = Recipe(operation);
    const BinRowKernel binRow = kernels.Bin(operation);
    const EvRule rule = recipe.Ev(gain);
    const EvRule* ev = gain > 1.0f ? &rule : nullptr;
    const ptrdiff_t inPitch = info.inStride;
    const ptrdiff_t outPitch = info.outStride;
    alignas(kRowSumAlignment) uint16_t rowSum[kRowSumEntries];

    for (ptrdiff_t y = 0; y < info.outHeight; ++y) {
        const uint8_t* in = src + y * recipe.cell * inPitch;
        uint8_t* out = dst + y * outPitch;
        for (int left = info.outWidth; left > 0; left -= kTileWidth) {
            binRow(in, inPitch, out, std::min(left, kTileWidth), ev, rowSum);
            in += BytesRead(recipe, kTileWidth);
            out += BytesWritten(recipe, kTileWidth);
        }
    }
}

}  // namespace tarn
