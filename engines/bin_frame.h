// The one frame loop of binning.
#ifndef TARN_ENGINES_BIN_FRAME_H_
#define TARN_ENGINES_BIN_FRAME_H_

#include "TarnSolution.h"
#include "engines/kernels/row_kernels.h"

namespace tarn {

// Bins the rows of a frame with the given level's kernel. Of info the pitches, outWidth and
// outHeight are read; a width or height below 1 does nothing. The gain applies above 1.0 only (a
// NaN does not).
void BinFrame(Binning operation, const RowKernels& kernels, const uint8_t* src, uint8_t* dst,
              const BufferInfo& info, float gain);

}  // namespace tarn

#endif  // TARN_ENGINES_BIN_FRAME_H_
