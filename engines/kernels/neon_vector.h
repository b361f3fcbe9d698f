// What the NEON pieces have in common. Included by neon.cpp only.
//
// Pixels and sums are lanes of 16 bits. Sums stand at the bottom of their lanes; what was
// compensated stands at the top, with bits of the fraction below. Packing takes either.
#ifndef TARN_ENGINES_KERNELS_NEON_VECTOR_H_
#define TARN_ENGINES_KERNELS_NEON_VECTOR_H_

#include <arm_neon.h>

#include <cstddef>
#include <cstdint>
#include <utility>

#include "engines/kernels/for_each.h"
#include "layout/packed_layouts.h"

namespace tarn {

inline constexpr int kLanes = 8;

template <int count>
struct Lanes {
    uint16x8_t v[count];
};

// The value, of which the compiler knows nothing: it then keeps to the instructions that are
// written, where it would put two in the place of one.
template <class V>
TARN_INLINE V Opaque(V v) {
    asm("" : "+w"(v));
    return v;
}

// The same in the order of the loads around it: what comes later waits, and needs no registers yet.
template <class V>
TARN_INLINE V Settled(V v) {
    asm volatile("" : "+w"(v) : : "memory");
    return v;
}

template <class ByteAt, size_t... i>
TARN_INLINE uint8x16_t BytesAt(ByteAt byteAt, std::index_sequence<i...>) {
    return uint8x16_t{static_cast<uint8_t>(byteAt(static_cast<int>(i)))...};
}

// The constant vector whose byte i is byteAt(i).
template <class ByteAt>
TARN_INLINE uint8x16_t Bytes(ByteAt byteAt) {
    return BytesAt(byteAt, std::make_index_sequence<16>{});
}

TARN_INLINE uint8x16_t Bytes(int byte) {
    return vdupq_n_u8(static_cast<uint8_t>(byte));
}

TARN_INLINE uint16x8_t Words(int word) {
    return vdupq_n_u16(static_cast<uint16_t>(word));
}

// The rows of a block's cells, each where it is to be read next. Loads move on by a register, which
// they do at no cost; an address computed for each would be an instruction.
template <int cell>
struct Rows {
    const uint8_t* at[cell];

    TARN_INLINE Rows From(const uint8_t* src, ptrdiff_t pitch) {
        Rows rows;
        for (int row = 0; row < cell; ++row) rows.at[row] = src + row * pitch;
        return rows;
    }
};

template <int bytes>
TARN_INLINE void MoveOn(const uint8_t*& src) {
    ptrdiff_t step = bytes;
    asm("" : "+r"(step));
    src += step;
    asm("" : "+r"(src));
}

// Bits shift+7..shift of 16 lanes, those there are.
template <int shift>
TARN_INLINE uint8x16_t Narrow(uint16x8_t a, uint16x8_t b) {
    if constexpr (shift == 0) {
        return vuzp1q_u8(vreinterpretq_u8_u16(a), vreinterpretq_u8_u16(b));
    } else if constexpr (shift == 8) {
        return vuzp2q_u8(vreinterpretq_u8_u16(a), vreinterpretq_u8_u16(b));
    } else if constexpr (shift > 8) {
        return vshrq_n_u8(Narrow<8>(a, b), shift - 8);
    } else {
        return vshrn_high_n_u16(vshrn_n_u16(a, shift), b, shift);
    }
}

}  // namespace tarn

#endif  // TARN_ENGINES_KERNELS_NEON_VECTOR_H_
