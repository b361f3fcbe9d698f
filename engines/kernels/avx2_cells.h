// One input row's part of 16 cells, for each kind of cell and layout. Included by avx2.cpp only.
#ifndef TARN_ENGINES_KERNELS_AVX2_CELLS_H_
#define TARN_ENGINES_KERNELS_AVX2_CELLS_H_

#include "engines/kernels/avx2_vector.h"

namespace tarn {

// Masks four bytes for each 32-bit lane and adds them up, each times its own weight and that of its
// 16-bit half. Byte weights are below 128, sums of two within 15 bits.
TARN_INLINE __m256i Weighted(__m256i v, __m256i pattern, __m256i mask, __m256i byteWeights,
                             __m256i wordWeights) {
    const __m256i chosen = _mm256_and_si256(_mm256_shuffle_epi8(v, pattern), mask);
    return _mm256_madd_epi16(_mm256_maddubs_epi16(chosen, byteWeights), wordWeights);
}

// 64 times the sums of four cells in each half, which begin at its bytes `lower` and `upper`.
//   kQuarterBytes   what four cells take of one input row
//   Sums64<lower, upper>(v)
template <Layout in, int cell>
struct QuarterOfCells;

// Pairs: h0+h1 and the fields l0+l1 of their common byte 33221100; h2+h3 and l2+l3.
template <>
struct QuarterOfCells<Layout::QCRaw10, 2> {
    static constexpr int kQuarterBytes = 10;
    template <int lower, int upper>
    TARN_INLINE __m256i Sums64(__m256i v) {
        return Weighted(v, Pattern<lower, upper>(0, 1, 4, 4, 2, 3, 4, 4, 5, 6, 9, 9, 7, 8, 9, 9),
                        Bytes(0xFF, 0xFF, 0x03, 0x0C, 0xFF, 0xFF, 0x30, 0xC0),
                        Bytes(64, 64, 64, 16, 64, 64, 4, 1), Words(4, 1));
    }
};

// Pairs: h0+h1 and the nibbles of their common byte 11110000.
template <>
struct QuarterOfCells<Layout::QCRaw12, 2> {
    static constexpr int kQuarterBytes = 12;
    template <int lower, int upper>
    TARN_INLINE __m256i Sums64(__m256i v) {
        return Weighted(v, Pattern<lower, upper>(0, 1, 2, 2, 3, 4, 5, 5, 6, 7, 8, 8, 9, 10, 11, 11),
                        Bytes(0xFF, 0xFF, 0x0F, 0xF0), Bytes(64, 64, 64, 4), Words(16, 1));
    }
};

// Pairs: the low parts of both pixels, then the high parts.
//   byte 4   byte 3   byte 2   byte 1   byte 0
//   33333333 33222222 22221111 11111100 00000000
template <>
struct QuarterOfCells<Layout::VXRaw10, 2> {
    static constexpr int kQuarterBytes = 10;
    template <int lower, int upper>
    TARN_INLINE __m256i Sums64(__m256i v) {
        return Weighted(v, Pattern<lower, upper>(0, 1, 1, 2, 2, 3, 3, 4, 5, 6, 6, 7, 7, 8, 8, 9),
                        Bytes(0xFF, 0xFC, 0x03, 0x0F, 0xF0, 0xC0, 0x3F, 0xFF),
                        Bytes(64, 16, 4, 1, 4, 1, 64, 16), Words(1, 4096, 1, 16));
    }
};

// Pairs: the low parts of both pixels, then the high parts.
//   byte 2   byte 1   byte 0
//   11111111 11110000 00000000
template <>
struct QuarterOfCells<Layout::VXRaw12, 2> {
    static constexpr int kQuarterBytes = 12;
    template <int lower, int upper>
    TARN_INLINE __m256i Sums64(__m256i v) {
        return Weighted(v, Pattern<lower, upper>(0, 1, 1, 2, 3, 4, 4, 5, 6, 7, 7, 8, 9, 10, 10, 11),
                        Bytes(0xFF, 0xF0, 0x0F, 0xFF), Bytes(64, 4, 64, 4), Words(1, 256));
    }
};

// Triples, four of them in three groups. The first pixel of a group stands in its byte 0, the next
// in byte 1 and so on; their low bits are in byte 4.
template <>
struct QuarterOfCells<Layout::QCRaw10, 3> {
    static constexpr int kQuarterBytes = 15;
    template <int lower, int upper>
    TARN_INLINE __m256i Sums64(__m256i v) {
        const __m256i high = Weighted(
            v, Pattern<lower, upper>(0, 1, 2, -1, 3, 5, 6, -1, 7, 8, 10, -1, 11, 12, 13, -1),
            Bytes(-1, -1, -1, -1), Bytes(64, 64, 64, 0), Words(4));
        const __m256i low = Weighted(
            v, Pattern<lower, upper>(4, 4, 4, -1, 4, 9, 9, -1, 9, 9, 14, -1, 14, 14, 14, -1),
            BothHalves(0x03, 0x0C, 0x30, 0, 0xC0, 0x03, 0x0C, 0, 0x30, 0xC0, 0x03, 0, 0x0C, 0x30,
                       0xC0, 0),
            BothHalves(64, 16, 4, 0, 1, 64, 16, 0, 4, 1, 64, 0, 16, 4, 1, 0), Words(1));
        return _mm256_add_epi32(high, low);
    }
};

// Triples, four of them in three groups: the low part of each pixel and the high part, which is in
// the byte after it.
template <>
struct QuarterOfCells<Layout::VXRaw10, 3> {
    static constexpr int kQuarterBytes = 15;
    template <int lower, int upper>
    TARN_INLINE __m256i Sums64(__m256i v) {
        const __m256i weights = BothHalves(64, 16, 4, 0, 1, 64, 16, 0, 4, 1, 64, 0, 16, 4, 1, 0);
        const __m256i low = Weighted(
            v, Pattern<lower, upper>(0, 1, 2, -1, 3, 5, 6, -1, 7, 8, 10, -1, 11, 12, 13, -1),
            BothHalves(0xFF, 0xFC, 0xF0, 0, 0xC0, 0xFF, 0xFC, 0, 0xF0, 0xC0, 0xFF, 0, 0xFC, 0xF0,
                       0xC0, 0),
            weights, Words(1));
        const __m256i high = Weighted(
            v, Pattern<lower, upper>(1, 2, 3, -1, 4, 6, 7, -1, 8, 9, 11, -1, 12, 13, 14, -1),
            BothHalves(0x03, 0x0F, 0x3F, 0, 0xFF, 0x03, 0x0F, 0, 0x3F, 0xFF, 0x03, 0, 0x0F, 0x3F,
                       0xFF, 0),
            weights, Words(256));
        return _mm256_add_epi32(low, high);
    }
};

// A row's part of 16 cells: Load gives their sums, each times 2^shift, in an order of its own,
// which is the same for every row; InRowOrder puts the sum of the rows in the order of the row.
//
// Two quarters of a block share a vector. To put two loads together costs as much as a shuffle, so
// quarters are paired as one load of 32 bytes finds them in its two halves, where it does:
//   quarters of 10 bytes   0 | 2 and 1 | 3, from the first and the last 32 bytes of the block
//   longer ones            1 | 2 from its middle; 0 | 3 from its ends, two loads
template <Layout in, int cell>
struct CellSums {
    using Quarter = QuarterOfCells<in, cell>;
    static constexpr int kQuarter = Quarter::kQuarterBytes;
    static constexpr int kBytes = 4 * kQuarter;
    static constexpr bool kShort = 3 * kQuarter <= 32;

