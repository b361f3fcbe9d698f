// What the AVX2 pieces have in common. Included by avx2.cpp only.
//
// A vector is 16 lanes of 16 bits, in the order of the row, pixels or sums at the top of each.
//
// Blocks are 16 pixels of output. They read and write exactly their own bytes: where the second
// half of a block is shorter than a vector load, the load ends with it and begins in the first.
#ifndef TARN_ENGINES_KERNELS_AVX2_VECTOR_H_
#define TARN_ENGINES_KERNELS_AVX2_VECTOR_H_

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#include "layout/packed_layouts.h"

namespace tarn {

inline constexpr int kLanes = 16;

// AVX2 shuffles and packs within halves of 16 bytes; most patterns are the same in both.
template <class... Byte>
TARN_INLINE __m256i BothHalves(Byte... byte) {
    static_assert(sizeof...(byte) == 16);
    return _mm256_setr_epi8(static_cast<char>(byte)..., static_cast<char>(byte)...);
}

// A shuffle pattern, its bytes counted from byte low of the lower and byte high of the upper half.
// Byte -1 stands for zero.
template <int low, int high, class... Byte>
TARN_INLINE __m256i Pattern(Byte... byte) {
    static_assert(sizeof...(byte) == 16);
    return _mm256_setr_epi8(static_cast<char>(byte < 0 ? byte : byte + low)...,
                            static_cast<char>(byte < 0 ? byte : byte + high)...);
}

TARN_INLINE __m256i Bytes(int b0, int b1, int b2, int b3) {
    return BothHalves(b0, b1, b2, b3, b0, b1, b2, b3, b0, b1, b2, b3, b0, b1, b2, b3);
}

TARN_INLINE __m256i Bytes(int b0, int b1, int b2, int b3, int b4, int b5, int b6, int b7) {
    return BothHalves(b0, b1, b2, b3, b4, b5, b6, b7, b0, b1, b2, b3, b4, b5, b6, b7);
}

TARN_INLINE __m256i Words(int w) {
    return _mm256_set1_epi16(static_cast<short>(w));
}

TARN_INLINE __m256i Words(int w0, int w1) {
    return _mm256_set1_epi32(static_cast<int>((w0 & 0xFFFFu) | static_cast<unsigned>(w1) << 16));
}

TARN_INLINE __m256i Words(int w0, int w1, int w2, int w3) {
    const auto a = static_cast<short>(w0), b = static_cast<short>(w1);
    const auto c = static_cast<short>(w2), d = static_cast<short>(w3);
    return _mm256_setr_epi16(a, b, c, d, a, b, c, d, a, b, c, d, a, b, c, d);
}

// Asks for what the loop will reach some 30 blocks later. The processor's own prefetching stops at
// the end of each page of 4 KiB and comes late where computing takes as long as reading. A hint: it
// reads nothing and cannot fault, wherever it points, and is a number since it may point past what
// the buffer holds.
TARN_INLINE void PrefetchAhead(const uint8_t* src) {
    constexpr uintptr_t kBytesAhead = 2048;
    const uintptr_t address = reinterpret_cast<uintptr_t>(src) + kBytesAhead;
    _mm_prefetch(reinterpret_cast<const char*>(address), _MM_HINT_T0);
}

// 16 bytes from low in the lower half, 16 bytes from high in the upper one.
TARN_INLINE __m256i LoadHalves(const uint8_t* low, const uint8_t* high) {
    const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(low));
    const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(high));
    return _mm256_inserti128_si256(_mm256_castsi128_si256(a), b, 1);
}

TARN_INLINE void StoreHalves(uint8_t* lower, uint8_t* upper, __m256i v) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(lower), _mm256_castsi256_si128(v));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(upper), _mm256_extracti128_si256(v, 1));
}

TARN_INLINE __m256i LoadBytes(const uint8_t* from) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}

TARN_INLINE __m256i LoadLanes(const uint16_t* from) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}

TARN_INLINE void StoreLanes(uint16_t* to, __m256i lanes) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), lanes);
}

}  // namespace tarn

#endif  // TARN_ENGINES_KERNELS_AVX2_VECTOR_H_
