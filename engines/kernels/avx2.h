// The AVX2 level (with FMA): complete.
#ifndef TARN_ENGINES_KERNELS_AVX2_H_
#define TARN_ENGINES_KERNELS_AVX2_H_

#include "engines/kernels/row_kernels.h"

namespace tarn {

extern const RowKernels kAvx2Kernels;

}  // namespace tarn

#endif  // TARN_ENGINES_KERNELS_AVX2_H_
