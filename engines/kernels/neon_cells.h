// The sums of a block of cells, for each kind of cell and layout. Included by neon.cpp only.
#ifndef TARN_ENGINES_KERNELS_NEON_CELLS_H_
#define TARN_ENGINES_KERNELS_NEON_CELLS_H_

#include "engines/kernels/neon_layouts.h"

namespace tarn {

// Sums in the order of the row, at the bottom of their lanes.
//   kSums        how many
//   kDroppable   bits at the bottom that cost less to leave out than to make
//   Load<drop>(rows)   moves the rows on; drop is 0 or kDroppable
template <Layout in, int cell>
struct CellSums;

TARN_INLINE uint16x8_t PairSums(uint16x8_t a, uint16x8_t b) {
    return vpaddq_u16(a, b);
}

// Adds to sums, or starts them.
template <bool isFirst>
TARN_INLINE uint16x8_t AddPairs(uint16x8_t sums, uint8x16_t bytes) {
    return isFirst ? vpaddlq_u8(bytes) : vpadalq_u8(sums, bytes);
}

// The same for pixels at the top of their lanes.
template <bool isFirst>
TARN_INLINE uint16x8_t AddPixels(uint16x8_t sums, uint16x8_t pixels) {
    return isFirst ? vshrq_n_u16(pixels, 6) : vsraq_n_u16(sums, pixels, 6);
}

// Each of 64 pixels, added up over the rows.
template <class L, int cell>
TARN_INLINE Lanes<8> ColumnSums(Rows<cell>& rows) {
    Lanes<8> sums{};
    ForEach<cell>([&](auto row) TARN_INLINE_LAMBDA {
        const EightyBytes bytes = EightyBytes::Load(rows.at[row]);
        ForEach<8>([&](auto i) TARN_INLINE_LAMBDA {
            sums.v[i] = Settled(AddPixels<row == 0>(sums.v[i], EightPixels<L, i>(bytes)));
        });
    });
    return sums;
}

// Two cells in each group: 4 (h0 + h1) and fields of the common byte 33221100. Mask 33 and its
// complement take l0 + 16 l2 and 4 l1 + 64 l3: the sums of both cells, over both rows, fit a nibble
// each.
template <>
struct CellSums<Layout::QCRaw10, 2> {
    static constexpr int kSums = 32;
    static constexpr int kDroppable = 2;

    TARN_INLINE uint8x16_t LowSums(uint8x16_t a, uint8x16_t b) {
        const uint8x16_t mask = Opaque(Bytes(0x33));
        const uint8x16_t even = vaddq_u8(vandq_u8(a, mask), vandq_u8(b, mask));
        return vsraq_n_u8(vsraq_n_u8(even, Opaque(vbicq_u8(a, mask)), 2), Opaque(vbicq_u8(b, mask)),
                          2);
    }

    template <int drop>
    TARN_INLINE Lanes<4> Load(Rows<2>& rows) {
        const SixteenGroups a = SixteenGroups::Load(rows.at[0]);
        uint16x8_t highs[4];
        ForEach<4>([&](auto i) TARN_INLINE_LAMBDA { highs[i] = Settled(vpaddlq_u8(a.first[i])); });
        const SixteenGroups b = SixteenGroups::Load(rows.at[1]);
        const uint8x16_t low = LowSums(a.last, b.last);
        const uint8x16_t first = vandq_u8(drop > 0 ? vshrq_n_u8(low, 2) : low, Bytes(0x0F >> drop));
        const uint8x16_t second = vshrq_n_u8(low, 4 + drop);
        const uint8x16_t ordered[2] = {vzip1q_u8(first, second), vzip2q_u8(first, second)};
        Lanes<4> sums;
        ForEach<4>([&](auto i) TARN_INLINE_LAMBDA {
            const uint16x8_t high = vpadalq_u8(highs[i], b.first[i]);
            const uint8x8_t part =
                i % 2 ? vget_high_u8(ordered[i / 2]) : vget_low_u8(ordered[i / 2]);
            sums.v[i] = vaddw_u8(drop > 0 ? high : vshlq_n_u16(high, 2), part);
        });
        return sums;
    }
};

template <>
struct CellSums<Layout::VXRaw10, 2> {
    static constexpr int kSums = 32;
    static constexpr int kDroppable = 0;

