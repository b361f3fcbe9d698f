#include "engines/kernels/avx512.h"

#include <utility>

#include "engines/kernels/avx2.h"
#include "engines/kernels/avx512_cells.h"
#include "engines/kernels/avx512_gain.h"
#include "engines/kernels/avx512_layouts.h"
#include "engines/kernels/for_each.h"
#include "engines/kernels/top_lanes.h"

namespace tarn {
namespace {

// A binning operation, one input row after another, as in the AVX2 level.
template <Binning operation>
struct WideBinBlocks {
    static constexpr int kPixels = 2 * kWideLanes;

    static constexpr BinningRecipe kRecipe = Recipe(operation);
    static constexpr SumScale kScale = ScaleOf(kRecipe);
    static constexpr bool kRowsDivided = kRecipe.rowShift > 0;
    using Cells = WideCells<LayoutType<kRecipe.in>, kRecipe.cell, kScale.shift - kRecipe.rowShift>;
    using Out = LayoutType<kRecipe.out>;

    // `vectors` of 32 sums, two to a block.
    template <bool first>
    TARN_INLINE void AddRow(const uint8_t* src, int vectors, uint16_t* rowSum) {
        for (int i = 0; i < vectors; ++i, src += Cells::kBytes, rowSum += kWideLanes) {
            PrefetchWide<Cells::kBytes>(src);
            const __m512i sums = Cells::template Load<kRowsDivided>(src);
            StoreWide(rowSum, first ? sums : _mm512_add_epi16(sums, LoadWide(rowSum)));
        }
    }

    template <bool compensate>
    TARN_INLINE __m512i Codes(__m512i sums, const WideGain& gain) {
        if constexpr (compensate) sums = Compensated(sums, gain);
        if constexpr (compensate && kScale.limit < 0x10000) {
            sums = _mm512_min_epu16(sums, WideWords(kScale.limit - 1));
        }
        if constexpr (!kScale.ninths) return sums;
        return _mm512_slli_epi16(_mm512_mulhi_epu16(sums, WideWords(kNinth)), 1);
    }

    template <bool compensate>
    TARN_INLINE void FinishRow(const uint8_t* src, uint8_t* dst, int blocks, const WideGain& gain,
                               const uint16_t* rowSum) {
        for (; blocks > 0; --blocks, src += 2 * Cells::kBytes, dst += kWideBlockBytes<Out>) {
            PrefetchWide<2 * Cells::kBytes>(src);
            __m512i v[2];
            ForEach<2>([&](auto i) TARN_INLINE_LAMBDA {
                const __m512i sums = Cells::template Load<kRowsDivided>(src + i * Cells::kBytes);
                v[i] = Cells::InRowOrder(_mm512_add_epi16(sums, LoadWide(rowSum + i * kWideLanes)));
            });
            ForEach<2>([&](auto i) TARN_INLINE_LAMBDA { v[i] = Codes<compensate>(v[i], gain); });
            PackWide<Out>(dst, v);
            rowSum += ptrdiff_t{2} * kWideLanes;
        }
    }

    static void Run(const uint8_t* src, ptrdiff_t srcPitch, uint8_t* dst, int blocks,
                    const EvRule* ev, uint16_t* rowSum) {
        AddRow<true>(src, 2 * blocks, rowSum);
        for (int row = 1; row < kRecipe.cell - 1; ++row) {
            AddRow<false>(src + row * srcPitch, 2 * blocks, rowSum);
        }
        src += (kRecipe.cell - 1) * srcPitch;
        if (ev) {
            FinishRow<true>(src, dst, blocks, MakeWideGain(ev->gain, kScale.pedestal), rowSum);
        } else {
            FinishRow<false>(src, dst, blocks, WideGain{}, rowSum);
        }
    }
};

template <Layout layout>
struct WideEvBlocks {
    using L = LayoutType<layout>;
    static constexpr int kGroups = 2 * kWideLanes / L::kGroupPixels;

    static void Run(const uint8_t* src, uint8_t* dst, ptrdiff_t blocks, const EvRule& ev) {
        const WideGain gain = MakeWideGain(ev.gain, kTopPedestal);
        for (; blocks > 0; --blocks, src += kWideBlockBytes<L>, dst += kWideBlockBytes<L>) {
            PrefetchWide<kWideBlockBytes<L>>(src);
            __m512i v[2];
            UnpackWide<L>(src, v);
            ForEach<2>([&](auto i) TARN_INLINE_LAMBDA { v[i] = Compensated(v[i], gain); });
            PackWide<L>(dst, v);
        }
    }
};

// Values stand at the bottom of their lanes, on the pedestal of their own depth.
void EvValues(uint16_t* values, ptrdiff_t count, const EvRule& ev) {
    const int pedestal = static_cast<int>(ev.pedestal);
    if (GainIsServed(ev.gain, pedestal)) {
        const WideGain gain = MakeWideGain(ev.gain, pedestal);
        const __m512i maximum = WideWords(static_cast<int>(ev.maximum));
        for (; count >= kWideLanes; count -= kWideLanes, values += kWideLanes) {
            StoreWide(values, _mm512_min_epu16(Compensated(LoadWide(values), gain), maximum));
        }
    }
    kAvx2Kernels.EvValues()(values, count, ev);
}

template <Layout layout>
void PackRow(const uint16_t* src, uint8_t* dst, ptrdiff_t groups, int shift) {
    using L = LayoutType<layout>;
    constexpr ptrdiff_t kPixels = ptrdiff_t{2} * kWideLanes, kGroups = kPixels / L::kGroupPixels;
    const __m128i down = _mm_cvtsi32_si128(shift);
    for (; groups >= kGroups; groups -= kGroups, src += kPixels) {
        const __m512i low = _mm512_srl_epi16(LoadWide(src), down);
        const __m512i high = _mm512_srl_epi16(LoadWide(src + kWideLanes), down);
        PackWide<L>(
            dst, {_mm512_slli_epi16(low, 16 - L::kBits), _mm512_slli_epi16(high, 16 - L::kBits)});
        dst += kWideBlockBytes<L>;
    }
    kAvx2Kernels.Pack(layout)(src, dst, groups, shift);
}

template <int... operation, int... layout>
constexpr RowKernels MakeTable(std::integer_sequence<int, operation...>,
                               std::integer_sequence<int, layout...>) {
    return {"avx512",
            {BinTopLanes<Binning{operation}, WideBinBlocks<Binning{operation}>>...},
            {EvTopLanes<Layout{layout}, WideEvBlocks<Layout{layout}>>...},
            EvValues,
            {PackRow<Layout{layout}>...}};
}

}  // namespace

constinit const RowKernels kAvx512Kernels =
    MakeTable(std::make_integer_sequence<int, kBinningCount>{},
              std::make_integer_sequence<int, kLayoutCount>{});

}  // namespace tarn
