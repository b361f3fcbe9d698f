// A block of 16 pixels of each layout, read and written. Included by avx2.cpp only.
#ifndef TARN_ENGINES_KERNELS_AVX2_LAYOUTS_H_
#define TARN_ENGINES_KERNELS_AVX2_LAYOUTS_H_

#include "engines/kernels/avx2_vector.h"

namespace tarn {

// Each half of a vector holds eight pixels: 10 or 12 bytes of a packed block of 20 or 24.
template <class L>
inline constexpr int kHalfBytes = 8 / L::kGroupPixels* L::kGroupBytes;
template <class L>
inline constexpr int kBlockBytes = 2 * kHalfBytes<L>;

// The block's two halves, the upper one at the end of its 16 bytes: it starts at kUpperStart.
template <class L>
inline constexpr int kUpperStart = 16 - kHalfBytes<L>;

template <class L>
TARN_INLINE __m256i LoadBlock(const uint8_t* src) {
    return LoadHalves(src, src + kBlockBytes<L> - 16);
}

// The lower half is stored whole, then the last 16 bytes of the block, which begin with the end of
// the lower half: two stores that write the block and nothing else.
template <class L>
TARN_INLINE void StoreBlock(uint8_t* dst, __m256i packed) {
    const __m128i lower = _mm256_castsi256_si128(packed);
    const __m128i last = _mm_alignr_epi8(_mm256_extracti128_si256(packed, 1), lower, kHalfBytes<L>);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), lower);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + kBlockBytes<L> - 16), last);
}

// Unpack takes a vector whose halves have their packed bytes from `lower` and from `upper` on, and
// gives 16 pixels at the top of their lanes, zeros below. Pack takes the top bits of 16
// lanes, whatever is below, and leaves the packed bytes at the start of each half; the lower half
// goes on with its own last bytes once more, as StoreBlock wants them.
template <class L>
struct Avx2Layout;

// Lane: pixel k's own byte above the byte of low bits: hhhhhhhh 33221100; field k goes to
// bits 7..6.
template <>
struct Avx2Layout<QCRaw10> {
    template <int lower, int upper>
    TARN_INLINE __m256i Unpack(__m256i v) {
        v = _mm256_shuffle_epi8(v, Pattern<lower, upper>(4, 0, 4, 1, 4, 2, 4, 3,  //
                                                         9, 5, 9, 6, 9, 7, 9, 8));
        const __m256i field = _mm256_and_si256(v, Words(0x03, 0x0C, 0x30, 0xC0));
        return _mm256_or_si256(_mm256_and_si256(v, Words(0xFF00)),
                               _mm256_mullo_epi16(field, Words(64, 16, 4, 1)));
    }
    // The four fields of a group, each times its place, meet in the sum of the group's bytes, which
    // takes the place of the lowest byte of the group.
    TARN_INLINE __m256i Pack(__m256i v) {
        const __m256i field = _mm256_and_si256(v, Words(0x00C0));
        const __m256i placed = _mm256_madd_epi16(field, Words(4, 16, 64, 256));
        const __m256i low = _mm256_sad_epu8(placed, _mm256_setzero_si256());
        return _mm256_shuffle_epi8(
            _mm256_blendv_epi8(v, low, Words(0x0080, 0, 0, 0)),
            BothHalves(1, 3, 5, 7, 0, 9, 11, 13, 15, 8, 0, 9, 11, 13, 15, 8));
    }
};

// Lane: pixel k's own byte above the byte of low bits: hhhhhhhh 11110000; nibble k goes to bits
// 7..4.
template <>
struct Avx2Layout<QCRaw12> {
    template <int lower, int upper>
    TARN_INLINE __m256i Unpack(__m256i v) {
        v = _mm256_shuffle_epi8(v, Pattern<lower, upper>(2, 0, 2, 1, 5, 3, 5, 4,  //
                                                         8, 6, 8, 7, 11, 9, 11, 10));
        const __m256i nibble = _mm256_and_si256(v, Words(0x0F, 0xF0));
        return _mm256_or_si256(_mm256_and_si256(v, Words(0xFF00)),
                               _mm256_mullo_epi16(nibble, Words(16, 1)));
    }
    // Both nibbles meet in byte 1 of a 32-bit lane.
    TARN_INLINE __m256i Pack(__m256i v) {
        const __m256i low = _mm256_madd_epi16(_mm256_and_si256(v, Words(0x00F0)), Words(16, 256));
        return _mm256_or_si256(_mm256_shuffle_epi8(v, BothHalves(1, 3, -1, 5, 7, -1, 9, 11, -1, 13,
                                                                 15, -1, -1, 13, 15, -1)),
                               _mm256_shuffle_epi8(low, BothHalves(-1, -1, 1, -1, -1, 5, -1, -1, 9,
                                                                   -1, -1, 13, 9, -1, -1, 13)));
    }
};

