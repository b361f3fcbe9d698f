// A block of 64 pixels of each layout, read and written. Included by avx512.cpp only.
#ifndef TARN_ENGINES_KERNELS_AVX512_LAYOUTS_H_
#define TARN_ENGINES_KERNELS_AVX512_LAYOUTS_H_

#include "engines/kernels/avx512_vector.h"

namespace tarn {

// Packed bytes of four pixels, of one vector, and of a block.
template <class L>
inline constexpr int kQuadBytes = 4 * L::kBits / 8;
template <class L>
inline constexpr int kWideBytes = 8 * kQuadBytes<L>;
template <class L>
inline constexpr int kWideBlockBytes = 2 * kWideBytes<L>;

// Four pixels at the top of their lanes: low part below high part.
template <class L>
constexpr Fields PixelFields() {
    constexpr Part H = Part::High, L_ = Part::Low;
    return {
        4, 8 - kLowBits<L>, {{0, L_}, {0, H}, {1, L_}, {1, H}, {2, L_}, {2, H}, {3, L_}, {3, H}}};
}

template <class L>
TARN_INLINE void UnpackWide(const uint8_t* src, __m512i (&v)[2]) {
    constexpr int kEnd = 2 * 64 - kWideBlockBytes<L>;  // the second read ends with the block
    const __m512i first = SpreadFrom<L, 4, 0>(src);
    const __m512i second = SpreadFrom<L, 4, kEnd - (64 - kWideBytes<L>)>(src + kWideBytes<L>);
    v[0] = FieldsOf<L, PixelFields<L>()>(first);
    v[1] = FieldsOf<L, PixelFields<L>()>(second);
}

// The bit of a 64-bit lane of four pixels at the top of their 16 bits that belongs at a bit of
// their packed bytes.
template <class L>
constexpr int LaneBit(int packedBit) {
    for (int pixel = 0; pixel < 4; ++pixel) {
        const int low = packedBit - LowAt<L>(pixel), high = packedBit - HighAt<L>(pixel);
        if (low >= 0 && low < kLowBits<L>) return 16 * pixel + 16 - L::kBits + low;
        if (high >= 0 && high < 8) return 16 * pixel + 8 + high;
    }
    return 0;  // past the packed bytes
}

// A packed byte has bits of one pixel or of two: the window that begins with its first bit, the one
// that ends with its last, and which bits come from the former.
template <class L>
constexpr Table FirstWindows() {
    Table table{};
    for (int i = 0; i < 64; ++i) table.byte[i] = static_cast<uint8_t>(LaneBit<L>(i % 8 * 8));
    return table;
}
template <class L>
constexpr Table LastWindows() {
    Table table{};
    for (int i = 0; i < 64; ++i) {
        table.byte[i] = static_cast<uint8_t>((LaneBit<L>(i % 8 * 8 + 7) - 7) & 63);
    }
    return table;
}
template <class L>
constexpr Table FirstMask() {
    Table table{};
    for (int i = 0; i < 512; ++i) {
        const bool first = LaneBit<L>(i % 64) == LaneBit<L>(i % 64 / 8 * 8) + i % 8;
        table.byte[i / 8] = static_cast<uint8_t>(table.byte[i / 8] | first << i % 8);
    }
    return table;
}

// Takes the top bits of 32 lanes, whatever is below. Leaves the packed bytes of four pixels in each
// 64-bit lane, byte k of them at Place(k).
template <class L>
struct WidePacking {
    static constexpr int Place(int k) { return k; }
    TARN_INLINE __m512i Pack(__m512i v) {
        const __m512i first = _mm512_multishift_epi64_epi8(Constant<FirstWindows<L>()>(), v);
        const __m512i last = _mm512_multishift_epi64_epi8(Constant<LastWindows<L>()>(), v);
        constexpr int kMaskChooses = 0xCA;
        return _mm512_ternarylogic_epi64(Constant<FirstMask<L>()>(), first, last, kMaskChooses);
    }
};

// High parts stay where they are. The four low parts of a group, each times its place, meet in the
// sum of the group's bytes, which takes the place of the lowest byte.
template <>
struct WidePacking<QCRaw10> {
    static constexpr int Place(int k) { return k < 4 ? 2 * k + 1 : 0; }
    TARN_INLINE __m512i Pack(__m512i v) {
        const __m512i field = _mm512_and_si512(v, WideWords(0x00C0));
        const __m512i placed = _mm512_madd_epi16(field, WideWords(4, 16, 64, 256));
        const __m512i low = _mm512_sad_epu8(placed, _mm512_setzero_si512());
        return _mm512_mask_mov_epi8(v, 0x0101010101010101, low);
    }
};

// From the packed bytes of two vectors, those from `first` on of the block, without gaps.
template <class L>
constexpr Table Together(int first) {
    Table table{};
    for (int i = 0; i < 64; ++i) {
        const int at = first + i, quad = at / kQuadBytes<L>, byte = at % kQuadBytes<L>;
        table.byte[i] = static_cast<uint8_t>(8 * quad + WidePacking<L>::Place(byte));
    }
    return table;
}

// Exactly the block: 64 bytes, then the rest, which is all of the second vector.
template <class L>
TARN_INLINE void PackWide(uint8_t* dst, const __m512i (&v)[2]) {
    const __m512i a = WidePacking<L>::Pack(v[0]), b = WidePacking<L>::Pack(v[1]);
    StoreWide(dst, _mm512_permutex2var_epi8(a, Constant<Together<L>(0)>(), b));
    const __m512i rest = _mm512_permutexvar_epi8(Constant<Together<L>(64)>(), b);
    if constexpr (kWideBlockBytes<L> == 64 + 32) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + 64), _mm512_castsi512_si256(rest));
    } else {
        static_assert(kWideBlockBytes<L> == 64 + 16);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + 64), _mm512_castsi512_si128(rest));
    }
}

}  // namespace tarn

#endif  // TARN_ENGINES_KERNELS_AVX512_LAYOUTS_H_
