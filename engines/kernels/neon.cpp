#include "engines/kernels/neon.h"

#include <type_traits>
#include <utility>

#include "engines/kernels/by_blocks.h"
#include "engines/kernels/neon_cells.h"
#include "engines/kernels/neon_gain.h"
#include "engines/kernels/neon_layouts.h"
#include "engines/kernels/neon_places.h"

namespace tarn {
namespace {

// What the lanes of an operation hold.
struct SumScale {
    int bits;
    int pedestal;
    int limit;  // above the highest compensated sum
    int below;  // a code's place in its sum, but for sums of nine
    bool ninths;
};

constexpr SumScale ScaleOf(const BinningRecipe& recipe) {
    const int range = recipe.Range(), pedestal = recipe.Pedestal();
    if (recipe.Divisor() % 9 == 0) return {16, pedestal, range, 0, true};
    int bits = 0, below = 0;
    while (1 << bits < range) ++bits;
    while (1 << below < recipe.Divisor()) ++below;
    return {bits, pedestal, range, below, false};
}

// floor(sum / 9), exact below 32768.
TARN_INLINE uint16x8_t Ninths(uint16x8_t sums) {
    return vreinterpretq_u16_s16(vqdmulhq_n_s16(vreinterpretq_s16_u16(sums), 3641));
}

// A binning operation: a block's sums are made of all rows of its cells at once, and stay in
// registers until they are packed.
template <BinningRecipe recipe>
struct BinBlocks {
    using Cells = CellSums<recipe.in, recipe.cell>;
    using Out = NeonLayout<LayoutType<recipe.out>>;
    using Block = typename Out::Block;

    static constexpr SumScale kScale = ScaleOf(recipe);
    static constexpr int kPixels = Out::kPixels;

    // A plain code is a sum's upper bits; a gain wants them all.
    template <bool compensate>
    static constexpr int kDrop = compensate || kScale.ninths ? 0 : Cells::kDroppable;

    template <int drop>
    TARN_INLINE Block Sums(Rows<recipe.cell>& rows) {
        constexpr int kLoads = kPixels / Cells::kSums;
        constexpr int kEach = Cells::kSums / kLanes;
        Block sums;
        ForEach<kLoads>([&](auto i) TARN_INLINE_LAMBDA {
            const auto part = Cells::template Load<drop>(rows);
            ForEach<kEach>([&](auto k)
                               TARN_INLINE_LAMBDA { sums.v[i * kEach + k] = Settled(part.v[k]); });
        });
        return sums;
    }

    template <bool compensate>
    TARN_INLINE uint16x8_t Code(uint16x8_t v, const Gain& gain) {
        if constexpr (compensate) v = Compensated<kScale.bits>(v, gain);
        if constexpr (compensate && kScale.ninths) v = vminq_u16(v, Words(kScale.limit - 1));
        return kScale.ninths ? Ninths(v) : v;
    }

    template <bool compensate>
    TARN_INLINE void Finish(Block sums, uint8_t* dst, const Gain& gain) {
        ForEach<kPixels / kLanes>(
            [&](auto i) TARN_INLINE_LAMBDA { sums.v[i] = Code<compensate>(sums.v[i], gain); });
        constexpr int kTop = 16 - Shape(recipe.out).bits;
        constexpr int kBelow = kScale.ninths ? 0 : compensate ? kTop : kScale.below - kDrop<false>;
        Out::template Pack<kBelow>(Out::Arranged(sums), dst);
    }

    template <bool compensate>
    TARN_INLINE void All(const uint8_t* src, ptrdiff_t srcPitch, uint8_t* dst, int blocks,
                         const Gain& gain) {
        auto rows = Rows<recipe.cell>::From(src, srcPitch);
        for (; blocks > 0; --blocks, dst += BytesWritten(recipe, kPixels)) {
            Finish<compensate>(Sums<kDrop<compensate>>(rows), dst, gain);
        }
    }

