#include "engines/kernels/levels.h"

#include "engines/kernels/scalar.h"
#ifdef __x86_64__
#include "engines/kernels/avx2.h"
#include "engines/kernels/avx512.h"
#endif
#ifdef __aarch64__
#include "engines/kernels/neon.h"
#endif

namespace tarn {
namespace {

#ifdef __x86_64__
bool HasAvx2() {
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
}

// Its rows end with kernels of the level below.
bool HasAvx512() {
    return HasAvx2() && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
           __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vnni");
}
#endif

constexpr Level kLevels[] = {
    {&kScalarKernels, [] { return true; }},
#ifdef __x86_64__
    {&kAvx2Kernels, HasAvx2},
    {&kAvx512Kernels, HasAvx512},
#endif
#ifdef __aarch64__
    {&kNeonKernels, [] { return true; }},
#endif
};
constexpr int kLevelCount = sizeof kLevels / sizeof kLevels[0];

}  // namespace

LevelList Levels() {
    return {kLevels, kLevelCount};
}

const RowKernels& BestKernels() {
    int best = kLevelCount - 1;
    while (!kLevels[best].supported()) --best;
    return *kLevels[best].kernels;
}

}  // namespace tarn
