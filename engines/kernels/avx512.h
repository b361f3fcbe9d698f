// The AVX-512 level (with VBMI and VNNI): complete.
#ifndef TARN_ENGINES_KERNELS_AVX512_H_
#define TARN_ENGINES_KERNELS_AVX512_H_

#include "engines/kernels/row_kernels.h"

namespace tarn {

extern const RowKernels kAvx512Kernels;

}  // namespace tarn

#endif  // TARN_ENGINES_KERNELS_AVX512_H_
