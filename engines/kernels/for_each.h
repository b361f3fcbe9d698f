// A loop that is unrolled for certain, so that arrays of vectors become registers: compilers unroll
// by estimates, which anything nearby can tip, and the array then takes its way through memory.
//
// Internal linkage: this header is compiled with each level's own flags.
#ifndef TARN_ENGINES_KERNELS_FOR_EACH_H_
#define TARN_ENGINES_KERNELS_FOR_EACH_H_

#include <cstddef>
#include <utility>

#include "layout/packed_layouts.h"

namespace tarn {

// What TARN_INLINE is to a function.
#define TARN_INLINE_LAMBDA __attribute__((always_inline))

template <class Step, size_t... i>
TARN_INLINE void ForEachOf(Step step, std::index_sequence<i...>) {
    (step(std::integral_constant<int, static_cast<int>(i)>{}), ...);
}

// step(0), step(1), ... step(count - 1), each number a constant.
template <int count, class Step>
TARN_INLINE void ForEach(Step step) {
    ForEachOf(step, std::make_index_sequence<count>{});
}

}  // namespace tarn

#endif  // TARN_ENGINES_KERNELS_FOR_EACH_H_
