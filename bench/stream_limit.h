// The yardstick: what the memory allows an operation that reads and writes so many bytes.
#ifndef TARN_BENCH_STREAM_LIMIT_H_
#define TARN_BENCH_STREAM_LIMIT_H_

#include <cstddef>
#include <cstdint>

namespace tarn::bench {

// Reads every byte of src once, in address order, with full vectors and several accumulators, and
// spreads outBytes of stores past the cache evenly over it. Both pointers are aligned to 64 bytes;
// sizes are rounded down to whole steps. Returns something that depends on all that was read.
uint64_t RunStreamLimit(const uint8_t* src, size_t inBytes, uint8_t* dst, size_t outBytes);

// The yardstick of what changes its data in place: every byte read once and written back.
uint64_t RunInPlaceLimit(uint8_t* data, size_t bytes);

}  // namespace tarn::bench

#endif  // TARN_BENCH_STREAM_LIMIT_H_
