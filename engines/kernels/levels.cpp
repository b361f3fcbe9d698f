#include "engines/kernels/levels.h"

#include "engines/kernels/scalar.h"
#ifdef __x86_64__
#include "engines/kernels/avx2.h"
#endif
#ifdef __aarch64__
#include "engines/kernels/neon.h"
#endif

namespace tarn {
namespace {

constexpr Level kLevels[] = {
    {&kScalarKernels, [] { return true; }},
#ifdef __x86_64__
    {&kAvx2Kernels, [] { return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"); }},
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