// Lane k of a group: the two bytes that hold pixel k, which starts at bit 2k.
template <>
struct Avx2Layout<VXRaw10> {
    template <int lower, int upper>
    TARN_INLINE __m256i Unpack(__m256i v) {
        v = _mm256_shuffle_epi8(v, Pattern<lower, upper>(0, 1, 1, 2, 2, 3, 3, 4,  //
                                                         5, 6, 6, 7, 7, 8, 8, 9));
        return _mm256_and_si256(_mm256_mullo_epi16(v, Words(64, 16, 4, 1)), Words(0xFFC0));
    }
    // Two pixels to 20 bits, two of these, the lower moved up against the upper, to 40.
    TARN_INLINE __m256i Pack(__m256i v) {
        const __m256i two = _mm256_madd_epi16(_mm256_srli_epi16(v, 6), Words(1, 1024));
        const __m256i met = _mm256_sllv_epi32(two, _mm256_set1_epi64x(12));
        return _mm256_shuffle_epi8(
            _mm256_srli_epi64(met, 12),
            BothHalves(0, 1, 2, 3, 4, 8, 9, 10, 11, 12, 4, 8, 9, 10, 11, 12));
    }
};

// Lane k of a group: the two bytes that hold pixel k, which starts at bit 4k.
template <>
struct Avx2Layout<VXRaw12> {
    template <int lower, int upper>
    TARN_INLINE __m256i Unpack(__m256i v) {
        v = _mm256_shuffle_epi8(v, Pattern<lower, upper>(0, 1, 1, 2, 3, 4, 4, 5,  //
                                                         6, 7, 7, 8, 9, 10, 10, 11));
        return _mm256_and_si256(_mm256_mullo_epi16(v, Words(16, 1)), Words(0xFFF0));
    }
    TARN_INLINE __m256i Pack(__m256i v) {
        const __m256i two = _mm256_madd_epi16(_mm256_srli_epi16(v, 4), Words(1, 4096));
        return _mm256_shuffle_epi8(
            two, BothHalves(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 10, 12, 13, 14));
    }
};

template <class L>
TARN_INLINE __m256i UnpackBlock(const uint8_t* src) {
    return Avx2Layout<L>::template Unpack<0, kUpperStart<L>>(LoadBlock<L>(src));
}

// Two blocks whose packed halves are, in this order, the halves of a and b: a0 b0 a1 b1 where ten
// bytes make a half, for two plain loads hold them so; a0 a1 b0 b1 otherwise.
template <class L>
inline constexpr bool kHalvesTakeTurns = kHalfBytes<L> == 10;

template <class L>
TARN_INLINE void UnpackTwoBlocks(const uint8_t* src, __m256i& a, __m256i& b) {
    if constexpr (kHalvesTakeTurns<L>) {
        a = Avx2Layout<L>::template Unpack<0, 4>(LoadBytes(src));
        b = Avx2Layout<L>::template Unpack<2, 6>(LoadBytes(src + 8));
    } else {
        a = UnpackBlock<L>(src);
        b = UnpackBlock<L>(src + kBlockBytes<L>);
    }
}

// As StoreBlock; one shift over both vectors makes the last 16 bytes of both blocks.
template <class L>
TARN_INLINE void StoreTwoBlocks(uint8_t* dst, __m256i a, __m256i b) {
    if constexpr (kHalvesTakeTurns<L>) {
        const __m256i last = _mm256_alignr_epi8(b, a, kHalfBytes<L>);
        constexpr int kLast = kBlockBytes<L> - 16;
        StoreHalves(dst, dst + kBlockBytes<L>, a);
        StoreHalves(dst + kLast, dst + kBlockBytes<L> + kLast, last);
    } else {
        StoreBlock<L>(dst, a);
        StoreBlock<L>(dst + kBlockBytes<L>, b);
    }
}

}  // namespace tarn

#endif  // TARN_ENGINES_KERNELS_AVX2_LAYOUTS_H_
