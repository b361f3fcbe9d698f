#include "engines/kernels/levels.h"

#include "engines/kernels/scalar.h"

namespace tarn {
namespace {

constexpr Level kLevels[] = {
    {&kScalarKernels, [] { return true; }},
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
