// The NEON level: complete, of the baseline's instructions only.
#ifndef TARN_ENGINES_KERNELS_NEON_H_
#define TARN_ENGINES_KERNELS_NEON_H_

#include "engines/kernels/row_kernels.h"

namespace tarn {

extern const RowKernels kNeonKernels;

}  // namespace tarn

#endif  // TARN_ENGINES_KERNELS_NEON_H_
