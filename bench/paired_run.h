// Times an operation against the stream limit and memcpy, in turns on cold memory.
#ifndef TARN_BENCH_PAIRED_RUN_H_
#define TARN_BENCH_PAIRED_RUN_H_

#include <benchmark/benchmark.h>

#include "bench/arena.h"
#include "bench/operations.h"

namespace tarn::bench {

struct Memory {
    Arena in;
    Arena out;
};

// One timed turn of each per iteration, so that all three see the same neighbours on the machine.
// Reports as counters, all from medians:
//   GB/s, MP/s    input bytes and input pixels of the operation
//   ns/px         per output pixel
//   limit, lo, hi speed relative to the stream limit: median of the pairs and their quartiles
//   memcpy        speed relative to memcpy of the input
//   limit_GB/s, memcpy_GB/s
void RunCold(benchmark::State& state, const FrameOperation& operation, const RowKernels& kernels,
             Memory& memory);

// The same frame over and over, and memcpy of it: GB/s, MP/s, ns/px and memcpy only. There is no
// stream limit in the cache.
void RunCached(benchmark::State& state, const FrameOperation& operation, const RowKernels& kernels,
               Memory& memory);

// Says on standard error whether the stream limit was a valid yardstick in every cold run so far.
void ReportYardstick();

}  // namespace tarn::bench

#endif  // TARN_BENCH_PAIRED_RUN_H_