    template <int drop>
    TARN_INLINE Lanes<4> Load(Rows<2>& rows) {
        const Lanes<8> c = ColumnSums<VXRaw10, 2>(rows);
        return {{PairSums(c.v[0], c.v[1]), PairSums(c.v[2], c.v[3]), PairSums(c.v[4], c.v[5]),
                 PairSums(c.v[6], c.v[7])}};
    }
};

// A cell is a group in each row: 16 (h0 + h1) and the nibbles of the common byte 11110000.
template <>
struct CellSums<Layout::QCRaw12, 2> {
    static constexpr int kSums = 16;
    static constexpr int kDroppable = 0;

    template <int drop>
    TARN_INLINE Lanes<2> Load(Rows<2>& rows) {
        const uint8x16x3_t a = NextGroups(rows.at[0]), b = NextGroups(rows.at[1]);
        uint8x16_t low = vaddq_u8(vandq_u8(a.val[2], Bytes(0x0F)), vandq_u8(b.val[2], Bytes(0x0F)));
        low = vsraq_n_u8(vsraq_n_u8(low, a.val[2], 4), b.val[2], 4);
        uint16x8_t first = vaddl_u8(vget_low_u8(a.val[0]), vget_low_u8(a.val[1]));
        uint16x8_t second = vaddl_high_u8(a.val[0], a.val[1]);
        for (const uint8x16_t high : {b.val[0], b.val[1]}) {
            first = vaddw_u8(first, vget_low_u8(high));
            second = vaddw_high_u8(second, high);
        }
        return {{vaddw_u8(vshlq_n_u16(first, 4), vget_low_u8(low)),
                 vaddw_high_u8(vshlq_n_u16(second, 4), low)}};
    }
};

// A cell is a group in each row, bytes b0, b1, b2:
//   b0 + 256 (b1 & 15) + (b1 >> 4) + 16 b2.
template <>
struct CellSums<Layout::VXRaw12, 2> {
    static constexpr int kSums = 16;
    static constexpr int kDroppable = 0;

    template <int drop>
    TARN_INLINE Lanes<2> Load(Rows<2>& rows) {
        const uint8x16x3_t a = NextGroups(rows.at[0]), b = NextGroups(rows.at[1]);
        const uint8x16_t upper = vsraq_n_u8(vshrq_n_u8(a.val[1], 4), b.val[1], 4);
        const uint8x16_t lower = vmlsq_u8(vaddq_u8(a.val[1], b.val[1]), upper, Opaque(Bytes(16)));
        uint16x8_t first = Opaque(vreinterpretq_u16_u8(vzip1q_u8(upper, lower)));
        uint16x8_t second = Opaque(vreinterpretq_u16_u8(vzip2q_u8(upper, lower)));
        for (const uint8x16x3_t& g : {a, b}) {
            first = vmlal_u8(vaddw_u8(first, vget_low_u8(g.val[0])), vget_low_u8(g.val[2]),
                             vdup_n_u8(16));
            second = vmlal_high_u8(vaddw_high_u8(second, g.val[0]), g.val[2], Bytes(16));
        }
        return {{first, second}};
    }
};

// 16 cells, 60 bytes of each row in two overlapping halves: pixel k of eight cells in a vector.
template <class L>
struct NonaSums {
    static constexpr int kSums = 16;
    static constexpr int kDroppable = 0;

