#include "bench/paired_run.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <vector>

#include "bench/stream_limit.h"

namespace tarn::bench {
namespace {

// The limit loop is the yardstick only while no kernel clearly beats it and a copy of the input,
// which writes as much as it reads, takes clearly longer.
constexpr double kMostOfLimit = 1.03;
constexpr double kMostOfMemcpyTime = .6;

// From 192 MB on the C library's memcpy itself stores past the cache, in half the time.
constexpr size_t kOrdinaryCopyBytes = 128u << 20;

struct Worst {
    double value = 0;
    std::string where;

    void Meet(double other, const std::string& name) {
        if (other > value) *this = {other, name};
    }
};
Worst worstOfLimit, worstOfMemcpyTime;

constexpr double kBytesPerCachedTurn = 2e6;  // enough for the clock's grain not to show

// Of this thread's own running: a busy machine takes turns away from a clock on the wall.
double Now() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

template <class Work>
double Seconds(Work&& work) {
    const double start = Now();
    work();
    return Now() - start;
}

double Quantile(std::vector<double> values, double which) {
    const auto place = values.begin() +
                       static_cast<ptrdiff_t>(which * static_cast<double>(values.size() - 1) + .5);
    std::nth_element(values.begin(), place, values.end());
    return *place;
}

double Median(const std::vector<double>& values) {
    return Quantile(values, .5);
}

std::vector<double> Ratios(const std::vector<double>& over, const std::vector<double>& under) {
    std::vector<double> ratios(over.size());
    std::transform(over.begin(), over.end(), under.begin(), ratios.begin(), std::divides<>());
    return ratios;
}

void Copy(uint8_t* to, const uint8_t* from, size_t bytes) {
    std::memcpy(to, from, bytes);
    benchmark::ClobberMemory();
}

void ReportSpeed(benchmark::State& state, const FrameOperation& operation, double seconds,
                 const std::vector<double>& ofMemcpy) {
    state.counters["GB/s"] = static_cast<double>(operation.inBytes) / seconds * 1e-9;
    state.counters["MP/s"] = operation.inPixels / seconds * 1e-6;
    state.counters["ns/px"] = seconds / operation.outPixels * 1e9;
    state.counters["memcpy"] = Median(ofMemcpy);
}

void RunLimit(const FrameOperation& operation, Memory& memory) {
    const size_t in = operation.inBytes, out = operation.outBytes;
    benchmark::DoNotOptimize(
        operation.inPlace ? RunInPlaceLimit(memory.out.Next(out), out)
                          : RunStreamLimit(memory.in.Next(in), in, memory.out.Next(out), out));
}

}  // namespace

void RunCold(benchmark::State& state, const FrameOperation& operation, const RowKernels& kernels,
             Memory& memory) {
    const size_t in = operation.inBytes, out = operation.outBytes;
    std::vector<double> kernel, limit, copy;
    for (auto _ : state) {
        limit.push_back(Seconds([&] { RunLimit(operation, memory); }));
        kernel.push_back(
            Seconds([&] { operation.run(kernels, memory.in.Next(in), memory.out.Next(out)); }));
        copy.push_back(Seconds([&] { Copy(memory.out.Next(in), memory.in.Next(in), in); }));
        state.SetIterationTime(kernel.back());
    }
    const std::vector<double> ofLimit = Ratios(limit, kernel);
    ReportSpeed(state, operation, Median(kernel), Ratios(copy, kernel));
    state.counters["limit"] = Median(ofLimit);
    state.counters["lo"] = Quantile(ofLimit, .25);
    state.counters["hi"] = Quantile(ofLimit, .75);
    state.counters["limit_GB/s"] = static_cast<double>(in) / Median(limit) * 1e-9;
    state.counters["memcpy_GB/s"] = static_cast<double>(in) / Median(copy) * 1e-9;

    worstOfLimit.Meet(Median(ofLimit), operation.name);
    // Where nothing is binned, the limit loop is itself most of a copy.
    if (2 * out < in && in < kOrdinaryCopyBytes) {
        worstOfMemcpyTime.Meet(Median(Ratios(limit, copy)), operation.name);
    }
}

void RunCached(benchmark::State& state, const FrameOperation& operation, const RowKernels& kernels,
               Memory& memory) {
    uint8_t* const in = memory.in.Next(operation.inBytes);
    uint8_t* const out = memory.out.Next(std::max(operation.inBytes, operation.outBytes));
    const int times =
        static_cast<int>(kBytesPerCachedTurn / static_cast<double>(operation.inBytes)) + 1;
    std::vector<double> kernel, copy;
    for (auto _ : state) {
        kernel.push_back(Seconds([&] {
            for (int i = 0; i < times; ++i) operation.run(kernels, in, out);
        }));
        copy.push_back(Seconds([&] {
            for (int i = 0; i < times; ++i) Copy(out, in, operation.inBytes);
        }));
        state.SetIterationTime(kernel.back() / times);
    }
    ReportSpeed(state, operation, Median(kernel) / times, Ratios(copy, kernel));
}

void ReportYardstick() {
    if (worstOfLimit.where.empty()) return;
    const bool valid =
        worstOfLimit.value <= kMostOfLimit && worstOfMemcpyTime.value <= kMostOfMemcpyTime;
    std::fprintf(stderr,
                 "stream limit %s: the fastest kernel (%s) runs at %.2f of it (at most %.2f); it "
                 "takes at most %.2f of memcpy's time (%s; at most %.2f)\n",
                 valid ? "valid" : "NOT VALID", worstOfLimit.where.c_str(), worstOfLimit.value,
                 kMostOfLimit, worstOfMemcpyTime.value, worstOfMemcpyTime.where.c_str(),
                 kMostOfMemcpyTime);
}

}  // namespace tarn::bench
