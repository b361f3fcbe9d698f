// The scalar level: complete, and the definition that every other level must match.
#ifndef TARN_ENGINES_KERNELS_SCALAR_H_
#define TARN_ENGINES_KERNELS_SCALAR_H_

#include "engines/kernels/row_kernels.h"

namespace tarn {

extern const RowKernels kScalarKernels;

}  // namespace tarn

#endif  // TARN_ENGINES_KERNELS_SCALAR_H_
