#include "engines/kernels/avx2.h"

#include <utility>

#include "engines/kernels/avx2_cells.h"
#include "engines/kernels/avx2_gain.h"
#include "engines/kernels/avx2_layouts.h"
#include "engines/kernels/for_each.h"
#include "engines/kernels/top_lanes.h"

namespace tarn {
namespace {

TARN_INLINE __m256i Ninths(__m256i sums) {
    return _mm256_slli_epi16(_mm256_mulhi_epu16(sums, Words(kNinth)), 1);
}

// Packs n blocks. Stage by stage: the instructions of one block depend on each other, and the
// processor does not look far enough ahead to overlap them with the next block's.
template <class Out, int n>
TARN_INLINE void StoreBlocks(uint8_t* dst, __m256i (&v)[n]) {
    ForEach<n>([&](auto i) TARN_INLINE_LAMBDA { v[i] = Avx2Layout<Out>::Pack(v[i]); });
    ForEach<n>([&](auto i)
                   TARN_INLINE_LAMBDA { StoreBlock<Out>(dst + i * kBlockBytes<Out>, v[i]); });
}

// A binning operation, one input row after another: that keeps reads in the order of the addresses,
// which is worth more than the round trip of the sums through the first-level cache. The last row's
// sums go straight to the output.
template <BinningRecipe recipe>
struct BinBlocks {
    static constexpr int kPixels = kLanes;

    using Cells = CellSums<recipe.in, recipe.cell>;
    using Out = LayoutType<recipe.out>;
    static constexpr SumScale kScale = ScaleOf(recipe);
    // The sums of larger cells need the registers for themselves.
    static constexpr int kTogether = recipe.cell == 2 ? 2 : 1;

    template <bool first>
    TARN_INLINE void AddRow(const uint8_t* src, int blocks, uint16_t* rowSum) {
        for (int i = 0; i < blocks; ++i, src += Cells::kBytes, rowSum += kLanes) {
            PrefetchAhead(src);
            const __m256i sums = Cells::template Load<kScale.shift>(src);
            StoreLanes(rowSum, first ? sums : _mm256_add_epi16(sums, LoadLanes(rowSum)));
        }
    }

    template <bool compensate>
    TARN_INLINE __m256i Codes(__m256i sums, const Gain& gain) {
        if constexpr (compensate) sums = Compensated(sums, gain);
        if constexpr (compensate && kScale.limit < 0x10000) {
            sums = _mm256_min_epu16(sums, Words(kScale.limit - 1));
        }
        return kScale.ninths ? Ninths(sums) : sums;
    }

    template <bool compensate, int n>
    TARN_INLINE void FinishBlocks(const uint8_t* src, uint8_t* dst, const Gain& gain,
                                  const uint16_t* rowSum) {
        __m256i v[n];
        ForEach<n>([&](auto i) TARN_INLINE_LAMBDA {
            PrefetchAhead(src + i * Cells::kBytes);
            v[i] = _mm256_add_epi16(Cells::template Load<kScale.shift>(src + i * Cells::kBytes),
                                    LoadLanes(rowSum + i * kLanes));
        });
        ForEach<n>([&](auto i) TARN_INLINE_LAMBDA {
            v[i] = Codes<compensate>(Cells::InRowOrder(v[i]), gain);
        });
        StoreBlocks<Out>(dst, v);
    }

    template <bool compensate>
    TARN_INLINE void FinishRow(const uint8_t* src, uint8_t* dst, int blocks, const Gain& gain,
                               const uint16_t* rowSum) {
        constexpr ptrdiff_t n = kTogether;
        for (; blocks >= n; blocks -= kTogether, src += n * Cells::kBytes, rowSum += n * kLanes) {
            FinishBlocks<compensate, kTogether>(src, dst, gain, rowSum);
            dst += n * kBlockBytes<Out>;
        }
        if (blocks > 0) FinishBlocks<compensate, 1>(src, dst, gain, rowSum);
    }

    static void Run(const uint8_t* src, ptrdiff_t srcPitch, uint8_t* dst, int blocks,
                    const EvRule* ev, uint16_t* rowSum) {
        AddRow<true>(src, blocks, rowSum);
        for (int row = 1; row < recipe.cell - 1; ++row) {
            AddRow<false>(src + row * srcPitch, blocks, rowSum);
        }
        src += (recipe.cell - 1) * srcPitch;
        if (ev) {
            FinishRow<true>(src, dst, blocks, MakeGain(ev->gain, kScale.pedestal), rowSum);
        } else {
            FinishRow<false>(src, dst, blocks, Gain{}, rowSum);
        }
    }
};

template <class L>
struct EvBlocks {
    static constexpr int kGroups = kLanes / L::kGroupPixels;

    static void Run(const uint8_t* src, uint8_t* dst, ptrdiff_t blocks, const EvRule& ev) {
        const Gain gain = MakeGain(ev.gain, kTopPedestal);
        for (; blocks >= 2; blocks -= 2, src += 2 * kBlockBytes<L>, dst += 2 * kBlockBytes<L>) {
            PrefetchAhead(src);
            __m256i a, b;
            UnpackTwoBlocks<L>(src, a, b);
            a = Compensated(a, gain);
            b = Compensated(b, gain);
            StoreTwoBlocks<L>(dst, Avx2Layout<L>::Pack(a), Avx2Layout<L>::Pack(b));
        }
        if (blocks > 0) {
            const __m256i v = Compensated(UnpackBlock<L>(src), gain);
            StoreBlock<L>(dst, Avx2Layout<L>::Pack(v));
        }
    }
};

// Values stand at the bottom of their lanes, on the pedestal of their own depth.
void EvValues(uint16_t* values, ptrdiff_t count, const EvRule& ev) {
    const int pedestal = static_cast<int>(ev.pedestal);
    if (GainIsServed(ev.gain, pedestal)) {
        const Gain gain = MakeGain(ev.gain, pedestal);
        const __m256i maximum = Words(static_cast<int>(ev.maximum));
        for (; count >= kLanes; count -= kLanes, values += kLanes) {
            const __m256i v = Compensated(LoadLanes(values), gain);
            StoreLanes(values, _mm256_min_epu16(v, maximum));
        }
    }
    kScalarKernels.evValues(values, count, ev);
}

template <Layout layout>
void PackRow(const uint16_t* src, uint8_t* dst, ptrdiff_t groups, int shift) {
    using L = LayoutType<layout>;
    constexpr int kGroups = kLanes / L::kGroupPixels;
    const __m128i down = _mm_cvtsi32_si128(shift);
    for (; groups >= kGroups; groups -= kGroups, src += kLanes, dst += kBlockBytes<L>) {
        const __m256i pixels = _mm256_srl_epi16(LoadLanes(src), down);
        StoreBlock<L>(dst, Avx2Layout<L>::Pack(_mm256_slli_epi16(pixels, 16 - L::kBits)));
    }
    kScalarKernels.Pack(layout)(src, dst, groups, shift);
}

template <int... operation, int... layout>
constexpr RowKernels MakeTable(std::integer_sequence<int, operation...>,
                               std::integer_sequence<int, layout...>) {
    return {"avx2",
            {BinTopLanes<Binning{operation}, BinBlocks<Recipe(Binning{operation})>>...},
            {EvTopLanes<Layout{layout}, EvBlocks<LayoutType<Layout{layout}>>>...},
            EvValues,
            {PackRow<Layout{layout}>...}};
}

}  // namespace

constinit const RowKernels kAvx2Kernels =
    MakeTable(std::make_integer_sequence<int, kBinningCount>{},
              std::make_integer_sequence<int, kLayoutCount>{});

}  // namespace tarn
