// Every frame operation of every level, as something that can be timed.
#ifndef TARN_BENCH_OPERATIONS_H_
#define TARN_BENCH_OPERATIONS_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "engines/kernels/row_kernels.h"

namespace tarn::bench {

// An operation on a frame of a given size, its rows packed without padding.
struct FrameOperation {
    std::string name;  // operation/gain
    size_t inBytes;
    size_t outBytes;
    double inPixels;
    double outPixels;
    std::function<void(const RowKernels&, const uint8_t* src, uint8_t* dst)> run;
    bool inPlace = false;  // reads and writes dst only
};

// Every operation, with and without a gain where it has the choice, on frames of about inPixels.
std::vector<FrameOperation> FrameOperations(double inPixels, int outWidth);

}  // namespace tarn::bench

#endif  // TARN_BENCH_OPERATIONS_H_