    template <int shift>
    TARN_INLINE __m256i Load(const uint8_t* src) {
        constexpr int k = kQuarter, kMiddle = 2 * k - 16, kEnd = 4 * k - 16;
        __m256i a, b;
        if constexpr (kShort) {
            a = Quarter::template Sums64<0, kMiddle>(LoadBytes(src));
            b = Quarter::template Sums64<32 - 3 * k, 16 - k>(LoadBytes(src + kEnd - 16));
        } else {
            a = Quarter::template Sums64<0, 16 - k>(LoadHalves(src, src + kEnd));
            b = Quarter::template Sums64<16 - k, 0>(LoadBytes(src + kMiddle));
        }
        return _mm256_packus_epi32(_mm256_srli_epi32(a, 6 - shift),
                                   _mm256_srli_epi32(b, 6 - shift));
    }

    TARN_INLINE __m256i InRowOrder(__m256i sums) {
        if constexpr (kShort) return sums;
        return _mm256_castpd_si256(_mm256_permute_pd(_mm256_castsi256_pd(sums), 0b0110));
    }
};

// Cells of 4x4 are whole groups; four of them, 20 bytes, take two loads, at +0 and +4.
struct FourGroups {
    __m256i from0;
    __m256i from4;

    TARN_INLINE FourGroups Load(const uint8_t* low, const uint8_t* high) {
        return {LoadHalves(low, high), LoadHalves(low + 4, high + 4)};
    }
};

// Bytes 0..3 of the four groups.
TARN_INLINE __m256i FirstBytes(const FourGroups& g) {
    return _mm256_or_si256(_mm256_shuffle_epi8(g.from0, BothHalves(0, 1, 2, 3, 5, 6, 7, 8, -1, -1,
                                                                   -1, -1, -1, -1, -1, -1)),
                           _mm256_shuffle_epi8(g.from4, BothHalves(-1, -1, -1, -1, -1, -1, -1, -1,
                                                                   6, 7, 8, 9, 11, 12, 13, 14)));
}

// Each row counts h0+h1+h2+h3 + floor((l0+l1+l2+l3) / 4).
template <>
struct CellSums<Layout::QCRaw10, 4> {
    static constexpr int kBytes = 80;

