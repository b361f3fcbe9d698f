// What the AVX-512 pieces have in common. Included by avx512.cpp only.
//
// A vector is 32 lanes of 16 bits, pixels or sums at their top as in the AVX2 level. A block is two
// vectors: 64 pixels of output.
#ifndef TARN_ENGINES_KERNELS_AVX512_VECTOR_H_
#define TARN_ENGINES_KERNELS_AVX512_VECTOR_H_

// g++ 12 takes the undefined vectors of its own header for mistakes.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#include <immintrin.h>
#pragma GCC diagnostic pop
#else
#include <immintrin.h>
#endif

#include <cstddef>
#include <cstdint>

#include "engines/kernels/avx512_windows.h"
#include "engines/kernels/for_each.h"

namespace tarn {

inline constexpr int kWideLanes = 32;

template <Table table>
TARN_INLINE __m512i Constant() {
    constexpr long long a = table.Lane(0), b = table.Lane(1), c = table.Lane(2), d = table.Lane(3);
    constexpr long long e = table.Lane(4), f = table.Lane(5), g = table.Lane(6), h = table.Lane(7);
    return _mm512_setr_epi64(a, b, c, d, e, f, g, h);
}

TARN_INLINE __m512i WideWords(int w) {
    return _mm512_set1_epi16(static_cast<short>(w));
}

TARN_INLINE __m512i WideWords(int w0, int w1) {
    return _mm512_set1_epi32(static_cast<int>((w0 & 0xFFFFu) | static_cast<unsigned>(w1) << 16));
}

TARN_INLINE __m512i WideWords(int w0, int w1, int w2, int w3) {
    const auto low = (w0 & 0xFFFFu) | static_cast<unsigned>(w1) << 16;
    const auto high = (w2 & 0xFFFFu) | static_cast<unsigned>(w3) << 16;
    return _mm512_set1_epi64(static_cast<long long>(low | static_cast<uint64_t>(high) << 32));
}

TARN_INLINE __m512i LoadWide(const void* from) {
    return _mm512_loadu_si512(from);
}

TARN_INLINE void StoreWide(void* to, __m512i v) {
    _mm512_storeu_si512(to, v);
}

// Pixels `count` to a 64-bit lane, from src on; the load begins `offset` bytes before src.
template <class L, int count, int offset>
TARN_INLINE __m512i SpreadFrom(const uint8_t* src) {
    return _mm512_permutexvar_epi8(Constant<Spread<L>(count, offset)>(), LoadWide(src - offset));
}

// The fields of lanes that SpreadFrom has made.
template <class L, Fields fields>
TARN_INLINE __m512i FieldsOf(__m512i lanes) {
    const __m512i windows = _mm512_multishift_epi64_epi8(Constant<Windows<L>(fields)>(), lanes);
    if constexpr (!NeedMask(fields)) return windows;
    return _mm512_and_si512(windows, Constant<PartMask<L>(fields)>());
}

// Asks for `bytes` of what the loop will reach later, as in the AVX2 level.
template <int bytes>
TARN_INLINE void PrefetchWide(const uint8_t* src) {
    constexpr int kBytesAhead = 2048, kLine = 64;
    const uintptr_t first = reinterpret_cast<uintptr_t>(src) + kBytesAhead;
    ForEach<(bytes + kLine - 1) / kLine>([&](auto line) TARN_INLINE_LAMBDA {
        _mm_prefetch(reinterpret_cast<const char*>(first + line * kLine), _MM_HINT_T0);
    });
}

}  // namespace tarn

#endif  // TARN_ENGINES_KERNELS_AVX512_VECTOR_H_
