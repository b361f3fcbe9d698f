// The sums of a block of cells, for each kind of cell and layout. Included by neon.cpp only.
#ifndef TARN_ENGINES_KERNELS_NEON_CELLS_H_
#define TARN_ENGINES_KERNELS_NEON_CELLS_H_

#include "engines/kernels/neon_layouts.h"

namespace tarn {

// Sums in the order of the row, at the bottom of their lanes.
//   kSums        how many
//   kReadSlack   bytes that are read of each row past their cells
//   Load(src, pitch)
template <Layout in, int cell>
struct CellSums;

TARN_INLINE uint16x8_t PairSums(uint16x8_t a, uint16x8_t b) {
    return vpaddq_u16(a, b);
}

// Eight pixels added up over the rows.
template <class L, int rows>
TARN_INLINE uint16x8_t ColumnSums(const uint8_t* src, ptrdiff_t pitch) {
    uint16x8_t sums = vshrq_n_u16(EightPixels<L>(src), 6);
    for (int row = 1; row < rows; ++row) {
        sums = vsraq_n_u16(sums, EightPixels<L>(src + row * pitch), 6);
    }
    return sums;
}

template <>
struct CellSums<Layout::QCRaw10, 2> {
    static constexpr int kSums = 8;
    static constexpr int kReadSlack = 6;

    TARN_INLINE Lanes<1> Load(const uint8_t* src, ptrdiff_t pitch) {
        return {{PairSums(ColumnSums<QCRaw10, 2>(src, pitch),
                          ColumnSums<QCRaw10, 2>(src + 10, pitch))}};
    }
};

template <>
struct CellSums<Layout::VXRaw10, 2> {
    static constexpr int kSums = 8;
    static constexpr int kReadSlack = 6;

    TARN_INLINE Lanes<1> Load(const uint8_t* src, ptrdiff_t pitch) {
        return {{PairSums(ColumnSums<VXRaw10, 2>(src, pitch),
                          ColumnSums<VXRaw10, 2>(src + 10, pitch))}};
    }
};

// A cell is a group in each row: 16 (h0 + h1) and the nibbles of the common byte 11110000.
template <>
struct CellSums<Layout::QCRaw12, 2> {
    static constexpr int kSums = 16;
    static constexpr int kReadSlack = 0;

    TARN_INLINE Lanes<2> Load(const uint8_t* src, ptrdiff_t pitch) {
        const uint8x16x3_t a = vld3q_u8(src), b = vld3q_u8(src + pitch);
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
    static constexpr int kReadSlack = 0;

    TARN_INLINE Lanes<2> Load(const uint8_t* src, ptrdiff_t pitch) {
        const uint8x16x3_t a = vld3q_u8(src), b = vld3q_u8(src + pitch);
        const uint8x16_t upper = vsraq_n_u8(vshrq_n_u8(a.val[1], 4), b.val[1], 4);
        const uint8x16_t lower = vmlsq_u8(vaddq_u8(a.val[1], b.val[1]), upper, Bytes(16));
        uint16x8_t first = vreinterpretq_u16_u8(vzip1q_u8(upper, lower));
        uint16x8_t second = vreinterpretq_u16_u8(vzip2q_u8(upper, lower));
        for (const uint8x16x3_t& g : {a, b}) {
            first = vmlal_u8(vaddw_u8(first, vget_low_u8(g.val[0])), vget_low_u8(g.val[2]),
                             vdup_n_u8(16));
            second = vmlal_high_u8(vaddw_high_u8(second, g.val[0]), g.val[2], Bytes(16));
        }
        return {{first, second}};
    }
};

// Eight cells, 30 bytes: pixel k of all of them in a vector.
template <class L>
struct NonaSums {
    static constexpr int kSums = 8;
    static constexpr int kReadSlack = 2;

    template <int k>
    TARN_INLINE uint16x8_t Pixel(const uint8x16x2_t& bytes) {
        const auto pixel = [](int lane) { return 3 * lane + k; };
        const auto pattern = Bytes([=](int i) { return PixelLanes<L>::Byte(pixel(i / 2), i % 2); });
        return PixelLanes<L>::ToTop(vqtbl2q_u8(bytes, pattern), pixel);
    }
    TARN_INLINE Lanes<1> Load(const uint8_t* src, ptrdiff_t pitch) {
        uint16x8_t sums = vdupq_n_u16(0);
        for (int row = 0; row < 3; ++row, src += pitch) {
            const uint8x16x2_t bytes = {{vld1q_u8(src), vld1q_u8(src + 16)}};
            sums = vsraq_n_u16(sums, Pixel<0>(bytes), 6);
            sums = vsraq_n_u16(sums, Pixel<1>(bytes), 6);
            sums = vsraq_n_u16(sums, Pixel<2>(bytes), 6);
        }
        return {{sums}};
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
    static constexpr int kReadSlack = 0;

    // Of the bytes 33221100, masks 33 and CC take l0 + 16 l2 and 4 l1 + 64 l3; in the sum
    // x = (l0+l1) + 16 (l2+l3) fields do not touch, and 17 x has all four added from bit 4 on.
    TARN_INLINE uint8x16_t AddFloors(uint8x16_t floors, uint8x16_t low) {
        const uint8x16_t x = vsraq_n_u8(vandq_u8(low, Bytes(0x33)), vandq_u8(low, Bytes(0xCC)), 2);
        return vsraq_n_u8(floors, vmulq_u8(x, Bytes(17)), 6);
    }

    TARN_INLINE Lanes<2> Load(const uint8_t* src, ptrdiff_t pitch) {
        uint16x8_t pairs[4] = {};
        uint8x16_t floors = Bytes(0);
        for (int row = 0; row < 4; ++row, src += pitch) {
            const SixteenGroups groups = SixteenGroups::Load(src);
            for (int i = 0; i < 4; ++i) pairs[i] = vpadalq_u8(pairs[i], groups.first[i]);
            floors = AddFloors(floors, groups.last);
        }
        return {{vaddw_u8(PairSums(pairs[0], pairs[1]), vget_low_u8(floors)),
                 vaddw_high_u8(PairSums(pairs[2], pairs[3]), floors)}};
    }
};

template <>
struct CellSums<Layout::VXRaw10, 4> {
    static constexpr int kSums = 8;
    static constexpr int kReadSlack = 6;

    TARN_INLINE Lanes<1> Load(const uint8_t* src, ptrdiff_t pitch) {
        uint16x8_t v[4];
        for (int i = 0; i < 4; ++i) v[i] = ColumnSums<VXRaw10, 4>(src + 10 * i, pitch);
        return {{PairSums(PairSums(v[0], v[1]), PairSums(v[2], v[3]))}};
    }
};

}  // namespace tarn

#endif  // TARN_ENGINES_KERNELS_NEON_CELLS_H_
