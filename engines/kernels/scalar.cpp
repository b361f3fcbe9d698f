#include "engines/kernels/scalar.h"

#include <utility>

namespace tarn {
namespace {

// Adds one input row's part of every cell. The last step is taken whole: what it reads past the
// width lands in sums past the width.
template <BinningRecipe R>
void AccumulateRow(const uint8_t* src, int count, uint16_t* rowSum) {
    using In = LayoutType<R.in>;
    uint16_t pixel[R.StepPixels()];
    for (int first = 0; first < count; first += R.StepSums(), src += R.StepBytes()) {
        for (int group = 0; group * In::kGroupPixels < R.StepPixels(); ++group) {
            In::Unpack(src + group * In::kGroupBytes, pixel + group * In::kGroupPixels);
        }
        for (int i = 0; i < R.StepSums(); ++i) {
            unsigned sum = 0;
            for (int k = 0; k < R.cell; ++k) sum += pixel[i * R.cell + k];
            rowSum[first + i] = static_cast<uint16_t>(rowSum[first + i] + (sum >> R.rowShift));
        }
    }
}

void CompensateValues(uint16_t* values, ptrdiff_t count, const EvRule& ev) {
    for (ptrdiff_t i = 0; i < count; ++i) values[i] = Compensate(values[i], ev);
}

template <BinningRecipe R>
void BinRow(const uint8_t* src, ptrdiff_t srcPitch, uint8_t* dst, int count, const EvRule* ev,
            uint16_t* rowSum) {
    using Out = LayoutType<R.out>;
    const int groups = CeilDiv(count, Out::kGroupPixels);
    const int wholeGroups = groups * Out::kGroupPixels;

    // No operation's last step of input reaches past the last whole group of output.
    static_assert(Out::kGroupPixels % R.StepSums() == 0);
    for (int i = 0; i < wholeGroups; ++i) rowSum[i] = 0;
    for (int row = 0; row < R.cell; ++row) AccumulateRow<R>(src + row * srcPitch, count, rowSum);
    if (ev) CompensateValues(rowSum, R.evSpan == EvSpan::Width ? count : wholeGroups, *ev);

    uint16_t code[Out::kGroupPixels];
    for (int group = 0; group < groups; ++group) {
        for (int k = 0; k < Out::kGroupPixels; ++k) {
            code[k] = static_cast<uint16_t>(rowSum[group * Out::kGroupPixels + k] / R.Divisor());
        }
        Out::Pack(code, dst + ptrdiff_t{group} * Out::kGroupBytes);
    }
}

template <class L>
void EvRow(const uint8_t* src, uint8_t* dst, ptrdiff_t groups, const EvRule& ev) {
    uint16_t pixel[L::kGroupPixels];
    for (ptrdiff_t offset = 0; offset < groups * L::kGroupBytes; offset += L::kGroupBytes) {
        L::Unpack(src + offset, pixel);
        CompensateValues(pixel, L::kGroupPixels, ev);
        L::Pack(pixel, dst + offset);
    }
}

template <class L>
void PackRow(const uint16_t* src, uint8_t* dst, ptrdiff_t groups, int shift) {
    uint16_t pixel[L::kGroupPixels];
    for (ptrdiff_t group = 0; group < groups; ++group, dst += L::kGroupBytes) {
        for (int k = 0; k < L::kGroupPixels; ++k) {
            pixel[k] = static_cast<uint16_t>(*src++ >> shift);
        }
        L::Pack(pixel, dst);
    }
}

template <int... Operation>
constexpr RowKernels MakeTable(std::integer_sequence<int, Operation...>) {
    return {"scalar",
            {BinRow<kRecipes[Operation]>...},
            {EvRow<QCRaw10>, EvRow<QCRaw12>, EvRow<VXRaw10>, EvRow<VXRaw12>},
            CompensateValues,
            {PackRow<QCRaw10>, PackRow<QCRaw12>, PackRow<VXRaw10>, PackRow<VXRaw12>},
            nullptr};
}

}  // namespace

constinit const RowKernels kScalarKernels =
    MakeTable(std::make_integer_sequence<int, kBinningCount>{});

}  // namespace tarn
