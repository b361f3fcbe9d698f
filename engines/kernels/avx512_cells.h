// One input row's part of 32 cells, for each kind of cell and layout. Included by avx512.cpp only.
#ifndef TARN_ENGINES_KERNELS_AVX512_CELLS_H_
#define TARN_ENGINES_KERNELS_AVX512_CELLS_H_

#include "engines/kernels/avx512_vector.h"
#include "engines/kernels/binning_recipe.h"

namespace tarn {

// The parts of a cell's pixels, weighed and added up: each 32-bit lane gets the sum of four fields.
//   2x2   h0 h1 l0 l1 | h2 h3 l2 l3    four pixels, two cells
//   3x3   h0 h1 h2  . | h3 h4 h5  .    six pixels, two cells; low parts the same in a second step
//   4x4   h0 h1 h2 h3 | l0 l1 l2 l3    four pixels, one cell: its sum in two pieces
constexpr Fields PairFields(int lowAt) {
    constexpr Part H = Part::High, L = Part::Low;
    return {4, lowAt, {{0, H}, {1, H}, {0, L}, {1, L}, {2, H}, {3, H}, {2, L}, {3, L}}};
}
constexpr Fields TripleFields(Part part, int lowAt) {
    constexpr Field kNone{0, Part::None};
    return {
        6, lowAt, {{0, part}, {1, part}, {2, part}, kNone, {3, part}, {4, part}, {5, part}, kNone}};
}
constexpr Fields QuadFields(int lowAt) {
    constexpr Part H = Part::High, L = Part::Low;
    return {4, lowAt, {{0, H}, {1, H}, {2, H}, {3, H}, {0, L}, {1, L}, {2, L}, {3, L}}};
}

// Adds to `sums` what the fields weigh: high parts are worth 2^kLowBits low ones, and a low part
// counts 2^lowAt where it stands.
template <class L, Fields fields>
TARN_INLINE __m512i AddFields(__m512i sums, __m512i lanes) {
    constexpr int kHighWeight = 1 << (kLowBits<L> + fields.lowAt);
    return _mm512_dpbusd_epi32(sums, FieldsOf<L, fields>(lanes),
                               Constant<PerPart(fields, kHighWeight, 1)>());
}

// A row's part of 32 cells: Load gives their sums, each pixel times 2^lowAt, in an order of its
// own, which is the same for every row; InRowOrder puts the sum of the rows in the order of the
// row.
//
// Each vector of a load has 16 cells (2x2, 3x3) or 8 (4x4) from one read of 64 bytes; the last read
// ends with the block.
template <class L, int cell, int lowAt>
struct WideCells {
    static constexpr int kLanePixels = cell == 3 ? 6 : 4;
    static constexpr int kVectors = kWideLanes * cell / kLanePixels / 8;
    static constexpr int kBytes = kWideLanes * cell / L::kGroupPixels * L::kGroupBytes;
    static constexpr int kVectorBytes = kBytes / kVectors;

    template <int which>
    TARN_INLINE __m512i Lanes(const uint8_t* src) {
        constexpr int kAt = which * kVectorBytes;
        constexpr int kOffset = kAt + 64 > kBytes ? kAt + 64 - kBytes : 0;
        return SpreadFrom<L, kLanePixels, kOffset>(src + kAt);
    }

    // 32-bit sums.
    template <int which>
    TARN_INLINE __m512i Sums(const uint8_t* src) {
        const __m512i lanes = Lanes<which>(src), zero = _mm512_setzero_si512();
        if constexpr (cell == 2) {
            return AddFields<L, PairFields(lowAt)>(zero, lanes);
        } else if constexpr (cell == 3) {
            const __m512i high = AddFields<L, TripleFields(Part::High, lowAt)>(zero, lanes);
            return AddFields<L, TripleFields(Part::Low, lowAt)>(high, lanes);
        } else {
            return AddFields<L, QuadFields(lowAt)>(zero, lanes);
        }
    }

    // Two vectors of 4x4 cells, the pieces of each cell's sum added. Where the cell's row is
    // divided by four before it is added, this drops what the low parts leave over.
    template <int which, bool divided>
    TARN_INLINE __m512i QuadSums(const uint8_t* src) {
        __m512i pieces = _mm512_packus_epi32(Sums<which>(src), Sums<which + 1>(src));
        if constexpr (divided) {
            constexpr int kWhole = 4 << lowAt;
            pieces = _mm512_and_si512(pieces, WideWords(0xFFFF, -kWhole));
        }
        return _mm512_madd_epi16(pieces, WideWords(1));
    }

    template <bool divided>
    TARN_INLINE __m512i Load(const uint8_t* src) {
        if constexpr (cell == 4) {
            return _mm512_packus_epi32(QuadSums<0, divided>(src), QuadSums<2, divided>(src));
        } else {
            return _mm512_packus_epi32(Sums<0>(src), Sums<1>(src));
        }
    }

    // Packing works within quarters of 16 bytes: each has two cells of each of four vectors, or
    // four cells of each of two.
    static constexpr Table RowOrder() {
        constexpr int kRun = 16 / kVectors;
        Table table{};
        for (int i = 0; i < 64; ++i) {
            const int vector = i / (4 * kRun), quarter = i / kRun % 4;
            table.byte[i] = static_cast<uint8_t>(16 * quarter + kRun * vector + i % kRun);
        }
        return table;
    }
    TARN_INLINE __m512i InRowOrder(__m512i sums) {
        return _mm512_permutexvar_epi8(Constant<RowOrder()>(), sums);
    }
};

}  // namespace tarn

#endif  // TARN_ENGINES_KERNELS_AVX512_CELLS_H_