    // Pixel k of the eight cells that begin at byte `from`.
    template <int k, int from>
    TARN_INLINE uint16x8_t Pixel(const uint8x16x2_t& bytes) {
        const auto pixel = [](int lane) { return 3 * lane + k; };
        const auto pattern =
            Bytes([=](int i) { return PixelLanes<L>::Byte(pixel(i / 2), i % 2) + from; });
        return PixelLanes<L>::ToTop(vqtbl2q_u8(bytes, pattern), pixel);
    }
    // Moves src on by `step` bytes.
    template <bool isFirst, int from, int step>
    TARN_INLINE uint16x8_t AddRow(uint16x8_t sums, const uint8_t*& src) {
        const uint8x16x2_t bytes = vld1q_u8_x2(src);
        MoveOn<step>(src);
        sums = AddPixels<isFirst>(sums, Pixel<0, from>(bytes));
        sums = AddPixels<false>(sums, Pixel<1, from>(bytes));
        return Settled(AddPixels<false>(sums, Pixel<2, from>(bytes)));
    }
    template <int drop>
    TARN_INLINE Lanes<2> Load(Rows<3>& rows) {
        Lanes<2> sums{};
        ForEach<3>([&](auto row) TARN_INLINE_LAMBDA {
            sums.v[0] = AddRow<row == 0, 0, 28>(sums.v[0], rows.at[row]);
            sums.v[1] = AddRow<row == 0, 2, 32>(sums.v[1], rows.at[row]);
        });
        return sums;
    }
};

template <>
struct CellSums<Layout::QCRaw10, 3> : NonaSums<QCRaw10> {};
template <>
struct CellSums<Layout::VXRaw10, 3> : NonaSums<VXRaw10> {};

// Each row counts h0+h1+h2+h3 + floor((l0+l1+l2+l3) / 4).
template <>
struct CellSums<Layout::QCRaw10, 4> {
    static constexpr int kSums = 16;
    static constexpr int kDroppable = 0;

    // Of the bytes 33221100, mask 33 and its complement take l0 + 16 l2 and 4 l1 + 64 l3; in the
    // sum x = (l0+l1) + 16 (l2+l3) fields do not touch, and 17 x has all four added from bit 4 on.
    template <bool isFirst>
    TARN_INLINE uint8x16_t AddFloors(uint8x16_t floors, uint8x16_t low) {
        const uint8x16_t mask = Opaque(Bytes(0x33));
        const uint8x16_t x = vsraq_n_u8(vandq_u8(low, mask), Opaque(vbicq_u8(low, mask)), 2);
        const uint8x16_t all = vmulq_u8(x, Bytes(17));
        return isFirst ? vshrq_n_u8(all, 6) : vsraq_n_u8(floors, all, 6);
    }

    template <int drop>
    TARN_INLINE Lanes<2> Load(Rows<4>& rows) {
        uint16x8_t pairs[4] = {};
        uint8x16_t floors = Bytes(0);
        ForEach<4>([&](auto row) TARN_INLINE_LAMBDA {
            const SixteenGroups groups = SixteenGroups::Load(rows.at[row]);
            ForEach<4>([&](auto i) TARN_INLINE_LAMBDA {
                pairs[i] = Settled(AddPairs<row == 0>(pairs[i], groups.first[i]));
            });
            floors = Settled(AddFloors<row == 0>(floors, groups.last));
        });
        return {{vaddw_u8(PairSums(pairs[0], pairs[1]), vget_low_u8(floors)),
                 vaddw_high_u8(PairSums(pairs[2], pairs[3]), floors)}};
    }
};

template <>
struct CellSums<Layout::VXRaw10, 4> {
    static constexpr int kSums = 16;
    static constexpr int kDroppable = 0;

    template <int drop>
    TARN_INLINE Lanes<2> Load(Rows<4>& rows) {
        const Lanes<8> c = ColumnSums<VXRaw10, 4>(rows);
        return {{PairSums(PairSums(c.v[0], c.v[1]), PairSums(c.v[2], c.v[3])),
                 PairSums(PairSums(c.v[4], c.v[5]), PairSums(c.v[6], c.v[7]))}};
    }
};

}  // namespace tarn

#endif  // TARN_ENGINES_KERNELS_NEON_CELLS_H_
