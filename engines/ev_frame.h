// The one frame loop of exposure compensation at full resolution.
#ifndef TARN_ENGINES_EV_FRAME_H_
#define TARN_ENGINES_EV_FRAME_H_

#include "engines/kernels/row_kernels.h"

namespace tarn {

// Compensates the whole groups of each row, padding included; bytes of a last, broken group stay
// untouched. Any gain applies, 1.0 and NaN too. src may equal dst. A height or pitch below 1 does
// nothing.
void EvFrame(Layout layout, const RowKernels& kernels, const uint8_t* src, uint8_t* dst, int height,
             int pitch, float gain);

}  // namespace tarn

#endif  // TARN_ENGINES_EV_FRAME_H_
