// Every binning operation as data. Kernels and frame loop derive all else from a recipe.
#ifndef TARN_ENGINES_KERNELS_BINNING_RECIPE_H_
#define TARN_ENGINES_KERNELS_BINNING_RECIPE_H_

#include "engines/kernels/ev_rule.h"
#include "layout/packed_layouts.h"

namespace tarn {

// Which entries of a row's sums are compensated: whole output groups, positions past the width
// included, or the width exactly.
enum class EvSpan { WholeGroups, Width };

struct BinningRecipe {
    Layout in;
    Layout out;
    int cell;      // pixels per side that become one
    int rowShift;  // each input row's part of a cell is shifted right by this before it is added
    EvSpan evSpan;

    // How many input pixels' worth of range a sum has.
    constexpr int SumScale() const { return cell * cell >> rowShift; }

    // Sums are below this, and stand on a black level of one sixteenth of it, as pixels do.
    constexpr int Range() const { return SumScale() << Shape(in).bits; }
    constexpr int Pedestal() const { return Range() / 16; }

    // What a sum is divided by, truncating, to become an output code.
    constexpr int Divisor() const { return Range() >> Shape(out).bits; }

    constexpr EvRule Ev(float gain) const {
        return {gain, static_cast<float>(Pedestal()), static_cast<float>(Range() - 1)};
    }

    // Input is read in steps: the fewest pixels that are both whole cells and whole groups.
    constexpr int StepPixels() const {
        int pixels = cell;
        while (pixels % Shape(in).pixels != 0) pixels += cell;
        return pixels;
    }
    constexpr int StepSums() const { return StepPixels() / cell; }
    constexpr int StepBytes() const { return StepPixels() / Shape(in).pixels * Shape(in).bytes; }
};

enum class Binning {
    QCTetra10,
    QCTetra12,
    VXTetra10,
    VXTetra10To12,
    VXTetra12,
    VXTetra12To10,
    QCNona,
    VXNona,
    QCHexadeca,
    VXHexadeca,
    VXHexadecaTo12,
};
inline constexpr int kBinningCount = 11;

// In the order of Binning.
inline constexpr BinningRecipe kRecipes[kBinningCount] = {
    {Layout::QCRaw10, Layout::QCRaw10, 2, 0, EvSpan::WholeGroups},
    {Layout::QCRaw12, Layout::QCRaw12, 2, 0, EvSpan::WholeGroups},
    {Layout::VXRaw10, Layout::VXRaw10, 2, 0, EvSpan::WholeGroups},
    {Layout::VXRaw10, Layout::VXRaw12, 2, 0, EvSpan::WholeGroups},
    {Layout::VXRaw12, Layout::VXRaw12, 2, 0, EvSpan::WholeGroups},
    {Layout::VXRaw12, Layout::VXRaw10, 2, 0, EvSpan::WholeGroups},
    {Layout::QCRaw10, Layout::QCRaw10, 3, 0, EvSpan::Width},
    {Layout::VXRaw10, Layout::VXRaw10, 3, 0, EvSpan::Width},
    {Layout::QCRaw10, Layout::QCRaw10, 4, 2, EvSpan::WholeGroups},
    {Layout::VXRaw10, Layout::VXRaw10, 4, 0, EvSpan::WholeGroups},
    {Layout::VXRaw10, Layout::VXRaw12, 4, 0, EvSpan::WholeGroups},
};

constexpr const BinningRecipe& Recipe(Binning operation) {
    return kRecipes[static_cast<int>(operation)];
}

constexpr int CeilDiv(int a, int b) {
    return (a + b - 1) / b;
}

// Bytes that one row kernel reads of each input row, and writes, for count output pixels.
constexpr int BytesRead(const BinningRecipe& recipe, int count) {
    return CeilDiv(count, recipe.StepSums()) * recipe.StepBytes();
}
constexpr int BytesWritten(const BinningRecipe& recipe, int count) {
    return CeilDiv(count, Shape(recipe.out).pixels) * Shape(recipe.out).bytes;
}

}  // namespace tarn

#endif  // TARN_ENGINES_KERNELS_BINNING_RECIPE_H_
