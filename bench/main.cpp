// Every operation x level x gain, as operation/gain/level/size: frames of 12, 50 and 200 megapixels
// from cold memory, and frames that stay in the second-level cache, at several output widths.
//
// Takes Google Benchmark's arguments. Without a filter: the best level at every size, the others in
// the cache.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>

#include "bench/paired_run.h"
#include "engines/kernels/levels.h"

namespace {

using tarn::Level;
using tarn::bench::FrameOperation;

// Two of the largest frames (200 megapixels of 12 bits) and more.
constexpr size_t kArenaBytes = 640u << 20;

constexpr double kLeastPairs = 25;
constexpr double kMostPairs = 201;
constexpr double kBytesPerRun = 3e9;  // small frames run more often

struct FrameSize {
    const char* name;
    double pixels;
    int outWidth;
    bool cached;
};
constexpr double kCached = 150e3;
constexpr FrameSize kSizes[] = {
    {"12MP", 12e6, 4080, false},        {"50MP", 50e6, 4080, false},
    {"200MP", 200e6, 4080, false},      {"cache4080", kCached, 4080, true},
    {"cache4000", kCached, 4000, true}, {"cache2000", kCached, 2000, true},
    {"cache1015", kCached, 1015, true}, {"cache100", kCached, 100, true},
};

void Register(const FrameOperation& operation, const Level& level, const FrameSize& size,
              tarn::bench::Memory& memory) {
    const std::string name = operation.name + "/" + level.kernels->name + "/" + size.name;
    const double pairs =
        std::clamp(kBytesPerRun / static_cast<double>(operation.inBytes), kLeastPairs, kMostPairs);
    benchmark::RegisterBenchmark(name.c_str(),
                                 [=, &level, &memory](benchmark::State& state) {
                                     (size.cached ? tarn::bench::RunCached : tarn::bench::RunCold)(
                                         state, operation, *level.kernels, memory);
                                 })
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond)
        ->Iterations(static_cast<int>(pairs));
}

void RegisterAll(tarn::bench::Memory& memory) {
    for (const FrameSize& size : kSizes) {
        for (const FrameOperation& operation :
             tarn::bench::FrameOperations(size.pixels, size.outWidth)) {
            for (const Level& level : tarn::Levels()) {
                if (level.supported()) Register(operation, level, size, memory);
            }
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::SetBenchmarkFilter(std::string("/") + tarn::BestKernels().name + "/|/cache4080/");
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;

    tarn::bench::Memory memory{tarn::bench::Arena(kArenaBytes), tarn::bench::Arena(kArenaBytes)};
    RegisterAll(memory);
    for (const Level& level : tarn::Levels()) {
        if (!level.supported()) std::fprintf(stderr, "SKIPPED: %s\n", level.kernels->name);
    }
    benchmark::RunSpecifiedBenchmarks();
    tarn::bench::ReportYardstick();
    benchmark::Shutdown();
}