    static void Run(const uint8_t* src, ptrdiff_t srcPitch, uint8_t* dst, int blocks,
                    const EvRule* ev, uint16_t*) {
        if (ev) {
            All<true>(src, srcPitch, dst, blocks, MakeGain(ev->gain, kScale.pedestal));
        } else {
            All<false>(src, srcPitch, dst, blocks, Gain{});
        }
    }
};

template <Binning operation>
void BinRow(const uint8_t* src, ptrdiff_t srcPitch, uint8_t* dst, int count, const EvRule* ev,
            uint16_t* rowSum) {
    constexpr BinningRecipe kRecipe = Recipe(operation);
    using Blocks = BinBlocks<kRecipe>;
    if (ev && !GainIsServed(ev->gain, Blocks::kScale.pedestal)) {
        return kScalarKernels.Bin(operation)(src, srcPitch, dst, count, ev, rowSum);
    }
    // A row of whole groups ends with a block of its own, which repeats a part of the one before.
    constexpr int kGroupPixels = Shape(kRecipe.out).pixels;
    if (count > Blocks::kPixels && count % kGroupPixels == 0) {
        const int last = count - Blocks::kPixels;
        Blocks::Run(src, srcPitch, dst, (count - 1) / Blocks::kPixels, ev, rowSum);
        Blocks::Run(src + BytesRead(kRecipe, last), srcPitch, dst + BytesWritten(kRecipe, last), 1,
                    ev, rowSum);
        return;
    }
    BinRowByBlocks<operation, Blocks>(src, srcPitch, dst, count, ev, rowSum);
}

template <class L>
struct EvBlocks {
    static constexpr bool kByPlace = std::is_same_v<L, VXRaw10>;
    using Packed = std::conditional_t<kByPlace, VXRaw10ByPlace, NeonLayout<L>>;
    static constexpr int kGroups = Packed::kPixels / L::kGroupPixels;

    static void Run(const uint8_t* src, uint8_t* dst, ptrdiff_t blocks, const EvRule& ev) {
        const Gain gain = MakeGain(ev.gain, kTopPedestal);
        for (; blocks > 0; --blocks) {
            typename Packed::Block pixels = Packed::Unpack(src);
            ForEach<Packed::kPixels / kLanes / 2>([&](auto i) TARN_INLINE_LAMBDA {
                Compensate(pixels.v[2 * i], pixels.v[2 * i + 1], gain);
            });
            Packed::template Pack<16 - L::kBits>(pixels, dst);
            dst += kGroups * L::kGroupBytes;
        }
    }

 private:
    TARN_INLINE void Compensate(uint16x8_t& a, uint16x8_t& b, const Gain& gain) {
        if constexpr (kByPlace) {
            const Lanes<2> halves = CompensatedHalves<16>(a, b, gain);
            a = halves.v[0];
            b = halves.v[1];
        } else {
            a = Compensated<16>(a, gain);
            b = Compensated<16>(b, gain);
        }
    }
};

template <Layout layout>
void EvRow(const uint8_t* src, uint8_t* dst, ptrdiff_t groups, const EvRule& ev) {
    using L = LayoutType<layout>;
    if (!GainIsServed(ev.gain, kTopPedestal)) {
        return kScalarKernels.Ev(layout)(src, dst, groups, ev);
    }
    EvRowByBlocks<L, EvBlocks<L>>(src, dst, groups, ev);
}

// Values stand at the bottom of their lanes, on the pedestal of their own depth.
void EvValues(uint16_t* values, ptrdiff_t count, const EvRule& ev) {
    const int pedestal = static_cast<int>(ev.pedestal);
    if (GainIsServed(ev.gain, pedestal)) {
        const Gain gain = MakeGain(ev.gain, pedestal);
        const uint16x8_t maximum = Words(static_cast<int>(ev.maximum));
        for (; count >= kLanes; count -= kLanes, values += kLanes) {
            vst1q_u16(values, vminq_u16(Compensated<16>(vld1q_u16(values), gain), maximum));
        }
    }
    kScalarKernels.evValues(values, count, ev);
}

template <Layout layout>
void PackRow(const uint16_t* src, uint8_t* dst, ptrdiff_t groups, int shift) {
    using L = LayoutType<layout>;
    using Packed = NeonLayout<L>;
    constexpr int kGroups = Packed::kPixels / L::kGroupPixels;
    constexpr int kTop = 16 - L::kBits;
    const int16x8_t up = vdupq_n_s16(static_cast<int16_t>(kTop - shift));
    for (; groups >= kGroups; groups -= kGroups, src += Packed::kPixels) {
        typename Packed::Block pixels;
        ForEach<Packed::kPixels / kLanes>([&](auto i) TARN_INLINE_LAMBDA {
            pixels.v[i] = vshlq_u16(vld1q_u16(src + ptrdiff_t{i} * kLanes), up);
        });
        Packed::template Pack<kTop>(Packed::Arranged(pixels), dst);
        dst += kGroups * L::kGroupBytes;
    }
    kScalarKernels.Pack(layout)(src, dst, groups, shift);
}

template <int... operation, int... layout>
constexpr RowKernels MakeTable(std::integer_sequence<int, operation...>,
                               std::integer_sequence<int, layout...>) {
    return {"neon",
            {BinRow<Binning{operation}>...},
            {EvRow<Layout{layout}>...},
            EvValues,
            {PackRow<Layout{layout}>...}};
}

}  // namespace

constinit const RowKernels kNeonKernels =
    MakeTable(std::make_integer_sequence<int, kBinningCount>{},
              std::make_integer_sequence<int, kLayoutCount>{});

}  // namespace tarn