    TARN_INLINE __m256i InRowOrder(__m256i sums) { return sums; }

    TARN_INLINE __m256i HighSums(const FourGroups& g) {
        return _mm256_madd_epi16(_mm256_maddubs_epi16(FirstBytes(g), Bytes(16, 16, 16, 16)),
                                 Words(1));
    }

    // Of the byte 33221100, masks 33 and CC take l0 + 16 l2 and 4 l1 + 64 l3; in the sum
    // x = (l0+l1) + 16 (l2+l3) fields do not touch, and 17 x has all four added from bit 4 on.
    // Times 4, so that the quotient stands at bits 9..8.
    TARN_INLINE __m256i Floors(const FourGroups& even, const FourGroups& odd) {
        const __m256i low = _mm256_or_si256(
            _mm256_shuffle_epi8(
                even.from4, BothHalves(0, 0, 5, 5, 10, 10, 15, 15, -1, -1, -1, -1, -1, -1, -1, -1)),
            _mm256_shuffle_epi8(
                odd.from4, BothHalves(-1, -1, -1, -1, -1, -1, -1, -1, 0, 0, 5, 5, 10, 10, 15, 15)));
        const __m256i sums = _mm256_maddubs_epi16(
            _mm256_and_si256(low, Bytes(0x33, 0xCC, 0x33, 0xCC)), Bytes(68, 17, 68, 17));
        return _mm256_and_si256(_mm256_srli_epi16(sums, 4), Words(0x30));
    }

    template <int shift>
    TARN_INLINE __m256i Load(const uint8_t* src) {
        static_assert(shift == 4);
        const FourGroups even = FourGroups::Load(src, src + 40);
        const FourGroups odd = FourGroups::Load(src + 20, src + 60);
        return _mm256_add_epi16(_mm256_packus_epi32(HighSums(even), HighSums(odd)),
                                Floors(even, odd));
    }
};

// With m1, m2, m3 the low 2, 4, 6 bits of bytes 1, 2, 3, which are the high bits of pixels 0, 1, 2,
// 64 times the group's sum is
//   64 b0 + 16 b1 + 4 b2 + b3 + 256 b4 + 1023 (16 m1 + 4 m2 + m3).
template <>
struct CellSums<Layout::VXRaw10, 4> {
    static constexpr int kBytes = 80;

    TARN_INLINE __m256i InRowOrder(__m256i sums) { return sums; }

    TARN_INLINE __m256i Sums64(const FourGroups& g) {
        const __m256i first = FirstBytes(g);
        const __m256i weights = Bytes(64, 16, 4, 1);
        const __m256i whole = _mm256_maddubs_epi16(first, weights);
        const __m256i low =
            _mm256_maddubs_epi16(_mm256_and_si256(first, Bytes(0, 0x03, 0x0F, 0x3F)), weights);
        const __m256i last = _mm256_shuffle_epi8(
            g.from4, BothHalves(-1, 0, -1, -1, -1, 5, -1, -1, -1, 10, -1, -1, -1, 15, -1, -1));
        return _mm256_add_epi32(last, _mm256_add_epi32(_mm256_madd_epi16(whole, Words(1)),
                                                       _mm256_madd_epi16(low, Words(1023))));
    }

    template <int shift>
    TARN_INLINE __m256i Load(const uint8_t* src) {
        return _mm256_packus_epi32(
            _mm256_srli_epi32(Sums64(FourGroups::Load(src, src + 40)), 6 - shift),
            _mm256_srli_epi32(Sums64(FourGroups::Load(src + 20, src + 60)), 6 - shift));
    }
};

}  // namespace tarn

#endif  // TARN_ENGINES_KERNELS_AVX2_CELLS_H_
